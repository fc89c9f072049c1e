#include "QorBgpCommunity/QorBgp/CommunityFieldPattern.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

namespace Routing::Bgp {
namespace {

TEST(CommunityFieldPattern, EachKindMatchesItsValuesAndPlaceholdersBindAtMatchTime) {
   CommunityMatchContext const peer65001{.peerAs = 65001, .localAs = 65000};
   CommunityMatchContext const peer65002{.peerAs = 65002, .localAs = 65000};
   auto const range = CommunityFieldPattern::range(100, 199);
   EXPECT_TRUE(range.matches(100, peer65001));
   EXPECT_TRUE(range.matches(199, peer65001));
   EXPECT_FALSE(range.matches(99, peer65001));
   EXPECT_FALSE(range.matches(200, peer65001));
   EXPECT_TRUE(CommunityFieldPattern::any().matches(0xFFFFFFFF, peer65001));
   EXPECT_FALSE(CommunityFieldPattern::exact(7).matches(8, peer65001));

   auto const peerAs = CommunityFieldPattern::peerAs();
   EXPECT_TRUE(peerAs.matches(65001, peer65001));
   EXPECT_FALSE(peerAs.matches(65001, peer65002));
   EXPECT_TRUE(CommunityFieldPattern::localAs().matches(65000, peer65002));

   EXPECT_EQ(range.toStrep(), "100-199");
   EXPECT_EQ(peerAs.toStrep(), "peer-as");
   EXPECT_FALSE(range.fitsIn(150));
   EXPECT_TRUE(peerAs.fitsIn(0));
   try {
      CommunityFieldPattern::range(5, 4);
      FAIL() << "an empty range was accepted";
   } catch (Kiv::RangeError const& e) {
      EXPECT_STREQ(e.what(), "range 5-4 is empty");
   }
}

} // namespace
} // namespace Routing::Bgp
