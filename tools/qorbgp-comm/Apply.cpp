// apply: a community policy run over MRT dumps, with what each rule did,
// and the dump written back with the edited communities.
#include "Commands.h"
#include "CommunityPolicy.h"
#include "Progress.h"
#include "ReadProblems.h"

#include "tools/mrt/MrtWriter.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <absl/container/flat_hash_set.h>
#include <nlohmann/json.hpp>

#include <array>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <sstream>

namespace QorBgpTools {

using namespace Routing::Bgp;

namespace {

constexpr int usageErrorStatus = 2;
constexpr U8 extendedLengthFlag = 0x10;
// The community attributes, in the order of their type codes.
constexpr std::array<U8, 4> communityTypes{community, extCommunity, extCommunityIp6,
                                           largeCommunity};

// The distinct lists of each kind seen. They are held, so that a list no
// path holds any more is not interned again as another object and counted
// twice.
struct DistinctLists {
   template <class List>
   struct Seen {
      absl::flat_hash_set<List const*> lists;
      std::vector<typename List::PtrConst> held;
      void add(typename List::PtrConst const& list) {
         if (list && lists.insert(list.get()).second) {
            held.push_back(list);
         }
      }
   };
   Seen<CommList> standard;
   Seen<LargeCommList> large;
   Seen<ExtCommList> extended;
   Seen<ExtCommIp6List> ip6;
   void add(PathLists const& lists) {
      standard.add(lists.standard);
      large.add(lists.large);
      extended.add(lists.extended);
      ip6.add(lists.ip6);
   }
   std::array<std::size_t, 4> sizes() const {
      return {standard.held.size(), large.held.size(), extended.held.size(), ip6.held.size()};
   }
};

// The attribute of `typeCode` holding the list of that kind, header
// included; empty without a list.
std::string encodedAttribute(PathLists const& lists, U8 typeCode) {
   switch (typeCode) {
   case community:
      return lists.standard ? lists.standard->serialize() : "";
   case largeCommunity:
      return lists.large ? lists.large->serialize() : "";
   case extCommunity:
      return lists.extended
                ? lists.extended->serialize(ExtCommList::serialization(true, true, true))
                : "";
   default:
      return lists.ip6 ? lists.ip6->serialize(true) : "";
   }
}

// The attribute block `attributes` with the community attributes holding
// `lists`: each one where the first attribute of its type was, or among the
// others in type-code order when there was none; the other attributes as
// they were.
std::vector<U8> rebuiltBlock(mrt::Attributes const& attributes, PathLists const& lists) {
   auto kindOf = [](U8 typeCode) {
      return static_cast<std::size_t>(
         std::find(communityTypes.begin(), communityTypes.end(), typeCode) -
         communityTypes.begin());
   };
   std::array<bool, 4> present{}, written{};
   for (mrt::AttributeView const& attribute : attributes) {
      if (std::size_t const kind = kindOf(attribute.typeCode); kind < present.size()) {
         present[kind] = true;
      }
   }
   std::vector<U8> out;
   auto writeCommunities = [&](std::size_t kind) {
      written[kind] = true;
      std::string const bytes = encodedAttribute(lists, communityTypes[kind]);
      out.insert(out.end(), bytes.begin(), bytes.end());
   };
   // The kinds the block lacks, before the first attribute of a higher type.
   auto writeMissingBelow = [&](unsigned typeCode) {
      for (std::size_t kind = 0; kind < communityTypes.size(); ++kind) {
         if (!present[kind] && !written[kind] && communityTypes[kind] < typeCode) {
            writeCommunities(kind);
         }
      }
   };
   for (mrt::AttributeView const& attribute : attributes) {
      writeMissingBelow(attribute.typeCode);
      if (std::size_t const kind = kindOf(attribute.typeCode);
          kind < present.size() && !written[kind]) {
         writeCommunities(kind);
         continue;
      }
      out.push_back(attribute.flags);
      out.push_back(attribute.typeCode);
      if (attribute.flags & extendedLengthFlag) {
         out.push_back(static_cast<U8>(attribute.value.size() >> 8));
      }
      out.push_back(static_cast<U8>(attribute.value.size()));
      out.insert(out.end(), attribute.value.begin(), attribute.value.end());
   }
   writeMissingBelow(256);
   return out;
}

struct Totals {
   U64 paths = 0;
   U64 changed = 0;
   U64 unwritable = 0; // records left as read: an edited length outgrew its field
   DistinctLists before, after;
};

// Runs `policy` over every record of `file`, writing each record to
// `writer` when there is one. False when the file was not read whole.
bool applyToFile(std::string const& file, CommunityPolicy& policy, CommunityTables const& tables,
                 mrt::MrtWriter* writer, Totals& totals) {
   std::string error;
   auto reader = mrt::MrtReader::open(file, &error);
   if (!reader) {
      std::cerr << "qorbgp-comm apply: " << error << '\n';
      return false;
   }
   Progress progress(file, reader->fileSize());
   mrt::RecordView record;
   std::vector<std::optional<std::vector<U8>>> blocks;
   while (reader->nextRecord(record)) {
      blocks.assign(record.blocks.size(), std::nullopt);
      bool edited = false;
      // The paths of one block (one BGP message, or one RIB entry) share
      // their lists and their peer.
      for (std::size_t first = 0; first < record.paths.size();) {
         std::size_t const block = record.blockOfPath[first];
         std::size_t last = first + 1;
         while (last < record.paths.size() && record.blockOfPath[last] == block) {
            ++last;
         }
         mrt::Path const& path = record.paths[first];
         U64 const paths = last - first;
         PathLists lists = decodePathLists(tables, path);
         totals.before.add(lists);
         CommunityPolicy::Outcome const outcome = policy.run(lists, path.peerAs, paths);
         totals.after.add(lists);
         totals.paths += paths;
         if (outcome.changed) {
            totals.changed += paths;
            blocks[block] = rebuiltBlock(path.attributes, lists);
            edited = true;
         }
         first = last;
      }
      if ((totals.paths & 0xfff) == 0) {
         progress.update(reader->bytesConsumed(), totals.paths);
      }
      if (!writer) {
         continue;
      }
      if (edited) {
         try {
            std::vector<U8> const body = mrt::replaceAttributeBlocks(record, blocks);
            writer->record(record.timestamp, record.type, record.subtype, body);
            continue;
         } catch (Kiv::RangeError const& e) {
            ++totals.unwritable;
            std::cerr << "qorbgp-comm apply: " << file << " offset " << record.offset << ": "
                      << e.what() << "; the record is written as read\n";
         }
      }
      writer->record(record.timestamp, record.type, record.subtype, record.body);
   }
   return reportReadProblems("apply", file, reader->report());
}

std::optional<std::string> readWhole(std::string const& file) {
   std::ifstream in(file, std::ios::binary);
   if (!in) {
      return std::nullopt;
   }
   std::ostringstream text;
   text << in.rdbuf();
   return in.bad() ? std::nullopt : std::optional(text.str());
}

void printReport(std::vector<CommunityPolicy::RuleCounts> const& rules, Totals const& totals,
                 bool json) {
   static char const* const kinds[] = {"standard", "large", "extended", "ipv6"};
   auto const before = totals.before.sizes(), after = totals.after.sizes();
   if (json) {
      nlohmann::ordered_json out;
      for (auto const& rule : rules) {
         out["rules"].push_back(
            {{"name", rule.name}, {"matched", rule.matched}, {"changed", rule.changed}});
      }
      out["paths"] = totals.paths;
      out["changed"] = totals.changed;
      for (std::size_t k = 0; k < 4; ++k) {
         out["distinctLists"][kinds[k]] = {{"before", before[k]}, {"after", after[k]}};
      }
      std::cout << jsonText(out, 2) << '\n';
      return;
   }
   std::size_t width = 4;
   for (auto const& rule : rules) {
      width = std::max(width, rule.name.size());
   }
   std::cout << std::left << std::setw(static_cast<int>(width)) << "rule" << std::right << "  "
             << std::setw(12) << "matched"
             << "  " << std::setw(12) << "changed" << '\n';
   for (auto const& rule : rules) {
      std::cout << std::left << std::setw(static_cast<int>(width)) << rule.name << std::right
                << "  " << std::setw(12) << rule.matched << "  " << std::setw(12) << rule.changed
                << '\n';
   }
   std::cout << totals.paths << " paths, " << totals.changed << " changed\n"
             << "distinct lists    before     after\n";
   for (std::size_t k = 0; k < 4; ++k) {
      std::cout << std::left << std::setw(14) << kinds[k] << std::right << std::setw(10)
                << before[k] << std::setw(10) << after[k] << '\n';
   }
}

} // namespace

int runApply(ApplyOptions const& options) {
   auto const text = readWhole(options.policy);
   if (!text) {
      std::cerr << "qorbgp-comm apply: cannot read the policy \"" << options.policy << "\"\n";
      return usageErrorStatus;
   }
   auto tables = communityTablesFactory();
   std::string error;
   auto policy = CommunityPolicy::parse(*text, options.policy, tables, options.localAs, &error);
   if (!policy) {
      std::cerr << "qorbgp-comm apply: " << error << '\n';
      return usageErrorStatus;
   }
   std::unique_ptr<mrt::MrtWriter> writer;
   if (!options.write.empty()) {
      for (std::string const& file : options.files) {
         std::error_code ignored;
         if (file == options.write || std::filesystem::equivalent(file, options.write, ignored)) {
            std::cerr << "qorbgp-comm apply: --write " << options.write
                      << " would overwrite an input\n";
            return usageErrorStatus;
         }
      }
      writer =
         mrt::MrtWriter::create(options.write, mrt::compressionForName(options.write), &error);
      if (!writer) {
         std::cerr << "qorbgp-comm apply: " << error << '\n';
         return 1;
      }
   }
   Totals totals;
   bool whole = true;
   for (std::string const& file : options.files) {
      whole = applyToFile(file, *policy, *tables, writer.get(), totals) && whole;
   }
   if (writer && !writer->close(&error)) {
      std::cerr << "qorbgp-comm apply: " << error << '\n';
      whole = false;
   }
   printReport(policy->counts(), totals, options.json);
   return whole && totals.unwritable == 0 ? 0 : 1;
}

} // namespace QorBgpTools
