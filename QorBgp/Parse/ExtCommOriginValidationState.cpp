#include "QorBgpCommunity/QorBgp/Parse/ExtCommOriginValidationState.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityKinds.h"

namespace Routing::Bgp {

namespace {

// Type 0x43 (non-transitive opaque), subtype 0x00, state octet 0.
constexpr U64 originValidationStateWord = 0x4300000000000000;

// The name of a state, or an empty view for an octet that is none.
std::string_view stateName(OriginValidationState state) {
   switch (state) {
   case OriginValidationState::valid:
      return "valid";
   case OriginValidationState::notFound:
      return "not-found";
   case OriginValidationState::invalid:
      return "invalid";
   }
   return {};
}

} // namespace

ExtCommOriginValidationState::ExtCommOriginValidationState(ExtCommContent const& content) noexcept
    : ExtCommSubtyped(extCommClassificationOriginValidationState, content) {}

ExtCommOriginValidationState::~ExtCommOriginValidationState() = default;

std::string_view ExtCommOriginValidationState::fwkType() const noexcept {
   return "Routing::Bgp::ExtCommOriginValidationState";
}

OriginValidationState ExtCommOriginValidationState::validationState() const noexcept {
   return static_cast<OriginValidationState>(static_cast<U8>(getContent().word()));
}

ExtCommContent
ExtCommOriginValidationState::buildExtCommContent(OriginValidationState state) noexcept {
   return ExtCommContent(originValidationStateWord | static_cast<U8>(state));
}

void ExtCommOriginValidationState::formatDerivedType(std::ostream& os) const {
   OriginValidationState state = validationState();
   std::string_view name = stateName(state);
   Kiv::DynamicBuffer<detail::kindTextCapacity> buffer;
   buffer.append("OriginValidationState ");
   if (!name.empty()) {
      buffer.append(name);
   } else {
      buffer.append("unknown(");
      buffer.appendDecimal(static_cast<U8>(state));
      buffer.append(')');
   }
   detail::writeDiagnostic(os, buffer.view(), getContent());
}

std::string ExtCommOriginValidationState::toStrepForPolicy(StrepFormat format) const {
   if (!format.strepFormatClassification() || !format.strepFormatUI()) {
      return {};
   }
   std::string_view name = stateName(validationState());
   std::string text = "Origin-Validation-State:";
   text += name.empty() ? "unknown" : name;
   return text;
}

ExtCommOriginValidationState::Ptr
extCommOriginValidationStateFactory(ExtCommContent const& content) {
   return Kiv::newNotifying<ExtCommOriginValidationState>(content);
}

BgpParseExtCommOriginValidationStateSm::BgpParseExtCommOriginValidationStateSm(
   RuleCollectionsPtrConst const& ruleCollections)
    : BgpParseExtCommPluginBaseSm(ruleCollections) {
   handleStartup();
}

BgpParseExtCommOriginValidationStateSm::~BgpParseExtCommOriginValidationStateSm() = default;

std::string_view BgpParseExtCommOriginValidationStateSm::fwkType() const noexcept {
   return "Routing::Bgp::BgpParseExtCommOriginValidationStateSm";
}

void BgpParseExtCommOriginValidationStateSm::instantiateExtCommSubTypeNonTransOpaqueSubRule(
   BgpParseExtCommSubTypeNonTransOpaqueRuleKey const& key,
   BgpParseExtCommControl const& control) const {
   QORBGP_PLUGIN_HOOK_TRACE(
      "BgpParseExtCommOriginValidationStateSm::instantiateExtCommSubTypeNonTransOpaqueSubRule");
   addExtCommSubTypeNonTransOpaqueSubRule(
      key, newSubRule<BgpParseExtComSubTypeNonTransOpaqueOriginValidationStateRule>(control));
}

BgpParseExtCommOriginValidationStateSm::Ptr BgpParseExtCommOriginValidationStateSmIs(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections) {
   return Kiv::newNotifying<BgpParseExtCommOriginValidationStateSm>(ruleCollections);
}

BgpParseExtCommPluginBaseSm::Ptr bgpParseExtCommOriginValidationStateSmFactory(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections) {
   return BgpParseExtCommOriginValidationStateSmIs(ruleCollections);
}

} // namespace Routing::Bgp
