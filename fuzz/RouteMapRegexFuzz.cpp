// Route-map patterns as operators write them (with `_` for the delimiter),
// compiled and matched against a community list's text, both from the input.
//
// Input: the pattern, a NUL byte, then the text (the whole input is the
// pattern when it holds no NUL).
//
// Beyond "no crash": a pattern compiles, or its error names it; a compiled
// pattern answers 0 or REG_NOMATCH, the same through both forms of execute.
// Run with a short -timeout: every input must match in well under a second
// (patterns with back-references, whose matching time explodes, are refused).
#include "QorBgpCommunity/platform/PosixRegex.h"
#include "fuzz/FuzzSupport.h"

#include <string>
#include <string_view>

using Routing::RouteMap::PosixRegex;

extern "C" int LLVMFuzzerTestOneInput(U8 const* data, std::size_t size) {
   std::string_view const input(reinterpret_cast<char const*>(data), size);
   std::size_t const nul = input.find('\0');
   std::string_view const pattern = input.substr(0, nul);
   std::string const text(nul == std::string_view::npos ? std::string_view()
                                                        : input.substr(nul + 1));

   PosixRegex::Compiled const compiled = PosixRegex::compile(PosixRegex::withDelimiters(pattern));
   if (!compiled) {
      QORBGP_FUZZ_CHECK(compiled.error.starts_with("bad regular expression '"));
      return 0;
   }
   int const answer = compiled.regex->execute(text.c_str());
   QORBGP_FUZZ_CHECK(answer == 0 || answer == REG_NOMATCH);
   if (text.find('\0') == std::string::npos) {
      QORBGP_FUZZ_CHECK(compiled.regex->execute(std::string_view(text)) == answer);
   }
   return 0;
}
