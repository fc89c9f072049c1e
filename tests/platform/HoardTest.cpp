#include "platform/Hoard.h"

#include "HoardTestSegment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <vector>

namespace {

using hoard::Location;
using hoard::ReaderPtr;
using hoard::StoreManager;
using hoard::StoreWriter;
using testing::HasSubstr;

using Segment = HoardTestSegment;

template <class E>
std::vector<E> restoreList(StoreManager const& store, Location at, U32 expectedFlags) {
   ReaderPtr<hoard::ListRecord> list(store, at);
   EXPECT_EQ(list->flags, expectedFlags);
   U32 const count = list->count;
   E const* elements = list.template trailing<E>(count);
   std::vector<E> out(elements, elements + count);
   EXPECT_TRUE(list.validateVersionAnchor());
   return out;
}

TEST(Hoard, EveryRecordKindRestoresAsPublishedFromMemoryAndFile) {
   for (bool file : {false, true}) {
      SCOPED_TRACE(file ? "mapped file" : "shared memory");
      Segment segment(file);
      StoreWriter writer = segment.create(4096);
      std::vector<U32> const comms{0x00010002, 0xffffff01};
      std::vector<hoard::LargeCommRecord> const large{{1, 2, 3}, {0xffffffff, 0, 7}};
      std::vector<hoard::ExtCommIp6Record> const ip6{{0x00, 0x02, {0x20, 0x01, 15}, 100},
                                                     {0x40, 0x0b, {}, 0xffff}};
      Location const rt = writer.publish(hoard::ExtCommRecord{1, 0, 0x0002fde800000064});
      Location const ro = writer.publish(hoard::ExtCommRecord{2, 0, 0x0003fde800000001});
      std::vector<Location> const ext{ro, rt};
      Location const commList = writer.publishList<U32>(1, comms);
      Location const largeList = writer.publishList<hoard::LargeCommRecord>(0, large);
      Location const extList = writer.publishList<Location>(1, ext);
      Location const ip6List = writer.publishList<hoard::ExtCommIp6Record>(1, ip6);
      Location const emptyList = writer.publishList<U32>(0, {});

      StoreManager const store = segment.open();
      EXPECT_EQ(store.size(), 4096u);
      EXPECT_EQ(restoreList<U32>(store, commList, 1), comms);
      EXPECT_EQ(restoreList<hoard::LargeCommRecord>(store, largeList, 0), large);
      EXPECT_EQ(restoreList<hoard::ExtCommIp6Record>(store, ip6List, 1), ip6);
      EXPECT_TRUE(restoreList<U32>(store, emptyList, 0).empty());
      std::vector<Location> const stored = restoreList<Location>(store, extList, 1);
      ASSERT_EQ(stored, ext);
      // An element of the extended list is read as a stored location.
      ReaderPtr<hoard::ExtCommRecord> value(store, Location::loadFrom(&stored[1]));
      EXPECT_EQ(value->classification, 1u);
      EXPECT_EQ(value->content, 0x0002fde800000064u);
      EXPECT_TRUE(value.validateVersionAnchor());
   }
}

TEST(Hoard, ParentRestoresWhatAChildProcessPublished) {
   Segment segment(false);
   pid_t const child = fork();
   ASSERT_NE(child, -1);
   if (child == 0) {
      int status = 1;
      try {
         StoreWriter writer = segment.create(1024);
         std::vector<U32> const comms{7, 8, 9};
         writer.rootIs(writer.publishList<U32>(1, comms));
         status = 0;
      } catch (...) {
      }
      _exit(status); // the segment outlives its writer; the parent's guard removes it
   }
   int status = 0;
   ASSERT_EQ(waitpid(child, &status, 0), child);
   ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
   StoreManager const store = segment.open();
   EXPECT_EQ(restoreList<U32>(store, store.root(), 1), (std::vector<U32>{7, 8, 9}));
}

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
}

void expectStoreError(std::function<void()> const& action, char const* text) {
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

} // namespace
