#include "QorBgpCommunity/QorBgp/CommunityPolicyParser.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

namespace Routing::Bgp {
namespace {

// What an operator writes comes back from toStrep in canonical form, which
// parses to the same text again.
TEST(CommunityPolicyParser, TextsParseAndPrintBackCanonically) {
   struct Case {
      char const* text;
      char const* canonical;
   } const sets[] = {
      {"any 65000:*  *:666", "any 65000:* *:666"},
      {"not all peer-as:100-199 no-export", "not all peer-as:100-199 65535:65281"},
      {"exact regex \"^65000:1[0-9] \\\"x\\\\.\"", "exact regex \"^65000:1[0-9] \\\"x\\\\.\""},
   };
   for (Case const& c : sets) {
      SCOPED_TRACE(c.text);
      auto const parsed = parseStandardCommunitySet(c.text);
      EXPECT_EQ(parsed->toStrep(), c.canonical);
      EXPECT_EQ(parseStandardCommunitySet(parsed->toStrep())->toStrep(), c.canonical);
   }
   EXPECT_EQ(parseStandardCommunitySet("any regex \"a\\\\b\"")->matchers()[0]->toStrep(),
             "regex \"a\\\\b\"");
   EXPECT_EQ(parseLargeCommunitySet("all local-as:*:0-9")->toStrep(), "all local-as:*:0-9");
   EXPECT_EQ(parseStandardCommunityEdit("add no-export 65000:100")->toStrep(),
             "add 65000:100 65535:65281");
   EXPECT_EQ(parseStandardCommunityEdit("delete *:666 local-as")->toStrep(),
             "delete *:666 65535:65283");
   EXPECT_EQ(parseLargeCommunityEdit("set 4200000000:1:2")->toStrep(), "set 4200000000:1:2");
   EXPECT_EQ(parseLargeCommunityEdit("delete-all")->kind(), CommunityEditKind::deleteAll);
   // Extended values in order of their content words.
   EXPECT_EQ(parseExtCommunityEdit("add raw 0x8006000000000000 ovs invalid color 100 "
                                   "rt 4200000000:7 soo 192.0.2.1:5 rt 65000:100")
                ->toStrep(),
             "add rt 65000:100 soo 192.0.2.1:5 rt 4200000000:7 color 100 ovs invalid "
             "raw 0x8006000000000000");
   EXPECT_EQ(parseExtCommunityEdit("delete rt peer-as:*")->toStrep(), "delete rt peer-as:*");
   EXPECT_THROW(parseExtCommunityEdit("add rt 70000:70000"), Kiv::RangeError);
   EXPECT_EQ(parseExtCommIp6Edit("add 0:3 2001:db8:::7 0:2 2001:db8::1:100")->toStrep(),
             "add 0:2 2001:db8::1:100 0:3 2001:db8:::7");
   EXPECT_THROW(parseExtCommIp6Edit("add 0:2 2001:db8::1"), Kiv::RangeError); // no local part

   auto const blackhole = parseStandardCommunitySet("any peer-as:666");
   auto table = commListDedupTableFactory();
   std::vector<U32> values{65001u << 16 | 666};
   EXPECT_TRUE(blackhole->matches(*CommList::dedupValues(table.get(), values), {.peerAs = 65001}));
}

TEST(CommunityPolicyParser, BadTextNamesWhereAndWhatWasExpected) {
   struct Case {
      std::string_view text;
      char const* message;
   } const sets[] = {
      {"", "at 1: expected 'any', 'all', 'exact' or 'not', found end of text"},
      {"some 1:1", "at 1: expected 'any', 'all', 'exact' or 'not', found 'some'"},
      {"not not 1:1", "at 5: expected 'any', 'all' or 'exact', found 'not'"},
      {"any", "at 4: expected a community pattern (<as>:<local>, a well-known name or regex "
              "\"...\"), found end of text"},
      {"any 1:70000", "at 5: expected a number, a range, '*', 'peer-as' or 'local-as', found "
                      "'1:70000'"},
      {"any 1:9-3",
       "at 5: expected a number, a range, '*', 'peer-as' or 'local-as', found '1:9-3'"},
      {"any regex ^1", "at 11: expected a quoted regular expression, found '^1'"},
      {"any regex \"^1", "at 14: expected a closing '\"', found end of text"},
   };
   for (Case const& c : sets) {
      SCOPED_TRACE(c.text);
      try {
         parseStandardCommunitySet(c.text);
         ADD_FAILURE() << "accepted";
      } catch (Kiv::RangeError const& e) {
         EXPECT_STREQ(e.what(), c.message);
      }
   }
   EXPECT_THROW(parseStandardCommunitySet("any regex \"(\""), Kiv::RangeError);
   EXPECT_THROW(parseLargeCommunitySet("any 1:2"), Kiv::RangeError);
   try {
      parseStandardCommunityEdit("delete-all 1:1");
      ADD_FAILURE() << "accepted";
   } catch (Kiv::RangeError const& e) {
      EXPECT_STREQ(e.what(), "at 12: expected end of text, found '1:1'");
   }
   EXPECT_THROW(parseStandardCommunityEdit("add 1:*"), Kiv::RangeError);
}

} // namespace
} // namespace Routing::Bgp
