// show --json on a path carrying all four community attributes: every list
// is an array of the values' show texts.
#include "ToolTest.h"
#include "tools/mrt/MrtWriter.h"

#include <nlohmann/json.hpp>

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

} // namespace
