// A policy's rules remembered together per list: the uncached answers from
// two threads sharing few slots (writers racing for them). Built into the
// stress program, so that it also runs under ThreadSanitizer.
#include "QorBgpCommunity/QorBgp/CommunityRulesMatchMemo.h"

#include "QorBgpCommunity/QorBgp/CommunityPolicyParser.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListDedupTable.h"
#include "QorBgpCommunity/platform/Errors.h"

#include "MemoTestSupport.h"

#include <gtest/gtest.h>

#include <vector>

namespace Routing::Bgp {
namespace {

TEST(CommunityRulesMatchMemo, TwoThreadsRacingForFewSlotsGetEveryRulesAnswer) {
   QorBgpGlobals::multiThreadedIs(true);
   auto table = commListDedupTableFactory();
   std::vector<CommList::PtrConst> const lists = test::smallLists(*table, 12);
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
   EXPECT_EQ(
      test::mismatchesOfTwoThreads(
         lists.size(), [&](std::size_t k) { return (memo.answers(*lists[k]) != expected[k]); }),
      0);
   EXPECT_THROW(StandardCommunityRulesMatchMemo(
                   StandardCommunityRulesMatchMemo::Rules(65, rules[0]), context),
                Kiv::RangeError);
}

} // namespace
} // namespace Routing::Bgp
