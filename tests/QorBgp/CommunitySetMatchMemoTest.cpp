// A set matcher's memo: the uncached answer for its own context, from two
// threads at once. Built into the stress program, so that it also runs under
// ThreadSanitizer.
#include "QorBgpCommunity/QorBgp/CommunitySetMatchMemo.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityListDedupTable.h"

#include "MemoTestSupport.h"

#include <gtest/gtest.h>

#include <vector>

namespace Routing::Bgp {
namespace {

using Field = CommunityFieldPattern;

TEST(CommunitySetMatchMemo, TwoThreadsGetTheMatchersAnswersForTheMemosContext) {
   QorBgpGlobals::multiThreadedIs(true);
   auto table = commListDedupTableFactory();
   std::vector<CommList::PtrConst> const lists = test::smallLists(*table, 8);
   auto const fromPeer = standardCommunitySetMatcherFactory(
      {standardCommunityMatcherFactory(Field::peerAs(), Field::any())}, CommunitySetMode::any,
      false);
   // Two peers' memos of one matcher: the placeholder is bound per memo.
   StandardCommunitySetMatchMemo peer1(fromPeer, {.peerAs = 1}, 64),
      peer2(fromPeer, {.peerAs = 2}, 64);
   std::vector<bool> expected1, expected2;
   for (auto const& list : lists) {
      expected1.push_back(fromPeer->matches(*list, {.peerAs = 1}));
      expected2.push_back(fromPeer->matches(*list, {.peerAs = 2}));
   }
   ASSERT_NE(expected1, expected2);
   EXPECT_EQ(test::mismatchesOfTwoThreads(lists.size(),
                                          [&](std::size_t k) {
                                             return (peer1.matches(*lists[k]) != expected1[k]) ||
                                                    (peer2.matches(*lists[k]) != expected2[k]);
                                          }),
             0);
}

} // namespace
} // namespace Routing::Bgp
