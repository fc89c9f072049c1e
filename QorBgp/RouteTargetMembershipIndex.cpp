#include "QorBgpCommunity/QorBgp/RouteTargetMembershipIndex.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <absl/container/btree_map.h>
#include <absl/container/flat_hash_map.h>

#include <algorithm>
#include <array>
#include <bit>
#include <mutex>

namespace Routing::Bgp {

namespace {

using Peer = RouteTargetMembershipIndex::Peer;
using Peers = RouteTargetMembershipIndex::Peers;

constexpr U32 noNode = ~U32{0};

U64 maskOf(unsigned length) noexcept { return length == 0 ? 0 : ~U64{0} << (64 - length); }
unsigned bitAt(U64 word, unsigned bit) noexcept {
   return static_cast<unsigned>(word >> (63 - bit) & 1);
}
unsigned commonLength(U64 a, U64 b, unsigned most) noexcept {
   U64 const differ = a ^ b;
   return std::min(most, differ == 0 ? 64u : static_cast<unsigned>(std::countl_zero(differ)));
}

} // namespace

class RouteTargetMembershipIndex::Impl {
 public:
   Impl() { nodes_.push_back(Node{}); } // the root, 0/0, never removed

   // One membership of one peer, at the node of its prefix.
   struct Member {
      Peer peer;
      RouteTargetMembership membership;
      friend auto operator<=>(Member const&, Member const&) = default;
      friend bool operator==(Member const&, Member const&) = default;
   };
   struct Node {
      U64 prefix = 0; // bits past the length zero
      unsigned length = 0;
      std::array<U32, 2> child{noNode, noNode};
      std::vector<Member> members; // ascending, each once
   };
   struct LiveList {
      RtExtCommClassificationList const* list = nullptr;
      U64 serial = 0;
      std::vector<U64> routeTargets;        // ascending, each once
      std::shared_ptr<Peers const> wanting; // shared (see peerSet); null: no peer
      U64 visited = 0;                      // the last recheck that looked at it
   };

   // The node of exactly `prefix`, made (with a branching node when needed)
   // when absent.
   U32 nodeFor(RouteTargetPrefix const& prefix) {
      U64 const bits = prefix.prefixBits();
      unsigned const length = prefix.bitlen();
      U32 at = 0;
      for (;;) {
         if (nodes_[at].length == length) {
            return at;
         }
         unsigned const side = bitAt(bits, nodes_[at].length);
         U32 const next = nodes_[at].child[side];
         if (next == noNode) {
            return nodes_[at].child[side] = newNode(bits, length);
         }
         Node const& child = nodes_[next];
         unsigned const common = commonLength(bits, child.prefix, std::min(length, child.length));
         if (common == child.length) {
            at = next;
            continue;
         }
         // The child lies off the new prefix's way: a node of the new prefix
         // above it, or a branching node above both.
         U32 const above =
            common == length ? newNode(bits, length) : newNode(bits & maskOf(common), common);
         nodes_[above].child[bitAt(nodes_[next].prefix, common)] = next;
         nodes_[at].child[side] = above;
         if (common == length) {
            return above;
         }
         return nodes_[above].child[bitAt(bits, common)] = newNode(bits, length);
      }
   }

   // The node of exactly `prefix`, and the way to it from the root; noNode when absent.
   U32 findNode(RouteTargetPrefix const& prefix, std::vector<U32>* way) const {
      U64 const bits = prefix.prefixBits();
      U32 at = 0;
      while (at != noNode) {
         Node const& node = nodes_[at];
         if (node.length > prefix.bitlen() || ((bits ^ node.prefix) & maskOf(node.length)) != 0) {
            return noNode;
         }
         if (way) {
            way->push_back(at);
         }
         if (node.length == prefix.bitlen()) {
            return at;
         }
         at = node.child[bitAt(bits, node.length)];
      }
      return noNode;
   }

   // Calls visit(node) for every node whose prefix covers `rt`, root first.
   template <class Visit>
   void forEachCovering(U64 rt, Visit visit) const {
      U32 at = 0;
      while (at != noNode) {
         Node const& node = nodes_[at];
         if (((rt ^ node.prefix) & maskOf(node.length)) != 0) {
            return;
         }
         visit(node);
         if (node.length == 64) {
            return;
         }
         at = node.child[bitAt(rt, node.length)];
      }
   }

   Peers peersWanting(U64 rt) const {
      Peers peers;
      forEachCovering(rt, [&](Node const& node) {
         for (Member const& m : node.members) {
            if (peers.empty() || peers.back() != m.peer) {
               peers.push_back(m.peer);
            }
         }
      });
      std::sort(peers.begin(), peers.end());
      peers.erase(std::unique(peers.begin(), peers.end()), peers.end());
      return peers;
   }

   // Whether a membership of `peer` covers one of `routeTargets`.
   bool peerWants(Peer peer, std::vector<U64> const& routeTargets) const {
      for (U64 rt : routeTargets) {
         bool found = false;
         forEachCovering(rt, [&](Node const& node) {
            auto const it = std::lower_bound(node.members.begin(), node.members.end(), peer,
                                             [](Member const& m, Peer p) { return m.peer < p; });
            found = found || (it != node.members.end() && it->peer == peer);
         });
         if (found) {
            return true;
         }
      }
      return false;
   }

   bool addMember(Peer peer, RouteTargetMembership const& membership) {
      auto& mine = byPeer_[peer];
      auto const at = std::lower_bound(mine.begin(), mine.end(), membership);
      if (at != mine.end() && *at == membership) {
         return false;
      }
      mine.insert(at, membership);
      auto& members = nodes_[nodeFor(membership.prefix())].members;
      Member const member{peer, membership};
      members.insert(std::lower_bound(members.begin(), members.end(), member), member);
      ++memberships_;
      return true;
   }

   bool removeMember(Peer peer, RouteTargetMembership const& membership) {
      auto mine = byPeer_.find(peer);
      if (mine == byPeer_.end()) {
         return false;
      }
      auto const at = std::lower_bound(mine->second.begin(), mine->second.end(), membership);
      if (at == mine->second.end() || !(*at == membership)) {
         return false;
      }
      mine->second.erase(at);
      if (mine->second.empty()) {
         byPeer_.erase(mine);
      }
      std::vector<U32> way;
      U32 const index = findNode(membership.prefix(), &way);
      auto& members = nodes_[index].members;
      members.erase(std::lower_bound(members.begin(), members.end(), Member{peer, membership}));
      --memberships_;
      prune(way);
      return true;
   }

   // Removes the nodes along `way` (root first) that hold no membership and
   // branch no more, from the end up.
   void prune(std::vector<U32> const& way) {
      for (std::size_t i = way.size(); i-- > 1;) {
         Node& node = nodes_[way[i]];
         int const children = (node.child[0] != noNode) + (node.child[1] != noNode);
         if (!node.members.empty() || children == 2) {
            return;
         }
         U32 const only = node.child[0] != noNode ? node.child[0] : node.child[1];
         Node& parent = nodes_[way[i - 1]];
         parent.child[parent.child[0] == way[i] ? 0 : 1] = only;
         node = Node{};
         free_.push_back(way[i]);
      }
   }

   // Calls visit(list) once for every live list holding a route target under
   // `prefix`.
   template <class Visit>
   void forEachListUnder(RouteTargetPrefix const& prefix, Visit visit) {
      if (prefix.bitlen() == 0) { // every list: in storage order
         for (LiveList& list : slots_) {
            if (list.list) {
               visit(list);
            }
         }
         return;
      }
      U64 const round = ++rechecks_;
      U64 const low = prefix.prefixBits(), high = low | ~prefix.mask();
      for (auto it = byRouteTarget_.lower_bound(low);
           it != byRouteTarget_.end() && it->first <= high; ++it) {
         for (U32 slot : it->second) {
            LiveList& list = slots_[slot];
            if (list.visited != round) {
               list.visited = round;
               visit(list);
            }
         }
      }
   }

   // The one shared object of `peers` (null for none): lists wanted by the
   // same peers share it, so that a change turning many of them computes each
   // new set once.
   std::shared_ptr<Peers const> peerSet(Peers const& peers) {
      if (peers.empty()) {
         return nullptr;
      }
      auto& held = peerSets_[peers];
      if (auto set = held.lock()) {
         return set;
      }
      auto set = std::make_shared<Peers const>(peers);
      held = set;
      if (peerSets_.size() > 2 * peerSetsSwept_ + 64) {
         absl::erase_if(peerSets_, [](auto const& entry) { return entry.second.expired(); });
         peerSetsSwept_ = peerSets_.size();
      }
      return set;
   }

   static bool contains(std::shared_ptr<Peers const> const& peers, Peer peer) {
      return peers && std::binary_search(peers->begin(), peers->end(), peer);
   }

   // After `peer` gained (`added`) or lost a membership of `prefix`: the live
   // lists there whose status for the peer turned, their peers updated.
   StatusChanges recheck(Peer peer, RouteTargetPrefix const& prefix, bool added) {
      StatusChanges changes;
      changes.reserve(prefix.bitlen() == 0 ? lists_.size() : 0);
      // The new peer set of each old one, worked out once.
      absl::flat_hash_map<Peers const*, std::shared_ptr<Peers const>> turned;
      auto const mine = byPeer_.find(peer);
      std::vector<RouteTargetMembership> const* left =
         mine == byPeer_.end() ? nullptr : &mine->second;
      forEachListUnder(prefix, [&](LiveList& list) {
         bool const before = contains(list.wanting, peer);
         // A list under an added prefix is wanted; after a removal, the
         // peer's other memberships decide (checked one by one when few).
         bool const after =
            added ||
            (left && (left->size() <= 8
                         ? std::any_of(left->begin(), left->end(),
                                       [&](RouteTargetMembership const& m) {
                                          return std::any_of(
                                             list.routeTargets.begin(), list.routeTargets.end(),
                                             [&](U64 rt) { return m.covers(RouteTarget(rt)); });
                                       })
                         : peerWants(peer, list.routeTargets)));
         if (before == after) {
            return;
         }
         auto [it, fresh] = turned.try_emplace(list.wanting.get());
         if (fresh) {
            Peers peers = list.wanting ? *list.wanting : Peers();
            auto const at = std::lower_bound(peers.begin(), peers.end(), peer);
            after ? (void)peers.insert(at, peer) : (void)peers.erase(at);
            it->second = peerSet(peers);
         }
         list.wanting = it->second;
         changes.push_back({list.list, list.serial, peer, after});
      });
      return changes;
   }

   void listArrives(RtExtCommClassificationList const* key) {
      U32 slot = static_cast<U32>(slots_.size());
      if (freeSlots_.empty()) {
         slots_.emplace_back();
      } else {
         slot = freeSlots_.back();
         freeSlots_.pop_back();
      }
      LiveList& live = slots_[slot];
      live = LiveList{key, ++arrivals_, {}, nullptr};
      for (ExtComm::PtrConst const& comm : *key->commVectorRawPtr()) {
         live.routeTargets.push_back(comm->community());
      }
      auto& rts = live.routeTargets;
      std::sort(rts.begin(), rts.end());
      rts.erase(std::unique(rts.begin(), rts.end()), rts.end());
      Peers peers;
      for (U64 rt : rts) {
         Peers const more = peersWanting(rt);
         peers.insert(peers.end(), more.begin(), more.end());
         byRouteTarget_[rt].push_back(slot);
      }
      std::sort(peers.begin(), peers.end());
      peers.erase(std::unique(peers.begin(), peers.end()), peers.end());
      live.wanting = peerSet(peers);
      lists_.insert_or_assign(key, slot);
   }

   void listLeaves(RtExtCommClassificationList const* key) {
      auto const it = lists_.find(key);
      if (it == lists_.end()) {
         return;
      }
      U32 const slot = it->second;
      for (U64 rt : slots_[slot].routeTargets) {
         auto const at = byRouteTarget_.find(rt);
         std::erase(at->second, slot);
         if (at->second.empty()) {
            byRouteTarget_.erase(at);
         }
      }
      slots_[slot] = LiveList{};
      freeSlots_.push_back(slot);
      lists_.erase(it);
   }

   // By address alone: a list of any kind, or of no table, is simply not found.
   LiveList const* live(void const* list) const {
      auto const it = lists_.find(list);
      return it == lists_.end() ? nullptr : &slots_[it->second];
   }

   std::vector<Node> nodes_;
   std::vector<U32> free_;
   std::size_t memberships_ = 0;
   U64 arrivals_ = 0; // the serial of the last list that came into use
   absl::flat_hash_map<Peer, std::vector<RouteTargetMembership>> byPeer_;
   U64 rechecks_ = 0; // the number of the last recheck
   // The live lists in slots (a free slot has a null list), found by list
   // and by route target.
   std::vector<LiveList> slots_;
   std::vector<U32> freeSlots_;
   absl::flat_hash_map<void const*, U32> lists_;
   absl::btree_map<U64, std::vector<U32>> byRouteTarget_;
   absl::flat_hash_map<Peers, std::weak_ptr<Peers const>> peerSets_;
   std::size_t peerSetsSwept_ = 0; // entries left by the last sweep of the expired

 private:
   U32 newNode(U64 prefix, unsigned length) {
      Node node;
      node.prefix = prefix & maskOf(length);
      node.length = length;
      if (!free_.empty()) {
         U32 const index = free_.back();
         free_.pop_back();
         nodes_[index] = std::move(node);
         return index;
      }
      nodes_.push_back(std::move(node));
      return static_cast<U32>(nodes_.size() - 1);
   }
};

namespace {

NotifyingRtExtCommListCollection::Ptr collectionOf(ExtCommListDedupTable const* table) {
   if (!table) {
      throw Kiv::NullArgumentError("RouteTargetMembershipIndex: null table");
   }
   if (!table->notifyingRtExtCommListCollection()) {
      throw Kiv::NullArgumentError(
         "RouteTargetMembershipIndex: the table follows no route-target lists");
   }
   return table->notifyingRtExtCommListCollection();
}

} // namespace

RouteTargetMembershipIndex::RouteTargetMembershipIndex(ExtCommListDedupTable::Ptr table)
    : collection_(collectionOf(table.get())), impl_(std::make_unique<Impl>()) {
   std::unique_lock lock(mutex_);
   for (auto const& notifier : collection_->rtExtCommLists()) {
      impl_->listArrives(notifier->rtExtCommListRawPtr());
   }
   notifierIs(collection_.get());
}

RouteTargetMembershipIndex::~RouteTargetMembershipIndex() { notifierIs(nullptr); }

void RouteTargetMembershipIndex::onRtExtCommList(
   RtExtCommListLifeTimeNotifier::PtrConst const& notifier) {
   std::unique_lock lock(mutex_);
   if (collection_->rtExtCommLists().contains(notifier)) {
      impl_->listArrives(notifier->rtExtCommListRawPtr());
   } else {
      impl_->listLeaves(notifier->rtExtCommListRawPtr());
   }
}

RouteTargetMembershipIndex::StatusChanges
RouteTargetMembershipIndex::membershipIs(Peer peer, RouteTargetMembership const& membership) {
   std::unique_lock lock(mutex_);
   if (!impl_->addMember(peer, membership)) {
      return {};
   }
   return impl_->recheck(peer, membership.prefix(), true);
}

RouteTargetMembershipIndex::StatusChanges
RouteTargetMembershipIndex::membershipDel(Peer peer, RouteTargetMembership const& membership) {
   std::unique_lock lock(mutex_);
   if (!impl_->removeMember(peer, membership)) {
      return {};
   }
   return impl_->recheck(peer, membership.prefix(), false);
}

RouteTargetMembershipIndex::StatusChanges RouteTargetMembershipIndex::peerDel(Peer peer) {
   std::unique_lock lock(mutex_);
   auto const it = impl_->byPeer_.find(peer);
   if (it == impl_->byPeer_.end()) {
      return {};
   }
   std::vector<RouteTargetMembership> const mine = it->second;
   for (RouteTargetMembership const& m : mine) {
      impl_->removeMember(peer, m);
   }
   // The lists it wanted are those under its memberships; each is reported
   // once (under a second membership it is wanted no more already).
   StatusChanges changes;
   for (RouteTargetMembership const& m : mine) {
      StatusChanges const more = impl_->recheck(peer, m.prefix(), false);
      changes.insert(changes.end(), more.begin(), more.end());
   }
   return changes;
}

bool RouteTargetMembershipIndex::wants(Peer peer, RtExtCommClassificationList const* list) const {
   std::shared_lock lock(mutex_);
   auto const* live = impl_->live(list);
   return live && Impl::contains(live->wanting, peer);
}

bool RouteTargetMembershipIndex::wants(Peer peer, ExtCommList const& list) const {
   std::shared_lock lock(mutex_);
   auto const* live = impl_->live(list.classificationList(extCommClassificationRouteTarget).get());
   return live && Impl::contains(live->wanting, peer);
}

std::shared_ptr<RouteTargetMembershipIndex::Peers const>
RouteTargetMembershipIndex::peersWanting(RtExtCommClassificationList const* list) const {
   std::shared_lock lock(mutex_);
   auto const* live = impl_->live(list);
   return live ? live->wanting : nullptr;
}

std::shared_ptr<RouteTargetMembershipIndex::Peers const>
RouteTargetMembershipIndex::peersWanting(ExtCommList const& list) const {
   std::shared_lock lock(mutex_);
   auto const* live = impl_->live(list.classificationList(extCommClassificationRouteTarget).get());
   return live ? live->wanting : nullptr;
}

RouteTargetMembershipIndex::Peers RouteTargetMembershipIndex::peersWanting(RouteTarget rt) const {
   std::shared_lock lock(mutex_);
   return impl_->peersWanting(rt.word());
}

std::vector<RouteTargetMembership> RouteTargetMembershipIndex::memberships(Peer peer) const {
   std::shared_lock lock(mutex_);
   auto const it = impl_->byPeer_.find(peer);
   return it == impl_->byPeer_.end() ? std::vector<RouteTargetMembership>() : it->second;
}

RouteTargetMembershipIndex::Size RouteTargetMembershipIndex::size() const {
   std::shared_lock lock(mutex_);
   return {impl_->memberships_, impl_->nodes_.size() - impl_->free_.size(), impl_->lists_.size(),
           impl_->byRouteTarget_.size()};
}

RouteTargetMembershipIndex::Ptr
routeTargetMembershipIndexFactory(ExtCommListDedupTable::Ptr table) {
   return Kiv::newNotifying<RouteTargetMembershipIndex>(std::move(table));
}

} // namespace Routing::Bgp
