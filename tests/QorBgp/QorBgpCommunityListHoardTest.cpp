#include "QorBgpCommunity/QorBgp/QorBgpCommunityListHoard.h"

#include "tests/platform/HoardTestSegment.h"

#include <gtest/gtest.h>

namespace Routing::Bgp {
namespace {

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
   EXPECT_FALSE(LargeCommList::dehoard(&at[1], &store));
   writer.endChange();
   EXPECT_TRUE(CommList::dehoard(&at[0], &store));
}

} // namespace
} // namespace Routing::Bgp
