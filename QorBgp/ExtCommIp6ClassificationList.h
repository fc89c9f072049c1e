/// @file
/// Classification lists of IPv6-address-specific extended communities: the
/// members of one ExtCommClassification taken out of an ExtCommIp6List, each
/// interned on its own so that the same set of, say, IPv6 route targets is one
/// shared object across every list that carries it. There is a single kind:
/// IPv6 values are never pruned and no route-target machinery follows them.
///
/// A classification list is filled by its ExtCommIp6List while that list is
/// interned, then sorted and interned itself (dedup); interned lists are
/// read-only, shareable between threads, and compared by the identity of
/// their members. ExtCommIp6ClassificationListSnapshot is the opposite: a
/// mutable, keyed, notifying copy for a consumer that reacts entry by entry.
///
/// @code{.cpp}
///   ExtCommIp6List::PtrConst list = ...;   // interned
///   auto rts = list->classificationList(extCommClassificationRouteTarget);
///   if (rts) rts->comm(content);          // the member with that content, or null
/// @endcode
#pragma once

#include "QorBgpCommunity/QorBgp/ExtCommIp6.h"
#include "QorBgpCommunity/QorBgp/ExtCommListCore.h"
#include "QorBgpCommunity/QorBgp/ExtCommSnapshotBase.h"
#include "QorBgpCommunity/platform/NotifyingCollections.h"

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace Routing::Bgp {

class ExtCommIp6ListDedupTable;
class ExtCommIp6ClassificationListSnapshot;

/// Members of an IPv6 list; ascending by content, without duplicates, once sorted.
using ExtCommIp6Vector = std::vector<ExtCommIp6::PtrConst>;

/// The shared members (classification, lookup, identity hash and compare,
/// snapshot) are ExtCommClassificationListCore's (ExtCommListCore.h).
class QORBGP_EXPORT ExtCommIp6ClassificationList
    : public ExtCommClassificationListCore<ExtCommIp6ClassificationList, ExtCommIp6Family> {
 public:
   KIV_POINTER_TYPES(ExtCommIp6ClassificationList);

   explicit ExtCommIp6ClassificationList(ExtCommClassification classification) noexcept;
   ~ExtCommIp6ClassificationList() override;
   virtual std::string_view fwkType() const noexcept;

   /// Appends an interned value; fatal "__null != comm" for null and the
   /// interned-state condition for a value never interned. No ordering.
   void commIs(ExtCommIp6::PtrConst const& comm);
   bool commVectorSorted() const noexcept { return commVectorSorted_; }
   void commVectorSortedIs(bool sorted) noexcept { commVectorSorted_ = sorted; }

   /// Sorts (dropping duplicates) and interns this list in `table`'s
   /// classification-list table; returns the resident equal list or this one.
   /// The caller continues with the result.
   PtrConst dedup(ExtCommIp6ListDedupTable const* table);

   /// The stream text, "[ <m1> <m2> ]".
   std::string toStrep() const;

 private:
   bool commVectorSorted_ = false;
};

/// A new, empty list with notification on.
QORBGP_EXPORT ExtCommIp6ClassificationList::Ptr
extCommIp6ClassificationListFactory(ExtCommClassification classification);

/// "[ ", the members in order in their diagnostic form separated by one space,
/// then " ]" ("[  ]" when empty); "NULL" for a null list. The stream's format
/// state is left as it was.
///@{
QORBGP_EXPORT void formatCommList(std::ostream& os, ExtCommIp6ClassificationList const* list);
QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, ExtCommIp6ClassificationList const* list);
///@}

/// A notifying copy of an IPv6 classification list, keyed by content. Owned
/// by one consumer; notifications run on the thread that changes it.
class QORBGP_EXPORT ExtCommIp6ClassificationListSnapshot
    : public ExtCommClassificationListSnapshotBase<ExtCommIp6Family> {
 public:
   KIV_POINTER_TYPES(ExtCommIp6ClassificationListSnapshot);
   using ExtCommClassificationListSnapshotBase::ExtCommClassificationListSnapshotBase;
};

/// A new, empty snapshot with notification on.
QORBGP_EXPORT ExtCommIp6ClassificationListSnapshot::Ptr
extCommIp6ClassificationListSnapshotFactory(ExtCommClassification classification);

} // namespace Routing::Bgp
