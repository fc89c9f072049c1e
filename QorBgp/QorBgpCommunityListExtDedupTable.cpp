#include "QorBgpCommunity/QorBgp/QorBgpCommunityListExtDedupTable.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityListFormat.h"
#include "QorBgpCommunity/QorBgp/QorBgpTrace.h"
#include "QorBgpCommunity/platform/DumpContext.h"

#include <ostream>
#include <vector>

namespace Routing::Bgp {

QOR_ASSERT_UNIT("QorBgpCommunityList");

RtExtCommListLifeTimeNotifier::RtExtCommListLifeTimeNotifier(
   RtExtCommClassificationList const* list) noexcept
    : Zup::DedupHandleLifeTimeNotifier(list) {}

RtExtCommListLifeTimeNotifier::~RtExtCommListLifeTimeNotifier() = default;

RtExtCommClassificationList const* RtExtCommListLifeTimeNotifier::rtExtCommListRawPtr() const noexcept {
   return static_cast<RtExtCommClassificationList const*>(dedupHandle());
}

ExtComm::PtrConst RtExtCommListLifeTimeNotifier::comm(U64 const& community) const {
   return rtExtCommListRawPtr()->comm(community);
}

std::ostream& operator<<(std::ostream& os, RtExtCommListLifeTimeNotifier const* notifier) {
   formatCommList(os, notifier);
   return os;
}

NotifyingRtExtCommListCollection::Notifiee::~Notifiee() = default;
NotifyingRtExtCommListCollection::~NotifyingRtExtCommListCollection() = default;

void NotifyingRtExtCommListCollection::dumpState(Kiv::DumpContext& context, unsigned indent) const {
   context.printf(indent, "NotifyingRtExtCommListCollection rtExtCommLists #%zu;\n",
                  rtExtCommList_.size());
   for (auto const& notifier : rtExtCommList_) {
      context.printf(indent + 2, "rtExtCommList %s\n", notifier->toStrep().c_str());
   }
}

NotifyingRtExtCommListCollection::Ptr notifyingRtExtCommListCollectionFactory() {
   return Kiv::newNotifying<NotifyingRtExtCommListCollection>();
}

RtExtCommListLifeTimeNotifiee::RtExtCommListLifeTimeNotifiee(
   NotifyingRtExtCommListCollection::Ptr const& collection)
    : collection_(collection) {}

RtExtCommListLifeTimeNotifiee::~RtExtCommListLifeTimeNotifiee() = default;

void RtExtCommListLifeTimeNotifiee::handleInsert(Zup::DedupHandle::Ptr const& rtExtCommList) {
   auto const& list = static_cast<RtExtCommClassificationList const&>(*rtExtCommList);
   QOR_ASSERT_TEXT(!list.lifeTimeNotifier(), "__null == rtExtCommList->lifeTimeNotifier()");
   auto notifier = Kiv::newNotifying<RtExtCommListLifeTimeNotifier>(&list);
   list.lifeTimeNotifierIs(notifier);
   QOR_TRACE(qorBgpTrace(), 9,
             "RtExtCommListLifeTimeNotifiee::handleInsert " << this << " handle: " << &list
                                                            << " rtExtCommListLifeTimeNotifier: "
                                                            << notifier.get());
   std::lock_guard lock(mutex_);
   collection_->rtExtCommListIs(notifier);
}

void RtExtCommListLifeTimeNotifiee::handleRemove(Zup::DedupHandle* rtExtCommList) {
   std::lock_guard lock(mutex_);
   removeLocked(static_cast<RtExtCommClassificationList const&>(*rtExtCommList));
}

void RtExtCommListLifeTimeNotifiee::removeLocked(RtExtCommClassificationList const& list) {
   auto const lifeTimeNotifier = list.lifeTimeNotifier();
   QOR_TRACE(qorBgpTrace(), 9,
             "RtExtCommListLifeTimeNotifiee::handleRemove " << this << " handle: " << &list
                                                            << " rtExtCommListLifeTimeNotifier: "
                                                            << lifeTimeNotifier.get());
   QOR_ASSERT_TEXT(lifeTimeNotifier != nullptr, "__null != lifeTimeNotifier");
   collection_->rtExtCommListDel(lifeTimeNotifier);
   list.lifeTimeNotifierIs(nullptr);
}

void RtExtCommListLifeTimeNotifiee::handleNotificationStop(Zup::DedupHashTable const& dedupTable) {
   QOR_TRACE(qorBgpTrace(), 9,
             "RtExtCommListLifeTimeNotifiee::handleNotificationStop " << this << " dedupTable: "
                                                                      << &dedupTable);
   std::lock_guard lock(mutex_);
   std::vector<RtExtCommListLifeTimeNotifier::PtrConst> notifiers(
      collection_->rtExtCommLists().begin(), collection_->rtExtCommLists().end());
   for (auto const& notifier : notifiers) {
      removeLocked(*notifier->rtExtCommListRawPtr());
   }
}

RtExtCommListLifeTimeNotifiee::Ptr
rtExtCommListLifeTimeNotifieeFactory(NotifyingRtExtCommListCollection::Ptr const& collection) {
   return Kiv::newNotifying<RtExtCommListLifeTimeNotifiee>(collection);
}

ExtCommListDedupTable::ExtCommListDedupTable() { handleInitialized(); }

// Members go in reverse order: the route-target table first, whose teardown
// empties the collection through the notifiee.
ExtCommListDedupTable::~ExtCommListDedupTable() = default;

std::string_view ExtCommListDedupTable::fwkType() const noexcept {
   return "Routing::Bgp::ExtCommListDedupTable";
}

void ExtCommListDedupTable::handleInitialized() {
   extCommClassificationListDedupTable_ = Zup::dedupHashTableFactory(QorBgpGlobals::multiThreaded());
   rtExtCommClassificationListDedupTable_ =
      Zup::dedupHashTableFactory(QorBgpGlobals::multiThreaded());
   notifyingRtExtCommListCollectionIs();
   rtExtCommListLifeTimeNotifieeIs(notifyingRtExtCommListCollection_);
   rtExtCommClassificationListDedupTable_->lifeTimeNotifieeIs(rtExtCommListLifeTimeNotifiee_);
}

void ExtCommListDedupTable::notifyingRtExtCommListCollectionIs() {
   notifyingRtExtCommListCollection_ = notifyingRtExtCommListCollectionFactory();
}

void ExtCommListDedupTable::rtExtCommListLifeTimeNotifieeIs(
   NotifyingRtExtCommListCollection::Ptr const& collection) {
   rtExtCommListLifeTimeNotifiee_ = rtExtCommListLifeTimeNotifieeFactory(collection);
}

void ExtCommListDedupTable::dumpState(Kiv::DumpContext& context, unsigned indent) const {
   dumpTables(context, indent, "ExtCommListDedupTable",
              {{"extComm", dedupTable()},
               {"extCommClassification", extCommClassificationListDedupTable_},
               {"rtExtCommClassification", rtExtCommClassificationListDedupTable_}});
}

ExtCommListDedupTable::Ptr extCommListDedupTableFactory() {
   return Kiv::newNotifying<ExtCommListDedupTable>();
}

std::string RtExtCommListLifeTimeNotifier::toStrep() const {
   return stringify<ExtCommClassificationList>(rtExtCommListRawPtr());
}

} // namespace Routing::Bgp
