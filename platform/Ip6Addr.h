/// @file
/// An IPv6 address as a small value: sixteen bytes in network order, with the
/// standard text form of RFC 5952 and parsing of every form that RFC 4291
/// allows.
#pragma once

#include "QorBgpCommunity/platform/DynamicBuffer.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Types.h"

#include <array>
#include <compare>
#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace Qornet {

/// Sixteen bytes in network order; the default value is :: (all zero).
/// Trivially copyable and passed by value. Order is bytewise, which for
/// network order is the numeric order of the 128-bit address.
///
/// @code{.cpp}
///   auto a = Qornet::Ip6Addr::fromStrep("2001:DB8:0:0::1");
///   a.toStrep();                                  // "2001:db8::1"
///   Qornet::Ip6Addr::parse("2001:db8::g");        // std::nullopt
/// @endcode
class QORBGP_EXPORT Ip6Addr {
 public:
   using Bytes = std::array<U8, 16>;
   /// The longest standard text, "ffff:ffff:ffff:ffff:ffff:ffff:255.255.255.255"
   /// (INET6_ADDRSTRLEN without its terminator).
   static constexpr std::size_t maxStrepLength = 45;

   constexpr Ip6Addr() noexcept = default;
   constexpr explicit Ip6Addr(Bytes const& bytes) noexcept : bytes_(bytes) {}

   /// The address text in any form RFC 4291 allows (upper or lower case,
   /// zero runs compressed or not, dotted IPv4 in the last 32 bits). Nothing
   /// for any other text: empty text, surrounding space, a zone ("%eth0"), a
   /// prefix length, an IPv4 address alone.
   static std::optional<Ip6Addr> parse(std::string_view text) noexcept;
   /// As parse, but Kiv::RangeError naming the text when it is not an address.
   static Ip6Addr fromStrep(std::string_view text);

   constexpr Bytes const& bytes() const noexcept { return bytes_; }

   /// RFC 5952 text, as the C library renders it: lower-case hexadecimal
   /// without leading zeros; the longest run of two or more zero groups (the
   /// first of equally long runs) compressed to "::"; IPv4-mapped addresses
   /// (\::ffff:0:0/96) in mixed notation, e.g. \::ffff:192.0.2.1. At most
   /// maxStrepLength characters.
   std::string toStrep() const;
   /// Appends the same text to `buffer`.
   void appendStrep(Kiv::DynamicBufferInterface& buffer) const;

   friend constexpr bool operator==(Ip6Addr const&, Ip6Addr const&) noexcept = default;
   friend constexpr std::strong_ordering operator<=>(Ip6Addr const&,
                                                     Ip6Addr const&) noexcept = default;

 private:
   Bytes bytes_{};
};

static_assert(std::is_trivially_copyable_v<Ip6Addr> && sizeof(Ip6Addr) == 16);

/// toStrep(). The stream's format state is left as it was; the width is
/// consumed without padding.
QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, Ip6Addr const& addr);

} // namespace Qornet
