#include "QorBgpCommunity/QorBgp/QorBgpCommunityListExtDedupTable.h"

#include "QorBgpCommunityListExtTestLists.h"
#include "QorBgpCommunity/platform/DumpContext.h"

#include <gtest/gtest.h>

namespace Routing::Bgp {
namespace {

constexpr U64 rtA = 0x0002fde800000064;    // 65000:100
constexpr U64 rtB = 0x0002fde8000000c8;    // 65000:200
constexpr U64 color = 0x030b000000000064;  // colour 100
constexpr U64 color2 = 0x030b0000000000c8; // colour 200

class ExtCommListDedupTableTest : public ExtCommListTables {
 protected:
   std::size_t collectionSize() const {
      return lists->notifyingRtExtCommListCollection()->rtExtCommLists().size();
   }
};

TEST_F(ExtCommListDedupTableTest, ListsWithTheSameRouteTargetsShareOneNotifier) {
   ExtCommList::PtrConst red = publish({rtA, rtB, color});
   ExtCommList::PtrConst blue = publish({rtB, rtA, color2});
   auto rts = red->classificationList(extCommClassificationRouteTarget);
   EXPECT_EQ(rts, blue->classificationList(extCommClassificationRouteTarget));
   auto const& rtList = static_cast<RtExtCommClassificationList const&>(*rts);
   ASSERT_TRUE(rtList.lifeTimeNotifier());
   EXPECT_EQ(rtList.lifeTimeNotifier()->rtExtCommListRawPtr(), &rtList);
   EXPECT_EQ(rtList.lifeTimeNotifier()->comm(rtB)->community(), rtB);
   EXPECT_EQ(collectionSize(), 1u);

   red = nullptr;
   EXPECT_EQ(collectionSize(), 1u);
   blue = nullptr;
   rts = nullptr;
   EXPECT_EQ(collectionSize(), 0u);
}

TEST_F(ExtCommListDedupTableTest, TearingTheTableDownEmptiesTheCollection) {
   ExtCommList::PtrConst list = publish({rtA});
   auto collection = lists->notifyingRtExtCommListCollection();
   auto rts = list->classificationList(extCommClassificationRouteTarget);
   lists = nullptr;
   EXPECT_TRUE(collection->rtExtCommLists().empty());
   EXPECT_FALSE(static_cast<RtExtCommClassificationList const&>(*rts).lifeTimeNotifier());
}

TEST_F(ExtCommListDedupTableTest, DumpsLabelTheThreeTables) {
   ExtCommList::PtrConst list = publish({rtA, color});
   Kiv::DumpContext context;
   lists->dumpState(context, 0);
   lists->notifyingRtExtCommListCollection()->dumpState(context, 0);
   EXPECT_EQ(context.str(), "ExtCommListDedupTable\n"
                            "  extComm\n"
                            "    DedupHashTable (single-threaded): 1 entries\n"
                            "  extCommClassification\n"
                            "    DedupHashTable (single-threaded): 1 entries\n"
                            "  rtExtCommClassification\n"
                            "    DedupHashTable (single-threaded): 1 entries\n"
                            "NotifyingRtExtCommListCollection rtExtCommLists #1;\n"
                            "  rtExtCommList extCommClassificationRouteTarget : "
                            "<RouteTarget2ByteASN 65000:100 0x0002fde800000064>\n");
}

} // namespace
} // namespace Routing::Bgp
