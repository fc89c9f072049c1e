#include "QorBgpCommunity/QorBgp/Parse/ExtCommParser.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityKinds.h"
#include "QorBgpCommunity/platform/Errors.h"

namespace Routing::Bgp {

QOR_ASSERT_UNIT("ExtComm");

namespace {

U8 subtypeOctet(ExtCommContent const& content) noexcept { return content.subtypeOctet(); }
U8 subtypeOctet(ExtCommIp6Content const& content) noexcept { return content.subtype; }

template <BgpParseExtCommFallback Fallback>
ExtComm::PtrConst fallbackValue(ExtCommContent const& content) {
   switch (Fallback) {
   case BgpParseExtCommFallback::asNumberTwoOctet:
      return extCommAsNumberFactory(extCommClassificationUnSpecified, content, false);
   case BgpParseExtCommFallback::asNumberFourOctet:
      return extCommAsNumberFactory(extCommClassificationUnSpecified, content, true);
   case BgpParseExtCommFallback::ipv4Address:
      return extCommIpv4AddressFactory(extCommClassificationUnSpecified, content);
   case BgpParseExtCommFallback::subtyped:
      return extCommSubtypedFactory(extCommClassificationUnSpecified, content);
   }
   QOR_ASSERT_TEXT(false, "unreachable: fallback outside BgpParseExtCommFallback");
}

template <BgpParseExtCommFallback Fallback>
ExtCommIp6::PtrConst fallbackValue(ExtCommIp6Content const& content) {
   static_assert(Fallback == BgpParseExtCommFallback::subtyped);
   return Kiv::newNotifying<ExtCommIp6Subtyped>(extCommClassificationUnSpecified, content);
}

} // namespace

template <auto Type, class SubRuleBase, BgpParseExtCommFallback Fallback>
BgpParseExtCommTypeRule<Type, SubRuleBase, Fallback>::BgpParseExtCommTypeRule(
   BgpParseExtCommControl const& control)
    : Base(control, Type) {
   this->parseControl().ruleCollections()->ruleInstanceIs(Key{this});
}

template <auto Type, class SubRuleBase, BgpParseExtCommFallback Fallback>
BgpParseExtCommTypeRule<Type, SubRuleBase, Fallback>::~BgpParseExtCommTypeRule() {
   this->parseControl().ruleCollections()->ruleInstanceDel(Key{this});
}

template <auto Type, class SubRuleBase, BgpParseExtCommFallback Fallback>
auto BgpParseExtCommTypeRule<Type, SubRuleBase, Fallback>::inhale(
   Content const& content) const -> ValuePtrConst {
   auto subtype = static_cast<Subtype>(subtypeOctet(content));
   if (bgpIsValidEnumMember(subtype)) {
      if (auto const* rule = subTypeRule_.find(subtype)) {
         if (ValuePtrConst value = (*rule)->inhale(content)) {
            return value;
         }
      }
   }
   return fallbackValue<Fallback>(content);
}

template <auto Type, class SubRuleBase, BgpParseExtCommFallback Fallback>
void BgpParseExtCommTypeRule<Type, SubRuleBase, Fallback>::subTypeRuleIs(
   typename SubRuleBase::PtrConst const& rule) {
   if (!rule) {
      throw Kiv::NullArgumentError(std::string(bgpParseExtCommTypeRuleName<Type>()) +
                                   "::subTypeRuleIs: null rule");
   }
   subTypeRule_.set(rule->pktSubType(), rule);
}

template <auto Type, class SubRuleBase, BgpParseExtCommFallback Fallback>
auto BgpParseExtCommTypeRule<Type, SubRuleBase, Fallback>::subTypeRule(
   Subtype subtype) const -> typename SubRuleBase::PtrConst {
   auto const* rule = subTypeRule_.find(subtype);
   return rule ? *rule : nullptr;
}

#define QORBGP_INSTANTIATE_TYPE_RULE(...) template class QORBGP_TYPE_RULE_ID(__VA_ARGS__);
QORBGP_EXT_COMM_TYPE_RULES(QORBGP_INSTANTIATE_TYPE_RULE)
#undef QORBGP_INSTANTIATE_TYPE_RULE

BgpParseExtendedCommunityRule::BgpParseExtendedCommunityRule(BgpParseExtCommControl const& control)
    : BgpParseExtCommRuleBase(control) {
   handleInitialized();
}

BgpParseExtendedCommunityRule::~BgpParseExtendedCommunityRule() {
   parseControl().ruleCollections()->extendedCommunityTypeRuleInstanceDel(
      BgpParseExtendedCommunityRuleKey{this});
}

std::string_view BgpParseExtendedCommunityRule::fwkType() const noexcept {
   return "Routing::Bgp::BgpParseExtendedCommunityRule";
}

void BgpParseExtendedCommunityRule::handleInitialized() {
   // Each type rule announces itself as it is built, so observing plug-ins
   // equip it before it is installed here.
#define QORBGP_BUILD_TYPE_RULE(collection, S, N, ...)                                   \
   installTypeRule(Kiv::newNotifying<BgpParseExtComm##N##Rule>(parseControl()));
   QORBGP_EXT_COMM_TYPE_RULES(QORBGP_BUILD_TYPE_RULE)
#undef QORBGP_BUILD_TYPE_RULE
   parseControl().ruleCollections()->extendedCommunityTypeRuleInstanceIs(
      BgpParseExtendedCommunityRuleKey{this});
}

ExtComm::PtrConst
BgpParseExtendedCommunityRule::parseExtendedCommunity(ExtCommContent const& content) const {
   auto type = static_cast<BgpExtCommPktType>(content.typeOctet());
   if (bgpIsValidEnumMember(type)) {
      if (auto const* found = typeRule_.find(type)) {
         BgpParseExtendedCommunityTypeRuleBase::PtrConst rule = *found; // held for the call
         if (ExtComm::PtrConst value = rule->inhale(content)) {
            return value;
         }
      }
   }
   return extCommFactory(extCommClassificationUnSpecified, content);
}

ExtCommIp6::PtrConst
BgpParseExtendedCommunityRule::parseExtendedCommunityIp6(ExtCommIp6Content const& content) const {
   auto type = static_cast<BgpExtCommIp6PktType>(content.type);
   if (bgpIsValidEnumMember(type)) {
      if (auto const* found = ip6TypeRule_.find(type)) {
         BgpParseExtendedCommunityIp6TypeRuleBase::PtrConst rule = *found;
         if (ExtCommIp6::PtrConst value = rule->inhale(content)) {
            return value;
         }
      }
   }
   return extCommIp6Factory(extCommClassificationUnSpecified, content);
}

void BgpParseExtendedCommunityRule::installTypeRule(
   BgpParseExtendedCommunityTypeRuleBase::PtrConst const& rule) {
   typeRuleIs(rule);
}

void BgpParseExtendedCommunityRule::installTypeRule(
   BgpParseExtendedCommunityIp6TypeRuleBase::PtrConst const& rule) {
   ip6TypeRuleIs(rule);
}

std::string BgpParseExtendedCommunityRule::showString(U64 const& word, bool asdot,
                                                      bool linkBwWeighted, bool json) const {
   return parseExtendedCommunity(ExtCommContent(word))->toStrepForUI(asdot, linkBwWeighted, json);
}

void BgpParseExtendedCommunityRule::typeRuleIs(
   BgpParseExtendedCommunityTypeRuleBase::PtrConst const& rule) {
   if (!rule) {
      throw Kiv::NullArgumentError("BgpParseExtendedCommunityRule::typeRuleIs: null rule");
   }
   typeRule_.set(rule->pktType(), rule);
}

BgpParseExtendedCommunityTypeRuleBase::PtrConst
BgpParseExtendedCommunityRule::typeRule(BgpExtCommPktType type) const {
   auto const* rule = typeRule_.find(type);
   return rule ? *rule : nullptr;
}

void BgpParseExtendedCommunityRule::ip6TypeRuleIs(
   BgpParseExtendedCommunityIp6TypeRuleBase::PtrConst const& rule) {
   if (!rule) {
      throw Kiv::NullArgumentError("BgpParseExtendedCommunityRule::ip6TypeRuleIs: null rule");
   }
   ip6TypeRule_.set(rule->pktType(), rule);
}

BgpParseExtendedCommunityIp6TypeRuleBase::PtrConst
BgpParseExtendedCommunityRule::ip6TypeRule(BgpExtCommIp6PktType type) const {
   auto const* rule = ip6TypeRule_.find(type);
   return rule ? *rule : nullptr;
}

BgpParseExtendedCommunityRule::Ptr
bgpParseExtendedCommunityRuleFactory(BgpParseExtCommControl const& control) {
   return Kiv::newNotifying<BgpParseExtendedCommunityRule>(control);
}

} // namespace Routing::Bgp
