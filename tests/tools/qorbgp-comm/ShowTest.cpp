// show on the inputs collectors serve (every compression, pipes, standard
// input), and show --json on a path carrying all four community attributes.
#include "ToolTest.h"
#include "tools/mrt/MrtWriter.h"

#include <nlohmann/json.hpp>

#include <fstream>
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

} // namespace
