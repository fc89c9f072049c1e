// What the MRT tests share: a per-test folder for their files, a writer and
// a reader over it, a record body builder, and sample attributes and peers.
#pragma once

#include "tools/mrt/MrtReader.h"
#include "tools/mrt/MrtWire.h"
#include "tools/mrt/MrtWriter.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <ostream>
#include <sstream>

namespace QorBgpTools::mrt {

inline void PrintTo(Path const& p, std::ostream* os) {
   *os << "{t=" << p.timestamp << " peer=" << p.peerText() << " AS" << p.peerAs << " "
       << p.route.text() << " id=" << (p.pathId ? std::to_string(*p.pathId) : "-") << " attrs=";
   for (auto const& a : p.attributes) {
      *os << std::hex << int{a.flags} << "/" << std::dec << int{a.typeCode} << ":" << a.value.size()
          << " ";
   }
   *os << "}";
}

namespace test {

namespace fs = std::filesystem;

inline std::string hex(std::vector<U8> const& bytes) {
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

inline const Attribute kOrigin{0x40, 1, {0}};
inline const Attribute kCommunities{0xc0, 8, {0xfd, 0xe8, 0x00, 0x64}};
// A short value given with the extended-length flag keeps its 2-octet length.
inline const Attribute kExtCommunities{0xd0, 16, {0x00, 0x02, 0xfd, 0xe8, 0, 0, 0, 1}};
// 25 large communities: 300 bytes, written with the extended-length flag.
inline const Attribute kLongLarge{0xc0, 32, std::vector<U8>(300, 0x2a)};
inline const Attribute kLongLargeRead{0xd0, 32, std::vector<U8>(300, 0x2a)};
inline const std::vector<Peer> kPeers{{1, "192.0.2.1", 64500}, {2, "2001:db8::2", 4200000000}};

inline detail::Address address(std::string_view text) { return detail::parseAddress(text).value(); }
// An IP route, with a route distinguisher in front when given.
inline Route route(std::string_view prefix, std::optional<std::array<U8, 8>> distinguisher = {}) {
   Route r;
   r.prefix = detail::parsePrefix(prefix).value();
   r.distinguisher = distinguisher;
   return r;
}

inline Path path(U32 time, int peer, Route route, std::optional<U32> id, Attributes attributes) {
   return {time, address(kPeers[peer].address), kPeers[peer].as, std::move(route),
           id,   std::move(attributes)};
}
inline Path path(U32 time, int peer, std::string_view prefix, std::optional<U32> id,
                 Attributes attributes) {
   return path(time, peer, route(prefix), id, std::move(attributes));
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

} // namespace test
} // namespace QorBgpTools::mrt
