/// @file
/// The default gateway extended community (transitive opaque type 0x03,
/// subtype 0x0d, RFC 7432): marks an EVPN MAC/IP route as the default gateway
/// of its subnet. Its value octets carry nothing.
///
/// Immutable once built, owned through shared pointers, readable from any
/// thread.
///
/// @code{.cpp}
///   auto gw = extCommDefaultGatewayFactory(ExtCommContent(0x030d000000000000));
///   gw->toStrepForUI(false, false, false);  // "DefaultGateway"
///   gw->toStrep();                          // "<DefaultGateway 0x030d000000000000>"
/// @endcode
#pragma once

#include "QorBgpCommunity/QorBgp/Parse/ExtCommPluginBase.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunity.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Ptr.h"

#include <iosfwd>
#include <string>
#include <string_view>

namespace Routing::Bgp {

/// A default gateway marker. Classification extCommClassificationDefaultGateway.
class QORBGP_EXPORT ExtCommDefaultGateway : public ExtCommSubtyped {
 public:
   KIV_POINTER_TYPES(ExtCommDefaultGateway);

   explicit ExtCommDefaultGateway(ExtCommContent const& content) noexcept;
   std::string_view fwkType() const noexcept override;
   ~ExtCommDefaultGateway() override;

   /// "<DefaultGateway " content ">".
   void formatDerivedType(std::ostream& os) const override;
   /// "DefaultGateway", whatever the format.
   std::string toStrepForPolicy(StrepFormat format) const override;
};

/// A new object with notification enabled.
QORBGP_EXPORT ExtCommDefaultGateway::Ptr
extCommDefaultGatewayFactory(ExtCommContent const& content);

/// Recognition of default gateways (transitive opaque, subtype 0x0d).
using BgpParseExtComSubTypeTransOpaqueDefaultGatewayRule =
   BgpParseExtCommKindSubRule<BgpParseExtComSubTypeTransOpaqueRuleBase,
                              extCommPktSubtypeTransOpaqueDefaultGateway,
                              &extCommDefaultGatewayFactory,
                              "Routing::Bgp::BgpParseExtComSubTypeTransOpaqueDefaultGatewayRule">;

/// The default gateway plug-in: installs the default gateway sub-rules in every parser and type rule it is told of.
class QORBGP_EXPORT BgpParseExtCommDefaultGatewaySm : public BgpParseExtCommPluginBaseSm {
 public:
   KIV_POINTER_TYPES(BgpParseExtCommDefaultGatewaySm);

   /// Observes the registry and equips every type rule announced so far.
   explicit BgpParseExtCommDefaultGatewaySm(RuleCollectionsPtrConst const& ruleCollections);
   ~BgpParseExtCommDefaultGatewaySm() override;
   std::string_view fwkType() const noexcept override;

   void instantiateExtCommSubTypeTransOpaqueSubRule(
      BgpParseExtCommSubTypeTransOpaqueRuleKey const& key,
      BgpParseExtCommControl const& control) const override;
};

/// A new plug-in observing `ruleCollections`, notification active.
///@{
QORBGP_EXPORT BgpParseExtCommDefaultGatewaySm::Ptr BgpParseExtCommDefaultGatewaySmIs(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections);
QORBGP_EXPORT BgpParseExtCommPluginBaseSm::Ptr bgpParseExtCommDefaultGatewaySmFactory(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections);
///@}

} // namespace Routing::Bgp
