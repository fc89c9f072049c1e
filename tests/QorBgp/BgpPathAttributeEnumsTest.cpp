#include "QorBgpCommunity/QorBgp/BgpPathAttributeEnums.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

namespace Routing::Bgp {
namespace {

TEST(BgpPathAttrType, ShowStringSeparatesReservedZeroFromUnknownCodes) {
   struct Row {
      U32 value;
      char const* show;
   };
   static constexpr Row rows[] = {
       {0, "Invalid Path Attribute"}, {4, "MED"}, {11, "Invalid attribute"},
       {25, "IPv6 Address Specific Extended Community"}, {40, "BGP Prefix-SID"},
       {41, "Invalid attribute"}, {128, "Attribute Set"}, {254, "Invalid attribute"},
       {255, "Reserved for Development"}, {256, "Invalid attribute"}, {1000, "Invalid attribute"},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(row.value);
      EXPECT_EQ(bgpPathAttrTypeShowString(static_cast<BgpPathAttrType>(row.value)), row.show);
   }
}

TEST(BgpPathAttrType, InstanceRejectsUnlistedCodesWhichRenderAsNumbers) {
   EXPECT_EQ(BgpPathAttrTypeInstance("largeCommunity"), largeCommunity);
   EXPECT_EQ(stringValue(static_cast<BgpPathAttrType>(11)), "11");
   EXPECT_THROW(BgpPathAttrTypeInstance(11), Kiv::RangeError);
}

TEST(BgpPathAttrFlag, CombinationsStayFlagsButOnlyNamedOnesAreMembers) {
   EXPECT_EQ(static_cast<U32>(optionalTransitive | extLen), 0xD0u);
   EXPECT_EQ(opt | transitive | partial, optionalTransitivePartial);
   EXPECT_EQ(BgpPathAttrFlagInstance(0xC0), optionalTransitive);
   EXPECT_THROW(BgpPathAttrFlagInstance(0xD0), Kiv::RangeError);
}

TEST(AspType, BoundHasANameButIsNotAKind) {
   EXPECT_EQ(AspTypeInstance(5), aspTypeConfedEbgp);
   EXPECT_FALSE(bgpIsValidEnumMember(aspTypeMax));
   EXPECT_EQ(stringValue(aspTypeMax), "aspTypeMax");
   EXPECT_THROW(AspTypeInstance(6), Kiv::RangeError);
}

} // namespace
} // namespace Routing::Bgp
