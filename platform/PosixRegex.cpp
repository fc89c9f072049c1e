#include "QorBgpCommunity/platform/PosixRegex.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

namespace Routing::RouteMap {

namespace {

// Texts up to this size (with their NUL) are copied to the stack for regexec;
// longer ones to the heap.
constexpr std::size_t inlineTextCapacity = 256;

std::string compileError(std::string_view pattern, std::string_view reason) {
   std::string error = "bad regular expression '";
   error.append(pattern).append("': ").append(reason);
   return error;
}

// The index of the ']' closing the bracket expression opened at `open`
// ("[]...]" and "[^]...]" hold a literal ']' first), or the last index of an
// unclosed one.
std::size_t bracketEnd(std::string_view pattern, std::size_t open) {
   std::size_t first = open + 1;
   first += first < pattern.size() && pattern[first] == '^';
   first += first < pattern.size() && pattern[first] == ']';
   return std::min(pattern.find(']', first), pattern.size() - 1);
}

// Calls `visit(i, inBracket)` for each character of `pattern` that is not
// escaped (`inBracket`: inside a bracket expression, its brackets aside), and
// `escaped(i)` for each backslash outside brackets and the character it
// escapes (at i + 1); in a bracket expression a backslash is ordinary.
template <class Visit, class Escaped>
void scanOutsideBrackets(std::string_view pattern, Visit visit, Escaped escaped) {
   for (std::size_t i = 0; i < pattern.size(); ++i) {
      if (pattern[i] == '\\' && i + 1 < pattern.size()) {
         escaped(i);
         ++i;
      } else if (pattern[i] == '[') {
         visit(i, false);
         for (std::size_t const end = bracketEnd(pattern, i); i < end;) {
            visit(++i, true);
         }
      } else {
         visit(i, false);
      }
   }
}

// What the C library's automaton for a pattern may hold, as estimated by
// automatonSize: far beyond any route-map pattern, far below what takes
// noticeable memory or time to build and match. Anchors weigh more: copies
// of them make building the automaton take time quadratic in their number.
constexpr std::size_t maxAutomatonElements = 16384;
constexpr std::size_t maxAutomatonAnchors = 512;

struct AutomatonSize {
   std::size_t elements = 0;
   std::size_t anchors = 0; // of the elements, "^" and "$"

   bool tooLarge() const {
      return elements > maxAutomatonElements || anchors > maxAutomatonAnchors;
   }
   AutomatonSize& operator+=(AutomatonSize const& other) {
      elements = std::min(elements + other.elements, maxAutomatonElements + 1);
      anchors = std::min(anchors + other.anchors, maxAutomatonAnchors + 1);
      return *this;
   }
   AutomatonSize times(std::size_t copies) const {
      return {std::min(elements * copies, maxAutomatonElements + 1),
              std::min(anchors * copies, maxAutomatonAnchors + 1)};
   }
};

// An estimate of the automaton the C library builds: each atom counts one, a
// group what it holds, and a repetition the copies the library makes of what
// it repeats ("+" two, "{m,n}" the larger bound, "*" and "?" one). A
// repetition of a repetition ("a+?", "a**": undefined in POSIX) and one of
// a group holding an anchor ("(^| )+", "_{2}") count as too large: the C
// library takes time exponential in the anchors before them to build those.
AutomatonSize automatonSize(std::string_view pattern) {
   constexpr AutomatonSize tooLarge{maxAutomatonElements + 1, 0};
   std::vector<AutomatonSize> open(1); // of each open group, outermost first
   AutomatonSize last;                 // of the atom a repetition would repeat
   bool repeated = false;              // the last element was a repetition
   for (std::size_t i = 0; i < pattern.size(); ++i) {
      char const c = pattern[i];
      bool const repetition = c == '*' || c == '?' || c == '+' || c == '{';
      if (repetition && (repeated || last.anchors > 0)) {
         return tooLarge;
      }
      repeated = repetition;
      AutomatonSize atom{1, c == '^' || c == '$' ? 1u : 0u};
      std::size_t copies = 1;
      if (c == '\\') {
         ++i;
      } else if (c == '[') {
         i = bracketEnd(pattern, i);
      } else if (c == '(') {
         open.emplace_back();
         last = {};
         continue;
      } else if (c == ')' && open.size() > 1) {
         atom = open.back();
         open.pop_back();
      } else if (c == '|') {
         last = {};
         continue;
      } else if (c == '*' || c == '?') {
         continue;
      } else if (c == '+') {
         copies = 2;
      } else if (c == '{') {
         std::size_t const close = pattern.find('}', i);
         std::string_view const bounds =
            pattern.substr(i + 1, close == std::string_view::npos ? 0 : close - i - 1);
         std::size_t most = 0;
         for (char d : bounds) {
            most = d >= '0' && d <= '9' ? std::min(most * 10 + static_cast<std::size_t>(d - '0'),
                                                   maxAutomatonElements + 1)
                                        : std::max<std::size_t>(most, 1);
         }
         copies = std::max<std::size_t>(most + (bounds.ends_with(',') ? 1 : 0), 1);
         i = close == std::string_view::npos ? pattern.size() : close;
      }
      if (copies > 1) {
         open.back() += last.times(copies - 1);
         last = last.times(copies);
         continue;
      }
      open.back() += atom;
      last = atom;
   }
   AutomatonSize total;
   for (AutomatonSize const& group : open) {
      total += group;
   }
   return total;
}

bool hasBackReference(std::string_view pattern) {
   bool found = false;
   scanOutsideBrackets(
      pattern, [](std::size_t, bool) {},
      [&](std::size_t i) { found = found || (pattern[i + 1] >= '1' && pattern[i + 1] <= '9'); });
   return found;
}

} // namespace

PosixRegex::PosixRegex(std::string_view pattern) : PosixRegex(pattern, nullptr) {}

PosixRegex::PosixRegex(std::string_view pattern, std::string* error) : pattern_(pattern) {
   std::string reason;
   if (pattern_.find('\0') != std::string::npos) {
      reason = "pattern holds a NUL byte";
   } else if (hasBackReference(pattern_)) {
      reason = "back-references are not accepted";
   } else if (automatonSize(pattern_).tooLarge()) {
      reason = "too complex: a repetition of a repetition or of an anchor (^, $, _), or "
               "repetitions that expand to more than 16384 elements or 512 anchors";
   } else if (int const code = regcomp(&regex_, pattern_.c_str(), REG_EXTENDED | REG_NOSUB)) {
      std::size_t const size = regerror(code, &regex_, nullptr, 0);
      reason.resize(size);
      regerror(code, &regex_, reason.data(), size);
      reason.resize(size == 0 ? 0 : size - 1); // without the C library's NUL
   } else {
      compiled_ = true;
      return;
   }
   std::string message = compileError(pattern, reason);
   if (!error) {
      throw Kiv::RangeError(message);
   }
   *error = std::move(message);
}

PosixRegex::~PosixRegex() {
   if (compiled_) {
      regfree(&regex_);
   }
}

PosixRegex::Compiled PosixRegex::compile(std::string_view pattern) {
   std::string error;
   Ptr regex = new PosixRegex(pattern, &error);
   if (!error.empty()) {
      return {nullptr, std::move(error)};
   }
   regex->hasNotificationActiveIs(true);
   return {std::move(regex), {}};
}

std::string PosixRegex::withDelimiters(std::string_view pattern) {
   std::string out;
   scanOutsideBrackets(
      pattern,
      [&](std::size_t i, bool inBracket) {
         if (pattern[i] == '_' && !inBracket) {
            out += "(^|$| )";
         } else {
            out.push_back(pattern[i]);
         }
      },
      [&](std::size_t i) { out.append(pattern.substr(i, 2)); });
   return out;
}

int PosixRegex::execute(char const* text) const noexcept {
   return regexec(&regex_, text, 0, nullptr, 0);
}

int PosixRegex::execute(std::string_view text) const {
   char inlineText[inlineTextCapacity];
   std::unique_ptr<char[]> heapText;
   char* copy = inlineText;
   if (text.size() >= inlineTextCapacity) {
      heapText = std::make_unique_for_overwrite<char[]>(text.size() + 1);
      copy = heapText.get();
   }
   if (!text.empty()) {
      std::memcpy(copy, text.data(), text.size());
   }
   copy[text.size()] = '\0';
   return execute(static_cast<char const*>(copy));
}

} // namespace Routing::RouteMap
