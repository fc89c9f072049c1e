/// @file
/// The link-bandwidth extended community (non-transitive two-octet-AS type
/// 0x40, subtype 0x04): the AS that set it in value bits 47-32 and the
/// bandwidth of the link towards the next hop, an IEEE-754 single-precision
/// number of bytes per second, in bits 31-0. Multipath uses it to share
/// traffic among paths by bandwidth.
///
/// Immutable once built, owned through shared pointers, readable from any
/// thread.
///
/// @code{.cpp}
///   auto lbw = extCommLinkBandwidthFactory(ExtCommContent(0x4004fde84e9502f9));
///   lbw->bandwidth().bytesPerSecond();       // 1.25e9f
///   lbw->toStrepForUI(false, false, false);  // "Link-Bandwidth-AS:65000:10Gbps"
///   lbw->toStrepForUI(false, true, false);   // "Link-Bandwidth-AS:65000:1250000000"
///   lbw->toStrep();          // "<LinkBandwidth 65000:1.25e+09 0x4004fde84e9502f9>"
/// @endcode
#pragma once

#include "QorBgpCommunity/QorBgp/Parse/ExtCommPluginBase.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityKinds.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/LinkBandwidth.h"
#include "QorBgpCommunity/platform/Ptr.h"

#include <iosfwd>
#include <string>
#include <string_view>

namespace Routing::Bgp {

/// A link bandwidth: always the two-octet-AS layout. Classification
/// extCommClassificationLinkBandwidth. The bandwidth is decoded as found: it
/// may be NaN, infinite or negative, which isValid() reports.
class QORBGP_EXPORT ExtCommLinkBandwidth : public ExtCommAsNumber {
 public:
   KIV_POINTER_TYPES(ExtCommLinkBandwidth);

   explicit ExtCommLinkBandwidth(ExtCommContent const& content) noexcept;
   std::string_view fwkType() const noexcept override;
   ~ExtCommLinkBandwidth() override;

   /// True when the AS is 0: nobody claimed the value, so it may be pruned.
   bool isLinkBandwidthWithUnspecifiedAsNumber() const noexcept override;
   /// "<LinkBandwidth " AS ":" bandwidth as a double in default stream
   /// notation " " content ">", e.g. "<LinkBandwidth 65000:1e+06 0x...>".
   void formatDerivedType(std::ostream& os) const override;
   /// By format (AS in asdot when flagAsdot, which a two-octet AS never shows):
   /// @code{.unparsed}
   ///   flagClassification and flagUI  "Link-Bandwidth-AS:" AS ":" the
   ///                                  Rib::LinkBandwidth text, weighted when
   ///                                  flagLinkBwWeighted ("...:10Gbps")
   ///   flagClassification only        "lbw " AS ":" bandwidth in default notation
   ///   neither                        AS ":" bandwidth in default notation
   /// @endcode
   /// (default notation is that of a double on a fresh stream: "1.25e+09").
   std::string toStrepForPolicy(StrepFormat format) const override;
   /// Rib::LinkBandwidth::isValid of the bandwidth: finite and not negative.
   bool isValid() const noexcept override;
   /// True when `other`'s bandwidth is strictly greater than this one's: the
   /// smaller bandwidth wins, on purpose. `other` must be a link bandwidth (its
   /// bandwidth is read from its content's bits 31-0); a null `other` is fatal.
   /// NaN compares false either way.
   bool isBetterThan(ExtComm::PtrConst const& other) const noexcept override;

   Rib::LinkBandwidth bandwidth() const noexcept;
};

/// A new object with notification enabled.
QORBGP_EXPORT ExtCommLinkBandwidth::Ptr extCommLinkBandwidthFactory(ExtCommContent const& content);

/// Recognition of link bandwidths (non-transitive two-octet AS, subtype 0x04); the transitive type
/// carries none.
using BgpParseExtComSubTypeNonTransTwoOctetAsLinkBandwidthRule = BgpParseExtCommKindSubRule<
   BgpParseExtComSubTypeNonTransTwoOctetAsRuleBase,
   extCommPktSubtypeNonTransTwoOctetAsLinkBandwidth, &extCommLinkBandwidthFactory,
   "Routing::Bgp::BgpParseExtComSubTypeNonTransTwoOctetAsLinkBandwidthRule">;

/// The link bandwidth plug-in: installs the link bandwidth sub-rules in every parser and type rule it is told of.
class QORBGP_EXPORT BgpParseExtCommLinkBandwidthSm : public BgpParseExtCommPluginBaseSm {
 public:
   KIV_POINTER_TYPES(BgpParseExtCommLinkBandwidthSm);

   /// Observes the registry and equips every type rule announced so far.
   explicit BgpParseExtCommLinkBandwidthSm(RuleCollectionsPtrConst const& ruleCollections);
   ~BgpParseExtCommLinkBandwidthSm() override;
   std::string_view fwkType() const noexcept override;

   void instantiateExtCommSubTypeNonTransTwoOctetAsSubRule(
      BgpParseExtCommSubTypeNonTransTwoOctetAsRuleKey const& key,
      BgpParseExtCommControl const& control) const override;
};

/// A new plug-in observing `ruleCollections`, notification active.
///@{
QORBGP_EXPORT BgpParseExtCommLinkBandwidthSm::Ptr BgpParseExtCommLinkBandwidthSmIs(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections);
QORBGP_EXPORT BgpParseExtCommPluginBaseSm::Ptr bgpParseExtCommLinkBandwidthSmFactory(
   BgpParseExtCommPluginBaseSm::RuleCollectionsPtrConst const& ruleCollections);
///@}

} // namespace Routing::Bgp
