#include "QorBgpCommunity/QorBgp/ExtCommIp6ClassificationList.h"

#include "QorBgpCommunity/QorBgp/ExtCommIp6ListDedupTable.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListFormat.h"
#include "QorBgpCommunity/platform/Errors.h"

#include <ostream>

namespace Routing::Bgp {

QOR_ASSERT_UNIT("ExtCommIp6ClassificationList");

ExtCommIp6ClassificationList::ExtCommIp6ClassificationList(
   ExtCommClassification classification) noexcept
    : ExtCommClassificationListCore(classification) {}

ExtCommIp6ClassificationList::~ExtCommIp6ClassificationList() = default;

std::string_view ExtCommIp6ClassificationList::fwkType() const noexcept {
   return "Routing::Bgp::ExtCommIp6ClassificationList";
}

void ExtCommIp6ClassificationList::commIs(ExtCommIp6::PtrConst const& comm) { commAppend(comm); }

ExtCommIp6ClassificationList::PtrConst
ExtCommIp6ClassificationList::dedup(ExtCommIp6ListDedupTable const* table) {
   commVectorSort();
   commVectorSortedIs(true);
   return table->extCommIp6ClassificationListDedupTable()->dedupAs<ExtCommIp6ClassificationList>(
      PtrConst(this));
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

ExtCommIp6ClassificationListSnapshot::Ptr
extCommIp6ClassificationListSnapshotFactory(ExtCommClassification classification) {
   return Kiv::newNotifying<ExtCommIp6ClassificationListSnapshot>(classification);
}

} // namespace Routing::Bgp
