/// @file
/// BgpParseExtCommRuleCollections: the registry in which every live parser and
/// type rule announces itself, so that kind plug-ins can attach sub-rules to
/// rules they never see built.
///
/// Fourteen key sets, one per kind of announcing rule: the parsers
/// (extendedCommunityTypeRuleInstance) and one per type rule, in the order of
/// QORBGP_EXT_COMM_TYPE_RULES. For each collection C there are
/// @code{.unparsed}
///   C##Is(key)      insert; notifies only when the key was absent; returns it
///   C##Del(key)     remove; notifies and returns true only when it was present
///   C##DelAll()     remove all, each removal notifying
///   C##Has(key)     membership
///   C()             the keys, for iteration in no particular order
/// @endcode
/// Observers derive from BgpParseExtCommRuleCollections::Notifiee and are told
/// the changed key of a collection through its `on<S>RuleInstance` callback.
///
/// One registry is shared by the parser, its type rules (through their
/// controls) and the plug-ins. Single-threaded.
#pragma once

#include "QorBgpCommunity/QorBgp/Parse/ExtCommRuleBase.h"
#include "QorBgpCommunity/platform/NotifyingCollections.h"

#include <type_traits>

namespace Routing::Bgp {

/// The rule registry: the key sets of live parsers and type rules, observed by the plug-ins.
class QORBGP_EXPORT BgpParseExtCommRuleCollections : public Kiv::Notifier {
 public:
   KIV_POINTER_TYPES(BgpParseExtCommRuleCollections);

   /// Observer of the registry; one callback per collection, told the key inserted or removed.
   class QORBGP_EXPORT Notifiee : public Kiv::Notifiee {
    public:
      ~Notifiee() override;
      virtual void onExtendedCommunityRuleInstance(BgpParseExtendedCommunityRuleKey const&) {}
#define QORBGP_NOTIFIEE_CALLBACK(collection, S, ...)                                     \
   virtual void on##S##RuleInstance(BgpParse##S##RuleKey const&) {}
      QORBGP_EXT_COMM_TYPE_RULES(QORBGP_NOTIFIEE_CALLBACK)
#undef QORBGP_NOTIFIEE_CALLBACK
   };

   template <class Key, void (Notifiee::*OnChange)(Key const&)>
   using KeySet = Kiv::NotifyingKeySet<Key, Notifiee, OnChange, BgpParseExtCommRuleKeyHash>;

   BgpParseExtCommRuleCollections() noexcept = default;
   ~BgpParseExtCommRuleCollections() override;
   std::string_view fwkType() const noexcept { return "Routing::Bgp::BgpParseExtCommRuleCollections"; }

#define QORBGP_RULE_COLLECTION(collection, S, ...)                                       \
 public:                                                                                 \
   BgpParse##S##RuleKey collection##Is(BgpParse##S##RuleKey const& key) {                \
      return collection##_.insert(key);                                                  \
   }                                                                                     \
   bool collection##Del(BgpParse##S##RuleKey const& key) { return collection##_.erase(key); } \
   void collection##DelAll() { collection##_.clear(); }                                  \
   bool collection##Has(BgpParse##S##RuleKey const& key) const {                         \
      return collection##_.contains(key);                                                \
   }                                                                                     \
   auto const& collection() const noexcept { return collection##_; }                     \
                                                                                         \
 private:                                                                                \
   auto& keysOf(std::type_identity<BgpParse##S##RuleKey>) noexcept { return collection##_; } \
   KeySet<BgpParse##S##RuleKey, &Notifiee::on##S##RuleInstance> collection##_{*this};

   QORBGP_RULE_COLLECTION(extendedCommunityTypeRuleInstance, ExtendedCommunity, )
   QORBGP_EXT_COMM_TYPE_RULES(QORBGP_RULE_COLLECTION)
#undef QORBGP_RULE_COLLECTION

 public:
   /// The collection of a key type: rules announce (Is) and withdraw (Del)
   /// their own key through these without naming their collection.
   template <class Key>
   Key ruleInstanceIs(Key const& key) {
      return keysOf(std::type_identity<Key>{}).insert(key);
   }
   template <class Key>
   bool ruleInstanceDel(Key const& key) {
      return keysOf(std::type_identity<Key>{}).erase(key);
   }
};

/// A new, empty registry with notification active.
QORBGP_EXPORT BgpParseExtCommRuleCollections::Ptr bgpParseExtCommRuleCollectionsFactory();

} // namespace Routing::Bgp
