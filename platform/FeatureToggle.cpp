#include "QorBgpCommunity/platform/FeatureToggle.h"

#include <cstdlib>
#include <fstream>
#include <optional>

namespace Kiv {

namespace {

constexpr std::string_view blanks = " \t\r";

std::string_view trimmed(std::string_view text) noexcept {
   std::size_t const first = text.find_first_not_of(blanks);
   if (first == std::string_view::npos) {
      return {};
   }
   return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool equalsIgnoringCase(std::string_view text, std::string_view lower) noexcept {
   if (text.size() != lower.size()) {
      return false;
   }
   for (std::size_t i = 0; i < text.size(); ++i) {
      char c = text[i];
      if (c >= 'A' && c <= 'Z') {
         c = static_cast<char>(c - 'A' + 'a');
      }
      if (c != lower[i]) {
         return false;
      }
   }
   return true;
}

std::optional<bool> parseState(std::string_view text) noexcept {
   for (std::string_view on : {"on", "true", "1"}) {
      if (equalsIgnoringCase(text, on)) {
         return true;
      }
   }
   for (std::string_view off : {"off", "false", "0"}) {
      if (equalsIgnoringCase(text, off)) {
         return false;
      }
   }
   return std::nullopt;
}

} // namespace

std::string featureToggleFile() {
   char const* path = std::getenv("QORBGP_TOGGLE_FILE");
   return path && *path ? std::string(path) : std::string(defaultFeatureToggleFile);
}

bool getToggleState(std::string_view name, std::string_view file, bool defaultState) {
   if (name.empty()) {
      return defaultState; // a line with an empty name is malformed, never a match
   }
   std::ifstream in{std::string(file)};
   bool state = defaultState;
   for (std::string line; std::getline(in, line);) {
      std::string_view entry = line;
      entry = entry.substr(0, entry.find('#'));
      std::size_t const equals = entry.find('=');
      if (equals == std::string_view::npos || trimmed(entry.substr(0, equals)) != name) {
         continue;
      }
      if (auto parsed = parseState(trimmed(entry.substr(equals + 1)))) {
         state = *parsed;
      }
   }
   return state;
}

} // namespace Kiv
