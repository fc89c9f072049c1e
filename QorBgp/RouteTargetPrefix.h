/// @file
/// Bit prefixes of route targets, as route-target constraint (RFC 4684) uses
/// them: a speaker announces the route-target prefixes it wants, and a route
/// target matches a prefix when their leading `length` bits agree.
#pragma once

#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/RouteTarget.h"
#include "QorBgpCommunity/platform/Types.h"

#include <compare>
#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>

namespace Routing::Bgp {

/// A route target's 64-bit word read most significant bit first, cut to a
/// length of 0..64 bits. Bits below the length are zero: every bitlenIs masks
/// them off, except a rejected one (see bitlenIs).
///
/// A small copyable value, ordered by prefix word then length. Not
/// thread-safe for writes.
///
/// @code{.cpp}
///   RouteTargetPrefix p(RouteTarget::twoOctetAs(65000, 100), 32);
///   p.toStrep();   // "65000:0/32"
///   p.commonPrefixLen(RouteTargetPrefix(RouteTarget::twoOctetAs(65000, 7), 64));  // 32
/// @endcode
class QORBGP_EXPORT RouteTargetPrefix {
 public:
   static constexpr unsigned maxBitlen = 64;

   /// 0/0, the prefix that every route target matches.
   constexpr RouteTargetPrefix() noexcept = default;
   /// `prefix` cut to `bitlen` bits; raises as bitlenIs does.
   RouteTargetPrefix(RouteTarget prefix, std::size_t bitlen);
   /// Parses valueToStrep's text (fields in any order). The prefix is cut to the
   /// length. Kiv::RangeError for malformed text, a prefix that is no route
   /// target text, or a length above 64 ("RouteTargetPrefix::length < 0 or > 64
   /// not allowed").
   explicit RouteTargetPrefix(std::string_view valueText);

   RouteTarget prefix() const noexcept { return prefix_; }
   U64 prefixBits() const noexcept { return prefix_.word(); }
   U8 bitlen() const noexcept { return length_; }

   /// Sets the length and masks the prefix to it. A length of 256 or more is a
   /// fatal assertion; 65 to 255 raises Kiv::RangeError
   /// "RouteTargetPrefix::length < 0 or > 64 not allowed".
   /// WARNING: the rejected length stays stored and the prefix unmasked; only
   /// another bitlenIs repairs the object.
   void bitlenIs(std::size_t bitlen);

   /// Bit `bit` of the prefix word, bit 0 being the most significant. A bit of
   /// 64 or more is a fatal assertion.
   bool extractBit(unsigned bit) const;
   /// The leading `bitlen()` bits set: 0 for length 0, all ones for 64 (and for
   /// a rejected length above 64).
   U64 mask() const noexcept;
   /// The number of leading bits both prefixes have in common, at most the
   /// shorter length.
   unsigned commonPrefixLen(RouteTargetPrefix const& other) const noexcept;

   U32 hash(U32 seed) const noexcept;

   /// "0/0" for the zero prefix of length 0, else the route target's text
   /// (asdot as RouteTarget::toStrep), "/" and the decimal length:
   /// "65000:0/32", "0x0000000000000000/8".
   std::string toStrep(bool asdot = false) const;

   friend bool operator==(RouteTargetPrefix const&, RouteTargetPrefix const&) noexcept = default;
   friend std::strong_ordering operator<=>(RouteTargetPrefix const&,
                                           RouteTargetPrefix const&) noexcept = default;

 private:
   RouteTarget prefix_; ///< bits below length_ zero (see bitlenIs)
   U8 length_ = 0;
};

/// "Value('Routing::Bgp::RouteTargetPrefix', ** {'prefix': 65000:0, 'length': 32})",
/// the prefix in RouteTarget's value text.
QORBGP_EXPORT std::string valueToStrep(RouteTargetPrefix const& prefix);
/// toStrep(false).
QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, RouteTargetPrefix const& prefix);

} // namespace Routing::Bgp
