/// @file
/// CommunitySetMatcher: single-community matchers judging a whole published
/// list with set semantics, as route policy's community lists and sets do.
///
/// @code{.cpp}
///   auto blackholeOrNoExport = standardCommunitySetMatcherFactory(
///      {standardCommunityMatcherFactory(CommunityFieldPattern::any(),
///      CommunityFieldPattern::exact(666)),
///       standardCommunityMatcherFactory(CommunityFieldPattern::exact(65535),
///                                       CommunityFieldPattern::exact(65281))},
///      CommunitySetMode::any, false);
///   if (blackholeOrNoExport->matches(*path.communities, {.peerAs = 65001, .localAs = 65000})) {
///   ... }
/// @endcode
///
/// Answers for the empty cases:
/// @code{.unparsed}
///   mode    empty list                   empty matcher set
///   any     false                        false
///   all     true only for an empty set   true
///   exact   true only for an empty set   true only for an empty list
/// @endcode
/// and inversion negates whichever answer the mode gives. Immutable once made;
/// may be used from any thread at once.
#pragma once

#include "QorBgpCommunity/QorBgp/ExtCommIp6Matcher.h"
#include "QorBgpCommunity/QorBgp/ExtCommunityMatcher.h"
#include "QorBgpCommunity/QorBgp/LargeCommunityMatcher.h"
#include "QorBgpCommunity/QorBgp/StandardCommunityMatcher.h"

#include <memory>
#include <string>
#include <vector>

namespace Routing::Bgp {

namespace detail {
class FieldTests;
}

/// How a set of single-community matchers judges a list.
enum class CommunitySetMode : U8 {
   any,   ///< some value of the list matches some matcher
   all,   ///< every matcher matches some value of the list
   exact, ///< every matcher matches some value, and every value some matcher
};

/// "any", "all" or "exact".
QORBGP_EXPORT char const* communitySetModeName(CommunitySetMode mode) noexcept;

/// Matchers of one community kind (StandardCommunityMatcher,
/// LargeCommunityMatcher, ExtCommunityMatcher or ExtCommIp6Matcher) judging
/// whole lists of that kind.
template <class Matcher>
class QORBGP_EXPORT CommunitySetMatcher : public Kiv::PtrInterface {
 public:
   KIV_POINTER_TYPES(CommunitySetMatcher);
   using List = typename Matcher::List;
   using Matchers = std::vector<typename Matcher::PtrConst>;

   /// Kiv::NullArgumentError "CommunitySetMatcher: null matcher" for a null one.
   CommunitySetMatcher(Matchers matchers, CommunitySetMode mode, bool inverted);
   ~CommunitySetMatcher() override;

   /// The mode's answer for the list's values (inverted when asked), the
   /// placeholders bound from `context`.
   bool matches(List const& list, CommunityMatchContext const& context) const;

   Matchers const& matchers() const noexcept { return matchers_; }
   CommunitySetMode mode() const noexcept { return mode_; }
   bool inverted() const noexcept { return inverted_; }

   /// "[not ]<mode> <matcher> <matcher> ...", each matcher as its toStrep.
   std::string toStrep() const;

 private:
   Matchers const matchers_;
   CommunitySetMode const mode_;
   bool const inverted_;
   /// The matchers compiled into compares, for standard and large matchers
   /// without a regex; null otherwise.
   std::unique_ptr<detail::FieldTests const> tests_;
};

using StandardCommunitySetMatcher = CommunitySetMatcher<StandardCommunityMatcher>;
using LargeCommunitySetMatcher = CommunitySetMatcher<LargeCommunityMatcher>;
using ExtCommunitySetMatcher = CommunitySetMatcher<ExtCommunityMatcher>;
using ExtCommIp6SetMatcher = CommunitySetMatcher<ExtCommIp6Matcher>;

extern template class CommunitySetMatcher<StandardCommunityMatcher>;
extern template class CommunitySetMatcher<LargeCommunityMatcher>;
extern template class CommunitySetMatcher<ExtCommunityMatcher>;
extern template class CommunitySetMatcher<ExtCommIp6Matcher>;

/// A new set matcher, notification on (see the constructor for the error).
///@{
QORBGP_EXPORT StandardCommunitySetMatcher::PtrConst
standardCommunitySetMatcherFactory(StandardCommunitySetMatcher::Matchers matchers,
                                   CommunitySetMode mode, bool inverted);
QORBGP_EXPORT LargeCommunitySetMatcher::PtrConst
largeCommunitySetMatcherFactory(LargeCommunitySetMatcher::Matchers matchers, CommunitySetMode mode,
                                bool inverted);
QORBGP_EXPORT ExtCommunitySetMatcher::PtrConst
extCommunitySetMatcherFactory(ExtCommunitySetMatcher::Matchers matchers, CommunitySetMode mode,
                              bool inverted);
QORBGP_EXPORT ExtCommIp6SetMatcher::PtrConst
extCommIp6SetMatcherFactory(ExtCommIp6SetMatcher::Matchers matchers, CommunitySetMode mode,
                            bool inverted);
///@}

} // namespace Routing::Bgp
