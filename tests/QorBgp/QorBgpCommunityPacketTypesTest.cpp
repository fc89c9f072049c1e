#include "QorBgpCommunity/QorBgp/QorBgpCommunityPacketTypes.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>


namespace Routing::Bgp {
namespace {

// Values from 0 to 0x100 that pass a subtype enumeration's membership test.
template <class E>
std::vector<U32> members() {
   std::vector<U32> result;
   for (U32 v = 0; v <= 0x100; ++v) {
      if (bgpIsValidEnumMember(static_cast<E>(v))) {
         result.push_back(v);
      }
   }
   return result;
}

TEST(ExtCommPacketTypes, MembershipAcceptsExactlyTheWireValues) {
   EXPECT_EQ(members<BgpExtCommPktType>(),
             (std::vector<U32>{0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x08, 0x40, 0x41, 0x42,
                               0x43, 0x44, 0x80, 0x81, 0x82}));
   // 0x14 is named in the transitive two-octet-AS enumeration but is no member.
   EXPECT_EQ(members<BgpExtCommPktSubtypeTransTwoOctetAs>(),
             (std::vector<U32>{0x02, 0x03, 0x05, 0x08, 0x09, 0x0a, 0x10}));
   EXPECT_EQ(stringValue(extCommPktSubtypeNonTransTwoOctetAsLinkBandwidthAny),
             "extCommPktSubtypeNonTransTwoOctetAsLinkBandwidthAny");
   EXPECT_TRUE(members<BgpExtCommPktSubtypeNonTransIpv4Address>().empty());
   EXPECT_EQ(members<BgpExtCommPktSubtypeEvpn>(),
             (std::vector<U32>{0, 1, 2, 3, 4, 5, 6, 8, 9, 10, 11, 12}));
   EXPECT_EQ(members<BgpExtCommPktSubtypeNonTransOpaque>(), (std::vector<U32>{0, 1}));
   EXPECT_EQ(members<BgpExtCommPktSubtypeTransFlowspecRedirectNexthop>(),
             (std::vector<U32>{0}));
   // The count of classifications is not itself a classification.
   EXPECT_FALSE(bgpIsValidEnumMember(extCommClassificationOneBeyondLast));
   EXPECT_TRUE(bgpIsValidEnumMember(extCommClassificationOriginValidationState));
}

TEST(ExtCommPacketTypes, InstanceFromNumberAndText) {
   EXPECT_EQ(BgpExtCommPktTypeInstance(0x43), extCommPktTypeNonTransOpaque);
   EXPECT_EQ(BgpExtCommPktTypeInstance("extCommPktTypeTransGenericPart3"),
             extCommPktTypeTransGenericPart3);
   EXPECT_EQ(BgpExtCommPktSubtypeNonTransFourOctetAsInstance(
                "extCommPktSubNonTransFourOctetAsUnknown"),
             extCommPktSubNonTransFourOctetAsUnknown);
   try {
      BgpExtCommPktTypeInstance(7);
      FAIL() << "type 7 accepted";
   } catch (Kiv::RangeError const& e) {
      EXPECT_STREQ(e.what(), "no member 7 in Routing::Bgp::BgpExtCommPktType");
   }
   EXPECT_THROW(BgpExtCommPktSubtypeTransTwoOctetAsInstance(0x14), Kiv::RangeError);
   EXPECT_THROW(ExtCommClassificationInstance("extCommClassificationBogus"), Kiv::RangeError);
}

} // namespace
} // namespace Routing::Bgp
