#include "QorBgpCommunity/platform/Enum.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <algorithm>
#include <charconv>

namespace Kiv {

namespace {

EnumMember const* find(EnumDescriptor const& d, U32 value) noexcept {
   auto it = std::lower_bound(d.members.begin(), d.members.end(), value,
                              [](EnumMember const& m, U32 v) { return m.value < v; });
   return it != d.members.end() && it->value == value ? &*it : nullptr;
}

[[noreturn]] void notAMember(EnumDescriptor const& d, std::string_view what) {
   throw RangeError("no member " + std::string(what) + " in " + std::string(d.typeName));
}

} // namespace

std::string_view enumMemberName(EnumDescriptor const& d, U32 value) noexcept {
   EnumMember const* m = find(d, value);
   return m ? m->name : std::string_view();
}

bool enumIsMember(EnumDescriptor const& d, U32 value) noexcept {
   return value <= d.memberLimit && find(d, value) != nullptr;
}

std::string enumText(EnumDescriptor const& d, U32 value) {
   if (EnumMember const* m = find(d, value)) {
      return std::string(m->name);
   }
   return std::to_string(value);
}

U32 enumValueFromNumber(EnumDescriptor const& d, U32 value) {
   if (!enumIsMember(d, value)) {
      notAMember(d, std::to_string(value));
   }
   return value;
}

U32 enumValueFromText(EnumDescriptor const& d, std::string_view text) {
   for (EnumMember const& m : d.members) {
      if (m.name == text) {
         return m.value;
      }
   }
   U32 value = 0;
   auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
   if (ec != std::errc() || end != text.data() + text.size() || !enumIsMember(d, value)) {
      notAMember(d, "'" + std::string(text) + "'");
   }
   return value;
}

} // namespace Kiv
