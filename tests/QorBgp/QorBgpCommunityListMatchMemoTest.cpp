// The memo shared by two threads must give exactly the uncached answer. Built
// into the stress program, so that it also runs under ThreadSanitizer (the
// fuzz target checks the answers over releases and reused addresses).
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListMatchMemo.h"

#include "MemoTestSupport.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace Routing::Bgp {
namespace {

using Routing::RouteMap::PosixRegex;

CommList::PtrConst randomList(CommListDedupTable const& table, std::mt19937& random) {
   CommList::Ptr list = commListFactory();
   for (unsigned n = random() % 4; n > 0; --n) {
      U32 const special[] = {0xFFFFFF01, 0xFFFF029A, 0x0001029A};
      list->commIs(random() % 3 == 0 ? special[random() % 3] : (random() % 3) << 16 | random() % 8);
   }
   return list->dedup(&table);
}

TEST(RouteMapMatchMemo, TwoThreadsShareOneMemo) {
   QorBgpGlobals::multiThreadedIs(true);
   auto table = commListDedupTableFactory();
   std::mt19937 random(5);
   std::vector<CommList::PtrConst> lists;
   for (int i = 0; i < 200; ++i) {
      lists.push_back(randomList(*table, random));
   }
   PosixRegex::PtrConst regex = new PosixRegex("(^| )[0-9]+:666( |$)");
   RouteMapMatchMemo memo(regex, 64);
   std::vector<bool> expected;
   for (auto const& list : lists) {
      expected.push_back(list->matchCommunitiesRegex(regex.get()));
   }
   EXPECT_EQ(test::mismatchesOfTwoThreads(
                lists.size(),
                [&](std::size_t k) { return memo.matchCommunitiesRegex(*lists[k]) != expected[k]; },
                50),
             0);
}

} // namespace
} // namespace Routing::Bgp
