#include "QorBgpCommunity/QorBgp/QorBgpCommunityListClassification.h"

#include "QorBgpCommunity/QorBgp/Parse/ExtComm.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDedupTable.h"

#include <gtest/gtest.h>

namespace Routing::Bgp {
namespace {

TEST(LinkBandwidthClassificationList, KeepsTheFirstOfEquallyGoodAndPrunesInvalidOnes) {
   auto recognition = bgpParseExtCommContainerSmFactory();
   auto values = extCommDedupTableFactory(recognition->extCommParser());
   auto value = [&](U64 word) { return ExtComm::dedupContent(values.get(), ExtCommContent(word)); };
   ExtComm::PtrConst first = value(0x4004fde849742400); // 1e6 bytes/s
   auto lb = linkBandwidthExtCommClassificationListFactory();
   lb->commIs(first);
   EXPECT_FALSE(lb->hasPrunableValues());
   lb->commIs(value(0x4004000a49742400)); // the same bandwidth under another AS
   EXPECT_TRUE(lb->hasPrunableValues());
   EXPECT_EQ(lb->best(), first);
   EXPECT_EQ(lb->prune(), ExtCommVector{first});

   auto invalid = linkBandwidthExtCommClassificationListFactory();
   invalid->commIs(value(0x400400007fc00000)); // NaN
   EXPECT_TRUE(invalid->hasPrunableValues());
   EXPECT_EQ(invalid->best(), nullptr);
   EXPECT_TRUE(invalid->prune().empty());
}

TEST(ExtCommClassificationList, AttributeText) {
   EXPECT_EQ(ExtCommClassificationList::CommVectorAttrs(3).valueToStrep(),
             "Value('Routing::Bgp::ExtCommClassificationList::CommVectorAttrs', ** "
             "{'sorted': True, 'hasPrunableValues': True})");
}

} // namespace
} // namespace Routing::Bgp
