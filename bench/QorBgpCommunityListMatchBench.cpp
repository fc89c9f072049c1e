// Route-map matching and list text: matchCommunitiesRegex of standard, large
// and extended lists of sizes seen in full tables, against a handful of
// typical route-map patterns, and the cost of rendering a list (toStrep).
#include "QorBgpCommunity/QorBgp/Parse/ExtComm.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDedupTable.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListFormat.h"

#include <benchmark/benchmark.h>

using namespace Routing::Bgp;
using Routing::RouteMap::PosixRegex;

namespace {

char const* const patterns[] = {"^65535:", "(^| )[0-9]+:666( |$)", "no-export",
                                "RT:[0-9]+:100( |$)"};

struct Lists {
   Lists() {
      Kiv::PtrInterface::threadSafeIs(false);
      QorBgpGlobals::multiThreadedIs(false);
      CommList::Ptr s = commListFactory();
      for (U32 i = 0; i < 12; ++i) {
         s->commIs((3356u + i) << 16 | (100 + i * 7));
      }
      s->commIs(0xFFFFFF01);
      standard = s->dedup(commTable.get());
      LargeCommList::Ptr l = largeCommListFactory();
      for (U32 i = 0; i < 4; ++i) {
         l->commIs({206924, 1, 100 + i});
      }
      large = l->dedup(largeTable.get());
      ExtCommList::Ptr e = extCommListFactory();
      for (U64 w : {0x0002fde800000064ull, 0x0002fde8000000c8ull, 0x0003fde800000001ull,
                    0x030b000000000064ull, 0x4300000000000000ull}) {
         e->commIs(ExtComm::dedupContent(values.get(), ExtCommContent(w)));
      }
      ext = e->dedup(extTable.get());
   }
   BgpParseExtCommContainerSm::Ptr recognition = bgpParseExtCommContainerSmFactory();
   ExtCommDedupTable::Ptr values = extCommDedupTableFactory(recognition->extCommParser());
   CommListDedupTable::Ptr commTable = commListDedupTableFactory();
   LargeCommListDedupTable::Ptr largeTable = largeCommListDedupTableFactory();
   ExtCommListDedupTable::Ptr extTable = extCommListDedupTableFactory();
   CommList::PtrConst standard;
   LargeCommList::PtrConst large;
   ExtCommList::PtrConst ext;
};

Lists& lists() {
   static Lists* l = new Lists;
   return *l;
}

template <class List>
void matchAll(benchmark::State& state, List const& list) {
   std::vector<PosixRegex::Ptr> compiled;
   for (char const* p : patterns) {
      compiled.push_back(new PosixRegex(p));
   }
   std::size_t i = 0;
   for (auto _ : state) {
      benchmark::DoNotOptimize(list.matchCommunitiesRegex(compiled[i++ & 3].get()));
   }
   state.SetItemsProcessed(state.iterations());
}

void BM_MatchStandard13(benchmark::State& state) { matchAll(state, *lists().standard); }
void BM_MatchLarge4(benchmark::State& state) { matchAll(state, *lists().large); }
void BM_MatchExtended5(benchmark::State& state) { matchAll(state, *lists().ext); }
BENCHMARK(BM_MatchStandard13);
BENCHMARK(BM_MatchLarge4);
BENCHMARK(BM_MatchExtended5);

void BM_TextStandard13(benchmark::State& state) {
   for (auto _ : state) {
      benchmark::DoNotOptimize(lists().standard->toStrep());
   }
}
void BM_TextExtended5(benchmark::State& state) {
   for (auto _ : state) {
      benchmark::DoNotOptimize(lists().ext->toStrep());
   }
}
BENCHMARK(BM_TextStandard13);
BENCHMARK(BM_TextExtended5);

} // namespace
