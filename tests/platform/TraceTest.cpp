#include "QorBgpCommunity/platform/Trace.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

namespace {

TEST(Trace, LevelsFromSpec) {
   struct Row {
      char const* spec;
      U16 levels;
   };
   Row const rows[] = {
       {"", 0},                         {"QorBgpCommunity/89", 0x300},
       {"QorBgpCommunity/0", 0x001},    {"QorBgpCommunity/*", 0x3ff},
       {"QorBgpCommunity/1*", 0x3ff},   {"*/3", 0x008},
       {"Other/5", 0},                  {"QorBgpCommunityX/5,QorBgp/6", 0},
       {"Other/5,QorBgpCommunity/1", 2}, {"QorBgpCommunity/1,*/2", 0x006},
       {",,QorBgpCommunity/9,", 0x200}, {"QorBgpCommunity", 0},
       {"QorBgpCommunity/", 0},         {"QorBgpCommunity/ 8", 0},
       {"QorBgpCommunity/8/9", 0},      {"QorBgpCommunity/8x,QorBgpCommunity/1", 2},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(row.spec);
      EXPECT_EQ(Kiv::traceLevelsFromSpec(row.spec, "QorBgpCommunity"), row.levels);
   }
}

TEST(Trace, EnvironmentIsReadWhenTheFacilityIsCreated) {
   ::setenv("QORBGP_TRACE", "TraceTestA/28,*/0", 1);
   Kiv::TraceFacility a("TraceTestA");
   Kiv::TraceFacility b("TraceTestB");
   ::unsetenv("QORBGP_TRACE");
   EXPECT_EQ(a.levels(), 0x105);
   EXPECT_EQ(b.levels(), 0x001);
   EXPECT_TRUE(a.enabled(8));
   EXPECT_FALSE(a.enabled(9));
   EXPECT_EQ(Kiv::TraceFacility("TraceTestA").levels(), 0);
}

TEST(Trace, LevelSwitches) {
   Kiv::TraceFacility f("TraceTestLevels");
   f.levelsIs(0xffff); // only levels 0 to 9 exist
   f.levelIs(9, false);
   EXPECT_EQ(f.levels(), 0x1ff);
   try {
      f.levelIs(10, true);
      ADD_FAILURE() << "no RangeError";
   } catch (Kiv::RangeError const& e) {
      EXPECT_STREQ(e.what(), "trace level 10 > 9 not allowed");
   }
   EXPECT_EQ(f.levels(), 0x1ff);
}

TEST(Trace, EnabledPointWritesOneLineDisabledPointEvaluatesNothing) {
   std::vector<std::string> lines;
   Kiv::TraceSink previous = Kiv::traceSinkIs(
       [&lines](Kiv::TraceFacility const& f, unsigned level, std::string_view line) {
          lines.push_back(f.name() + "/" + std::to_string(level) + ":" + std::string(line));
       });
   Kiv::TraceFacility f("TraceTestSink");
   f.levelsIs(1u << 8);
   int evaluated = 0;
   QOR_TRACE(f, 9, "skipped " << ++evaluated);
   QOR_TRACE(f, 7, "skipped " << ++evaluated);
   QOR_TRACE(f, 8, "list " << 42 << ", " << ++evaluated << '!');
   Kiv::traceSinkIs(std::move(previous));

   EXPECT_EQ(evaluated, 1);
   EXPECT_EQ(lines, std::vector<std::string>{"TraceTestSink/8:list 42, 1!"});
}

} // namespace
