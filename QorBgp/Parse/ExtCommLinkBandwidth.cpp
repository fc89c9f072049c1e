#include "QorBgpCommunity/QorBgp/Parse/ExtCommLinkBandwidth.h"

#include "QorBgpCommunity/platform/Assert.h"

#include <bit>
#include <charconv>

namespace Routing::Bgp {

QOR_ASSERT_UNIT("ExtCommLinkBandwidth");

namespace {

// What a fresh std::ostream writes for a double: %g, six significant digits.
constexpr int defaultStreamPrecision = 6;
// "-1.23457e+308" and the like: 13 characters at most.
constexpr std::size_t defaultNotationCapacity = 32;

float bandwidthOf(ExtCommContent const& content) {
   return std::bit_cast<float>(static_cast<U32>(content.word()));
}

void appendDefaultNotation(Kiv::DynamicBufferInterface& buffer, float value) {
   char text[defaultNotationCapacity];
   auto [end, ec] = std::to_chars(text, text + sizeof text, static_cast<double>(value),
                                  std::chars_format::general, defaultStreamPrecision);
   (void)ec; // always fits: see defaultNotationCapacity
   buffer.append(std::string_view(text, static_cast<std::size_t>(end - text)));
}

} // namespace

ExtCommLinkBandwidth::ExtCommLinkBandwidth(ExtCommContent const& content) noexcept
    : ExtCommAsNumber(extCommClassificationLinkBandwidth, content, false) {}

ExtCommLinkBandwidth::~ExtCommLinkBandwidth() = default;

std::string_view ExtCommLinkBandwidth::fwkType() const noexcept {
   return "Routing::Bgp::ExtCommLinkBandwidth";
}

Rib::LinkBandwidth ExtCommLinkBandwidth::bandwidth() const noexcept {
   return Rib::LinkBandwidth(bandwidthOf(getContent()));
}

bool ExtCommLinkBandwidth::isLinkBandwidthWithUnspecifiedAsNumber() const noexcept {
   return asNumber() == 0;
}

bool ExtCommLinkBandwidth::isValid() const noexcept { return bandwidth().isValid(); }

bool ExtCommLinkBandwidth::isBetterThan(ExtComm::PtrConst const& other) const noexcept {
   QOR_ASSERT(other);
   return bandwidthOf(other->getContent()) > bandwidthOf(getContent());
}

void ExtCommLinkBandwidth::formatDerivedType(std::ostream& os) const {
   Kiv::DynamicBuffer<detail::kindTextCapacity> buffer;
   buffer.append("LinkBandwidth ");
   appendAsNumber(buffer, false);
   buffer.append(':');
   appendDefaultNotation(buffer, bandwidthOf(getContent()));
   detail::writeDiagnostic(os, buffer.view(), getContent());
}

std::string ExtCommLinkBandwidth::toStrepForPolicy(StrepFormat format) const {
   Kiv::DynamicBuffer<detail::kindTextCapacity> buffer;
   bool ui = format.strepFormatClassification() && format.strepFormatUI();
   if (ui) {
      buffer.append("Link-Bandwidth-AS:");
   } else if (format.strepFormatClassification()) {
      buffer.append("lbw ");
   }
   appendAsNumber(buffer, format.strepFormatAsdot());
   buffer.append(':');
   if (ui) {
      buffer.append(bandwidth().toStrep(format.strepFormatLinkBwWeighted()));
   } else {
      appendDefaultNotation(buffer, bandwidthOf(getContent()));
   }
   return buffer.str();
}

ExtCommLinkBandwidth::Ptr extCommLinkBandwidthFactory(ExtCommContent const& content) {
   return Kiv::newNotifying<ExtCommLinkBandwidth>(content);
}

BgpParseExtCommLinkBandwidthSm::BgpParseExtCommLinkBandwidthSm(
   RuleCollectionsPtrConst const& ruleCollections)
    : BgpParseExtCommPluginBaseSm(ruleCollections) {
   handleStartup();
}

BgpParseExtCommLinkBandwidthSm::~BgpParseExtCommLinkBandwidthSm() = default;

std::string_view BgpParseExtCommLinkBandwidthSm::fwkType() const noexcept {
   return "Routing::Bgp::BgpParseExtCommLinkBandwidthSm";
}

void BgpParseExtCommLinkBandwidthSm::instantiateExtCommSubTypeNonTransTwoOctetAsSubRule(
   BgpParseExtCommSubTypeNonTransTwoOctetAsRuleKey const& key,
   BgpParseExtCommControl const& control) const {
   QORBGP_PLUGIN_HOOK_TRACE(
      "BgpParseExtCommLinkBandwidthSm::instantiateExtCommSubTypeNonTransTwoOctetAsSubRule");
   addExtCommSubTypeNonTransTwoOctetAsSubRule(
      key, newSubRule<BgpParseExtComSubTypeNonTransTwoOctetAsLinkBandwidthRule>(control));
}

BgpParseExtCommLinkBandwidthSm::Ptr BgpParseExtCommLinkBandwidthSmIs(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections) {
   return Kiv::newNotifying<BgpParseExtCommLinkBandwidthSm>(ruleCollections);
}

BgpParseExtCommPluginBaseSm::Ptr bgpParseExtCommLinkBandwidthSmFactory(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections) {
   return BgpParseExtCommLinkBandwidthSmIs(ruleCollections);
}

} // namespace Routing::Bgp
