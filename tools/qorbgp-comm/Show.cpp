// show and match: the community lists of each path of an MRT dump, all of
// them or those a route-map regular expression matches.
#include "Commands.h"
#include "PathLists.h"
#include "ReadProblems.h"

#include "QorBgpCommunity/platform/Errors.h"
#include "QorBgpCommunity/platform/PosixRegex.h"

#include <nlohmann/json.hpp>

#include <iostream>

namespace QorBgpTools {

using namespace Routing::Bgp;

namespace {

nlohmann::json pathJson(mrt::Path const& path, PathLists const& lists, bool asdot) {
   nlohmann::json out{{"prefix", path.prefix}, {"peer", path.peerAddress}, {"peerAs", path.peerAs}};
   if (path.pathId) {
      out["pathId"] = *path.pathId;
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
   std::cout << path.prefix << " from " << path.peerAddress << " AS" << path.peerAs;
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

// Runs `visit(path, lists)` for every path of `files`, one file after the
// other, until it returns false. The exit status: 0, or 1 when a file could
// not be opened or was not read whole up to there (each problem is reported
// on standard error, and the other files are still read).
template <class Visit>
int forEachPath(std::vector<std::string> const& files, char const* command, Visit visit) {
   auto tables = communityTablesFactory();
   int status = 0;
   for (std::string const& file : files) {
      std::string error;
      auto reader = mrt::MrtReader::open(file, &error);
      if (!reader) {
         std::cerr << "qorbgp-comm " << command << ": " << error << '\n';
         status = 1;
         continue;
      }
      mrt::Path path;
      bool more = true;
      while (more && reader->next(path)) {
         more = visit(path, decodePathLists(*tables, path));
      }
      if (!reportReadProblems(command, file, reader->report())) {
         status = 1;
      }
      if (!more) {
         break;
      }
   }
   return status;
}

} // namespace

int runShow(ShowOptions const& options) {
   std::size_t shown = 0;
   return forEachPath(options.files, "show", [&](mrt::Path const& path, PathLists const& lists) {
      if (!options.prefix.empty() && path.prefix != options.prefix) {
         return true;
      }
      if (options.json) {
         std::cout << pathJson(path, lists, options.asdot).dump() << '\n';
      } else {
         printPath(path, lists, options.asdot);
      }
      return options.limit == 0 || ++shown < options.limit;
   });
}

int runMatch(MatchOptions const& options) {
   auto compiled = Routing::RouteMap::PosixRegex::compile(options.regex);
   if (!compiled) {
      std::cerr << "qorbgp-comm match: " << compiled.error << '\n';
      return 2;
   }
   Routing::RouteMap::PosixRegex const* regex = compiled.regex.get();
   return forEachPath(options.files, "match", [&](mrt::Path const& path, PathLists const& lists) {
      bool const matched = (lists.standard && lists.standard->matchCommunitiesRegex(regex)) ||
                           (lists.large && lists.large->matchCommunitiesRegex(regex)) ||
                           (lists.extended && lists.extended->matchCommunitiesRegex(regex));
      if (matched) {
         if (options.json) {
            std::cout << pathJson(path, lists, false).dump() << '\n';
         } else {
            printPath(path, lists, false);
         }
      }
      return true;
   });
}

} // namespace QorBgpTools
