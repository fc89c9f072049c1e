#include "QorBgpCommunity/QorBgp/CommunityListEdit.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace Routing::Bgp {
namespace {

using Field = CommunityFieldPattern;

// Every edit of random lists against a reference computed with std::set: the
// result holds exactly the reference's values, is the interned list of them
// (null when there are none), and is the very list given when nothing changed.
TEST(CommunityListEdit, EveryEditAgreesWithASetReferenceAndKeepsIdentity) {
   auto table = commListDedupTableFactory();
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
      CommList::PtrConst const list =
         start.empty() ? nullptr : CommList::dedupValues(table.get(), start);
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
      CommList::PtrConst const result = edit->apply(list.get(), table.get(), context);

      SCOPED_TRACE(testing::Message() << "round " << round << ": " << communityEditKindName(kind));
      if (reference.empty()) {
         EXPECT_EQ(result, nullptr);
         continue;
      }
      ASSERT_NE(result, nullptr);
      EXPECT_TRUE(result->isDeduped());
      std::vector<U32> expected(reference.begin(), reference.end());
      EXPECT_EQ(*result->commVectorRawPtr(), expected);
      EXPECT_EQ(result, CommList::dedupValues(table.get(), expected));
      if (list && std::set<U32>(start.begin(), start.end()) == reference) {
         EXPECT_EQ(result.get(), list.get());
      }
   }
}

TEST(CommunityListEdit, LargeListsAndMisusedArguments) {
   auto table = largeCommListDedupTableFactory();
   std::vector<Acl::CommunityValue> start{{1, 2, 3}, {4, 5, 6}};
   auto const list = LargeCommList::dedupValues(table.get(), start);
   auto const scrub = largeCommunityListEditFactory(
      CommunityEditKind::deleteMatching, {},
      {largeCommunityMatcherFactory(Field::exact(4), Field::any(), Field::any())});
   auto const kept = scrub->apply(list.get(), table.get(), {});
   ASSERT_NE(kept, nullptr);
   EXPECT_EQ(kept->toStrep(), "1:2:3");
   EXPECT_EQ(scrub->apply(kept.get(), table.get(), {}), kept);

   EXPECT_THROW(standardCommunityListEditFactory(CommunityEditKind::deleteAll, {1}, {}),
                Kiv::RangeError);
   EXPECT_THROW(standardCommunityListEditFactory(CommunityEditKind::deleteMatching, {}, {nullptr}),
                Kiv::NullArgumentError);
}

} // namespace
} // namespace Routing::Bgp
