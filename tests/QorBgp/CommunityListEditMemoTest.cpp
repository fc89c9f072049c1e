// An edit's memo: the uncached results from two threads at once, and results
// kept alive only while remembered. Built into the stress program, so that it
// also runs under ThreadSanitizer.
#include "QorBgpCommunity/QorBgp/CommunityListEditMemo.h"

#include "MemoTestSupport.h"

#include <gtest/gtest.h>

#include <vector>

namespace Routing::Bgp {
namespace {

using Field = CommunityFieldPattern;

StandardCommunityListEdit::PtrConst dropPeerCommunities() {
   return standardCommunityListEditFactory(
      CommunityEditKind::deleteMatching, {},
      {standardCommunityMatcherFactory(Field::peerAs(), Field::any())});
}

TEST(CommunityListEditMemo, TwoThreadsGetTheEditsResults) {
   QorBgpGlobals::multiThreadedIs(true);
   auto tables = communityTablesFactory();
   std::vector<CommList::PtrConst> const lists = test::smallLists(*tables->commListDedupTable(), 9);
   auto const edit = dropPeerCommunities();
   CommunityMatchContext const context{.peerAs = 1};
   StandardCommunityListEditMemo memo(edit, tables, context, 64);
   std::vector<CommList::PtrConst> expected;
   for (auto const& list : lists) {
      expected.push_back(edit->apply(list.get(), *tables, context));
   }
   EXPECT_EQ(
      test::mismatchesOfTwoThreads(
         lists.size(), [&](std::size_t k) { return (memo.apply(lists[k].get()) != expected[k]); }),
      0);
}

// With one slot, a result stays interned while the memo remembers it and goes
// when another list takes the slot; input lists are never held.
TEST(CommunityListEditMemo, ResultsLiveOnlyWhileRemembered) {
   QorBgpGlobals::multiThreadedIs(true);
   auto tables = communityTablesFactory();
   CommListDedupTable const* table = tables->commListDedupTable().get();
   Zup::DedupHashTable const& lists = *table->dedupTable();
   StandardCommunityListEditMemo memo(dropPeerCommunities(), tables, {.peerAs = 1}, 1);
   std::vector<U32> first{0x00010001, 0x00020002}, second{0x00010003, 0x00030003};
   {
      CommList::PtrConst input = CommList::dedupValues(table, first);
      EXPECT_EQ(memo.apply(input.get())->toStrep(), "2:2");
   }
   CommList::releaseThreadCache();
   EXPECT_EQ(lists.size(), 1u); // the input is gone, "2:2" is remembered
   {
      CommList::PtrConst input = CommList::dedupValues(table, second);
      EXPECT_EQ(memo.apply(input.get())->toStrep(), "3:3");
   }
   CommList::releaseThreadCache();
   EXPECT_EQ(lists.size(), 1u); // only "3:3", which took the slot
}

} // namespace
} // namespace Routing::Bgp
