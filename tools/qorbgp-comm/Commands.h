// The subcommands of qorbgp-comm. Each returns the process exit status:
// 0 success, 1 a problem with the data (e.g. an unreadable file), 2 bad usage;
// match as grep does: 0 something matched, 1 nothing did, 2 a problem.
#pragma once

#include "PathFilter.h"

#include "QorBgpCommunity/platform/Types.h"

#include <string>
#include <vector>

namespace QorBgpTools {

struct StatsOptions {
   std::vector<std::string> files;
   bool json = false;
   unsigned top = 10;
   unsigned threads = 0; // reading threads; 0: one per file, up to the machine's cores
   // Only decompress each file to its end, decoding no record: the floor
   // that reading can get to, for bench/compare-bgpdump.sh. Not documented.
   bool decompressOnly = false;
};
int runStats(StatsOptions const& options);

struct ShowOptions {
   std::vector<std::string> files; // read one after the other
   PathFilterOptions filter;
   bool asdot = false;
   bool json = false;
   std::size_t limit = 0; // 0: every path
};
int runShow(ShowOptions const& options);

struct MatchOptions {
   // REGEX then FILEs; only FILEs when a set condition is given.
   std::vector<std::string> arguments;
   // Set matchers in the library's policy text per list kind (empty: no
   // condition on that kind); local-as in them stands for `localAs`.
   struct {
      std::string standard, large, extended, ipv6;
   } sets;
   U32 localAs = 0;
   PathFilterOptions filter;
   // Which lists the expression is tried on: "standard", "large",
   // "extended", "ipv6"; empty: all four.
   std::vector<std::string> kinds;
   bool json = false;
};
int runMatch(MatchOptions const& options);

struct ApplyOptions {
   std::string policy; // the policy file
   std::vector<std::string> files;
   std::string write; // the edited dump; empty: none written
   U32 localAs = 0;   // local-as in the policy
   bool json = false;
};
int runApply(ApplyOptions const& options);

struct RtcOptions {
   std::string memberships; // a file of "<peer> <membership>" lines
   std::vector<std::string> files;
   bool json = false;
};
int runRtc(RtcOptions const& options);

struct DecodeOptions {
   std::string hex;
   bool json = false;
   bool asdot = false;
};
int runDecode(DecodeOptions const& options);

struct EncodeOptions {
   std::string kind; // standard, large, extended, ipv6
   std::string text;
};
int runEncode(EncodeOptions const& options);

struct SynthOptions {
   std::string file;
   unsigned long paths = 1000000;
   unsigned lists = 5000;
   unsigned peers = 16;
   unsigned seed = 1;
   // VPN routes with route targets after the RIB, and route-target
   // memberships from every peer when not 0 (BGP4MP updates).
   unsigned long vpnPaths = 0;
};
int runSynth(SynthOptions const& options);

} // namespace QorBgpTools
