// Recognition cost: parseExtendedCommunity over a mix of extended communities
// shaped like what full tables carry (mostly route targets and origins, some
// link bandwidths, colours, validation states, flowspec and unknown types).
#include "QorBgpCommunity/QorBgp/Parse/ExtComm.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

using namespace Routing::Bgp;

namespace {

std::vector<ExtCommContent> realisticMix(std::size_t count) {
   // Type and subtype pairs, each with its share of the mix in percent.
   struct Share {
      U16 typeAndSubtype;
      int percent;
   };
   constexpr Share shares[] = {
      {0x0002, 45}, {0x0003, 10}, {0x0102, 10}, {0x0202, 8}, {0x4004, 7}, {0x030b, 5},
      {0x4300, 5},  {0x8006, 3},  {0x0005, 3},  {0x0600, 2}, {0x4105, 1}, {0x0700, 1},
   };
   std::mt19937_64 random(7);
   std::vector<ExtCommContent> mix;
   mix.reserve(count);
   while (mix.size() < count) {
      for (Share const& share : shares) {
         for (int i = 0; i < share.percent && mix.size() < count; ++i) {
            U64 value = random() & 0x0000ffffffffffff;
            mix.emplace_back((U64{share.typeAndSubtype} << 48) | value);
         }
      }
   }
   std::shuffle(mix.begin(), mix.end(), random);
   return mix;
}

void BM_ParseExtendedCommunity(benchmark::State& state) {
   auto container = bgpParseExtCommContainerSmFactory();
   auto const& parser = *container->extCommParser();
   auto const mix = realisticMix(4096);
   std::size_t i = 0;
   for (auto _ : state) {
      benchmark::DoNotOptimize(parser.parseExtendedCommunity(mix[i++ & 4095]));
   }
   state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ParseExtendedCommunity);

// The floor: allocating a plain value, which every parse does once.
void BM_AllocatePlainValue(benchmark::State& state) {
   auto const mix = realisticMix(4096);
   std::size_t i = 0;
   for (auto _ : state) {
      benchmark::DoNotOptimize(extCommFactory(extCommClassificationUnSpecified, mix[i++ & 4095]));
   }
   state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_AllocatePlainValue);

} // namespace
