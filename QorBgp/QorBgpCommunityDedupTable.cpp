#include "QorBgpCommunity/QorBgp/QorBgpCommunityDedupTable.h"

#include "QorBgpCommunity/platform/DumpContext.h"
#include "QorBgpCommunity/platform/Errors.h"

namespace Routing::Bgp {

namespace {

ExtComm const& asExtComm(Zup::DedupHandle const& handle) {
   return static_cast<ExtComm const&>(handle);
}

} // namespace

ExtCommLifeTimeNotifiee::ExtCommLifeTimeNotifiee(
   NotifyingRouteTargetList::Ptr const& routeTargetList)
    : routeTargetList_(routeTargetList) {}

ExtCommLifeTimeNotifiee::~ExtCommLifeTimeNotifiee() = default;

void ExtCommLifeTimeNotifiee::handleInsert(Zup::DedupHandle::Ptr const& handle) {
   ExtComm const& comm = asExtComm(*handle);
   if (comm.classification() == extCommClassificationRouteTarget) {
      std::lock_guard lock(mutex_);
      routeTargetList_->rtIs(RouteTarget(comm.getContent().word()));
   }
}

void ExtCommLifeTimeNotifiee::handleRemove(Zup::DedupHandle* handle) {
   ExtComm const& comm = asExtComm(*handle);
   if (comm.classification() == extCommClassificationRouteTarget) {
      std::lock_guard lock(mutex_);
      routeTargetList_->rtDel(RouteTarget(comm.getContent().word()));
   }
}

void ExtCommLifeTimeNotifiee::handleNotificationStop(Zup::DedupHashTable const&) {
   std::lock_guard lock(mutex_);
   routeTargetList_->rtDelAll();
}

ExtCommDedupTable::ExtCommDedupTable(ParserPtrConst const& parseExtCommRule)
    : parseExtCommRule_(parseExtCommRule) {
   if (!parseExtCommRule_) {
      throw Kiv::NullArgumentError("ExtCommDedupTable: null parser");
   }
   handleInitialized();
}

// The hash table (owned by the base) outlives the notifiee's registration;
// its teardown empties the route-target list.
ExtCommDedupTable::~ExtCommDedupTable() = default;

void ExtCommDedupTable::handleInitialized() {
   lifeTimeNotifiee_ = Kiv::newNotifying<ExtCommLifeTimeNotifiee>(notifyingRouteTargetListFactory());
   dedupTable()->lifeTimeNotifieeIs(lifeTimeNotifiee_);
}

void ExtCommDedupTable::dumpState(Kiv::DumpContext& context, unsigned indent) const {
   context.printf(indent, "ExtCommDedupTable:\n");
   context.child(dedupTable(), indent + 2);
   context.child(routeTargetList(), indent + 2);
}

ExtCommDedupTable::Ptr
extCommDedupTableFactory(ExtCommDedupTable::ParserPtrConst const& parseExtCommRule) {
   return Kiv::newNotifying<ExtCommDedupTable>(parseExtCommRule);
}

} // namespace Routing::Bgp
