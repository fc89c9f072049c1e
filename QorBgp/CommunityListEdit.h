/// @file
/// CommunityListEdit: route policy's edits of a path's community list (set,
/// add, delete what a matcher matches, delete all), for standard, large,
/// extended and IPv6-address-specific lists, whose results are published lists
/// interned through the same tables as decoded ones.
///
/// @code{.cpp}
///   auto scrub = standardCommunityListEditFactory(
///      CommunityEditKind::deleteMatching, {},
///      {standardCommunityMatcherFactory(CommunityFieldPattern::peerAs(),
///                                       CommunityFieldPattern::any())});
///   path.communities = scrub->apply(path.communities.get(), *tables, {.peerAs = 65001});
/// @endcode
///
/// Identity rules: an edit that changes nothing returns the very list it was
/// given; equal results of any inputs are the same interned object; a result
/// without values is null (a path without the attribute: an empty one would
/// be malformed on the wire). Edits are immutable once made and may be applied
/// from any thread at once (with multi-threaded tables).
///
/// An extended result is published as a decoded list is
/// (ExtCommList::dedupComms): its classification lists and attribute bits are
/// those of any list of the same values, and route targets are reported coming
/// into use through the table's notifications; a route target that leaves
/// every live list is reported as leaving when the last path holding such a
/// list lets go of it.
#pragma once

#include "QorBgpCommunity/QorBgp/ExtCommIp6Matcher.h"
#include "QorBgpCommunity/QorBgp/ExtCommunityMatcher.h"
#include "QorBgpCommunity/QorBgp/LargeCommunityMatcher.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"
#include "QorBgpCommunity/QorBgp/StandardCommunityMatcher.h"

#include <string>
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

/// An edit of lists of one community kind (StandardCommunityMatcher's,
/// LargeCommunityMatcher's, ExtCommunityMatcher's or ExtCommIp6Matcher's).
template <class Matcher>
class QORBGP_EXPORT CommunityListEdit : public Kiv::PtrInterface {
 public:
   KIV_POINTER_TYPES(CommunityListEdit);
   using List = typename Matcher::List;
   /// A value as the edit adds or sets it: the standard community's 32 bits,
   /// the large community, the extended community's 8 octets as one word, the
   /// IPv6-address-specific community's content.
   using Content = typename Matcher::Content;
   using Matchers = std::vector<typename Matcher::PtrConst>;

   /// `values` serve replace and add, `matchers` deleteMatching; the other
   /// argument must be empty (Kiv::RangeError "<kind> takes no values" or
   /// "... no matchers"), and a null matcher is Kiv::NullArgumentError.
   CommunityListEdit(CommunityEditKind kind, std::vector<Content> values, Matchers matchers);
   ~CommunityListEdit() override;

   /// The edited `list` (null: the path has none), new values and the result
   /// interned in `tables` under the identity rules above; placeholders bound
   /// from `context`.
   typename List::PtrConst apply(List const* list, CommunityTables const& tables,
                                 CommunityMatchContext const& context) const;

   /// "set <value>...", "add <value>...", "delete <matcher>..." or
   /// "delete-all": the policy parser's text. Standard and large values print
   /// in colon form; an extended value as "rt", "soo", "color" or "ovs" with
   /// its fields when it is of such a layout, else as "raw 0x<16 hex digits>";
   /// an IPv6-address-specific one as "<type>:<subtype> <address>:<local>".
   std::string toStrep() const;

   CommunityEditKind kind() const noexcept { return kind_; }
   std::vector<Content> const& values() const noexcept { return values_; }
   Matchers const& matchers() const noexcept { return matchers_; }

 private:
   CommunityEditKind const kind_;
   std::vector<Content> const values_; ///< sorted, unique
   Matchers const matchers_;
};

using StandardCommunityListEdit = CommunityListEdit<StandardCommunityMatcher>;
using LargeCommunityListEdit = CommunityListEdit<LargeCommunityMatcher>;
using ExtCommListEdit = CommunityListEdit<ExtCommunityMatcher>;
using ExtCommIp6ListEdit = CommunityListEdit<ExtCommIp6Matcher>;

extern template class CommunityListEdit<StandardCommunityMatcher>;
extern template class CommunityListEdit<LargeCommunityMatcher>;
extern template class CommunityListEdit<ExtCommunityMatcher>;
extern template class CommunityListEdit<ExtCommIp6Matcher>;

/// A new edit, notification on (see the constructor for the errors).
///@{
QORBGP_EXPORT StandardCommunityListEdit::PtrConst
standardCommunityListEditFactory(CommunityEditKind kind, std::vector<U32> values,
                                 StandardCommunityListEdit::Matchers matchers);
QORBGP_EXPORT LargeCommunityListEdit::PtrConst
largeCommunityListEditFactory(CommunityEditKind kind, std::vector<Acl::CommunityValue> values,
                              LargeCommunityListEdit::Matchers matchers);
QORBGP_EXPORT ExtCommListEdit::PtrConst extCommListEditFactory(CommunityEditKind kind,
                                                               std::vector<U64> values,
                                                               ExtCommListEdit::Matchers matchers);
QORBGP_EXPORT ExtCommIp6ListEdit::PtrConst
extCommIp6ListEditFactory(CommunityEditKind kind, std::vector<ExtCommIp6Content> values,
                          ExtCommIp6ListEdit::Matchers matchers);
///@}

} // namespace Routing::Bgp
