#include "QorBgpCommunity/QorBgp/Parse/ExtCommDefaultGateway.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityKinds.h"

namespace Routing::Bgp {

namespace {

constexpr std::string_view defaultGatewayText = "DefaultGateway";

} // namespace

ExtCommDefaultGateway::ExtCommDefaultGateway(ExtCommContent const& content) noexcept
    : ExtCommSubtyped(extCommClassificationDefaultGateway, content) {}

ExtCommDefaultGateway::~ExtCommDefaultGateway() = default;

std::string_view ExtCommDefaultGateway::fwkType() const noexcept {
   return "Routing::Bgp::ExtCommDefaultGateway";
}

void ExtCommDefaultGateway::formatDerivedType(std::ostream& os) const {
   detail::writeDiagnostic(os, defaultGatewayText, getContent());
}

std::string ExtCommDefaultGateway::toStrepForPolicy(StrepFormat) const {
   return std::string(defaultGatewayText);
}

ExtCommDefaultGateway::Ptr extCommDefaultGatewayFactory(ExtCommContent const& content) {
   return Kiv::newNotifying<ExtCommDefaultGateway>(content);
}

BgpParseExtCommDefaultGatewaySm::BgpParseExtCommDefaultGatewaySm(
   RuleCollectionsPtrConst const& ruleCollections)
    : BgpParseExtCommPluginBaseSm(ruleCollections) {
   handleStartup();
}

BgpParseExtCommDefaultGatewaySm::~BgpParseExtCommDefaultGatewaySm() = default;

std::string_view BgpParseExtCommDefaultGatewaySm::fwkType() const noexcept {
   return "Routing::Bgp::BgpParseExtCommDefaultGatewaySm";
}

void BgpParseExtCommDefaultGatewaySm::instantiateExtCommSubTypeTransOpaqueSubRule(
   BgpParseExtCommSubTypeTransOpaqueRuleKey const& key,
   BgpParseExtCommControl const& control) const {
   QORBGP_PLUGIN_HOOK_TRACE(
      "BgpParseExtCommDefaultGatewaySm::instantiateExtCommSubTypeTransOpaqueSubRule");
   addExtCommSubTypeTransOpaqueSubRule(
      key, newSubRule<BgpParseExtComSubTypeTransOpaqueDefaultGatewayRule>(control));
}

BgpParseExtCommDefaultGatewaySm::Ptr BgpParseExtCommDefaultGatewaySmIs(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections) {
   return Kiv::newNotifying<BgpParseExtCommDefaultGatewaySm>(ruleCollections);
}

BgpParseExtCommPluginBaseSm::Ptr bgpParseExtCommDefaultGatewaySmFactory(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections) {
   return BgpParseExtCommDefaultGatewaySmIs(ruleCollections);
}

} // namespace Routing::Bgp
