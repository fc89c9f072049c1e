/// @file
/// RouteTargetMembership: one route-target membership of route-target
/// constraint (RFC 4684), the AS that originated it and the route-target
/// prefix a speaker asks for; and its NLRI, as it travels in MP_REACH_NLRI and
/// MP_UNREACH_NLRI under AFI 1, SAFI 132.
///
/// @code{.cpp}
///   RouteTargetMembership m(65000, RouteTargetPrefix(RouteTarget::twoOctetAs(65000, 100), 64));
///   m.toStrep();                                // "65000 65000:100/64"
///   std::string nlri = encodeRouteTargetMemberships({&m, 1});   // 60 00 00 fd e8 00 02 fd e8 ...
///   decodeRouteTargetMemberships(as bytes of nlri).memberships;  // {m}
/// @endcode
#pragma once

#include "QorBgpCommunity/QorBgp/RouteTargetPrefix.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Routing::Bgp {

/// The origin AS and route-target prefix of one membership, or the default
/// membership (zero length on the wire: every route target, no origin AS).
/// A small copyable value, ordered by default first, then origin AS, then
/// prefix.
class QORBGP_EXPORT RouteTargetMembership {
 public:
   /// The default membership.
   constexpr RouteTargetMembership() noexcept = default;
   RouteTargetMembership(U32 originAs, RouteTargetPrefix prefix) noexcept
       : specific_(true), originAs_(originAs), prefix_(prefix) {}
   /// Reads toStrep's text: "default", or "<origin AS> <route-target
   /// prefix>" with the prefix as RouteTargetPrefix prints it ("65000:100/64",
   /// "0/0"; the length may be left out for 64). Kiv::RangeError
   /// "invalid route-target membership '<text>'" otherwise.
   static RouteTargetMembership fromStrep(std::string_view text);

   bool isDefault() const noexcept { return !specific_; }
   U32 originAs() const noexcept { return originAs_; }
   /// 0/0 for the default membership.
   RouteTargetPrefix const& prefix() const noexcept { return prefix_; }
   /// Whether route target `rt` falls under the membership's prefix.
   bool covers(RouteTarget rt) const noexcept {
      return ((rt.word() ^ prefix_.prefixBits()) & prefix_.mask()) == 0;
   }

   /// "default", or "<origin AS> <prefix>" (the prefix as RouteTargetPrefix::toStrep).
   std::string toStrep() const;

   friend bool operator==(RouteTargetMembership const&, RouteTargetMembership const&) = default;
   friend auto operator<=>(RouteTargetMembership const&, RouteTargetMembership const&) = default;

 private:
   bool specific_ = false; ///< false for the default membership, which sorts first
   U32 originAs_ = 0;
   RouteTargetPrefix prefix_;
};

/// What decodeRouteTargetMemberships found in an NLRI field.
struct QORBGP_EXPORT RouteTargetMembershipDecodeResult {
   /// Every membership read, in order; when the field is malformed, those
   /// before the damage.
   std::vector<RouteTargetMembership> memberships;
   /// Empty when the whole field was read; otherwise where and why it is
   /// malformed. A malformed NLRI field cannot be split into its prefixes, so
   /// RFC 7606 (section 5.3) leaves the session reset or AFI/SAFI disable to
   /// the caller; nothing is thrown.
   std::string reason;

   bool ok() const noexcept { return reason.empty(); }
};

/// The memberships of an NLRI field (the part of MP_REACH_NLRI or
/// MP_UNREACH_NLRI after the next hop): each a length octet in bits (0, or 32
/// to 96), then that many bits in whole octets: the origin AS in 4 octets,
/// then the route-target prefix. Bits past the length in the last octet are
/// ignored. Malformed: a length of 1 to 31 or above 96, or octets cut short.
QORBGP_EXPORT RouteTargetMembershipDecodeResult
decodeRouteTargetMemberships(std::span<U8 const> nlri);

/// The NLRI field holding `memberships` in order, as decodeRouteTargetMemberships reads it.
QORBGP_EXPORT std::string
encodeRouteTargetMemberships(std::span<RouteTargetMembership const> memberships);

} // namespace Routing::Bgp
