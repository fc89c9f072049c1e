/// @file
/// The set of route targets in use, observed: an extended-community interning
/// table reports each route target that it interns or releases, and observers
/// (VPN import and route-target constraint) learn through onRt which route
/// targets came into or went out of use.
#pragma once

#include "QorBgpCommunity/platform/DumpContext.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Notifier.h"
#include "QorBgpCommunity/platform/NotifyingCollections.h"
#include "QorBgpCommunity/platform/Ptr.h"
#include "QorBgpCommunity/platform/RouteTarget.h"
#include "QorBgpCommunity/platform/Types.h"

#include <cstddef>
#include <string_view>

namespace Routing::Bgp {

/// A set of route targets that tells its notifiees about every real change:
/// onRt(rt) runs once after rt was inserted and once after it was removed,
/// never for an insertion of a member or a removal of a non-member. A
/// notifiee looks the route target up (rtHas) to learn which of the two
/// happened.
///
/// Owned through Ptr; created by notifyingRouteTargetListFactory with
/// notification on. Each list has a process-unique id, printed in its dump.
///
/// Threads: not thread-safe. Interning tables that call rtIs and rtDel from
/// several threads serialise those calls themselves; notifiees run on the
/// calling thread, inside rtIs and rtDel (see Notifier.h for what they may do).
///
/// @code{.cpp}
///   class Watcher : public NotifyingRouteTargetList::Notifiee {
///      void onRt(RouteTarget const& rt) override { ... list->rtHas(rt) ... }
///   };
///   auto list = notifyingRouteTargetListFactory();
///   watcher.notifierIs(list.get());
///   list->rtIs(RouteTarget::twoOctetAs(65000, 100));   // onRt(65000:100)
/// @endcode
class QORBGP_EXPORT NotifyingRouteTargetList : public Kiv::Notifier {
 public:
   KIV_POINTER_TYPES(NotifyingRouteTargetList);

   /// Observer of the set; told of every route target inserted or removed.
   class QORBGP_EXPORT Notifiee : public Kiv::Notifiee {
    public:
      ~Notifiee() override;
      /// `rt` was inserted into or removed from the set of attribute "rt".
      virtual void onRt(RouteTarget const& rt);
   };

   NotifyingRouteTargetList();
   ~NotifyingRouteTargetList() override;

   std::string_view fwkType() const noexcept;
   U32 id() const noexcept { return id_; }

   bool rtHas(RouteTarget const& rt) const { return rt_.contains(rt); }
   std::size_t rtCount() const noexcept { return rt_.size(); }

   /// Inserts `rt`; notifies only when it was absent.
   void rtIs(RouteTarget const& rt);
   /// Removes `rt`; notifies and returns true only when it was present.
   bool rtDel(RouteTarget const& rt);
   /// Removes every member, each removal notifying on its own.
   void rtDelAll();

   /// "NotifyingRouteTargetList #<id>:" at `indent`, then one line per member
   /// at indent + 2 in RouteTarget's toStrep(false) text, in ascending order.
   void dumpState(Kiv::DumpContext& ctx, unsigned indent) const;

 private:
   Kiv::NotifyingKeySet<RouteTarget, Notifiee, &Notifiee::onRt> rt_{*this};
   U32 const id_;
};

/// A new, empty list with notification on.
QORBGP_EXPORT NotifyingRouteTargetList::Ptr notifyingRouteTargetListFactory();

} // namespace Routing::Bgp
