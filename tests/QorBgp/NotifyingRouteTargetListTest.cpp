#include "QorBgpCommunity/QorBgp/NotifyingRouteTargetList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace Routing::Bgp {
namespace {

// Records each notification as "+rt" (now a member) or "-rt" (no longer one).
class Recorder : public NotifyingRouteTargetList::Notifiee {
 public:
   explicit Recorder(NotifyingRouteTargetList const* list) : list_(list) { notifierIs(list); }
   void onRt(RouteTarget const& rt) override {
      log.push_back((list_->rtHas(rt) ? "+" : "-") + rt.toStrep());
   }
   std::vector<std::string> log;

 private:
   NotifyingRouteTargetList const* list_;
};

RouteTarget const rtA = RouteTarget::twoOctetAs(65000, 100);
RouteTarget const rtB = RouteTarget::ipv4Address(0xc0000201, 5);

TEST(NotifyingRouteTargetList, OnlyRealChangesNotify) {
   auto list = notifyingRouteTargetListFactory();
   Recorder recorder(list.get());
   list->rtIs(rtA);
   list->rtIs(rtA);
   EXPECT_FALSE(list->rtDel(rtB));
   list->rtIs(rtB);
   EXPECT_TRUE(list->rtDel(rtA));
   EXPECT_FALSE(list->rtDel(rtA));
   list->rtIs(rtA);
   EXPECT_EQ(recorder.log,
             (std::vector<std::string>{"+65000:100", "+192.0.2.1:5", "-65000:100", "+65000:100"}));
   recorder.log.clear();
   list->rtDelAll();
   list->rtDelAll();
   EXPECT_EQ(list->rtCount(), 0u);
   std::sort(recorder.log.begin(), recorder.log.end());
   EXPECT_EQ(recorder.log, (std::vector<std::string>{"-192.0.2.1:5", "-65000:100"}));
}

TEST(NotifyingRouteTargetList, DumpListsMembersSortedUnderTheHeader) {
   auto list = notifyingRouteTargetListFactory();
   EXPECT_NE(list->id(), notifyingRouteTargetListFactory()->id());
   std::string const header = "NotifyingRouteTargetList #" + std::to_string(list->id()) + ":\n";
   Kiv::DumpContext empty;
   list->dumpState(empty, 0);
   EXPECT_EQ(empty.text(), header);

   list->rtIs(rtB);
   list->rtIs(RouteTarget::fourOctetAs(4200000000, 7));
   list->rtIs(rtA);
   Kiv::DumpContext ctx;
   ctx.child(list, 0);
   ctx.child(list, 2);
   list->dumpState(ctx, 2);
   auto members = [](std::string const& pad) {
      return pad + "65000:100\n" + pad + "192.0.2.1:5\n" + pad + "4200000000:7\n";
   };
   EXPECT_EQ(ctx.text(), header + members("  ") +
                            "  Routing::Bgp::NotifyingRouteTargetList dumped at line 1\n  " +
                            header + members("    "));
}

} // namespace
} // namespace Routing::Bgp
