/// @file
/// Route-origin (site-of-origin) extended communities (RFC 4360 subtype
/// 0x03): the AS-number form under the transitive two- and four-octet-AS types
/// and the IPv4-address form under the transitive IPv4-address type. Provider
/// edges compare them to keep a route from going back into the site it came
/// from.
///
/// Immutable once built, owned through shared pointers, readable from any
/// thread.
///
/// @code{.cpp}
///   auto soo = extCommRouteOriginAsFactory(ExtCommContent(0x0003fde800000064), false);
///   soo->toStrep();      // "<RouteOrigin2ByteASN 65000:100 0x0003fde800000064>"
///   soo->toStrepForUI(false, false, false);          // "Route-Origin-AS:65000:100"
///   soo->toStrepForPolicy(ExtComm::StrepFormat(2));  // "SoO:65000:100"
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

/// A route origin with an AS number as global administrator. Classification
/// extCommClassificationRouteOrigin.
class QORBGP_EXPORT ExtCommRouteOriginAs : public ExtCommAsNumber {
 public:
   KIV_POINTER_TYPES(ExtCommRouteOriginAs);

   /// `fourByteAs` selects the layout (see ExtCommAsNumber); the type octet is
   /// expected to be 0x00 (false) or 0x02 (true).
   ExtCommRouteOriginAs(ExtCommContent const& content, bool fourByteAs) noexcept;
   std::string_view fwkType() const noexcept override;
   ~ExtCommRouteOriginAs() override;

   /// "<RouteOrigin2ByteASN 65000:100 0x0003fde800000064>", or
   /// "RouteOrigin4ByteASN" for type 0x02; a value of any other type is a
   /// broken invariant (fatal "0 && \"unexpected type\"").
   void formatDerivedType(std::ostream& os) const override;
   /// "SoO:" with flagClassification alone, "Route-Origin-AS:" (four-octet:
   /// "Route-Origin-AS4:") with flagUI too, no prefix without
   /// flagClassification; then AS (asdot when flagAsdot) ":" local admin.
   std::string toStrepForPolicy(StrepFormat format) const override;
};

/// A route origin with an IPv4 address as global administrator.
/// Classification extCommClassificationRouteOrigin.
class QORBGP_EXPORT ExtCommRouteOriginIpv4Address : public ExtCommIpv4Address {
 public:
   KIV_POINTER_TYPES(ExtCommRouteOriginIpv4Address);

   explicit ExtCommRouteOriginIpv4Address(ExtCommContent const& content) noexcept;
   std::string_view fwkType() const noexcept override;
   ~ExtCommRouteOriginIpv4Address() override;

   /// "<RouteOrigin 192.0.2.1:100 0x0103c00002010064>".
   void formatDerivedType(std::ostream& os) const override;
   /// "SoO:", "Route-Origin-IP:" or no prefix as for ExtCommRouteOriginAs, then
   /// address ":" local admin.
   std::string toStrepForPolicy(StrepFormat format) const override;
};

/// New objects with notification enabled.
///@{
QORBGP_EXPORT ExtCommRouteOriginAs::Ptr extCommRouteOriginAsFactory(ExtCommContent const& content,
                                                                    bool fourByteAs);
QORBGP_EXPORT ExtCommRouteOriginIpv4Address::Ptr
extCommRouteOriginIpv4AddressFactory(ExtCommContent const& content);
///@}

/// Recognition of route origins (site of origin) under the three transitive AS and IPv4-address
/// types, subtype 0x03.
///@{
using BgpParseExtComSubTypeTransTwoOctetAsRouteOriginRule = BgpParseExtCommKindSubRule<
   BgpParseExtComSubTypeTransTwoOctetAsRuleBase, extCommPktSubtypeTransTwoOctetAsRouteOrigin,
   &extCommRouteOriginAsFactory,
   "Routing::Bgp::BgpParseExtComSubTypeTransTwoOctetAsRouteOriginRule", false>;
using BgpParseExtComSubTypeTransIpv4AddressRouteOriginRule =
   BgpParseExtCommKindSubRule<BgpParseExtComSubTypeTransIpv4AddressRuleBase,
                              extCommPktSubtypeTransIpv4AddressRouteOrigin,
                              &extCommRouteOriginIpv4AddressFactory,
                              "Routing::Bgp::BgpParseExtComSubTypeTransIpv4AddressRouteOriginRule">;
using BgpParseExtComSubTypeTransFourOctetAsRouteOriginRule = BgpParseExtCommKindSubRule<
   BgpParseExtComSubTypeTransFourOctetAsRuleBase, extCommPktSubtypeTransFourOctetAsRouteOrigin,
   &extCommRouteOriginAsFactory,
   "Routing::Bgp::BgpParseExtComSubTypeTransFourOctetAsRouteOriginRule", true>;
///@}

/// The route origin plug-in: installs the route origin sub-rules in every parser and type rule it is told of.
class QORBGP_EXPORT BgpParseExtCommRouteOriginSm : public BgpParseExtCommPluginBaseSm {
 public:
   KIV_POINTER_TYPES(BgpParseExtCommRouteOriginSm);

   /// Observes the registry and equips every type rule announced so far.
   explicit BgpParseExtCommRouteOriginSm(RuleCollectionsPtrConst const& ruleCollections);
   ~BgpParseExtCommRouteOriginSm() override;
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
QORBGP_EXPORT BgpParseExtCommRouteOriginSm::Ptr BgpParseExtCommRouteOriginSmIs(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections);
QORBGP_EXPORT BgpParseExtCommPluginBaseSm::Ptr bgpParseExtCommRouteOriginSmFactory(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections);
///@}

} // namespace Routing::Bgp
