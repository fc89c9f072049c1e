#include "QorBgpCommunity/QorBgp/QorBgpCommunityListDedupTable.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunity.h"
#include "QorBgpCommunity/platform/DumpContext.h"

#include <gtest/gtest.h>

namespace Routing::Bgp {
namespace {

TEST(CommListDedupTable, InternsAnyHandleAndDumpsWithoutIndentAtZero) {
   auto table = commListDedupTableFactory();
   ExtComm::PtrConst first = extCommFactory(extCommClassificationUnSpecified, ExtCommContent(5));
   ExtComm::PtrConst equal = extCommFactory(extCommClassificationUnSpecified, ExtCommContent(5));
   EXPECT_EQ(table->dedupAs(first), first);
   EXPECT_EQ(table->dedupAs(equal), first);
   Kiv::DumpContext context;
   table->dumpState(context, 0);
   EXPECT_EQ(context.str(), "DedupTable  DedupHashTable (single-threaded): 1 entries\n");
   EXPECT_EQ(largeCommListDedupTableFactory()->fwkType(), "Routing::Bgp::LargeCommListDedupTable");
}

} // namespace
} // namespace Routing::Bgp
