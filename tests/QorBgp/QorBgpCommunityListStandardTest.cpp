#include "QorBgpCommunity/QorBgp/QorBgpCommunityListStandard.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListDedupTable.h"
#include "QorBgpCommunity/platform/FeatureToggle.h"
#include "QorBgpCommunity/platform/PosixRegex.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <unistd.h>

namespace Routing::Bgp {
namespace {

using Bytes = std::vector<U8>;

// Compared as hex, so that a failure shows the bytes.
void expectBytes(std::string const& actual, Bytes const& expected) {
   EXPECT_EQ(hexBytes({reinterpret_cast<U8 const*>(actual.data()), actual.size()}),
             hexBytes(expected));
}

CommList::PtrConst publish(CommListDedupTable const& table, std::initializer_list<U32> comms) {
   CommList::Ptr list = commListFactory();
   for (U32 value : comms) {
      list->commIs(value);
   }
   return list->dedup(&table);
}

bool matches(CommList::PtrConst const& list, char const* pattern) {
   Routing::RouteMap::PosixRegex const regex(pattern);
   return list->matchCommunitiesRegex(&regex);
}

// Points QORBGP_TOGGLE_FILE at a file with `content` and makes the LLGR toggle
// read it again; undoes both on destruction.
struct LlgrToggleFile {
   std::string path = std::filesystem::temp_directory_path() /
                      ("qorbgp-llgr-" + std::to_string(getpid()) + ".conf");
   explicit LlgrToggleFile(char const* content) {
      std::ofstream(path) << content;
      setenv("QORBGP_TOGGLE_FILE", path.c_str(), 1);
      toggleQorBgpLlgrEnabledResetForTest();
   }
   ~LlgrToggleFile() {
      unsetenv("QORBGP_TOGGLE_FILE");
      toggleQorBgpLlgrEnabledResetForTest();
      std::filesystem::remove(path);
   }
};

TEST(CommListDeathTest, PhaseViolationsStopWithTheirConditions) {
   auto table = commListDedupTableFactory();
   CommList::Ptr building = commListFactory();
   EXPECT_DEATH(building->comm(1), "assertion failed: commVectorSorted\\(\\)");
   CommList::PtrConst published = building->dedup(table.get());
   EXPECT_DEATH(building->commIs(2), "assertion failed: !commVectorSorted\\(\\)");
}

TEST(CommList, DedupSortsDropsDuplicatesTrimsAndCachesFlagsAndHash) {
   auto table = commListDedupTableFactory();
   CommList::Ptr list = commListFactory();
   for (U32 value : {3u, 1u, 3u, 2u, 0xFFFFFF02u}) {
      list->commIs(value);
   }
   CommList::PtrConst published = list->dedup(table.get());
   EXPECT_EQ(*published->commVectorRawPtr(), (std::vector<U32>{1, 2, 3, 0xFFFFFF02}));
   EXPECT_EQ(published->commVectorRawPtr()->capacity(), 4u);
   EXPECT_TRUE(published->comm(3));
   EXPECT_FALSE(published->comm(4));
   EXPECT_FALSE(published->comm(0xFFFFFFFF)); // past the end
   EXPECT_TRUE(!published->noExport() && published->noAdvertise() &&
               !published->noExportSubconfed());
   CommList::PtrConst other = publish(*table, {communityNoExport, communityNoExportSubconfed});
   EXPECT_TRUE(other->noExport() && !other->noAdvertise() && other->noExportSubconfed());

   EXPECT_EQ(publish(*table, {})->hash(), 0u);
   // Bytes 02 00 01 00 01 ff ff ff through the one-at-a-time steps.
   EXPECT_EQ(publish(*table, {0xFFFFFF01, 0x00010002})->hash(), 0x320e1ea2u);
}

TEST(CommList, EqualSetsInternToOneObjectUntilReleased) {
   auto table = commListDedupTableFactory();
   CommList::PtrConst first = publish(*table, {5, 7, 6});
   EXPECT_EQ(publish(*table, {7, 6, 5, 5, 7}), first);
   EXPECT_NE(publish(*table, {5, 6}), first);
   EXPECT_EQ(publish(*table, {}), publish(*table, {}));

   first = nullptr;
   EXPECT_EQ(table->dedupTable()->size(), 0u);
   CommList::Ptr again = commListFactory();
   again->commIs(5);
   again->commIs(6);
   again->commIs(7);
   EXPECT_EQ(again->dedup(table.get()), again); // interned itself, not a stale object
}

TEST(CommList, SerializeChoosesTheLengthForm) {
   auto table = commListDedupTableFactory();
   expectBytes(publish(*table, {})->serialize(), {0xC0, 8, 0});
   expectBytes(publish(*table, {communityNoExport, 0x00010002})->serialize(),
               {0xC0, 8, 8, 0x00, 0x01, 0x00, 0x02, 0xFF, 0xFF, 0xFF, 0x01});
   for (U32 count : {63u, 64u, 65u}) {
      SCOPED_TRACE(::testing::Message() << count << " communities");
      CommList::Ptr list = commListFactory();
      U32 const size = 4 * count;
      Bytes expected =
         size > 255 ? Bytes{0xD0, 8, U8(size >> 8), U8(size)} : Bytes{0xC0, 8, U8(size)};
      for (U32 i = 0; i < count; ++i) {
         list->commIs(0x01020300 + i);
         expected.insert(expected.end(), {0x01, 0x02, 0x03, U8(i)});
      }
      expectBytes(list->dedup(table.get())->serialize(), expected);
   }
}

TEST(CommList, ColonFormAndWellKnownNames) {
   struct Row {
      U32 value;
      char const* colon;
      char const* name;
   };
   Row const rows[] = {
      {0, "0:0", "internet"},
      {0xFFFF0000, "65535:0", "GSHUT"},
      {0xFFFF0001, "65535:1", ""},
      {0xFFFF0006, "65535:6", "llgr-stale"},
      {0xFFFF0007, "65535:7", "no-llgr"},
      {0xFFFFFF01, "65535:65281", "no-export"},
      {0xFFFFFF03, "65535:65283", "local-as"},
      {0xFFFFFFFF, "65535:65535", ""},
   };
   LlgrToggleFile defaults(""); // no line: the toggle is on
   for (Row const& row : rows) {
      SCOPED_TRACE(::testing::Message() << std::hex << row.value);
      EXPECT_EQ(CommList::getStringValue(row.value), row.colon);
      EXPECT_EQ(CommList::wellKnownName(row.value), row.name);
   }
}

TEST(CommList, RegexMatchesNumericTextThenNamedText) {
   LlgrToggleFile on("QorBgpLlgr=on\n");
   auto table = commListDedupTableFactory();
   CommList::PtrConst noExport = publish(*table, {communityNoExport});
   EXPECT_TRUE(matches(noExport, "no-export"));
   EXPECT_TRUE(matches(noExport, "65535:65281"));
   EXPECT_FALSE(matches(noExport, "no-advertise"));
   CommList::PtrConst mixed = publish(*table, {communityNoExport, communityLlgrStale, 0x00010002});
   EXPECT_TRUE(matches(mixed, "^1:2 65535:6 65535:65281$"));
   EXPECT_TRUE(matches(mixed, "^1:2 llgr-stale no-export$"));
   EXPECT_FALSE(matches(mixed, "^1:2 65535:6 no-export$")); // never half named
   EXPECT_TRUE(matches(publish(*table, {}), "^$"));
}

TEST(CommList, LlgrToggleOffLeavesLlgrCommunitiesUnnamed) {
   LlgrToggleFile off("QorBgpLlgr=off\n");
   EXPECT_FALSE(toggleQorBgpLlgrEnabled());
   EXPECT_EQ(CommList::wellKnownName(communityLlgrStale), "");
   EXPECT_EQ(CommList::wellKnownName(communityNoLlgr), "");
   EXPECT_EQ(CommList::wellKnownName(communityNoExport), "no-export");
   auto table = commListDedupTableFactory();
   CommList::PtrConst stale = publish(*table, {communityLlgrStale});
   EXPECT_FALSE(matches(stale, "llgr-stale"));
   EXPECT_TRUE(matches(stale, "^65535:6$"));
}

TEST(CommListSnapshot, MirrorsTheListAndKeepsOneEntryPerCommunity) {
   auto table = commListDedupTableFactory();
   CommListSnapshot::Ptr snapshot = publish(*table, {9, 3})->commSnapshot();
   EXPECT_TRUE(snapshot->hasNotificationActive());
   ASSERT_EQ(snapshot->comms(), 2u);
   EXPECT_EQ(snapshot->begin()->first, 3u);
   snapshot->commIs(9, false); // one entry per community: replaced
   EXPECT_EQ(snapshot->comms(), 2u);
   EXPECT_EQ(snapshot->comm(9), false);
   EXPECT_EQ(snapshot->comm(4), std::nullopt);
}

} // namespace
} // namespace Routing::Bgp
