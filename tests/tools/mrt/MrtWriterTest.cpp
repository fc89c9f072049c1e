#include "tools/mrt/MrtWriter.h"

#include "MrtFileTestFixture.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <functional>

namespace QorBgpTools::mrt {
namespace {

using namespace test;
using MrtWriterTest = MrtTest;

// Exact bytes, so that reader and writer cannot agree on a wrong layout.
TEST_F(MrtWriterTest, WriterProducesTheWireLayout) {
   auto w = create("wire");
   w->ribEntry(0x01020304, 5, "2001:db8::/32",
               std::vector<RibEntry>{{1, 0x0a0b0c0d, 7, {{0x40, 1, {2}}}}});
   // clang-format off
   w->bgp4mpUpdate({.timestamp = 0x01020304, .microseconds = 0x11, .peerAs = 65536, .localAs = 1,
                    .peerAddress = "2001:db8::1", .localAddress = "2001:db8::2",
                    .extendedTimestamp = true, .pathId = 9, .attributes = {{0x40, 1, {0}}},
                    .prefixes = {"2001:db8:1::/48"}});
   ASSERT_TRUE(w->close(nullptr));
   const std::vector<U8> ip6{0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
   auto expected = Body()
      // RIB_IPV6_UNICAST_ADDPATH
      .u32(0x01020304).u16(13).u16(10).u32(27)
      .u32(5).u8(32).raw({0x20, 0x01, 0x0d, 0xb8}).u16(1)
      .u16(1).u32(0x0a0b0c0d).u32(7).u16(4).raw({0x40, 1, 1, 2})
      // BGP4MP_ET MESSAGE_AS4_ADDPATH
      .u32(0x01020304).u16(17).u16(9).u32(110)
      .u32(0x11).u32(65536).u32(1).u16(0).u16(2).raw(ip6).u8(1).raw(ip6).u8(2)
      .raw(std::vector<U8>(16, 0xff)).u16(62).u8(2)
      .u16(0).u16(39).raw({0x40, 1, 1, 0})
      .raw({0x80, 14, 32}).u16(2).u8(1).u8(16).raw(ip6).u8(1).u8(0)
      .u32(9).u8(48).raw({0x20, 0x01, 0x0d, 0xb8, 0, 1})
      .bytes;
   // clang-format on
   auto actual = contents("wire");
   EXPECT_EQ(actual, expected) << "actual   " << hex(actual) << "\nexpected " << hex(expected);
}

TEST_F(MrtWriterTest, WriterRejectsCallerMistakes) {
   auto w = create("bad");
   std::vector<std::pair<char const*, std::function<void()>>> rows = {
      {"malformed prefix '10.0.0.0/33'", [&] { w->ribEntry(0, 0, "10.0.0.0/33", {}); }},
      {"RIB entries of 10.0.0.0/8 mix entries with and without a path id",
       [&] {
          w->ribEntry(0, 0, "10.0.0.0/8", std::vector<RibEntry>{{0, 0, 1, {}}, {0, 0, {}, {}}});
       }},
      {"malformed peer address 'host'",
       [&] {
          w->peerIndexTable(0, 0, "", std::vector<Peer>{{0, "host", 1}});
       }},
      {"2-octet AS 65536 over 65535",
       [&] {
          w->bgp4mpUpdate({.peerAs = 65536,
                           .peerAddress = "192.0.2.1",
                           .localAddress = "192.0.2.2",
                           .as4 = false});
       }},
      {"peer address 192.0.2.1 and local address ::1 differ in family",
       [&] { w->bgp4mpUpdate({.peerAddress = "192.0.2.1", .localAddress = "::1"}); }},
      {"attribute length 65536 over 65535",
       [&] {
          w->ribEntry(0, 0, "10.0.0.0/8",
                      std::vector<RibEntry>{{0, 0, {}, {{0xc0, 8, std::vector<U8>(65536)}}}});
       }},
   };
   for (auto const& [text, call] : rows) {
      try {
         call();
         ADD_FAILURE() << "no error for: " << text;
      } catch (Kiv::RangeError const& e) {
         EXPECT_EQ(std::string(e.what()), text);
      }
   }
   EXPECT_EQ(w->offset(), 0u); // nothing written
}

} // namespace
} // namespace QorBgpTools::mrt
