#include "QorBgpCommunity/QorBgp/QorBgpCommunityListFormat.h"

#include "QorBgpCommunityListExtTestLists.h"

#include <gtest/gtest.h>

#include <iomanip>

namespace Routing::Bgp {
namespace {

using Routing::RouteMap::PosixRegex;

class ListText : public ExtCommListTables {
 protected:
   static bool matches(ExtCommList const& list, MatchMode mode, char const* pattern) {
      PosixRegex const regex(pattern);
      return matchExtCommList(&list, mode, &regex);
   }
};

TEST_F(ListText, EveryKindPrintsExactly) {
   auto table = commListDedupTableFactory();
   CommList::Ptr comms = commListFactory();
   comms->commIs(0xFFFFFF01);
   comms->commIs(0x00010002);
   EXPECT_EQ(comms->dedup(table.get())->toStrep(), "1:2 no-export");
   EXPECT_EQ(stringify<CommList>(nullptr), "");
   EXPECT_EQ(commListFactory()->dedup(table.get())->toStrep(), "");

   auto largeTable = largeCommListDedupTableFactory();
   LargeCommList::Ptr large = largeCommListFactory();
   large->commIs({65536, 0, 0});
   large->commIs({1, 2, 3});
   EXPECT_EQ(large->dedup(largeTable.get())->toStrep(), "1:2:3 65536:0:0");
   EXPECT_EQ(stringify<LargeCommList>(nullptr), "");

   ExtCommList::PtrConst ext = publish({0x030b000000000064, 0x0002fde800000064});
   EXPECT_EQ(ext->toStrep(), "[ <RouteTarget2ByteASN 65000:100 0x0002fde800000064> "
                             "<Color: 100(00) 0x030b000000000064> ]");
   EXPECT_EQ(publish({})->toStrep(), "[  ]");
   EXPECT_EQ(stringify<ExtCommList>(nullptr), "NULL");
   EXPECT_EQ(ext->classificationList(extCommClassificationColor)->toStrep(),
             "extCommClassificationColor : <Color: 100(00) 0x030b000000000064>");
   EXPECT_EQ(stringify<ExtCommClassificationList>(nullptr), "");
   auto const& rts = static_cast<RtExtCommClassificationList const&>(
      *ext->classificationList(extCommClassificationRouteTarget));
   EXPECT_EQ(rts.lifeTimeNotifier()->toStrep(),
             "extCommClassificationRouteTarget : <RouteTarget2ByteASN 65000:100 0x0002fde800000064>");
   std::ostringstream os;
   os << static_cast<RtExtCommListLifeTimeNotifier const*>(nullptr) << '|' << std::hex
      << std::setfill('*') << *ext << '|' << std::setw(4) << 255;
   EXPECT_EQ(os.str(), "NULL|" + ext->toStrep() + "|**ff");
}

TEST_F(ListText, MatchModesRenderTheirOwnTexts) {
   // Route target, route origin, colour, link bandwidth, validation state, plain.
   ExtCommList::PtrConst list =
      publish({0x0002fde800000064, 0x0003fde800000065, 0x030b000000000064, 0x4004fde849742400,
               0x4300000000000002, 0x8006000000000000});
   EXPECT_TRUE(matches(*list, MatchMode::standard, "^65000:100 65000:101 Color:CO\\(00\\):100"));
   EXPECT_TRUE(matches(*list, MatchMode::classification, "^RT:65000:100 SoO:65000:101 "));
   EXPECT_TRUE(matches(*list, MatchMode::classification, "lbw 65000:1e\\+06"));
   EXPECT_FALSE(matches(*list, MatchMode::standard, "RT:"));
   // Values without a policy text of their own are left out of the join: no
   // doubled, leading or trailing space.
   EXPECT_TRUE(matches(*list, MatchMode::standard, "Color:CO\\(00\\):100 65000:1e\\+06$"));
   EXPECT_FALSE(matches(*list, MatchMode::standard, "  | $|^ "));
   EXPECT_TRUE(matches(*publish({0x0002fde800000064, 0x4300000000000002}), MatchMode::standard,
                       "^65000:100$"));
   EXPECT_FALSE(list->hasPolicyMatchStrepUICommunities());
   EXPECT_DEATH(matches(*list, MatchMode::ui, "."),
                "assertion failed: !strVal.empty\\(\\) \\|\\| matchMode != MatchMode::ui");
}

} // namespace
} // namespace Routing::Bgp
