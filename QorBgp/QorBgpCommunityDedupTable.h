/// @file
/// Interning of extended communities: ExtCommDedupTable maps each 8-octet
/// content to its one shared ExtComm, built on first use by the recognition
/// parser (so a route target becomes an ExtCommRouteTargetAs, and so on), and
/// keeps the set of route targets currently alive in a NotifyingRouteTargetList.
///
/// @code{.cpp}
///   auto recognition = bgpParseExtCommContainerSmFactory();
///   auto table = extCommDedupTableFactory(recognition->extCommParser());
///   ExtComm::PtrConst rt = ExtComm::dedupContent(table.get(), ExtCommContent(0x0002fde800000064));
///   table->routeTargetList()->rtHas(RouteTarget(0x0002fde800000064));   // true while rt lives
/// @endcode
///
/// Interning may run on several threads when QorBgpGlobals::multiThreaded() was
/// on at creation; route-target reports are then serialised by the notifiee.
#pragma once

#include "QorBgpCommunity/QorBgp/NotifyingRouteTargetList.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommParser.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunity.h"
#include "QorBgpCommunity/platform/QorBgpGlobals.h"

#include <mutex>

namespace Kiv {
class DumpContext;
}

namespace Routing::Bgp {

/// Reports route targets entering and leaving an interning table to the
/// table's route-target list; other classifications are not reported.
class QORBGP_EXPORT ExtCommLifeTimeNotifiee : public Zup::DedupHashTableLifeTimeNotifiee {
 public:
   KIV_POINTER_TYPES(ExtCommLifeTimeNotifiee);

   explicit ExtCommLifeTimeNotifiee(NotifyingRouteTargetList::Ptr const& routeTargetList);
   ~ExtCommLifeTimeNotifiee() override;

   void handleInsert(Zup::DedupHandle::Ptr const& handle) override;
   void handleRemove(Zup::DedupHandle* handle) override;
   /// Empties the route-target list.
   void handleNotificationStop(Zup::DedupHashTable const& table) override;

   NotifyingRouteTargetList::Ptr const& routeTargetList() const noexcept { return routeTargetList_; }

 private:
   NotifyingRouteTargetList::Ptr const routeTargetList_;
   /// Interning threads report concurrently; the list itself is single-threaded.
   std::mutex mutex_;
};

/// The interning table of 8-octet extended communities, with the route targets currently
/// alive.
class QORBGP_EXPORT ExtCommDedupTable : public BasicDedupTable_ {
 public:
   KIV_POINTER_TYPES(ExtCommDedupTable);
   using ParserPtrConst = Kiv::Ptr<BgpParseExtendedCommunityRule const>;

   /// Builds the hash table, the route-target list and its notifiee.
   explicit ExtCommDedupTable(ParserPtrConst const& parseExtCommRule);
   ~ExtCommDedupTable() override;
   std::string_view fwkType() const noexcept { return "Routing::Bgp::ExtCommDedupTable"; }

   ParserPtrConst const& parseExtCommRule() const noexcept { return parseExtCommRule_; }
   NotifyingRouteTargetList::Ptr const& routeTargetList() const noexcept {
      return lifeTimeNotifiee_->routeTargetList();
   }
   ExtCommLifeTimeNotifiee::Ptr const& lifeTimeNotifiee() const noexcept {
      return lifeTimeNotifiee_;
   }

   /// "ExtCommDedupTable:" then the hash table and the route-target list as children.
   void dumpState(Kiv::DumpContext& context, unsigned indent) const;

 private:
   void handleInitialized();

   ExtCommLifeTimeNotifiee::Ptr lifeTimeNotifiee_;
   ParserPtrConst const parseExtCommRule_;
};

/// A new table with notification enabled. The parser must not be null.
QORBGP_EXPORT ExtCommDedupTable::Ptr
extCommDedupTableFactory(ExtCommDedupTable::ParserPtrConst const& parseExtCommRule);

} // namespace Routing::Bgp
