// clang-format off: the table of kinds below is laid out by hand
/// @file
/// ExtCommunityMatcher: a compiled route-policy pattern for one extended
/// community, by its kind and fields.
///
/// @code{.cpp}
///   auto customers = extCommunityMatcherFactory(ExtCommunityMatcher::Kind::routeTarget,
///                                               CommunityFieldPattern::exact(65000),
///                                               CommunityFieldPattern::range(100, 199));
///   customers->matches(comm, context);   // rt 65000:100-199
/// @endcode
///
/// The kinds and what their two fields match, read from the value's octets
/// (RFC 4360 and its successors):
/// @code{.unparsed}
///   kind             values (type:subtype)             first field          second field
///   routeTarget      0x00/0x01/0x02:0x02 (and 0x4_)   AS or IPv4 address   local administrator
///   routeOrigin      the same with subtype 0x03        AS or IPv4 address   local administrator
///   color            0x03:0x0b                         colour               (any)
///   linkBandwidth    0x40:0x04 and 0x00:0x04           AS                   (any)
///   originValidation 0x43:0x00                         state: 0 valid,      (any)
///                                                      1 not-found,
///                                                      2 invalid
///   raw              any                               type octet           subtype octet
/// @endcode
/// An IPv4 address is matched as its 32-bit number. Immutable once made; may
/// be used from any thread at once.
// clang-format on
#pragma once

#include "QorBgpCommunity/QorBgp/CommunityFieldPattern.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListExt.h"

#include <string>

namespace Routing::Bgp {

/// One extended community, by kind and fields.
class QORBGP_EXPORT ExtCommunityMatcher : public Kiv::PtrInterface {
 public:
   KIV_POINTER_TYPES(ExtCommunityMatcher);
   using List = ExtCommList;
   using Value = ExtComm::PtrConst;
   using Content = U64; ///< a value as an edit adds or sets it: its 8 octets

   enum class Kind : U8 { routeTarget, routeOrigin, color, linkBandwidth, originValidation, raw };

   /// `globalIsAddress` prints an exact first field as an IPv4 address (route
   /// targets and origins). Kiv::RangeError "<kind> takes one field" when a
   /// one-field kind is given a second field other than any, "raw type and
   /// subtype are octets" for raw fields above 255.
   ExtCommunityMatcher(Kind kind, CommunityFieldPattern first, CommunityFieldPattern second,
                       bool globalIsAddress = false);
   ~ExtCommunityMatcher() override;

   bool matches(ExtComm::PtrConst const& community, CommunityMatchContext const& context) const;
   bool matches(U64 content, CommunityMatchContext const& context) const noexcept;

   /// "rt <first>:<second>", "soo ...", "color <first>", "lbw <first>",
   /// "ovs valid|not-found|invalid|<n>", "raw <type>:<subtype>": the policy
   /// parser's text.
   std::string toStrep() const;

   Kind kind() const noexcept { return kind_; }

 private:
   Kind const kind_;
   CommunityFieldPattern const first_;
   CommunityFieldPattern const second_;
   bool const globalIsAddress_;
};

/// A new matcher, notification on (see the constructor for the errors).
QORBGP_EXPORT ExtCommunityMatcher::PtrConst
extCommunityMatcherFactory(ExtCommunityMatcher::Kind kind, CommunityFieldPattern first,
                           CommunityFieldPattern second = CommunityFieldPattern::any(),
                           bool globalIsAddress = false);

} // namespace Routing::Bgp
