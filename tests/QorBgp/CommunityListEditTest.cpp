#include "QorBgpCommunity/QorBgp/CommunityListEdit.h"

#include "QorBgpCommunity/platform/Errors.h"
#include "QorBgpCommunity/platform/Ip6Addr.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace Routing::Bgp {
namespace {

using Field = CommunityFieldPattern;
using Kind = ExtCommunityMatcher::Kind;

constexpr U64 rtA = 0x0002fde800000064;   // 65000:100
constexpr U64 rtB = 0x0002fde8000000c8;   // 65000:200
constexpr U64 color = 0x030b000000000064; // colour 100

ExtCommList::PtrConst publish(CommunityTables const& tables, std::vector<U64> words) {
   std::vector<ExtComm::PtrConst> comms;
   for (U64 w : words) {
      comms.push_back(ExtComm::dedupContent(tables.extCommDedupTable().get(), ExtCommContent(w)));
   }
   return ExtCommList::dedupComms(tables.extCommListDedupTable().get(), comms);
}

// Every edit of random lists against a reference computed with std::set: the
// result holds exactly the reference's values, is the interned list of them
// (null when there are none), and is the very list given when nothing changed.
TEST(CommunityListEdit, EveryEditAgreesWithASetReferenceAndKeepsIdentity) {
   auto tables = communityTablesFactory();
   CommListDedupTable const* table = tables->commListDedupTable().get();
   CommunityMatchContext const context{.peerAs = 3, .localAs = 4};
   std::mt19937 random(11);
   auto randomValues = [&](std::size_t most) {
      std::vector<U32> values(random() % (most + 1));
      for (U32& v : values) {
         v = (random() % 5) << 16 | random() % 8; // a small domain: overlaps are common
      }
      return values;
   };
   for (int round = 0; round < 2000; ++round) {
      std::vector<U32> start = randomValues(6);
      CommList::PtrConst const list = start.empty() ? nullptr : CommList::dedupValues(table, start);
      std::set<U32> reference(start.begin(), start.end());

      auto const kind = static_cast<CommunityEditKind>(random() % 4);
      std::vector<U32> values;
      StandardCommunityListEdit::Matchers matchers;
      switch (kind) {
      case CommunityEditKind::replace:
         values = randomValues(4);
         reference = std::set<U32>(values.begin(), values.end());
         break;
      case CommunityEditKind::add:
         values = randomValues(4);
         reference.insert(values.begin(), values.end());
         break;
      case CommunityEditKind::deleteMatching: {
         // peer-as:<low>-<high>, so that placeholders and ranges are exercised.
         U32 const low = random() % 8, high = low + random() % 3;
         matchers.push_back(
            standardCommunityMatcherFactory(Field::peerAs(), Field::range(low, high)));
         std::erase_if(reference, [&](U32 v) {
            return v >> 16 == 3 && (v & 0xFFFF) >= low && (v & 0xFFFF) <= high;
         });
         break;
      }
      case CommunityEditKind::deleteAll:
         reference.clear();
         break;
      }
      auto const edit = standardCommunityListEditFactory(kind, values, matchers);
      CommList::PtrConst const result = edit->apply(list.get(), *tables, context);

      SCOPED_TRACE(testing::Message() << "round " << round << ": " << communityEditKindName(kind));
      if (reference.empty()) {
         EXPECT_EQ(result, nullptr);
         continue;
      }
      ASSERT_NE(result, nullptr);
      EXPECT_TRUE(result->isDeduped());
      std::vector<U32> expected(reference.begin(), reference.end());
      EXPECT_EQ(*result->commVectorRawPtr(), expected);
      EXPECT_EQ(result, CommList::dedupValues(table, expected));
      if (list && std::set<U32>(start.begin(), start.end()) == reference) {
         EXPECT_EQ(result.get(), list.get());
      }
   }
}

TEST(CommunityListEdit, LargeListsAndMisusedArguments) {
   auto tables = communityTablesFactory();
   std::vector<Acl::CommunityValue> start{{1, 2, 3}, {4, 5, 6}};
   auto const list = LargeCommList::dedupValues(tables->largeCommListDedupTable().get(), start);
   auto const scrub = largeCommunityListEditFactory(
      CommunityEditKind::deleteMatching, {},
      {largeCommunityMatcherFactory(Field::exact(4), Field::any(), Field::any())});
   auto const kept = scrub->apply(list.get(), *tables, {});
   ASSERT_NE(kept, nullptr);
   EXPECT_EQ(kept->toStrep(), "1:2:3");
   EXPECT_EQ(scrub->apply(kept.get(), *tables, {}), kept);

   EXPECT_THROW(standardCommunityListEditFactory(CommunityEditKind::deleteAll, {1}, {}),
                Kiv::RangeError);
   EXPECT_THROW(standardCommunityListEditFactory(CommunityEditKind::deleteMatching, {}, {nullptr}),
                Kiv::NullArgumentError);
}

// Deleting a route target publishes a list with its own route-target list;
// once no path holds the old list, the route target it alone had leaves.
TEST(CommunityListEdit, ARouteTargetDeletedFromEveryLiveListLeaves) {
   auto tables = communityTablesFactory();
   auto liveRouteTargetLists = [&] {
      return tables->extCommListDedupTable()
         ->notifyingRtExtCommListCollection()
         ->rtExtCommLists()
         .size();
   };
   auto const dropA = extCommListEditFactory(
      CommunityEditKind::deleteMatching, {},
      {extCommunityMatcherFactory(Kind::routeTarget, Field::exact(65000), Field::exact(100))});
   ExtCommList::PtrConst path = publish(*tables, {rtA, rtB, color});
   EXPECT_EQ(liveRouteTargetLists(), 1u);
   ExtCommList::PtrConst const edited = dropA->apply(path.get(), *tables, {});
   EXPECT_EQ(edited, publish(*tables, {rtB, color}));
   EXPECT_TRUE(edited->classificationList(extCommClassificationColor));
   EXPECT_EQ(liveRouteTargetLists(), 2u);
   path = nullptr; // the path now holds only the edited list
   EXPECT_EQ(liveRouteTargetLists(), 1u);
   EXPECT_EQ(dropA->apply(edited.get(), *tables, {}), edited); // nothing left to delete
}

// Extended and IPv6-address-specific edits publish through the same rules:
// the unchanged list itself, equal results one object, nothing left null.
TEST(CommunityListEdit, ExtendedAndIp6EditsKeepTheIdentityRules) {
   auto tables = communityTablesFactory();
   ExtCommList::PtrConst const b = publish(*tables, {rtB});
   auto const addA = extCommListEditFactory(CommunityEditKind::add, {rtA}, {});
   ExtCommList::PtrConst const ab = addA->apply(b.get(), *tables, {});
   EXPECT_EQ(ab, publish(*tables, {rtA, rtB}));
   EXPECT_EQ(addA->apply(ab.get(), *tables, {}), ab);
   EXPECT_EQ(addA->apply(nullptr, *tables, {}), publish(*tables, {rtA}));
   EXPECT_EQ(extCommListEditFactory(CommunityEditKind::replace, {rtB, rtA}, {})
                ->apply(ab.get(), *tables, {}),
             ab);

   auto const address = *Qornet::Ip6Addr::parse("2001:db8::1");
   ExtCommIp6Content const target(0x00, 0x02, address, 100), origin(0x00, 0x03, address, 7);
   auto const addBoth = extCommIp6ListEditFactory(CommunityEditKind::add, {origin, target}, {});
   ExtCommIp6List::PtrConst const both = addBoth->apply(nullptr, *tables, {});
   ASSERT_NE(both, nullptr);
   EXPECT_EQ(both->commsStringForm(), "2001:db8::1:100 2001:db8::1:7 ");
   EXPECT_EQ(addBoth->apply(both.get(), *tables, {}), both);
   auto const dropTargets = extCommIp6ListEditFactory(
      CommunityEditKind::deleteMatching, {},
      {extCommIp6MatcherFactory(Field::exact(0), Field::exact(2), address, 64, Field::any())});
   ExtCommIp6List::PtrConst const origins = dropTargets->apply(both.get(), *tables, {});
   EXPECT_EQ(origins, extCommIp6ListEditFactory(CommunityEditKind::replace, {origin}, {})
                         ->apply(nullptr, *tables, {}));
   EXPECT_EQ(dropTargets->apply(origins.get(), *tables, {}), origins);
   EXPECT_EQ(extCommIp6ListEditFactory(CommunityEditKind::deleteAll, {}, {})
                ->apply(both.get(), *tables, {}),
             nullptr);
}

} // namespace
} // namespace Routing::Bgp
