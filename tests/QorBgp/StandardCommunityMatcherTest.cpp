#include "QorBgpCommunity/QorBgp/StandardCommunityMatcher.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

namespace Routing::Bgp {
namespace {

using Field = CommunityFieldPattern;
using Routing::RouteMap::PosixRegex;

CommunityMatchContext const context{.peerAs = 65001, .localAs = 65000};

constexpr U32 community(U32 asPart, U32 local) { return asPart << 16 | local; }

TEST(StandardCommunityMatcher, FieldsMatchTheAsAndLocalPartsApart) {
   auto const fromPeer = standardCommunityMatcherFactory(Field::peerAs(), Field::range(100, 199));
   EXPECT_TRUE(fromPeer->matches(community(65001, 150), context));
   EXPECT_FALSE(fromPeer->matches(community(65000, 150), context));
   EXPECT_FALSE(fromPeer->matches(community(65001, 200), context));
   EXPECT_EQ(fromPeer->toStrep(), "peer-as:100-199");

   try {
      standardCommunityMatcherFactory(Field::exact(70000), Field::any());
      FAIL() << "a 17-bit AS part was accepted";
   } catch (Kiv::RangeError const& e) {
      EXPECT_STREQ(e.what(), "standard community field 70000 is above 65535");
   }
}

// A regex sees one community at a time: its colon form, then its name.
TEST(StandardCommunityMatcher, ARegexSeesEachCommunityAloneByNumberAndByName) {
   auto const noExport = standardCommunityMatcherFactory(new PosixRegex("^no-export$"));
   EXPECT_TRUE(noExport->matches(0xFFFFFF01, context));
   EXPECT_FALSE(noExport->matches(0xFFFFFF02, context));
   auto const anchored = standardCommunityMatcherFactory(new PosixRegex("^65535:65281$"));
   EXPECT_TRUE(anchored->matches(0xFFFFFF01, context));
   EXPECT_EQ(anchored->toStrep(), "regex \"^65535:65281$\"");
   EXPECT_THROW(standardCommunityMatcherFactory(PosixRegex::PtrConst()), Kiv::NullArgumentError);
}

} // namespace
} // namespace Routing::Bgp
