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

namespace Routing::Bgp {
namespace {

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
// read it; undoes both on destruction.
class LlgrToggleFile {
 public:
   explicit LlgrToggleFile(char const* content) {
      std::string pattern = (std::filesystem::temp_directory_path() / "qorbgp-llgr-XXXXXX").string();
      dir_ = mkdtemp(pattern.data());
      std::string const path = dir_ + "/toggles.conf";
      std::ofstream(path) << content;
      setenv("QORBGP_TOGGLE_FILE", path.c_str(), 1);
      toggleQorBgpLlgrEnabledResetForTest();
   }
   ~LlgrToggleFile() {
      unsetenv("QORBGP_TOGGLE_FILE");
      toggleQorBgpLlgrEnabledResetForTest();
      std::filesystem::remove_all(dir_);
   }

 private:
   std::string dir_;
};

TEST(CommListDeathTest, PhaseViolationsStopWithTheirConditions) {
   auto table = commListDedupTableFactory();
   CommList::Ptr building = commListFactory();
   building->commIs(1);
   EXPECT_DEATH(building->comm(1), "assertion failed: commVectorSorted\\(\\)");
   EXPECT_DEATH(building->hash(), "assertion failed: commVectorSorted\\(\\)");
   CommList::PtrConst published = building->dedup(table.get());
   EXPECT_DEATH(building->commIs(2), "assertion failed: !commVectorSorted\\(\\)");
}

TEST(CommList, DedupSortsDropsDuplicatesAndTrimsToSize) {
   auto table = commListDedupTableFactory();
   CommList::Ptr list = commListFactory();
   for (U32 value : {3u, 1u, 3u, 2u, 0xFFFFFF02u}) {
      list->commIs(value);
   }
   EXPECT_EQ(list->commVectorRawPtr()->capacity(), 8u); // doubling from one
   CommList::PtrConst published = list->dedup(table.get());
   EXPECT_EQ(published, list);
   EXPECT_EQ(*published->commVectorRawPtr(), (std::vector<U32>{1, 2, 3, 0xFFFFFF02}));
   EXPECT_EQ(published->commVectorRawPtr()->capacity(), 4u);
   EXPECT_EQ(published->comms(), 4u);
   EXPECT_TRUE(published->comm(3));
   EXPECT_FALSE(published->comm(4));
   EXPECT_FALSE(published->comm(0xFFFFFFFF)); // past the end
   EXPECT_FALSE(published->noExport());
   EXPECT_TRUE(published->noAdvertise());
   EXPECT_FALSE(published->noExportSubconfed());
   EXPECT_TRUE(publish(*table, {communityNoExport, communityNoExportSubconfed})->noExport());
}

TEST(CommList, EqualSetsInternToOneObjectUntilReleased) {
   auto table = commListDedupTableFactory();
   CommList::PtrConst first = publish(*table, {5, 7, 6});
   EXPECT_TRUE(first->isDeduped());
   EXPECT_EQ(publish(*table, {7, 6, 5, 5, 7}), first);
   EXPECT_NE(publish(*table, {5, 6}), first);
   EXPECT_EQ(publish(*table, {}), publish(*table, {}));

   first = nullptr;
   EXPECT_EQ(table->dedupTable()->size(), 0u);
   CommList::Ptr again = commListFactory();
   again->commIs(5);
   again->commIs(6);
   again->commIs(7);
   EXPECT_EQ(again->dedup(table.get()), again); // a new object, not a stale one
}

TEST(CommList, HashIsJenkinsOverLittleEndianWords) {
   auto table = commListDedupTableFactory();
   EXPECT_EQ(publish(*table, {})->hash(), 0u);
   // Bytes 02 00 01 00 01 ff ff ff through the one-at-a-time steps.
   EXPECT_EQ(publish(*table, {0xFFFFFF01, 0x00010002})->hash(), 0x320e1ea2u);
}

TEST(CommList, SerializesTheCommunitiesAttribute) {
   auto table = commListDedupTableFactory();
   expectBytes(publish(*table, {})->serialize(), {0xC0, 8, 0});
   expectBytes(publish(*table, {communityNoExport, 0x00010002})->serialize(),
               {0xC0, 8, 8, 0x00, 0x01, 0x00, 0x02, 0xFF, 0xFF, 0xFF, 0x01});
   for (U32 count : {63u, 64u, 65u}) {
      SCOPED_TRACE(::testing::Message() << count << " communities");
      CommList::Ptr list = commListFactory();
      Bytes expected = count * 4 > 255 ? Bytes{0xD0, 8, U8(count * 4 >> 8), U8(count * 4)}
                                       : Bytes{0xC0, 8, U8(count * 4)};
      for (U32 i = 0; i < count; ++i) {
         list->commIs(0x01020300 + i);
         expected.insert(expected.end(), {0x01, 0x02, 0x03, U8(i)});
      }
      expectBytes(list->dedup(table.get())->serialize(), expected);
   }
}

TEST(CommList, TextFormsAndWellKnownNames) {
   struct Row {
      U32 value;
      char const* colon;
      char const* name;
   };
   Row const rows[] = {
      {0, "0:0", "internet"},
      {9, "0:9", ""},
      {0x00010002, "1:2", ""},
      {0xFFFF0000, "65535:0", "GSHUT"},
      {0xFFFF0001, "65535:1", ""},
      {0xFFFF0006, "65535:6", "llgr-stale"},
      {0xFFFF0007, "65535:7", "no-llgr"},
      {0xFFFFFF01, "65535:65281", "no-export"},
      {0xFFFFFF02, "65535:65282", "no-advertise"},
      {0xFFFFFF03, "65535:65283", "local-as"},
      {0xFFFFFFFF, "65535:65535", ""},
   };
   LlgrToggleFile defaults(""); // no line: the toggle is on
   for (Row const& row : rows) {
      SCOPED_TRACE(::testing::Message() << std::hex << row.value);
      EXPECT_EQ(CommList::getStringValue(row.value), row.colon);
      EXPECT_EQ(CommList::wellKnownName(row.value), row.name);
   }
   EXPECT_EQ(stringValue(communityNoExportSubconfed), "communityNoExportSubconfed");
   EXPECT_EQ(BgpCommunityValueInstance("communityGshut"), communityGshut);
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

   CommList::PtrConst empty = publish(*table, {});
   EXPECT_TRUE(matches(empty, "^$"));
   EXPECT_FALSE(matches(empty, "."));
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

// Records each notification with the entry's value as it is afterwards.
struct SnapshotRecorder : CommListSnapshot::Notifiee {
   std::vector<std::string> log;
   void onComm(U32 const& community) override {
      auto const* snapshot = static_cast<CommListSnapshot const*>(notifier());
      auto value = snapshot->comm(community);
      log.push_back(std::to_string(community) + (value ? (*value ? "=1" : "=0") : " gone"));
   }
};

TEST(CommListSnapshot, MirrorsTheListAndNotifiesRealChanges) {
   auto table = commListDedupTableFactory();
   CommListSnapshot::Ptr snapshot = publish(*table, {9, 3})->commSnapshot();
   EXPECT_TRUE(snapshot->hasNotificationActive());
   ASSERT_EQ(snapshot->comms(), 2u);
   EXPECT_EQ(snapshot->begin()->first, 3u);
   EXPECT_EQ(snapshot->comm(9), true);
   EXPECT_EQ(snapshot->comm(4), std::nullopt);

   SnapshotRecorder recorder;
   recorder.notifierIs(snapshot.get());
   snapshot->commIs(9, false);
   snapshot->commIs(9, false); // unchanged: no notification
   snapshot->commIs(4, true);
   EXPECT_EQ(snapshot->comms(), 3u);
   EXPECT_FALSE(snapshot->commDel(5));
   snapshot->commDel(snapshot->begin());
   snapshot->commDelAll();
   EXPECT_EQ(snapshot->comms(), 0u);
   EXPECT_EQ(recorder.log,
             (std::vector<std::string>{"9=0", "4=1", "3 gone", "4 gone", "9 gone"}));
}

} // namespace
} // namespace Routing::Bgp
