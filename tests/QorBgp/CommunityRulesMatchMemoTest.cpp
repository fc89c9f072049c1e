// A policy's rules remembered together per list: the uncached answers from
// two threads sharing few slots (writers racing for them). Built into the
// stress program, so that it also runs under ThreadSanitizer.
#include "QorBgpCommunity/QorBgp/CommunityRulesMatchMemo.h"

#include "QorBgpCommunity/QorBgp/CommunityPolicyParser.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListDedupTable.h"
#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

#include <random>
#include <thread>
#include <vector>

namespace Routing::Bgp {
namespace {

TEST(CommunityRulesMatchMemo, TwoThreadsRacingForFewSlotsGetEveryRulesAnswer) {
   QorBgpGlobals::multiThreadedIs(true);
   auto table = commListDedupTableFactory();
   std::mt19937 random(12);
   std::vector<CommList::PtrConst> lists;
   for (int i = 0; i < 300; ++i) {
      std::vector<U32> values(1 + random() % 4);
      for (U32& v : values)
         v = (random() % 4) << 16 | random() % 4;
      lists.push_back(CommList::dedupValues(table.get(), values));
   }
   CommunityMatchContext const context{.peerAs = 1, .localAs = 2};
   StandardCommunityRulesMatchMemo::Rules const rules{
      parseStandardCommunitySet("any peer-as:*"), parseStandardCommunitySet("all local-as:0-1 *:3"),
      parseStandardCommunitySet("not exact 0:0")};
   StandardCommunityRulesMatchMemo memo(rules, context, 16);
   std::vector<U64> expected;
   for (auto const& list : lists) {
      U64 bits = 0;
      for (std::size_t i = 0; i < rules.size(); ++i)
         bits |= U64{rules[i]->matches(*list, context)} << i;
      expected.push_back(bits);
   }
   int mismatches[2] = {0, 0};
   std::vector<std::thread> threads;
   for (int t = 0; t < 2; ++t) {
      threads.emplace_back([&, t] {
         for (int round = 0; round < 30; ++round) {
            for (std::size_t i = 0; i < lists.size(); ++i) {
               std::size_t const k = (i * (t + 1) + round) % lists.size();
               mismatches[t] += memo.answers(*lists[k]) != expected[k];
            }
         }
      });
   }
   for (auto& thread : threads) {
      thread.join();
   }
   EXPECT_EQ(mismatches[0] + mismatches[1], 0);
   EXPECT_THROW(StandardCommunityRulesMatchMemo(
                   StandardCommunityRulesMatchMemo::Rules(65, rules[0]), context),
                Kiv::RangeError);
}

} // namespace
} // namespace Routing::Bgp
