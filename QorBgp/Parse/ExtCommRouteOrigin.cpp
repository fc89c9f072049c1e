#include "QorBgpCommunity/QorBgp/Parse/ExtCommRouteOrigin.h"

namespace Routing::Bgp {

namespace {

constexpr ExtCommAdminPairWords routeOriginWords{"SoO:", "Route-Origin", "RouteOrigin"};

} // namespace

ExtCommRouteOriginAs::ExtCommRouteOriginAs(ExtCommContent const& content, bool fourByteAs) noexcept
    : ExtCommAsNumber(extCommClassificationRouteOrigin, content, fourByteAs) {}

ExtCommRouteOriginAs::~ExtCommRouteOriginAs() = default;

std::string_view ExtCommRouteOriginAs::fwkType() const noexcept {
   return "Routing::Bgp::ExtCommRouteOriginAs";
}

void ExtCommRouteOriginAs::formatDerivedType(std::ostream& os) const {
   formatAdminPairDerivedType(os, routeOriginWords);
}

std::string ExtCommRouteOriginAs::toStrepForPolicy(StrepFormat format) const {
   return adminPairStrepForPolicy(format, routeOriginWords);
}

ExtCommRouteOriginIpv4Address::ExtCommRouteOriginIpv4Address(ExtCommContent const& content) noexcept
    : ExtCommIpv4Address(extCommClassificationRouteOrigin, content) {}

ExtCommRouteOriginIpv4Address::~ExtCommRouteOriginIpv4Address() = default;

std::string_view ExtCommRouteOriginIpv4Address::fwkType() const noexcept {
   return "Routing::Bgp::ExtCommRouteOriginIpv4Address";
}

void ExtCommRouteOriginIpv4Address::formatDerivedType(std::ostream& os) const {
   formatAdminPairDerivedType(os, routeOriginWords);
}

std::string ExtCommRouteOriginIpv4Address::toStrepForPolicy(StrepFormat format) const {
   return adminPairStrepForPolicy(format, routeOriginWords);
}

ExtCommRouteOriginAs::Ptr extCommRouteOriginAsFactory(ExtCommContent const& content,
                                                      bool fourByteAs) {
   return Kiv::newNotifying<ExtCommRouteOriginAs>(content, fourByteAs);
}

ExtCommRouteOriginIpv4Address::Ptr
extCommRouteOriginIpv4AddressFactory(ExtCommContent const& content) {
   return Kiv::newNotifying<ExtCommRouteOriginIpv4Address>(content);
}

BgpParseExtCommRouteOriginSm::BgpParseExtCommRouteOriginSm(
   RuleCollectionsPtrConst const& ruleCollections)
    : BgpParseExtCommPluginBaseSm(ruleCollections) {
   handleStartup();
}

BgpParseExtCommRouteOriginSm::~BgpParseExtCommRouteOriginSm() = default;

std::string_view BgpParseExtCommRouteOriginSm::fwkType() const noexcept {
   return "Routing::Bgp::BgpParseExtCommRouteOriginSm";
}

void BgpParseExtCommRouteOriginSm::instantiateExtCommSubTypeTransTwoOctetAsSubRule(
   BgpParseExtCommSubTypeTransTwoOctetAsRuleKey const& key,
   BgpParseExtCommControl const& control) const {
   QORBGP_PLUGIN_HOOK_TRACE(
      "BgpParseExtCommRouteOriginSm::instantiateExtCommSubTypeTransTwoOctetAsSubRule");
   addExtCommSubTypeTransTwoOctetAsSubRule(
      key, newSubRule<BgpParseExtComSubTypeTransTwoOctetAsRouteOriginRule>(control));
}

void BgpParseExtCommRouteOriginSm::instantiateExtCommSubTypeTransIpv4AddressSubRule(
   BgpParseExtCommSubTypeTransIpv4AddressRuleKey const& key,
   BgpParseExtCommControl const& control) const {
   QORBGP_PLUGIN_HOOK_TRACE(
      "BgpParseExtCommRouteOriginSm::instantiateExtCommSubTypeTransIpv4AddressSubRule");
   addExtCommSubTypeTransIpv4AddressSubRule(
      key, newSubRule<BgpParseExtComSubTypeTransIpv4AddressRouteOriginRule>(control));
}

void BgpParseExtCommRouteOriginSm::instantiateExtCommSubTypeTransFourOctetAsSubRule(
   BgpParseExtCommSubTypeTransFourOctetAsRuleKey const& key,
   BgpParseExtCommControl const& control) const {
   QORBGP_PLUGIN_HOOK_TRACE(
      "BgpParseExtCommRouteOriginSm::instantiateExtCommSubTypeTransFourOctetAsSubRule");
   addExtCommSubTypeTransFourOctetAsSubRule(
      key, newSubRule<BgpParseExtComSubTypeTransFourOctetAsRouteOriginRule>(control));
}

BgpParseExtCommRouteOriginSm::Ptr BgpParseExtCommRouteOriginSmIs(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections) {
   return Kiv::newNotifying<BgpParseExtCommRouteOriginSm>(ruleCollections);
}

BgpParseExtCommPluginBaseSm::Ptr bgpParseExtCommRouteOriginSmFactory(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections) {
   return BgpParseExtCommRouteOriginSmIs(ruleCollections);
}

} // namespace Routing::Bgp
