/// @file
/// The origin validation state extended community (non-transitive opaque type
/// 0x43, subtype 0x00, RFC 8097): the RPKI validation outcome of a route's
/// origin AS, as one speaker tells its internal peers, in the last value octet.
///
/// Immutable once built, owned through shared pointers, readable from any
/// thread.
///
/// @code{.cpp}
///   auto ovs = extCommOriginValidationStateFactory(
///      ExtCommOriginValidationState::buildExtCommContent(OriginValidationState::invalid));
///   ovs->toStrepForUI(false, false, false);  // "Origin-Validation-State:invalid"
///   ovs->toStrep();              // "<OriginValidationState invalid 0x4300000000000002>"
/// @endcode
#pragma once

#include "QorBgpCommunity/QorBgp/Parse/ExtCommPluginBase.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunity.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Ptr.h"
#include "QorBgpCommunity/platform/Types.h"

#include <iosfwd>
#include <string>
#include <string_view>

namespace Routing::Bgp {

/// The states of the last value octet. A received octet may hold any other
/// value, which the texts show as unknown.
enum class QORBGP_EXPORT OriginValidationState : U8 {
   valid = 0,
   notFound = 1,
   invalid = 2,
};

/// An origin validation state. Classification
/// extCommClassificationOriginValidationState.
class QORBGP_EXPORT ExtCommOriginValidationState : public ExtCommSubtyped {
 public:
   KIV_POINTER_TYPES(ExtCommOriginValidationState);

   explicit ExtCommOriginValidationState(ExtCommContent const& content) noexcept;
   std::string_view fwkType() const noexcept override;
   ~ExtCommOriginValidationState() override;

   /// "<OriginValidationState " then "valid ", "not-found ", "invalid " or,
   /// for any other octet, "unknown(" octet in decimal ") ", then content ">".
   void formatDerivedType(std::ostream& os) const override;
   /// With flagClassification and flagUI: "Origin-Validation-State:" and
   /// "valid", "not-found", "invalid" or "unknown". Otherwise empty.
   std::string toStrepForPolicy(StrepFormat format) const override;

   /// The last value octet as found; it may be none of the three states.
   OriginValidationState validationState() const noexcept;

   /// The content that carries `state`: 0x43000000000000ss.
   static ExtCommContent buildExtCommContent(OriginValidationState state) noexcept;
};

/// A new object with notification enabled.
QORBGP_EXPORT ExtCommOriginValidationState::Ptr
extCommOriginValidationStateFactory(ExtCommContent const& content);

/// Recognition of origin validation states (non-transitive opaque, subtype 0x00).
using BgpParseExtComSubTypeNonTransOpaqueOriginValidationStateRule = BgpParseExtCommKindSubRule<
   BgpParseExtComSubTypeNonTransOpaqueRuleBase, extCommPktSubtypeNonTransOriginValidationState,
   &extCommOriginValidationStateFactory,
   "Routing::Bgp::BgpParseExtComSubTypeNonTransOpaqueOriginValidationStateRule">;

/// The origin validation state plug-in: installs the origin validation state sub-rules in every parser and type rule it is told of.
class QORBGP_EXPORT BgpParseExtCommOriginValidationStateSm : public BgpParseExtCommPluginBaseSm {
 public:
   KIV_POINTER_TYPES(BgpParseExtCommOriginValidationStateSm);

   /// Observes the registry and equips every type rule announced so far.
   explicit BgpParseExtCommOriginValidationStateSm(RuleCollectionsPtrConst const& ruleCollections);
   ~BgpParseExtCommOriginValidationStateSm() override;
   std::string_view fwkType() const noexcept override;

   void instantiateExtCommSubTypeNonTransOpaqueSubRule(
      BgpParseExtCommSubTypeNonTransOpaqueRuleKey const& key,
      BgpParseExtCommControl const& control) const override;
};

/// A new plug-in observing `ruleCollections`, notification active.
///@{
QORBGP_EXPORT BgpParseExtCommOriginValidationStateSm::Ptr BgpParseExtCommOriginValidationStateSmIs(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections);
QORBGP_EXPORT BgpParseExtCommPluginBaseSm::Ptr bgpParseExtCommOriginValidationStateSmFactory(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections);
///@}

} // namespace Routing::Bgp
