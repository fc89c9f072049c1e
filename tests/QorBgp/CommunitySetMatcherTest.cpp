#include "QorBgpCommunity/QorBgp/CommunitySetMatcher.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityListDedupTable.h"
#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

namespace Routing::Bgp {
namespace {

using Field = CommunityFieldPattern;

class CommunitySetMatcherTest : public testing::Test {
 protected:
   CommListDedupTable::Ptr table = commListDedupTableFactory();
   CommunityMatchContext const context{.peerAs = 65001, .localAs = 65000};

   CommList::PtrConst list(std::vector<U32> values) {
      return CommList::dedupValues(table.get(), values);
   }
   static StandardCommunityMatcher::PtrConst exact(U32 asPart, U32 local) {
      return standardCommunityMatcherFactory(Field::exact(asPart), Field::exact(local));
   }
   bool matches(StandardCommunitySetMatcher::Matchers matchers, CommunitySetMode mode,
                bool inverted, CommList::PtrConst const& l) {
      return standardCommunitySetMatcherFactory(std::move(matchers), mode, inverted)
         ->matches(*l, context);
   }
};

TEST_F(CommunitySetMatcherTest, AnyAllAndExactJudgeTheWholeList) {
   auto const a = exact(1, 1), b = exact(2, 2);
   auto const both = list({0x00010001, 0x00020002});
   auto const bothAndMore = list({0x00010001, 0x00020002, 0x00030003});
   auto const onlyA = list({0x00010001});
   struct Case {
      CommunitySetMode mode;
      CommList::PtrConst list;
      bool expected;
   } const cases[] = {
      {CommunitySetMode::any, onlyA, true},
      {CommunitySetMode::any, list({0x00090009}), false},
      {CommunitySetMode::all, onlyA, false},
      {CommunitySetMode::all, bothAndMore, true},
      {CommunitySetMode::exact, bothAndMore, false},
      {CommunitySetMode::exact, both, true},
   };
   for (Case const& c : cases) {
      SCOPED_TRACE(testing::Message() << communitySetModeName(c.mode) << " " << c.list->toStrep());
      EXPECT_EQ(matches({a, b}, c.mode, false, c.list), c.expected);
      EXPECT_EQ(matches({a, b}, c.mode, true, c.list), !c.expected);
   }
   // Two values matched by one wildcard satisfy exact with one matcher.
   EXPECT_TRUE(matches({standardCommunityMatcherFactory(Field::any(), Field::range(1, 2))},
                       CommunitySetMode::exact, false, list({0x00010001, 0x00020002})));
   EXPECT_EQ(standardCommunitySetMatcherFactory({a, b}, CommunitySetMode::exact, true)->toStrep(),
             "not exact 1:1 2:2");
}

// The answers the header documents for an empty list and an empty set.
TEST_F(CommunitySetMatcherTest, EmptyListsAndEmptySetsHaveTheirDocumentedAnswers) {
   auto const empty = list({});
   auto const some = list({0x00010001});
   auto const a = exact(1, 1);
   EXPECT_FALSE(matches({a}, CommunitySetMode::any, false, empty));
   EXPECT_FALSE(matches({a}, CommunitySetMode::all, false, empty));
   EXPECT_FALSE(matches({a}, CommunitySetMode::exact, false, empty));
   EXPECT_FALSE(matches({}, CommunitySetMode::any, false, some));
   EXPECT_TRUE(matches({}, CommunitySetMode::all, false, some));
   EXPECT_FALSE(matches({}, CommunitySetMode::exact, false, some));
   EXPECT_TRUE(matches({}, CommunitySetMode::exact, false, empty));
   EXPECT_THROW(standardCommunitySetMatcherFactory({a, nullptr}, CommunitySetMode::any, false),
                Kiv::NullArgumentError);
}

} // namespace
} // namespace Routing::Bgp
