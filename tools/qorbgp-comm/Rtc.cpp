// rtc: route-target constraint over MRT dumps. Which of the dumps' paths each
// peer would receive, given the route-target memberships of a file and those
// the dumps carry themselves (AFI 1, SAFI 132).
#include "Commands.h"
#include "CommunityText.h"
#include "PathLists.h"
#include "Progress.h"
#include "ReadProblems.h"

#include "QorBgpCommunity/QorBgp/RouteTargetMembershipIndex.h"
#include "QorBgpCommunity/platform/Errors.h"

#include <absl/container/flat_hash_map.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <iomanip>
#include <iostream>
#include <map>

namespace QorBgpTools {

using namespace Routing::Bgp;

namespace {

constexpr int usageErrorStatus = 2;

// Peers by name, numbered for the index in the order they were met.
struct PeerNames {
   std::vector<std::string> names;
   std::map<std::string, RouteTargetMembershipIndex::Peer> keys;
   RouteTargetMembershipIndex::Peer key(std::string const& name) {
      auto [it, fresh] = keys.try_emplace(name, names.size());
      if (fresh) {
         names.push_back(name);
      }
      return it->second;
   }
};

// "<peer> <membership>" lines of `file` into `index`; '#' starts a comment
// line. False, with the reason on standard error, when one does not read.
bool readMemberships(std::string const& file, RouteTargetMembershipIndex& index, PeerNames& peers) {
   std::ifstream in(file);
   if (!in) {
      std::cerr << "qorbgp-comm rtc: cannot read the memberships \"" << file << "\"\n";
      return false;
   }
   std::string line;
   for (int number = 1; std::getline(in, line); ++number) {
      std::size_t const start = line.find_first_not_of(" \t\r");
      if (start == std::string::npos || line[start] == '#') {
         continue;
      }
      std::size_t const space = line.find_first_of(" \t", start);
      std::size_t const rest = line.find_first_not_of(" \t", space);
      std::size_t const end = line.find_last_not_of(" \t\r") + 1;
      try {
         if (rest == std::string::npos) {
            throw Kiv::RangeError("expected '<peer> <membership>'");
         }
         auto const membership =
            RouteTargetMembership::fromStrep(std::string_view(line).substr(rest, end - rest));
         index.membershipIs(peers.key(line.substr(start, space - start)), membership);
      } catch (Kiv::RangeError const& e) {
         std::cerr << "qorbgp-comm rtc: " << file << ":" << number << ": " << e.what() << '\n';
         return false;
      }
   }
   return true;
}

// One distinct route-target list of the dumps, held so that it stays live.
struct Received {
   ExtCommList::PtrConst list;
   U64 paths = 0;
};

} // namespace

int runRtc(RtcOptions const& options) {
   auto tables = communityTablesFactory();
   auto index = routeTargetMembershipIndexFactory(tables->extCommListDedupTable());
   PeerNames peers;
   if (!readMemberships(options.memberships, *index, peers)) {
      return usageErrorStatus;
   }
   // Every path's route-target list, counted; memberships from the dumps.
   absl::flat_hash_map<ExtCommClassificationList const*, Received> received;
   U64 paths = 0, withRouteTargets = 0, membershipRoutes = 0;
   bool whole = true;
   for (std::string const& file : options.files) {
      std::string error;
      auto reader = mrt::MrtReader::open(file, &error);
      if (!reader) {
         std::cerr << "qorbgp-comm rtc: " << error << '\n';
         whole = false;
         continue;
      }
      Progress progress(file, reader->fileSize());
      PathListsDecoder decoder(*tables);
      mrt::Path path;
      while (reader->next(path)) {
         if (((paths + membershipRoutes) & 0xffff) == 0) {
            progress.update(reader->bytesConsumed(), paths + membershipRoutes);
         }
         if (path.route.structured.starts_with("rtc:")) {
            auto const nlri = parseHex(std::string_view(path.route.structured).substr(4));
            auto const decoded = decodeRouteTargetMemberships(nlri ? *nlri : std::vector<U8>());
            for (auto const& m : decoded.memberships) {
               index->membershipIs(peers.key(path.peerText()), m);
            }
            if (!decoded.ok()) {
               std::cerr << "qorbgp-comm rtc: " << file << ": from " << path.peerText() << ": "
                         << decoded.reason << '\n';
               whole = false;
            }
            ++membershipRoutes;
            continue;
         }
         ++paths;
         ExtCommList::PtrConst const& list = decoder.lists(path).extended;
         ExtCommClassificationList const* targets =
            list ? list->classificationList(extCommClassificationRouteTarget).get() : nullptr;
         if (targets) {
            Received& r = received[targets];
            r.list = r.list ? r.list : list;
            ++r.paths;
            ++withRouteTargets;
         }
      }
      whole = reportReadProblems("rtc", file, reader->report()) && whole;
   }

   // Each distinct list asked about once.
   std::vector<U64> peerPaths(peers.names.size()), peerLists(peers.names.size());
   for (auto const& entry : received) {
      Received const& r = entry.second;
      if (auto const wanting = index->peersWanting(*r.list)) {
         for (auto const peer : *wanting) {
            peerPaths[peer] += r.paths;
            ++peerLists[peer];
         }
      }
   }
   if (options.json) {
      nlohmann::ordered_json out;
      out["paths"] = paths;
      out["pathsWithRouteTargets"] = withRouteTargets;
      out["routeTargetLists"] = received.size();
      out["membershipRoutes"] = membershipRoutes;
      out["peers"] = nlohmann::json::array();
      for (std::size_t p = 0; p < peers.names.size(); ++p) {
         out["peers"].push_back({{"peer", peers.names[p]},
                                 {"memberships", index->memberships(p).size()},
                                 {"paths", peerPaths[p]},
                                 {"lists", peerLists[p]}});
      }
      std::cout << jsonText(out, 2) << '\n';
   } else {
      std::cout << withRouteTargets << " of " << paths << " paths carry route targets, in "
                << received.size() << " distinct route-target lists; " << membershipRoutes
                << " membership routes read\n";
      std::cout << std::left << std::setw(24) << "peer" << std::right << std::setw(12)
                << "memberships" << std::setw(12) << "paths" << std::setw(12) << "lists" << '\n';
      for (std::size_t p = 0; p < peers.names.size(); ++p) {
         std::cout << std::left << std::setw(24) << peers.names[p] << std::right << std::setw(12)
                   << index->memberships(p).size() << std::setw(12) << peerPaths[p] << std::setw(12)
                   << peerLists[p] << '\n';
      }
   }
   return whole ? 0 : 1;
}

} // namespace QorBgpTools
