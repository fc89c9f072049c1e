/// @file
/// A route target as the routing agent passes it around: the eight octets of a
/// route-target extended community (RFC 4360, subtype 0x02) read as one 64-bit
/// word, type octet most significant, with its operator text and a parser for
/// that text.
#pragma once

#include "QorBgpCommunity/platform/DynamicBuffer.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Hash.h"
#include "QorBgpCommunity/platform/Types.h"

#include <compare>
#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace Routing::Bgp {

/// The word layouts, octets from the most significant:
///
/// @code{.unparsed}
///   type 0x00  0x00 0x02 | AS (16 bits)        | local (32 bits)
///   type 0x01  0x01 0x02 | IPv4 address (32)   | local (16 bits)
///   type 0x02  0x02 0x02 | AS (32 bits)        | local (16 bits)
/// @endcode
///
/// Any other word (another type or subtype octet, such as a bit prefix of a
/// route target whose subtype octet is cut off) is held unchanged.
///
/// Text (toStrep), chosen so that parse() reads every text back to the same word:
///
/// @code{.unparsed}
///   type 0x00                "65000:100"
///   type 0x01                "192.0.2.1:5"
///   type 0x02, AS >= 65536   "4200000000:7"; with asdot "64086.59904:7"
///   type 0x02, AS <  65536   "100L:7" ("L": the four-octet layout, as a plain
///                            "100:7" would read back as type 0x00)
///   any other word           "0x" and 16 lower-case hexadecimal digits
/// @endcode
///
/// A trivially copyable value; order, equality and hash are those of the word.
///
/// @code{.cpp}
///   auto rt = Routing::Bgp::RouteTarget::parse("65000:100");  // word 0x0002fde800000064
///   rt->toStrep();                                            // "65000:100"
/// @endcode
class QORBGP_EXPORT RouteTarget {
 public:
   static constexpr U8 typeTwoOctetAs = 0x00;
   static constexpr U8 typeIpv4Address = 0x01;
   static constexpr U8 typeFourOctetAs = 0x02;
   static constexpr U8 subtypeRouteTarget = 0x02;
   /// The longest text, "255.255.255.255:65535".
   static constexpr std::size_t maxStrepLength = 21;

   constexpr RouteTarget() noexcept = default;
   constexpr explicit RouteTarget(U64 word) noexcept : word_(word) {}

   static constexpr RouteTarget twoOctetAs(U16 as, U32 local) noexcept {
      return RouteTarget(layout(typeTwoOctetAs) | U64{as} << 32 | local);
   }
   static constexpr RouteTarget ipv4Address(U32 address, U16 local) noexcept {
      return RouteTarget(layout(typeIpv4Address) | U64{address} << 16 | local);
   }
   static constexpr RouteTarget fourOctetAs(U32 as, U16 local) noexcept {
      return RouteTarget(layout(typeFourOctetAs) | U64{as} << 16 | local);
   }

   /// Reads every form that toStrep writes:
   /// @code{.unparsed}
   ///   "<as>:<local>"       AS up to 65535: type 0x00, local up to 4294967295;
   ///                        AS 65536 to 4294967295: type 0x02, local up to 65535
   ///   "<as>L:<local>"      type 0x02, AS and local as for type 0x02
   ///   "<hi>.<lo>:<local>"  asdot: type 0x02 with AS hi * 65536 + lo, each
   ///                        part up to 65535 (so "0.100:7" is "100L:7")
   ///   "<a.b.c.d>:<local>"  type 0x01, four decimal octets, local up to 65535
   ///   "0x<hex>"            the word itself, 1 to 16 hexadecimal digits of either case
   /// @endcode
   /// Numbers are decimal digits only. Nothing for any other text, including a
   /// field out of its range, an empty field and surrounding space.
   static std::optional<RouteTarget> parse(std::string_view text) noexcept;
   /// As parse, but Kiv::RangeError "invalid RouteTarget text '<text>'".
   static RouteTarget fromStrep(std::string_view text);

   constexpr U64 word() const noexcept { return word_; }
   constexpr U8 type() const noexcept { return static_cast<U8>(word_ >> 56); }
   constexpr U8 subtype() const noexcept { return static_cast<U8>(word_ >> 48); }

   /// The text of the table above; `asdot` only changes a type 0x02 AS of
   /// 65536 or more. At most maxStrepLength characters.
   ///@{
   std::string toStrep(bool asdot = false) const;
   void appendStrep(Kiv::DynamicBufferInterface& buffer, bool asdot = false) const;
   ///@}

   constexpr U32 hash(U32 seed) const noexcept { return Kiv::hashU64(word_, seed); }

   friend constexpr bool operator==(RouteTarget, RouteTarget) noexcept = default;
   friend constexpr std::strong_ordering operator<=>(RouteTarget, RouteTarget) noexcept = default;

 private:
   static constexpr U64 layout(U8 type) noexcept {
      return U64{type} << 56 | U64{subtypeRouteTarget} << 48;
   }

   U64 word_ = 0;
};

static_assert(std::is_trivially_copyable_v<RouteTarget> && sizeof(RouteTarget) == 8);

/// The text inside reflective value texts: toStrep(false).
QORBGP_EXPORT std::string valueToStrep(RouteTarget rt);
/// toStrep(false); the stream's format state is left as it was.
QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, RouteTarget rt);

} // namespace Routing::Bgp

/// Hashes a route target by its word (RouteTarget::hash with seed 0).
template <>
struct std::hash<Routing::Bgp::RouteTarget> {
   std::size_t operator()(Routing::Bgp::RouteTarget rt) const noexcept { return rt.hash(0); }
};
