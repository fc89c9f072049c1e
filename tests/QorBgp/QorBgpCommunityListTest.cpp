#include "QorBgp/QorBgpCommunityList.h"

#include "platform/PosixRegex.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>
#include <vector>

#include <unistd.h>

namespace Routing::Bgp {
namespace {

using Acl::CommunityValue;
using Bytes = std::vector<U8>;

std::string hex(std::string const& bytes) {
   std::string text;
   for (char digits[4]; unsigned char b : bytes) {
      text.append(digits, std::snprintf(digits, sizeof digits, "%02x ", b));
   }
   return text;
}

void expectBytes(std::string const& actual, Bytes const& expected) {
   std::string const want(expected.begin(), expected.end());
   EXPECT_EQ(actual, want) << "got      " << hex(actual) << "\nexpected " << hex(want);
}

template <class ListPtr, class Table, class Values>
auto fillAndPublish(ListPtr list, Table const& table, Values const& comms) {
   for (auto const& value : comms) {
      list->commIs(value);
   }
   return list->dedup(&table);
}
auto publish(CommListDedupTable const& table, std::initializer_list<U32> comms) {
   return fillAndPublish(commListFactory(), table, comms);
}
auto publish(LargeCommListDedupTable const& table, std::initializer_list<CommunityValue> comms) {
   return fillAndPublish(largeCommListFactory(), table, comms);
}

template <class ListPtr>
bool matches(ListPtr const& list, char const* pattern) {
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

   auto largeTable = largeCommListDedupTableFactory();
   LargeCommList::Ptr large = largeCommListFactory();
   EXPECT_DEATH(large->serialize(), "assertion failed: commVectorSorted\\(\\)");
   LargeCommList::PtrConst largePublished = large->dedup(largeTable.get());
   EXPECT_DEATH(large->commIs({1, 2, 3}), "assertion failed: !commVectorSorted\\(\\)");
}

TEST(CommList, DedupSortsDropsDuplicatesTrimsAndCachesFlagsAndHash) {
   auto table = commListDedupTableFactory();
   CommList::Ptr list = commListFactory();
   for (U32 value : {3u, 1u, 3u, 2u, 0xFFFFFF02u}) {
      list->commIs(value);
   }
   EXPECT_EQ(list->commVectorRawPtr()->capacity(), 8u); // doubling from one
   CommList::PtrConst published = list->dedup(table.get());
   EXPECT_EQ(*published->commVectorRawPtr(), (std::vector<U32>{1, 2, 3, 0xFFFFFF02}));
   EXPECT_EQ(published->commVectorRawPtr()->capacity(), 4u);
   EXPECT_TRUE(published->comm(3));
   EXPECT_FALSE(published->comm(4));
   EXPECT_FALSE(published->comm(0xFFFFFFFF)); // past the end
   EXPECT_TRUE(!published->noExport() && published->noAdvertise() && !published->noExportSubconfed());
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

TEST(LargeCommList, DedupOrdersByAllThreeWordsInternsAndHashes) {
   auto table = largeCommListDedupTableFactory();
   LargeCommList::PtrConst list =
      publish(*table, {{2, 0, 0}, {1, 5, 1}, {1, 2, 9}, {1, 5, 0}, {2, 0, 0}, {1, 5, 1}});
   EXPECT_EQ(*list->commVectorRawPtr(),
             (std::vector<CommunityValue>{{1, 2, 9}, {1, 5, 0}, {1, 5, 1}, {2, 0, 0}}));
   EXPECT_EQ(list->commVectorRawPtr()->capacity(), 4u);
   EXPECT_TRUE(list->comm({1, 5, 0}));
   EXPECT_FALSE(list->comm({1, 5, 2}));
   EXPECT_FALSE(list->comm({3, 0, 0}));
   EXPECT_EQ(publish(*table, {{1, 5, 1}, {2, 0, 0}, {1, 2, 9}, {1, 5, 0}}), list);
   EXPECT_NE(publish(*table, {{1, 5, 1}, {2, 0, 0}, {1, 2, 9}}), list);

   EXPECT_EQ(publish(*table, {})->hash(), 0u);
   // Bytes 00 00 01 00, 01 00 00 00, 02 00 00 00 through the one-at-a-time steps.
   EXPECT_EQ(publish(*table, {{65536, 1, 2}})->hash(), 0x6ec43b92u);
}

// The header for `size` value bytes of attribute `type`.
Bytes header(U8 type, U32 size) {
   return size > 255 ? Bytes{0xD0, type, U8(size >> 8), U8(size)} : Bytes{0xC0, type, U8(size)};
}

TEST(CommLists, SerializeTheirAttributesWithTheRightLengthForm) {
   auto table = commListDedupTableFactory();
   expectBytes(publish(*table, {})->serialize(), {0xC0, 8, 0});
   expectBytes(publish(*table, {communityNoExport, 0x00010002})->serialize(),
               {0xC0, 8, 8, 0x00, 0x01, 0x00, 0x02, 0xFF, 0xFF, 0xFF, 0x01});
   for (U32 count : {63u, 64u, 65u}) {
      SCOPED_TRACE(::testing::Message() << count << " standard communities");
      CommList::Ptr list = commListFactory();
      Bytes expected = header(8, 4 * count);
      for (U32 i = 0; i < count; ++i) {
         list->commIs(0x01020300 + i);
         expected.insert(expected.end(), {0x01, 0x02, 0x03, U8(i)});
      }
      expectBytes(list->dedup(table.get())->serialize(), expected);
   }

   auto largeTable = largeCommListDedupTableFactory();
   expectBytes(publish(*largeTable, {})->serialize(), {0xC0, 32, 0});
   for (U32 count : {1u, 21u, 22u}) {
      SCOPED_TRACE(::testing::Message() << count << " large communities");
      LargeCommList::Ptr list = largeCommListFactory();
      Bytes expected = header(32, 12 * count);
      for (U32 i = 0; i < count; ++i) {
         list->commIs({0x01020304, 0x05060700 + i, 0x0A0B0C0D});
         expected.insert(expected.end(), {1, 2, 3, 4, 5, 6, 7, U8(i), 0x0A, 0x0B, 0x0C, 0x0D});
      }
      expectBytes(list->dedup(largeTable.get())->serialize(), expected);
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

TEST(LargeCommunityFormatter, PlainAndAsdotForms) {
   struct Row {
      CommunityValue value;
      char const* plain;
      char const* asdot;
   };
   Row const rows[] = {
      {{65535, 1, 2}, "65535:1:2", "65535:1:2"},
      {{65536, 1, 2}, "65536:1:2", "1.0:1:2"},
      {{4294967295, 4294967295, 4294967295}, "4294967295:4294967295:4294967295",
       "65535.65535:4294967295:4294967295"},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(row.plain);
      EXPECT_EQ(LargeCommList::getStringValue(row.value), row.plain);
      Kiv::DynamicBuffer<4> buffer; // forces growth
      buffer.append("x ");
      EXPECT_EQ(LargeCommunityFormatter::format(buffer, row.value, true),
                std::string_view(row.asdot).size());
      EXPECT_EQ(buffer.str(), std::string("x ") + row.asdot);
   }
}

TEST(CommLists, RegexMatchesNumericTextThenNamedText) {
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

   auto largeTable = largeCommListDedupTableFactory();
   LargeCommList::PtrConst large = publish(*largeTable, {{65537, 0, 0}, {65536, 1, 2}});
   EXPECT_TRUE(matches(large, "^65536:1:2 65537:0:0$"));
   EXPECT_FALSE(matches(large, "1\\.0:1:2")); // never asdot
   EXPECT_TRUE(matches(publish(*largeTable, {}), "^$"));
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
   snapshot->commIs(9, false);
   snapshot->commIs(4, true);
   EXPECT_EQ(snapshot->comms(), 3u);
   EXPECT_EQ(snapshot->comm(9), false);
   EXPECT_FALSE(snapshot->commDel(5));
   snapshot->commDel(snapshot->begin());
   EXPECT_EQ(snapshot->comm(3), std::nullopt);
   snapshot->commDelAll();
   EXPECT_EQ(snapshot->comms(), 0u);

   auto largeTable = largeCommListDedupTableFactory();
   auto large = publish(*largeTable, {{65537, 0, 0}, {65536, 1, 2}})->commSnapshot();
   ASSERT_EQ(large->comms(), 2u);
   EXPECT_EQ(large->begin()->first, (CommunityValue{65536, 1, 2}));
   EXPECT_EQ(large->comm({65537, 0, 0}), true);
}

} // namespace
} // namespace Routing::Bgp
