#include "QorBgpCommunity/QorBgp/LargeCommunityMatcher.h"

#include <gtest/gtest.h>

namespace Routing::Bgp {
namespace {

using Field = CommunityFieldPattern;

TEST(LargeCommunityMatcher, ThreeFieldsOrARegexOverTheColonForm) {
   CommunityMatchContext const context{.peerAs = 4200000001, .localAs = 65000};
   auto const fields =
      largeCommunityMatcherFactory(Field::peerAs(), Field::exact(0), Field::range(10, 20));
   EXPECT_TRUE(fields->matches({4200000001, 0, 10}, context));
   EXPECT_FALSE(fields->matches({4200000001, 1, 10}, context));
   EXPECT_FALSE(fields->matches({4200000001, 0, 21}, context));
   EXPECT_EQ(fields->toStrep(), "peer-as:0:10-20");

   auto const regex =
      largeCommunityMatcherFactory(new Routing::RouteMap::PosixRegex("^4200000001:[0-9]+:666$"));
   EXPECT_TRUE(regex->matches({4200000001, 7, 666}, context));
   EXPECT_FALSE(regex->matches({4200000001, 7, 6660}, context));
}

} // namespace
} // namespace Routing::Bgp
