/// @file
/// CommunityListEdit: route policy's edits of a path's community list (set,
/// add, delete what a matcher matches, delete all), whose results are
/// published lists interned through the same tables as decoded ones.
///
/// @code{.cpp}
///   auto scrub = standardCommunityListEditFactory(
///      CommunityEditKind::deleteMatching, {},
///      {standardCommunityMatcherFactory(CommunityFieldPattern::peerAs(),
///      CommunityFieldPattern::any())});
///   path.communities = scrub->apply(path.communities.get(), table, {.peerAs = 65001});
/// @endcode
///
/// Identity rules: an edit that changes nothing returns the very list it was
/// given; equal results of any inputs are the same interned object; a result
/// without values is null (a path without the attribute: an empty one would
/// be malformed on the wire). Edits are immutable once made and may be applied
/// from any thread at once (with multi-threaded tables).
#pragma once

#include "QorBgpCommunity/QorBgp/LargeCommunityMatcher.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListDedupTable.h"
#include "QorBgpCommunity/QorBgp/StandardCommunityMatcher.h"

#include <string>
#include <type_traits>
#include <vector>

namespace Routing::Bgp {

/// What an edit does to a list.
enum class CommunityEditKind : U8 {
   replace,        ///< the list becomes the edit's values (set)
   add,            ///< the edit's values are added (additive)
   deleteMatching, ///< the values any of the edit's matchers matches are removed
   deleteAll,      ///< no list is left
};

/// "set", "add", "delete" or "delete-all": the word that starts an edit's text.
QORBGP_EXPORT char const* communityEditKindName(CommunityEditKind kind) noexcept;

/// An edit of lists of one community kind (StandardCommunityMatcher's or
/// LargeCommunityMatcher's).
template <class Matcher>
class QORBGP_EXPORT CommunityListEdit : public Kiv::PtrInterface {
 public:
   KIV_POINTER_TYPES(CommunityListEdit);
   using List = typename Matcher::List;
   using Value = typename Matcher::Value;
   using Table = std::conditional_t<std::is_same_v<List, CommList>, CommListDedupTable,
                                    LargeCommListDedupTable>;
   using Matchers = std::vector<typename Matcher::PtrConst>;

   /// `values` serve replace and add, `matchers` deleteMatching; the other
   /// argument must be empty (Kiv::RangeError "<kind> takes no values" or
   /// "... no matchers"), and a null matcher is Kiv::NullArgumentError.
   CommunityListEdit(CommunityEditKind kind, std::vector<Value> values, Matchers matchers);
   ~CommunityListEdit() override;

   /// The edited `list` (null: the path has none), published through `table`
   /// under the identity rules above; placeholders bound from `context`.
   typename List::PtrConst apply(List const* list, Table const* table,
                                 CommunityMatchContext const& context) const;

   /// "set <value>...", "add <value>...", "delete <matcher>..." or
   /// "delete-all", values in colon form: the policy parser's text.
   std::string toStrep() const;

   CommunityEditKind kind() const noexcept { return kind_; }
   std::vector<Value> const& values() const noexcept { return values_; }
   Matchers const& matchers() const noexcept { return matchers_; }

 private:
   CommunityEditKind const kind_;
   std::vector<Value> const values_; ///< sorted, unique
   Matchers const matchers_;
};

using StandardCommunityListEdit = CommunityListEdit<StandardCommunityMatcher>;
using LargeCommunityListEdit = CommunityListEdit<LargeCommunityMatcher>;

extern template class CommunityListEdit<StandardCommunityMatcher>;
extern template class CommunityListEdit<LargeCommunityMatcher>;

/// A new edit, notification on (see the constructor for the errors).
///@{
QORBGP_EXPORT StandardCommunityListEdit::PtrConst
standardCommunityListEditFactory(CommunityEditKind kind, std::vector<U32> values,
                                 StandardCommunityListEdit::Matchers matchers);
QORBGP_EXPORT LargeCommunityListEdit::PtrConst
largeCommunityListEditFactory(CommunityEditKind kind, std::vector<Acl::CommunityValue> values,
                              LargeCommunityListEdit::Matchers matchers);
///@}

} // namespace Routing::Bgp
