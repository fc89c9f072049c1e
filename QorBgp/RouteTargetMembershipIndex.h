/// @file
/// RouteTargetMembershipIndex: which peers want which interned route-target
/// lists under route-target constraint (RFC 4684), kept up to date as
/// memberships change and as route-target lists come into and go out of use.
///
/// @code{.cpp}
///   auto index = routeTargetMembershipIndexFactory(tables->extCommListDedupTable());
///   auto changes = index->membershipIs(peer, RouteTargetMembership::fromStrep("65000
///   65000:0/48")); for (auto const& c : changes) { c.wanted ? send(c.peer, c.serial) :
///   withdraw(c.peer, c.serial); } index->wants(peer, *path.extCommunities);     // answered from
///   the list's remembered peers
/// @endcode
///
/// A peer is a key the caller chooses. A peer wants a list when one of the
/// list's route targets falls under one of the peer's memberships; a list
/// without route targets is wanted by no one.
///
/// How it works: the memberships sit in a binary trie over the 64-bit route
/// target (path-compressed: a node per membership prefix and per branching
/// point), each node holding the peers (and origin ASes) of the memberships of
/// exactly its prefix, so that the peers wanting a route target are collected
/// in one walk of at most 65 nodes. The live route-target lists are followed
/// through the table's NotifyingRtExtCommListCollection: when a list comes into
/// use, the peers wanting it are worked out once and remembered with it
/// until a membership change that touches one of its route targets
/// updates them (lists wanted by the same peers share one peer set, so a change
/// turning many lists works out each new set once); when it goes out of use,
/// all that is dropped and nothing is reported. A sorted index of the live lists' route targets
/// finds the lists a membership prefix touches.
///
/// Threads: the lookups (wants, peersWanting) may run on several threads at
/// once, beside lists coming into and going out of use on the interning
/// threads and beside membership changes: a reader-writer lock guards the
/// index. The index must be made before other threads intern into the table
/// (it starts observing the collection then).
#pragma once

#include "QorBgpCommunity/QorBgp/QorBgpCommunityListExtDedupTable.h"
#include "QorBgpCommunity/QorBgp/RouteTargetMembership.h"

#include <memory>
#include <shared_mutex>
#include <vector>

namespace Routing::Bgp {

/// Route-target memberships per peer, and the live route-target lists each
/// peer wants.
class QORBGP_EXPORT RouteTargetMembershipIndex
    : public Kiv::PtrInterface,
      private NotifyingRtExtCommListCollection::Notifiee {
 public:
   KIV_POINTER_TYPES(RouteTargetMembershipIndex);
   using Peer = U64;
   /// Peers in ascending order, each once. Immutable once handed out.
   using Peers = std::vector<Peer>;

   /// One live route-target list whose status for one peer a membership
   /// change turned. `list` is valid while the list lives (it may go out of
   /// use on another thread right after); `serial`, a number the index gives
   /// the list when it comes into use and never gives again, names it for
   /// good where an address may be reused.
   struct StatusChange {
      RtExtCommClassificationList const* list;
      U64 serial;
      Peer peer;
      bool wanted; ///< true: newly wanted; false: no longer wanted
      friend bool operator==(StatusChange const&, StatusChange const&) = default;
   };
   using StatusChanges = std::vector<StatusChange>;

   /// Follows the route-target lists of `table` (every list already live,
   /// then each coming or going) through its route-target list collection.
   /// Kiv::NullArgumentError "RouteTargetMembershipIndex: null table" for
   /// null, "RouteTargetMembershipIndex: the table follows no route-target
   /// lists" for a table without that collection.
   explicit RouteTargetMembershipIndex(ExtCommListDedupTable::Ptr table);
   ~RouteTargetMembershipIndex() override;

   /// Adds `membership` for `peer` (nothing when the peer has it already) and
   /// returns the live lists the peer newly wants, in no particular order.
   StatusChanges membershipIs(Peer peer, RouteTargetMembership const& membership);
   /// Removes it (nothing when the peer does not have it) and returns the
   /// live lists the peer no longer wants.
   StatusChanges membershipDel(Peer peer, RouteTargetMembership const& membership);
   /// Removes every membership of `peer`; returns the lists it wanted.
   StatusChanges peerDel(Peer peer);

   /// Whether `peer` wants the list (null, or a list with no route target: no).
   bool wants(Peer peer, RtExtCommClassificationList const* list) const;
   bool wants(Peer peer, ExtCommList const& list) const;
   /// The peers that want the list; null when none does.
   std::shared_ptr<Peers const> peersWanting(RtExtCommClassificationList const* list) const;
   std::shared_ptr<Peers const> peersWanting(ExtCommList const& list) const;
   /// The peers that want route target `rt`, found in the trie.
   Peers peersWanting(RouteTarget rt) const;

   /// The memberships of `peer`, ascending.
   std::vector<RouteTargetMembership> memberships(Peer peer) const;
   /// Counts, for sizing: memberships, trie nodes, live lists and their
   /// distinct route targets.
   struct Size {
      std::size_t memberships, nodes, liveLists, liveRouteTargets;
   };
   Size size() const;

 private:
   class Impl;
   void onRtExtCommList(RtExtCommListLifeTimeNotifier::PtrConst const& notifier) override;

   NotifyingRtExtCommListCollection::Ptr const collection_; ///< the table's, at construction
   std::unique_ptr<Impl> const impl_;
   mutable std::shared_mutex mutex_;
};

/// A new index over `table`, notification on.
QORBGP_EXPORT RouteTargetMembershipIndex::Ptr
routeTargetMembershipIndexFactory(ExtCommListDedupTable::Ptr table);

} // namespace Routing::Bgp
