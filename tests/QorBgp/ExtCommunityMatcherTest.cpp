#include "QorBgpCommunity/QorBgp/ExtCommunityMatcher.h"

#include "QorBgpCommunity/QorBgp/CommunityPolicyParser.h"
#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

namespace Routing::Bgp {
namespace {

using Field = CommunityFieldPattern;
using Kind = ExtCommunityMatcher::Kind;

CommunityMatchContext const context{.peerAs = 65001, .localAs = 65000};

// Each kind reads its fields from the octets of its own layouts only.
TEST(ExtCommunityMatcher, EachKindReadsItsLayoutsFields) {
   auto const rt =
      extCommunityMatcherFactory(Kind::routeTarget, Field::peerAs(), Field::range(100, 199));
   EXPECT_TRUE(rt->matches(0x0002fde900000064, context));  // RT 65001:100, two-octet AS
   EXPECT_TRUE(rt->matches(0x02020000fde90064, context));  // RT 65001:100, four-octet AS
   EXPECT_FALSE(rt->matches(0x0003fde900000064, context)); // a route origin
   EXPECT_FALSE(rt->matches(0x0002fde9000000c8, context)); // local 200
   auto const byAddress = parseExtCommunitySet("any soo 192.0.2.1:*");
   EXPECT_EQ(byAddress->toStrep(), "any soo 192.0.2.1:*");
   auto const soo = byAddress->matchers()[0];
   EXPECT_TRUE(soo->matches(0x0103c000020100ff, context)); // SoO 192.0.2.1:255
   EXPECT_FALSE(soo->matches(0x0102c000020100ff, context));

   EXPECT_TRUE(extCommunityMatcherFactory(Kind::color, Field::exact(100))
                  ->matches(0x030b000000000064, context));
   EXPECT_TRUE(extCommunityMatcherFactory(Kind::linkBandwidth, Field::peerAs())
                  ->matches(0x4004fde949742400, context));
   auto const invalid = extCommunityMatcherFactory(Kind::originValidation, Field::exact(2));
   EXPECT_TRUE(invalid->matches(0x4300000000000002, context));
   EXPECT_FALSE(invalid->matches(0x4300000000000000, context));
   EXPECT_EQ(invalid->toStrep(), "ovs invalid");
   EXPECT_TRUE(extCommunityMatcherFactory(Kind::raw, Field::exact(0x80), Field::any())
                  ->matches(0x8006000000000000, context));

   EXPECT_THROW(extCommunityMatcherFactory(Kind::color, Field::exact(1), Field::exact(2)),
                Kiv::RangeError);
   EXPECT_THROW(extCommunityMatcherFactory(Kind::raw, Field::exact(256), Field::any()),
                Kiv::RangeError);
   EXPECT_EQ(
      parseExtCommunitySet("not all rt 65000:* color 1-9 lbw local-as ovs not-found raw 128:6")
         ->toStrep(),
      "not all rt 65000:* color 1-9 lbw local-as ovs not-found raw 128:6");
   try {
      parseExtCommunitySet("any rt 300.0.0.1:1");
      ADD_FAILURE() << "accepted";
   } catch (Kiv::RangeError const& e) {
      EXPECT_STREQ(e.what(), "at 8: expected <administrator>:<local> (each a number, a range, '*', "
                             "'peer-as' or 'local-as'; or an IPv4 address), found '300.0.0.1:1'");
   }
}

} // namespace
} // namespace Routing::Bgp
