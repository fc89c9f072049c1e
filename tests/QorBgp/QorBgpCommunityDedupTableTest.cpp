#include "QorBgpCommunity/QorBgp/QorBgpCommunityDedupTable.h"

#include "QorBgpCommunity/QorBgp/Parse/ExtComm.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommRouteOrigin.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommRouteTarget.h"
#include "QorBgpCommunity/platform/DumpContext.h"

#include <gtest/gtest.h>

#include <typeinfo>

namespace Routing::Bgp {
namespace {

constexpr U64 rt65000_100 = 0x0002fde800000064;
constexpr U64 soo65000_100 = 0x0003fde800000064;

class ExtCommInterning : public testing::Test {
 protected:
   BgpParseExtCommContainerSm::Ptr recognition = bgpParseExtCommContainerSmFactory();
   ExtCommDedupTable::Ptr table = extCommDedupTableFactory(recognition->extCommParser());

   ExtComm::PtrConst intern(U64 word) {
      return ExtComm::dedupContent(table.get(), ExtCommContent(word));
   }
   bool listed(U64 word) const { return table->routeTargetList()->rtHas(RouteTarget(word)); }
};

TEST_F(ExtCommInterning, RouteTargetsOfEveryLayoutAreListedWhileAlive) {
   struct Row {
      U64 word;
      bool routeTarget;
   };
   Row const rows[] = {
      {rt65000_100, true},         {0x0102c00002010005, true},  {0x0202fa56ea000007, true},
      {soo65000_100, false},       {0x4002fde800000064, false}, // not transitive
      {0x0302000000000001, false},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(testing::Message() << std::hex << row.word);
      ExtComm::PtrConst first = intern(row.word);
      ExtComm::PtrConst second = intern(row.word);
      EXPECT_EQ(listed(row.word), row.routeTarget);
      first = nullptr;
      EXPECT_EQ(listed(row.word), row.routeTarget);
      second = nullptr;
      EXPECT_FALSE(listed(row.word));
      EXPECT_EQ(table->dedupTable()->size(), 0u);
   }
   ExtComm::PtrConst soo = intern(soo65000_100);
   EXPECT_EQ(typeid(*soo), typeid(ExtCommRouteOriginAs));
}

TEST_F(ExtCommInterning, TearingDownTheTableEmptiesItsList) {
   ExtComm::PtrConst rt = intern(rt65000_100);
   auto list = table->routeTargetList();
   table = nullptr;
   EXPECT_FALSE(list->rtHas(RouteTarget(rt65000_100)));
   EXPECT_FALSE(rt->isDeduped());
}

TEST_F(ExtCommInterning, DumpShowsTheHashTableAndTheList) {
   ExtComm::PtrConst rt = intern(rt65000_100);
   Kiv::DumpContext context;
   table->dumpState(context, 0);
   EXPECT_EQ(context.str(), "ExtCommDedupTable:\n"
                            "  DedupHashTable (single-threaded): 1 entries\n"
                            "  NotifyingRouteTargetList #" +
                               std::to_string(table->routeTargetList()->id()) +
                               ":\n"
                               "    65000:100\n");
}

} // namespace
} // namespace Routing::Bgp
