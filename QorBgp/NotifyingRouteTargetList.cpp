#include "QorBgpCommunity/QorBgp/NotifyingRouteTargetList.h"

#include <algorithm>
#include <atomic>
#include <vector>

namespace Routing::Bgp {

namespace {

// Lists may be created on any thread (each interning table makes its own).
U32 nextId() noexcept {
   static std::atomic<U32> last{0};
   return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

} // namespace

NotifyingRouteTargetList::Notifiee::~Notifiee() = default;

void NotifyingRouteTargetList::Notifiee::onRt(RouteTarget const&) {}

NotifyingRouteTargetList::NotifyingRouteTargetList() : id_(nextId()) {}

NotifyingRouteTargetList::~NotifyingRouteTargetList() = default;

std::string_view NotifyingRouteTargetList::fwkType() const noexcept {
   return "Routing::Bgp::NotifyingRouteTargetList";
}

void NotifyingRouteTargetList::rtIs(RouteTarget const& rt) { rt_.insert(rt); }

bool NotifyingRouteTargetList::rtDel(RouteTarget const& rt) { return rt_.erase(rt); }

void NotifyingRouteTargetList::rtDelAll() {
   while (rtCount() != 0) {
      rtDel(*rt_.begin());
   }
}

void NotifyingRouteTargetList::dumpState(Kiv::DumpContext& ctx, unsigned indent) const {
   ctx.printf(indent, "NotifyingRouteTargetList #%u:\n", id_);
   // Sorted, so that two dumps of the same set read the same.
   std::vector<RouteTarget> members(rt_.begin(), rt_.end());
   std::sort(members.begin(), members.end());
   for (RouteTarget const& rt : members) {
      ctx.line(indent + 2, rt.toStrep(false));
   }
}

NotifyingRouteTargetList::Ptr notifyingRouteTargetListFactory() {
   return Kiv::newNotifying<NotifyingRouteTargetList>();
}

} // namespace Routing::Bgp
