#include "tools/mrt/MrtFile.h"

#include "MrtFileTestFixture.h"

namespace QorBgpTools::mrt {
namespace {

using namespace test;
using MrtFileTest = MrtTest;

TEST_F(MrtFileTest, ConcatenatedCompressedStreamsReadAsOne) {
   for (auto c : {Compression::gzip, Compression::bzip2, Compression::xz, Compression::zstd}) {
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
      EXPECT_EQ(paths[1].route.text(), "192.0.2.0/25");
      EXPECT_TRUE(report.problems.empty());
   }
}

TEST_F(MrtFileTest, CutOffCompressedStreamKeepsWhatCameBefore) {
   struct Row {
      Compression compression;
      std::size_t records;
      char const* problem;
   } rows[] = {{Compression::gzip, 2000, "gzip: stream cut short"},
               // bzip2 emits nothing of a block until all of it has arrived;
               // 60000 records fill more than one 900 kB block
               {Compression::bzip2, 60000, "bzip2: stream cut short"},
               {Compression::xz, 2000, "xz: stream cut short"},
               // zstd emits a block (up to 128 kB of data) once all of it has arrived
               {Compression::zstd, 60000, "zstd: stream cut short"}};
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

TEST_F(MrtFileTest, OpenFailsWithTheReason) {
   std::string error;
   EXPECT_EQ(MrtReader::open(file("missing"), &error), nullptr);
   EXPECT_EQ(error, "cannot open \"" + file("missing") + "\": No such file or directory");
   store("zip", {'P', 'K', 3, 4, 20, 0, 0, 0, 8, 0});
   EXPECT_EQ(MrtReader::open(file("zip"), &error), nullptr);
   EXPECT_EQ(error, "\"" + file("zip") +
                       "\" is compressed as zip, which is not supported (gzip, bzip2, xz and "
                       "zstd are)");
   EXPECT_EQ(MrtWriter::create(file("no/such/dir"), Compression::gzip, &error), nullptr);
   EXPECT_NE(error.find("cannot create"), std::string::npos);
}

TEST_F(MrtFileTest, DataAfterTheLastGzipMemberIsReported) {
   auto w = create("gz", Compression::gzip);
   w->peerIndexTable(0, 0, "", kPeers);
   w->ribEntry(0, 1, "192.0.2.0/24", std::vector<RibEntry>{{0, 1, {}, {}}});
   ASSERT_TRUE(w->close(nullptr));
   auto bytes = contents("gz");
   bytes.insert(bytes.end(), 1000, 0x00);
   store("gz", bytes);
   Report report;
   EXPECT_EQ(readAll("gz", &report).size(), 1u);
   ASSERT_EQ(report.problems.size(), 1u);
   EXPECT_EQ(report.problems[0].text, "gzip: data after the last member that is not gzip");
}

TEST_F(MrtFileTest, OtherDataIsNotReadAsRecords) {
   struct Row {
      std::string text, problem;
   } rows[] = {{"prefix,peer,communities\n192.0.2.0/24,192.0.2.1,65000:1\n",
                "not an MRT file (the first record's type would be 27000 subtype 11376)"},
               {"hello\n", "not an MRT file (6 bytes, less than one record header)"}};
   for (auto const& row : rows) {
      store("text", std::vector<U8>(row.text.begin(), row.text.end()));
      Report report;
      EXPECT_TRUE(readAll("text", &report).empty());
      ASSERT_EQ(report.problems.size(), 1u);
      EXPECT_EQ(report.problems[0].text, row.problem);
   }
}

} // namespace
} // namespace QorBgpTools::mrt
