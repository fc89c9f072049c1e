/// @file
/// The colour extended community (transitive opaque type 0x03, subtype 0x0b,
/// RFC 9012): a 32-bit colour in value bits 31-0 that steers a route onto a
/// policy of the same colour, and the two colour-only bits, value bits 47 and
/// 46 (shown as "CO(..)"), that say how a route may fall back when no such
/// policy exists.
///
/// Immutable once built, owned through shared pointers, readable from any
/// thread.
///
/// @code{.cpp}
///   auto color = extCommColorFactory(ExtCommContent(0x030b400000000064));
///   color->colorValue();                     // 100
///   color->toStrepForUI(false, false, false);  // "Color:CO(01):100"
///   color->toStrep();                        // "<Color: 100(01) 0x030b400000000064>"
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

/// A colour. Classification extCommClassificationColor.
class QORBGP_EXPORT ExtCommColor : public ExtCommSubtyped {
 public:
   KIV_POINTER_TYPES(ExtCommColor);

   explicit ExtCommColor(ExtCommContent const& content) noexcept;
   std::string_view fwkType() const noexcept override;
   ~ExtCommColor() override;

   /// "<Color: " value "(" bit 47 bit 46 ") " content ">".
   void formatDerivedType(std::ostream& os) const override;
   /// "Color:CO(" bit 47 bit 46 "):" value, whatever the format.
   std::string toStrepForPolicy(StrepFormat format) const override;

   /// The colour-only field, 0-3: bit 47 of the word is its high bit.
   U8 colorOnlyBits() const noexcept;
   U32 colorValue() const noexcept;
};

/// A new object with notification enabled.
QORBGP_EXPORT ExtCommColor::Ptr extCommColorFactory(ExtCommContent const& content);

/// Recognition of colours (transitive opaque, subtype 0x0b).
using BgpParseExtComSubTypeTransOpaqueColorRule = BgpParseExtCommKindSubRule<
   BgpParseExtComSubTypeTransOpaqueRuleBase, extCommPktSubtypeTransOpaqueColorExtendedCommunity,
   &extCommColorFactory, "Routing::Bgp::BgpParseExtComSubTypeTransOpaqueColorRule">;

/// The colour plug-in: installs the colour sub-rules in every parser and type rule it is told of.
class QORBGP_EXPORT BgpParseExtCommColorSm : public BgpParseExtCommPluginBaseSm {
 public:
   KIV_POINTER_TYPES(BgpParseExtCommColorSm);

   /// Observes the registry and equips every type rule announced so far.
   explicit BgpParseExtCommColorSm(RuleCollectionsPtrConst const& ruleCollections);
   ~BgpParseExtCommColorSm() override;
   std::string_view fwkType() const noexcept override;

   void instantiateExtCommSubTypeTransOpaqueSubRule(
      BgpParseExtCommSubTypeTransOpaqueRuleKey const& key,
      BgpParseExtCommControl const& control) const override;
};

/// A new plug-in observing `ruleCollections`, notification active.
///@{
QORBGP_EXPORT BgpParseExtCommColorSm::Ptr BgpParseExtCommColorSmIs(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections);
QORBGP_EXPORT BgpParseExtCommPluginBaseSm::Ptr bgpParseExtCommColorSmFactory(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections);
///@}

} // namespace Routing::Bgp
