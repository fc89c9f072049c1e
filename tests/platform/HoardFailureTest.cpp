// How a reader of the snapshot store copes with a broken writer or a damaged
// segment: a writer that dies inside a change or before it finished its
// header, a segment cut short or whose header lies about its size, and
// locations that point anywhere. Each must end in a clear error or a failed
// validation, never in a read outside the mapping.
#include "platform/Hoard.h"

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
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
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

constexpr U64 headerSize = 64;
// Where the header keeps the segment size it claims.
constexpr std::streamoff segmentSizeField = 16;
// Wide enough for any offset + count * size.
__extension__ typedef unsigned __int128 Wide;

using Segment = HoardTestSegment;

// Overwrites eight bytes of a segment file at `at`.
void overwrite(std::string const& path, std::streamoff at, U64 value) {
   std::fstream f(path, std::ios::in | std::ios::out | std::ios::binary);
   f.seekp(at);
   f.write(reinterpret_cast<char const*>(&value), sizeof value);
}

void expectStoreError(Segment const& segment, std::string const& text) {
   try {
      segment.open();
      ADD_FAILURE() << "opened; expected a StoreError with: " << text;
   } catch (hoard::StoreError const& e) {
      EXPECT_THAT(e.what(), HasSubstr(text));
   }
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

TEST(HoardFailure, AWriterThatDiesInsideAChangeLeavesEveryReadInvalid) {
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

TEST(HoardFailure, AWriterThatDiesBeforeSettingTheRootLeavesOnlyANullRoot) {
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

TEST(HoardFailure, ASegmentWhoseWriterDiedBeforeItsHeaderIsRefused) {
   Segment segment(false);
   // Created and sized, but the header never written: all zero.
   inDyingChild([&] {
      int const fd = shm_open(("/" + segment.name).c_str(), O_RDWR | O_CREAT | O_EXCL, 0600);
      if (fd == -1 || ftruncate(fd, 4096) != 0) {
         throw std::runtime_error("shm_open");
      }
   });
   expectStoreError(segment, "bad magic number 0");
}

TEST(HoardFailure, ASegmentCutShortIsRefusedWhateverItsLength) {
   for (bool file : {false, true}) {
      SCOPED_TRACE(file ? "mapped file" : "shared memory");
      Segment segment(file);
      StoreWriter writer = segment.create(4096);
      writer.rootIs(writer.publishList<U32>(0, std::vector<U32>{1, 2, 3}));
      for (U64 length : {U64{4095}, U64{1024}, headerSize, headerSize - 1, U64{1}, U64{0}}) {
         SCOPED_TRACE(length);
         segment.truncate(length);
         expectStoreError(segment, "is " + std::to_string(length) + " bytes");
      }
   }
}

TEST(HoardFailure, AHeaderSizeOutsideTheMappingIsRefusedAndASmallerOneBoundsEveryRead) {
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
      expectStoreError(segment, "header claims " + std::to_string(claimed));
   }
   // A header that claims less than there is confines the reader to what it claims.
   overwrite(segment.name, segmentSizeField, at.offset() + 8);
   StoreManager const store = segment.open();
   EXPECT_EQ(store.size(), at.offset() + 8);
   EXPECT_NE(store.find(Location(headerSize), 1, 8, 8), nullptr);
   EXPECT_EQ(store.find(at, 1, sizeof(ExtCommRecord), 8), nullptr);
   EXPECT_THROW(ReaderPtr<ExtCommRecord>(store, store.root()), Kiv::RangeError);
}

// find() against a reference in 128-bit arithmetic: whatever the location,
// count, size and alignment, what it returns lies inside the records area.
TEST(HoardFailure, FindNeverReturnsAnAddressOutsideTheSegment) {
   Segment segment(false);
   StoreWriter writer = segment.create(1024);
   StoreManager const store = segment.open();
   auto const* base = static_cast<std::byte const*>(store.find(Location(headerSize), 0, 1, 1));
   ASSERT_NE(base, nullptr);
   base -= headerSize;
   std::mt19937_64 random(20240611);
   // Values near the boundaries, and products that wrap to nothing or to little.
   // clang-format off
   U64 const interesting[] = {0, 1, 4, 8, 12, 63, 64, 1016, 1024, 1025, 1ull << 32,
                              (1ull << 32) + 1, 1ull << 61, UINT64_MAX / 4 + 1, UINT64_MAX};
   // clang-format on
   auto const any = [&] {
      return random() % 2 ? interesting[random() % std::size(interesting)] : random() % 1100;
   };
   for (int i = 0; i < 20000; ++i) {
      U64 const offset = any(), count = any(), size = any();
      U64 const alignment = U64{1} << (random() % 4);
      bool const inside = offset >= headerSize && offset % alignment == 0 &&
                          Wide{offset} + Wide{count} * size <= store.size();
      void const* found = store.find(Location(offset), count, size, alignment);
      ASSERT_EQ(found != nullptr, inside) << "offset " << offset << " count " << count << " size "
                                          << size << " alignment " << alignment;
      ASSERT_TRUE(found == nullptr || found == base + offset);
   }
}

// A writer rewriting one record in a loop is killed at some moment: no read
// that validates ever saw a torn record, before or after its death.
TEST(HoardFailure, AWriterKilledWhileRewritingNeverLetsATornReadValidate) {
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
