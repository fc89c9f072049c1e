// Interning cost of extended communities: ExtComm::dedupContent on contents
// already interned (the common case at convergence) and on new ones (which
// also run the recognition parser), in the single- and multi-threaded forms,
// with 1, 2 and more threads sharing one table.
#include "QorBgpCommunity/QorBgp/Parse/ExtComm.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDedupTable.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <random>
#include <vector>

using namespace Routing::Bgp;

namespace {

constexpr std::size_t residentCount = 1 << 14;

struct Fixture {
   BgpParseExtCommContainerSm::Ptr recognition;
   ExtCommDedupTable::Ptr table;
   std::vector<ExtComm::PtrConst> resident; // keeps the "already interned" set alive
   std::vector<ExtCommContent> contents;
};

Fixture* fixture = nullptr;
std::atomic<U64> nextRound{0}; // keeps repeated runs on new contents

void setUp(bool multiThreaded) {
   QorBgpGlobals::multiThreadedIs(multiThreaded);
   Kiv::PtrInterface::threadSafeIs(multiThreaded);
   fixture = new Fixture;
   fixture->recognition = bgpParseExtCommContainerSmFactory();
   fixture->table = extCommDedupTableFactory(fixture->recognition->extCommParser());
   std::mt19937_64 random(1);
   for (std::size_t i = 0; i < residentCount; ++i) {
      // Mostly route targets and origins, as in real tables.
      U64 typeAndSubtype = (i % 4 == 3) ? 0x0003 : 0x0002;
      ExtCommContent content((typeAndSubtype << 48) | (random() & 0x0000ffffffffffff));
      fixture->contents.push_back(content);
      fixture->resident.push_back(ExtComm::dedupContent(fixture->table.get(), content));
   }
}

void tearDown() {
   delete fixture;
   fixture = nullptr;
}

void BM_DedupContentResident(benchmark::State& state) {
   auto const* table = fixture->table.get();
   auto const& contents = fixture->contents;
   std::size_t i = static_cast<std::size_t>(state.thread_index()) * 7919;
   for (auto _ : state) {
      benchmark::DoNotOptimize(
         ExtComm::dedupContent(table, contents[i++ & (residentCount - 1)]));
   }
   state.SetItemsProcessed(state.iterations());
}

// A content never seen before, interned and released again: lookup, parse,
// insertion and removal.
void BM_DedupContentNew(benchmark::State& state) {
   auto const* table = fixture->table.get();
   // Each thread its own never-interned range: thread in the top value octet.
   U64 n = (static_cast<U64>(state.thread_index()) << 40) | (nextRound++ << 32);
   for (auto _ : state) {
      benchmark::DoNotOptimize(
         ExtComm::dedupContent(table, ExtCommContent(0x0002000000000000ull | ++n)));
   }
   state.SetItemsProcessed(state.iterations());
}

void setUpSingle(benchmark::State const&) { setUp(false); }
void setUpMulti(benchmark::State const&) { setUp(true); }
void tearDownAny(benchmark::State const&) { tearDown(); }

BENCHMARK(BM_DedupContentResident)->Name("DedupContent/resident/single")->Setup(setUpSingle)->Teardown(tearDownAny);
BENCHMARK(BM_DedupContentNew)->Name("DedupContent/new/single")->Setup(setUpSingle)->Teardown(tearDownAny);
BENCHMARK(BM_DedupContentResident)
   ->Name("DedupContent/resident/multi")
   ->Setup(setUpMulti)
   ->Teardown(tearDownAny)
   ->ThreadRange(1, 4)
   ->UseRealTime();
BENCHMARK(BM_DedupContentNew)
   ->Name("DedupContent/new/multi")
   ->Setup(setUpMulti)
   ->Teardown(tearDownAny)
   ->ThreadRange(1, 4)
   ->UseRealTime();

} // namespace
