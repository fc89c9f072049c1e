// A set matcher's memo: the uncached answer for its own context, from two
// threads at once. Built into the stress program, so that it also runs under
// ThreadSanitizer.
#include "QorBgpCommunity/QorBgp/CommunitySetMatchMemo.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityListDedupTable.h"

#include <gtest/gtest.h>

#include <random>
#include <thread>
#include <vector>

namespace Routing::Bgp {
namespace {

using Field = CommunityFieldPattern;

TEST(CommunitySetMatchMemo, TwoThreadsGetTheMatchersAnswersForTheMemosContext) {
   QorBgpGlobals::multiThreadedIs(true);
   auto table = commListDedupTableFactory();
   std::mt19937 random(8);
   std::vector<CommList::PtrConst> lists;
   for (int i = 0; i < 300; ++i) {
      std::vector<U32> values(1 + random() % 4);
      for (U32& v : values)
         v = (random() % 4) << 16 | random() % 4;
      lists.push_back(CommList::dedupValues(table.get(), values));
   }
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
   int mismatches[2] = {0, 0};
   std::vector<std::thread> threads;
   for (int t = 0; t < 2; ++t) {
      threads.emplace_back([&, t] {
         for (int round = 0; round < 30; ++round) {
            for (std::size_t i = 0; i < lists.size(); ++i) {
               std::size_t const k = (i * (t + 1) + round) % lists.size();
               mismatches[t] += peer1.matches(*lists[k]) != expected1[k];
               mismatches[t] += peer2.matches(*lists[k]) != expected2[k];
            }
         }
      });
   }
   for (auto& thread : threads) {
      thread.join();
   }
   EXPECT_EQ(mismatches[0] + mismatches[1], 0);
}

} // namespace
} // namespace Routing::Bgp
