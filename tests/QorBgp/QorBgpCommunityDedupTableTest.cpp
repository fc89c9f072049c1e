#include "QorBgp/QorBgpCommunityDedupTable.h"

#include "QorBgp/ExtCommIp6DedupTable.h"
#include "QorBgp/Parse/ExtComm.h"
#include "QorBgp/Parse/ExtCommRouteOrigin.h"
#include "QorBgp/Parse/ExtCommRouteTarget.h"
#include "QorBgp/QorBgpCommunityListDedupTable.h"
#include "platform/DumpContext.h"

#include <gtest/gtest.h>

#include <typeinfo>

namespace Routing::Bgp {
namespace {

constexpr U64 rt65000_100 = 0x0002fde800000064;
constexpr U64 soo65000_100 = 0x0003fde800000064;

class ExtCommInterning : public testing::Test {
 protected:
   BgpParseExtCommContainerSm::Ptr recognition = bgpParseExtCommContainerSmFactory();
   ExtCommDedupTable::Ptr table = extCommDedupTableFactory(recognition->extCommParser());

   ExtComm::PtrConst intern(U64 word) {
      return ExtComm::dedupContent(table.get(), ExtCommContent(word));
   }
   bool listed(U64 word) const { return table->routeTargetList()->rtHas(RouteTarget(word)); }
};

TEST_F(ExtCommInterning, EqualContentIsOneObjectBuiltByTheRules) {
   ExtComm::PtrConst a = intern(rt65000_100);
   ExtComm::PtrConst b = intern(rt65000_100);
   EXPECT_EQ(a, b);
   EXPECT_EQ(typeid(*a), typeid(ExtCommRouteTargetAs));
   EXPECT_TRUE(a->isDeduped());
   EXPECT_NE(intern(rt65000_100 + 1), a);
}

TEST_F(ExtCommInterning, RouteTargetsAreListedWhileAlive) {
   ExtComm::PtrConst rt = intern(rt65000_100);
   ExtComm::PtrConst soo = intern(soo65000_100);
   EXPECT_EQ(typeid(*soo), typeid(ExtCommRouteOriginAs));
   EXPECT_TRUE(listed(rt65000_100));
   EXPECT_FALSE(listed(soo65000_100));
   ExtComm::PtrConst second = rt;
   rt = nullptr;
   EXPECT_TRUE(listed(rt65000_100));
   ExtComm const* old = second.get();
   second = nullptr;
   EXPECT_FALSE(listed(rt65000_100));
   EXPECT_EQ(table->dedupTable()->size(), 1u);

   ExtComm::PtrConst fresh = intern(rt65000_100);
   EXPECT_TRUE(listed(rt65000_100));
   EXPECT_EQ(typeid(*fresh), typeid(ExtCommRouteTargetAs));
   (void)old;
}

TEST_F(ExtCommInterning, TearingDownTheTableEmptiesItsList) {
   ExtComm::PtrConst rt = intern(rt65000_100);
   auto list = table->routeTargetList();
   table = nullptr;
   EXPECT_FALSE(list->rtHas(RouteTarget(rt65000_100)));
   EXPECT_FALSE(rt->isDeduped());
}

TEST_F(ExtCommInterning, DumpShowsTheHashTableAndTheList) {
   ExtComm::PtrConst rt = intern(rt65000_100);
   Kiv::DumpContext context;
   table->dumpState(context, 0);
   EXPECT_EQ(context.str(), "ExtCommDedupTable:\n"
                            "  DedupHashTable (single-threaded): 1 entries\n"
                            "  NotifyingRouteTargetList #" +
                               std::to_string(table->routeTargetList()->id()) +
                               ":\n"
                               "    65000:100\n");
}

TEST(ExtCommIp6Interning, OneObjectPerContentTypedByTheRules) {
   auto recognition = bgpParseExtCommContainerSmFactory();
   auto table = extCommIp6DedupTableFactory(recognition->extCommParser());
   auto addr = Qornet::Ip6Addr::parse("2001:db8::1").value();
   auto intern = [&](U8 type, U16 localAdmin) {
      return ExtCommIp6::dedupContent(table.get(), ExtCommIp6Content(type, 0x02, addr, localAdmin));
   };
   ExtCommIp6::PtrConst a = intern(0x00, 100);
   EXPECT_EQ(intern(0x00, 100), a);
   EXPECT_NE(intern(0x00, 101), a);
   EXPECT_EQ(typeid(*a), typeid(ExtCommIp6Subtyped));
   ExtCommIp6::PtrConst plain = intern(0x80, 100);
   EXPECT_EQ(typeid(*plain), typeid(ExtCommIp6));
   EXPECT_EQ(plain->classification(), extCommClassificationUnSpecified);
   a = nullptr;
   plain = nullptr;
   EXPECT_EQ(table->dedupTable()->size(), 0u);
}

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
