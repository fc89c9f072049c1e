#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace Routing::Bgp {
namespace {

// Per kind: an unsorted value with a duplicate, and the canonical value it re-encodes to.
struct Kind {
   U8 typeCode;
   std::size_t elementSize;
   char const* unsortedHex;
   char const* canonicalHex;
};
Kind const kinds[] = {
   {community, 4, "ffffff01 00010002 ffffff01 00000000", "00000000 00010002 ffffff01"},
   {largeCommunity, 12,
    "0000fde8 00000002 00000001 00010000 00000000 00000000 0000fde8 00000002 00000001",
    "0000fde8 00000002 00000001 00010000 00000000 00000000"},
   {extCommunity, 8, "4300000000000002 0002fde800000064 4300000000000002",
    "0002fde800000064 4300000000000002"},
   {extCommunityIp6, 20,
    "4005 00000000000000000000000000000001 fffe 0002 20010db8000000000000000000000001 0102 "
    "4005 00000000000000000000000000000001 fffe",
    "0002 20010db8000000000000000000000001 0102 4005 00000000000000000000000000000001 fffe"},
};

std::vector<U8> bytes(char const* hex) { return parseHex(hex).value(); }

// The list's value re-encoded: the serialised attribute without its 3- or 4-byte header.
std::vector<U8> reencoded(AnyCommList const& any) {
   std::string attribute;
   if (auto const* list = std::get_if<CommList::PtrConst>(&any)) {
      attribute = (*list)->serialize();
   } else if (auto const* large = std::get_if<LargeCommList::PtrConst>(&any)) {
      attribute = (*large)->serialize();
   } else if (auto const* ext = std::get_if<ExtCommList::PtrConst>(&any)) {
      attribute = (*ext)->serialize(ExtCommList::serialization(true, false, false));
   } else {
      attribute = std::get<ExtCommIp6List::PtrConst>(any)->serialize(true);
   }
   return std::vector<U8>(attribute.begin() + ((attribute.at(0) & extLen) ? 4 : 3),
                          attribute.end());
}

class CommunityDecodeTest : public testing::Test {
 protected:
   CommunityTables::Ptr tables = communityTablesFactory();

   CommunityDecodeResult<AnyCommList> decode(Kind const& kind, std::span<U8 const> value) {
      return decodeAttribute(*tables, kind.typeCode, value);
   }
   std::vector<std::size_t> tableSizes() const {
      CommunityTables const& t = *tables;
      return {t.extCommDedupTable()->dedupTable()->size(),
              t.extCommIp6DedupTable()->dedupTable()->size(),
              t.commListDedupTable()->dedupTable()->size(),
              t.largeCommListDedupTable()->dedupTable()->size(),
              t.extCommListDedupTable()->dedupTable()->size(),
              t.extCommIp6ListDedupTable()->dedupTable()->size()};
   }
};

TEST_F(CommunityDecodeTest, BadLengthsAreTreatAsWithdrawAndTouchNoTable) {
   std::vector<std::size_t> const before = tableSizes();
   for (Kind const& kind : kinds) {
      std::size_t const s = kind.elementSize;
      for (std::size_t length : {std::size_t{0}, s - 1, s + 1, 3 * s - 2, (0xFFFF / s + 1) * s}) {
         SCOPED_TRACE(testing::Message() << "type " << int(kind.typeCode) << " length " << length);
         auto const result = decode(kind, std::vector<U8>(length, 0x5a));
         EXPECT_EQ(result.status, communityDecodeMalformed);
         EXPECT_EQ(result.action, treatAsWithdraw);
         EXPECT_TRUE(std::holds_alternative<std::monostate>(result.list));
         EXPECT_EQ(tableSizes(), before);
      }
   }
   EXPECT_EQ(decode(kinds[1], std::vector<U8>(13)).reason,
             "LARGE_COMMUNITY value length 13 is not a non-zero multiple of 12");
   auto const other = decodeAttribute(*tables, 1, bytes(kinds[0].canonicalHex));
   EXPECT_EQ(other.status, communityDecodeNotCommunityAttribute);
   EXPECT_EQ(other.reason, "attribute type 1 is not a community attribute");
   EXPECT_EQ(tableSizes(), before);
}

TEST_F(CommunityDecodeTest, ReencodingIsCanonicalAndDecodesToTheSameList) {
   for (Kind const& kind : kinds) {
      SCOPED_TRACE(testing::Message() << "type " << int(kind.typeCode));
      // 70 ascending elements: every attribute is longer than 255 bytes (4-byte header).
      std::vector<U8> longValue(70 * kind.elementSize);
      for (std::size_t i = 0; i < 70; ++i) {
         longValue[(i + 1) * kind.elementSize - 1] = static_cast<U8>(i);
      }
      for (auto const& [value, canonical] :
           {std::pair{bytes(kind.unsortedHex), bytes(kind.canonicalHex)},
            std::pair{longValue, longValue}}) {
         auto const first = decode(kind, value);
         ASSERT_TRUE(first.ok()) << first.reason;
         std::vector<U8> const again = reencoded(first.list);
         EXPECT_EQ(hexBytes(again), hexBytes(canonical));
         EXPECT_EQ(decode(kind, again).list, first.list);
      }
   }
}

// An extended list is looked up by its classification lists before one is
// built: a resident classification list alone must not make it found.
TEST_F(CommunityDecodeTest, ExtendedListsAreFoundByTheirPartsOnlyWhenResident) {
   auto extended = [&](char const* hex) {
      return std::get<ExtCommList::PtrConst>(decode(kinds[2], bytes(hex)).list);
   };
   ExtCommList::PtrConst const both = extended("0002fde800000064 4300000000000002");
   ExtCommList::PtrConst const alone = extended("0002fde800000064");
   EXPECT_NE(alone, both);
   EXPECT_EQ(alone->classificationList(extCommClassificationRouteTarget),
             both->classificationList(extCommClassificationRouteTarget));
   EXPECT_EQ(extended("4300000000000002 0002fde800000064 0002fde800000064"), both);
   EXPECT_EQ(tables->extCommListDedupTable()->dedupTable()->size(), 2u);
}

TEST(CommunityDecodeHex, ParsesPairsWithSpacesBetweenAndRendersLowerCase) {
   EXPECT_EQ(hexBytes(parseHex(" 0A\tff\n00").value()), "0aff00");
   EXPECT_EQ(parseHex(""), std::vector<U8>{});
   for (char const* bad : {"abc", "0 a", "0x00", "zz"}) {
      EXPECT_EQ(parseHex(bad), std::nullopt) << bad;
   }
}

} // namespace
} // namespace Routing::Bgp
