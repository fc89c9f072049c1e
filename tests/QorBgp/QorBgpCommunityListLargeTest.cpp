#include "QorBgpCommunity/QorBgp/QorBgpCommunityListLarge.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityListDedupTable.h"
#include "QorBgpCommunity/platform/PosixRegex.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Routing::Bgp {
namespace {

using Acl::CommunityValue;

LargeCommList::PtrConst publish(LargeCommListDedupTable const& table,
                                std::initializer_list<CommunityValue> comms) {
   LargeCommList::Ptr list = largeCommListFactory();
   for (CommunityValue const& value : comms) {
      list->commIs(value);
   }
   return list->dedup(&table);
}

TEST(LargeCommListDeathTest, PhaseViolationsStopWithTheirConditions) {
   auto table = largeCommListDedupTableFactory();
   LargeCommList::Ptr large = largeCommListFactory();
   EXPECT_DEATH(large->serialize(), "assertion failed: commVectorSorted\\(\\)");
   LargeCommList::PtrConst published = large->dedup(table.get());
   EXPECT_DEATH(large->commIs({1, 2, 3}), "assertion failed: !commVectorSorted\\(\\)");
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

TEST(LargeCommList, SerializeChoosesTheLengthForm) {
   auto table = largeCommListDedupTableFactory();
   EXPECT_EQ(publish(*table, {})->serialize(), std::string("\xC0\x20\x00", 3));
   for (U32 count : {1u, 21u, 22u}) {
      SCOPED_TRACE(::testing::Message() << count << " large communities");
      LargeCommList::Ptr list = largeCommListFactory();
      U32 const size = 12 * count;
      std::vector<U8> expected = size > 255 ? std::vector<U8>{0xD0, 32, U8(size >> 8), U8(size)}
                                            : std::vector<U8>{0xC0, 32, U8(size)};
      for (U32 i = 0; i < count; ++i) {
         list->commIs({0x01020304, 0x05060700 + i, 0x0A0B0C0D});
         expected.insert(expected.end(), {1, 2, 3, 4, 5, 6, 7, U8(i), 0x0A, 0x0B, 0x0C, 0x0D});
      }
      EXPECT_EQ(list->dedup(table.get())->serialize(),
                std::string(expected.begin(), expected.end()));
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
      {{4294967295, 4294967295, 4294967295},
       "4294967295:4294967295:4294967295",
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

TEST(LargeCommList, RegexMatchesThePlainTextAndSnapshotsMirrorTheList) {
   auto table = largeCommListDedupTableFactory();
   LargeCommList::PtrConst large = publish(*table, {{65537, 0, 0}, {65536, 1, 2}});
   auto matches = [](LargeCommList::PtrConst const& list, char const* pattern) {
      Routing::RouteMap::PosixRegex const regex(pattern);
      return list->matchCommunitiesRegex(&regex);
   };
   EXPECT_TRUE(matches(large, "^65536:1:2 65537:0:0$"));
   EXPECT_FALSE(matches(large, "1\\.0:1:2")); // never asdot
   EXPECT_TRUE(matches(publish(*table, {}), "^$"));

   auto snapshot = large->commSnapshot();
   ASSERT_EQ(snapshot->comms(), 2u);
   EXPECT_EQ(snapshot->begin()->first, (CommunityValue{65536, 1, 2}));
   EXPECT_EQ(snapshot->comm({65537, 0, 0}), true);
}

} // namespace
} // namespace Routing::Bgp
