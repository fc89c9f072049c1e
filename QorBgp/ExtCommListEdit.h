/// @file
/// ExtCommListEdit: route policy's edits of a path's extended community list,
/// with the identity rules of CommunityListEdit (CommunityListEdit.h): an
/// unchanged list comes back as the very same object, equal results are one
/// interned object, no values left gives null.
///
/// @code{.cpp}
///   auto dropCustomerTargets = extCommListEditFactory(
///      CommunityEditKind::deleteMatching, {},
///      {extCommunityMatcherFactory(ExtCommunityMatcher::Kind::routeTarget,
///                                  CommunityFieldPattern::exact(65000),
///                                  CommunityFieldPattern::range(100, 199))});
///   path.extCommunities = dropCustomerTargets->apply(path.extCommunities.get(), values, lists,
///   context);
/// @endcode
///
/// Results are published as decoded lists are (ExtCommList::dedupComms): their
/// classification lists and attribute bits are those of any list of the same
/// values, and route targets are reported coming into use through the table's
/// notifications; a route target that leaves every live list is reported as
/// leaving when the last path holding such a list lets go of it. Immutable
/// once made; may be applied from any thread at once (multi-threaded tables).
#pragma once

#include "QorBgpCommunity/QorBgp/CommunityListEdit.h"
#include "QorBgpCommunity/QorBgp/ExtCommunityMatcher.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDedupTable.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListExtDedupTable.h"

#include <string>
#include <vector>

namespace Routing::Bgp {

/// An edit of extended community lists.
class QORBGP_EXPORT ExtCommListEdit : public Kiv::PtrInterface {
 public:
   KIV_POINTER_TYPES(ExtCommListEdit);
   using Matchers = std::vector<ExtCommunityMatcher::PtrConst>;

   /// `contents` (8-byte content words) serve replace and add, `matchers`
   /// deleteMatching; the errors are CommunityListEdit's.
   ExtCommListEdit(CommunityEditKind kind, std::vector<U64> contents, Matchers matchers);
   ~ExtCommListEdit() override;

   /// The edited `list` (null: none), its new values interned in `values` and
   /// the result in `lists`; placeholders bound from `context`.
   ExtCommList::PtrConst apply(ExtCommList const* list, ExtCommDedupTable const* values,
                               ExtCommListDedupTable const* lists,
                               CommunityMatchContext const& context) const;

   /// "set <value>...", "add <value>...", "delete <matcher>..." or
   /// "delete-all": the policy parser's text. A value prints as "rt", "soo",
   /// "color" or "ovs" with its fields when it is of such a layout, else as
   /// "raw 0x<16 hex digits>".
   std::string toStrep() const;

   CommunityEditKind kind() const noexcept { return kind_; }
   std::vector<U64> const& contents() const noexcept { return contents_; }

 private:
   CommunityEditKind const kind_;
   std::vector<U64> const contents_; ///< sorted, unique
   Matchers const matchers_;
};

/// A new edit, notification on (see the constructor for the errors).
QORBGP_EXPORT ExtCommListEdit::PtrConst extCommListEditFactory(CommunityEditKind kind,
                                                               std::vector<U64> contents,
                                                               ExtCommListEdit::Matchers matchers);

} // namespace Routing::Bgp
