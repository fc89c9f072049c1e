// Classification lists of IPv6-address-specific extended communities: the
// members of one ExtCommClassification taken out of an ExtCommIp6List, each
// interned on its own so that the same set of, say, IPv6 route targets is one
// shared object across every list that carries it. There is a single kind:
// IPv6 values are never pruned and no route-target machinery follows them.
//
// A classification list is filled by its ExtCommIp6List while that list is
// interned, then sorted and interned itself (dedup); interned lists are
// read-only, shareable between threads, and compared by the identity of
// their members. ExtCommIp6ClassificationListSnapshot is the opposite: a
// mutable, keyed, notifying copy for a consumer that reacts entry by entry.
//
//   ExtCommIp6List::PtrConst list = ...;   // interned
//   auto rts = list->classificationList(extCommClassificationRouteTarget);
//   if (rts) rts->comm(content);          // the member with that content, or null
#pragma once

#include "QorBgp/ExtCommIp6.h"
#include "QorBgp/ExtCommSnapshotBase.h"
#include "platform/NotifyingCollections.h"

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace Routing::Bgp {

class ExtCommIp6ListDedupTable;
class ExtCommIp6ClassificationListSnapshot;

// Members of an IPv6 list; ascending by content, without duplicates, once sorted.
using ExtCommIp6Vector = std::vector<ExtCommIp6::PtrConst>;

class QORBGP_EXPORT ExtCommIp6ClassificationList : public Zup::DedupHandle {
 public:
   KIV_POINTER_TYPES(ExtCommIp6ClassificationList);

   explicit ExtCommIp6ClassificationList(ExtCommClassification classification) noexcept;
   ~ExtCommIp6ClassificationList() override;
   virtual std::string_view fwkType() const noexcept;

   ExtCommClassification classification() const noexcept { return classification_; }

   // Appends an interned value; fatal "__null != comm" for null and the
   // interned-state condition for a value never interned. No ordering.
   void commIs(ExtCommIp6::PtrConst const& comm);
   // The member with `content`, or null. Fatal "commVectorSorted" on an
   // unsorted list.
   ExtCommIp6::PtrConst comm(ExtCommIp6Content const& content) const;
   U32 comms() const noexcept { return static_cast<U32>(comms_.size()); }
   ExtCommIp6Vector const* commVectorRawPtr() const noexcept { return &comms_; }
   bool commVectorSorted() const noexcept { return commVectorSorted_; }
   void commVectorSortedIs(bool sorted) noexcept { commVectorSorted_ = sorted; }

   // Jenkins one-at-a-time over the addresses of the (interned) members.
   // Fatal "commVectorSorted()" on an unsorted list.
   U32 hash() const noexcept override;
   // The very same members in the same order; the classification is not
   // compared (lists of different classifications cannot share members, and
   // all empty lists are one). Fatal "commVectorSorted()" on an unsorted list.
   bool compare(Zup::DedupHandle const* other) const noexcept override;
   // Lists are interned by identity of their members, never looked up by content.
   bool compareByContent(Zup::DedupContentHandle const& content) const noexcept override;

   // Sorts (dropping duplicates) and interns this list in `table`'s
   // classification-list table; returns the resident equal list or this one.
   // The caller continues with the result.
   PtrConst dedup(ExtCommIp6ListDedupTable const* table);

   // A new snapshot holding every member, notification on.
   Kiv::Ptr<ExtCommIp6ClassificationListSnapshot> commSnapshot() const;
   // The stream text, "[ <m1> <m2> ]".
   std::string toStrep() const;

 private:
   ExtCommClassification const classification_;
   ExtCommIp6Vector comms_;
   bool commVectorSorted_ = false;
};

// A new, empty list with notification on.
QORBGP_EXPORT ExtCommIp6ClassificationList::Ptr
extCommIp6ClassificationListFactory(ExtCommClassification classification);

// "[ ", the members in order in their diagnostic form separated by one space,
// then " ]" ("[  ]" when empty); "NULL" for a null list. The stream's format
// state is left as it was.
QORBGP_EXPORT void formatCommList(std::ostream& os, ExtCommIp6ClassificationList const* list);
QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, ExtCommIp6ClassificationList const* list);

// A notifying copy of an IPv6 classification list, keyed by content. Owned
// by one consumer; notifications run on the thread that changes it.
class QORBGP_EXPORT ExtCommIp6ClassificationListSnapshot
    : public ExtCommClassificationListSnapshotBase<ExtCommIp6, ExtCommIp6Content> {
 public:
   KIV_POINTER_TYPES(ExtCommIp6ClassificationListSnapshot);
   using ExtCommClassificationListSnapshotBase::ExtCommClassificationListSnapshotBase;

   // Inserts or replaces the entry of the value's content.
   // Kiv::NullArgumentError for a null value.
   void commIs(ExtCommIp6::PtrConst const& comm);
};

// A new, empty snapshot with notification on.
QORBGP_EXPORT ExtCommIp6ClassificationListSnapshot::Ptr
extCommIp6ClassificationListSnapshotFactory(ExtCommClassification classification);

} // namespace Routing::Bgp
