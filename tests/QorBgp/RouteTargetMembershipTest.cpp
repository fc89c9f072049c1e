#include "QorBgpCommunity/QorBgp/RouteTargetMembership.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

#include <random>

namespace Routing::Bgp {
namespace {

std::vector<U8> bytes(std::string const& s) { return {s.begin(), s.end()}; }

TEST(RouteTargetMembership, NlriOfEveryLengthReadsBack) {
   std::mt19937_64 random(3);
   std::vector<RouteTargetMembership> memberships{RouteTargetMembership()};
   for (unsigned length = 0; length <= 64; ++length) {
      memberships.emplace_back(static_cast<U32>(random()),
                               RouteTargetPrefix(RouteTarget(random()), length));
   }
   std::string const nlri = encodeRouteTargetMemberships(memberships);
   EXPECT_EQ(nlri.substr(0, 2), std::string("\0\x20", 2)); // the default, then origin AS alone
   auto const decoded = decodeRouteTargetMemberships(bytes(nlri));
   EXPECT_TRUE(decoded.ok()) << decoded.reason;
   EXPECT_EQ(decoded.memberships, memberships);
   // Bits past the length are ignored: 65000:0/33 with its last octet's tail set.
   auto const tail = decodeRouteTargetMemberships(
      std::vector<U8>{65, 0, 0, 0xfd, 0xe8, 0x00, 0x02, 0xfd, 0xe8, 0xff});
   EXPECT_EQ(tail.memberships.at(0).toStrep(), "65000 65000:2147483648/33");
}

TEST(RouteTargetMembership, MalformedNlriKeepsWhatCameBefore) {
   struct Case {
      std::vector<U8> nlri;
      char const* reason;
   } const cases[] = {
      {{0, 31, 1, 2, 3, 4},
       "route-target membership at octet 1: length 31 is neither 0 nor 32 to 96 bits"},
      {{0, 97}, "route-target membership at octet 1: length 97 is neither 0 nor 32 to 96 bits"},
      {{0, 96, 0, 0, 0, 1, 2},
       "route-target membership at octet 1: 12 octets announced, 5 present"},
   };
   for (Case const& c : cases) {
      auto const decoded = decodeRouteTargetMemberships(c.nlri);
      EXPECT_EQ(decoded.reason, c.reason);
      EXPECT_EQ(decoded.memberships, std::vector<RouteTargetMembership>{RouteTargetMembership()});
   }
}

TEST(RouteTargetMembership, TextReadsBack) {
   for (char const* text :
        {"default", "65000 65000:100/64", "4200000000 0/0", "1 192.0.2.1:0/48"}) {
      EXPECT_EQ(RouteTargetMembership::fromStrep(text).toStrep(), text);
   }
   EXPECT_EQ(RouteTargetMembership::fromStrep("7 65000:100").prefix().bitlen(), 64);
   for (char const* bad : {"", "65000", "x 65000:1/64", "1 65000:1/65", "1 nonsense/8"}) {
      EXPECT_THROW(RouteTargetMembership::fromStrep(bad), Kiv::RangeError) << bad;
   }
}

} // namespace
} // namespace Routing::Bgp
