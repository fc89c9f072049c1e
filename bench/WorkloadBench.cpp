// The library on a real workload: the community attributes of RouteViews and
// RIPE RIS dumps, one line per attribute occurrence ("<type code> <hex
// value>", gzip allowed), given on the command line:
//
//   build/release/bench/qorbgp-workload-bench /path/to/*.attrs.gz
//
// Without files it makes a synthetic workload of the same shape. Every figure
// is reported per attribute occurrence next to a floor, the same work done
// the cheapest way one can write it, measured in the same run:
//   decode + intern   64-bit keys in absl::flat_hash_set for values, a sorted
//                     exact-size array of list hashes looked up by binary search
//   text              std::to_chars into a stack buffer
//   wire output       a byte copy
// so that the ratio column holds on a noisy machine.
#include "HeapCounter.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListMatchMemo.h"
#include "QorBgpCommunity/platform/Hash.h"

#include <absl/container/flat_hash_set.h>
#include <benchmark/benchmark.h>
#include <zlib.h>

#include <algorithm>
#include <atomic>
#include <barrier>
#include <functional>
#include <charconv>
#include <chrono>
#include <cstring>
#include <iostream>
#include <random>
#include <thread>

using namespace Routing::Bgp;

namespace {

struct Occurrence {
   U8 type;
   std::vector<U8> value;
};

std::vector<Occurrence> workload;

void loadFile(char const* path) {
   gzFile in = gzopen(path, "rb");
   if (!in) {
      std::cerr << "qorbgp-workload-bench: cannot open " << path << '\n';
      return;
   }
   char line[1 << 16];
   while (gzgets(in, line, sizeof line)) {
      char* space = std::strchr(line, ' ');
      if (!space) {
         continue;
      }
      std::string_view hex(space + 1);
      while (!hex.empty() && (hex.back() == '\n' || hex.back() == '\r')) {
         hex.remove_suffix(1);
      }
      auto bytes = parseHex(hex);
      if (bytes) {
         workload.push_back({static_cast<U8>(std::atoi(line)), std::move(*bytes)});
      }
   }
   gzclose(in);
}

// Real tables' shape: ~560k occurrences over ~17.6k distinct lists, mostly
// standard, some large and extended.
void synthesize() {
   std::mt19937 random(3);
   std::vector<Occurrence> distinct;
   for (int i = 0; i < 17600; ++i) {
      Occurrence o{static_cast<U8>(i % 25 == 0 ? 32 : i % 40 == 1 ? 16 : 8), {}};
      int const element = o.type == 8 ? 4 : o.type == 32 ? 12 : 8;
      for (int n = (1 + random() % 8) * element; n > 0; --n) {
         o.value.push_back(static_cast<U8>(random()));
      }
      if (o.type == 16) {
         for (std::size_t k = 0; k < o.value.size(); k += 8) {
            o.value[k] = 0x00, o.value[k + 1] = 0x02; // route targets
         }
      }
      distinct.push_back(std::move(o));
   }
   for (int i = 0; i < 560000; ++i) {
      double u = std::uniform_real_distribution<double>(0, 1)(random);
      workload.push_back(distinct[static_cast<std::size_t>(distinct.size() * u * u * u)]);
   }
}

// ---- The floor ---------------------------------------------------------------

struct Floor {
   absl::flat_hash_set<U64> values;
   std::vector<U32> listHashes; // sorted, exact size

   static U32 listHash(std::span<U8 const> bytes) { return Kiv::jenkinsOneAtATime(bytes); }

   // Interns the values of one occurrence and looks its list up.
   bool intern(Occurrence const& o) {
      std::size_t const element = o.type == 32 ? 12 : o.type == 8 ? 4 : 8;
      for (std::size_t k = 0; k + element <= o.value.size(); k += element) {
         U64 key = 0;
         std::memcpy(&key, o.value.data() + k, std::min<std::size_t>(element, 8));
         values.insert(key);
      }
      U32 const h = listHash(o.value);
      return std::binary_search(listHashes.begin(), listHashes.end(), h);
   }
};

template <class F>
double nsPerOccurrence(F&& pass, int repeats = 3) {
   std::vector<double> times;
   for (int r = 0; r < repeats; ++r) {
      auto start = std::chrono::steady_clock::now();
      pass();
      times.push_back(std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count());
   }
   std::sort(times.begin(), times.end());
   return times[times.size() / 2] / double(workload.size());
}

// The decoded lists of one pass, held so that "full" tables stay full.
struct Decoded {
   std::vector<CommList::PtrConst> standard;
   std::vector<LargeCommList::PtrConst> large;
   std::vector<ExtCommList::PtrConst> extended;
};

void decodeAll(CommunityTables const& tables, Decoded* keep) {
   for (Occurrence const& o : workload) {
      auto result = decodeAttribute(tables, o.type, o.value);
      if (keep) {
         if (auto* s = std::get_if<CommList::PtrConst>(&result.list)) keep->standard.push_back(*s);
         if (auto* l = std::get_if<LargeCommList::PtrConst>(&result.list)) keep->large.push_back(*l);
         if (auto* e = std::get_if<ExtCommList::PtrConst>(&result.list)) keep->extended.push_back(*e);
      }
      benchmark::DoNotOptimize(result);
   }
}

Floor fullFloor() {
   Floor floor;
   for (Occurrence const& o : workload) {
      floor.listHashes.push_back(Floor::listHash(o.value));
   }
   std::sort(floor.listHashes.begin(), floor.listHashes.end());
   floor.listHashes.erase(std::unique(floor.listHashes.begin(), floor.listHashes.end()),
                          floor.listHashes.end());
   floor.listHashes.shrink_to_fit();
   return floor;
}

void setRatio(benchmark::State& state, double ns, double floorNs) {
   state.counters["ns_per_attr"] = ns;
   state.counters["floor_ns"] = floorNs;
   state.counters["ratio"] = floorNs > 0 ? ns / floorNs : 0;
}

void BM_DecodeInternEmptyTables(benchmark::State& state) {
   double ns = 0;
   for (auto _ : state) {
      ns = nsPerOccurrence([] {
         auto tables = communityTablesFactory();
         decodeAll(*tables, nullptr);
      }, 1);
   }
   double const floorNs = nsPerOccurrence([] {
      Floor floor;
      for (Occurrence const& o : workload) {
         benchmark::DoNotOptimize(floor.intern(o));
         floor.listHashes.push_back(Floor::listHash(o.value)); // a new list every time
      }
   });
   setRatio(state, ns, floorNs);
}

void BM_DecodeInternFullTables(benchmark::State& state) {
   auto tables = communityTablesFactory();
   Decoded held;
   decodeAll(*tables, &held);
   double ns = 0;
   for (auto _ : state) {
      ns = nsPerOccurrence([&] { decodeAll(*tables, nullptr); }, 1);
   }
   Floor floor = fullFloor();
   double const floorNs = nsPerOccurrence([&] {
      for (Occurrence const& o : workload) {
         benchmark::DoNotOptimize(floor.intern(o));
      }
   });
   setRatio(state, ns, floorNs);
}

// One pass of `library` and of `floor` over every standard list of the
// workload, each list once per occurrence: ns per list against the floor.
template <class Library, class FloorPass>
void perStandardList(benchmark::State& state, Library&& library, FloorPass&& floor) {
   auto tables = communityTablesFactory();
   Decoded held;
   decodeAll(*tables, &held);
   double const perList =
      double(workload.size()) / double(std::max<std::size_t>(1, held.standard.size()));
   auto pass = [&](auto&& work) {
      return [&] {
         for (auto const& list : held.standard) {
            work(*list);
         }
      };
   };
   double ns = 0;
   for (auto _ : state) {
      ns = nsPerOccurrence(pass(library), 1) * perList;
   }
   setRatio(state, ns, nsPerOccurrence(pass(floor)) * perList);
}

void BM_StandardListText(benchmark::State& state) {
   perStandardList(
      state, [](CommList const& list) { benchmark::DoNotOptimize(list.toStrep()); },
      [](CommList const& list) {
         char buffer[16 * 1024];
         char* p = buffer;
         for (U32 v : *list.commVectorRawPtr()) {
            if (p + 24 > buffer + sizeof buffer) {
               break; // longer lists are rare; their tail is not rendered
            }
            p = std::to_chars(p, p + 5, v >> 16).ptr;
            *p++ = ':';
            p = std::to_chars(p, p + 5, v & 0xffff).ptr;
            *p++ = ' ';
         }
         benchmark::DoNotOptimize(std::string(buffer, p));
      });
}

void BM_StandardListWire(benchmark::State& state) {
   perStandardList(
      state, [](CommList const& list) { benchmark::DoNotOptimize(list.serialize()); },
      [](CommList const& list) {
         auto const& v = *list.commVectorRawPtr();
         std::string out(3 + 4 * v.size(), '\0');
         std::memcpy(out.data() + 3, v.data(), 4 * v.size());
         benchmark::DoNotOptimize(out);
      });
}

// Route-map matching of every occurrence, afresh and through the memo.
void BM_RouteMapMatch(benchmark::State& state) {
   static char const* const patterns[] = {"^65535:", "(^| )[0-9]+:666( |$)", "no-export",
                                          "RT:[0-9]+:100( |$)"};
   auto tables = communityTablesFactory();
   Decoded held;
   decodeAll(*tables, &held);
   Routing::RouteMap::PosixRegex::PtrConst regex =
      new Routing::RouteMap::PosixRegex(patterns[state.range(0)]);
   RouteMapMatchMemo memo(regex);
   double fresh = 0, memoNs = 0;
   for (auto _ : state) {
      fresh = nsPerOccurrence([&] {
         for (auto const& l : held.standard) benchmark::DoNotOptimize(l->matchCommunitiesRegex(regex.get()));
         for (auto const& l : held.large) benchmark::DoNotOptimize(l->matchCommunitiesRegex(regex.get()));
         for (auto const& l : held.extended) benchmark::DoNotOptimize(l->matchCommunitiesRegex(regex.get()));
      }, 1);
      memoNs = nsPerOccurrence([&] {
         for (auto const& l : held.standard) benchmark::DoNotOptimize(memo.matchCommunitiesRegex(*l));
         for (auto const& l : held.large) benchmark::DoNotOptimize(memo.matchCommunitiesRegex(*l));
         for (auto const& l : held.extended) benchmark::DoNotOptimize(memo.matchCommunitiesRegex(*l));
      }, 1);
   }
   state.SetLabel(patterns[state.range(0)]);
   state.counters["ns_per_attr"] = fresh;
   state.counters["memo_ns"] = memoNs;
   state.counters["memo_speedup"] = memoNs > 0 ? fresh / memoNs : 0;
}

// Interning from one and from two threads into multi-threaded tables (empty
// each round), each thread holding what it decoded the way paths hold their
// lists: attributes per second. Rounds of one and of two threads alternate
// and each reports its median, so that the ratio holds when the machine's
// speed drifts. Two more pairs of rounds frame it: the floor (each thread
// interns into a set of its own: what the machine gives two threads at that
// moment) and the library with private tables per thread (no list shared
// between the threads: what sharing the hot lists costs).

// The workload dealt out to the threads of a round in blocks of 64
// occurrences, in order, each block to whichever thread asks next: the
// threads meet the workload's hot lists at the same time, and a thread that
// runs faster (the machine's cores need not be equally free) does more.
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
   std::atomic<std::size_t> next_{0};
};

// A round's threads. Made for one round they start cold; kept across
// rounds, what each keeps per thread (the library's list cache, the floor's
// sets) is warm after the first.
class Workers {
 public:
   explicit Workers(int count)
       : start_(count + 1), done_(count + 1), share_(nullptr) {
      for (int t = 0; t < count; ++t) {
         threads_.emplace_back([this, t] {
            for (;;) {
               start_.arrive_and_wait();
               if (stop_) {
                  return;
               }
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
      auto start = std::chrono::steady_clock::now();
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
   WorkShare* share_;
   bool stop_ = false;
};

double internRound(int threads, bool privateTables) {
   std::vector<CommunityTables::Ptr> tables{communityTablesFactory()};
   while (privateTables && tables.size() < static_cast<std::size_t>(threads)) {
      tables.push_back(communityTablesFactory());
   }
   // Each thread's paths live in its own vector, handed over at the end (a
   // vector of vectors would put their sizes on one contended line).
   std::vector<std::vector<AnyCommList>> held(static_cast<std::size_t>(threads));
   for (auto& paths : held) {
      paths.resize(workload.size()); // touch the pages now
      paths.clear();
   }
   return Workers(threads).run([&](int t, WorkShare& share) {
      auto const slot = static_cast<std::size_t>(t);
      CommunityTables const& mine = *tables[privateTables ? slot : 0];
      std::vector<AnyCommList> paths = std::move(held[slot]);
      share.forEach([&](Occurrence const& o) {
         paths.push_back(decodeAttribute(mine, o.type, o.value).list);
      });
      held[slot] = std::move(paths);
   });
}

double floorRound(int threads, std::vector<U32> const& listHashes) {
   return Workers(threads).run([&](int, WorkShare& share) {
      absl::flat_hash_set<U64> values;
      std::size_t found = 0;
      share.forEach([&](Occurrence const& o) {
         std::size_t const element = o.type == 32 ? 12 : o.type == 8 ? 4 : 8;
         for (std::size_t k = 0; k + element <= o.value.size(); k += element) {
            U64 key = 0;
            std::memcpy(&key, o.value.data() + k, std::min<std::size_t>(element, 8));
            values.insert(key);
         }
         found += std::binary_search(listHashes.begin(), listHashes.end(),
                                     Floor::listHash(o.value));
      });
      benchmark::DoNotOptimize(found);
   });
}

void BM_MultiThreadedIntern(benchmark::State& state) {
   QorBgpGlobals::multiThreadedIs(true);
   Floor const floor = fullFloor();
   std::vector<double> rates[6]; // shared 1, 2; private 1, 2; floor 1, 2
   for (auto _ : state) {
      for (int round = 0; round < 7; ++round) {
         for (int threads = 1; threads <= 2; ++threads) {
            rates[threads - 1].push_back(internRound(threads, false));
            rates[threads + 1].push_back(internRound(threads, true));
            rates[threads + 3].push_back(floorRound(threads, floor.listHashes));
         }
      }
   }
   QorBgpGlobals::multiThreadedIs(false);
   Kiv::PtrInterface::threadSafeIs(false);
   double median[6];
   for (int i = 0; i < 6; ++i) {
      std::sort(rates[i].begin(), rates[i].end());
      median[i] = rates[i][rates[i].size() / 2];
   }
   state.counters["attrs_per_s_1_thread"] = median[0];
   state.counters["attrs_per_s_2_threads"] = median[1];
   state.counters["speedup"] = median[1] / median[0];
   state.counters["speedup_private_tables"] = median[3] / median[2];
   state.counters["floor_speedup"] = median[5] / median[4];
}

// Steady state, as in an agent that has converged: the tables already hold
// every list of the workload and the threads live across rounds. One and
// two threads alternate, beside the floor with sets filled beforehand.
void BM_MultiThreadedInternSteady(benchmark::State& state) {
   QorBgpGlobals::multiThreadedIs(true);
   std::vector<double> rates[4]; // library 1, 2; floor 1, 2
   {
      auto tables = communityTablesFactory();
      std::vector<AnyCommList> resident;
      for (Occurrence const& o : workload) {
         resident.push_back(decodeAttribute(*tables, o.type, o.value).list);
      }
      Floor const floor = fullFloor();
      Workers one(1), two(2);
      std::vector<std::vector<AnyCommList>> paths(2);
      std::vector<absl::flat_hash_set<U64>> floorValues(2);
      for (auto& p : paths) p.reserve(workload.size());
      auto library = [&](int t, WorkShare& share) {
         // A vector of its own while it runs (see internRound).
         std::vector<AnyCommList> mine = std::move(paths[static_cast<std::size_t>(t)]);
         share.forEach([&](Occurrence const& o) {
            mine.push_back(decodeAttribute(*tables, o.type, o.value).list);
         });
         paths[static_cast<std::size_t>(t)] = std::move(mine);
      };
      auto floorJob = [&](int t, WorkShare& share) {
         Floor own{std::move(floorValues[static_cast<std::size_t>(t)]), floor.listHashes};
         std::size_t found = 0;
         share.forEach([&](Occurrence const& o) { found += own.intern(o); });
         benchmark::DoNotOptimize(found);
         floorValues[static_cast<std::size_t>(t)] = std::move(own.values);
      };
      for (auto _ : state) {
         for (int round = 0; round < 8; ++round) {
            for (Workers* workers : {&one, &two}) {
               std::size_t const k = workers == &one ? 0 : 1;
               double const rate = workers->run(library);
               for (auto& p : paths) p.clear(); // the tables keep the lists
               double const floorRate = workers->run(floorJob);
               if (round > 0) { // the first round warms the threads
                  rates[k].push_back(rate);
                  rates[2 + k].push_back(floorRate);
               }
            }
         }
      }
   }
   CommList::releaseThreadCache();
   QorBgpGlobals::multiThreadedIs(false);
   Kiv::PtrInterface::threadSafeIs(false);
   double median[4];
   for (int i = 0; i < 4; ++i) {
      std::sort(rates[i].begin(), rates[i].end());
      median[i] = rates[i][rates[i].size() / 2];
   }
   state.counters["attrs_per_s_1_thread"] = median[0];
   state.counters["attrs_per_s_2_threads"] = median[1];
   state.counters["speedup"] = median[1] / median[0];
   state.counters["floor_speedup"] = median[3] / median[2];
}

// Heap per distinct list of one kind: the workload's occurrences of attribute
// `type` decoded into fresh tables, one reference kept per distinct list. It
// counts the lists, their values and the tables' growth, not the tables'
// fixed parts (made before counting starts). The floor is the same lists'
// values in exact-size arrays plus 16 bytes a list (hash and place in a
// sorted array).
struct KindMemory {
   std::size_t lists = 0;
   double bytesPerList = 0;
   double floorBytesPerList = 0;
};

template <class ListPtr>
KindMemory kindMemory(U8 type, std::size_t elementSize, std::vector<ListPtr>* keep) {
   auto tables = communityTablesFactory();
   std::vector<ListPtr> lists;
   lists.reserve(static_cast<std::size_t>(std::count_if(
      workload.begin(), workload.end(), [&](Occurrence const& o) { return o.type == type; })));
   bench::HeapCounting counting;
   std::size_t const before = bench::liveHeapBytes();
   for (Occurrence const& o : workload) {
      if (o.type == type) {
         AnyCommList decoded = decodeAttribute(*tables, type, o.value).list;
         if (auto* list = std::get_if<ListPtr>(&decoded)) {
            lists.push_back(std::move(*list));
         }
      }
   }
   std::sort(lists.begin(), lists.end());
   lists.erase(std::unique(lists.begin(), lists.end()), lists.end()); // frees lists only
   KindMemory memory;
   memory.lists = lists.size();
   std::size_t valueBytes = 0;
   for (auto const& list : lists) {
      valueBytes += elementSize * list->comms();
   }
   double const count = double(std::max<std::size_t>(1, lists.size()));
   memory.bytesPerList = double(bench::liveHeapBytes() - before) / count;
   memory.floorBytesPerList = double(valueBytes + 16 * lists.size()) / count;
   if (keep) {
      *keep = std::move(lists);
   }
   return memory;
}

// Heap per distinct list of each kind against the floor, and a million
// paths each holding one reference to its standard list.
void BM_Memory(benchmark::State& state) {
   KindMemory standard, large, extended;
   double millionPathsExtra = 0;
   for (auto _ : state) {
      std::vector<CommList::PtrConst> standardLists;
      standard = kindMemory<CommList::PtrConst>(community, 4, &standardLists);
      large = kindMemory<LargeCommList::PtrConst>(largeCommunity, 12, nullptr);
      extended = kindMemory<ExtCommList::PtrConst>(extCommunity, 8, nullptr);

      std::vector<CommList::PtrConst> paths;
      paths.reserve(1000000);
      bench::HeapCounting counting;
      std::size_t const beforePaths = bench::liveHeapBytes();
      for (std::size_t i = 0; i < 1000000 && !standardLists.empty(); ++i) {
         paths.push_back(standardLists[i % standardLists.size()]);
      }
      millionPathsExtra = double(bench::liveHeapBytes() - beforePaths);
   }
   auto report = [&](char const* kind, KindMemory const& memory) {
      std::string const name(kind);
      state.counters["distinct_" + name + "_lists"] = double(memory.lists);
      state.counters["bytes_per_" + name + "_list"] = memory.bytesPerList;
      state.counters[name + "_ratio"] =
         memory.floorBytesPerList > 0 ? memory.bytesPerList / memory.floorBytesPerList : 0;
   };
   report("standard", standard);
   report("large", large);
   report("extended", extended);
   state.counters["floor_bytes_per_standard_list"] = standard.floorBytesPerList;
   state.counters["million_paths_extra_bytes"] = millionPathsExtra;
}

} // namespace

int main(int argc, char** argv) {
   benchmark::Initialize(&argc, argv);
   for (int i = 1; i < argc; ++i) {
      loadFile(argv[i]);
   }
   if (workload.empty()) {
      std::cerr << "qorbgp-workload-bench: no attribute files given: a synthetic workload\n";
      synthesize();
   }
   std::cerr << "qorbgp-workload-bench: " << workload.size() << " attribute occurrences\n";
   Kiv::PtrInterface::threadSafeIs(false);
   benchmark::RegisterBenchmark("DecodeIntern/emptyTables", BM_DecodeInternEmptyTables)->Iterations(3)->Unit(benchmark::kMillisecond);
   benchmark::RegisterBenchmark("DecodeIntern/fullTables", BM_DecodeInternFullTables)->Iterations(3)->Unit(benchmark::kMillisecond);
   benchmark::RegisterBenchmark("StandardList/text", BM_StandardListText)->Iterations(3)->Unit(benchmark::kMillisecond);
   benchmark::RegisterBenchmark("StandardList/wire", BM_StandardListWire)->Iterations(3)->Unit(benchmark::kMillisecond);
   benchmark::RegisterBenchmark("RouteMapMatch", BM_RouteMapMatch)->DenseRange(0, 3)->Iterations(2)->Unit(benchmark::kMillisecond);
   benchmark::RegisterBenchmark("MultiThreadedIntern", BM_MultiThreadedIntern)->Iterations(1)->Unit(benchmark::kMillisecond);
   benchmark::RegisterBenchmark("MultiThreadedIntern/steady", BM_MultiThreadedInternSteady)->Iterations(1)->Unit(benchmark::kMillisecond);
   benchmark::RegisterBenchmark("Memory", BM_Memory)->Iterations(1)->Unit(benchmark::kMillisecond);
   benchmark::RunSpecifiedBenchmarks();
   benchmark::Shutdown();
   return 0;
}
