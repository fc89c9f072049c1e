// The snapshot shapes that both extended community families share: a
// notifying copy of a classification list (its values by content) and of a
// whole list (its classification lists by classification, then its values by
// content). ExtCommListSnapshot and ExtCommClassificationListSnapshot (8-octet
// values) and their ExtCommIp6 counterparts are these templates with their
// own value types, pointer types and null-argument messages.
//
// A snapshot is owned by one consumer: it is mutable, keyed, and tells its
// notifiees about every entry inserted, replaced or removed, on the thread
// that changes it. A notifiee may read the snapshot from its callback but not
// change it.
//
//   struct Watcher : ExtCommListSnapshot::Notifiee {
//      void onComm(U64 const& community) override { ... }
//   };
//   ExtCommListSnapshot::Ptr snapshot = list->commSnapshot();
#pragma once

#include "QorBgp/QorBgpCommunityPacketTypes.h"
#include "platform/Errors.h"
#include "platform/Notifier.h"
#include "platform/NotifyingCollections.h"
#include "platform/Ptr.h"

namespace Routing::Bgp {

// `Comm` is the interned value type, `Key` its content (what community()
// returns); `nullCommMessage` the NullArgumentError text of commIs.
template <class Comm, class Key>
class ExtCommClassificationListSnapshotBase : public Kiv::Notifier {
 public:
   class Notifiee : public Kiv::Notifiee {
    public:
      virtual void onComm(Key const&) {}
   };
   using CommMap = Kiv::NotifyingOrderedMap<Key, Kiv::Ptr<Comm const>, Notifiee, &Notifiee::onComm>;

   explicit ExtCommClassificationListSnapshotBase(ExtCommClassification classification) noexcept
       : classification_(classification) {}
   ExtCommClassification classification() const noexcept { return classification_; }

   void commDel(Key const& community) { comm_.erase(community); }
   void commDel(typename CommMap::const_iterator it) { comm_.erase(it->first); }
   void commDelAll() { comm_.clear(); }
   CommMap const& comm() const noexcept { return comm_; }

 protected:
   // Inserts or replaces the entry of the value's content; NullArgumentError
   // carrying `nullMessage` for a null value.
   void commSet(Kiv::Ptr<Comm const> const& comm, char const* nullMessage) {
      if (!comm) {
         throw Kiv::NullArgumentError(nullMessage);
      }
      comm_.set(comm->community(), comm);
   }

 private:
   ExtCommClassification const classification_;
   CommMap comm_{*this};
};

// `ClassificationList` is the family's classification list type.
template <class ClassificationList, class Comm, class Key>
class ExtCommListSnapshotBase : public Kiv::Notifier {
 public:
   class Notifiee : public Kiv::Notifiee {
    public:
      virtual void onClassificationList(ExtCommClassification const&) {}
      virtual void onComm(Key const&) {}
   };
   using ClassificationListMap =
      Kiv::NotifyingOrderedMap<ExtCommClassification, Kiv::Ptr<ClassificationList const>, Notifiee,
                               &Notifiee::onClassificationList>;
   using CommMap = Kiv::NotifyingOrderedMap<Key, Kiv::Ptr<Comm const>, Notifiee, &Notifiee::onComm>;

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

 protected:
   // Insert or replace the entry of the list's classification (the value's
   // content); NullArgumentError carrying `nullMessage` for a null argument.
   void classificationListSet(Kiv::Ptr<ClassificationList const> const& list,
                              char const* nullMessage) {
      if (!list) {
         throw Kiv::NullArgumentError(nullMessage);
      }
      classificationList_.set(list->classification(), list);
   }
   void commSet(Kiv::Ptr<Comm const> const& comm, char const* nullMessage) {
      if (!comm) {
         throw Kiv::NullArgumentError(nullMessage);
      }
      comm_.set(comm->community(), comm);
   }

 private:
   ClassificationListMap classificationList_{*this};
   CommMap comm_{*this};
};

} // namespace Routing::Bgp
