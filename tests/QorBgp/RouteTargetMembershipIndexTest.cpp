#include "QorBgpCommunity/QorBgp/RouteTargetMembershipIndex.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>

namespace Routing::Bgp {
namespace {

using Peer = RouteTargetMembershipIndex::Peer;

// Random route targets near a few bases, so that prefixes of every length
// cover some of them and miss others; lists of them published in a table the
// index follows; and the brute-force answers the index must give.
class RouteTargetMembershipIndexTest : public testing::Test {
 protected:
   CommunityTables::Ptr tables = communityTablesFactory();
   RouteTargetMembershipIndex::Ptr index =
      routeTargetMembershipIndexFactory(tables->extCommListDedupTable());
   std::mt19937_64 random{5};
   std::vector<U64> const bases{routeTarget(random()), routeTarget(random()),
                                routeTarget(random())};
   std::map<Peer, std::set<RouteTargetMembership>> reference;

   // The two-octet AS route target of the value's low six octets.
   static U64 routeTarget(U64 value) { return (value & 0x0000FFFFFFFFFFFF) | 0x0002000000000000; }
   // A base with one bit changed, or none.
   U64 nearBase() {
      U64 const base = bases[random() % bases.size()];
      return base ^ (U64{1} << (random() % 64)) * (random() % 2);
   }
   RouteTargetMembership randomMembership() {
      if (random() % 10 == 0) {
         return {};
      }
      return {static_cast<U32>(random() % 3),
              RouteTargetPrefix(RouteTarget(nearBase()), random() % 65)};
   }
   ExtCommList::PtrConst publish(std::vector<U64> const& words) {
      std::vector<ExtComm::PtrConst> comms;
      for (U64 w : words) {
         comms.push_back(
            ExtComm::dedupContent(tables->extCommDedupTable().get(), ExtCommContent(w)));
      }
      return ExtCommList::dedupComms(tables->extCommListDedupTable().get(), comms);
   }
   ExtCommList::PtrConst randomList() {
      std::vector<U64> words;
      for (int i = 0, n = 1 + static_cast<int>(random() % 3); i < n; ++i) {
         words.push_back(routeTarget(nearBase()));
      }
      return publish(words);
   }

   static RtExtCommClassificationList const* routeTargets(ExtCommList const& list) {
      return static_cast<RtExtCommClassificationList const*>(
         list.classificationList(extCommClassificationRouteTarget).get());
   }
   // Whether `peer` wants `list`, by every membership against every route target.
   bool referenceWants(Peer peer, ExtCommList const& list) const {
      auto const it = reference.find(peer);
      if (it == reference.end()) {
         return false;
      }
      for (ExtComm::PtrConst const& comm : *list.commVectorRawPtr()) {
         RouteTargetPrefix const rt(RouteTarget(comm->community()), 64);
         for (RouteTargetMembership const& m : it->second) {
            if (rt.commonPrefixLen(m.prefix()) >= m.prefix().bitlen()) {
               return true;
            }
         }
      }
      return false;
   }
   // Every (list, peer) whose status differs between `before` and now.
   using Status = std::map<std::pair<RtExtCommClassificationList const*, Peer>, bool>;
   Status status(std::vector<ExtCommList::PtrConst> const& lists) const {
      Status out;
      for (auto const& list : lists) {
         for (Peer peer = 0; peer < 4; ++peer) {
            out[{routeTargets(*list), peer}] = referenceWants(peer, *list);
         }
      }
      return out;
   }
};

// Random membership changes of four peers over live lists that come and go:
// every change report names exactly the lists whose status turned, and every
// answer agrees with the brute-force reference.
TEST_F(RouteTargetMembershipIndexTest, AgreesWithABruteForceReference) {
   std::vector<ExtCommList::PtrConst> lists;
   for (int i = 0; i < 40; ++i) {
      lists.push_back(randomList());
   }
   for (int round = 0; round < 600; ++round) {
      if (round % 7 == 0) { // lists go out of use and others come
         lists.erase(lists.begin() + static_cast<long>(random() % lists.size()));
         lists.push_back(randomList());
      }
      Status const before = status(lists);
      Peer const peer = random() % 4;
      RouteTargetMembershipIndex::StatusChanges changes;
      if (random() % 40 == 0) {
         changes = index->peerDel(peer);
         reference.erase(peer);
      } else if (auto& mine = reference[peer]; random() % 3 == 0 && !mine.empty()) {
         RouteTargetMembership const m = *std::next(mine.begin(), random() % mine.size());
         changes = index->membershipDel(peer, m);
         mine.erase(m);
      } else {
         RouteTargetMembership const m = randomMembership();
         changes = index->membershipIs(peer, m);
         mine.insert(m);
      }
      Status const after = status(lists);
      Status expected, reported;
      for (auto const& [key, wanted] : after) {
         if (before.at(key) != wanted) {
            expected[key] = wanted;
         }
      }
      for (auto const& c : changes) {
         reported[{c.list, c.peer}] = c.wanted;
      }
      ASSERT_EQ(reported, expected) << "round " << round;

      ExtCommList const& list = *lists[random() % lists.size()];
      auto const peers = index->peersWanting(list);
      for (Peer p = 0; p < 4; ++p) {
         bool const wanted = referenceWants(p, list);
         ASSERT_EQ(index->wants(p, list), wanted) << "round " << round << " peer " << p;
         ASSERT_EQ(peers && std::binary_search(peers->begin(), peers->end(), p), wanted);
      }
      U64 const rt = list.commVectorRawPtr()->front()->community();
      auto const rtPeers = index->peersWanting(RouteTarget(rt));
      for (Peer p = 0; p < 4; ++p) {
         bool const covered =
            reference.contains(p) &&
            std::any_of(reference.at(p).begin(), reference.at(p).end(),
                        [&](RouteTargetMembership const& m) { return m.covers(RouteTarget(rt)); });
         ASSERT_EQ(std::binary_search(rtPeers.begin(), rtPeers.end(), p), covered);
      }
   }
   // Removing every membership leaves only the root of the trie.
   for (Peer p = 0; p < 4; ++p) {
      index->peerDel(p);
   }
   EXPECT_EQ(index->size().memberships, 0u);
   EXPECT_EQ(index->size().nodes, 1u);
}

// A list going out of use is forgotten without a report; a list without
// route targets is wanted by no one.
TEST_F(RouteTargetMembershipIndexTest, ListsGoingOutOfUseLeaveNothingBehind) {
   EXPECT_TRUE(index->membershipIs(1, RouteTargetMembership()).empty()); // no live list yet
   ExtCommList::PtrConst list = publish({0x0002fde800000064});
   EXPECT_TRUE(index->wants(1, *list));
   EXPECT_EQ(index->size().liveLists, 1u);
   list = nullptr;
   EXPECT_EQ(index->size().liveLists, 0u);
   EXPECT_EQ(index->size().liveRouteTargets, 0u);
   EXPECT_TRUE(index->membershipDel(1, RouteTargetMembership()).empty());

   ExtCommList::PtrConst const colour = publish({0x030b000000000064});
   EXPECT_FALSE(index->wants(1, *colour));
   EXPECT_EQ(index->peersWanting(*colour), nullptr);
   EXPECT_THROW(routeTargetMembershipIndexFactory(nullptr), Kiv::NullArgumentError);
}

// Lists live before the index was made are followed too.
TEST_F(RouteTargetMembershipIndexTest, ListsAlreadyLiveAreTakenIn) {
   ExtCommList::PtrConst const list = publish({0x0002fde800000064});
   auto const late = routeTargetMembershipIndexFactory(tables->extCommListDedupTable());
   auto const changes = late->membershipIs(
      9, RouteTargetMembership(65000, RouteTargetPrefix(RouteTarget(0x0002fde800000000), 32)));
   ASSERT_EQ(changes.size(), 1u);
   EXPECT_EQ(changes[0].list, routeTargets(*list));
   EXPECT_TRUE(changes[0].wanted);
}

} // namespace
} // namespace Routing::Bgp
