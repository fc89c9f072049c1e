#include "QorBgpCommunity/QorBgp/RouteTargetMembership.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <charconv>
#include <optional>

namespace Routing::Bgp {

namespace {

constexpr unsigned originAsBits = 32;
constexpr unsigned maxNlriBits = originAsBits + RouteTargetPrefix::maxBitlen;

std::optional<U32> decimal(std::string_view text) {
   U32 value = 0;
   auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
   if (text.empty() || error != std::errc() || end != text.data() + text.size()) {
      return std::nullopt;
   }
   return value;
}

std::optional<RouteTargetPrefix> prefixFromText(std::string_view text) {
   if (text == "0/0") {
      return RouteTargetPrefix();
   }
   std::size_t const slash = text.find('/');
   auto const rt = RouteTarget::parse(text.substr(0, slash));
   std::optional<U32> length = RouteTargetPrefix::maxBitlen;
   if (slash != std::string_view::npos) {
      length = decimal(text.substr(slash + 1));
   }
   if (!rt || !length || *length > RouteTargetPrefix::maxBitlen) {
      return std::nullopt;
   }
   return RouteTargetPrefix(*rt, *length);
}

} // namespace

RouteTargetMembership RouteTargetMembership::fromStrep(std::string_view text) {
   if (text == "default") {
      return {};
   }
   std::size_t const space = text.find(' ');
   if (space != std::string_view::npos) {
      auto const as = decimal(text.substr(0, space));
      auto const prefix = prefixFromText(text.substr(space + 1));
      if (as && prefix) {
         return {*as, *prefix};
      }
   }
   throw Kiv::RangeError("invalid route-target membership '" + std::string(text) + "'");
}

std::string RouteTargetMembership::toStrep() const {
   return isDefault() ? "default" : std::to_string(originAs_) + " " + prefix_.toStrep();
}

RouteTargetMembershipDecodeResult decodeRouteTargetMemberships(std::span<U8 const> nlri) {
   RouteTargetMembershipDecodeResult result;
   std::size_t at = 0;
   while (at < nlri.size()) {
      unsigned const bits = nlri[at];
      if (bits != 0 && (bits < originAsBits || bits > maxNlriBits)) {
         result.reason = "route-target membership at octet " + std::to_string(at) + ": length " +
                         std::to_string(bits) + " is neither 0 nor 32 to 96 bits";
         return result;
      }
      std::size_t const octets = (bits + 7) / 8;
      if (nlri.size() - at - 1 < octets) {
         result.reason = "route-target membership at octet " + std::to_string(at) + ": " +
                         std::to_string(octets) + " octets announced, " +
                         std::to_string(nlri.size() - at - 1) + " present";
         return result;
      }
      if (bits == 0) {
         result.memberships.emplace_back();
      } else {
         U8 const* p = nlri.data() + at + 1;
         U32 const originAs = U32{p[0]} << 24 | U32{p[1]} << 16 | U32{p[2]} << 8 | p[3];
         U64 word = 0;
         for (std::size_t i = 4; i < octets; ++i) {
            word |= U64{p[i]} << (8 * (11 - i));
         }
         result.memberships.emplace_back(originAs,
                                         RouteTargetPrefix(RouteTarget(word), bits - originAsBits));
      }
      at += 1 + octets;
   }
   return result;
}

std::string encodeRouteTargetMemberships(std::span<RouteTargetMembership const> memberships) {
   std::string nlri;
   for (RouteTargetMembership const& m : memberships) {
      if (m.isDefault()) {
         nlri.push_back(0);
         continue;
      }
      unsigned const bits = originAsBits + m.prefix().bitlen();
      nlri.push_back(static_cast<char>(bits));
      for (int shift = 24; shift >= 0; shift -= 8) {
         nlri.push_back(static_cast<char>(m.originAs() >> shift));
      }
      U64 const word = m.prefix().prefixBits();
      for (unsigned i = 0; i < (m.prefix().bitlen() + 7u) / 8; ++i) {
         nlri.push_back(static_cast<char>(word >> (56 - 8 * i)));
      }
   }
   return nlri;
}

} // namespace Routing::Bgp
