/// @file
/// The parser BgpParseExtendedCommunityRule and its type rules: they turn raw
/// extended community content into the most specific typed value that the
/// installed sub-rules know.
///
/// Parsing an 8-octet content: the type octet picks the type rule (none: a
/// plain ExtComm); the type rule reads the subtype octet and, when it names a
/// member of the type's subtype enumeration, asks that subtype's sub-rule; when
/// there is none or it declines, the type rule builds its fallback (see
/// BgpParseExtCommFallback). The 20-octet IPv6 form works alike, ending in a
/// plain ExtCommIp6. Parsing never fails and always returns a new object, not
/// yet interned; it only reads the rule tables and takes no lock.
///
/// @code{.cpp}
///   auto registry = bgpParseExtCommRuleCollectionsFactory();
///   auto parser = bgpParseExtendedCommunityRuleFactory(BgpParseExtCommControl(registry));
///   ExtComm::PtrConst v = parser->parseExtendedCommunity(ExtCommContent(0x0002fde800000064));
/// @endcode
///
/// Rules are installed with typeRuleIs / subTypeRuleIs: the last rule installed
/// for a code wins; a null rule raises Kiv::NullArgumentError.
#pragma once

#include "QorBgpCommunity/QorBgp/Parse/ExtCommRuleCollections.h"
#include "QorBgpCommunity/platform/NotifyingCollections.h"

#include <string>

namespace Routing::Bgp {

/// One type octet's rule: holds the sub-rules of its subtypes.
template <auto Type, class SubRuleBase, BgpParseExtCommFallback Fallback>
class QORBGP_EXPORT BgpParseExtCommTypeRule final
    : public BgpParseExtCommTypeRuleBase<decltype(Type), typename SubRuleBase::ContentType,
                                         typename SubRuleBase::ValueType> {
 public:
   KIV_POINTER_TYPES(BgpParseExtCommTypeRule);
   using Base = BgpParseExtCommTypeRuleBase<decltype(Type), typename SubRuleBase::ContentType,
                                            typename SubRuleBase::ValueType>;
   using Subtype = typename SubRuleBase::CodeType;
   using Content = typename SubRuleBase::ContentType;
   using ValuePtrConst = typename SubRuleBase::ValuePtrConst;
   using Key = BgpParseExtCommRuleKey<BgpParseExtCommTypeRule>;

   /// Observer of the type rule; told of every sub-rule it gains or loses.
   class Notifiee : public Kiv::Notifiee {
    public:
      virtual void onSubTypeRule(Subtype const&) {}
   };

   /// Builds the rule and announces it in the control's registry, where
   /// observing plug-ins install their sub-rules before this returns.
   explicit BgpParseExtCommTypeRule(BgpParseExtCommControl const& control);
   /// Withdraws the announcement.
   ~BgpParseExtCommTypeRule() override;

   std::string_view fwkType() const noexcept override {
      return bgpParseExtCommTypeRuleName<Type>();
   }
   ValuePtrConst inhale(Content const& content) const override;

   void subTypeRuleIs(typename SubRuleBase::PtrConst const& rule);
   void subTypeRuleDel(Subtype subtype) { subTypeRule_.erase(subtype); }
   void subTypeRuleDelAll() { subTypeRule_.clear(); }
   /// The sub-rule of a subtype, or null.
   typename SubRuleBase::PtrConst subTypeRule(Subtype subtype) const;
   auto const& subTypeRules() const noexcept { return subTypeRule_; }

 private:
   Kiv::NotifyingHashMap<Subtype, typename SubRuleBase::PtrConst, Notifiee,
                         &Notifiee::onSubTypeRule>
      subTypeRule_{*this};
};

#define QORBGP_EXTERN_TYPE_RULE(...) extern template class QORBGP_TYPE_RULE_ID(__VA_ARGS__);
QORBGP_EXT_COMM_TYPE_RULES(QORBGP_EXTERN_TYPE_RULE)
#undef QORBGP_EXTERN_TYPE_RULE

/// The recognition parser: turns the content of an extended community into its typed value
/// through one type rule per type octet.
class QORBGP_EXPORT BgpParseExtendedCommunityRule : public BgpParseExtCommRuleBase {
 public:
   KIV_POINTER_TYPES(BgpParseExtendedCommunityRule);

   /// Observer of the parser; told of every type rule it gains or loses.
   class Notifiee : public Kiv::Notifiee {
    public:
      virtual void onTypeRule(BgpExtCommPktType const&) {}
      virtual void onIp6TypeRule(BgpExtCommIp6PktType const&) {}
   };

   // Builds and installs the thirteen type rules, then announces the parser in
   // the control's registry (which must be set).
   explicit BgpParseExtendedCommunityRule(BgpParseExtCommControl const& control);
   // Withdraws the announcement.
   ~BgpParseExtendedCommunityRule() override;
   std::string_view fwkType() const noexcept override;

   // The most specific value the installed rules know; never null.
   ExtComm::PtrConst parseExtendedCommunity(ExtCommContent const& content) const;
   ExtCommIp6::PtrConst parseExtendedCommunityIp6(ExtCommIp6Content const& content) const;
   // toStrepForUI(asdot, linkBwWeighted, json) of the parsed word.
   std::string showString(U64 const& word, bool asdot, bool linkBwWeighted, bool json) const;

   void typeRuleIs(BgpParseExtendedCommunityTypeRuleBase::PtrConst const& rule);
   void typeRuleDel(BgpExtCommPktType type) { typeRule_.erase(type); }
   void typeRuleDelAll() { typeRule_.clear(); }
   BgpParseExtendedCommunityTypeRuleBase::PtrConst typeRule(BgpExtCommPktType type) const;

   void ip6TypeRuleIs(BgpParseExtendedCommunityIp6TypeRuleBase::PtrConst const& rule);
   void ip6TypeRuleDel(BgpExtCommIp6PktType type) { ip6TypeRule_.erase(type); }
   void ip6TypeRuleDelAll() { ip6TypeRule_.clear(); }
   BgpParseExtendedCommunityIp6TypeRuleBase::PtrConst ip6TypeRule(BgpExtCommIp6PktType type) const;

 private:
   void handleInitialized();
   void installTypeRule(BgpParseExtendedCommunityTypeRuleBase::PtrConst const& rule);
   void installTypeRule(BgpParseExtendedCommunityIp6TypeRuleBase::PtrConst const& rule);

   Kiv::NotifyingHashMap<BgpExtCommPktType, BgpParseExtendedCommunityTypeRuleBase::PtrConst,
                         Notifiee, &Notifiee::onTypeRule>
      typeRule_{*this};
   Kiv::NotifyingHashMap<BgpExtCommIp6PktType, BgpParseExtendedCommunityIp6TypeRuleBase::PtrConst,
                         Notifiee, &Notifiee::onIp6TypeRule>
      ip6TypeRule_{*this};
};

/// A new parser with notification active.
QORBGP_EXPORT BgpParseExtendedCommunityRule::Ptr
bgpParseExtendedCommunityRuleFactory(BgpParseExtCommControl const& control);

} // namespace Routing::Bgp
