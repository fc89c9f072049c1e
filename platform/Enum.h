/// @file
/// Reflection glue shared by every enumeration of the library.
///
/// An enumeration is described once by an EnumDescriptor: its qualified type
/// name, every named member in ascending value order, and the largest value its
/// membership test accepts. The generic code below answers, for any described
/// enumeration E:
///
/// @code{.unparsed}
///   stringValue(e), valueToStrep(e)   the member name; a value that has no
///                                     name renders as its decimal number
///   bgpIsValidEnumMember(e)           named and not above the member limit
///   os << e                           the member name
///   EInstance(U32), EInstance(text)   construction; see KIV_ENUM_GLUE
/// @endcode
///
/// A description is found through the argument-dependent function
/// enumDescriptor(E), which KIV_ENUM_GLUE declares next to the enumeration and
/// KIV_ENUM_DEFINE defines in its source file from the same X-macro list that
/// declares the enumerators, so names and values cannot drift apart.
#pragma once

#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Types.h"

#include <concepts>
#include <cstddef>
#include <limits>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

namespace Kiv {

/// One named value of an enumeration.
struct EnumMember {
   U32 value;
   std::string_view name;
};

/// An enumeration's name and named values, for its text and membership test.
struct EnumDescriptor {
   std::string_view typeName;           ///< qualified, e.g. "Routing::Bgp::OriginCode"
   std::span<EnumMember const> members; ///< ascending by value, no repeats
   U32 memberLimit;                     ///< membership accepts named values <= this
};

/// Membership limit of an enumeration without quirks: every named member passes.
inline constexpr U32 noMemberLimit = std::numeric_limits<U32>::max();

constexpr bool enumMembersAscending(std::span<EnumMember const> members) {
   for (std::size_t i = 1; i < members.size(); ++i) {
      if (members[i - 1].value >= members[i].value) {
         return false;
      }
   }
   return true;
}

/// The member's name, or an empty view when the value has none.
QORBGP_EXPORT std::string_view enumMemberName(EnumDescriptor const& d, U32 value) noexcept;
QORBGP_EXPORT bool enumIsMember(EnumDescriptor const& d, U32 value) noexcept;
/// The name, or the decimal value when it has none.
QORBGP_EXPORT std::string enumText(EnumDescriptor const& d, U32 value);
/// The value itself when it passes the membership test; otherwise RangeError.
QORBGP_EXPORT U32 enumValueFromNumber(EnumDescriptor const& d, U32 value);
/// A member name (any named member, so every name that stringValue gives parses
/// back) or a decimal number that passes the membership test; otherwise
/// RangeError naming the type and the text.
QORBGP_EXPORT U32 enumValueFromText(EnumDescriptor const& d, std::string_view text);

template <class E>
concept DescribedEnum = std::is_enum_v<E> && requires(E e) {
   { enumDescriptor(e) } -> std::same_as<EnumDescriptor const&>;
};

template <DescribedEnum E>
std::string stringValue(E e) {
   return enumText(enumDescriptor(e), static_cast<U32>(e));
}

template <DescribedEnum E>
std::string valueToStrep(E e) {
   return stringValue(e);
}

template <DescribedEnum E>
bool bgpIsValidEnumMember(E e) noexcept {
   return enumIsMember(enumDescriptor(e), static_cast<U32>(e));
}

template <DescribedEnum E>
std::ostream& operator<<(std::ostream& os, E e) {
   return os << stringValue(e);
}

} // namespace Kiv

/// X-macro helpers: a list macro LIST(X) expands X(name, value) per member.
#define KIV_ENUMERATOR(name, value) name = value,
#define KIV_ENUM_MEMBER(name, value) ::Kiv::EnumMember{value, #name},

/// Declares, in the enumeration's namespace, its descriptor lookup and the
/// construction functions EInstance(U32) and EInstance(text).
#define KIV_ENUM_GLUE(E)                                                                 \
   QORBGP_EXPORT ::Kiv::EnumDescriptor const& enumDescriptor(E) noexcept;                \
   inline E E##Instance(U32 value) {                                                     \
      return static_cast<E>(::Kiv::enumValueFromNumber(enumDescriptor(E{}), value));     \
   }                                                                                     \
   inline E E##Instance(std::string_view text) {                                         \
      return static_cast<E>(::Kiv::enumValueFromText(enumDescriptor(E{}), text));        \
   }                                                                                     \
   using ::Kiv::stringValue;                                                             \
   using ::Kiv::valueToStrep;                                                            \
   using ::Kiv::bgpIsValidEnumMember;                                                    \
   using ::Kiv::operator<<

/// Defines enumDescriptor(E) in a source file, inside E's namespace.
#define KIV_ENUM_DEFINE(E, qualifiedName, memberLimit, LIST)                             \
   ::Kiv::EnumDescriptor const& enumDescriptor(E) noexcept {                             \
      static constexpr ::Kiv::EnumMember members[] = {LIST(KIV_ENUM_MEMBER)};            \
      static_assert(::Kiv::enumMembersAscending(members), #E " members out of order");   \
      static constexpr ::Kiv::EnumDescriptor descriptor{qualifiedName, members,          \
                                                        memberLimit};                    \
      return descriptor;                                                                 \
   }
