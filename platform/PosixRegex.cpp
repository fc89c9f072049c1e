#include "QorBgpCommunity/platform/PosixRegex.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <cstring>
#include <memory>

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

// Calls `visit(i)` for each character of `pattern` outside bracket
// expressions that is not escaped, and `escaped(i)` for each backslash there
// and the character it escapes (at i + 1); a backslash in a bracket
// expression is an ordinary character.
template <class Visit, class Escaped>
void scanOutsideBrackets(std::string_view pattern, Visit visit, Escaped escaped) {
   bool inBracket = false;
   for (std::size_t i = 0; i < pattern.size(); ++i) {
      char const c = pattern[i];
      if (inBracket) {
         // "[]...]" and "[^]...]" hold a literal ']' first.
         bool const first = pattern[i - 1] == '[' || (pattern[i - 1] == '^' && pattern[i - 2] == '[');
         inBracket = c != ']' || first;
         visit(i, true);
      } else if (c == '\\' && i + 1 < pattern.size()) {
         escaped(i);
         ++i;
      } else {
         inBracket = c == '[';
         visit(i, false);
      }
   }
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
