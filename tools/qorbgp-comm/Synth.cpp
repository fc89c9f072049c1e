// synth: a synthetic TABLE_DUMP_V2 RIB dump with the sharing of a real table:
// many paths, a few thousand distinct community lists reused with a skew
// (a few lists on most paths, a long tail), standard, large and extended
// communities all present.
#include "Commands.h"
#include "Progress.h"

#include "tools/mrt/MrtWriter.h"

#include "QorBgpCommunity/QorBgp/RouteTargetMembership.h"

#include <cmath>
#include <iostream>
#include <random>

namespace QorBgpTools {

namespace {

using mrt::Attribute;

constexpr U8 transitiveFlags = 0x40;
constexpr U8 optionalTransitiveFlags = 0xC0;

void putU32(std::vector<U8>& out, U32 v) {
   for (int shift = 24; shift >= 0; shift -= 8) {
      out.push_back(static_cast<U8>(v >> shift));
   }
}

// Community list pools: each entry is the value bytes of one attribute.
struct Pools {
   std::vector<std::vector<U8>> standard, large, extended;
};

Pools makePools(unsigned lists, std::mt19937& random) {
   Pools pools;
   std::uniform_int_distribution<U32> size(1, 12);
   U32 const wellKnown[] = {0xFFFFFF01, 0xFFFFFF02, 0xFFFF0000, 0xFFFF029A /* 65535:666 */};
   for (unsigned i = 0; i < lists; ++i) {
      std::vector<U8> value;
      for (U32 n = size(random); n > 0; --n) {
         U32 community = (random() % 50 == 0) ? wellKnown[random() % 4]
                                              : ((64496 + random() % 64) << 16) | (random() % 2000);
         putU32(value, community);
      }
      pools.standard.push_back(std::move(value));
   }
   for (unsigned i = 0; i < std::max(1u, lists / 5); ++i) {
      std::vector<U8> value;
      for (U32 n = 1 + random() % 4; n > 0; --n) {
         putU32(value, (random() % 3 == 0) ? 4200000000u + random() % 100 : 64496 + random() % 32);
         putU32(value, random() % 10);
         putU32(value, random() % 1000);
      }
      pools.large.push_back(std::move(value));
   }
   for (unsigned i = 0; i < std::max(1u, lists / 2); ++i) {
      std::vector<U8> value;
      for (U32 n = 1 + random() % 5; n > 0; --n) {
         U64 word;
         switch (random() % 6) {
         case 0:
            word = 0x0003000000000000ull | U64{64496 + random() % 16} << 32 | random() % 50;
            break;
         case 1:
            word = 0x030b000000000000ull | random() % 200;
            break;
         case 2:
            word = 0x4004000000000000ull | U64{64496 + random() % 16} << 32 | 0x4e9502f9;
            break;
         case 3:
            word = 0x4300000000000000ull | random() % 3;
            break;
         default:
            word = 0x0002000000000000ull | U64{64496 + random() % 16} << 32 | random() % 500;
         }
         putU32(value, static_cast<U32>(word >> 32));
         putU32(value, static_cast<U32>(word));
      }
      pools.extended.push_back(std::move(value));
   }
   return pools;
}

// A skewed pick: index 0 most often, the tail rarely.
std::size_t skewed(std::size_t poolSize, std::mt19937& random) {
   double u = std::uniform_real_distribution<double>(0.0, 1.0)(random);
   return std::min(poolSize - 1, static_cast<std::size_t>(poolSize * std::pow(u, 3.0)));
}

// An MP_REACH_NLRI attribute of AFI 1 and `safi`, next hop `nextHop`.
Attribute mpReach(U8 safi, std::vector<U8> const& nextHop, std::vector<U8> const& nlri) {
   std::vector<U8> value{0, 1, safi, static_cast<U8>(nextHop.size())};
   value.insert(value.end(), nextHop.begin(), nextHop.end());
   value.push_back(0); // reserved
   value.insert(value.end(), nlri.begin(), nlri.end());
   return {0x80, 14, value};
}

// The route target 65000:`local` in wire order.
std::vector<U8> routeTarget(U32 local) {
   std::vector<U8> value{0x00, 0x02, 0xfd, 0xe8};
   putU32(value, local);
   return value;
}

// VPN routes and route-target memberships, as BGP4MP updates from the dump's
// peers: each peer asks for five route targets of its own, peer 0 for every
// route target (the default membership) and peer 1 for every one of AS 65000
// (a /48 prefix); `count` VPN routes carry one to three of 200 route targets.
void writeVpn(mrt::MrtWriter& writer, std::vector<mrt::Peer> const& peers, unsigned long count,
              U32 timestamp, std::mt19937& random) {
   using Routing::Bgp::RouteTarget;
   using Routing::Bgp::RouteTargetMembership;
   using Routing::Bgp::RouteTargetPrefix;
   auto update = [&](mrt::Peer const& peer, std::vector<Attribute> attributes) {
      mrt::Bgp4mpUpdate u;
      u.timestamp = timestamp;
      u.peerAs = peer.as;
      u.localAs = 65000;
      u.peerAddress = peer.address;
      u.localAddress = "10.0.255.254";
      std::vector<U8> asPath{2, 1};
      putU32(asPath, peer.as);
      u.attributes = {{transitiveFlags, 1, {0}}, {transitiveFlags, 2, asPath}};
      u.attributes.insert(u.attributes.end(), attributes.begin(), attributes.end());
      writer.bgp4mpUpdate(u);
   };
   for (std::size_t p = 0; p < peers.size(); ++p) {
      std::vector<RouteTargetMembership> memberships;
      if (p == 0) {
         memberships.emplace_back();
      } else if (p == 1) {
         memberships.emplace_back(65000, RouteTargetPrefix(RouteTarget::twoOctetAs(65000, 0), 48));
      }
      for (U32 j = 0; j < 5; ++j) {
         memberships.emplace_back(
            65000, RouteTargetPrefix(RouteTarget::twoOctetAs(65000, U32(p * 5 + j) % 200), 64));
      }
      std::string const nlri = Routing::Bgp::encodeRouteTargetMemberships(memberships);
      std::vector<U8> nextHop;
      putU32(nextHop, peers[p].bgpId);
      update(peers[p], {mpReach(132, nextHop, {nlri.begin(), nlri.end()})});
   }
   for (unsigned long i = 0; i < count; ++i) {
      std::size_t const p = i % peers.size();
      // Label 16 (bottom of stack), route distinguisher 65000:<peer>, 10.x.y.0/24.
      std::vector<U8> nlri{24 + 64 + 24, 0x00, 0x01, 0x01, 0, 0, 0xfd, 0xe8};
      putU32(nlri, static_cast<U32>(p));
      nlri.insert(nlri.end(), {10, static_cast<U8>(i >> 8), static_cast<U8>(i)});
      std::vector<U8> nextHop(8, 0); // route distinguisher 0, then the address
      putU32(nextHop, peers[p].bgpId);
      std::vector<U8> targets;
      for (U32 n = 1 + random() % 3; n > 0; --n) {
         auto const rt = routeTarget(random() % 200);
         targets.insert(targets.end(), rt.begin(), rt.end());
      }
      update(peers[p], {mpReach(128, nextHop, nlri), {optionalTransitiveFlags, 16, targets}});
   }
}

} // namespace

int runSynth(SynthOptions const& options) {
   std::mt19937 random(options.seed);
   Pools const pools = makePools(std::max(1u, options.lists), random);
   std::string error;
   auto writer =
      mrt::MrtWriter::create(options.file, mrt::compressionForName(options.file), &error);
   if (!writer) {
      std::cerr << "qorbgp-comm synth: " << error << '\n';
      return 1;
   }
   U32 const timestamp = 1700000000;
   unsigned const peerCount = std::max(1u, options.peers);
   std::vector<mrt::Peer> peers;
   for (unsigned i = 0; i < peerCount; ++i) {
      peers.push_back({0x0a000001 + i,
                       "10.0." + std::to_string(i / 250) + "." + std::to_string(i % 250 + 1),
                       64496 + i});
   }
   writer->peerIndexTable(timestamp, 0x0a0000fe, "synth", peers);

   unsigned const entriesPerPrefix = std::min(peerCount, 4u);
   unsigned long written = 0;
   Progress progress(options.file, options.paths);
   for (U32 sequence = 0; written < options.paths; ++sequence) {
      if ((sequence & 0x3fff) == 0) {
         progress.update(written, written);
      }
      U32 const net = 0x01000000 + (sequence << 8); // 1.0.0.0/24, 1.0.1.0/24, ...
      std::string const prefix = std::to_string(net >> 24) + "." +
                                 std::to_string((net >> 16) & 255) + "." +
                                 std::to_string((net >> 8) & 255) + ".0/24";
      std::vector<mrt::RibEntry> entries;
      for (unsigned e = 0; e < entriesPerPrefix && written < options.paths; ++e, ++written) {
         U16 const peerIndex = static_cast<U16>((sequence + e) % peerCount);
         mrt::RibEntry entry{peerIndex, timestamp, std::nullopt, {}};
         entry.attributes.push_back({transitiveFlags, 1, {0}}); // ORIGIN IGP
         std::vector<U8> asPath{2, 2};                          // AS_SEQUENCE of two
         putU32(asPath, peers[peerIndex].as);
         putU32(asPath, 65000 + sequence % 1000);
         entry.attributes.push_back({transitiveFlags, 2, asPath});
         std::vector<U8> nextHop;
         putU32(nextHop, peers[peerIndex].bgpId);
         entry.attributes.push_back({transitiveFlags, 3, nextHop});
         entry.attributes.push_back(
            {optionalTransitiveFlags, 8, pools.standard[skewed(pools.standard.size(), random)]});
         if (random() % 10 < 3) {
            entry.attributes.push_back(
               {optionalTransitiveFlags, 32, pools.large[skewed(pools.large.size(), random)]});
         }
         if (random() % 10 < 2) {
            entry.attributes.push_back({optionalTransitiveFlags, 16,
                                        pools.extended[skewed(pools.extended.size(), random)]});
         }
         entries.push_back(std::move(entry));
      }
      writer->ribEntry(timestamp, sequence, prefix, entries);
   }
   if (options.vpnPaths > 0) {
      writeVpn(*writer, peers, options.vpnPaths, timestamp, random);
   }
   if (!writer->close(&error)) {
      std::cerr << "qorbgp-comm synth: " << error << '\n';
      return 1;
   }
   std::cerr << "qorbgp-comm synth: wrote " << written << " paths to " << options.file << '\n';
   return 0;
}

} // namespace QorBgpTools
