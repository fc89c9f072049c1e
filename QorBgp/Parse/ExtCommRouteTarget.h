/// @file
/// Route-target extended communities (RFC 4360 subtype 0x02): the AS-number
/// form under the transitive two- and four-octet-AS types and the
/// IPv4-address form under the transitive IPv4-address type. They are what
/// VPN import and export policy matches on, and the values whose coming into
/// and going out of use the agent tracks.
///
/// Immutable once built, owned through shared pointers, readable from any
/// thread.
///
/// @code{.cpp}
///   auto rt = extCommRouteTargetAsFactory(ExtCommContent(0x0002fde800000064), false);
///   rt->toStrep();      // "<RouteTarget2ByteASN 65000:100 0x0002fde800000064>"
///   rt->toStrepForUI(false, false, false);          // "Route-Target-AS:65000:100"
///   rt->toStrepForPolicy(ExtComm::StrepFormat(2));  // "RT:65000:100"
/// @endcode
#pragma once

#include "QorBgpCommunity/QorBgp/Parse/ExtCommPluginBase.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityKinds.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Ptr.h"

#include <iosfwd>
#include <string>
#include <string_view>

namespace Routing::Bgp {

/// A route target with an AS number as global administrator. Classification
/// extCommClassificationRouteTarget.
class QORBGP_EXPORT ExtCommRouteTargetAs : public ExtCommAsNumber {
 public:
   KIV_POINTER_TYPES(ExtCommRouteTargetAs);

   /// `fourByteAs` selects the layout (see ExtCommAsNumber); the type octet is
   /// expected to be 0x00 (false) or 0x02 (true).
   ExtCommRouteTargetAs(ExtCommContent const& content, bool fourByteAs) noexcept;
   std::string_view fwkType() const noexcept override;
   ~ExtCommRouteTargetAs() override;

   /// "<RouteTarget2ByteASN 65000:100 0x0002fde800000064>", or
   /// "RouteTarget4ByteASN" for type 0x02; a value of any other type is a
   /// broken invariant (fatal "0 && \"unexpected type\"").
   void formatDerivedType(std::ostream& os) const override;
   /// "RT:" with flagClassification alone, "Route-Target-AS:" (four-octet:
   /// "Route-Target-AS4:") with flagUI too, no prefix without
   /// flagClassification; then AS (asdot when flagAsdot) ":" local admin.
   std::string toStrepForPolicy(StrepFormat format) const override;
};

/// A route target with an IPv4 address as global administrator.
/// Classification extCommClassificationRouteTarget.
class QORBGP_EXPORT ExtCommRouteTargetIpv4Address : public ExtCommIpv4Address {
 public:
   KIV_POINTER_TYPES(ExtCommRouteTargetIpv4Address);

   explicit ExtCommRouteTargetIpv4Address(ExtCommContent const& content) noexcept;
   std::string_view fwkType() const noexcept override;
   ~ExtCommRouteTargetIpv4Address() override;

   /// "<RouteTarget 192.0.2.1:100 0x0102c00002010064>".
   void formatDerivedType(std::ostream& os) const override;
   /// "RT:", "Route-Target-IP:" or no prefix as for ExtCommRouteTargetAs, then
   /// address ":" local admin.
   std::string toStrepForPolicy(StrepFormat format) const override;
};

/// New objects with notification enabled.
///@{
QORBGP_EXPORT ExtCommRouteTargetAs::Ptr extCommRouteTargetAsFactory(ExtCommContent const& content,
                                                                    bool fourByteAs);
QORBGP_EXPORT ExtCommRouteTargetIpv4Address::Ptr
extCommRouteTargetIpv4AddressFactory(ExtCommContent const& content);
///@}

/// Recognition of route targets under the three transitive AS and IPv4-address types, subtype 0x02.
///@{
using BgpParseExtComSubTypeTransTwoOctetAsRouteTargetRule = BgpParseExtCommKindSubRule<
   BgpParseExtComSubTypeTransTwoOctetAsRuleBase, extCommPktSubtypeTransTwoOctetAsRouteTarget,
   &extCommRouteTargetAsFactory,
   "Routing::Bgp::BgpParseExtComSubTypeTransTwoOctetAsRouteTargetRule", false>;
using BgpParseExtComSubTypeTransIpv4AddressRouteTargetRule =
   BgpParseExtCommKindSubRule<BgpParseExtComSubTypeTransIpv4AddressRuleBase,
                              extCommPktSubtypeTransIpv4AddressRouteTarget,
                              &extCommRouteTargetIpv4AddressFactory,
                              "Routing::Bgp::BgpParseExtComSubTypeTransIpv4AddressRouteTargetRule">;
using BgpParseExtComSubTypeTransFourOctetAsRouteTargetRule = BgpParseExtCommKindSubRule<
   BgpParseExtComSubTypeTransFourOctetAsRuleBase, extCommPktSubtypeTransFourOctetAsRouteTarget,
   &extCommRouteTargetAsFactory,
   "Routing::Bgp::BgpParseExtComSubTypeTransFourOctetAsRouteTargetRule", true>;
///@}

/// The route target plug-in: installs the route target sub-rules in every parser and type rule it is told of.
class QORBGP_EXPORT BgpParseExtCommRouteTargetSm : public BgpParseExtCommPluginBaseSm {
 public:
   KIV_POINTER_TYPES(BgpParseExtCommRouteTargetSm);

   /// Observes the registry and equips every type rule announced so far.
   explicit BgpParseExtCommRouteTargetSm(RuleCollectionsPtrConst const& ruleCollections);
   ~BgpParseExtCommRouteTargetSm() override;
   std::string_view fwkType() const noexcept override;

   void instantiateExtCommSubTypeTransTwoOctetAsSubRule(
      BgpParseExtCommSubTypeTransTwoOctetAsRuleKey const& key,
      BgpParseExtCommControl const& control) const override;
   void instantiateExtCommSubTypeTransIpv4AddressSubRule(
      BgpParseExtCommSubTypeTransIpv4AddressRuleKey const& key,
      BgpParseExtCommControl const& control) const override;
   void instantiateExtCommSubTypeTransFourOctetAsSubRule(
      BgpParseExtCommSubTypeTransFourOctetAsRuleKey const& key,
      BgpParseExtCommControl const& control) const override;
};

/// A new plug-in observing `ruleCollections`, notification active.
///@{
QORBGP_EXPORT BgpParseExtCommRouteTargetSm::Ptr BgpParseExtCommRouteTargetSmIs(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections);
QORBGP_EXPORT BgpParseExtCommPluginBaseSm::Ptr bgpParseExtCommRouteTargetSmFactory(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections);
///@}

} // namespace Routing::Bgp
