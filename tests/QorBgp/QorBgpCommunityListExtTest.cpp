#include "QorBgpCommunity/QorBgp/QorBgpCommunityListExtDedupTable.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"
#include "QorBgpCommunityListExtTestLists.h"
#include "tests/platform/HoardTestSegment.h"

#include <gtest/gtest.h>

#include <typeinfo>

namespace Routing::Bgp {
namespace {

constexpr U64 rtA = 0x0002fde800000064;     // 65000:100
constexpr U64 color = 0x030b000000000064;   // colour 100
constexpr U64 lbw1M = 0x4004fde849742400;   // 1e6 bytes/s
constexpr U64 lbw2M = 0x4004fde849f42400;   // 2e6 bytes/s
constexpr U64 ovs = 0x4300000000000000;     // origin validation: valid

using ExtCommListTest = ExtCommListTables;

std::string hex(std::string const& bytes) {
   return hexBytes({reinterpret_cast<U8 const*>(bytes.data()), bytes.size()});
}

TEST_F(ExtCommListTest, SerializationSelectsAndCounts) {
   ExtCommList::PtrConst list = publish({ovs, lbw1M, color, rtA});
   EXPECT_TRUE(list->hasLinkBandwidth());
   EXPECT_TRUE(list->hasOriginValidationState());
   struct Row {
      ExtCommList::Serialization s;
      char const* bytes;
   };
   Row const rows[] = {
      {ExtCommList::serialization(true, false, false), "c01020"
                                                       "0002fde800000064"
                                                       "030b000000000064"
                                                       "4004fde849742400"
                                                       "4300000000000000"},
      {ExtCommList::serialization(false, false, false), "c01010"
                                                        "0002fde800000064"
                                                        "030b000000000064"},
      {ExtCommList::serialization(false, true, false), "c01018"
                                                       "0002fde800000064"
                                                       "030b000000000064"
                                                       "4004fde849742400"},
      {ExtCommList::serialization(false, true, true), "c01020"
                                                      "0002fde800000064"
                                                      "030b000000000064"
                                                      "4004fde849742400"
                                                      "4300000000000000"},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(row.s.valueToStrep());
      EXPECT_EQ(hex(list->serialize(row.s)), row.bytes);
   }
   EXPECT_EQ(publish({lbw1M, ovs})->serialize(ExtCommList::serialization(false, false, false)), "");

   // Two link bandwidths: the header announces one, the body carries both.
   ExtCommList::PtrConst two = publish({lbw1M, lbw2M});
   EXPECT_EQ(hex(two->serialize(ExtCommList::serialization(false, true, false))),
             "c01008" "4004fde849742400" "4004fde849f42400");
}

TEST_F(ExtCommListTest, PruningKeepsTheBestLinkBandwidth) {
   ExtCommList::PtrConst two = publish({rtA, lbw2M, lbw1M});
   EXPECT_TRUE(two->hasPrunableValues());
   ExtCommList::PtrConst pruned = two->prune(lists.get());
   ASSERT_EQ(pruned->comms(), 2u);
   EXPECT_EQ(pruned->comm(lbw1M)->community(), lbw1M); // the smaller bandwidth is "better"
   EXPECT_EQ(pruned->comm(lbw2M), nullptr);
   EXPECT_EQ(pruned, publish({lbw1M, rtA}));
   ExtCommList::PtrConst one = publish({rtA, lbw1M});
   EXPECT_FALSE(one->hasPrunableValues());
   EXPECT_EQ(one->prune(lists.get()), one);
   // Only an invalid (NaN) bandwidth: nothing survives.
   EXPECT_EQ(publish({0x400400007fc00000})->prune(lists.get()), nullptr);
}

TEST_F(ExtCommListTest, PolicyRegexTriesStandardThenClassificationTexts) {
   ExtCommList::PtrConst list = publish({rtA, 0x0003fde800000065, color});
   auto matches = [&](char const* pattern) {
      Routing::RouteMap::PosixRegex const regex(pattern);
      return list->matchCommunitiesRegex(&regex);
   };
   EXPECT_TRUE(matches("^65000:100 65000:101 Color:CO\\(00\\):100"));
   EXPECT_TRUE(matches("^RT:65000:100 SoO:65000:101 "));
   EXPECT_FALSE(matches("^65000:100 SoO")); // never half one text, half the other
   EXPECT_FALSE(list->hasPolicyMatchStrepUICommunities());
}

TEST_F(ExtCommListTest, AttributeTexts) {
   EXPECT_EQ(ExtCommList::CommVectorAttrs(1 | 8).valueToStrep(),
             "Value('Routing::Bgp::ExtCommList::CommVectorAttrs', ** {'sorted': True, "
             "'hasLinkBandwidth': False, 'hasLinkBandwidthWithUnspecifiedAsNumber': False, "
             "'hasOriginValidationState': True, 'hasPolicyMatchStrepUICommunities': False, "
             "'hasPrunableValues': False})");
   EXPECT_EQ(ExtCommList::serialization(false, true, true).valueToStrep(),
             "Value('Routing::Bgp::ExtCommList::Serialization', ** {'all': False, "
             "'transitive': True, 'linkBandwidth': True, 'originAsValidity': True})");
   // The global administrator is left out.
   EXPECT_EQ(ExtCommList::getStringValue(Acl::CommunityValue{65000, 7, 9}), "7:9");
}

TEST_F(ExtCommListTest, DehoardRestoresPlainValuesIntoALocalList) {
   HoardTestSegment segment(true);
   hoard::StoreWriter writer = segment.create(1 << 16);
   ExtCommList::PtrConst list = publish({color, rtA});
   hoard::Location const at = list->hoard(writer);
   hoard::StoreManager store = segment.open();
   ExtCommList::PtrConst restored = ExtCommList::dehoard(&at, &store);
   ASSERT_TRUE(restored);
   ASSERT_EQ(restored->comms(), 2u);
   for (U32 i = 0; i < 2; ++i) {
      ExtComm const& value = *(*restored->commVectorRawPtr())[i];
      ExtComm const& original = *(*list->commVectorRawPtr())[i];
      EXPECT_EQ(typeid(value), typeid(ExtComm));
      EXPECT_EQ(value.getContent(), original.getContent());
      EXPECT_EQ(value.classification(), original.classification());
   }
   EXPECT_EQ(restored->dedupState(), Zup::DedupState::local);
   EXPECT_EQ(restored->classificationList(extCommClassificationColor)->dedupState(),
             Zup::DedupState::local);
   writer.beginChange();
   EXPECT_FALSE(ExtCommList::dehoard(&at, &store));
}

} // namespace
} // namespace Routing::Bgp
