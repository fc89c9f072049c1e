/// @file
/// Classification lists: the communities of one ExtCommClassification taken
/// out of an extended community list, each interned on its own so that the
/// same set of route targets (or colours, link bandwidths, ...) is one shared
/// object across all the lists that carry it.
///
/// @code{.unparsed}
///   ExtCommClassificationList     plain: prunable when it holds an invalid value
///   RtExtCommClassificationList   route targets; carries a lifetime notifier
///                                 while interned (see QorBgpCommunityListExtDedupTable.h)
///   LinkBandwidthExtCommClassificationList
///                                 tracks the best link bandwidth; prunable when
///                                 it holds more than one or an invalid one
/// @endcode
///
/// Lists are filled by their ExtCommList while it builds, then sorted and
/// interned (dedup); interned lists are read-only and compared by the identity
/// of their elements. Snapshots (at the end) are the opposite: mutable,
/// keyed, notifying copies for consumers that react entry by entry.
#pragma once

#include "QorBgpCommunity/QorBgp/ExtCommListCore.h"
#include "QorBgpCommunity/QorBgp/ExtCommSnapshotBase.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunity.h"
#include "QorBgpCommunity/platform/BitSetValue.h"
#include "QorBgpCommunity/platform/NotifyingCollections.h"

#include <vector>

namespace Routing::Bgp {

class ExtCommListDedupTable;
class RtExtCommListLifeTimeNotifier;
class ExtCommClassificationListSnapshot;

using ExtCommVector = std::vector<ExtComm::PtrConst>;

/// The flag names of ExtCommClassificationList::CommVectorAttrs, for its reflection text.
struct ExtCommClassificationListAttrsLayout {
   static constexpr std::string_view typeName =
      "Routing::Bgp::ExtCommClassificationList::CommVectorAttrs";
   static constexpr Kiv::FlagField fields[] = {{"sorted", 1}, {"hasPrunableValues", 2}};
};

/// The shared members (classification, lookup, identity hash and compare,
/// snapshot) are ExtCommClassificationListCore's (ExtCommListCore.h).
class QORBGP_EXPORT ExtCommClassificationList
    : public ExtCommClassificationListCore<ExtCommClassificationList, ExtCommFamily> {
 public:
   KIV_POINTER_TYPES(ExtCommClassificationList);

   /// The list's state flags: sorted, and whether it holds prunable values.
   class CommVectorAttrs : public Kiv::BitSetValue<ExtCommClassificationListAttrsLayout> {
    public:
      static constexpr U32 sortedBit = 1;
      static constexpr U32 hasPrunableValuesBit = 2;
      using BitSetValue::BitSetValue;
      CommVectorAttrs(BitSetValue b) noexcept : BitSetValue(b) {}
      bool sorted() const noexcept { return has(sortedBit); }
      bool hasPrunableValues() const noexcept { return has(hasPrunableValuesBit); }
   };

   explicit ExtCommClassificationList(ExtCommClassification classification);
   ~ExtCommClassificationList() override;
   virtual std::string_view fwkType() const noexcept;

   /// Appends an interned value (fatal "__null != comm" or the interned check
   /// otherwise), then checkPrunable(comm).
   void commIs(ExtComm::PtrConst const& comm);

   CommVectorAttrs commVectorAttrs() const noexcept { return attrs_; }
   bool commVectorSorted() const noexcept { return attrs_.sorted(); }
   void commVectorSortedIs(bool sorted) noexcept { attrs_.bitIs(CommVectorAttrs::sortedBit, sorted); }
   bool hasPrunableValues() const noexcept { return attrs_.hasPrunableValues(); }

   /// Sorts and interns this list in `table` (route targets in its route-target
   /// table) and returns the resident equal list or this one.
   PtrConst dedup(ExtCommListDedupTable const* table);

   /// The values that survive pruning, in order.
   virtual ExtCommVector prune() const;
   /// "<classification> : <value> <value>".
   std::string toStrep() const;

 protected:
   /// Marks the list prunable when `comm` (just appended) calls for it.
   virtual void checkPrunable(ExtComm::PtrConst const& comm);
   void hasPrunableValuesIs() noexcept {
      attrs_.bitIs(CommVectorAttrs::hasPrunableValuesBit, true);
   }

 private:
   CommVectorAttrs attrs_;
};

/// The classification list of route targets; while interned it carries the notifier that
/// reports its lifetime.
class QORBGP_EXPORT RtExtCommClassificationList final : public ExtCommClassificationList {
 public:
   KIV_POINTER_TYPES(RtExtCommClassificationList);

   explicit RtExtCommClassificationList(
      ExtCommClassification classification = extCommClassificationRouteTarget);
   ~RtExtCommClassificationList() override;
   std::string_view fwkType() const noexcept override;

   /// The notifier exists exactly while the list is interned; the route-target
   /// table's notifiee sets and clears it (on an interned, otherwise read-only list).
   void lifeTimeNotifierIs(Kiv::Ptr<RtExtCommListLifeTimeNotifier> const& notifier) const;
   Kiv::Ptr<RtExtCommListLifeTimeNotifier> const& lifeTimeNotifier() const noexcept;
   Kiv::Ptr<RtExtCommListLifeTimeNotifier> const& getLifeTimeNotifier() const noexcept {
      return lifeTimeNotifier();
   }

 private:
   mutable Kiv::Ptr<RtExtCommListLifeTimeNotifier> lifeTimeNotifier_;
};

/// The classification list of link bandwidth values.
class QORBGP_EXPORT LinkBandwidthExtCommClassificationList final : public ExtCommClassificationList {
 public:
   KIV_POINTER_TYPES(LinkBandwidthExtCommClassificationList);

   LinkBandwidthExtCommClassificationList();
   ~LinkBandwidthExtCommClassificationList() override;
   std::string_view fwkType() const noexcept override;

   /// The best valid link bandwidth seen (the first of equally good ones), or null.
   ExtComm::PtrConst const& best() const noexcept { return best_; }
   /// Only the best one (nothing when there is none).
   ExtCommVector prune() const override;

 protected:
   void checkPrunable(ExtComm::PtrConst const& comm) override;

 private:
   ExtComm::PtrConst best_;
};

/// New lists with notification on.
///@{
QORBGP_EXPORT ExtCommClassificationList::Ptr
extCommClassificationListFactory(ExtCommClassification classification);
QORBGP_EXPORT RtExtCommClassificationList::Ptr
rtExtCommClassificationListFactory(ExtCommClassification classification);
QORBGP_EXPORT LinkBandwidthExtCommClassificationList::Ptr
linkBandwidthExtCommClassificationListFactory();
///@}

/// A notifying copy of a classification list, keyed by content word (see
/// ExtCommSnapshotBase.h).
class QORBGP_EXPORT ExtCommClassificationListSnapshot
    : public ExtCommClassificationListSnapshotBase<ExtCommFamily> {
 public:
   KIV_POINTER_TYPES(ExtCommClassificationListSnapshot);
   using ExtCommClassificationListSnapshotBase::ExtCommClassificationListSnapshotBase;
};

} // namespace Routing::Bgp
