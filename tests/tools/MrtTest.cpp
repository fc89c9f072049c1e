#include "tools/mrt/MrtReader.h"
#include "tools/mrt/MrtWire.h"
#include "tools/mrt/MrtWriter.h"

#include "platform/Errors.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iomanip>
#include <iterator>
#include <ostream>
#include <sstream>

namespace QorBgpTools::mrt {

void PrintTo(Path const& p, std::ostream* os) {
   *os << "{t=" << p.timestamp << " peer=" << p.peerAddress << " AS" << p.peerAs << " " << p.prefix
       << " id=" << (p.pathId ? std::to_string(*p.pathId) : "-") << " attrs=";
   for (auto const& a : p.attributes) {
      *os << std::hex << int{a.flags} << "/" << std::dec << int{a.typeCode} << ":" << a.value.size()
          << " ";
   }
   *os << "}";
}

namespace {

namespace fs = std::filesystem;

std::string hex(std::vector<U8> const& bytes) {
   std::ostringstream out;
   for (U8 b : bytes) {
      out << std::hex << std::setw(2) << std::setfill('0') << int{b} << ' ';
   }
   return out.str();
}

// Builds a record body field by field.
struct Body {
   std::vector<U8> bytes;
   Body& u8(U8 v) { return detail::putU8(bytes, v), *this; }
   Body& u16(U16 v) { return detail::putU16(bytes, v), *this; }
   Body& u32(U32 v) { return detail::putU32(bytes, v), *this; }
   Body& raw(std::vector<U8> const& v) { return detail::putBytes(bytes, v), *this; }
   Body& prefix(std::string_view p) { return appendPrefix(bytes, p), *this; }
   Body& attrs(std::vector<Attribute> const& a) {
      std::vector<U8> block;
      appendAttributes(block, a);
      return u16(static_cast<U16>(block.size())).raw(block);
   }
};

const Attribute kOrigin{0x40, 1, {0}};
const Attribute kCommunities{0xc0, 8, {0xfd, 0xe8, 0x00, 0x64}};
// A short value given with the extended-length flag keeps its 2-octet length.
const Attribute kExtCommunities{0xd0, 16, {0x00, 0x02, 0xfd, 0xe8, 0, 0, 0, 1}};
// 25 large communities: 300 bytes, written with the extended-length flag.
const Attribute kLongLarge{0xc0, 32, std::vector<U8>(300, 0x2a)};
const Attribute kLongLargeRead{0xd0, 32, std::vector<U8>(300, 0x2a)};
const std::vector<Peer> kPeers{{1, "192.0.2.1", 64500}, {2, "2001:db8::2", 4200000000}};

Path path(U32 time, int peer, std::string prefix, std::optional<U32> id,
          std::vector<Attribute> attributes) {
   return {time, kPeers[peer].address, kPeers[peer].as, std::move(prefix),
           id,   std::move(attributes)};
}

class MrtTest : public ::testing::Test {
 protected:
   void SetUp() override {
      dir_ = fs::temp_directory_path() /
             ("mrt-test-" + std::to_string(::getpid()) + "-" +
              ::testing::UnitTest::GetInstance()->current_test_info()->name());
      fs::create_directories(dir_);
   }
   void TearDown() override { fs::remove_all(dir_); }

   // A writer to a file named without any hint of its compression.
   std::unique_ptr<MrtWriter> create(std::string const& name, Compression c = Compression::none) {
      std::string error;
      auto writer = MrtWriter::create(file(name), c, &error);
      EXPECT_TRUE(writer) << error;
      return writer;
   }
   std::string file(std::string const& name) const { return (dir_ / name).string(); }

   // Every path of the file, with the report.
   std::vector<Path> readAll(std::string const& name, Report* report = nullptr) {
      std::string error;
      auto reader = MrtReader::open(file(name), &error);
      EXPECT_TRUE(reader) << error;
      std::vector<Path> paths;
      for (Path p; reader && reader->next(p);) {
         paths.push_back(p);
      }
      if (reader && report) {
         *report = reader->report();
      }
      return paths;
   }

   std::vector<U8> contents(std::string const& name) const {
      std::ifstream in(file(name), std::ios::binary);
      return {std::istreambuf_iterator<char>(in), {}};
   }
   void store(std::string const& name, std::vector<U8> const& bytes) const {
      // A new file rather than a truncated one, which ext4 flushes on close.
      fs::remove(file(name));
      std::ofstream(file(name), std::ios::binary)
         .write(reinterpret_cast<char const*>(bytes.data()),
                static_cast<std::streamsize>(bytes.size()));
   }

   fs::path dir_;
};

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
   s.paths = {
      path(900, 0, "198.51.100.0/24", {}, {kOrigin, kCommunities}),
      path(901, 1, "198.51.100.0/24", {}, {kOrigin, kLongLargeRead}),
      path(902, 1, "2001:db8:100::/40", 7, {kExtCommunities}),
      path(903, 0, "2001:db8:100::/40", 8, {kCommunities}),
      path(904, 0, "203.0.113.0/24", {}, {kCommunities}),
      path(906, 1, "65000:1:10.1.0.0/24", 77, {kExtCommunities}),
      {2000, "192.0.2.9", 64501, "192.0.2.0/25", {}, {kOrigin, kCommunities}},
      {2000, "192.0.2.9", 64501, "192.0.2.128/25", {}, {kOrigin, kCommunities}},
      {2001, "2001:db8::9", 4200000001, "10.9.0.0/16", 42, {kOrigin, kLongLargeRead, mpReach}},
      {2001, "2001:db8::9", 4200000001, "2001:db8:1::/48", 42, {kOrigin, kLongLargeRead, mpReach}},
      path(905, 0, "192.0.2.0/24", {}, {kCommunities}),
   };
   return s;
}
// clang-format on

TEST_F(MrtTest, EveryRecordKindReadsBackInEachCompression) {
   for (auto c : {Compression::none, Compression::gzip, Compression::bzip2}) {
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
      Path untouched{1, "x", 2, "y", 3, {}};
      EXPECT_FALSE(reader->next(untouched)); // and stays at the end
      EXPECT_EQ(untouched, (Path{1, "x", 2, "y", 3, {}}));
      EXPECT_EQ(paths, sample.paths);
      EXPECT_EQ(paths[8].attribute(32), &paths[8].attributes[1]);
      EXPECT_EQ(paths[8].attribute(99), nullptr);

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
TEST_F(MrtTest, DamagedRecordIsSkippedAndReadingGoesOn) {
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

TEST_F(MrtTest, AddPathNlriUnderPlainSubtypeIsRecognised) {
   auto w = create("addpath");
   // clang-format off
   w->record(7, 16, 4, // MESSAGE_AS4 whose NLRI carries path id 2
             Body().u32(1).u32(2).u16(0).u16(1).raw({192, 0, 2, 1}).raw({192, 0, 2, 2})
                .raw(std::vector<U8>(16, 0xff)).u16(31).u8(2).u16(0).u16(0)
                .u32(2).u8(24).raw({172, 17, 0}).bytes);
   // clang-format on
   ASSERT_TRUE(w->close(nullptr));
   auto paths = readAll("addpath");
   EXPECT_EQ(paths, (std::vector<Path>{{7, "192.0.2.1", 1, "172.17.0.0/24", 2, {}}}));
}

TEST_F(MrtTest, CutOffHeaderEndsTheFile) {
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

TEST_F(MrtTest, ConcatenatedCompressedStreamsReadAsOne) {
   for (auto c : {Compression::gzip, Compression::bzip2}) {
      SCOPED_TRACE(static_cast<int>(c));
      auto first = create("a", c);
      first->peerIndexTable(0, 0, "", kPeers);
      first->ribEntry(0, 1, "192.0.2.0/24", std::vector<RibEntry>{{0, 1, {}, {}}});
      ASSERT_TRUE(first->close(nullptr));
      auto second = create("b", c);
      second->ribEntry(0, 1, "192.0.2.0/25", std::vector<RibEntry>{{1, 1, {}, {}}});
      ASSERT_TRUE(second->close(nullptr));
      auto both = contents("a");
      auto b = contents("b");
      both.insert(both.end(), b.begin(), b.end());
      store("ab", both);
      Report report;
      auto paths = readAll("ab", &report);
      ASSERT_EQ(paths.size(), 2u);
      EXPECT_EQ(paths[1].prefix, "192.0.2.0/25");
      EXPECT_TRUE(report.problems.empty());
   }
}

TEST_F(MrtTest, CutOffCompressedStreamKeepsWhatCameBefore) {
   struct Row {
      Compression compression;
      std::size_t records;
      char const* problem;
   } rows[] = {{Compression::gzip, 2000, "gzip: stream cut short"},
               // bzip2 emits nothing of a block until all of it has arrived;
               // 60000 records fill more than one 900 kB block
               {Compression::bzip2, 60000, "bzip2: stream cut short"}};
   for (auto const& row : rows) {
      SCOPED_TRACE(row.problem);
      auto w = create("full", row.compression);
      w->peerIndexTable(0, 0, "", kPeers);
      for (U32 i = 0; i < row.records; ++i) {
         w->ribEntry(0, i, "10.0.0.0/8", std::vector<RibEntry>{{0, i, {}, {kCommunities}}});
      }
      ASSERT_TRUE(w->close(nullptr));
      auto bytes = contents("full");
      bytes.resize(bytes.size() * 2 / 3);
      store("cut", bytes);
      Report report;
      auto paths = readAll("cut", &report);
      EXPECT_GT(paths.size(), 0u);
      EXPECT_LT(paths.size(), row.records);
      for (std::size_t i = 0; i < paths.size(); ++i) {
         ASSERT_EQ(paths[i].timestamp, i);
      }
      ASSERT_FALSE(report.problems.empty());
      EXPECT_EQ(report.problems.back().text, row.problem);
   }
}

TEST_F(MrtTest, OpenFailsWithTheReason) {
   std::string error;
   EXPECT_EQ(MrtReader::open(file("missing"), &error), nullptr);
   EXPECT_EQ(error, "cannot open \"" + file("missing") + "\": No such file or directory");
   EXPECT_EQ(MrtWriter::create(file("no/such/dir"), Compression::gzip, &error), nullptr);
   EXPECT_NE(error.find("cannot create"), std::string::npos);
}

// Exact bytes, so that reader and writer cannot agree on a wrong layout.
TEST_F(MrtTest, WriterProducesTheWireLayout) {
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

TEST_F(MrtTest, WriterRejectsCallerMistakes) {
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
