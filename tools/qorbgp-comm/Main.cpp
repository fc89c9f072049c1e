// qorbgp-comm: the community library at work on BGP data — statistics, show,
// route-map matching, community policy and route-target constraint over MRT
// dumps, one attribute between wire hex and text, and a synthetic RIB dump to
// try it all with no outside data.
#include "Commands.h"

#include "QorBgpCommunity/QorBgpVersion.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>

namespace {

// The exit status of a command-line mistake (unknown subcommand or option,
// missing or invalid argument), as for most Unix tools.
constexpr int usageErrorStatus = 2;

// The options that choose the paths show and match look at.
void addFilterOptions(CLI::App* command, QorBgpTools::PathFilterOptions& filter) {
   command->add_option("--prefix", filter.prefix,
                       "Only paths of this prefix, e.g. 192.0.2.0/24 or 2001:db8::/32");
   command->add_flag("--more-specific", filter.moreSpecific,
                     "With --prefix: also the prefixes inside it");
   command->add_flag("--less-specific", filter.lessSpecific,
                     "With --prefix: also the prefixes that cover it");
   command->add_option("--peer", filter.peer, "Only paths from this peer address");
   command->add_option("--peer-as", filter.peerAs, "Only paths from this peer AS");
   command->add_option("--origin-as", filter.originAs,
                       "Only paths originated by this AS (the last of the AS path)");
   command->add_option("--since", filter.since,
                       "Only paths from this time on: Unix seconds, or UTC as 2019-01-01 or "
                       "2019-01-01T00:05:00Z");
   command->add_option("--until", filter.until, "Only paths up to this time (included)");
}

} // namespace

int main(int argc, char** argv) {
   using namespace QorBgpTools;
   CLI::App app{"qorbgp-comm: BGP communities in MRT dumps, through the QorBgpCommunity library"};
   app.require_subcommand(1);
   app.set_version_flag("--version", "qorbgp-comm " QORBGP_VERSION_STRING);

   StatsOptions stats;
   auto* statsCommand = app.add_subcommand(
      "stats", "Read MRT files and report paths, attributes, distinct values and lists, sharing, "
               "memory, the top communities and malformed attributes");
   statsCommand
      ->add_option("FILE", stats.files,
                   "MRT files (plain, gzip, bzip2, xz or zstd; - for standard input)")
      ->required();
   statsCommand->add_flag("--json", stats.json, "Machine-readable output");
   statsCommand->add_option("--top", stats.top, "How many top communities to list")
      ->capture_default_str()
      ->check(CLI::Range(0u, 1000000u));
   statsCommand
      ->add_option("--threads", stats.threads,
                   "Files read at once, each on its own thread, into shared tables (default: one "
                   "per file, up to the number of cores)")
      ->check(CLI::Range(1u, 256u));
   statsCommand->add_flag("--decompress-only", stats.decompressOnly)->group("");

   ShowOptions show;
   auto* showCommand =
      app.add_subcommand("show", "Print each path's community lists in their show text");
   showCommand
      ->add_option("FILE", show.files, "MRT files, read one after the other (- for standard input)")
      ->required();
   addFilterOptions(showCommand, show.filter);
   showCommand->add_flag("--asdot", show.asdot, "AS numbers of 65536 and above in asdot form");
   showCommand->add_flag("--json", show.json, "One JSON object per path, one per line");
   showCommand->add_option("--limit", show.limit, "Stop after this many paths (0: all)")
      ->check(CLI::NonNegativeNumber);

   MatchOptions match;
   auto* matchCommand = app.add_subcommand(
      "match", "Print the paths whose community lists match a route-map regular expression "
               "(POSIX extended syntax); exit status 0 when a path matched, 1 when none did");
   matchCommand
      ->add_option("[REGEX] FILE", match.arguments,
                   "Route-map regular expression (_ matches the start, the end or a space, "
                   "e.g. _3356:666_; left out when --standard or --large is given), then MRT "
                   "files, read one after the other (- for standard input)")
      ->required();
   matchCommand->add_option(
      "--standard", match.sets.standard,
      "Also require the standard list to satisfy this set matcher, e.g. "
      "'any peer-as:* *:666' or 'not exact no-export' (see the README for the syntax); "
      "peer-as is each path's peer AS");
   matchCommand->add_option("--large", match.sets.large,
                            "The same for the large list, e.g. 'all local-as:*:0-999'");
   matchCommand->add_option(
      "--extended", match.sets.extended,
      "The same for the extended list, e.g. 'any rt 65000:100-199 soo 192.0.2.1:*' or "
      "'not any ovs invalid'");
   matchCommand->add_option("--ipv6", match.sets.ipv6,
                            "The same for the IPv6-address-specific list, e.g. "
                            "'any 0:2 2001:db8::/32:*'");
   matchCommand->add_option(
      "--local-as", match.localAs,
      "Our AS number, for local-as in --standard, --large, --extended and --ipv6 (default 0)");
   matchCommand->add_flag("--json", match.json, "One JSON object per matching path");
   matchCommand
      ->add_option("--kind", match.kinds,
                   "Only these lists (repeatable, or comma-separated): standard, large, "
                   "extended, ipv6; default all")
      ->allow_extra_args(false) // one value per --kind: the REGEX may follow it
      ->delimiter(',')
      ->check(CLI::IsMember({"standard", "large", "extended", "ipv6"}));
   addFilterOptions(matchCommand, match.filter);

   ApplyOptions apply;
   auto* applyCommand = app.add_subcommand(
      "apply", "Run a community policy (rules of match conditions and edits, see the README) "
               "over MRT files: paths matched and changed per rule, distinct lists before and "
               "after, and with --write the edited dump");
   applyCommand->add_option("POLICY", apply.policy, "The policy file")->required();
   applyCommand
      ->add_option("FILE", apply.files,
                   "MRT files, read one after the other (- for standard input)")
      ->required();
   applyCommand->add_option(
      "--write", apply.write,
      "Write the records of every FILE, edited, into this MRT file (.gz, .bz2, .xz or .zst to "
      "compress)");
   applyCommand->add_option("--local-as", apply.localAs,
                            "Our AS number, for local-as in the policy (default 0)");
   applyCommand->add_flag("--json", apply.json, "Machine-readable report");

   RtcOptions rtc;
   auto* rtcCommand = app.add_subcommand(
      "rtc", "Route-target constraint: per peer, the paths and distinct route-target lists of "
             "the MRT files it would receive, given its memberships");
   rtcCommand
      ->add_option("MEMBERSHIPS", rtc.memberships,
                   "A file of memberships, one per line: '<peer> <origin AS> <route-target "
                   "prefix>' (e.g. 'pe1 65000 65000:100/64') or '<peer> default'; memberships "
                   "the files carry (AFI 1, SAFI 132) are added, their peer named by address")
      ->required();
   rtcCommand
      ->add_option("FILE", rtc.files, "MRT files, read one after the other (- for standard input)")
      ->required();
   rtcCommand->add_flag("--json", rtc.json, "Machine-readable report");

   DecodeOptions decode;
   auto* decodeCommand = app.add_subcommand(
      "decode", "Decode one community attribute (flags, type, length, value) from hex");
   decodeCommand->add_option("HEX", decode.hex, "e.g. c00808fde80064ffffff01")->required();
   decodeCommand->add_flag("--json", decode.json, "Machine-readable output");
   decodeCommand->add_flag("--asdot", decode.asdot, "AS numbers in asdot form");

   EncodeOptions encode;
   auto* encodeCommand =
      app.add_subcommand("encode", "Encode communities given as text into their attribute, in hex");
   encodeCommand
      ->add_option("TEXT", encode.text,
                   "Any text decode and show print, e.g. standard: \"65000:100 no-export\"; "
                   "large: \"65000:1:2\"; extended: \"Route-Target-AS:65000:100 "
                   "Color:CO(00):100\" (or RT:65000:100 SoO:192.0.2.1:5 "
                   "0x030b000000000064); ipv6: \"0002-IP6:2001:db8::1:100\"")
      ->required();
   encodeCommand->add_option("--kind", encode.kind, "standard, large, extended or ipv6")
      ->default_str("standard")
      ->check(CLI::IsMember({"standard", "large", "extended", "ipv6"}));

   SynthOptions synth;
   auto* synthCommand = app.add_subcommand(
      "synth", "Write a synthetic MRT RIB dump: many paths sharing a few thousand distinct "
               "standard, large and extended community lists");
   synthCommand->add_option("FILE", synth.file, "Output file (.gz, .bz2, .xz or .zst to compress)")
      ->required();
   // The limits keep every prefix in IPv4 unicast space and every peer index
   // in its 16 bits; negative numbers fall outside them too.
   synthCommand->add_option("--paths", synth.paths, "Number of paths")
      ->capture_default_str()
      ->check(CLI::Range(1ul, 50000000ul));
   synthCommand->add_option("--lists", synth.lists, "Distinct community lists per kind")
      ->capture_default_str()
      ->check(CLI::Range(1u, 1000000u));
   synthCommand->add_option("--peers", synth.peers, "Number of peers")
      ->capture_default_str()
      ->check(CLI::Range(1u, 65535u));
   synthCommand->add_option("--seed", synth.seed, "Random seed")->capture_default_str();
   synthCommand
      ->add_option("--vpn", synth.vpnPaths,
                   "Also this many VPN routes with route targets, and route-target memberships "
                   "from every peer (BGP4MP updates after the RIB), to try rtc")
      ->check(CLI::Range(0ul, 65536ul));

   // CLI11 would only say that a subcommand is required.
   if (argc > 1 && argv[1][0] != '-' &&
       app.get_subcommands([&](CLI::App* s) { return s->get_name() == argv[1]; }).empty()) {
      std::fprintf(stderr,
                   "qorbgp-comm: unknown subcommand '%s'\nRun with --help for more "
                   "information.\n",
                   argv[1]);
      return usageErrorStatus;
   }
   try {
      app.parse(argc, argv);
   } catch (CLI::ParseError const& e) {
      // Prints the help, the version or the mistake; --help and --version
      // end successfully, every mistake with the usage status.
      return app.exit(e) == 0 ? 0 : usageErrorStatus;
   }

   // Bad input never throws; what might (running out of memory, a library
   // error on a caller mistake the checks above missed) ends with a message
   // and status 1, never with an abort.
   try {
      if (*statsCommand) {
         return runStats(stats);
      }
      if (*showCommand) {
         return runShow(show);
      }
      if (*matchCommand) {
         return runMatch(match);
      }
      if (*applyCommand) {
         return runApply(apply);
      }
      if (*rtcCommand) {
         return runRtc(rtc);
      }
      if (*decodeCommand) {
         return runDecode(decode);
      }
      if (*encodeCommand) {
         encode.kind = encode.kind.empty() ? "standard" : encode.kind;
         return runEncode(encode);
      }
      return runSynth(synth);
   } catch (std::exception const& e) {
      std::fprintf(stderr, "qorbgp-comm: %s\n", e.what());
      return 1;
   }
}
