#include "QorBgpCommunity/platform/PosixRegex.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace Routing::RouteMap {
namespace {

TEST(PosixRegex, SearchesExtendedPatterns) {
   struct Row {
      char const* pattern;
      std::string text;
      bool match;
   };
   Row const rows[] = {
      {"no-export", "1:2 no-export", true},
      {"^no-export", "1:2 no-export", false},
      {"^65535:(6528[12]|7)( |$)", "65535:65282 1:2", true},
      {"^$", "", true},
      {"^a+b$", std::string(300, 'a') + "b", true}, // longer than the stack copy
      {"^a+b$", std::string(300, 'a') + "c", false},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(::testing::Message() << "pattern " << row.pattern << " text " << row.text);
      PosixRegex const regex(row.pattern);
      EXPECT_EQ(regex.execute(std::string_view(row.text)) == 0, row.match);
      EXPECT_EQ(regex.execute(row.text.c_str()) == 0, row.match);
   }
}

TEST(PosixRegex, BadPatternReportsTheCLibraryMessage) {
   regex_t reference;
   int const code = regcomp(&reference, "(1:2", REG_EXTENDED | REG_NOSUB);
   ASSERT_NE(code, 0);
   char reason[256];
   regerror(code, &reference, reason, sizeof reason);
   std::string const expected = std::string("bad regular expression '(1:2': ") + reason;

   EXPECT_THROW(PosixRegex("(1:2"), Kiv::RangeError);
   PosixRegex::Compiled bad = PosixRegex::compile("(1:2");
   EXPECT_TRUE(!bad && bad.error == expected);
   EXPECT_FALSE(PosixRegex::compile(std::string_view("a\0b", 3)));
   EXPECT_EQ(PosixRegex::compile("(1)\\1").error,
             "bad regular expression '(1)\\1': back-references are not accepted");
   EXPECT_TRUE(PosixRegex::compile("[\\1]x\\.")); // a bracket's backslash, an escaped dot
   for (char const* tooComplex : {"t+?", "((a{1,200}){1,200})", "(^|$| ){2}", "(1|^2)+"}) {
      EXPECT_NE(PosixRegex::compile(tooComplex).error.find("too complex"), std::string::npos)
         << tooComplex;
   }
   EXPECT_TRUE(PosixRegex::compile("^(65000|65001):[0-9]{1,5}( [0-9]+:[0-9]+)*$"));
}

TEST(PosixRegex, UnderscoreStandsForTheDelimiter) {
   EXPECT_EQ(PosixRegex::withDelimiters("_1:2_"), "(^|$| )1:2(^|$| )");
   EXPECT_EQ(PosixRegex::withDelimiters("[_]\\_[]_]_"), "[_]\\_[]_](^|$| )");
   PosixRegex const regex(PosixRegex::withDelimiters("_65535:666_"));
   for (char const* text : {"65535:666", "1:2 65535:666", "65535:666 1:2"}) {
      EXPECT_EQ(regex.execute(text), 0) << text;
   }
   EXPECT_NE(regex.execute("65535:6660 165535:666"), 0);
   PosixRegex::Compiled good = PosixRegex::compile("1:2$");
   ASSERT_TRUE(good);
   EXPECT_TRUE(good.error.empty() && good.regex->hasNotificationActive());
}

TEST(PosixRegex, OneExpressionMatchesFromSeveralThreadsAtOnce) {
   PosixRegex const regex("^(65535:[0-9]+ )*no-export( |$)");
   std::string const hit = "65535:1 no-export" + std::string(100, ' ');
   std::string const miss = std::string(400, '1') + " no-export"; // on the heap
   std::atomic<int> wrong{0};
   std::vector<std::thread> threads;
   for (int t = 0; t < 4; ++t) {
      threads.emplace_back([&] {
         for (int i = 0; i < 2000; ++i) {
            wrong +=
               regex.execute(std::string_view(i % 2 ? hit : miss)) != (i % 2 ? 0 : REG_NOMATCH);
         }
      });
   }
   for (std::thread& thread : threads) {
      thread.join();
   }
   EXPECT_EQ(wrong, 0);
}

} // namespace
} // namespace Routing::RouteMap
