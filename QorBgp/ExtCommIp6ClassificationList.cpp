#include "QorBgp/ExtCommIp6ClassificationList.h"

#include "QorBgp/ExtCommIp6ListDedupTable.h"
#include "QorBgp/QorBgpCommunityListFormat.h"
#include "QorBgp/detail/ExtCommListFamily.h"
#include "platform/Errors.h"

#include <ostream>

namespace Routing::Bgp {

QOR_ASSERT_UNIT("ExtCommIp6ClassificationList");

ExtCommIp6ClassificationList::ExtCommIp6ClassificationList(
   ExtCommClassification classification) noexcept
    : classification_(classification) {}

ExtCommIp6ClassificationList::~ExtCommIp6ClassificationList() = default;

std::string_view ExtCommIp6ClassificationList::fwkType() const noexcept {
   return "Routing::Bgp::ExtCommIp6ClassificationList";
}

void ExtCommIp6ClassificationList::commIs(ExtCommIp6::PtrConst const& comm) {
   detail::ExtCommVectorAdd(comm, comms_);
}

ExtCommIp6::PtrConst ExtCommIp6ClassificationList::comm(ExtCommIp6Content const& content) const {
   return detail::ExtCommVectorLookup(commVectorSorted(), comms_, content);
}

U32 ExtCommIp6ClassificationList::hash() const noexcept {
   QOR_ASSERT(commVectorSorted());
   return detail::ExtCommIdentityHash(comms_);
}

bool ExtCommIp6ClassificationList::compare(Zup::DedupHandle const* other) const noexcept {
   QOR_ASSERT(commVectorSorted());
   return comms_ == static_cast<ExtCommIp6ClassificationList const*>(other)->comms_;
}

bool ExtCommIp6ClassificationList::compareByContent(Zup::DedupContentHandle const&) const noexcept {
   return false;
}

ExtCommIp6ClassificationList::PtrConst
ExtCommIp6ClassificationList::dedup(ExtCommIp6ListDedupTable const* table) {
   detail::ExtCommVectorSort(comms_);
   commVectorSortedIs(true);
   return table->extCommIp6ClassificationListDedupTable()->dedupAs<ExtCommIp6ClassificationList>(
      PtrConst(this));
}

Kiv::Ptr<ExtCommIp6ClassificationListSnapshot> ExtCommIp6ClassificationList::commSnapshot() const {
   return detail::classificationListSnapshot<ExtCommIp6ClassificationListSnapshot>(classification_,
                                                                                  comms_);
}

std::string ExtCommIp6ClassificationList::toStrep() const { return stringify(this); }

ExtCommIp6ClassificationList::Ptr
extCommIp6ClassificationListFactory(ExtCommClassification classification) {
   return Kiv::newNotifying<ExtCommIp6ClassificationList>(classification);
}

void formatCommList(std::ostream& os, ExtCommIp6ClassificationList const* list) {
   formatListElements(
      os, list ? list->commVectorRawPtr() : nullptr,
      [](std::ostream& out, ExtCommIp6::PtrConst const& comm) { out << comm.get(); }, true, " ");
}

std::ostream& operator<<(std::ostream& os, ExtCommIp6ClassificationList const* list) {
   formatCommList(os, list);
   return os;
}

void ExtCommIp6ClassificationListSnapshot::commIs(ExtCommIp6::PtrConst const& comm) {
   commSet(comm, "ExtCommIp6ClassificationListSnapshot::commIs: null comm");
}

ExtCommIp6ClassificationListSnapshot::Ptr
extCommIp6ClassificationListSnapshotFactory(ExtCommClassification classification) {
   return Kiv::newNotifying<ExtCommIp6ClassificationListSnapshot>(classification);
}

} // namespace Routing::Bgp
