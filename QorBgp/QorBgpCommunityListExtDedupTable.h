/// @file
/// Interning of extended community lists, and following the life of every
/// distinct route-target set.
///
/// ExtCommListDedupTable holds three tables: the lists themselves, the
/// classification lists of every classification but route target, and the
/// route-target classification lists. While a route-target classification
/// list is interned it carries an RtExtCommListLifeTimeNotifier, and the
/// table's NotifyingRtExtCommListCollection holds exactly those notifiers:
/// consumers such as route-target import/export filtering observe the
/// collection instead of scanning paths.
///
/// @code{.cpp}
///   auto table = extCommListDedupTableFactory();
///   ExtCommList::PtrConst shared = list->dedup(table.get());
///   table->notifyingRtExtCommListCollection()->rtExtCommLists();   // one per route-target set
/// @endcode
#pragma once

#include "QorBgpCommunity/QorBgp/QorBgpCommunityListDedupTable.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListExt.h"

#include <mutex>

namespace Routing::Bgp {

/// The observer object of one interned route-target classification list. It
/// refers to the list without owning it.
class QORBGP_EXPORT RtExtCommListLifeTimeNotifier : public Zup::DedupHandleLifeTimeNotifier {
 public:
   KIV_POINTER_TYPES(RtExtCommListLifeTimeNotifier);

   explicit RtExtCommListLifeTimeNotifier(RtExtCommClassificationList const* list) noexcept;
   ~RtExtCommListLifeTimeNotifier() override;
   std::string_view fwkType() const noexcept { return "Routing::Bgp::RtExtCommListLifeTimeNotifier"; }

   RtExtCommClassificationList const* rtExtCommListRawPtr() const noexcept;
   ExtComm::PtrConst comm(U64 const& community) const;
   /// The text of its route-target list, "extCommClassificationRouteTarget : <rt> ...".
   std::string toStrep() const;
};

QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, RtExtCommListLifeTimeNotifier const* notifier);

/// Hashes a lifetime notifier by its address.
struct RtExtCommListLifeTimeNotifierHash {
   std::size_t operator()(RtExtCommListLifeTimeNotifier::PtrConst const& p) const noexcept {
      return std::hash<void const*>{}(p.get());
   }
};

/// The notifiers of the interned route-target lists (attribute rtExtCommList).
class QORBGP_EXPORT NotifyingRtExtCommListCollection : public Kiv::Notifier {
 public:
   KIV_POINTER_TYPES(NotifyingRtExtCommListCollection);

   /// Observer of the collection; told of every notifier that enters or leaves it.
   class QORBGP_EXPORT Notifiee : public Kiv::Notifiee {
    public:
      ~Notifiee() override;
      virtual void onRtExtCommList(RtExtCommListLifeTimeNotifier::PtrConst const&) {}
   };
   using Collection =
      Kiv::NotifyingKeySet<RtExtCommListLifeTimeNotifier::PtrConst, Notifiee,
                           &Notifiee::onRtExtCommList, RtExtCommListLifeTimeNotifierHash>;

   NotifyingRtExtCommListCollection() noexcept = default;
   ~NotifyingRtExtCommListCollection() override;
   std::string_view fwkType() const noexcept {
      return "Routing::Bgp::NotifyingRtExtCommListCollection";
   }

   void rtExtCommListIs(RtExtCommListLifeTimeNotifier::PtrConst const& notifier) {
      rtExtCommList_.insert(notifier);
   }
   bool rtExtCommListDel(RtExtCommListLifeTimeNotifier::PtrConst const& notifier) {
      return rtExtCommList_.erase(notifier);
   }
   void rtExtCommListDelAll() { rtExtCommList_.clear(); }
   Collection const& rtExtCommLists() const noexcept { return rtExtCommList_; }

   /// "NotifyingRtExtCommListCollection rtExtCommLists #<n>;" then one
   /// "rtExtCommList <notifier text>" line per entry at indent + 2.
   void dumpState(Kiv::DumpContext& context, unsigned indent) const;

 private:
   Collection rtExtCommList_{*this};
};

QORBGP_EXPORT NotifyingRtExtCommListCollection::Ptr notifyingRtExtCommListCollectionFactory();

/// Attaches a notifier to every route-target list entering its table and
/// takes it away when the list leaves, keeping the collection in step. The
/// interning threads report concurrently: a mutex serialises the collection.
class QORBGP_EXPORT RtExtCommListLifeTimeNotifiee : public Zup::DedupHashTableLifeTimeNotifiee {
 public:
   KIV_POINTER_TYPES(RtExtCommListLifeTimeNotifiee);

   explicit RtExtCommListLifeTimeNotifiee(NotifyingRtExtCommListCollection::Ptr const& collection);
   ~RtExtCommListLifeTimeNotifiee() override;

   void handleInsert(Zup::DedupHandle::Ptr const& rtExtCommList) override;
   void handleRemove(Zup::DedupHandle* rtExtCommList) override;
   /// Runs handleRemove for every list still in the collection.
   void handleNotificationStop(Zup::DedupHashTable const& dedupTable) override;

   NotifyingRtExtCommListCollection::Ptr const& notifyingRtExtCommListCollection() const noexcept {
      return collection_;
   }

 private:
   void removeLocked(RtExtCommClassificationList const& list);

   NotifyingRtExtCommListCollection::Ptr const collection_;
   std::mutex mutex_;
};

QORBGP_EXPORT RtExtCommListLifeTimeNotifiee::Ptr
rtExtCommListLifeTimeNotifieeFactory(NotifyingRtExtCommListCollection::Ptr const& collection);

/// The interning table of published extended community lists.
class QORBGP_EXPORT ExtCommListDedupTable final : public CommListDedupTableBase {
 public:
   KIV_POINTER_TYPES(ExtCommListDedupTable);

   ExtCommListDedupTable();
   ~ExtCommListDedupTable() override;
   std::string_view fwkType() const noexcept override;

   Zup::DedupHashTable::Ptr const& extCommClassificationListDedupTable() const noexcept {
      return extCommClassificationListDedupTable_;
   }
   Zup::DedupHashTable::Ptr const& rtExtCommClassificationListDedupTable() const noexcept {
      return rtExtCommClassificationListDedupTable_;
   }
   NotifyingRtExtCommListCollection::Ptr const& notifyingRtExtCommListCollection() const noexcept {
      return notifyingRtExtCommListCollection_;
   }
   RtExtCommListLifeTimeNotifiee::Ptr const& rtExtCommListLifeTimeNotifiee() const noexcept {
      return rtExtCommListLifeTimeNotifiee_;
   }

   void notifyingRtExtCommListCollectionIs();
   void notifyingRtExtCommListCollectionDel() noexcept { notifyingRtExtCommListCollection_ = nullptr; }
   void rtExtCommListLifeTimeNotifieeIs(NotifyingRtExtCommListCollection::Ptr const& collection);
   void rtExtCommListLifeTimeNotifieeDel() noexcept { rtExtCommListLifeTimeNotifiee_ = nullptr; }

   /// "ExtCommListDedupTable", then the three tables labelled extComm,
   /// extCommClassification and rtExtCommClassification.
   void dumpState(Kiv::DumpContext& context, unsigned indent) const override;

 private:
   void handleInitialized();

   Zup::DedupHashTable::Ptr extCommClassificationListDedupTable_;
   NotifyingRtExtCommListCollection::Ptr notifyingRtExtCommListCollection_;
   RtExtCommListLifeTimeNotifiee::Ptr rtExtCommListLifeTimeNotifiee_;
   Zup::DedupHashTable::Ptr rtExtCommClassificationListDedupTable_;
};

QORBGP_EXPORT ExtCommListDedupTable::Ptr extCommListDedupTableFactory();

} // namespace Routing::Bgp
