#include "QorBgpCommunity/QorBgp/QorBgpCommunityListHoard.h"

#include "QorBgpCommunity/QorBgp/ExtCommIp6List.h"
#include "tests/platform/HoardTestSegment.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <vector>

namespace Routing::Bgp {
namespace {

constexpr U32 sorted = CommList::storedSortedFlag;
constexpr U32 noExportFlag = CommList::storedNoExportFlag;

TEST(CommListDehoard, StandardAndLargeListsComeBackWithTheirFlagsUninterned) {
   HoardTestSegment segment(true);
   hoard::StoreWriter writer = segment.create(1 << 16);
   auto commTable = commListDedupTableFactory();
   CommList::Ptr s = commListFactory();
   s->commIs(0xFFFFFF01);
   s->commIs(0x00010002);
   CommList::PtrConst standard = s->dedup(commTable.get());
   CommList::PtrConst empty = commListFactory()->dedup(commTable.get());
   auto largeTable = largeCommListDedupTableFactory();
   LargeCommList::Ptr l = largeCommListFactory();
   l->commIs({65536, 1, 2});
   LargeCommList::PtrConst large = l->dedup(largeTable.get());
   hoard::Location const at[] = {standard->hoard(writer), large->hoard(writer),
                                 empty->hoard(writer)};
   hoard::StoreManager store = segment.open();

   CommList::PtrConst restored = CommList::dehoard(&at[0], &store);
   ASSERT_TRUE(restored);
   EXPECT_EQ(restored->toStrep(), "1:2 no-export");
   EXPECT_TRUE(restored->noExport());
   EXPECT_EQ(restored->hash(), standard->hash());
   EXPECT_FALSE(restored->isDeduped());
   LargeCommList::PtrConst restoredLarge = LargeCommList::dehoard(&at[1], &store);
   ASSERT_TRUE(restoredLarge);
   EXPECT_TRUE(restoredLarge->compare(large.get()));
   CommList::PtrConst restoredEmpty = CommList::dehoard(&at[2], &store);
   ASSERT_TRUE(restoredEmpty);
   EXPECT_TRUE(restoredEmpty->empty());
   EXPECT_TRUE(restoredEmpty->commVectorSorted());

   // A read while the writer is changing the store does not validate.
   writer.beginChange();
   EXPECT_FALSE(CommList::dehoard(&at[0], &store));
   writer.endChange();
   EXPECT_TRUE(CommList::dehoard(&at[0], &store));
}

enum class Kind { standard, large, extended, ip6 };

// Whether restoring the list of `kind` at `at` gives a list.
bool restores(Kind kind, hoard::Location at, hoard::StoreManager& store) {
   switch (kind) {
   case Kind::standard:
      return CommList::dehoard(&at, &store) != nullptr;
   case Kind::large:
      return LargeCommList::dehoard(&at, &store) != nullptr;
   case Kind::extended:
      return ExtCommList::dehoard(&at, &store) != nullptr;
   case Kind::ip6:
      return ExtCommIp6List::dehoard(&at, &store) != nullptr;
   }
   return false;
}

// Records as a damaged or hostile writer could leave them: every one restores
// as null, never as a list whose readers abort or answer wrongly.
TEST(CommListDehoard, ARecordThatDoesNotHoldRestoresAsNull) {
   HoardTestSegment segment(true);
   hoard::StoreWriter writer = segment.create(1 << 16);
   U32 const c1 = 0x00010001, c5 = 0x00050005;
   hoard::LargeCommRecord const l1{1, 1, 1}, l5{5, 5, 5};
   hoard::Location const rt = writer.publish(hoard::ExtCommRecord{1, 0, 0x0002fde800000064});
   hoard::Location const color = writer.publish(hoard::ExtCommRecord{8, 0, 0x030b000000000064});
   hoard::ExtCommIp6Record const a{0x00, 0x02, {0x20, 0x01}, 7}, b{0x40, 0x02, {0x20, 0x01}, 7};
   auto const list = [&](U32 flags, auto... elements) {
      using E = std::common_type_t<decltype(elements)...>;
      return writer.publishList<E>(flags, std::vector<E>{elements...});
   };
   struct Row {
      char const* what;
      Kind kind;
      hoard::Location at;
   } const rows[] = {
      {"not sorted", Kind::standard, list(0, c1, c5)},
      {"sorted and no-export claimed over 5:5 1:1", Kind::standard,
       list(sorted | noExportFlag, c5, c1)},
      {"no-export claimed", Kind::standard, list(sorted | noExportFlag, c1, c5)},
      {"no-export held, not claimed", Kind::standard, list(sorted, c1, U32{communityNoExport})},
      {"repeated", Kind::standard, list(sorted, c1, c1)},
      {"unknown flag", Kind::standard, list(sorted | 0x100, c1)},
      {"count beyond the segment", Kind::standard,
       writer.publish(hoard::ListRecord{sorted, 1u << 20})},
      {"not sorted", Kind::large, list(0, l1, l5)},
      {"out of order", Kind::large, list(sorted, l5, l1)},
      {"repeated", Kind::large, list(sorted, l1, l1)},
      {"count beyond the segment", Kind::large,
       writer.publish(hoard::ListRecord{sorted, 1u << 20})},
      {"not sorted", Kind::extended, list(0, rt, color)},
      {"out of order", Kind::extended, list(1, color, rt)},
      {"repeated", Kind::extended, list(1, rt, rt)},
      {"unknown flag", Kind::extended, list(3, rt)},
      {"count beyond the segment", Kind::extended, writer.publish(hoard::ListRecord{1, 1u << 20})},
      {"not sorted", Kind::ip6, list(0, a, b)},
      {"out of order", Kind::ip6, list(1, b, a)},
      {"repeated", Kind::ip6, list(1, a, a)},
      {"count beyond the segment", Kind::ip6, writer.publish(hoard::ListRecord{1, 1u << 20})},
   };
   // The same records in order restore, so the rows fail for what they change.
   hoard::Location const good[] = {list(sorted | noExportFlag, c1, U32{communityNoExport}),
                                   list(sorted, l1, l5), list(1, rt, color), list(1, a, b)};
   // An empty list comes back as it was hoarded, even while it was being built.
   hoard::Location const emptyUnsorted = writer.publish(hoard::ListRecord{0, 0});
   hoard::StoreManager store = segment.open();
   CommList::PtrConst const empty = CommList::dehoard(&emptyUnsorted, &store);
   ASSERT_TRUE(empty);
   EXPECT_FALSE(empty->commVectorSorted());

   for (Kind kind : {Kind::standard, Kind::large, Kind::extended, Kind::ip6}) {
      EXPECT_TRUE(restores(kind, good[static_cast<int>(kind)], store));
   }
   for (Row const& row : rows) {
      SCOPED_TRACE(::testing::Message() << row.what << ", kind " << static_cast<int>(row.kind));
      EXPECT_FALSE(restores(row.kind, row.at, store));
   }
}

// A segment cut after it was opened would fault on the next read of the part
// cut off, or read zeros there: every restore refuses it, whatever the cut.
TEST(CommListDehoard, ASegmentCutAfterOpeningIsAStoreError) {
   HoardTestSegment segment(true);
   hoard::StoreWriter writer = segment.create(1 << 16);
   hoard::Location const rt = writer.publish(hoard::ExtCommRecord{1, 0, 0x0002fde800000064});
   hoard::Location const at[] = {
      writer.publishList<U32>(sorted, std::vector<U32>{1, 2}),
      writer.publishList<hoard::LargeCommRecord>(sorted, std::vector<hoard::LargeCommRecord>{{}}),
      writer.publishList<hoard::Location>(1, std::vector<hoard::Location>{rt}),
      writer.publishList<hoard::ExtCommIp6Record>(1, std::vector<hoard::ExtCommIp6Record>{{}})};
   hoard::StoreManager store = segment.open();
   for (U64 cut : {U64{(1 << 16) - 1}, U64{4096}, U64{64}, U64{0}}) {
      SCOPED_TRACE(cut);
      segment.truncate(cut);
      for (Kind kind : {Kind::standard, Kind::large, Kind::extended, Kind::ip6}) {
         EXPECT_THROW(restores(kind, at[static_cast<int>(kind)], store), hoard::StoreError);
      }
      EXPECT_THROW(ExtComm::dehoard(&rt, &store), hoard::StoreError);
   }
}

} // namespace
} // namespace Routing::Bgp
