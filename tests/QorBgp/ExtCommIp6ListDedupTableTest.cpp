#include "QorBgpCommunity/QorBgp/ExtCommIp6ListDedupTable.h"

#include "QorBgpCommunity/QorBgp/ExtCommIp6DedupTable.h"
#include "QorBgpCommunity/QorBgp/ExtCommIp6List.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtComm.h"
#include "QorBgpCommunity/platform/DumpContext.h"

#include <gtest/gtest.h>

namespace Routing::Bgp {
namespace {

TEST(ExtCommIp6ListDedupTable, DumpLabelsBothTables) {
   auto recognition = bgpParseExtCommContainerSmFactory();
   auto values = extCommIp6DedupTableFactory(recognition->extCommParser());
   auto lists = extCommIp6ListDedupTableFactory();
   ExtCommIp6List::Ptr list = extCommIp6ListFactory();
   list->commIs(ExtCommIp6::dedupContent(
      values.get(), ExtCommIp6Content(0, 2, Qornet::Ip6Addr::fromStrep("2001:db8::1"), 7)));
   ExtCommIp6List::PtrConst published = list->dedup(lists.get());
   Kiv::DumpContext context;
   lists->dumpState(context, 0);
   EXPECT_EQ(context.str(), "ExtCommIp6ListDedupTable\n"
                            "  extCommIp6\n"
                            "    DedupHashTable (single-threaded): 1 entries\n"
                            "  extCommIp6Classification\n"
                            "    DedupHashTable (single-threaded): 1 entries\n");
}

} // namespace
} // namespace Routing::Bgp
