#include "QorBgpCommunity/QorBgp/ExtCommIp6Matcher.h"

#include "QorBgpCommunity/QorBgp/CommunityPolicyParser.h"
#include "QorBgpCommunity/QorBgp/CommunitySetMatcher.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"
#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

namespace Routing::Bgp {
namespace {

using Field = CommunityFieldPattern;

TEST(ExtCommIp6Matcher, TypeSubtypeAddressPrefixAndLocalAdministrator) {
   auto tables = communityTablesFactory();
   // Route targets 2001:db8::1:258 and 2001:db9::1:1.
   auto const list = std::get<ExtCommIp6List::PtrConst>(
      decodeAttribute(*tables, extCommunityIp6,
                      *parseHex("0002 20010db8000000000000000000000001 0102 "
                                "0002 20010db9000000000000000000000001 0001"))
         .list);
   auto const site = extCommIp6MatcherFactory(Field::exact(0), Field::exact(2),
                                              *Qornet::Ip6Addr::parse("2001:db8:ffff::"), 32,
                                              Field::range(256, 300));
   EXPECT_EQ(site->toStrep(), "0:2 2001:db8::/32:256-300");
   EXPECT_EQ(
      parseExtCommIp6Set("not any 0:2 2001:db8:ffff::/32:256-300 *:* ::/0:peer-as")->toStrep(),
      "not any 0:2 2001:db8::/32:256-300 *:* ::/0:peer-as");
   EXPECT_THROW(parseExtCommIp6Set("any 0:2 2001:db8::32"), Kiv::RangeError);
   EXPECT_THROW(parseExtCommIp6Set("any 0:2 2001:db8::/129:1"), Kiv::RangeError);
   auto const matches = [&](ExtCommIp6Matcher::PtrConst const& m, CommunitySetMode mode) {
      return extCommIp6SetMatcherFactory({m}, mode, false)->matches(*list, {});
   };
   EXPECT_TRUE(matches(site, CommunitySetMode::any));
   EXPECT_FALSE(matches(site, CommunitySetMode::exact)); // 2001:db9:: is outside the prefix
   auto const everyRouteTarget = extCommIp6MatcherFactory(Field::exact(0), Field::exact(2),
                                                          Qornet::Ip6Addr(), 0, Field::any());
   EXPECT_TRUE(matches(everyRouteTarget, CommunitySetMode::exact));
   EXPECT_FALSE(matches(extCommIp6MatcherFactory(Field::exact(0x40), Field::any(),
                                                 Qornet::Ip6Addr(), 0, Field::any()),
                        CommunitySetMode::any));
   EXPECT_THROW(
      extCommIp6MatcherFactory(Field::any(), Field::any(), Qornet::Ip6Addr(), 129, Field::any()),
      Kiv::RangeError);
   EXPECT_THROW(extCommIp6MatcherFactory(Field::any(), Field::any(), Qornet::Ip6Addr(), 0,
                                         Field::exact(70000)),
                Kiv::RangeError);
}

} // namespace
} // namespace Routing::Bgp
