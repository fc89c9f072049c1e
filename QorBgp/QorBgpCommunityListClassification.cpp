#include "QorBgpCommunity/QorBgp/QorBgpCommunityListClassification.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityListExtDedupTable.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListFormat.h"
#include "QorBgpCommunity/platform/Errors.h"

namespace Routing::Bgp {

QOR_ASSERT_UNIT("QorBgpCommunityList");

ExtCommClassificationList::ExtCommClassificationList(ExtCommClassification classification)
    : ExtCommClassificationListCore(classification) {}

ExtCommClassificationList::~ExtCommClassificationList() = default;

std::string_view ExtCommClassificationList::fwkType() const noexcept {
   return "Routing::Bgp::ExtCommClassificationList";
}

void ExtCommClassificationList::commIs(ExtComm::PtrConst const& comm) {
   commAppend(comm);
   checkPrunable(comm);
}

ExtCommClassificationList::PtrConst
ExtCommClassificationList::dedup(ExtCommListDedupTable const* table) {
   commVectorSort();
   commVectorSortedIs(true);
   Zup::DedupHashTable& target = classification() == extCommClassificationRouteTarget
                                    ? *table->rtExtCommClassificationListDedupTable()
                                    : *table->extCommClassificationListDedupTable();
   return target.dedupAs<ExtCommClassificationList>(PtrConst(this));
}

void ExtCommClassificationList::checkPrunable(ExtComm::PtrConst const& comm) {
   if (!comm->isValid()) {
      hasPrunableValuesIs();
   }
}

ExtCommVector ExtCommClassificationList::prune() const {
   ExtCommVector kept;
   for (ExtComm::PtrConst const& comm : commVector()) {
      if (comm->isValid()) {
         kept.push_back(comm);
      }
   }
   return kept;
}

RtExtCommClassificationList::RtExtCommClassificationList(ExtCommClassification classification)
    : ExtCommClassificationList(classification) {}

RtExtCommClassificationList::~RtExtCommClassificationList() = default;

std::string_view RtExtCommClassificationList::fwkType() const noexcept {
   return "Routing::Bgp::RtExtCommClassificationList";
}

void RtExtCommClassificationList::lifeTimeNotifierIs(
   Kiv::Ptr<RtExtCommListLifeTimeNotifier> const& notifier) const {
   lifeTimeNotifier_ = notifier;
}

Kiv::Ptr<RtExtCommListLifeTimeNotifier> const&
RtExtCommClassificationList::lifeTimeNotifier() const noexcept {
   return lifeTimeNotifier_;
}

LinkBandwidthExtCommClassificationList::LinkBandwidthExtCommClassificationList()
    : ExtCommClassificationList(extCommClassificationLinkBandwidth) {}

LinkBandwidthExtCommClassificationList::~LinkBandwidthExtCommClassificationList() = default;

std::string_view LinkBandwidthExtCommClassificationList::fwkType() const noexcept {
   return "Routing::Bgp::LinkBandwidthExtCommClassificationList";
}

void LinkBandwidthExtCommClassificationList::checkPrunable(ExtComm::PtrConst const& comm) {
   if (!comm->isValid()) {
      hasPrunableValuesIs();
      return;
   }
   // Only a strictly better one replaces the best: ties keep the first.
   if (!best_ || comm->isBetterThan(best_)) {
      best_ = comm;
   }
   if (comms() > 1) {
      hasPrunableValuesIs();
   }
}

ExtCommVector LinkBandwidthExtCommClassificationList::prune() const {
   return best_ ? ExtCommVector{best_} : ExtCommVector{};
}

ExtCommClassificationList::Ptr
extCommClassificationListFactory(ExtCommClassification classification) {
   return Kiv::newNotifying<ExtCommClassificationList>(classification);
}

RtExtCommClassificationList::Ptr
rtExtCommClassificationListFactory(ExtCommClassification classification) {
   return Kiv::newNotifying<RtExtCommClassificationList>(classification);
}

LinkBandwidthExtCommClassificationList::Ptr linkBandwidthExtCommClassificationListFactory() {
   return Kiv::newNotifying<LinkBandwidthExtCommClassificationList>();
}

std::string ExtCommClassificationList::toStrep() const {
   return stringify<ExtCommClassificationList>(this);
}

} // namespace Routing::Bgp
