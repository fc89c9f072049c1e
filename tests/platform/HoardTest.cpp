// The snapshot store: validation of reads against changes, the bounds of
// every location, and how a reader copes with a broken writer or a damaged
// segment (a writer that dies inside a change or before its
// header, a segment cut short or whose header lies about its size, locations
// that point anywhere), each ending in a clear error or a failed validation,
// never in a read outside the mapping.
#include "QorBgpCommunity/platform/Hoard.h"

#include "HoardTestSegment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <vector>

namespace {

using hoard::ExtCommRecord;
using hoard::ListRecord;
using hoard::Location;
using hoard::ReaderPtr;
using hoard::StoreManager;
using hoard::StoreWriter;
using testing::HasSubstr;

using Segment = HoardTestSegment;

constexpr U64 headerSize = 64;
// Where the header keeps the segment size it claims.
constexpr std::streamoff segmentSizeField = 16;

TEST(Hoard, ChangeDuringAReadFailsValidationAndAnUnchangedReadPasses) {
   Segment segment(false);
   StoreWriter writer = segment.create(1024);
   Location const at = writer.publish(hoard::ExtCommRecord{1, 0, 10});
   StoreManager const store = segment.open();

   ReaderPtr<hoard::ExtCommRecord> before(store, at);
   EXPECT_EQ(before->content, 10u);
   EXPECT_TRUE(before.validateVersionAnchor());
   {
      auto change = writer.change();
      EXPECT_FALSE(before.validateVersionAnchor());
      ReaderPtr<hoard::ExtCommRecord> during(store, at);
      writer.rewrite(at, hoard::ExtCommRecord{1, 0, 11});
      EXPECT_FALSE(during.validateVersionAnchor());
   }
   EXPECT_FALSE(before.validateVersionAnchor());
   ReaderPtr<hoard::ExtCommRecord> after(store, at);
   EXPECT_EQ(after->content, 11u);
   EXPECT_TRUE(after.validateVersionAnchor());

   EXPECT_DEATH(writer.rewrite(at, hoard::ExtCommRecord{}), "changeInProgress\\(\\)");
   writer.beginChange();
   EXPECT_DEATH(writer.beginChange(), "!changeInProgress\\(\\)");
   EXPECT_THROW(writer.rewrite(Location(writer.used()), U64{0}), Kiv::RangeError);
   writer.endChange();
}

TEST(Hoard, LocationsOutsideTheSegmentAreRangeErrors) {
   Segment segment(false);
   StoreWriter writer = segment.create(256);
   Location const list = writer.publishList<U32>(0, std::vector<U32>{1, 2});
   StoreManager const store = segment.open();
   struct Row {
      U64 offset, count, size;
      char const* message;
   } const rows[] = {
      {0, 1, 8, "location 0 is null"},
      {8, 1, 8, "location 8 lies in the header of the 256-byte"},
      {68, 1, 8, "location 68 is not aligned to 8 bytes"},
      {248, 1, 16, "location 248 with 1 x 16 bytes reaches beyond the end of the 256-byte"},
      {256, 1, 8, "location 256 with"},
      {UINT64_MAX - 7, 1, 8, "location 18446744073709551608 with"},
      {64, UINT64_MAX / 4, 8, "reaches beyond"}, // count * size wraps
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(row.message);
      EXPECT_EQ(store.find(Location(row.offset), row.count, row.size, 8), nullptr);
      try {
         store.translate(Location(row.offset), row.count, row.size, 8);
         ADD_FAILURE() << "no error";
      } catch (Kiv::RangeError const& e) {
         EXPECT_THAT(e.what(), HasSubstr(row.message));
      }
   }
   EXPECT_NE(store.find(Location(248), 1, 8, 8), nullptr); // the last record that fits
   // A corrupt element count cannot read past the segment.
   ReaderPtr<hoard::ListRecord> reader(store, list);
   EXPECT_THROW(reader.trailing<U32>(UINT32_MAX), Kiv::RangeError);
   EXPECT_EQ(reader.findTrailing<U32>(UINT32_MAX), nullptr);
   EXPECT_EQ(reader.findTrailing<U32>(2), reader.trailing<U32>(2));
}

void expectStoreError(std::function<void()> const& action, std::string const& text) {
   try {
      action();
      ADD_FAILURE() << "no StoreError, expected one with: " << text;
   } catch (hoard::StoreError const& e) {
      EXPECT_THAT(e.what(), HasSubstr(text));
   }
}

TEST(Hoard, ForeignTruncatedMissingAndFullSegmentsAreStoreErrors) {
   Segment segment(true);
   auto const overwrite = [&](std::streamoff at, std::string const& bytes) {
      std::fstream f(segment.name, std::ios::in | std::ios::out | std::ios::binary);
      f.seekp(at);
      f.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
   };
   expectStoreError([&] { segment.open(); }, "cannot be opened");
   segment.create(4096);
   expectStoreError([&] { segment.create(4096); }, "cannot be created");
   std::filesystem::resize_file(segment.name, 1024);
   expectStoreError([&] { segment.open(); }, "is 1024 bytes, but its header claims 4096");
   std::filesystem::resize_file(segment.name, 10);
   expectStoreError([&] { segment.open(); }, "is 10 bytes, too short for its 64-byte header");
   std::filesystem::resize_file(segment.name, 4096);
   overwrite(8, std::string("\x02\0\0\0", 4));
   expectStoreError([&] { segment.open(); }, "has format version 2, expected 1");
   overwrite(0, "JUNKJUNK");
   expectStoreError([&] { segment.open(); }, "bad magic number 0x4b4e554a4b4e554a");

   Segment shm(false);
   expectStoreError([&] { shm.open(); }, "cannot be opened");
   EXPECT_THROW(shm.create(63), Kiv::RangeError);
   StoreWriter small = shm.create(64 + 16);
   small.publish(U64{1});
   expectStoreError([&] { small.publish(hoard::ExtCommRecord{}); },
                    "is full: 16 bytes asked, 8 of 80 free");
}

// Overwrites eight bytes of a segment file at `at`.
void overwrite(std::string const& path, std::streamoff at, U64 value) {
   std::fstream f(path, std::ios::in | std::ios::out | std::ios::binary);
   f.seekp(at);
   f.write(reinterpret_cast<char const*>(&value), sizeof value);
}

// Runs `life` in a child process that then exits without closing anything,
// as a writer that crashes would.
void inDyingChild(std::function<void()> const& life) {
   pid_t const child = fork();
   ASSERT_NE(child, -1);
   if (child == 0) {
      try {
         life();
      } catch (...) {
         _exit(2);
      }
      _exit(0);
   }
   int status = 0;
   ASSERT_EQ(waitpid(child, &status, 0), child);
   ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

TEST(Hoard, AWriterThatDiesInsideAChangeLeavesEveryReadInvalid) {
   Segment segment(false);
   Location const value(headerSize);
   Location const list(headerSize + sizeof(ExtCommRecord));
   inDyingChild([&] {
      StoreWriter writer = segment.create(512);
      writer.publish(ExtCommRecord{1, 0, 0x0002fde800000064});
      writer.rootIs(writer.publishList<U32>(0, std::vector<U32>{1, 2, 3}));
      writer.beginChange();
      // Half of the value's content, and a list count the segment cannot hold.
      writer.rewrite(Location(value.offset() + 8), U32{0xdeadbeef});
      writer.rewrite(list, ListRecord{0, 1000});
   });
   // The segment still opens; what it holds is never consistent.
   StoreManager const store = segment.open();
   EXPECT_EQ(store.root(), list);
   EXPECT_EQ(store.versionAnchor() % 2, 1u);
   ReaderPtr<ExtCommRecord> torn(store, value);
   EXPECT_NE(torn->content, 0x0002fde800000064u);
   EXPECT_FALSE(torn.validateVersionAnchor());
   ReaderPtr<ListRecord> reader(store, store.root());
   EXPECT_EQ(reader->count, 1000u);
   EXPECT_FALSE(reader.validateVersionAnchor());
   EXPECT_THROW(reader.trailing<U32>(reader->count), Kiv::RangeError);
   EXPECT_FALSE(ReaderPtr<ListRecord>(store, list).validateVersionAnchor());
}

TEST(Hoard, AWriterThatDiesBeforeSettingTheRootLeavesOnlyANullRoot) {
   Segment segment(true);
   inDyingChild([&] {
      StoreWriter writer = segment.create(512);
      writer.publishList<U32>(0, std::vector<U32>{1, 2, 3});
   });
   StoreManager const store = segment.open();
   EXPECT_TRUE(store.root().isNull());
   EXPECT_EQ(store.find(store.root(), 1, sizeof(ListRecord), 8), nullptr);
   EXPECT_THROW(ReaderPtr<ListRecord>(store, store.root()), Kiv::RangeError);
}

TEST(Hoard, ASegmentWhoseWriterDiedBeforeItsHeaderIsRefused) {
   Segment segment(false);
   // Created and sized, but the header never written: all zero.
   inDyingChild([&] {
      int const fd = shm_open(("/" + segment.name).c_str(), O_RDWR | O_CREAT | O_EXCL, 0600);
      if (fd == -1 || ftruncate(fd, 4096) != 0) {
         throw std::runtime_error("shm_open");
      }
   });
   expectStoreError([&] { segment.open(); }, "bad magic number 0");
}

// Cut before it is opened, it does not open; cut after, the reader's check
// before it reads says so (reading on would fault, SIGBUS).
TEST(Hoard, ASegmentCutShortIsRefusedWhateverItsLength) {
   for (bool file : {false, true}) {
      SCOPED_TRACE(file ? "mapped file" : "shared memory");
      Segment segment(file);
      StoreWriter writer = segment.create(4096);
      writer.rootIs(writer.publishList<U32>(0, std::vector<U32>{1, 2, 3}));
      StoreManager const store = segment.open();
      store.checkIntact();
      for (U64 length : {U64{4095}, U64{1024}, headerSize, headerSize - 1, U64{1}, U64{0}}) {
         SCOPED_TRACE(length);
         segment.truncate(length);
         expectStoreError([&] { segment.open(); }, "is " + std::to_string(length) + " bytes");
         expectStoreError([&] { store.checkIntact(); }, "shrank to " + std::to_string(length) +
                                                           " bytes below its 4096-byte size");
      }
   }
}

TEST(Hoard, AHeaderSizeOutsideTheMappingIsRefusedAndASmallerOneBoundsEveryRead) {
   Segment segment(true);
   Location at;
   {
      StoreWriter writer = segment.create(4096);
      writer.publish(U64{1});
      at = writer.publish(ExtCommRecord{1, 0, 7}); // at offset 72
      writer.rootIs(at);
   }
   for (U64 claimed : {U64{0}, headerSize - 1, U64{4097}, UINT64_MAX}) {
      overwrite(segment.name, segmentSizeField, claimed);
      expectStoreError([&] { segment.open(); }, "header claims " + std::to_string(claimed));
   }
   // A header that claims less than there is confines the reader to what it claims.
   overwrite(segment.name, segmentSizeField, at.offset() + 8);
   StoreManager const store = segment.open();
   EXPECT_EQ(store.size(), at.offset() + 8);
   EXPECT_NE(store.find(Location(headerSize), 1, 8, 8), nullptr);
   EXPECT_EQ(store.find(at, 1, sizeof(ExtCommRecord), 8), nullptr);
   EXPECT_THROW(ReaderPtr<ExtCommRecord>(store, store.root()), Kiv::RangeError);
}

// A writer rewriting one record in a loop is killed at some moment: no read
// that validates ever saw a torn record, before or after its death.
TEST(Hoard, AWriterKilledWhileRewritingNeverLetsATornReadValidate) {
   Segment segment(false);
   StoreWriter writer = segment.create(256);
   auto const record = [](U32 i) { return ExtCommRecord{i, i, U64{i} << 32 | i}; };
   Location const at = writer.publish(record(0));
   pid_t const child = fork();
   ASSERT_NE(child, -1);
   if (child == 0) {
      for (U32 i = 1; i < 50'000'000; ++i) { // bounded, should the parent be gone
         auto change = writer.change();
         writer.rewrite(at, record(i));
      }
      _exit(0);
   }
   StoreManager const store = segment.open();
   auto const readIsConsistent = [&](int& validated) {
      ReaderPtr<ExtCommRecord> reader(store, at);
      ExtCommRecord const copy = *reader;
      if (!reader.validateVersionAnchor()) {
         return true;
      }
      ++validated;
      return copy == record(copy.classification);
   };
   // Once the writer is under way, read until some reads have validated.
   auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
   while (store.versionAnchor() < 1000 && std::chrono::steady_clock::now() < deadline) {
      sched_yield();
   }
   int validated = 0;
   int read = 0;
   bool consistent = true;
   for (; consistent && read < 2'000'000 && validated < 100; ++read) {
      consistent = readIsConsistent(validated);
   }
   ASSERT_EQ(kill(child, SIGKILL), 0);
   int status = 0;
   ASSERT_EQ(waitpid(child, &status, 0), child);
   EXPECT_TRUE(consistent) << "torn record validated at read " << read;
   EXPECT_TRUE(readIsConsistent(validated));
   U64 const anchor = store.versionAnchor();
   EXPECT_EQ(ReaderPtr<ExtCommRecord>(store, at).validateVersionAnchor(), anchor % 2 == 0);
}

} // namespace
