// show --json on a path carrying all four community attributes: every list
// is an array of the values' show texts.
#include "tools/mrt/MrtWriter.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

namespace mrt = QorBgpTools::mrt;

std::string toolOutput(std::string const& arguments) {
   std::string const command = std::string(QORBGP_COMM) + " " + arguments;
   FILE* pipe = ::popen(command.c_str(), "r");
   std::string output;
   char buffer[4096];
   while (std::size_t n = std::fread(buffer, 1, sizeof buffer, pipe)) {
      output.append(buffer, n);
   }
   EXPECT_EQ(::pclose(pipe), 0) << command;
   return output;
}

TEST(QorBgpCommShow, JsonGivesEveryListAsAnArray) {
   std::string const file = (std::filesystem::temp_directory_path() /
                             ("qorbgp-show-" + std::to_string(::getpid()) + ".mrt"))
                               .string();
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
   nlohmann::json const path = nlohmann::json::parse(toolOutput("show --json " + file));
   SCOPED_TRACE(path.dump());
   std::filesystem::remove(file);
   EXPECT_EQ(path.value("communities", nlohmann::json()),
             nlohmann::json({"65000:100", "65535:65281"}));
   EXPECT_EQ(path.value("largeCommunities", nlohmann::json()), nlohmann::json({"65000:1:2"}));
   EXPECT_EQ(path.value("extendedCommunities", nlohmann::json()),
             nlohmann::json({"Route-Target-AS:65000:100"}));
   EXPECT_EQ(path.value("ipv6ExtendedCommunities", nlohmann::json()),
             nlohmann::json({"0002-IP6:2001:db8::1:100"}));
}

} // namespace
