// rtc: on a synthetic dump with VPN routes and the peers' own route-target
// memberships, the paths and lists each peer would receive, from memberships
// of a file and of the dump; and mistakes in the file.
#include "ToolTest.h"

#include <nlohmann/json.hpp>

#include <fstream>

namespace {

using QorBgpCommRtc = ToolTest;

TEST_F(QorBgpCommRtc, EachPeerReceivesThePathsItsMembershipsCover) {
   std::string const dump = path("vpn.mrt");
   ASSERT_EQ(run("synth " + dump + " --paths 300 --lists 20 --peers 3 --vpn 500").status, 0);
   std::string const memberships = path("memberships");
   // Every VPN route carries route targets 65000:0 to 65000:199; the RIB's
   // route targets are of other ASes.
   std::ofstream(memberships) << "# one line each\n"
                                 "vpn-only 65000 65000:0/56\n"
                                 "everything default\n"
                                 "nothing 65000 65000:1000\n";
   Outcome const outcome = run("rtc --json " + memberships + " " + dump);
   ASSERT_EQ(outcome.status, 0) << outcome.err;
   nlohmann::json const report = nlohmann::json::parse(outcome.out);
   // Five exact memberships from each peer, the first's default, the second's prefix.
   EXPECT_EQ(report["membershipRoutes"], 3 * 5 + 2);
   auto peer = [&](std::string const& name) {
      for (auto const& p : report["peers"]) {
         if (p["peer"] == name) {
            return p;
         }
      }
      return nlohmann::json();
   };
   EXPECT_EQ(peer("vpn-only")["paths"], 500);
   EXPECT_EQ(peer("everything")["paths"], report["pathsWithRouteTargets"]);
   EXPECT_EQ(peer("everything")["lists"], report["routeTargetLists"]);
   EXPECT_EQ(peer("nothing")["paths"], 0);
   // The dump's own peers: the first asked for everything, the second for AS 65000.
   EXPECT_EQ(peer("10.0.0.1")["memberships"], 6);
   EXPECT_EQ(peer("10.0.0.1")["paths"], report["pathsWithRouteTargets"]);
   EXPECT_EQ(peer("10.0.0.2")["paths"], 500);
   EXPECT_LT(peer("10.0.0.3")["paths"], 500);

   std::ofstream(memberships) << "pe1 65000 65000:1/65\n";
   Outcome const bad = run("rtc " + memberships + " " + dump);
   EXPECT_EQ(bad.status, 2);
   EXPECT_EQ(bad.err, "qorbgp-comm rtc: " + memberships +
                         ":1: invalid route-target membership '65000 65000:1/65'\n");
}

} // namespace
