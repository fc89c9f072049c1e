#include "QorBgpCommunity/QorBgp/Parse/ExtCommContainer.h"

#include "QorBgpCommunity/QorBgp/Parse/ExtComm.h"

#include <gtest/gtest.h>

namespace Routing::Bgp {
namespace {

TEST(ExtCommContainer, QueueAppendsPastTheLastPositionAndDequeuesTheFirst) {
   auto container = bgpParseExtCommContainerSmFactory();
   EXPECT_EQ(container->extCommParserSms().size(), 7u);
   EXPECT_EQ(container->extCommParserSms().begin()->second->fwkType(),
             "Routing::Bgp::BgpParseExtCommRouteOriginSm");
   EXPECT_EQ((container->extCommParserSmsMetadata()),
             (BgpParseExtCommContainerSm::ExtCommParserSmsMetadata{0, 7}));
   auto plugin = container->extCommParserSms().begin()->second;
   container->extCommParserSmsDeq();
   container->extCommParserSmsDel(3);
   EXPECT_EQ(container->extCommParserSmsEnq(plugin), 7u);
   EXPECT_EQ((container->extCommParserSmsMetadata()),
             (BgpParseExtCommContainerSm::ExtCommParserSmsMetadata{1, 8}));
   container->extCommParserSmsDelAll();
   EXPECT_EQ(container->extCommParserSmsEnq(plugin), 8u);

   // The same control keeps the parser; another one replaces it.
   auto parser = container->extCommParser();
   container->extCommParserIs(parser->parseControl());
   EXPECT_EQ(container->extCommParser(), parser);
   container->extCommParserIs(BgpParseExtCommControl(bgpParseExtCommRuleCollectionsFactory()));
   EXPECT_NE(container->extCommParser(), parser);
}

} // namespace
} // namespace Routing::Bgp
