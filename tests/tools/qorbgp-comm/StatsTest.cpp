// stats over several files on several threads: the same figures as one
// thread reading them one after the other; and JSON that stays JSON
// whatever bytes a file name holds.
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

TEST_F(QorBgpCommStats, JsonStaysValidForAFileNameThatIsNotUtf8) {
   std::string const whole = path("rib.mrt");
   ASSERT_EQ(run("synth " + whole + " --paths 100 --lists 10").status, 0);
   std::string const odd = path("rib-\xff\xfe.mrt"); // not UTF-8
   std::filesystem::copy_file(whole, odd);
   std::filesystem::resize_file(odd, std::filesystem::file_size(whole) - 7); // a damaged record
   Outcome const outcome = run("stats --json '" + odd + "'");
   EXPECT_EQ(outcome.status, 1);
   nlohmann::json const out = nlohmann::json::parse(outcome.out); // throws on invalid UTF-8
   ASSERT_EQ(out["problems"].size(), 1u);
   EXPECT_NE(out["problems"][0].get<std::string>().find("\xef\xbf\xbd"), std::string::npos);
}

} // namespace
