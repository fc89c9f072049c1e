/// @file
/// LargeCommunityMatcher: a compiled route-policy pattern for one large
/// community, by field or by a regular expression applied to its colon form.
///
/// @code{.cpp}
///   auto fromPeer = largeCommunityMatcherFactory(CommunityFieldPattern::peerAs(),
///                                                CommunityFieldPattern::any(),
///                                                CommunityFieldPattern::any());   // peer-as:*:*
///   fromPeer->matches({65001, 1, 2}, {.peerAs = 65001});                         // true
/// @endcode
///
/// Matchers are immutable once made and may be used from any thread at once.
#pragma once

#include "QorBgpCommunity/QorBgp/CommunityFieldPattern.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListLarge.h"
#include "QorBgpCommunity/platform/PosixRegex.h"

#include <array>
#include <string>

namespace Routing::Bgp {

/// One large community: global administrator, local data 1 and local data 2
/// each matched by a field pattern, or its colon form ("a:b:c") matched by a
/// POSIX regular expression.
class QORBGP_EXPORT LargeCommunityMatcher : public Kiv::PtrInterface {
 public:
   KIV_POINTER_TYPES(LargeCommunityMatcher);
   using List = LargeCommList;
   using Value = Acl::CommunityValue;
   using Content = Acl::CommunityValue; ///< a value as an edit adds or sets it

   LargeCommunityMatcher(CommunityFieldPattern global, CommunityFieldPattern local1,
                         CommunityFieldPattern local2) noexcept;
   /// Kiv::NullArgumentError "LargeCommunityMatcher: null regex" for null.
   explicit LargeCommunityMatcher(Routing::RouteMap::PosixRegex::PtrConst regex);
   ~LargeCommunityMatcher() override;

   bool matches(Acl::CommunityValue const& community, CommunityMatchContext const& context) const {
      return regex_ ? matchesText(community)
                    : global_.matches(community.globalAdmin, context) &&
                         local1_.matches(community.localData1, context) &&
                         local2_.matches(community.localData2, context);
   }

   /// A matcher of fields: its three patterns, in the order fieldValues gives
   /// a community's parts. All any() for a regex matcher.
   static constexpr std::size_t fieldCount = 3;
   bool hasRegex() const noexcept { return regex_ != nullptr; }
   std::array<CommunityFieldPattern, fieldCount> fields() const noexcept {
      return {global_, local1_, local2_};
   }
   static std::array<U32, fieldCount> fieldValues(Acl::CommunityValue const& community) noexcept {
      return {community.globalAdmin, community.localData1, community.localData2};
   }

   /// "<global>:<local 1>:<local 2>" in field-pattern text, or regex "<pattern>" (quotes and
   /// backslashes escaped): the policy parser's text.
   std::string toStrep() const;

 private:
   bool matchesText(Acl::CommunityValue const& community) const;

   CommunityFieldPattern const global_;
   CommunityFieldPattern const local1_;
   CommunityFieldPattern const local2_;
   Routing::RouteMap::PosixRegex::PtrConst const regex_; ///< null for a field pattern
};

/// A new matcher, notification on (see the constructors for the errors).
///@{
QORBGP_EXPORT LargeCommunityMatcher::PtrConst
largeCommunityMatcherFactory(CommunityFieldPattern global, CommunityFieldPattern local1,
                             CommunityFieldPattern local2);
QORBGP_EXPORT LargeCommunityMatcher::PtrConst
largeCommunityMatcherFactory(Routing::RouteMap::PosixRegex::PtrConst regex);
///@}

} // namespace Routing::Bgp
