// The route-target membership index read and changed on one thread while two
// others intern route-target lists and let go of them (lists coming into and
// going out of use under the index). Built into the stress program, which
// also runs under ThreadSanitizer.
#include "QorBgpCommunity/QorBgp/RouteTargetMembershipIndex.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"

#include <gtest/gtest.h>

#include <random>
#include <thread>
#include <vector>

namespace Routing::Bgp {
namespace {

// The extended list of route targets 65000:i and 65000:(i + 1).
ExtCommList::PtrConst routeTargetList(CommunityTables const& tables, U32 i) {
   std::vector<ExtComm::PtrConst> comms;
   for (U64 local : {U64{i}, U64{i} + 1}) {
      comms.push_back(ExtComm::dedupContent(tables.extCommDedupTable().get(),
                                            ExtCommContent(0x0002fde800000000 | local)));
   }
   return ExtCommList::dedupComms(tables.extCommListDedupTable().get(), comms);
}

TEST(RouteTargetMembershipIndexStress, ChangesAndLookupsRaceWithListsComingAndGoing) {
   QorBgpGlobals::multiThreadedIs(true);
   auto tables = communityTablesFactory();
   auto index = routeTargetMembershipIndexFactory(tables->extCommListDedupTable());
   RouteTargetMembership const evens(65000, RouteTargetPrefix(RouteTarget(0x0002fde800000000), 63));
   std::vector<std::thread> threads;
   for (int t = 0; t < 2; ++t) {
      threads.emplace_back([&, t] {
         std::mt19937 random(t);
         std::vector<ExtCommList::PtrConst> held(50);
         for (int round = 0; round < 20000; ++round) {
            held[random() % held.size()] = routeTargetList(*tables, random() % 200);
         }
      });
   }
   threads.emplace_back([&] {
      ExtCommList::PtrConst const mine = routeTargetList(*tables, 0); // 65000:0 and 65000:1
      for (int round = 0; round < 2000; ++round) {
         index->membershipIs(1, evens);
         EXPECT_TRUE(index->wants(1, *mine));
         index->membershipDel(1, evens);
         EXPECT_FALSE(index->wants(1, *mine));
      }
   });
   for (auto& thread : threads) {
      thread.join();
   }
   EXPECT_EQ(index->size().liveLists, 0u);
   EXPECT_EQ(index->size().memberships, 0u);
}

} // namespace
} // namespace Routing::Bgp
