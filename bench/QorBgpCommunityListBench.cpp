// Extended community lists: the cost to build, sort, classify and intern a
// list of 1, 10 and 100 communities when an equal list is already interned
// and when it is new, and the heap held per distinct list and per path.
#include "HeapCounter.h"

#include "QorBgpCommunity/QorBgp/Parse/ExtComm.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDedupTable.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityList.h"

#include <benchmark/benchmark.h>

#include <vector>

using namespace Routing::Bgp;

namespace {

constexpr std::size_t poolSize = 1 << 16;

// Interned values for the lists: route targets with a colour every tenth.
struct Pool {
   Pool() {
      Kiv::PtrInterface::threadSafeIs(false);
      QorBgpGlobals::multiThreadedIs(false);
      for (std::size_t i = 0; i < poolSize; ++i) {
         U64 word = (i % 10 == 9 ? 0x030b000000000000ull : 0x0002fde800000000ull) | i;
         values.push_back(ExtComm::dedupContent(valueTable.get(), ExtCommContent(word)));
      }
   }
   ExtCommList::PtrConst list(std::size_t first, std::size_t size) {
      ExtCommList::Ptr list = extCommListFactory();
      list->expectedCommunityCountIs(static_cast<U32>(size));
      for (std::size_t i = 0; i < size; ++i) {
         list->commIs(values[(first + size - 1 - i) % poolSize]); // unsorted on purpose
      }
      return list->dedup(listTable.get());
   }

   BgpParseExtCommContainerSm::Ptr recognition = bgpParseExtCommContainerSmFactory();
   ExtCommDedupTable::Ptr valueTable = extCommDedupTableFactory(recognition->extCommParser());
   ExtCommListDedupTable::Ptr listTable = extCommListDedupTableFactory();
   std::vector<ExtComm::PtrConst> values;
};

Pool& pool() {
   static Pool* p = new Pool;
   return *p;
}

void BM_ExtCommListInternResident(benchmark::State& state) {
   auto const size = static_cast<std::size_t>(state.range(0));
   ExtCommList::PtrConst resident = pool().list(0, size);
   for (auto _ : state) {
      benchmark::DoNotOptimize(pool().list(0, size));
   }
   state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ExtCommListInternResident)->Arg(1)->Arg(10)->Arg(100);

void BM_ExtCommListInternNew(benchmark::State& state) {
   auto const size = static_cast<std::size_t>(state.range(0));
   std::size_t first = 0;
   for (auto _ : state) {
      benchmark::DoNotOptimize(pool().list(first++, size));
   }
   state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ExtCommListInternNew)->Arg(1)->Arg(10)->Arg(100);

// Heap held by 1000 distinct lists of a size (with their classification
// lists), per list, and by one path's reference to a shared list.
void BM_ExtCommListMemory(benchmark::State& state) {
   auto const size = static_cast<std::size_t>(state.range(0));
   constexpr std::size_t lists = 1000;
   double perList = 0;
   for (auto _ : state) {
      pool();
      bench::HeapCounting counting;
      std::size_t const before = bench::liveHeapBytes();
      std::vector<ExtCommList::PtrConst> held;
      held.reserve(lists);
      std::size_t const vectorBytes = bench::liveHeapBytes() - before;
      for (std::size_t i = 0; i < lists; ++i) {
         held.push_back(pool().list(i * size, size));
      }
      perList = static_cast<double>(bench::liveHeapBytes() - before - vectorBytes) / lists;
   }
   state.counters["bytes_per_list"] = perList;
   state.counters["bytes_per_path"] = sizeof(ExtCommList::PtrConst);
}
BENCHMARK(BM_ExtCommListMemory)->Arg(1)->Arg(10)->Arg(100)->Iterations(1);

} // namespace

namespace {

// Standard lists: build, sort and intern; resident and new; heap per list.
CommList::PtrConst standardList(CommListDedupTable const* table, U32 first, U32 size) {
   CommList::Ptr list = commListFactory();
   for (U32 i = size; i-- > 0;) {
      list->commIs((65000u << 16) | ((first + i) & 0xffff));
   }
   return list->dedup(table);
}

void BM_CommListInternResident(benchmark::State& state) {
   auto table = commListDedupTableFactory();
   auto const size = static_cast<U32>(state.range(0));
   CommList::PtrConst resident = standardList(table.get(), 0, size);
   for (auto _ : state) {
      benchmark::DoNotOptimize(standardList(table.get(), 0, size));
   }
   state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_CommListInternResident)->Arg(1)->Arg(10)->Arg(100);

void BM_CommListInternNew(benchmark::State& state) {
   auto table = commListDedupTableFactory();
   auto const size = static_cast<U32>(state.range(0));
   U32 first = 0;
   for (auto _ : state) {
      benchmark::DoNotOptimize(standardList(table.get(), first++, size));
   }
   state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_CommListInternNew)->Arg(1)->Arg(10)->Arg(100);

void BM_CommListMemory(benchmark::State& state) {
   auto table = commListDedupTableFactory();
   auto const size = static_cast<U32>(state.range(0));
   constexpr U32 lists = 1000;
   double perList = 0;
   for (auto _ : state) {
      std::vector<CommList::PtrConst> held;
      held.reserve(lists);
      bench::HeapCounting counting;
      std::size_t const before = bench::liveHeapBytes();
      for (U32 i = 0; i < lists; ++i) {
         held.push_back(standardList(table.get(), i * size, size));
      }
      perList = static_cast<double>(bench::liveHeapBytes() - before) / lists;
   }
   state.counters["bytes_per_list"] = perList;
   state.counters["bytes_per_path"] = sizeof(CommList::PtrConst);
}
BENCHMARK(BM_CommListMemory)->Arg(1)->Arg(10)->Arg(100)->Iterations(1);

} // namespace
