// stats over several files on several threads: the same figures as one
// thread reading them one after the other.
#include "ToolTest.h"

#include <nlohmann/json.hpp>

namespace {

using QorBgpCommStats = ToolTest;

TEST_F(QorBgpCommStats, ThreadsSharingTheTablesCountAsOneThreadDoes) {
   std::string files;
   for (char const* seed : {"1", "2", "3"}) {
      std::string const file = path(std::string("rib") + seed + ".mrt.gz");
      ASSERT_EQ(run("synth " + file + " --paths 20000 --lists 300 --seed " + seed).status, 0);
      files += " " + file;
   }
   auto figures = [&](char const* threads) {
      Outcome const outcome = run(std::string("stats --json --threads ") + threads + files);
      EXPECT_EQ(outcome.status, 0) << outcome.err;
      nlohmann::json out = nlohmann::json::parse(outcome.out);
      EXPECT_EQ(out["threads"], std::stoi(threads));
      for (char const* timing : {"seconds", "threads", "heapBytesHeld"}) {
         out.erase(timing);
      }
      return out;
   };
   nlohmann::json const one = figures("1");
   EXPECT_EQ(one["paths"], 60000);
   EXPECT_EQ(figures("3"), one);
   EXPECT_EQ(run("stats --threads 0" + files).status, 2);
}

} // namespace
