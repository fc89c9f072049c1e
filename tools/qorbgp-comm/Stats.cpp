// stats: what the community attributes of one or more MRT dumps amount to
// once interned — how many distinct values and lists, how well paths share
// them, what memory they hold, which communities are most used.
#include "Commands.h"
#include "PathLists.h"
#include "Progress.h"
#include "ReadProblems.h"

#include <absl/container/flat_hash_map.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <malloc.h>
#include <map>
#include <thread>
#include <unordered_map>

namespace QorBgpTools {

using namespace Routing::Bgp;

namespace {

// Interned objects hash by address, mixed by absl (a bare address has its
// low bits all zero).
struct PtrHash {
   template <class T>
   std::size_t operator()(Kiv::Ptr<T> const& p) const {
      return absl::Hash<T*>{}(p.get());
   }
};

// How often a list occurs, keyed by the interned object: the list object
// itself is kept alive by the key. Looked up once per path: a flat table.
template <class List>
struct KindCounter {
   U64 attributes = 0;
   absl::flat_hash_map<Kiv::Ptr<List const>, U64, PtrHash> occurrences;

   void count(Kiv::Ptr<List const> const& list) {
      if (list) {
         ++attributes;
         ++occurrences[list];
      }
   }
   double sharing() const {
      return occurrences.empty() ? 0.0 : double(attributes) / double(occurrences.size());
   }
};

struct Totals {
   U64 paths = 0;
   std::map<std::pair<U16, U8>, U64> families; // paths by (AFI, SAFI)
   U64 malformed = 0;
   std::map<std::string, U64> malformedReasons;
   U64 skippedRecords = 0;
   U64 ignoredRecords = 0;
   std::vector<std::string> problems;
   KindCounter<CommList> standard;
   KindCounter<LargeCommList> large;
   KindCounter<ExtCommList> extended;
   KindCounter<ExtCommIp6List> ip6;
};

// Bytes allocated from malloc's heaps and not freed, over every arena: each
// reading thread allocates from an arena of its own, and mallinfo2 sees only
// the main one. malloc_info's totals (its last entries) cover them all.
std::size_t heapInUse() {
   char* text = nullptr;
   std::size_t size = 0;
   std::FILE* out = ::open_memstream(&text, &size);
   if (!out) {
      return mallinfo2().uordblks;
   }
   ::malloc_info(0, out);
   std::fclose(out);
   std::string_view const xml(text, size);
   auto total = [&](std::string_view tag) -> std::size_t {
      std::size_t at = xml.rfind(tag);
      at = at == std::string_view::npos ? at : xml.find("size=\"", at);
      std::size_t value = 0;
      if (at != std::string_view::npos) {
         std::from_chars(xml.data() + at + 6, xml.data() + xml.size(), value);
      }
      return value;
   };
   std::size_t const obtained = total("<system type=\"current\"");
   std::size_t const free = total("<total type=\"fast\"") + total("<total type=\"rest\"");
   std::free(text);
   return obtained - std::min(obtained, free);
}

template <class Map>
auto topEntries(Map const& counts, unsigned top) {
   std::vector<std::pair<typename Map::key_type, U64>> entries(counts.begin(), counts.end());
   std::partial_sort(entries.begin(), entries.begin() + std::min<std::size_t>(top, entries.size()),
                     entries.end(), [](auto const& a, auto const& b) {
                        return a.second != b.second ? a.second > b.second : a.first < b.first;
                     });
   entries.resize(std::min<std::size_t>(top, entries.size()));
   return entries;
}

std::string standardLabel(U32 value) {
   std::string name = CommList::wellKnownName(value);
   return CommList::getStringValue(value) + (name.empty() ? "" : " (" + name + ")");
}

// What one reading thread gathers, added up over the threads at the end.
void merge(Totals& into, Totals&& from) {
   into.paths += from.paths;
   for (auto const& [family, n] : from.families) {
      into.families[family] += n;
   }
   into.malformed += from.malformed;
   for (auto& [reason, n] : from.malformedReasons) {
      into.malformedReasons[reason] += n;
   }
   auto mergeKind = [](auto& to, auto& kind) {
      to.attributes += kind.attributes;
      for (auto& [list, n] : kind.occurrences) {
         to.occurrences[list] += n;
      }
   };
   mergeKind(into.standard, from.standard);
   mergeKind(into.large, from.large);
   mergeKind(into.extended, from.extended);
   mergeKind(into.ip6, from.ip6);
}

// How one file went: reported in the order the files were given, whichever
// thread read it.
struct FileOutcome {
   std::string openError;
   mrt::Report report;
};

// The total bytes of the files, for the progress bar; 0 when any of them is
// not a regular file (standard input, a pipe) and has no size to go by.
U64 totalSize(std::vector<std::string> const& files) {
   U64 total = 0;
   for (std::string const& file : files) {
      std::error_code error;
      if (file == "-" || !std::filesystem::is_regular_file(file, error)) {
         return 0;
      }
      total += std::filesystem::file_size(file, error);
   }
   return total;
}

unsigned threadsFor(StatsOptions const& options) {
   if (options.threads) {
      return options.threads;
   }
   return static_cast<unsigned>(std::clamp<std::size_t>(
      options.files.size(), 1, std::max(1u, std::thread::hardware_concurrency())));
}

} // namespace

namespace {

// stats --decompress-only: each file's decompressed size, and whether it was
// read whole.
int decompressOnly(StatsOptions const& options) {
   int status = 0;
   for (std::string const& file : options.files) {
      std::string error;
      auto reader = mrt::MrtReader::open(file, &error);
      if (!reader) {
         std::cerr << "qorbgp-comm stats: " << error << '\n';
         status = 1;
         continue;
      }
      U64 const bytes = reader->drain();
      std::cout << file << ": " << bytes << " bytes\n";
      if (!reportReadProblems("stats", file, reader->report())) {
         status = 1;
      }
   }
   return status;
}

} // namespace

int runStats(StatsOptions const& options) {
   if (options.decompressOnly) {
      return decompressOnly(options);
   }
   auto const started = std::chrono::steady_clock::now();
   std::size_t const heapBefore = heapInUse();
   unsigned const threads = threadsFor(options);
   // One set of tables for every thread: the interning is shared, so a list
   // met in two files is one object. Several threads need the tables' locked
   // form, chosen before any table exists.
   QorBgpGlobals::multiThreadedIs(threads > 1);
   auto tables = communityTablesFactory();
   std::vector<FileOutcome> outcomes(options.files.size());
   std::vector<Totals> perThread(threads);
   std::atomic<std::size_t> nextFile{0};
   std::atomic<U64> bytesDone{0}, pathsDone{0};
   Progress progress(options.files.size() == 1 ? options.files[0] : "", totalSize(options.files));

   auto work = [&](Totals& totals) {
      for (std::size_t i; (i = nextFile++) < options.files.size();) {
         auto reader = mrt::MrtReader::open(options.files[i], &outcomes[i].openError);
         if (!reader) {
            continue;
         }
         U64 counted = 0; // of this file's bytes, already in bytesDone
         PathListsDecoder decoder(*tables);
         mrt::Path path;
         while (reader->next(path)) {
            ++totals.paths;
            ++totals.families[{path.afi, path.safi}];
            PathLists const& lists = decoder.lists(path);
            totals.standard.count(lists.standard);
            totals.large.count(lists.large);
            totals.extended.count(lists.extended);
            totals.ip6.count(lists.ip6);
            for (std::string const& reason : lists.malformed) {
               ++totals.malformed;
               ++totals.malformedReasons[reason];
            }
            if ((totals.paths & 0xffff) == 0) {
               U64 consumed = reader->bytesConsumed();
               progress.update(bytesDone += consumed - counted, pathsDone += 0x10000);
               counted = consumed;
            }
         }
         bytesDone += reader->bytesConsumed() - counted;
         outcomes[i].report = reader->report();
      }
   };
   {
      std::vector<std::jthread> workers;
      for (unsigned t = 1; t < threads; ++t) {
         workers.emplace_back(work, std::ref(perThread[t]));
      }
      work(perThread[0]);
   }
   Totals totals;
   for (Totals& part : perThread) {
      merge(totals, std::move(part));
   }
   perThread.clear();

   int status = 0;
   for (std::size_t i = 0; i < options.files.size(); ++i) {
      std::string const& file = options.files[i];
      mrt::Report const& report = outcomes[i].report;
      if (!outcomes[i].openError.empty()) {
         std::cerr << "qorbgp-comm stats: " << outcomes[i].openError << '\n';
         status = 1;
         continue;
      }
      if (!reportReadProblems("stats", file, report)) {
         status = 1;
      }
      totals.skippedRecords += report.skippedRecords;
      totals.ignoredRecords += report.ignoredRecords;
      for (mrt::Problem const& problem : report.problems) {
         if (totals.problems.size() < 5) {
            totals.problems.push_back(file + " offset " + std::to_string(problem.offset) + ": " +
                                      problem.text);
         }
      }
   }
   double const seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();

   // The communities by use: every occurrence of a list counts its members.
   std::unordered_map<U32, U64> standardUse;
   for (auto const& [list, n] : totals.standard.occurrences) {
      for (U32 value : *list->commVectorRawPtr()) {
         standardUse[value] += n;
      }
   }
   std::map<std::string, U64> extendedByKind;
   for (auto const& [list, n] : totals.extended.occurrences) {
      for (ExtComm::PtrConst const& comm : *list->commVectorRawPtr()) {
         extendedByKind[kindLabel(comm->classification())] += n;
      }
   }
   std::size_t distinctStandardValues = standardUse.size();
   std::size_t distinctLargeValues = 0;
   {
      std::vector<Acl::CommunityValue> all;
      for (auto const& [list, n] : totals.large.occurrences) {
         all.insert(all.end(), list->commVectorRawPtr()->begin(), list->commVectorRawPtr()->end());
      }
      std::sort(all.begin(), all.end());
      distinctLargeValues =
         static_cast<std::size_t>(std::unique(all.begin(), all.end()) - all.begin());
   }
   std::size_t const heapHeld = heapInUse() - std::min(heapInUse(), heapBefore);

   struct Kind {
      char const* name;
      U64 attributes, lists;
      std::size_t values;
      double sharing;
   };
   Kind const kinds[] = {
      {"standard", totals.standard.attributes, totals.standard.occurrences.size(),
       distinctStandardValues, totals.standard.sharing()},
      {"large", totals.large.attributes, totals.large.occurrences.size(), distinctLargeValues,
       totals.large.sharing()},
      {"extended", totals.extended.attributes, totals.extended.occurrences.size(),
       tables->extCommDedupTable()->dedupTable()->size(), totals.extended.sharing()},
      {"ipv6-extended", totals.ip6.attributes, totals.ip6.occurrences.size(),
       tables->extCommIp6DedupTable()->dedupTable()->size(), totals.ip6.sharing()},
   };
   auto topStandard = topEntries(standardUse, options.top);

   if (options.json) {
      nlohmann::json out;
      out["paths"] = totals.paths;
      for (auto const& [family, n] : totals.families) {
         out["pathsByFamily"][mrt::familyName(family.first, family.second)] = n;
      }
      out["seconds"] = seconds;
      out["threads"] = threads;
      for (Kind const& k : kinds) {
         out["kinds"][k.name] = {{"attributes", k.attributes},
                                 {"distinctLists", k.lists},
                                 {"distinctValues", k.values},
                                 {"sharing", k.sharing}};
      }
      out["heapBytesHeld"] = heapHeld;
      for (auto const& [value, n] : topStandard) {
         out["topStandard"].push_back({{"community", CommList::getStringValue(value)},
                                       {"name", CommList::wellKnownName(value)},
                                       {"paths", n}});
      }
      out["extendedByKind"] = extendedByKind;
      out["malformedAttributes"] = totals.malformed;
      out["malformedReasons"] = totals.malformedReasons;
      out["skippedRecords"] = totals.skippedRecords;
      out["ignoredRecords"] = totals.ignoredRecords;
      out["problems"] = totals.problems;
      std::cout << jsonText(out, 2) << '\n';
      return status;
   }

   std::cout << std::fixed << std::setprecision(1);
   std::cout << "paths read        " << totals.paths << "  (" << seconds << " s, "
             << std::setprecision(0) << (seconds > 0 ? totals.paths / seconds : 0) << " paths/s, "
             << threads << (threads == 1 ? " thread" : " threads") << ")\n";
   for (auto const& [family, n] : totals.families) {
      std::cout << "  " << std::left << std::setw(16)
                << mrt::familyName(family.first, family.second) << std::right << n << '\n';
   }
   std::cout << '\n' << std::setprecision(1);
   std::cout << std::left << std::setw(15) << "kind" << std::right << std::setw(12) << "attributes"
             << std::setw(16) << "distinct lists" << std::setw(17) << "distinct values"
             << std::setw(16) << "paths per list" << '\n';
   for (Kind const& k : kinds) {
      std::cout << std::left << std::setw(15) << k.name << std::right << std::setw(12)
                << k.attributes << std::setw(16) << k.lists << std::setw(17) << k.values
                << std::setw(16) << k.sharing << '\n';
   }
   std::cout << "\nheap held by the interned lists and values: " << heapHeld / 1024 << " KiB\n";
   if (!topStandard.empty()) {
      std::cout << "\ntop standard communities (paths):\n";
      for (auto const& [value, n] : topStandard) {
         std::cout << "  " << std::left << std::setw(28) << standardLabel(value) << std::right
                   << std::setw(10) << n << '\n';
      }
   }
   if (!extendedByKind.empty()) {
      std::cout << "\nextended communities by kind (occurrences):\n";
      for (auto const& [kind, n] : extendedByKind) {
         std::cout << "  " << std::left << std::setw(44) << kind << std::right << std::setw(10) << n
                   << '\n';
      }
   }
   std::cout << "\nmalformed community attributes (treat as withdraw): " << totals.malformed
             << '\n';
   for (auto const& [reason, n] : totals.malformedReasons) {
      std::cout << "  " << n << " x " << reason << '\n';
   }
   std::cout << "MRT records skipped as damaged: " << totals.skippedRecords
             << ", ignored (no announcement): " << totals.ignoredRecords << '\n';
   for (std::string const& problem : totals.problems) {
      std::cout << "  " << problem << '\n';
   }
   return status;
}

} // namespace QorBgpTools
