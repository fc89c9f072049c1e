// The recognition framework's shared parts: rule controls and bases, the
// registry, and the plug-in base's handlers and installers.
#include "QorBgpCommunity/QorBgp/Parse/ExtComm.h"

#include <ostream>
#include <vector>

namespace Routing::Bgp {

QOR_ASSERT_UNIT("ExtComm");

BgpParseExtCommControl::BgpParseExtCommControl() noexcept = default;

BgpParseExtCommControl::BgpParseExtCommControl(
   Kiv::Ptr<BgpParseExtCommRuleCollections> ruleCollections) noexcept
    : ruleCollections_(std::move(ruleCollections)) {}

BgpParseExtCommControl::BgpParseExtCommControl(BgpParseExtCommControl const&) noexcept = default;
BgpParseExtCommControl&
BgpParseExtCommControl::operator=(BgpParseExtCommControl const&) noexcept = default;
BgpParseExtCommControl::~BgpParseExtCommControl() = default;

BgpParseExtCommRuleCollections* BgpParseExtCommControl::ruleCollections() const noexcept {
   return ruleCollections_.get();
}

std::string BgpParseExtCommControl::valueToStrep() const {
   return Kiv::pointerText(ruleCollections_.get());
}

std::ostream& operator<<(std::ostream& os, BgpParseExtCommControl const& control) {
   return os << control.valueToStrep();
}

BgpParseExtCommRuleBase::BgpParseExtCommRuleBase(BgpParseExtCommControl const& control) noexcept
    : parseControl_(control) {}

BgpParseExtCommRuleBase::~BgpParseExtCommRuleBase() = default;

BgpParseExtCommRuleCollections::Notifiee::~Notifiee() = default;
BgpParseExtCommRuleCollections::~BgpParseExtCommRuleCollections() = default;

BgpParseExtCommRuleCollections::Ptr bgpParseExtCommRuleCollectionsFactory() {
   return Kiv::newNotifying<BgpParseExtCommRuleCollections>();
}

// Forwards every change of the registry to the plug-in's keyed handler. It
// holds the registry, so the registry outlives every plug-in observing it.
class BgpParseExtCommPluginBaseSm::RegistryReactor final
    : public BgpParseExtCommRuleCollections::Notifiee {
 public:
   RegistryReactor(BgpParseExtCommPluginBaseSm const& plugin, RuleCollectionsPtrConst registry)
       : plugin_(plugin), registry_(std::move(registry)) {
      notifierIs(registry_.get());
   }
   ~RegistryReactor() override { notifierIs(nullptr); }

   BgpParseExtCommRuleCollections const* registry() const noexcept { return registry_.get(); }

   void onExtendedCommunityRuleInstance(BgpParseExtendedCommunityRuleKey const& key) override {
      plugin_.handleExtendedCommunityTypeRuleInstance(key);
   }
#define QORBGP_REACTOR_CALLBACK(collection, S, ...)                                      \
   void on##S##RuleInstance(BgpParse##S##RuleKey const& key) override {                  \
      plugin_.handle##S##RuleInstance(key);                                              \
   }
   QORBGP_EXT_COMM_TYPE_RULES(QORBGP_REACTOR_CALLBACK)
#undef QORBGP_REACTOR_CALLBACK

 private:
   BgpParseExtCommPluginBaseSm const& plugin_;
   RuleCollectionsPtrConst const registry_;
};

BgpParseExtCommPluginBaseSm::BgpParseExtCommPluginBaseSm(
   RuleCollectionsPtrConst const& ruleCollections) {
   if (ruleCollections) {
      ruleCollections_ = std::make_unique<RegistryReactor>(*this, ruleCollections);
   }
}

BgpParseExtCommPluginBaseSm::~BgpParseExtCommPluginBaseSm() = default;

void BgpParseExtCommPluginBaseSm::hasNotificationActiveIs(bool on) noexcept {
   PtrInterface::hasNotificationActiveIs(on);
   if (ruleCollections_) {
      ruleCollections_->notificationActiveIs(on);
   }
}

std::string_view BgpParseExtCommPluginBaseSm::fwkType() const noexcept {
   return "Routing::Bgp::BgpParseExtCommPluginBaseSm";
}

BgpParseExtCommRuleCollections const* BgpParseExtCommPluginBaseSm::ruleCollections() const noexcept {
   return ruleCollections_ ? ruleCollections_->registry() : nullptr;
}

void BgpParseExtCommPluginBaseSm::ruleCollectionsDel() noexcept { ruleCollections_.reset(); }

void BgpParseExtCommPluginBaseSm::handleStartup() const {
   handleExtendedCommunityTypeRuleInstance();
#define QORBGP_STARTUP_HANDLER(collection, S, ...) handle##S##RuleInstance();
   QORBGP_EXT_COMM_TYPE_RULES(QORBGP_STARTUP_HANDLER)
#undef QORBGP_STARTUP_HANDLER
}

namespace {

// The keys of a collection as they are now: hooks may announce or withdraw
// rules while the copy is walked.
template <class Set>
auto snapshot(Set const& keys) {
   return std::vector(keys.begin(), keys.end());
}

} // namespace

void BgpParseExtCommPluginBaseSm::instantiateExtendedCommunityTypeSubRule(
   BgpParseExtendedCommunityRuleKey const&, BgpParseExtCommControl const&) const {}

void BgpParseExtCommPluginBaseSm::handleExtendedCommunityTypeRuleInstance(
   BgpParseExtendedCommunityRuleKey const& key) const {
   instantiateExtendedCommunityTypeSubRule(key, key.rule->parseControl());
}

void BgpParseExtCommPluginBaseSm::handleExtendedCommunityTypeRuleInstance() const {
   if (auto const* registry = ruleCollections()) {
      for (auto const& key : snapshot(registry->extendedCommunityTypeRuleInstance())) {
         handleExtendedCommunityTypeRuleInstance(key);
      }
   }
}

void BgpParseExtCommPluginBaseSm::addExtendedCommunityTypeSubRule(
   BgpParseExtendedCommunityRuleKey const& key,
   BgpParseExtendedCommunityTypeRuleBase::PtrConst const& rule) const {
   QOR_ASSERT_TEXT(rule != nullptr, "__null != rule");
   key.rule->typeRuleIs(rule);
}

#define QORBGP_PLUGIN_DEFINITIONS(collection, S, N, type, SubRuleBase, ...)              \
   void BgpParseExtCommPluginBaseSm::instantiate##S##SubRule(                            \
      BgpParse##S##RuleKey const&, BgpParseExtCommControl const&) const {}               \
                                                                                         \
   void BgpParseExtCommPluginBaseSm::handle##S##RuleInstance(BgpParse##S##RuleKey const& key) \
      const {                                                                            \
      instantiate##S##SubRule(key, key.rule->parseControl());                            \
   }                                                                                     \
                                                                                         \
   void BgpParseExtCommPluginBaseSm::handle##S##RuleInstance() const {                   \
      if (auto const* registry = ruleCollections()) {                                    \
         for (auto const& key : snapshot(registry->collection())) {                      \
            handle##S##RuleInstance(key);                                                \
         }                                                                               \
      }                                                                                  \
   }                                                                                     \
                                                                                         \
   void BgpParseExtCommPluginBaseSm::add##S##SubRule(                                    \
      BgpParse##S##RuleKey const& key, SubRuleBase::PtrConst const& rule) const {        \
      QOR_ASSERT_TEXT(rule != nullptr, "rule != __null");                                \
      key.rule->subTypeRuleIs(rule);                                                     \
   }
QORBGP_EXT_COMM_TYPE_RULES(QORBGP_PLUGIN_DEFINITIONS)
#undef QORBGP_PLUGIN_DEFINITIONS

} // namespace Routing::Bgp
