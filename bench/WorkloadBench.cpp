// The library on a real workload: the community attributes of RouteViews and
// RIPE RIS dumps, one line per attribute occurrence ("<type code> <hex
// value>", gzip allowed), given on the command line:
//
//   build/release/bench/qorbgp-workload-bench /path/to/*.attrs.gz
//
// Without files it makes a synthetic workload of the same shape. Every figure
// stands beside the floor (workload/FloorTables.h), measured in the same run
// and process, alternating with the library: medians of several runs, and the
// spread of their ratios.
#include "workload/FloorTables.h"
#include "workload/Measure.h"
#include "workload/PolicyBench.h"
#include "workload/RouteTargetBench.h"
#include "workload/Workload.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListMatchMemo.h"

#include <atomic>
#include <barrier>
#include <functional>
#include <iostream>
#include <thread>

#include <pthread.h>
#include <sched.h>

using namespace Routing::Bgp;
using bench::FloorTables;
using bench::Occurrence;
using bench::Workload;

namespace {

Workload workload;
constexpr int runs = 5;

// The occurrences of attribute `type`.
std::vector<Occurrence const*> ofType(Workload const& from, U8 type) {
   std::vector<Occurrence const*> chosen;
   for (Occurrence const& o : from) {
      if (o.type == type) chosen.push_back(&o);
   }
   return chosen;
}

std::vector<Occurrence const*> all(Workload const& from) {
   std::vector<Occurrence const*> chosen;
   for (Occurrence const& o : from) chosen.push_back(&o);
   return chosen;
}

// What the paths of one round hold: a list per occurrence.
using LibraryPaths = std::vector<AnyCommList>;
using FloorPaths = std::vector<void const*>;

double libraryRound(CommunityTables const& tables, std::vector<Occurrence const*> const& items,
                    LibraryPaths& paths) {
   paths.clear();
   paths.reserve(items.size());
   return bench::nsPer(items.size(), [&] {
      for (Occurrence const* o : items) {
         paths.push_back(decodeAttribute(tables, o->type, o->value).list);
      }
   });
}

double floorRound(FloorTables& tables, std::vector<Occurrence const*> const& items,
                  FloorPaths& paths) {
   paths.clear();
   paths.reserve(items.size());
   return bench::nsPer(items.size(), [&] {
      for (Occurrence const* o : items) {
         paths.push_back(tables.intern(o->type, o->value));
      }
   });
}

// Decode + intern into empty tables, every list kept by its paths (released
// after the clock stops).
void BM_DecodeInternFresh(benchmark::State& state) {
   auto const items = all(workload);
   for (auto _ : state) {
      bench::compare(
         runs,
         [&] {
            auto tables = communityTablesFactory();
            LibraryPaths paths;
            return libraryRound(*tables, items, paths);
         },
         [&] {
            FloorTables tables;
            FloorPaths paths;
            return floorRound(tables, items, paths);
         })
         .report(state);
   }
}

// Decode + intern into tables that hold every list already: per kind (0 all,
// else the type code).
void BM_DecodeInternFull(benchmark::State& state) {
   auto const items = state.range(0) ? ofType(workload, static_cast<U8>(state.range(0))) : all(workload);
   auto tables = communityTablesFactory();
   FloorTables floorTables;
   LibraryPaths resident, paths;
   FloorPaths floorResident, floorPaths;
   libraryRound(*tables, items, resident);
   floorRound(floorTables, items, floorResident);
   for (auto _ : state) {
      bench::compare(
         runs, [&] { return libraryRound(*tables, items, paths); },
         [&] { return floorRound(floorTables, items, floorPaths); })
         .report(state);
   }
}

// Text and wire output of every occurrence's list of one kind.
template <class ListPtr, class Library>
void perList(benchmark::State& state, U8 type, Library&& library,
             std::string (*floorWork)(U8, void const*)) {
   auto const items = ofType(workload, type);
   auto tables = communityTablesFactory();
   FloorTables floorTables;
   LibraryPaths held;
   FloorPaths floorHeld;
   libraryRound(*tables, items, held);
   floorRound(floorTables, items, floorHeld);
   std::vector<ListPtr> lists;
   for (AnyCommList const& any : held) {
      lists.push_back(std::get<ListPtr>(any));
   }
   for (auto _ : state) {
      bench::compare(
         runs,
         [&] {
            return bench::nsPer(lists.size(), [&] {
               for (ListPtr const& list : lists) benchmark::DoNotOptimize(library(*list));
            });
         },
         [&] {
            return bench::nsPer(floorHeld.size(), [&] {
               for (void const* list : floorHeld) benchmark::DoNotOptimize(floorWork(type, list));
            });
         })
         .report(state);
   }
}

void BM_Text(benchmark::State& state) {
   switch (state.range(0)) {
   case community:
      return perList<CommList::PtrConst>(
         state, community, [](CommList const& l) { return l.toStrep(); }, FloorTables::text);
   case largeCommunity:
      return perList<LargeCommList::PtrConst>(
         state, largeCommunity, [](LargeCommList const& l) { return l.toStrep(); },
         FloorTables::text);
   default:
      return perList<ExtCommList::PtrConst>(
         state, extCommunity, [](ExtCommList const& l) { return l.toStrep(); }, FloorTables::text);
   }
}

void BM_Wire(benchmark::State& state) {
   switch (state.range(0)) {
   case community:
      return perList<CommList::PtrConst>(
         state, community, [](CommList const& l) { return l.serialize(); }, FloorTables::wire);
   case largeCommunity:
      return perList<LargeCommList::PtrConst>(
         state, largeCommunity, [](LargeCommList const& l) { return l.serialize(); },
         FloorTables::wire);
   default:
      return perList<ExtCommList::PtrConst>(
         state, extCommunity,
         [](ExtCommList const& l) { return l.serialize(ExtCommList::serialization(true, true, true)); },
         FloorTables::wire);
   }
}

// Heap per distinct list of one kind: its occurrences decoded into empty
// tables, held by their paths (whose vector exists before counting starts).
// Both sides count what the allocator hands out, chunk headers included: the
// lists, their values and the tables' growth.
void BM_Memory(benchmark::State& state) {
   U8 const type = static_cast<U8>(state.range(0));
   auto const items = ofType(workload, type);
   double library = 0, floor = 0;
   std::size_t distinct = 0;
   for (auto _ : state) {
      {
         auto tables = communityTablesFactory();
         LibraryPaths paths;
         paths.reserve(items.size());
         std::size_t const before = bench::heapInUse();
         libraryRound(*tables, items, paths);
         std::size_t const used = bench::heapInUse() - before;
         std::vector<void const*> identities;
         for (AnyCommList const& any : paths) {
            identities.push_back(std::visit(
               [](auto const& p) -> void const* {
                  if constexpr (std::is_same_v<std::decay_t<decltype(p)>, std::monostate>) {
                     return nullptr;
                  } else {
                     return p.get();
                  }
               },
               any));
         }
         std::sort(identities.begin(), identities.end());
         distinct = static_cast<std::size_t>(
            std::unique(identities.begin(), identities.end()) - identities.begin());
         library = double(used) / double(std::max<std::size_t>(1, distinct));
      }
      {
         auto tables = std::make_unique<FloorTables>();
         FloorPaths paths;
         paths.reserve(items.size());
         std::size_t const before = bench::heapInUse();
         floorRound(*tables, items, paths);
         floor = double(bench::heapInUse() - before) / double(std::max<std::size_t>(1, tables->lists()));
      }
   }
   state.counters["distinct_lists"] = double(distinct);
   state.counters["bytes_per_list"] = library;
   state.counters["floor_bytes_per_list"] = floor;
   state.counters["ratio"] = floor > 0 ? library / floor : 0;
   // A million paths over these lists: the lists once, a reference per path.
   state.counters["million_paths_MB"] = (library * double(distinct) + 1e6 * sizeof(CommList::PtrConst)) / 1e6;
   state.counters["floor_million_paths_MB"] = (floor * double(distinct) + 1e6 * sizeof(void const*)) / 1e6;
}

// Route-map matching of every occurrence, afresh and through the memo.
void BM_RouteMapMatch(benchmark::State& state) {
   static char const* const patterns[] = {"^65535:", "(^| )[0-9]+:666( |$)", "no-export",
                                          "RT:[0-9]+:100( |$)"};
   auto tables = communityTablesFactory();
   auto const items = all(workload);
   LibraryPaths held;
   libraryRound(*tables, items, held);
   Routing::RouteMap::PosixRegex::PtrConst regex =
      new Routing::RouteMap::PosixRegex(patterns[state.range(0)]);
   RouteMapMatchMemo memo(regex);
   auto match = [&](auto&& one) {
      return bench::nsPer(held.size(), [&] {
         for (AnyCommList const& any : held) {
            std::visit(
               [&](auto const& p) {
                  if constexpr (!std::is_same_v<std::decay_t<decltype(p)>, std::monostate> &&
                                !std::is_same_v<std::decay_t<decltype(p)>, ExtCommIp6List::PtrConst>) {
                     benchmark::DoNotOptimize(one(*p));
                  }
               },
               any);
         }
      });
   };
   for (auto _ : state) {
      auto figure = bench::compare(
         3, [&] { return match([&](auto const& l) { return memo.matchCommunitiesRegex(l); }); },
         [&] { return match([&](auto const& l) { return l.matchCommunitiesRegex(regex.get()); }); });
      state.counters["memo_ns"] = figure.library;
      state.counters["afresh_ns"] = figure.floor;
      state.counters["memo_speedup"] = figure.ratio > 0 ? 1 / figure.ratio : 0;
   }
   state.SetLabel(patterns[state.range(0)]);
}

// ---- Two threads ---------------------------------------------------------

// The workload dealt out to the threads of a round in blocks of 64
// occurrences, in order, each block to whichever thread asks next: the
// threads meet the workload's hot lists at the same time, and a faster core
// does more.
class WorkShare {
 public:
   template <class Visit>
   void forEach(Visit&& visit) {
      constexpr std::size_t block = 64;
      for (std::size_t b = next_.fetch_add(block, std::memory_order_relaxed); b < workload.size();
           b = next_.fetch_add(block, std::memory_order_relaxed)) {
         for (std::size_t i = b; i < std::min(b + block, workload.size()); ++i) {
            visit(workload[i]);
         }
      }
   }

 private:
   alignas(64) std::atomic<std::size_t> next_{0};
};

// Threads started once and given one job per round, thread t pinned to CPU
// firstCpu + t: the cores of a shared virtual machine need not be equally
// fast, so one thread is measured on each and two on both.
class Workers {
 public:
   Workers(int count, int firstCpu) : start_(count + 1), done_(count + 1) {
      int const cpus = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
      for (int t = 0; t < count; ++t) {
         threads_.emplace_back([this, t, cpu = (firstCpu + t) % cpus] {
            cpu_set_t set;
            CPU_ZERO(&set);
            CPU_SET(cpu, &set);
            pthread_setaffinity_np(pthread_self(), sizeof set, &set);
            for (;;) {
               start_.arrive_and_wait();
               if (stop_) return;
               job_(t, *share_);
               done_.arrive_and_wait();
            }
         });
      }
   }
   ~Workers() {
      stop_ = true;
      start_.arrive_and_wait();
      for (auto& thread : threads_) thread.join();
   }
   Workers(Workers const&) = delete;
   Workers& operator=(Workers const&) = delete;

   // Runs `job(t, share)` on every worker at once: occurrences per second.
   double run(std::function<void(int, WorkShare&)> job) {
      WorkShare share;
      share_ = &share;
      job_ = std::move(job);
      auto const start = std::chrono::steady_clock::now();
      start_.arrive_and_wait();
      done_.arrive_and_wait();
      return double(workload.size()) /
             std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
   }

 private:
   std::barrier<> start_;
   std::barrier<> done_;
   std::vector<std::thread> threads_;
   std::function<void(int, WorkShare&)> job_;
   WorkShare* share_ = nullptr;
   bool stop_ = false;
};

// Paths per thread, each in a vector of its own (one vector of vectors would
// put their sizes on one contended line), handed back at the end.
template <class Path>
struct PerThreadPaths {
   explicit PerThreadPaths(int threads) : paths(static_cast<std::size_t>(threads)) {
      for (auto& p : paths) p.reserve(workload.size());
   }
   std::vector<std::vector<Path>> paths;
};

// Fresh tables each round, shared by the threads or one set per thread; or
// the `full` tables, which hold every list already (an agent that has
// converged).
double internRound(Workers& workers, int threads, bool privateTables,
                   CommunityTables::Ptr const& full = nullptr) {
   std::vector<CommunityTables::Ptr> tables{full ? full : communityTablesFactory()};
   while (privateTables && tables.size() < static_cast<std::size_t>(threads)) {
      tables.push_back(communityTablesFactory());
   }
   PerThreadPaths<AnyCommList> held(threads);
   return workers.run([&](int t, WorkShare& share) {
      auto const slot = static_cast<std::size_t>(t);
      CommunityTables const& mine = *tables[privateTables ? slot : 0];
      std::vector<AnyCommList> paths = std::move(held.paths[slot]);
      share.forEach([&](Occurrence const& o) {
         paths.push_back(decodeAttribute(mine, o.type, o.value).list);
      });
      held.paths[slot] = std::move(paths);
   });
}

// The floor has no shared tables: each thread interns into its own, which
// is what the machine gives two threads at that moment.
double floorThreadsRound(Workers& workers, int threads) {
   std::vector<std::unique_ptr<FloorTables>> tables;
   for (int t = 0; t < threads; ++t) tables.push_back(std::make_unique<FloorTables>());
   PerThreadPaths<void const*> held(threads);
   return workers.run([&](int t, WorkShare& share) {
      auto const slot = static_cast<std::size_t>(t);
      std::vector<void const*> paths = std::move(held.paths[slot]);
      share.forEach([&](Occurrence const& o) { paths.push_back(tables[slot]->intern(o.type, o.value)); });
      held.paths[slot] = std::move(paths);
   });
}

// Two threads against one: the rate of two threads on both cores over the
// mean rate of one thread on each core.
void BM_TwoThreads(benchmark::State& state) {
   QorBgpGlobals::multiThreadedIs(true);
   std::vector<double> shared, own, steady, floor, rate1, rate2;
   {
      CommunityTables::Ptr const full = communityTablesFactory();
      std::vector<AnyCommList> resident;
      for (Occurrence const& o : workload) {
         resident.push_back(decodeAttribute(*full, o.type, o.value).list);
      }
      Workers first(1, 0), second(1, 1), two(2, 0);
      auto speedup = [&](auto&& round) {
         double const both = round(two, 2);
         double const one = (round(first, 1) + round(second, 1)) / 2;
         return std::pair{both / one, one};
      };
      for (auto _ : state) {
         for (int round = 0; round < 7; ++round) {
            auto const [s, one] = speedup([](Workers& w, int n) { return internRound(w, n, false); });
            shared.push_back(s);
            rate1.push_back(one);
            rate2.push_back(s * one);
            own.push_back(speedup([](Workers& w, int n) { return internRound(w, n, true); }).first);
            steady.push_back(
               speedup([&](Workers& w, int n) { return internRound(w, n, false, full); }).first);
            floor.push_back(speedup(floorThreadsRound).first);
         }
      }
   }
   CommList::releaseThreadCache();
   QorBgpGlobals::multiThreadedIs(false);
   Kiv::PtrInterface::threadSafeIs(false);
   auto spread = [&](char const* name, std::vector<double> const& v) {
      state.counters[name] = bench::median(v);
      state.counters[std::string(name) + "_min"] = *std::min_element(v.begin(), v.end());
      state.counters[std::string(name) + "_max"] = *std::max_element(v.begin(), v.end());
   };
   state.counters["attrs_per_s_1_thread"] = bench::median(rate1);
   state.counters["attrs_per_s_2_threads"] = bench::median(rate2);
   spread("speedup_shared", shared);
   spread("speedup_private_tables", own);
   spread("speedup_shared_full_tables", steady);
   spread("floor_speedup", floor);
}

// Cost per path with 100k distinct lists per kind against 5k: decode +
// intern into full tables, a million occurrences drawn evenly.
void BM_TableSize(benchmark::State& state) {
   auto ns = [](Workload const& w, bool library) {
      auto const items = all(w);
      auto tables = communityTablesFactory();
      FloorTables floorTables;
      LibraryPaths resident, paths;
      FloorPaths floorResident, floorPaths;
      if (library) {
         libraryRound(*tables, items, resident);
      } else {
         floorRound(floorTables, items, floorResident);
      }
      std::vector<double> times;
      for (int r = 0; r < 3; ++r) {
         times.push_back(library ? libraryRound(*tables, items, paths)
                                 : floorRound(floorTables, items, floorPaths));
      }
      return bench::median(times);
   };
   for (auto _ : state) {
      Workload const small = bench::uniformWorkload(5000, 1000000);
      Workload const large = bench::uniformWorkload(100000, 1000000);
      double const lib5k = ns(small, true), lib100k = ns(large, true);
      double const floor5k = ns(small, false), floor100k = ns(large, false);
      state.counters["ns_5k"] = lib5k;
      state.counters["ns_100k"] = lib100k;
      state.counters["floor_ns_5k"] = floor5k;
      state.counters["floor_ns_100k"] = floor100k;
      state.counters["growth"] = lib100k / lib5k;
      state.counters["floor_growth"] = floor100k / floor5k;
   }
}

} // namespace

int main(int argc, char** argv) {
   benchmark::Initialize(&argc, argv);
   for (int i = 1; i < argc; ++i) {
      if (!bench::loadAttributes(argv[i], workload)) {
         std::cerr << "qorbgp-workload-bench: cannot open " << argv[i] << '\n';
         return 1;
      }
   }
   if (workload.empty()) {
      std::cerr << "qorbgp-workload-bench: no attribute files given: a synthetic workload\n";
      workload = bench::realisticWorkload();
   }
   std::cerr << "qorbgp-workload-bench: " << workload.size() << " attribute occurrences\n";
   Kiv::PtrInterface::threadSafeIs(false);
   auto unit = [](benchmark::internal::Benchmark* b) {
      b->Iterations(1)->Unit(benchmark::kMillisecond);
   };
   unit(benchmark::RegisterBenchmark("DecodeIntern/fresh", BM_DecodeInternFresh));
   unit(benchmark::RegisterBenchmark("DecodeIntern/full", BM_DecodeInternFull)->Arg(0));
   unit(benchmark::RegisterBenchmark("WarmIntern", BM_DecodeInternFull)
           ->ArgName("type")->Arg(community)->Arg(largeCommunity)->Arg(extCommunity));
   unit(benchmark::RegisterBenchmark("Text", BM_Text)
           ->ArgName("type")->Arg(community)->Arg(largeCommunity)->Arg(extCommunity));
   unit(benchmark::RegisterBenchmark("Wire", BM_Wire)
           ->ArgName("type")->Arg(community)->Arg(largeCommunity)->Arg(extCommunity));
   unit(benchmark::RegisterBenchmark("Memory", BM_Memory)
           ->ArgName("type")->Arg(community)->Arg(largeCommunity)->Arg(extCommunity));
   unit(benchmark::RegisterBenchmark("RouteMapMatch", BM_RouteMapMatch)->DenseRange(0, 3));
   unit(benchmark::RegisterBenchmark("TwoThreads", BM_TwoThreads));
   unit(benchmark::RegisterBenchmark("TableSize", BM_TableSize));
   bench::registerPolicyBenchmarks(workload);
   bench::registerRouteTargetBenchmarks();
   benchmark::RunSpecifiedBenchmarks();
   benchmark::Shutdown();
   return 0;
}
