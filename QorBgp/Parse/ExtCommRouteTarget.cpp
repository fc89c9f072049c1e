#include "QorBgpCommunity/QorBgp/Parse/ExtCommRouteTarget.h"

namespace Routing::Bgp {

namespace {

constexpr ExtCommAdminPairWords routeTargetWords{"RT:", "Route-Target", "RouteTarget"};

} // namespace

ExtCommRouteTargetAs::ExtCommRouteTargetAs(ExtCommContent const& content, bool fourByteAs) noexcept
    : ExtCommAsNumber(extCommClassificationRouteTarget, content, fourByteAs) {}

ExtCommRouteTargetAs::~ExtCommRouteTargetAs() = default;

std::string_view ExtCommRouteTargetAs::fwkType() const noexcept {
   return "Routing::Bgp::ExtCommRouteTargetAs";
}

void ExtCommRouteTargetAs::formatDerivedType(std::ostream& os) const {
   formatAdminPairDerivedType(os, routeTargetWords);
}

std::string ExtCommRouteTargetAs::toStrepForPolicy(StrepFormat format) const {
   return adminPairStrepForPolicy(format, routeTargetWords);
}

ExtCommRouteTargetIpv4Address::ExtCommRouteTargetIpv4Address(ExtCommContent const& content) noexcept
    : ExtCommIpv4Address(extCommClassificationRouteTarget, content) {}

ExtCommRouteTargetIpv4Address::~ExtCommRouteTargetIpv4Address() = default;

std::string_view ExtCommRouteTargetIpv4Address::fwkType() const noexcept {
   return "Routing::Bgp::ExtCommRouteTargetIpv4Address";
}

void ExtCommRouteTargetIpv4Address::formatDerivedType(std::ostream& os) const {
   formatAdminPairDerivedType(os, routeTargetWords);
}

std::string ExtCommRouteTargetIpv4Address::toStrepForPolicy(StrepFormat format) const {
   return adminPairStrepForPolicy(format, routeTargetWords);
}

ExtCommRouteTargetAs::Ptr extCommRouteTargetAsFactory(ExtCommContent const& content,
                                                      bool fourByteAs) {
   return Kiv::newNotifying<ExtCommRouteTargetAs>(content, fourByteAs);
}

ExtCommRouteTargetIpv4Address::Ptr
extCommRouteTargetIpv4AddressFactory(ExtCommContent const& content) {
   return Kiv::newNotifying<ExtCommRouteTargetIpv4Address>(content);
}

BgpParseExtCommRouteTargetSm::BgpParseExtCommRouteTargetSm(
   RuleCollectionsPtrConst const& ruleCollections)
    : BgpParseExtCommPluginBaseSm(ruleCollections) {
   handleStartup();
}

BgpParseExtCommRouteTargetSm::~BgpParseExtCommRouteTargetSm() = default;

std::string_view BgpParseExtCommRouteTargetSm::fwkType() const noexcept {
   return "Routing::Bgp::BgpParseExtCommRouteTargetSm";
}

void BgpParseExtCommRouteTargetSm::instantiateExtCommSubTypeTransTwoOctetAsSubRule(
   BgpParseExtCommSubTypeTransTwoOctetAsRuleKey const& key,
   BgpParseExtCommControl const& control) const {
   QORBGP_PLUGIN_HOOK_TRACE(
      "BgpParseExtCommRouteTargetSm::instantiateExtCommSubTypeTransTwoOctetAsSubRule");
   addExtCommSubTypeTransTwoOctetAsSubRule(
      key, newSubRule<BgpParseExtComSubTypeTransTwoOctetAsRouteTargetRule>(control));
}

void BgpParseExtCommRouteTargetSm::instantiateExtCommSubTypeTransIpv4AddressSubRule(
   BgpParseExtCommSubTypeTransIpv4AddressRuleKey const& key,
   BgpParseExtCommControl const& control) const {
   QORBGP_PLUGIN_HOOK_TRACE(
      "BgpParseExtCommRouteTargetSm::instantiateExtCommSubTypeTransIpv4AddressSubRule");
   addExtCommSubTypeTransIpv4AddressSubRule(
      key, newSubRule<BgpParseExtComSubTypeTransIpv4AddressRouteTargetRule>(control));
}

void BgpParseExtCommRouteTargetSm::instantiateExtCommSubTypeTransFourOctetAsSubRule(
   BgpParseExtCommSubTypeTransFourOctetAsRuleKey const& key,
   BgpParseExtCommControl const& control) const {
   QORBGP_PLUGIN_HOOK_TRACE(
      "BgpParseExtCommRouteTargetSm::instantiateExtCommSubTypeTransFourOctetAsSubRule");
   addExtCommSubTypeTransFourOctetAsSubRule(
      key, newSubRule<BgpParseExtComSubTypeTransFourOctetAsRouteTargetRule>(control));
}

BgpParseExtCommRouteTargetSm::Ptr BgpParseExtCommRouteTargetSmIs(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections) {
   return Kiv::newNotifying<BgpParseExtCommRouteTargetSm>(ruleCollections);
}

BgpParseExtCommPluginBaseSm::Ptr bgpParseExtCommRouteTargetSmFactory(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections) {
   return BgpParseExtCommRouteTargetSmIs(ruleCollections);
}

} // namespace Routing::Bgp
