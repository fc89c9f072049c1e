#include "QorBgpCommunity/platform/Assert.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace Kiv {

std::string_view sourceUnit(std::string_view file) noexcept {
   if (auto slash = file.rfind('/'); slash != std::string_view::npos) {
      file.remove_prefix(slash + 1);
   }
   if (auto dot = file.find('.'); dot != std::string_view::npos) {
      file = file.substr(0, dot);
   }
   return file;
}

void assertionFailed(char const* condition, char const* declaredUnit, char const* file,
                     int line) noexcept {
   std::string_view const unit = declaredUnit ? std::string_view(declaredUnit) : sourceUnit(file);
   std::fprintf(stderr, "%.*s:%d: assertion failed: %s\n", static_cast<int>(unit.size()),
                unit.data(), line, condition);
   std::fflush(stderr);
   std::abort();
}

} // namespace Kiv
