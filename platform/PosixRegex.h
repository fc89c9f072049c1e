/// @file
/// The route-policy layer's compiled regular expression: an operator's pattern
/// compiled once with the C library's POSIX extended regular expressions, then
/// matched against the text forms of community lists.
#pragma once

#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Ptr.h"

#include <regex.h>

#include <string>
#include <string_view>

namespace Routing::RouteMap {

/// A POSIX extended regular expression (regcomp with REG_EXTENDED | REG_NOSUB),
/// compiled at construction. Matching is a search: the pattern may match
/// anywhere in the text unless anchored with ^ and $. Back-references
/// (`\1` to `\9`, a C library extension to the extended syntax) are refused:
/// the time to match them grows exponentially with the text, so one pattern
/// could stall every route-map evaluation. So are a repetition of a repetition
/// ("a+?", undefined in POSIX), a repetition of what holds an anchor
/// ("(^| )+"; `_` holds two), and patterns whose repetitions would make the C
/// library build an automaton of more than 16384 elements or 512 anchors:
/// the library takes exponential memory or time for them, and no route-map
/// pattern needs them.
///
/// Immutable after construction and safe to match from several threads at
/// once. Not copyable or movable; owned through Ptr like every framework
/// object, or held in place.
///
/// @code{.cpp}
///   auto compiled = PosixRegex::compile("^65535:");
///   if (!compiled) { report(compiled.error); }
///   else if (compiled.regex->execute("65535:65281 1:2") == 0) { ... }   // a match
/// @endcode
class QORBGP_EXPORT PosixRegex : public Kiv::PtrInterface {
 public:
   KIV_POINTER_TYPES(PosixRegex);

   /// A compiled expression, or (regex null) why the pattern did not compile.
   struct Compiled {
      PtrConst regex;
      std::string error; ///< "bad regular expression '<pattern>': <C library's message>"
      explicit operator bool() const noexcept { return regex != nullptr; }
   };

   /// Compiles `pattern`. Kiv::RangeError with the text of Compiled::error when
   /// it does not compile; a pattern with a NUL byte never compiles.
   explicit PosixRegex(std::string_view pattern);
   ~PosixRegex() override;

   /// Compiles `pattern` without raising for a bad one. The result, when there
   /// is one, has notification on.
   [[nodiscard]] static Compiled compile(std::string_view pattern);

   /// `pattern` with the usual delimiter of route-map patterns spelled out:
   /// each `_` outside a bracket expression and not escaped becomes
   /// `(^|$| )`, the start or end of the text or the space between two values
   /// (`_65535:666_` matches `65535:666` but not `65535:6660`).
   [[nodiscard]] static std::string withDelimiters(std::string_view pattern);

   /// 0 when the expression matches somewhere in `text`, else REG_NOMATCH
   /// (non-zero). Text holding a NUL byte is matched only up to it.
   int execute(std::string_view text) const;
   /// The same for a NUL-terminated text, without copying it.
   int execute(char const* text) const noexcept;

   std::string const& pattern() const noexcept { return pattern_; }

 private:
   /// On failure raises Kiv::RangeError when `error` is null, else stores the
   /// message there and leaves an object that must not be matched with.
   PosixRegex(std::string_view pattern, std::string* error);

   std::string const pattern_;
   regex_t regex_;
   bool compiled_ = false; ///< regex_ holds a compiled expression to free
};

} // namespace Routing::RouteMap
