// Micro-benchmarks of the extended community value: hashing and the text forms
// that show commands and route policy render per value.
#include "QorBgpCommunity/QorBgp/QorBgpCommunity.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

using namespace Routing::Bgp;

namespace {

constexpr std::size_t valueCount = 4096;

std::vector<ExtComm::PtrConst> sampleValues() {
   std::mt19937_64 random(42);
   std::vector<ExtComm::PtrConst> values;
   values.reserve(valueCount);
   for (std::size_t i = 0; i < valueCount; ++i) {
      values.push_back(new ExtCommSubtyped(extCommClassificationUnSpecified,
                                           ExtCommContent(random() & 0x43ffffffffffffff)));
   }
   return values;
}

void BM_ExtCommHash(benchmark::State& state) {
   auto values = sampleValues();
   std::size_t i = 0;
   for (auto _ : state) {
      benchmark::DoNotOptimize(values[i++ % valueCount]->hash());
   }
}
BENCHMARK(BM_ExtCommHash);

void BM_ExtCommToStrepForUI(benchmark::State& state) {
   auto values = sampleValues();
   std::size_t i = 0;
   for (auto _ : state) {
      benchmark::DoNotOptimize(values[i++ % valueCount]->toStrepForUI(false, false, false));
   }
}
BENCHMARK(BM_ExtCommToStrepForUI);

void BM_ExtCommToStrep(benchmark::State& state) {
   auto values = sampleValues();
   std::size_t i = 0;
   for (auto _ : state) {
      benchmark::DoNotOptimize(values[i++ % valueCount]->toStrep());
   }
}
BENCHMARK(BM_ExtCommToStrep);

} // namespace

