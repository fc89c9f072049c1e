/// @file
/// The tunnel encapsulation extended community (transitive opaque type 0x03,
/// subtype 0x0c, RFC 9012): the tunnel type, the 16-bit number in the last two
/// value octets, by which the receiver should reach the route's next hop.
///
/// Immutable once built, owned through shared pointers, readable from any
/// thread.
///
/// @code{.cpp}
///   auto encap = extCommTunnelEncapFactory(ExtCommContent(0x030c000000000008));
///   encap->tunnelType();                       // tunnelTypeVxlan
///   encap->toStrepForUI(false, false, false);  // "TunnelEncap:tunnelTypeVxlan"
///   encap->toStrep();              // "<TunnelEncap 8:tunnelTypeVxlan 0x030c000000000008>"
/// @endcode
#pragma once

#include "QorBgpCommunity/QorBgp/BgpPathAttributeEnums.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommPluginBase.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunity.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Ptr.h"

#include <iosfwd>
#include <string>
#include <string_view>

namespace Routing::Bgp {

/// A tunnel encapsulation. Classification extCommClassificationTunnelEncap.
class QORBGP_EXPORT ExtCommTunnelEncap : public ExtCommSubtyped {
 public:
   KIV_POINTER_TYPES(ExtCommTunnelEncap);

   explicit ExtCommTunnelEncap(ExtCommContent const& content) noexcept;
   std::string_view fwkType() const noexcept override;
   ~ExtCommTunnelEncap() override;

   /// "<TunnelEncap " number ":" member name, or "tunnelTypeUnknown" for a
   /// number that is no TunnelType member, " " content ">".
   void formatDerivedType(std::ostream& os) const override;
   /// "TunnelEncap:" with flagClassification, then the member name, or
   /// "tunnelTypeUnknown-" and the number for a number that is no member
   /// (e.g. "tunnelTypeUnknown-0").
   std::string toStrepForPolicy(StrepFormat format) const override;

   /// The number as found, 0-65535; it need not be a TunnelType member.
   TunnelType tunnelType() const noexcept;
};

/// A new object with notification enabled.
QORBGP_EXPORT ExtCommTunnelEncap::Ptr extCommTunnelEncapFactory(ExtCommContent const& content);

/// Recognition of tunnel encapsulations (transitive opaque, subtype 0x0c).
using BgpParseExtComSubTypeTransOpaqueTunnelEncapRule =
   BgpParseExtCommKindSubRule<BgpParseExtComSubTypeTransOpaqueRuleBase,
                              extCommPktSubtypeTransOpaqueEncapsulationExtendedCommunity,
                              &extCommTunnelEncapFactory,
                              "Routing::Bgp::BgpParseExtComSubTypeTransOpaqueTunnelEncapRule">;

/// The tunnel encapsulation plug-in: installs the tunnel encapsulation sub-rules in every parser and type rule it is told of.
class QORBGP_EXPORT BgpParseExtCommTunnelEncapSm : public BgpParseExtCommPluginBaseSm {
 public:
   KIV_POINTER_TYPES(BgpParseExtCommTunnelEncapSm);

   /// Observes the registry and equips every type rule announced so far.
   explicit BgpParseExtCommTunnelEncapSm(RuleCollectionsPtrConst const& ruleCollections);
   ~BgpParseExtCommTunnelEncapSm() override;
   std::string_view fwkType() const noexcept override;

   void instantiateExtCommSubTypeTransOpaqueSubRule(
      BgpParseExtCommSubTypeTransOpaqueRuleKey const& key,
      BgpParseExtCommControl const& control) const override;
};

/// A new plug-in observing `ruleCollections`, notification active.
///@{
QORBGP_EXPORT BgpParseExtCommTunnelEncapSm::Ptr BgpParseExtCommTunnelEncapSmIs(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections);
QORBGP_EXPORT BgpParseExtCommPluginBaseSm::Ptr bgpParseExtCommTunnelEncapSmFactory(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections);
///@}

} // namespace Routing::Bgp
