#include "QorBgpCommunity/QorBgp/Parse/ExtCommContainer.h"

#include "QorBgpCommunity/QorBgp/Parse/ExtCommColor.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommDefaultGateway.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommLinkBandwidth.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommOriginValidationState.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommRouteOrigin.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommRouteTarget.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommTunnelEncap.h"

namespace Routing::Bgp {

BgpParseExtCommContainerSm::BgpParseExtCommContainerSm() { handleInitialized(); }

// The queue goes first, then the parser and the registry (member order).
BgpParseExtCommContainerSm::~BgpParseExtCommContainerSm() { extCommParserSms_.clear(); }

std::string_view BgpParseExtCommContainerSm::fwkType() const noexcept {
   return "Routing::Bgp::BgpParseExtCommContainerSm";
}

void BgpParseExtCommContainerSm::handleInitialized() {
   parseExtCommRuleCollectionsIs();
   auto const& registry = parseExtCommRuleCollections_;
   extCommParserSmsEnq(BgpParseExtCommRouteOriginSmIs(registry));
   extCommParserSmsEnq(BgpParseExtCommRouteTargetSmIs(registry));
   extCommParserSmsEnq(BgpParseExtCommTunnelEncapSmIs(registry));
   extCommParserSmsEnq(BgpParseExtCommDefaultGatewaySmIs(registry));
   extCommParserSmsEnq(BgpParseExtCommLinkBandwidthSmIs(registry));
   extCommParserSmsEnq(BgpParseExtCommColorSmIs(registry));
   extCommParserSmsEnq(BgpParseExtCommOriginValidationStateSmIs(registry));
   extCommParserIs(BgpParseExtCommControl(registry));
}

void BgpParseExtCommContainerSm::parseExtCommRuleCollectionsIs() {
   parseExtCommRuleCollections_ = bgpParseExtCommRuleCollectionsFactory();
}

void BgpParseExtCommContainerSm::extCommParserIs(BgpParseExtCommControl const& control) {
   if (extCommParser_ && extCommParser_->parseControl() == control) {
      return;
   }
   extCommParser_ = bgpParseExtendedCommunityRuleFactory(control);
}

U32 BgpParseExtCommContainerSm::extCommParserSmsEnq(PluginPtrConst const& plugin) {
   U32 position = extCommParserSms_.empty() ? metadata_.tail
                                            : std::prev(extCommParserSms_.end())->first + 1;
   extCommParserSmsIs(position, plugin);
   return position;
}

void BgpParseExtCommContainerSm::extCommParserSmsDeq() {
   if (!extCommParserSms_.empty()) {
      extCommParserSmsDel(extCommParserSms_.begin()->first);
   }
}

void BgpParseExtCommContainerSm::extCommParserSmsIs(U32 position, PluginPtrConst const& plugin) {
   if (!plugin) {
      throw Kiv::NullArgumentError("BgpParseExtCommContainerSm::extCommParserSmsIs: null plug-in");
   }
   extCommParserSms_.set(position, plugin);
   metadataAfterChange();
}

void BgpParseExtCommContainerSm::extCommParserSmsDel(U32 position) {
   extCommParserSms_.erase(position);
   metadataAfterChange();
}

void BgpParseExtCommContainerSm::extCommParserSmsDelAll() {
   extCommParserSms_.clear();
   metadataAfterChange();
}

// An empty queue keeps its tail, so positions are not handed out twice.
void BgpParseExtCommContainerSm::metadataAfterChange() noexcept {
   if (extCommParserSms_.empty()) {
      metadata_.head = metadata_.tail;
      return;
   }
   metadata_.head = extCommParserSms_.begin()->first;
   metadata_.tail = std::max(metadata_.tail, std::prev(extCommParserSms_.end())->first + 1);
}

BgpParseExtCommContainerSm::Ptr bgpParseExtCommContainerSmFactory() {
   return Kiv::newNotifying<BgpParseExtCommContainerSm>();
}

} // namespace Routing::Bgp
