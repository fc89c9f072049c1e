// Timing and heap figures of the workload benchmark: the library and the
// floor measured alternately in one process, so that their ratio holds on a
// shared, noisy machine.
#pragma once

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

namespace bench {

// Nanoseconds `work` takes, divided by `items`.
template <class Work>
double nsPer(std::size_t items, Work&& work) {
   auto const start = std::chrono::steady_clock::now();
   work();
   auto const elapsed = std::chrono::steady_clock::now() - start;
   return std::chrono::duration<double, std::nano>(elapsed).count() / double(std::max<std::size_t>(1, items));
}

// Bytes the allocator hands out right now, its own chunk headers included
// (mallinfo2 of the main arena, where a single-threaded program allocates,
// plus chunks mapped on their own).
inline std::size_t heapInUse() noexcept {
   struct mallinfo2 const info = mallinfo2();
   return info.uordblks + info.hblkhd;
}

// Medians and spread of runs of the library against the floor.
struct Figure {
   double library = 0; // median
   double floor = 0;   // median
   double ratio = 0;   // median of the runs' ratios
   double ratioMin = 0;
   double ratioMax = 0;

   void report(benchmark::State& state, char const* unit = "ns") const {
      state.counters[unit] = library;
      state.counters[std::string("floor_") + unit] = floor;
      state.counters["ratio"] = ratio;
      state.counters["ratio_min"] = ratioMin;
      state.counters["ratio_max"] = ratioMax;
   }
};

inline double median(std::vector<double> values) {
   std::sort(values.begin(), values.end());
   return values.empty() ? 0 : values[values.size() / 2];
}

// `runs` alternating runs of `library` and `floor`, each returning its figure.
template <class Library, class Floor>
Figure compare(int runs, Library&& library, Floor&& floor) {
   std::vector<double> ours, theirs, ratios;
   for (int r = 0; r < runs; ++r) {
      ours.push_back(library());
      theirs.push_back(floor());
      ratios.push_back(theirs.back() > 0 ? ours.back() / theirs.back() : 0);
   }
   auto const [low, high] = std::minmax_element(ratios.begin(), ratios.end());
   return {median(ours), median(theirs), median(ratios), *low, *high};
}

} // namespace bench
