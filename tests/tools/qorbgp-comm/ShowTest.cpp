// show and match: the inputs collectors serve (every compression, pipes,
// standard input), the JSON of a path carrying all four community
// attributes, the path filters, and match's delimiter, kinds and status.
#include "ToolTest.h"
#include "tools/mrt/MrtWriter.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace mrt = QorBgpTools::mrt;

using QorBgpCommShow = ToolTest;

TEST_F(QorBgpCommShow, JsonGivesEveryListAsAnArray) {
   std::string const file = path("rib.mrt");
   {
      std::string error;
      auto writer = mrt::MrtWriter::create(file, mrt::Compression::none, &error);
      ASSERT_TRUE(writer) << error;
      std::vector<mrt::Peer> const peers{{0x0a000002, "192.0.2.2", 65001}};
      writer->peerIndexTable(1700000000, 0x0a000001, "", peers);
      // Type 0x00, subtype 0x02 (route target), 2001:db8::1, local administrator 100.
      std::vector<U8> const ip6RouteTarget = {0x00, 0x02, 0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0,
                                              0,    0,    0,    0,    0,    0,    0, 1, 0, 100};
      mrt::RibEntry entry;
      entry.peerIndex = 0;
      entry.originatedTime = 1700000000;
      entry.attributes = {
         {0xc0, 8, {0xfd, 0xe8, 0x00, 0x64, 0xff, 0xff, 0xff, 0x01}},  // 65000:100 no-export
         {0xc0, 16, {0x00, 0x02, 0xfd, 0xe8, 0x00, 0x00, 0x00, 0x64}}, // RT 65000:100
         {0xc0, 25, ip6RouteTarget},
         {0xc0, 32, {0, 0, 0xfd, 0xe8, 0, 0, 0, 1, 0, 0, 0, 2}}}; // 65000:1:2
      std::vector<mrt::RibEntry> const entries{entry};
      writer->ribEntry(1700000000, 0, "198.51.100.0/24", entries);
      ASSERT_TRUE(writer->close(&error)) << error;
   }
   Outcome const shown = run("show --json " + file);
   ASSERT_EQ(shown.status, 0) << shown.err;
   nlohmann::json const listed = nlohmann::json::parse(shown.out);
   SCOPED_TRACE(shown.out);
   EXPECT_EQ(listed.value("communities", nlohmann::json()),
             nlohmann::json({"65000:100", "65535:65281"}));
   EXPECT_EQ(listed.value("largeCommunities", nlohmann::json()), nlohmann::json({"65000:1:2"}));
   EXPECT_EQ(listed.value("extendedCommunities", nlohmann::json()),
             nlohmann::json({"Route-Target-AS:65000:100"}));
   EXPECT_EQ(listed.value("ipv6ExtendedCommunities", nlohmann::json()),
             nlohmann::json({"0002-IP6:2001:db8::1:100"}));
}

TEST_F(QorBgpCommShow, EveryCompressionAndStandardInputReadAlike) {
   std::string const plain = path("rib.mrt");
   ASSERT_EQ(run("synth " + plain + " --paths 300 --lists 20").status, 0);
   Outcome const expected = run("show " + plain);
   ASSERT_EQ(expected.status, 0);
   ASSERT_FALSE(expected.out.empty());
   for (char const* suffix : {".gz", ".bz2", ".xz", ".zst"}) {
      std::string const compressed = path(std::string("rib") + suffix);
      ASSERT_EQ(run("synth " + compressed + " --paths 300 --lists 20").status, 0);
      for (std::string const& command :
           {"show " + compressed, "show - <" + compressed, "show /dev/stdin <" + compressed}) {
         SCOPED_TRACE(command);
         Outcome const shown = run(command);
         EXPECT_EQ(shown.status, 0) << shown.err;
         EXPECT_EQ(shown.out, expected.out);
      }
      // A pipe cannot be sought: the compression is told from bytes read once.
      Outcome const piped = run("show -", compressed);
      EXPECT_EQ(piped.status, 0) << piped.err;
      EXPECT_EQ(piped.out, expected.out);
   }
}

TEST_F(QorBgpCommShow, InputThatIsNotMrtFailsByName) {
   std::ofstream(path("notes.txt")) << "these are not the routes you are looking for\n";
   Outcome const text = run("show " + path("notes.txt"));
   EXPECT_EQ(text.status, 1);
   EXPECT_NE(text.err.find("not an MRT file"), std::string::npos) << text.err;
   std::ofstream(path("rib.zip")) << "PK\x03\x04 and a zip archive's other bytes";
   Outcome const zip = run("stats " + path("rib.zip"));
   EXPECT_EQ(zip.status, 1);
   EXPECT_NE(zip.err.find("is compressed as zip, which is not supported"), std::string::npos);
}

// Four paths of two peers, a second apart, for the filters.
class QorBgpCommFilters : public ToolTest {
 protected:
   void SetUp() override {
      ToolTest::SetUp();
      std::string error;
      auto writer = mrt::MrtWriter::create(rib(), mrt::Compression::none, &error);
      ASSERT_TRUE(writer) << error;
      std::vector<mrt::Peer> const peers{{1, "192.0.2.2", 65001}, {2, "2001:db8::2", 65002}};
      writer->peerIndexTable(0, 0, "", peers);
      struct Route {
         char const* prefix;
         U16 peer;
         std::vector<U8> asPath;
         mrt::Attribute communities;
      } const routes[] = {
         {"192.0.2.0/24",
          0,
          {2, 3, 0, 0, 0xfd, 0xe9, 0, 0, 0x0d, 0x1c, 0, 0, 0xfb, 0xf4},
          {0xc0, 8, {0x0d, 0x1c, 0x02, 0x9a}}}, // 65001 3356 64500; 3356:666
         {"192.0.2.128/25",
          1,
          {2, 2, 0, 0, 0xfd, 0xea, 0, 0, 0xfb, 0xf5},
          {0xc0, 32, {0, 0, 0x0d, 0x1c, 0, 0, 0x02, 0x9a, 0, 0, 0, 1}}}, // 65002 64501; 3356:666:1
         {"192.0.0.0/16",
          0,
          {2, 1, 0, 0, 0xfd, 0xe9, 1, 1, 0, 0, 0xfb, 0xf6},
          {0xc0, 8, {0x0d, 0x1c, 0x1a, 0x04}}}, // 65001 {64502}; 3356:6660
         {"2001:db8:1::/48",
          1,
          {2, 1, 0, 0, 0xfb, 0xf4},
          {0xc0, 16, {0x00, 0x02, 0x0d, 0x1c, 0x00, 0x00, 0x02, 0x9a}}}, // 64500; RT 3356:666
      };
      U32 time = 1700000000;
      for (Route const& route : routes) {
         std::vector<mrt::RibEntry> const entry{
            {route.peer, time++, std::nullopt, {{0x40, 2, route.asPath}, route.communities}}};
         writer->ribEntry(0, time, route.prefix, entry);
      }
      ASSERT_TRUE(writer->close(&error)) << error;
   }
   std::string rib() const { return path("rib.mrt"); }
   // The prefixes of the paths `show` prints with these options, in order.
   std::string shown(std::string const& options) const {
      Outcome const outcome = run("show --json " + rib() + " " + options);
      EXPECT_EQ(outcome.status, 0) << outcome.err;
      std::string prefixes;
      std::istringstream lines(outcome.out);
      for (std::string line; std::getline(lines, line);) {
         prefixes += (prefixes.empty() ? "" : " ") +
                     nlohmann::json::parse(line)["prefix"].get<std::string>();
      }
      return prefixes;
   }
};

TEST_F(QorBgpCommFilters, EachFilterPicksItsPaths) {
   EXPECT_EQ(shown("--prefix 192.0.2.0/24"), "192.0.2.0/24");
   EXPECT_EQ(shown("--prefix 2001:DB8:1:0::/48"), "2001:db8:1::/48");
   EXPECT_EQ(shown("--prefix 192.0.2.0/24 --more-specific"), "192.0.2.0/24 192.0.2.128/25");
   EXPECT_EQ(shown("--prefix 192.0.2.0/24 --less-specific"), "192.0.2.0/24 192.0.0.0/16");
   EXPECT_EQ(shown("--prefix 10.0.0.0/8 --more-specific --less-specific"), "");
   EXPECT_EQ(shown("--peer 2001:DB8:0::2"), "192.0.2.128/25 2001:db8:1::/48");
   EXPECT_EQ(shown("--peer-as 65001"), "192.0.2.0/24 192.0.0.0/16");
   EXPECT_EQ(shown("--origin-as 64500"), "192.0.2.0/24 2001:db8:1::/48");
   EXPECT_EQ(shown("--origin-as 64502"), "192.0.0.0/16"); // a set of one
   EXPECT_EQ(shown("--since 1700000001 --until 2023-11-14T22:13:22Z"),
             "192.0.2.128/25 192.0.0.0/16");
}

TEST_F(QorBgpCommFilters, JsonCarriesWhereAndWhenEachPathCameFrom) {
   Outcome const outcome = run("show --json --limit 1 " + rib());
   nlohmann::json const first = nlohmann::json::parse(outcome.out);
   EXPECT_EQ(first["timestamp"], 1700000000);
   EXPECT_EQ(first["time"], "2023-11-14T22:13:20Z");
   EXPECT_EQ(first["recordType"], "TABLE_DUMP_V2");
   EXPECT_EQ(first["family"], "ipv4 unicast");
   EXPECT_EQ(first["peer"], "192.0.2.2");
   EXPECT_EQ(first["asPath"], "65001 3356 64500");
   EXPECT_EQ(first["originAs"], 64500);
}

TEST_F(QorBgpCommFilters, MatchTakesDelimitersKindsAndAnswersAsGrep) {
   auto matched = [&](std::string const& arguments) {
      Outcome const outcome = run("match " + arguments + " " + rib());
      return std::pair(outcome.status,
                       static_cast<int>(std::count(outcome.out.begin(), outcome.out.end(), '\n')) /
                          2); // a header line and one list line per path
   };
   EXPECT_EQ(matched("3356:666"), std::pair(0, 4));   // a part of every list's text
   EXPECT_EQ(matched("_3356:666_"), std::pair(0, 2)); // standard, and the route target ("3356:666")
   EXPECT_EQ(matched("--kind large _3356:666:1_"), std::pair(0, 1));
   EXPECT_EQ(matched("--kind large _3356:666_"), std::pair(1, 0));
   EXPECT_EQ(matched("--kind standard,large _3356:666_"), std::pair(0, 1));
   EXPECT_EQ(matched("--kind extended 3356:666_"), std::pair(0, 1));
   EXPECT_EQ(matched("'_65535:0_'"), std::pair(1, 0));

   // Set conditions in the policy text instead of the expression; a path
   // without a list of that kind holds an empty one.
   EXPECT_EQ(matched("--standard 'any *:666'"), std::pair(0, 1));
   EXPECT_EQ(matched("--standard 'not any *:666'"), std::pair(0, 3));
   EXPECT_EQ(matched("--standard 'any local-as:*' --local-as 3356 --large 'not any *:*:*'"),
             std::pair(0, 2));
   EXPECT_EQ(matched("--large 'all 3356:666-667:1'"), std::pair(0, 1));
   EXPECT_EQ(matched("--standard 'any peer-as:666'"), std::pair(1, 0));
   EXPECT_EQ(matched("--extended 'any rt 3356:666'"), std::pair(0, 1));
   EXPECT_EQ(matched("--extended 'not any rt *:*'"), std::pair(0, 3));
   Outcome const bad = run("match --standard 'some 1:1' " + rib());
   EXPECT_EQ(bad.status, 2);
   EXPECT_EQ(bad.err, "qorbgp-comm match: --standard: at 1: expected 'any', 'all', 'exact' or "
                      "'not', found 'some'\n");
}

} // namespace
