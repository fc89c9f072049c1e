/// @file
/// The snapshots of both extended community families: a notifying copy of a
/// classification list (its values by content) and of a whole list (its
/// classification lists by classification, then its values by content).
/// ExtCommListSnapshot and ExtCommClassificationListSnapshot (8-octet values)
/// and their ExtCommIp6 counterparts are these templates for their family
/// (ExtCommListCore.h).
///
/// A snapshot is owned by one consumer: it is mutable, keyed, and tells its
/// notifiees about every entry inserted, replaced or removed, on the thread
/// that changes it. A notifiee may read the snapshot from its callback but not
/// change it.
///
/// @code{.cpp}
///   struct Watcher : ExtCommListSnapshot::Notifiee {
///      void onComm(U64 const& community) override { ... }
///   };
///   ExtCommListSnapshot::Ptr snapshot = list->commSnapshot();
/// @endcode
#pragma once

#include "QorBgpCommunity/QorBgp/ExtCommListCore.h"
#include "QorBgpCommunity/platform/Errors.h"
#include "QorBgpCommunity/platform/Notifier.h"
#include "QorBgpCommunity/platform/NotifyingCollections.h"
#include "QorBgpCommunity/platform/Ptr.h"

#include <string>

namespace Routing::Bgp {

namespace detail {

/// Inserts or replaces the entry of `value` under `keyOf(*value)`;
/// Kiv::NullArgumentError "<owner><mutator>" for a null value.
template <class Map, class Value, class KeyOf>
void snapshotEntryIs(Map& map, Value const& value, KeyOf keyOf, char const* owner,
                     char const* mutator) {
   if (!value) {
      throw Kiv::NullArgumentError(std::string(owner) + mutator);
   }
   map.set(keyOf(*value), value);
}

/// The key of a value in a snapshot: its content.
template <class Comm>
auto communityOf(Comm const& comm) {
   return comm.community();
}

} // namespace detail

/// A notifying copy of one classification list of a family, its values keyed by content.
template <class Family>
class ExtCommClassificationListSnapshotBase : public Kiv::Notifier {
 public:
   using Comm = typename Family::Comm;
   using Key = typename Family::Key;

   /// Observer of the snapshot; told of every value inserted, replaced or removed.
   class Notifiee : public Kiv::Notifiee {
    public:
      virtual void onComm(Key const&) {}
   };
   using CommMap = Kiv::NotifyingOrderedMap<Key, Kiv::Ptr<Comm const>, Notifiee, &Notifiee::onComm>;

   explicit ExtCommClassificationListSnapshotBase(ExtCommClassification classification) noexcept
       : classification_(classification) {}
   ExtCommClassification classification() const noexcept { return classification_; }

   /// Inserts or replaces the entry of the value's content. Kiv::NullArgumentError
   /// for a null value.
   void commIs(Kiv::Ptr<Comm const> const& comm) {
      detail::snapshotEntryIs(comm_, comm, detail::communityOf<Comm>,
                              Family::classificationListSnapshotName, "::commIs: null comm");
   }
   void commDel(Key const& community) { comm_.erase(community); }
   void commDel(typename CommMap::const_iterator it) { comm_.erase(it->first); }
   void commDelAll() { comm_.clear(); }
   CommMap const& comm() const noexcept { return comm_; }

 private:
   ExtCommClassification const classification_;
   CommMap comm_{*this};
};

/// A notifying copy of a whole list of a family: its classification lists by classification,
/// its values by content.
template <class Family>
class ExtCommListSnapshotBase : public Kiv::Notifier {
 public:
   using ClassificationList = typename Family::ClassificationList;
   using Comm = typename Family::Comm;
   using Key = typename Family::Key;

   /// Observer of the snapshot; told of every classification list and value inserted, replaced or removed.
   class Notifiee : public Kiv::Notifiee {
    public:
      virtual void onClassificationList(ExtCommClassification const&) {}
      virtual void onComm(Key const&) {}
   };
   using ClassificationListMap =
      Kiv::NotifyingOrderedMap<ExtCommClassification, Kiv::Ptr<ClassificationList const>, Notifiee,
                               &Notifiee::onClassificationList>;
   using CommMap = Kiv::NotifyingOrderedMap<Key, Kiv::Ptr<Comm const>, Notifiee, &Notifiee::onComm>;

   /// Insert or replace the entry of the list's classification (the value's
   /// content). Kiv::NullArgumentError for a null argument.
   void classificationListIs(Kiv::Ptr<ClassificationList const> const& list) {
      detail::snapshotEntryIs(
         classificationList_, list, [](ClassificationList const& l) { return l.classification(); },
         Family::listSnapshotName, "::classificationListIs: null list");
   }
   void commIs(Kiv::Ptr<Comm const> const& comm) {
      detail::snapshotEntryIs(comm_, comm, detail::communityOf<Comm>, Family::listSnapshotName,
                              "::commIs: null comm");
   }
   void classificationListDel(ExtCommClassification classification) {
      classificationList_.erase(classification);
   }
   void classificationListDel(typename ClassificationListMap::const_iterator it) {
      classificationList_.erase(it->first);
   }
   void commDel(Key const& community) { comm_.erase(community); }
   void commDel(typename CommMap::const_iterator it) { comm_.erase(it->first); }
   void classificationListDelAll() { classificationList_.clear(); }
   void commDelAll() { comm_.clear(); }

   ClassificationListMap const& classificationList() const noexcept { return classificationList_; }
   CommMap const& comm() const noexcept { return comm_; }

 private:
   ClassificationListMap classificationList_{*this};
   CommMap comm_{*this};
};

} // namespace Routing::Bgp
