/// @file
/// CommunityFieldPattern: how one numeric field of a community is matched by
/// route policy, and the context that its placeholders are bound from.
///
/// @code{.cpp}
///   auto const asPart = CommunityFieldPattern::peerAs();           // "peer-as"
///   auto const local = CommunityFieldPattern::range(100, 199);      // "100-199"
///   asPart.matches(65001, {.peerAs = 65001, .localAs = 65000});     // true
/// @endcode
#pragma once

#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Types.h"

#include <string>

namespace Routing::Bgp {

/// What route policy evaluates a pattern against: the AS of the peer the route
/// came from or goes to, and our own AS. Placeholders take their values from it
/// at match time, so one compiled pattern serves every peer.
struct QORBGP_EXPORT CommunityMatchContext {
   U32 peerAs = 0;
   U32 localAs = 0;
};

/// One field of a community pattern: any value, one value, an inclusive range,
/// or a placeholder for the peer's or our own AS number. A plain value type.
class QORBGP_EXPORT CommunityFieldPattern {
 public:
   enum class Kind : U8 { any, exact, range, peerAs, localAs };

   /// "*": every value.
   static CommunityFieldPattern any() noexcept { return {Kind::any, 0, 0xFFFFFFFF}; }
   static CommunityFieldPattern exact(U32 value) noexcept { return {Kind::exact, value, value}; }
   /// Kiv::RangeError "range <low>-<high> is empty" when low > high.
   static CommunityFieldPattern range(U32 low, U32 high);
   static CommunityFieldPattern peerAs() noexcept { return {Kind::peerAs, 0, 0}; }
   static CommunityFieldPattern localAs() noexcept { return {Kind::localAs, 0, 0}; }

   bool matches(U32 value, CommunityMatchContext const& context) const noexcept {
      switch (kind_) {
      case Kind::peerAs:
         return value == context.peerAs;
      case Kind::localAs:
         return value == context.localAs;
      default: // any is the range of every value
         return low_ <= value && value <= high_;
      }
   }

   Kind kind() const noexcept { return kind_; }
   /// The bounds of an exact value or a range (any: 0 and 0xFFFFFFFF).
   U32 low() const noexcept { return low_; }
   U32 high() const noexcept { return high_; }
   /// Whether every value the pattern names is at most `max` (a placeholder
   /// names none of its own: true).
   bool fitsIn(U32 max) const noexcept { return kind_ == Kind::any || high_ <= max; }

   /// "*", "65000", "100-199", "peer-as" or "local-as": what the parser reads.
   std::string toStrep() const;

   friend bool operator==(CommunityFieldPattern const&, CommunityFieldPattern const&) = default;

 private:
   CommunityFieldPattern(Kind kind, U32 low, U32 high) noexcept
       : kind_(kind), low_(low), high_(high) {}

   Kind kind_;
   U32 low_;
   U32 high_;
};

} // namespace Routing::Bgp
