// qorbgp-example: recognises a few extended communities and prints their text
// forms, the diagnostic form and the UI form that show commands use.
//
// Usage: qorbgp-example [HEXWORD...]
//   With no arguments it prints a fixed set of values; otherwise each argument
//   is read as the 64-bit content word of an extended community in hexadecimal
//   (e.g. 0002fde800000064 or 0x0002fde800000064).
#include "QorBgp/Parse/ExtComm.h"

#include <charconv>
#include <cstdio>
#include <iostream>
#include <string_view>
#include <vector>

using namespace Routing::Bgp;

namespace {

bool parseWord(std::string_view text, U64& word) {
   if (text.starts_with("0x") || text.starts_with("0X")) {
      text.remove_prefix(2);
   }
   auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), word, 16);
   return !text.empty() && ec == std::errc() && end == text.data() + text.size();
}

void show(BgpParseExtendedCommunityRule const& parser, U64 word) {
   ExtComm::PtrConst comm = parser.parseExtendedCommunity(ExtCommContent(word));
   std::cout << comm << "\n    ui: " << comm->toStrepForUI(false, false, false) << '\n';
}

} // namespace

int main(int argc, char** argv) {
   std::vector<U64> words;
   if (argc == 1) {
      words = {0x0002fde800000064,  // route target 65000:100
               0x0102c0000201006e,  // route target 192.0.2.1:110
               0x4300000000000002,  // origin validation state: invalid
               0x030b00000000000a,  // colour 10
               0x4004fde84d9502f9,  // link bandwidth 2.5 Gbit/s from AS 65000
               0x8006000000000000,  // flowspec traffic rate 0
               0x4105c00002010001}; // non-transitive IPv4-address, unnamed subtype
   }
   for (int i = 1; i < argc; ++i) {
      U64 word = 0;
      if (!parseWord(argv[i], word)) {
         std::fprintf(stderr, "qorbgp-example: not a 64-bit hexadecimal word: '%s'\n", argv[i]);
         return 2;
      }
      words.push_back(word);
   }
   auto recognition = bgpParseExtCommContainerSmFactory();
   for (U64 word : words) {
      show(*recognition->extCommParser(), word);
   }
   return 0;
}
