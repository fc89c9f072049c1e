/// @file
/// The rules that recognise typed extended communities, and the keys that name
/// live rules in the rule registry.
///
/// Recognition is a tree: one parser (BgpParseExtendedCommunityRule), one type
/// rule per type octet under it, and under each type rule at most one sub-rule
/// per subtype octet. Type rules are fixed; sub-rules come from kind plug-ins
/// that never see the parser: every parser and type rule announces itself in
/// the registry (BgpParseExtCommRuleCollections) through a key, and plug-ins
/// observing the registry attach their sub-rules to what is announced.
///
/// Every rule carries a BgpParseExtCommControl naming the registry it belongs
/// to. Rules are reference-counted framework objects, immutable once built but
/// for the parser's and type rules' rule tables; single-threaded (the agent's
/// reactor thread), though parsing itself only reads.
#pragma once

#include "QorBgpCommunity/QorBgp/ExtCommIp6.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunity.h"
#include "QorBgpCommunity/platform/Errors.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/FixedName.h"
#include "QorBgpCommunity/platform/Notifier.h"
#include "QorBgpCommunity/platform/Ptr.h"
#include "QorBgpCommunity/platform/ValueText.h"

#include <compare>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <type_traits>

namespace Routing::Bgp {

class BgpParseExtCommRuleCollections;

/// Which registry a rule belongs to. Equality is identity of the registry; a
/// default-constructed control names none and is false.
class QORBGP_EXPORT BgpParseExtCommControl {
 public:
   BgpParseExtCommControl() noexcept;
   explicit BgpParseExtCommControl(Kiv::Ptr<BgpParseExtCommRuleCollections> ruleCollections) noexcept;
   BgpParseExtCommControl(BgpParseExtCommControl const&) noexcept;
   BgpParseExtCommControl& operator=(BgpParseExtCommControl const&) noexcept;
   ~BgpParseExtCommControl();

   BgpParseExtCommRuleCollections* ruleCollections() const noexcept;
   explicit operator bool() const noexcept { return ruleCollections() != nullptr; }
   friend bool operator==(BgpParseExtCommControl const& a, BgpParseExtCommControl const& b) noexcept {
      return a.ruleCollections() == b.ruleCollections();
   }

   /// The text of the registry's address (see Kiv::pointerText).
   std::string valueToStrep() const;

 private:
   /// NOTE: the registry is mutable through a control because rules announce
   /// themselves in it; observers hold it const.
   Kiv::Ptr<BgpParseExtCommRuleCollections> ruleCollections_;
};

QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, BgpParseExtCommControl const& control);

/// Base of every recognition rule: carries the control that names its registry.
class QORBGP_EXPORT BgpParseExtCommRuleBase : public Kiv::Notifier {
 public:
   KIV_POINTER_TYPES(BgpParseExtCommRuleBase);

   BgpParseExtCommControl const& parseControl() const noexcept { return parseControl_; }
   /// Qualified name of the concrete class.
   virtual std::string_view fwkType() const noexcept = 0;

 protected:
   explicit BgpParseExtCommRuleBase(BgpParseExtCommControl const& control) noexcept;
   ~BgpParseExtCommRuleBase() override;

 private:
   BgpParseExtCommControl const parseControl_;
};

/// Base of the rules one level below a parser or type rule: a rule for one
/// code (a type octet for type rules, a subtype octet for sub-rules) that turns
/// content into a typed value, or declines with a null pointer.
template <class Code, class Content, class Value>
class QORBGP_EXPORT BgpParseExtCommCodedRuleBase : public BgpParseExtCommRuleBase {
 public:
   KIV_POINTER_TYPES(BgpParseExtCommCodedRuleBase);
   using CodeType = Code;
   using ContentType = Content;
   using ValueType = Value;
   using ValuePtrConst = Kiv::Ptr<Value const>;

   Code code() const noexcept { return code_; }
   /// A new, not yet interned value for `content`, or null to decline.
   virtual ValuePtrConst inhale(Content const& content) const = 0;

 protected:
   BgpParseExtCommCodedRuleBase(BgpParseExtCommControl const& control, Code code) noexcept
       : BgpParseExtCommRuleBase(control), code_(code) {}

 private:
   Code const code_;
};

/// Type rules: one per type octet, keyed by `pktType()`.
template <class Code, class Content, class Value>
class QORBGP_EXPORT BgpParseExtCommTypeRuleBase
    : public BgpParseExtCommCodedRuleBase<Code, Content, Value> {
 public:
   KIV_POINTER_TYPES(BgpParseExtCommTypeRuleBase);
   Code pktType() const noexcept { return this->code(); }

 protected:
   using BgpParseExtCommCodedRuleBase<Code, Content, Value>::BgpParseExtCommCodedRuleBase;
};

using BgpParseExtendedCommunityTypeRuleBase =
   BgpParseExtCommTypeRuleBase<BgpExtCommPktType, ExtCommContent, ExtComm>;
using BgpParseExtendedCommunityIp6TypeRuleBase =
   BgpParseExtCommTypeRuleBase<BgpExtCommIp6PktType, ExtCommIp6Content, ExtCommIp6>;

/// Sub-rules: one per subtype octet of one type, keyed by `pktSubType()`. The
/// subtype enumeration names the type, so it alone picks the base.
template <class Subtype, class Content, class Value>
class QORBGP_EXPORT BgpParseExtCommSubRuleBase
    : public BgpParseExtCommCodedRuleBase<Subtype, Content, Value> {
 public:
   KIV_POINTER_TYPES(BgpParseExtCommSubRuleBase);
   Subtype pktSubType() const noexcept { return this->code(); }

 protected:
   using BgpParseExtCommCodedRuleBase<Subtype, Content, Value>::BgpParseExtCommCodedRuleBase;
};

template <class Subtype>
using BgpParseExtCommSubRuleBase8 = BgpParseExtCommSubRuleBase<Subtype, ExtCommContent, ExtComm>;

using BgpParseExtComSubTypeTransTwoOctetAsRuleBase =
   BgpParseExtCommSubRuleBase8<BgpExtCommPktSubtypeTransTwoOctetAs>;
using BgpParseExtComSubTypeTransIpv4AddressRuleBase =
   BgpParseExtCommSubRuleBase8<BgpExtCommPktSubtypeTransIpv4Address>;
using BgpParseExtComSubTypeTransFourOctetAsRuleBase =
   BgpParseExtCommSubRuleBase8<BgpExtCommPktSubtypeTransFourOctetAs>;
using BgpParseExtComSubTypeTransOpaqueRuleBase =
   BgpParseExtCommSubRuleBase8<BgpExtCommPktSubtypeTransOpaque>;
using BgpParseExtComSubTypeTransGenericRuleBase =
   BgpParseExtCommSubRuleBase8<BgpExtCommPktSubtypeTransGeneric>;
using BgpParseExtComSubTypeTransGenericPart2RuleBase =
   BgpParseExtCommSubRuleBase8<BgpExtCommPktSubtypeTransGenericPart2>;
using BgpParseExtComSubTypeTransGenericPart3RuleBase =
   BgpParseExtCommSubRuleBase8<BgpExtCommPktSubtypeTransGenericPart3>;
using BgpParseExtComSubTypeNonTransTwoOctetAsRuleBase =
   BgpParseExtCommSubRuleBase8<BgpExtCommPktSubtypeNonTransTwoOctetAs>;
using BgpParseExtComSubTypeNonTransIpv4AddressRuleBase =
   BgpParseExtCommSubRuleBase8<BgpExtCommPktSubtypeNonTransIpv4Address>;
using BgpParseExtComSubTypeNonTransFourOctetAsRuleBase =
   BgpParseExtCommSubRuleBase8<BgpExtCommPktSubtypeNonTransFourOctetAs>;
using BgpParseExtComSubTypeNonTransOpaqueRuleBase =
   BgpParseExtCommSubRuleBase8<BgpExtCommPktSubtypeNonTransOpaque>;
using BgpParseExtCommIp6SubTypeTransRuleBase =
   BgpParseExtCommSubRuleBase<BgpExtCommIp6PktSubtypeTransIpv6Address, ExtCommIp6Content,
                              ExtCommIp6>;
using BgpParseExtCommIp6SubTypeNonTransRuleBase =
   BgpParseExtCommSubRuleBase<BgpExtCommIp6PktSubtypeNonTransIpv6Address, ExtCommIp6Content,
                              ExtCommIp6>;

/// Names one live rule by its address; owns nothing. Equality is identity,
/// order is that of the addresses as unsigned integers. Text: the address.
template <class Rule>
struct BgpParseExtCommRuleKey {
   Rule* rule = nullptr;

   friend bool operator==(BgpParseExtCommRuleKey, BgpParseExtCommRuleKey) noexcept = default;
   friend std::strong_ordering operator<=>(BgpParseExtCommRuleKey a,
                                           BgpParseExtCommRuleKey b) noexcept {
      return reinterpret_cast<std::uintptr_t>(a.rule) <=> reinterpret_cast<std::uintptr_t>(b.rule);
   }
   std::string valueToStrep() const { return Kiv::pointerText(rule); }
   /// Parses valueToStrep's text; RangeError for anything else.
   static BgpParseExtCommRuleKey fromValueStrep(std::string_view text) {
      auto address = Kiv::parsePointer(text);
      if (!address) {
         throw Kiv::RangeError("not a rule address: '" + std::string(text) + "'");
      }
      return {reinterpret_cast<Rule*>(*address)};
   }
   friend std::ostream& operator<<(std::ostream& os, BgpParseExtCommRuleKey key) {
      return os << key.valueToStrep();
   }
};

/// Hashes a rule key by the rule's address, for the registry's key sets.
struct BgpParseExtCommRuleKeyHash {
   template <class Rule>
   std::size_t operator()(BgpParseExtCommRuleKey<Rule> key) const noexcept {
      return std::hash<Rule*>{}(key.rule);
   }
};

/// What a type rule builds when no sub-rule recognises the content.
enum class QORBGP_EXPORT BgpParseExtCommFallback {
   asNumberTwoOctet,  ///< ExtCommAsNumber, two-octet AS layout
   asNumberFourOctet, ///< ExtCommAsNumber, four-octet AS layout
   ipv4Address,       ///< ExtCommIpv4Address
   subtyped,          ///< ExtCommSubtyped, or ExtCommIp6Subtyped for the IPv6 types
};

template <auto Type, class SubRuleBase, BgpParseExtCommFallback Fallback>
class BgpParseExtCommTypeRule;

class BgpParseExtendedCommunityRule;
using BgpParseExtendedCommunityRuleKey = BgpParseExtCommRuleKey<BgpParseExtendedCommunityRule>;

/// The type rules, one per row:
/// @code{.unparsed}
///   X(registry collection, name stem S, class stem N, type code, sub-rule base, fallback)
/// @endcode
/// giving the class `BgpParseExtComm<N>Rule` and its key `BgpParse<S>RuleKey`. The
/// order is that in which the parser builds them and plug-ins scan the registry.
#define QORBGP_EXT_COMM_TYPE_RULES(X)                                                    \
   X(extendedCommSubTypeTransTwoOctetAsRuleInstance, ExtCommSubTypeTransTwoOctetAs,      \
     TransTwoOctetAs, extCommPktTypeTransTwoOctetAs,                                     \
     BgpParseExtComSubTypeTransTwoOctetAsRuleBase, asNumberTwoOctet)                     \
   X(extendedCommSubTypeTransIpv4AddressRuleInstance, ExtCommSubTypeTransIpv4Address,    \
     TransIpv4Address, extCommPktTypeTransIpv4Address,                                   \
     BgpParseExtComSubTypeTransIpv4AddressRuleBase, ipv4Address)                         \
   X(extendedCommSubTypeTransFourOctetAsRuleInstance, ExtCommSubTypeTransFourOctetAs,    \
     TransFourOctetAs, extCommPktTypeTransFourOctetAs,                                   \
     BgpParseExtComSubTypeTransFourOctetAsRuleBase, asNumberFourOctet)                   \
   X(extendedCommSubTypeTransOpaqueRuleInstance, ExtCommSubTypeTransOpaque, TransOpaque, \
     extCommPktTypeTransOpaque, BgpParseExtComSubTypeTransOpaqueRuleBase, subtyped)      \
   X(extendedCommSubTypeTransGenericRuleInstance, ExtCommSubTypeTransGeneric,            \
     TransGeneric, extCommPktTypeTransGeneric, BgpParseExtComSubTypeTransGenericRuleBase, \
     subtyped)                                                                           \
   X(extendedCommSubTypeTransGenericPart2RuleInstance, ExtCommSubTypeTransGenericPart2,  \
     TransGenericPart2, extCommPktTypeTransGenericPart2,                                 \
     BgpParseExtComSubTypeTransGenericPart2RuleBase, subtyped)                           \
   X(extendedCommSubTypeTransGenericPart3RuleInstance, ExtCommSubTypeTransGenericPart3,  \
     TransGenericPart3, extCommPktTypeTransGenericPart3,                                 \
     BgpParseExtComSubTypeTransGenericPart3RuleBase, subtyped)                           \
   X(extendedCommSubTypeNonTransTwoOctetAsRuleInstance, ExtCommSubTypeNonTransTwoOctetAs, \
     NonTransTwoOctetAs, extCommPktTypeNonTransTwoOctetAs,                               \
     BgpParseExtComSubTypeNonTransTwoOctetAsRuleBase, asNumberTwoOctet)                  \
   X(extendedCommSubTypeNonTransIpv4AddressRuleInstance,                                 \
     ExtCommSubTypeNonTransIpv4Address, NonTransIpv4Address,                             \
     extCommPktTypeNonTransIpv4Address, BgpParseExtComSubTypeNonTransIpv4AddressRuleBase, \
     ipv4Address)                                                                        \
   X(extendedCommSubTypeNonTransFourOctetAsRuleInstance,                                 \
     ExtCommSubTypeNonTransFourOctetAs, NonTransFourOctetAs,                             \
     extCommPktTypeNonTransFourOctetAs, BgpParseExtComSubTypeNonTransFourOctetAsRuleBase, \
     asNumberFourOctet)                                                                  \
   X(extendedCommSubTypeNonTransOpaqueRuleInstance, ExtCommSubTypeNonTransOpaque,        \
     NonTransOpaque, extCommPktTypeNonTransOpaque,                                       \
     BgpParseExtComSubTypeNonTransOpaqueRuleBase, subtyped)                              \
   X(extendedCommIp6SubTypeTransRuleInstance, ExtCommIp6SubTypeTrans, Ip6Trans,          \
     extCommIp6PktTypeTransIpv6Address, BgpParseExtCommIp6SubTypeTransRuleBase, subtyped) \
   X(extendedCommIp6SubTypeNonTransRuleInstance, ExtCommIp6SubTypeNonTrans, Ip6NonTrans, \
     extCommIp6PktTypeNonTransIpv6Address, BgpParseExtCommIp6SubTypeNonTransRuleBase,    \
     subtyped)

/// The template-id of a row's type rule (explicit instantiation needs it spelt out).
#define QORBGP_TYPE_RULE_ID(collection, S, N, type, SubRuleBase, fallback)               \
   BgpParseExtCommTypeRule<type, SubRuleBase, BgpParseExtCommFallback::fallback>

#define QORBGP_DECLARE_TYPE_RULE(collection, S, N, type, SubRuleBase, fallback)          \
   using BgpParseExtComm##N##Rule =                                                      \
      QORBGP_TYPE_RULE_ID(collection, S, N, type, SubRuleBase, fallback);                \
   using BgpParse##S##RuleKey = BgpParseExtCommRuleKey<BgpParseExtComm##N##Rule>;
QORBGP_EXT_COMM_TYPE_RULES(QORBGP_DECLARE_TYPE_RULE)
#undef QORBGP_DECLARE_TYPE_RULE

/// The qualified class name of the type rule for a type code.
/// NOTE: a name as template argument would make the rules' instantiations
/// invisible outside the library, so the rules look theirs up here instead.
template <auto Type>
constexpr std::string_view bgpParseExtCommTypeRuleName() noexcept {
#define QORBGP_TYPE_RULE_NAME(collection, S, N, type, ...)                               \
   if constexpr (std::is_same_v<decltype(Type), decltype(type)>) {                       \
      if (Type == type) {                                                                \
         return "Routing::Bgp::BgpParseExtComm" #N "Rule";                               \
      }                                                                                  \
   }
   QORBGP_EXT_COMM_TYPE_RULES(QORBGP_TYPE_RULE_NAME)
#undef QORBGP_TYPE_RULE_NAME
   return {};
}

} // namespace Routing::Bgp
