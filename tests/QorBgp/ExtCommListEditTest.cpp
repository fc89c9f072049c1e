#include "QorBgpCommunity/QorBgp/ExtCommListEdit.h"

#include "QorBgpCommunityListExtTestLists.h"

#include <gtest/gtest.h>

namespace Routing::Bgp {
namespace {

using Field = CommunityFieldPattern;
using Kind = ExtCommunityMatcher::Kind;

constexpr U64 rtA = 0x0002fde800000064;   // 65000:100
constexpr U64 rtB = 0x0002fde8000000c8;   // 65000:200
constexpr U64 color = 0x030b000000000064; // colour 100

class ExtCommListEditTest : public ExtCommListTables {
 protected:
   ExtCommList::PtrConst apply(ExtCommListEdit const& edit, ExtCommList::PtrConst const& list) {
      return edit.apply(list.get(), values.get(), lists.get(), {});
   }
   std::size_t liveRouteTargetLists() const {
      return lists->notifyingRtExtCommListCollection()->rtExtCommLists().size();
   }
};

// Deleting a route target publishes a list with its own route-target list;
// once no path holds the old list, the route target it alone had leaves.
TEST_F(ExtCommListEditTest, ARouteTargetDeletedFromEveryLiveListLeaves) {
   auto const dropA = extCommListEditFactory(
      CommunityEditKind::deleteMatching, {},
      {extCommunityMatcherFactory(Kind::routeTarget, Field::exact(65000), Field::exact(100))});
   ExtCommList::PtrConst path = publish({rtA, rtB, color});
   EXPECT_EQ(liveRouteTargetLists(), 1u);
   ExtCommList::PtrConst const edited = apply(*dropA, path);
   EXPECT_EQ(edited, publish({rtB, color}));
   EXPECT_TRUE(edited->classificationList(extCommClassificationColor));
   EXPECT_EQ(liveRouteTargetLists(), 2u);
   path = nullptr; // the path now holds only the edited list
   EXPECT_EQ(liveRouteTargetLists(), 1u);
   EXPECT_EQ(apply(*dropA, edited), edited); // nothing left to delete: the same object
}

TEST_F(ExtCommListEditTest, AddReplaceAndDeleteAllKeepTheIdentityRules) {
   ExtCommList::PtrConst const b = publish({rtB});
   auto const addA = extCommListEditFactory(CommunityEditKind::add, {rtA}, {});
   ExtCommList::PtrConst const ab = apply(*addA, b);
   EXPECT_EQ(ab, publish({rtA, rtB}));
   EXPECT_EQ(apply(*addA, ab), ab);
   EXPECT_EQ(apply(*addA, nullptr), publish({rtA}));
   EXPECT_EQ(apply(*extCommListEditFactory(CommunityEditKind::replace, {rtB, rtA}, {}), ab), ab);
   EXPECT_EQ(apply(*extCommListEditFactory(CommunityEditKind::deleteAll, {}, {}), ab), nullptr);
   auto const dropAll = extCommListEditFactory(
      CommunityEditKind::deleteMatching, {},
      {extCommunityMatcherFactory(Kind::routeTarget, Field::any(), Field::any())});
   EXPECT_EQ(apply(*dropAll, ab), nullptr);
}

} // namespace
} // namespace Routing::Bgp
