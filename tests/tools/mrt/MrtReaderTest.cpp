#include "tools/mrt/MrtReader.h"

#include "MrtFileTestFixture.h"

#include <malloc.h>
#if defined(__SANITIZE_ADDRESS__)
// AddressSanitizer's runtime (its header does not come with g++).
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace QorBgpTools::mrt {
namespace {

using namespace test;
using MrtReaderTest = MrtTest;

// Every record kind the reader decodes, two damaged records and the paths
// they hold.
struct Sample {
   std::vector<Path> paths;
   U64 damagedOffset = 0;
   U64 truncatedOffset = 0;
   U64 size = 0;
};

// clang-format off
Sample writeSample(MrtWriter& w) {
   Sample s;
   w.peerIndexTable(1000, 0x0a000001, "test", kPeers);
   w.ribEntry(1000, 0, "198.51.100.0/24", std::vector<RibEntry>{
      {0, 900, {}, {kOrigin, kCommunities}}, {1, 901, {}, {kOrigin, kLongLarge}}});
   w.ribEntry(1000, 1, "2001:db8:100::/40", std::vector<RibEntry>{
      {1, 902, 7, {kExtCommunities}}, {0, 903, 8, {kCommunities}}});
   w.record(1000, 13, 6, // RIB_GENERIC, IPv4 unicast
            Body().u32(2).u16(1).u8(1).prefix("203.0.113.0/24").u16(1).u16(0).u32(904)
               .attrs({kCommunities}).bytes);
   s.damagedOffset = w.offset();
   w.record(1000, 13, 2, // the attribute claims 200 bytes of a 4-byte block
            Body().u32(4).prefix("10.0.0.0/8").u16(1).u16(0).u32(907).u16(4)
               .raw({0xc0, 8, 200, 1}).bytes);
   w.record(1000, 13, 12, // RIB_GENERIC_ADDPATH, VPNv4: path id, length, label, RD 65000:1, prefix
            Body().u32(3).u16(1).u8(128).u32(77).u8(112).raw({0x00, 0x10, 0x01})
               .raw({0, 0, 0xfd, 0xe8, 0, 0, 0, 1}).raw({10, 1, 0})
               .u16(1).u16(1).u32(906).attrs({kExtCommunities}).bytes);
   w.bgp4mpUpdate({.timestamp = 2000, .peerAs = 64501, .localAs = 64502,
                   .peerAddress = "192.0.2.9", .localAddress = "192.0.2.10", .as4 = false,
                   .attributes = {kOrigin, kCommunities},
                   .prefixes = {"192.0.2.0/25", "192.0.2.128/25"}});
   w.bgp4mpUpdate({.timestamp = 2001, .microseconds = 5, .peerAs = 4200000001, .localAs = 1,
                   .peerAddress = "2001:db8::9", .localAddress = "2001:db8::a",
                   .extendedTimestamp = true, .pathId = 42, .attributes = {kOrigin, kLongLarge},
                   .prefixes = {"2001:db8:1::/48", "10.9.0.0/16"}});
   w.bgp4mpUpdate({.timestamp = 2002, .peerAs = 1, .localAs = 2, .peerAddress = "192.0.2.9",
                   .localAddress = "192.0.2.10", .withdrawn = {"192.0.2.0/25"}});
   w.record(2003, 16, 5, Body().u32(1).u32(2).u16(0).u16(1).u32(0).u32(0).u16(1).u16(2).bytes);
   w.record(2004, 12, 1, // TABLE_DUMP, IPv4
            Body().u16(0).u16(0).raw({192, 0, 2, 0}).u8(24).u8(1).u32(905).raw({192, 0, 2, 1})
               .u16(64500).attrs({kCommunities}).bytes);
   w.record(2005, 11, 0, Body().u32(0).bytes); // OSPFv2
   s.truncatedOffset = w.offset();
   w.raw(Body().u32(2006).u16(16).u16(4).u32(100).raw(std::vector<U8>(10, 0)).bytes);
   s.size = w.offset();

   const Attribute mpReach{0x80, 14, Body().u16(2).u8(1).u8(16)
      .raw({0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 9}).u8(0)
      .u32(42).u8(48).raw({0x20, 0x01, 0x0d, 0xb8, 0, 1}).bytes};
   // Record type, AFI, SAFI and AS number size where they differ from
   // TABLE_DUMP_V2, IPv4 unicast, 4 octets.
   auto from = [](Path p, U16 type, U16 afi, U8 safi, bool as4) {
      std::tie(p.recordType, p.afi, p.safi, p.fourOctetAs) = std::tuple(type, afi, safi, as4);
      return p;
   };
   s.paths = {
      path(900, 0, "198.51.100.0/24", {}, {kOrigin, kCommunities}),
      path(901, 1, "198.51.100.0/24", {}, {kOrigin, kLongLargeRead}),
      from(path(902, 1, "2001:db8:100::/40", 7, {kExtCommunities}), 13, 2, 1, true),
      from(path(903, 0, "2001:db8:100::/40", 8, {kCommunities}), 13, 2, 1, true),
      path(904, 0, "203.0.113.0/24", {}, {kCommunities}),
      from(path(906, 1, route("10.1.0.0/24", {{0, 0, 0xfd, 0xe8, 0, 0, 0, 1}}),
                77, {kExtCommunities}), 13, 1, 128, true),
      {2000, address("192.0.2.9"), 64501, route("192.0.2.0/25"), {}, {kOrigin, kCommunities}, 16, 1, 1, false},
      {2000, address("192.0.2.9"), 64501, route("192.0.2.128/25"), {}, {kOrigin, kCommunities}, 16, 1, 1, false},
      {2001, address("2001:db8::9"), 4200000001, route("10.9.0.0/16"), 42, {kOrigin, kLongLargeRead, mpReach}, 17},
      {2001, address("2001:db8::9"), 4200000001, route("2001:db8:1::/48"), 42, {kOrigin, kLongLargeRead, mpReach}, 17, 2},
      from(path(905, 0, "192.0.2.0/24", {}, {kCommunities}), 12, 1, 1, false),
   };
   return s;
}
// clang-format on

TEST_F(MrtReaderTest, EveryRecordKindReadsBackInEachCompression) {
   for (auto c : {Compression::none, Compression::gzip, Compression::bzip2, Compression::xz,
                  Compression::zstd}) {
      SCOPED_TRACE(static_cast<int>(c));
      auto writer = create("sample", c);
      Sample sample = writeSample(*writer);
      std::string error;
      ASSERT_TRUE(writer->close(&error)) << error;

      auto reader = MrtReader::open(file("sample"), &error);
      ASSERT_TRUE(reader) << error;
      EXPECT_EQ(reader->compression(), c);
      std::vector<Path> paths;
      for (Path p; reader->next(p);) {
         paths.push_back(p);
      }
      Path untouched = sample.paths[0];
      EXPECT_FALSE(reader->next(untouched)); // and stays at the end
      EXPECT_EQ(untouched, sample.paths[0]);
      EXPECT_EQ(paths, sample.paths);
      EXPECT_EQ(paths[5].route.text(), "65000:1:10.1.0.0/24");
      EXPECT_EQ(paths[9].peerText(), "2001:db8::9");
      EXPECT_EQ(paths[8].attribute(32), &paths[8].attributes[1]);

      Report const& r = reader->report();
      EXPECT_EQ(r.records, 13u);
      EXPECT_EQ(r.paths, sample.paths.size());
      EXPECT_EQ(r.skippedRecords, 2u);
      EXPECT_EQ(r.ignoredRecords, 3u); // withdrawal, state change, OSPFv2
      EXPECT_EQ(r.bytesRead, sample.size);
      EXPECT_EQ(reader->bytesConsumed(), reader->fileSize());
      ASSERT_EQ(r.problems.size(), 2u);
      EXPECT_EQ(r.problems[0].offset, sample.damagedOffset);
      EXPECT_EQ(r.problems[0].text, "TABLE_DUMP_V2 subtype 2: RIB entry 0: attribute type 8 length "
                                    "200 runs past the 4-byte attribute block");
      EXPECT_EQ(r.problems[1].offset, sample.truncatedOffset);
      EXPECT_EQ(r.problems[1].text, "BGP4MP subtype 4: record cut off, 10 of 100 bytes present");
   }
}

// Each damaged record sits between a peer table and a good TABLE_DUMP
// record: it alone is dropped and reported.
TEST_F(MrtReaderTest, DamagedRecordIsSkippedAndReadingGoesOn) {
   // clang-format off
   const Body bgp4mp = Body().u16(1).u16(2).u16(0); // 2-octet ASes, interface index
   const Body update = Body(bgp4mp).u16(1).u32(0).u32(0).raw(std::vector<U8>(16, 0xff));
   const auto tableDump = Body().u16(0).u16(0).raw({192, 0, 2, 0}).u8(24).u8(1).u32(1)
      .raw({192, 0, 2, 1}).u16(64500).attrs({}).bytes;
   struct Row {
      char const* name;
      U16 type, subtype;
      std::vector<U8> body;
      char const* problem;
   } rows[] = {
      {"peer index", 13, 2, Body().u32(0).prefix("10.0.0.0/8").u16(1).u16(5).u32(0).attrs({}).bytes,
       "TABLE_DUMP_V2 subtype 2: RIB entry 0: peer index 5 outside the peer table of 2 peers"},
      {"long prefix", 13, 2, Body().u32(0).u8(33).raw({10, 0, 0, 0, 0}).u16(0).bytes,
       "TABLE_DUMP_V2 subtype 2: prefix length 33 over 32"},
      {"entries missing", 13, 4, Body().u32(0).prefix("2001:db8::/32").u16(2).u16(0).u32(0).attrs({}).bytes,
       "TABLE_DUMP_V2 subtype 4: RIB entry 1 of 2 cut short"},
      {"trailing", 13, 2, Body().u32(0).prefix("10.0.0.0/8").u16(0).u8(0).bytes,
       "TABLE_DUMP_V2 subtype 2: trailing bytes after the last field: 1"},
      {"prefix past NLRI", 13, 6, Body().u32(0).u16(1).u8(1).u8(24).raw({10}).bytes,
       "TABLE_DUMP_V2 subtype 6: NLRI of 24 bits runs past its data"},
      {"no bottom label", 13, 6, Body().u32(0).u16(1).u8(4).u8(24).raw({0, 0x10, 0}).u16(0).bytes,
       "TABLE_DUMP_V2 subtype 6: label stack runs past the NLRI"},
      {"short peer table", 13, 1, Body().u32(0).u16(0).u16(1).u8(0).bytes,
       "TABLE_DUMP_V2 subtype 1: peer entry 0 of 1 cut short"},
      {"family", 16, 1, Body(bgp4mp).u16(3).bytes, "BGP4MP subtype 1: address family 3 unknown"},
      {"message length", 16, 1, Body(update).u16(25).u8(2).u16(0).u16(0).bytes,
       "BGP4MP subtype 1: BGP message length 25 but 23 bytes in the record"},
      {"no ET stamp", 17, 4, Body().u16(0).bytes, "BGP4MP_ET subtype 4: microsecond timestamp cut short"},
      {"MP_REACH", 16, 1, Body(update).u16(29).u8(2).u16(0).u16(6).raw({0x80, 14, 3, 0, 2, 1}).bytes,
       "BGP4MP subtype 1: MP_REACH_NLRI cut short"},
      {"NLRI", 16, 1, Body(update).u16(25).u8(2).u16(0).u16(0).u8(16).u8(10).bytes,
       "BGP4MP subtype 1: NLRI of 16 bits runs past its data"},
   };
   // clang-format on
   for (auto const& row : rows) {
      SCOPED_TRACE(row.name);
      auto w = create("damaged");
      w->peerIndexTable(0, 0, "", kPeers);
      U64 offset = w->offset();
      w->record(0, row.type, row.subtype, row.body);
      w->record(0, 12, 1, tableDump);
      ASSERT_TRUE(w->close(nullptr));
      Report report;
      auto paths = readAll("damaged", &report);
      EXPECT_EQ(report.skippedRecords, 1u);
      ASSERT_EQ(report.problems.size(), 1u);
      EXPECT_EQ(report.problems[0].offset, offset);
      EXPECT_EQ(report.problems[0].text, row.problem);
      EXPECT_EQ(paths.size(), 1u);
   }
}

TEST_F(MrtReaderTest, AddPathNlriUnderPlainSubtypeIsRecognised) {
   auto w = create("addpath");
   // clang-format off
   w->record(7, 16, 4, // MESSAGE_AS4 whose NLRI carries path id 2
             Body().u32(1).u32(2).u16(0).u16(1).raw({192, 0, 2, 1}).raw({192, 0, 2, 2})
                .raw(std::vector<U8>(16, 0xff)).u16(31).u8(2).u16(0).u16(0)
                .u32(2).u8(24).raw({172, 17, 0}).bytes);
   // clang-format on
   ASSERT_TRUE(w->close(nullptr));
   auto paths = readAll("addpath");
   EXPECT_EQ(paths,
             (std::vector<Path>{{7, address("192.0.2.1"), 1, route("172.17.0.0/24"), 2, {}, 16}}));
}

TEST_F(MrtReaderTest, CutOffHeaderEndsTheFile) {
   auto w = create("cut");
   w->peerIndexTable(0, 0, "", kPeers);
   w->ribEntry(0, 1, "192.0.2.0/24", std::vector<RibEntry>{{0, 1, {}, {}}});
   U64 offset = w->offset();
   w->raw(std::vector<U8>{0, 0, 0, 1, 0});
   ASSERT_TRUE(w->close(nullptr));
   Report report;
   EXPECT_EQ(readAll("cut", &report).size(), 1u);
   EXPECT_EQ(report.records, 2u);
   EXPECT_EQ(report.skippedRecords, 0u);
   ASSERT_EQ(report.problems.size(), 1u);
   EXPECT_EQ(report.problems[0].offset, offset);
   EXPECT_EQ(report.problems[0].text, "record header cut off after 5 of 12 bytes");
}

// A damaged length field costs the records it garbles, not the rest of the
// file: reading goes on at the next plausible record header.
TEST_F(MrtReaderTest, DamagedLengthIsPassedOverToTheNextRecord) {
   constexpr U32 kRecords = 200;
   auto w = create("rib");
   w->peerIndexTable(0, 0, "", kPeers);
   std::vector<U64> offsets;
   for (U32 i = 0; i < kRecords; ++i) {
      offsets.push_back(w->offset());
      w->ribEntry(0, i, "10.0.0.0/8", std::vector<RibEntry>{{0, i, {}, {kCommunities}}});
   }
   ASSERT_TRUE(w->close(nullptr));
   auto const whole = contents("rib");
   struct Row {
      char const* name;
      U32 length;          // written into record 100's length field
      std::size_t lost;    // records not read
      char const* problem; // how the report begins
   } rows[] = {{"over the limit", 0xffffffff, 1, "TABLE_DUMP_V2 subtype 2: length 4294967295 over"},
               {"a few bytes long", 5, 2, "damaged record header"}};
   for (Row const& row : rows) {
      SCOPED_TRACE(row.name);
      auto bytes = whole;
      std::size_t const field = offsets[100] + 8;
      U32 const length = row.length == 0xffffffff
                            ? row.length
                            : (U32{bytes[field]} << 24 | U32{bytes[field + 1]} << 16 |
                               U32{bytes[field + 2]} << 8 | bytes[field + 3]) +
                                 row.length;
      for (int i = 0; i < 4; ++i) {
         bytes[field + i] = static_cast<U8>(length >> (24 - 8 * i));
      }
      store("damaged", bytes);
      Report report;
      EXPECT_EQ(readAll("damaged", &report).size(), kRecords - row.lost);
      ASSERT_FALSE(report.problems.empty());
      EXPECT_TRUE(report.problems.back().text.starts_with(row.problem))
         << report.problems.back().text;
      EXPECT_NE(report.problems.back().text.find("bytes to the next record"), std::string::npos);
      EXPECT_GT(report.skippedBytes, 0u);
      EXPECT_EQ(report.bytesRead, bytes.size());
   }
}

// Bytes allocated and not freed (AddressSanitizer's allocator keeps its own count).
std::size_t heapInUse() {
#if defined(__SANITIZE_ADDRESS__)
   return __sanitizer_get_current_allocated_bytes();
#else
   return mallinfo2().uordblks;
#endif
}

// One 65,535-byte UPDATE with 1,000 empty attributes and 62,512 one-byte
// announcements (0.0.0.0/0): the paths share one attribute block, so the
// record costs about a hundred times its size, not gigabytes.
TEST_F(MrtReaderTest, PathsOfOneMessageShareItsAttributes) {
   constexpr std::size_t kAttributes = 1000, kRoutes = 62512;
   std::vector<U8> attributes;
   for (std::size_t i = 0; i < kAttributes; ++i) {
      attributes.insert(attributes.end(), {0x40, 0x63, 0x00});
   }
   Body message = Body()
                     .raw(std::vector<U8>(16, 0xff))
                     .u16(0xffff)
                     .u8(2)
                     .u16(0)
                     .u16(static_cast<U16>(attributes.size()))
                     .raw(attributes)
                     .raw(std::vector<U8>(kRoutes, 0));
   ASSERT_EQ(message.bytes.size(), 0xffffu);
   auto w = create("crafted");
   w->record(1, 16, 4,
             Body()
                .u32(1)
                .u32(2)
                .u16(0)
                .u16(1)
                .raw({192, 0, 2, 1})
                .raw({192, 0, 2, 2})
                .raw(message.bytes)
                .bytes);
   ASSERT_TRUE(w->close(nullptr));

   std::size_t const heapBefore = heapInUse();
   std::string error;
   auto reader = MrtReader::open(file("crafted"), &error);
   Path first, path;
   ASSERT_TRUE(reader && reader->next(first));
   std::size_t const heapHeld = heapInUse() - heapBefore; // every path is pending
   std::size_t paths = 1;
   while (reader->next(path)) {
      ++paths;
      ASSERT_TRUE(path.attributes.sameBlock(first.attributes));
   }
   EXPECT_EQ(paths, kRoutes);
   EXPECT_EQ(first.attributes.size(), kAttributes);
   EXPECT_LT(heapHeld, 200 * message.bytes.size());
}

TEST_F(MrtReaderTest, EvpnAndFlowspecRoutesAreGivenInHex) {
   const Attribute evpn{0x80, 14,
                        Body()
                           .u16(25)
                           .u8(70)
                           .u8(4)
                           .raw({192, 0, 2, 1})
                           .u8(0)
                           .u8(3)
                           .u8(4)
                           .raw({0xde, 0xad, 0xbe, 0xef})
                           .bytes};
   const Attribute flowspec{0x80, 14,
                            Body().u16(1).u8(133).u8(0).u8(0).u8(5).raw({1, 24, 192, 0, 2}).bytes};
   auto w = create("families");
   for (Attribute const& reach : {evpn, flowspec}) {
      w->bgp4mpUpdate({.timestamp = 9,
                       .peerAs = 1,
                       .localAs = 2,
                       .peerAddress = "192.0.2.9",
                       .localAddress = "192.0.2.10",
                       .attributes = {reach}});
   }
   ASSERT_TRUE(w->close(nullptr));
   Report report;
   auto paths = readAll("families", &report);
   EXPECT_TRUE(report.problems.empty());
   ASSERT_EQ(paths.size(), 2u);
   EXPECT_EQ(paths[0].route.text(), "evpn:3:deadbeef");
   EXPECT_EQ(std::tuple(paths[0].afi, paths[0].safi), std::tuple(25, 70));
   EXPECT_EQ(paths[1].route.text(), "flowspec:0118c00002");
   EXPECT_EQ(std::tuple(paths[1].afi, paths[1].safi), std::tuple(1, 133));
}

} // namespace
} // namespace QorBgpTools::mrt
