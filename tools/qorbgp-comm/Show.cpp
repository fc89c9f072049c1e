// show and match: the community lists of each path of an MRT dump, all of
// them or those a route-map regular expression matches.
#include "Commands.h"
#include "CommunityPolicy.h"
#include "PathLists.h"
#include "Progress.h"
#include "ReadProblems.h"

#include "tools/mrt/AsPath.h"

#include "QorBgpCommunity/platform/Errors.h"
#include "QorBgpCommunity/platform/PosixRegex.h"

#include <nlohmann/json.hpp>

#include <ctime>
#include <iostream>

namespace QorBgpTools {

using namespace Routing::Bgp;

namespace {

std::string utcText(U32 seconds) {
   std::time_t const t = seconds;
   std::tm tm{};
   ::gmtime_r(&t, &tm);
   char text[32];
   std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &tm);
   return text;
}

nlohmann::ordered_json pathJson(mrt::Path const& path, PathLists const& lists, bool asdot) {
   nlohmann::ordered_json out{{"timestamp", path.timestamp},
                              {"time", utcText(path.timestamp)},
                              {"recordType", mrt::recordTypeName(path.recordType)},
                              {"family", mrt::familyName(path.afi, path.safi)},
                              {"prefix", path.route.text()},
                              {"peer", path.peerText()},
                              {"peerAs", path.peerAs}};
   if (path.pathId) {
      out["pathId"] = *path.pathId;
   }
   if (auto asPath = mrt::AsPath::of(path)) {
      out["asPath"] = asPath->text();
      if (auto origin = asPath->origin()) {
         out["originAs"] = *origin;
      }
   } else {
      out["asPath"] = nullptr; // malformed
   }
   if (lists.standard) {
      nlohmann::json values = nlohmann::json::array();
      for (U32 value : *lists.standard->commVectorRawPtr()) {
         values.push_back(CommList::getStringValue(value));
      }
      out["communities"] = values;
   }
   if (lists.large) {
      nlohmann::json values = nlohmann::json::array();
      for (Acl::CommunityValue const& value : *lists.large->commVectorRawPtr()) {
         values.push_back(LargeCommList::displayString(value, asdot));
      }
      out["largeCommunities"] = values;
   }
   if (lists.extended) {
      nlohmann::json values = nlohmann::json::array();
      for (ExtComm::PtrConst const& comm : *lists.extended->commVectorRawPtr()) {
         values.push_back(comm->toStrepForUI(asdot, false, false));
      }
      out["extendedCommunities"] = values;
   }
   if (lists.ip6) {
      nlohmann::json values = nlohmann::json::array();
      for (ExtCommIp6::PtrConst const& comm : *lists.ip6->commVectorRawPtr()) {
         values.push_back(ip6ValueText(*comm));
      }
      out["ipv6ExtendedCommunities"] = values;
   }
   if (!lists.malformed.empty()) {
      out["malformed"] = lists.malformed;
   }
   return out;
}

void printPath(mrt::Path const& path, PathLists const& lists, bool asdot) {
   std::cout << path.route.text() << " from " << path.peerText() << " AS" << path.peerAs;
   if (path.pathId) {
      std::cout << " path-id " << *path.pathId;
   }
   std::cout << '\n';
   if (lists.standard) {
      std::cout << "  Community: " << standardText(lists.standard.get()) << '\n';
   }
   if (lists.large) {
      std::cout << "  Large Community: " << largeText(lists.large.get(), asdot) << '\n';
   }
   if (lists.extended) {
      std::cout << "  Extended Community: " << extendedText(lists.extended.get(), asdot) << '\n';
   }
   if (lists.ip6) {
      std::cout << "  IPv6 Extended Community: " << ip6Text(lists.ip6.get()) << '\n';
   }
   for (std::string const& reason : lists.malformed) {
      std::cout << "  malformed (treat as withdraw): " << reason << '\n';
   }
}

// Runs `visit(path, lists)` for every path of `files` that `filter`
// accepts, one file after the other, until it returns false. True when every
// file was opened and read whole up to there; each problem is reported on
// standard error, and the other files are still read.
template <class Visit>
bool forEachPath(std::vector<std::string> const& files, char const* command,
                 PathFilter const& filter, CommunityTables const& tables, Visit visit) {
   bool whole = true;
   for (std::string const& file : files) {
      std::string error;
      auto reader = mrt::MrtReader::open(file, &error);
      if (!reader) {
         std::cerr << "qorbgp-comm " << command << ": " << error << '\n';
         whole = false;
         continue;
      }
      Progress progress(file, reader->fileSize(), true);
      PathListsDecoder decoder(tables);
      mrt::Path path;
      bool more = true;
      U64 paths = 0;
      while (more && reader->next(path)) {
         if ((++paths & 0xffff) == 0) {
            progress.update(reader->bytesConsumed(), paths);
         }
         if (filter.accepts(path)) {
            more = visit(path, decoder.lists(path));
         }
      }
      whole = reportReadProblems(command, file, reader->report()) && whole;
      if (!more) {
         break;
      }
   }
   return whole;
}

std::optional<PathFilter> makeFilter(PathFilterOptions const& options, char const* command) {
   std::string error;
   auto filter = PathFilter::make(options, &error);
   if (!filter) {
      std::cerr << "qorbgp-comm " << command << ": " << error << '\n';
   }
   return filter;
}

} // namespace

int runShow(ShowOptions const& options) {
   auto filter = makeFilter(options.filter, "show");
   if (!filter) {
      return 2;
   }
   std::size_t shown = 0;
   auto tables = communityTablesFactory();
   bool const whole = forEachPath(
      options.files, "show", *filter, *tables, [&](mrt::Path const& path, PathLists const& lists) {
         if (options.json) {
            std::cout << jsonText(pathJson(path, lists, options.asdot)) << '\n';
         } else {
            printPath(path, lists, options.asdot);
         }
         return options.limit == 0 || ++shown < options.limit;
      });
   return whole ? 0 : 1;
}

int runMatch(MatchOptions const& options) {
   auto filter = makeFilter(options.filter, "match");
   if (!filter) {
      return 2;
   }
   // The set conditions: one rule of them (a path without a list of a kind
   // is judged as holding an empty one).
   auto tables = communityTablesFactory();
   CommunityPolicy conditions(tables, options.localAs);
   std::pair<char const*, std::string const*> const sets[] = {{"standard", &options.sets.standard},
                                                              {"large", &options.sets.large},
                                                              {"extended", &options.sets.extended},
                                                              {"ipv6", &options.sets.ipv6}};
   for (auto const& [kind, text] : sets) {
      try {
         if (!text->empty()) {
            conditions.addMatch(kind, *text);
         }
      } catch (Kiv::RangeError const& e) {
         std::cerr << "qorbgp-comm match: --" << kind << ": " << e.what() << '\n';
         return 2;
      }
   }
   // Without a set condition the first argument is the expression.
   bool const hasRegex = conditions.empty();
   if (options.arguments.size() < (hasRegex ? 2u : 1u)) {
      std::cerr << "qorbgp-comm match: " << (hasRegex ? "REGEX and FILE" : "FILE") << " required\n";
      return 2;
   }
   Routing::RouteMap::PosixRegex::PtrConst regex;
   if (hasRegex) {
      auto compiled = Routing::RouteMap::PosixRegex::compile(
         Routing::RouteMap::PosixRegex::withDelimiters(options.arguments.front()));
      if (!compiled) {
         std::cerr << "qorbgp-comm match: " << compiled.error << '\n';
         return 2;
      }
      regex = compiled.regex;
   }
   std::vector<std::string> const files(options.arguments.begin() + (hasRegex ? 1 : 0),
                                        options.arguments.end());
   auto wanted = [&](char const* kind) {
      return options.kinds.empty() ||
             std::find(options.kinds.begin(), options.kinds.end(), kind) != options.kinds.end();
   };
   bool const standard = wanted("standard"), large = wanted("large"), extended = wanted("extended"),
              ip6 = wanted("ipv6");
   auto regexMatches = [&](PathLists const& lists) {
      Routing::RouteMap::PosixRegex const* r = regex.get();
      return !r || (standard && lists.standard && lists.standard->matchCommunitiesRegex(r)) ||
             (large && lists.large && lists.large->matchCommunitiesRegex(r)) ||
             (extended && lists.extended && lists.extended->matchCommunitiesRegex(r)) ||
             (ip6 && lists.ip6 && r->execute(ip6Text(lists.ip6.get()).c_str()) == 0);
   };
   U64 matches = 0;
   bool const whole = forEachPath(
      files, "match", *filter, *tables, [&](mrt::Path const& path, PathLists const& lists) {
         // The conditions' rule has no edit: it judges a copy and changes nothing.
         auto const conditionsHold = [&] {
            PathLists judged = lists;
            return conditions.run(judged, path.peerAs, 1).matched;
         };
         if (regexMatches(lists) && (hasRegex || conditionsHold())) {
            ++matches;
            if (options.json) {
               std::cout << jsonText(pathJson(path, lists, false)) << '\n';
            } else {
               printPath(path, lists, false);
            }
         }
         return true;
      });
   return !whole ? 2 : matches > 0 ? 0 : 1;
}

} // namespace QorBgpTools
