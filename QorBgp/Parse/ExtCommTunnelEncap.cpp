#include "QorBgpCommunity/QorBgp/Parse/ExtCommTunnelEncap.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityKinds.h"

namespace Routing::Bgp {

namespace {

constexpr std::string_view unknownTunnelType = "tunnelTypeUnknown";

} // namespace

ExtCommTunnelEncap::ExtCommTunnelEncap(ExtCommContent const& content) noexcept
    : ExtCommSubtyped(extCommClassificationTunnelEncap, content) {}

ExtCommTunnelEncap::~ExtCommTunnelEncap() = default;

std::string_view ExtCommTunnelEncap::fwkType() const noexcept {
   return "Routing::Bgp::ExtCommTunnelEncap";
}

TunnelType ExtCommTunnelEncap::tunnelType() const noexcept {
   return static_cast<TunnelType>(static_cast<U16>(getContent().word()));
}

void ExtCommTunnelEncap::formatDerivedType(std::ostream& os) const {
   TunnelType type = tunnelType();
   Kiv::DynamicBuffer<detail::kindTextCapacity> buffer;
   buffer.append("TunnelEncap ");
   buffer.appendDecimal(type);
   buffer.append(':');
   if (bgpIsValidEnumMember(type)) {
      buffer.append(stringValue(type));
   } else {
      buffer.append(unknownTunnelType);
   }
   detail::writeDiagnostic(os, buffer.view(), getContent());
}

std::string ExtCommTunnelEncap::toStrepForPolicy(StrepFormat format) const {
   TunnelType type = tunnelType();
   Kiv::DynamicBuffer<detail::kindTextCapacity> buffer;
   if (format.strepFormatClassification()) {
      buffer.append("TunnelEncap:");
   }
   if (bgpIsValidEnumMember(type)) {
      buffer.append(stringValue(type));
   } else {
      buffer.append(unknownTunnelType);
      buffer.append('-');
      buffer.appendDecimal(type);
   }
   return buffer.str();
}

ExtCommTunnelEncap::Ptr extCommTunnelEncapFactory(ExtCommContent const& content) {
   return Kiv::newNotifying<ExtCommTunnelEncap>(content);
}

BgpParseExtCommTunnelEncapSm::BgpParseExtCommTunnelEncapSm(
   RuleCollectionsPtrConst const& ruleCollections)
    : BgpParseExtCommPluginBaseSm(ruleCollections) {
   handleStartup();
}

BgpParseExtCommTunnelEncapSm::~BgpParseExtCommTunnelEncapSm() = default;

std::string_view BgpParseExtCommTunnelEncapSm::fwkType() const noexcept {
   return "Routing::Bgp::BgpParseExtCommTunnelEncapSm";
}

void BgpParseExtCommTunnelEncapSm::instantiateExtCommSubTypeTransOpaqueSubRule(
   BgpParseExtCommSubTypeTransOpaqueRuleKey const& key,
   BgpParseExtCommControl const& control) const {
   QORBGP_PLUGIN_HOOK_TRACE(
      "BgpParseExtCommTunnelEncapSm::instantiateExtCommSubTypeTransOpaqueSubRule");
   addExtCommSubTypeTransOpaqueSubRule(
      key, newSubRule<BgpParseExtComSubTypeTransOpaqueTunnelEncapRule>(control));
}

BgpParseExtCommTunnelEncapSm::Ptr BgpParseExtCommTunnelEncapSmIs(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections) {
   return Kiv::newNotifying<BgpParseExtCommTunnelEncapSm>(ruleCollections);
}

BgpParseExtCommPluginBaseSm::Ptr bgpParseExtCommTunnelEncapSmFactory(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections) {
   return BgpParseExtCommTunnelEncapSmIs(ruleCollections);
}

} // namespace Routing::Bgp
