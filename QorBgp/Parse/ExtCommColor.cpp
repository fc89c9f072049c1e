#include "QorBgpCommunity/QorBgp/Parse/ExtCommColor.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityKinds.h"

namespace Routing::Bgp {

namespace {

constexpr unsigned colorOnlyShift = 46;

void appendColorOnlyBits(Kiv::DynamicBufferInterface& buffer, U8 bits) {
   buffer.append((bits & 2) ? '1' : '0');
   buffer.append((bits & 1) ? '1' : '0');
}

} // namespace

ExtCommColor::ExtCommColor(ExtCommContent const& content) noexcept
    : ExtCommSubtyped(extCommClassificationColor, content) {}

ExtCommColor::~ExtCommColor() = default;

std::string_view ExtCommColor::fwkType() const noexcept { return "Routing::Bgp::ExtCommColor"; }

U8 ExtCommColor::colorOnlyBits() const noexcept {
   return static_cast<U8>((getContent().word() >> colorOnlyShift) & 3);
}

U32 ExtCommColor::colorValue() const noexcept { return static_cast<U32>(getContent().word()); }

void ExtCommColor::formatDerivedType(std::ostream& os) const {
   Kiv::DynamicBuffer<detail::kindTextCapacity> buffer;
   buffer.append("Color: ");
   buffer.appendDecimal(colorValue());
   buffer.append('(');
   appendColorOnlyBits(buffer, colorOnlyBits());
   buffer.append(')');
   detail::writeDiagnostic(os, buffer.view(), getContent());
}

std::string ExtCommColor::toStrepForPolicy(StrepFormat) const {
   Kiv::DynamicBuffer<detail::kindTextCapacity> buffer;
   buffer.append("Color:CO(");
   appendColorOnlyBits(buffer, colorOnlyBits());
   buffer.append("):");
   buffer.appendDecimal(colorValue());
   return buffer.str();
}

ExtCommColor::Ptr extCommColorFactory(ExtCommContent const& content) {
   return Kiv::newNotifying<ExtCommColor>(content);
}

BgpParseExtCommColorSm::BgpParseExtCommColorSm(RuleCollectionsPtrConst const& ruleCollections)
    : BgpParseExtCommPluginBaseSm(ruleCollections) {
   handleStartup();
}

BgpParseExtCommColorSm::~BgpParseExtCommColorSm() = default;

std::string_view BgpParseExtCommColorSm::fwkType() const noexcept {
   return "Routing::Bgp::BgpParseExtCommColorSm";
}

void BgpParseExtCommColorSm::instantiateExtCommSubTypeTransOpaqueSubRule(
   BgpParseExtCommSubTypeTransOpaqueRuleKey const& key,
   BgpParseExtCommControl const& control) const {
   QORBGP_PLUGIN_HOOK_TRACE("BgpParseExtCommColorSm::instantiateExtCommSubTypeTransOpaqueSubRule");
   addExtCommSubTypeTransOpaqueSubRule(
      key, newSubRule<BgpParseExtComSubTypeTransOpaqueColorRule>(control));
}

BgpParseExtCommColorSm::Ptr BgpParseExtCommColorSmIs(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections) {
   return Kiv::newNotifying<BgpParseExtCommColorSm>(ruleCollections);
}

BgpParseExtCommPluginBaseSm::Ptr bgpParseExtCommColorSmFactory(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections) {
   return BgpParseExtCommColorSmIs(ruleCollections);
}

} // namespace Routing::Bgp
