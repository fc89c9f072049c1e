/// @file
/// BgpParseExtCommPluginBaseSm: the base of every kind plug-in. A plug-in
/// observes the rule registry and, for every parser and type rule announced
/// there (now or later), builds its sub-rules and installs them.
///
/// For each registry collection (QORBGP_EXT_COMM_TYPE_RULES, after the parser
/// collection) the base has
/// @code{.unparsed}
///   instantiate<S>SubRule(key, control)  the hook: does nothing here; a kind
///                                        overrides the hooks of the types it
///                                        serves, builds its sub-rule with
///                                        `control` and installs it
///   handle<S>RuleInstance(key)           calls the hook for one announced rule
///   handle<S>RuleInstance()              ... for every rule announced so far
///   add<S>SubRule(key, rule)             the installer: puts `rule` into the
///                                        rule the key names, replacing an
///                                        earlier one for the same code
/// @endcode
/// where S is ExtendedCommunityType for the parser collection and the stem of
/// the type rule's collection otherwise (e.g. ExtCommSubTypeTransOpaque).
/// Installing a null rule is a fatal error.
///
/// A concrete plug-in's constructor calls handleStartup(), so a plug-in made
/// after a parser still equips it. A plug-in stops observing when destroyed or
/// after ruleCollectionsDel(). Single-threaded.
#pragma once

#include "QorBgpCommunity/QorBgp/Parse/ExtCommParser.h"
#include "QorBgpCommunity/QorBgp/QorBgpTrace.h"

#include <memory>

namespace Routing::Bgp {

/// Base of every kind plug-in: observes the rule registry and equips each parser and type rule
/// announced there.
class QORBGP_EXPORT BgpParseExtCommPluginBaseSm : public Kiv::PtrInterface {
 public:
   KIV_POINTER_TYPES(BgpParseExtCommPluginBaseSm);
   using RuleCollectionsPtrConst = Kiv::Ptr<BgpParseExtCommRuleCollections const>;

   /// Observes `ruleCollections` (nothing when null).
   explicit BgpParseExtCommPluginBaseSm(RuleCollectionsPtrConst const& ruleCollections);
   ~BgpParseExtCommPluginBaseSm() override;

   /// Also switches the registry observer.
   void hasNotificationActiveIs(bool on) noexcept override;
   virtual std::string_view fwkType() const noexcept;

   /// The registry observed, or null.
   BgpParseExtCommRuleCollections const* ruleCollections() const noexcept;
   /// Stops observing the registry.
   void ruleCollectionsDel() noexcept;

   /// Offers every rule announced so far to the hooks, collection by collection.
   void handleStartup() const;

   virtual void instantiateExtendedCommunityTypeSubRule(BgpParseExtendedCommunityRuleKey const& key,
                                                        BgpParseExtCommControl const& control) const;
   void handleExtendedCommunityTypeRuleInstance(BgpParseExtendedCommunityRuleKey const& key) const;
   void handleExtendedCommunityTypeRuleInstance() const;
   void addExtendedCommunityTypeSubRule(
      BgpParseExtendedCommunityRuleKey const& key,
      BgpParseExtendedCommunityTypeRuleBase::PtrConst const& rule) const;

#define QORBGP_PLUGIN_MEMBERS(collection, S, N, type, SubRuleBase, ...)                  \
   virtual void instantiate##S##SubRule(BgpParse##S##RuleKey const& key,                 \
                                        BgpParseExtCommControl const& control) const;    \
   void handle##S##RuleInstance(BgpParse##S##RuleKey const& key) const;                  \
   void handle##S##RuleInstance() const;                                                 \
   void add##S##SubRule(BgpParse##S##RuleKey const& key,                                 \
                        SubRuleBase::PtrConst const& rule) const;
   QORBGP_EXT_COMM_TYPE_RULES(QORBGP_PLUGIN_MEMBERS)
#undef QORBGP_PLUGIN_MEMBERS

 protected:
   /// A new sub-rule of a kind, built with `control`, notification active.
   template <class SubRule>
   static typename SubRule::Ptr newSubRule(BgpParseExtCommControl const& control) {
      return Kiv::newNotifying<SubRule>(control);
   }

 private:
   class RegistryReactor;
   std::unique_ptr<RegistryReactor> ruleCollections_;
};

/// A sub-rule of one kind: answers every content of its subtype with
/// Factory(content, args...). The kinds name their instantiations.
template <class SubRuleBase, auto Subtype, auto Factory, Kiv::FixedName Name, auto... Args>
class QORBGP_EXPORT BgpParseExtCommKindSubRule final : public SubRuleBase {
 public:
   KIV_POINTER_TYPES(BgpParseExtCommKindSubRule);
   explicit BgpParseExtCommKindSubRule(BgpParseExtCommControl const& control)
       : SubRuleBase(control, Subtype) {}
   std::string_view fwkType() const noexcept override { return Name.view(); }
   typename SubRuleBase::ValuePtrConst
   inhale(typename SubRuleBase::ContentType const& content) const override {
      return Factory(content, Args...);
   }
};

} // namespace Routing::Bgp

/// The level-8 trace line of a plug-in hook: "<source unit>:<line>:<hook> <plug-in address> ".
#define QORBGP_PLUGIN_HOOK_TRACE(hook)                                                   \
   QOR_TRACE(::Routing::Bgp::qorBgpTrace(), 8,                                           \
             ::Kiv::sourceUnit(__FILE__) << ':' << __LINE__ << ':' << (hook) << ' '      \
                                         << static_cast<void const*>(this) << ' ')
