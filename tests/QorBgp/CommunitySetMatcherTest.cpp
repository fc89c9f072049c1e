#include "QorBgpCommunity/QorBgp/CommunitySetMatcher.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListDedupTable.h"
#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

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

// A set's answer is the one its matchers give value by value, however the set
// compiles them: random fields of every kind (placeholders bound to a
// two-octet AS and to one no standard community holds), modes and lists.
TEST(CommunitySetMatcher, AgreesWithItsMatchersValueByValue) {
   auto tables = communityTablesFactory();
   std::mt19937 random(7);
   auto small = [&] { return static_cast<U32>(random() % 4); };
   auto field = [&](U32 most) {
      U32 const a = small(), b = a + small();
      switch (random() % 5) {
      case 0:
         return Field::any();
      case 1:
         return Field::exact(std::min(a, most));
      case 2:
         return Field::range(std::min(a, most), std::min(b, most));
      case 3:
         return Field::peerAs();
      default:
         return Field::localAs();
      }
   };
   auto judge = [&](auto const& set, auto const& list, CommunityMatchContext context) {
      auto const& values = *list->commVectorRawPtr();
      std::vector<bool> matched(set->matchers().size());
      bool any = false, everyValue = true;
      for (auto const& value : values) {
         bool valueMatched = false;
         for (std::size_t m = 0; m < matched.size(); ++m) {
            if (set->matchers()[m]->matches(value, context)) {
               matched[m] = valueMatched = any = true;
            }
         }
         everyValue = everyValue && valueMatched;
      }
      bool const all = std::find(matched.begin(), matched.end(), false) == matched.end();
      bool const answer = set->mode() == CommunitySetMode::any   ? any
                          : set->mode() == CommunitySetMode::all ? all
                                                                 : all && everyValue;
      EXPECT_EQ(set->matches(*list, context), answer != set->inverted())
         << set->toStrep() << " on " << list->toStrep() << " for peer AS " << context.peerAs;
   };
   for (int round = 0; round < 3000; ++round) {
      auto const mode = static_cast<CommunitySetMode>(random() % 3);
      CommunityMatchContext const context{.peerAs = round % 3 == 0 ? 70000u : small(),
                                          .localAs = small()};
      std::size_t const matcherCount = 1 + random() % 3, valueCount = random() % 5;
      StandardCommunitySetMatcher::Matchers standard;
      LargeCommunitySetMatcher::Matchers large;
      for (std::size_t m = 0; m < matcherCount; ++m) {
         standard.push_back(standardCommunityMatcherFactory(field(0xFFFF), field(0xFFFF)));
         large.push_back(
            largeCommunityMatcherFactory(field(~U32{0}), field(~U32{0}), field(~U32{0})));
      }
      std::vector<U32> values;
      std::vector<Acl::CommunityValue> largeValues;
      for (std::size_t v = 0; v < valueCount; ++v) {
         values.push_back(small() << 16 | small());
         largeValues.push_back({small(), small(), small()});
      }
      judge(standardCommunitySetMatcherFactory(standard, mode, round % 2 == 0),
            CommList::dedupValues(tables->commListDedupTable().get(), values), context);
      judge(largeCommunitySetMatcherFactory(large, mode, round % 2 == 0),
            LargeCommList::dedupValues(tables->largeCommListDedupTable().get(), largeValues),
            context);
   }
}

} // namespace
} // namespace Routing::Bgp
