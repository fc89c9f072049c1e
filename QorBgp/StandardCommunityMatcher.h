/// @file
/// StandardCommunityMatcher: a compiled route-policy pattern for one standard
/// community, by field or by a regular expression applied to its own text.
///
/// @code{.cpp}
///   auto blackhole = standardCommunityMatcherFactory(CommunityFieldPattern::any(),
///                                                    CommunityFieldPattern::exact(666)); // *:666
///   blackhole->matches(0xFDE8029A, context);                                            //
///   65000:666
/// @endcode
///
/// Matchers are immutable once made and may be used from any thread at once.
#pragma once

#include "QorBgpCommunity/QorBgp/CommunityFieldPattern.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListStandard.h"
#include "QorBgpCommunity/platform/PosixRegex.h"

#include <array>
#include <string>

namespace Routing::Bgp {

/// One standard community: its AS part and its local part each matched by a
/// field pattern, or its text matched by a POSIX regular expression (first the
/// colon form, then, when it has one, its well-known name as
/// CommList::wellKnownName gives it at that moment).
class QORBGP_EXPORT StandardCommunityMatcher : public Kiv::PtrInterface {
 public:
   KIV_POINTER_TYPES(StandardCommunityMatcher);
   using List = CommList;
   using Value = U32;
   using Content = U32; ///< a value as an edit adds or sets it

   /// Kiv::RangeError "standard community field <text> is above 65535" when
   /// a field names a value no 16-bit part can hold.
   StandardCommunityMatcher(CommunityFieldPattern asPart, CommunityFieldPattern localPart);
   /// Kiv::NullArgumentError "StandardCommunityMatcher: null regex" for null.
   explicit StandardCommunityMatcher(Routing::RouteMap::PosixRegex::PtrConst regex);
   ~StandardCommunityMatcher() override;

   bool matches(U32 community, CommunityMatchContext const& context) const {
      return regex_ ? matchesText(community)
                    : asPart_.matches(community >> 16, context) &&
                         localPart_.matches(community & 0xFFFF, context);
   }

   /// A matcher of fields: its AS and local part patterns, in the order
   /// fieldValues gives a community's parts. Both any() for a regex matcher.
   static constexpr std::size_t fieldCount = 2;
   bool hasRegex() const noexcept { return regex_ != nullptr; }
   std::array<CommunityFieldPattern, fieldCount> fields() const noexcept {
      return {asPart_, localPart_};
   }
   static std::array<U32, fieldCount> fieldValues(U32 community) noexcept {
      return {community >> 16, community & 0xFFFF};
   }

   /// "<as part>:<local part>" in field-pattern text, or regex "<pattern>" (quotes and
   /// backslashes escaped): the policy parser's text.
   std::string toStrep() const;

 private:
   bool matchesText(U32 community) const;

   CommunityFieldPattern const asPart_;
   CommunityFieldPattern const localPart_;
   Routing::RouteMap::PosixRegex::PtrConst const regex_; ///< null for a field pattern
};

/// A new matcher, notification on (see the constructors for the errors).
///@{
QORBGP_EXPORT StandardCommunityMatcher::PtrConst
standardCommunityMatcherFactory(CommunityFieldPattern asPart, CommunityFieldPattern localPart);
QORBGP_EXPORT StandardCommunityMatcher::PtrConst
standardCommunityMatcherFactory(Routing::RouteMap::PosixRegex::PtrConst regex);
///@}

} // namespace Routing::Bgp
