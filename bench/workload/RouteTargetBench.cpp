#include "RouteTargetBench.h"

#include "Measure.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"
#include "QorBgpCommunity/QorBgp/RouteTargetMembershipIndex.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <numeric>
#include <random>

namespace bench {

namespace {

using namespace Routing::Bgp;

constexpr std::size_t listCount = 100000;
constexpr U64 peerCount = 64;

// The two-octet AS route target 650xx:i.
U64 routeTarget(std::size_t i) { return 0x0002000000000000 | U64{65000 + i % peerCount} << 32 | i; }

// A VPN table: 100,000 live route-target lists (list i holds route targets i
// and i * 7919 mod 100,000) under an index, and 64 peers each asking for the
// exact route targets of its residue: every route target wanted by one peer.
struct Vpn {
   CommunityTables::Ptr tables = communityTablesFactory();
   RouteTargetMembershipIndex::Ptr index =
      routeTargetMembershipIndexFactory(tables->extCommListDedupTable());
   std::vector<ExtCommList::PtrConst> lists;
   std::vector<std::vector<U64>> words; // each list's route targets, for the floor
   std::vector<std::size_t> order;      // the lists in a random order

   Vpn() {
      for (std::size_t i = 0; i < listCount; ++i) {
         words.push_back({routeTarget(i), routeTarget(i * 7919 % listCount)});
         std::vector<ExtComm::PtrConst> comms;
         for (U64 w : words.back()) {
            comms.push_back(
               ExtComm::dedupContent(tables->extCommDedupTable().get(), ExtCommContent(w)));
         }
         lists.push_back(ExtCommList::dedupComms(tables->extCommListDedupTable().get(), comms));
      }
      for (std::size_t i = 0; i < listCount; ++i) {
         index->membershipIs(
            i % peerCount,
            RouteTargetMembership(65000, RouteTargetPrefix(RouteTarget(routeTarget(i)), 64)));
      }
      order.resize(listCount);
      std::iota(order.begin(), order.end(), 0);
      std::shuffle(order.begin(), order.end(), std::mt19937(1));
   }
};

// "Which peers want this list" from the index, against a hand-written lookup
// of each route target in a sorted array of (route target, peer).
void BM_PeersWanting(benchmark::State& state) {
   Vpn const vpn;
   std::vector<std::pair<U64, U64>> floorTable;
   for (std::size_t i = 0; i < listCount; ++i) {
      floorTable.emplace_back(routeTarget(i), i % peerCount);
   }
   std::sort(floorTable.begin(), floorTable.end());
   for (auto _ : state) {
      compare(
         5,
         [&] {
            std::size_t peers = 0;
            double const ns = nsPer(listCount, [&] {
               for (std::size_t i : vpn.order) {
                  auto const wanting = vpn.index->peersWanting(*vpn.lists[i]);
                  peers += wanting ? wanting->size() : 0;
               }
            });
            benchmark::DoNotOptimize(peers);
            return ns;
         },
         [&] {
            std::size_t peers = 0;
            double const ns = nsPer(listCount, [&] {
               std::vector<U64> found;
               for (std::size_t i : vpn.order) {
                  found.clear();
                  for (U64 rt : vpn.words[i]) {
                     auto it = std::lower_bound(floorTable.begin(), floorTable.end(),
                                                std::pair<U64, U64>(rt, 0));
                     for (; it != floorTable.end() && it->first == rt; ++it) {
                        found.push_back(it->second);
                     }
                  }
                  std::sort(found.begin(), found.end());
                  peers += static_cast<std::size_t>(std::unique(found.begin(), found.end()) -
                                                    found.begin());
               }
            });
            benchmark::DoNotOptimize(peers);
            return ns;
         })
         .report(state);
   }
}

// One membership change over the 100,000 live lists, and its report, for a
// new peer: membership 0 an exact route target, 1 the /48 of every route
// target of AS 65000 (1,563 of them), 2 the default (every list).
void BM_ChangeReport(benchmark::State& state) {
   Vpn const vpn;
   RouteTargetMembership const memberships[] = {
      RouteTargetMembership(65000, RouteTargetPrefix(RouteTarget(routeTarget(5)), 64)),
      RouteTargetMembership(65000, RouteTargetPrefix(RouteTarget(routeTarget(0)), 48)),
      RouteTargetMembership()};
   RouteTargetMembership const& m = memberships[state.range(0)];
   double addMs = 0, delMs = 0;
   std::size_t reported = 0;
   for (auto _ : state) {
      auto const start = std::chrono::steady_clock::now();
      reported = vpn.index->membershipIs(peerCount, m).size();
      auto const middle = std::chrono::steady_clock::now();
      vpn.index->membershipDel(peerCount, m);
      auto const end = std::chrono::steady_clock::now();
      addMs = std::chrono::duration<double, std::milli>(middle - start).count();
      delMs = std::chrono::duration<double, std::milli>(end - middle).count();
   }
   state.counters["lists_reported"] = static_cast<double>(reported);
   state.counters["add_ms"] = addMs;
   state.counters["del_ms"] = delMs;
}

// Heap per membership (100,000 exact ones into an empty index) and per live
// route target (an index taking in 100,000 live lists of 100,000 distinct
// route targets, its share of the heap only).
void BM_Memory(benchmark::State& state) {
   for (auto _ : state) {
      CommunityTables::Ptr tables = communityTablesFactory();
      std::size_t const empty = heapInUse();
      auto index = routeTargetMembershipIndexFactory(tables->extCommListDedupTable());
      for (std::size_t i = 0; i < listCount; ++i) {
         index->membershipIs(
            i % peerCount,
            RouteTargetMembership(65000, RouteTargetPrefix(RouteTarget(routeTarget(i)), 64)));
      }
      double const perMembership = double(heapInUse() - empty) / double(listCount);
      index = nullptr;
      std::vector<ExtCommList::PtrConst> lists;
      for (std::size_t i = 0; i < listCount; ++i) {
         ExtComm::PtrConst comm = ExtComm::dedupContent(tables->extCommDedupTable().get(),
                                                        ExtCommContent(routeTarget(i)));
         lists.push_back(
            ExtCommList::dedupComms(tables->extCommListDedupTable().get(), {&comm, 1}));
      }
      std::size_t const before = heapInUse();
      index = routeTargetMembershipIndexFactory(tables->extCommListDedupTable());
      double const perRouteTarget =
         double(heapInUse() - before) / double(index->size().liveRouteTargets);
      state.counters["bytes_per_membership"] = perMembership;
      state.counters["bytes_per_live_route_target"] = perRouteTarget;
      index = nullptr;
      lists.clear();
   }
}

} // namespace

void registerRouteTargetBenchmarks() {
   for (auto* b : {benchmark::RegisterBenchmark("RouteTarget/peersWanting", BM_PeersWanting),
                   benchmark::RegisterBenchmark("RouteTarget/changeReport", BM_ChangeReport)
                      ->ArgName("membership")
                      ->DenseRange(0, 2),
                   benchmark::RegisterBenchmark("RouteTarget/memory", BM_Memory)}) {
      b->Iterations(1)->Unit(benchmark::kMillisecond);
   }
}

} // namespace bench
