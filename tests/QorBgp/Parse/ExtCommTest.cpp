#include "QorBgpCommunity/QorBgp/Parse/ExtComm.h"

#include "ExtCommTestSupport.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommColor.h"
#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

#include <typeindex>

namespace Routing::Bgp {
namespace {

TEST(ExtCommPlugins, APlugInMadeAfterTheParserStillEquipsIt) {
   auto registry = bgpParseExtCommRuleCollectionsFactory();
   auto parser = bgpParseExtendedCommunityRuleFactory(BgpParseExtCommControl(registry));
   ExtCommContent color(0x030b000000000064);
   EXPECT_EQ(typeOf(parser->parseExtendedCommunity(color)), typeOf<ExtCommSubtyped>());
   auto plugin = BgpParseExtCommColorSmIs(registry);
   EXPECT_EQ(typeOf(parser->parseExtendedCommunity(color)), typeOf<ExtCommColor>());

   // A parser made later is equipped as it is built.
   auto second = bgpParseExtendedCommunityRuleFactory(BgpParseExtCommControl(registry));
   EXPECT_EQ(typeOf(second->parseExtendedCommunity(color)), typeOf<ExtCommColor>());

   // A plug-in that has stopped observing equips nothing new.
   plugin->ruleCollectionsDel();
   auto third = bgpParseExtendedCommunityRuleFactory(BgpParseExtCommControl(registry));
   EXPECT_EQ(typeOf(third->parseExtendedCommunity(color)), typeOf<ExtCommSubtyped>());
}

// Counts the registry's notifications per collection.
class CountingObserver : public BgpParseExtCommRuleCollections::Notifiee {
 public:
   explicit CountingObserver(BgpParseExtCommRuleCollections const* registry) {
      notifierIs(registry);
   }
   void onExtendedCommunityRuleInstance(BgpParseExtendedCommunityRuleKey const&) override {
      ++parsers;
   }
   void onExtCommSubTypeTransOpaqueRuleInstance(
      BgpParseExtCommSubTypeTransOpaqueRuleKey const&) override {
      ++opaque;
   }
   int parsers = 0;
   int opaque = 0;
};

TEST(ExtCommRuleCollections, ParsersAndTheirTypeRulesAnnounceAndWithdrawThemselves) {
   auto registry = bgpParseExtCommRuleCollectionsFactory();
   CountingObserver observer(registry.get());
   auto first = bgpParseExtendedCommunityRuleFactory(BgpParseExtCommControl(registry));
   auto second = bgpParseExtendedCommunityRuleFactory(BgpParseExtCommControl(registry));
   EXPECT_EQ(registry->extendedCommunityTypeRuleInstance().size(), 2u);
   EXPECT_EQ(registry->extendedCommSubTypeTransOpaqueRuleInstance().size(), 2u);
   EXPECT_EQ(registry->extendedCommIp6SubTypeNonTransRuleInstance().size(), 2u);
   EXPECT_TRUE(registry->extendedCommunityTypeRuleInstanceHas(
      BgpParseExtendedCommunityRuleKey{first.get()}));
   EXPECT_EQ(observer.parsers, 2);
   first = nullptr;
   EXPECT_EQ(registry->extendedCommunityTypeRuleInstance().size(), 1u);
   EXPECT_EQ(registry->extendedCommSubTypeTransOpaqueRuleInstance().size(), 1u);
   EXPECT_EQ(observer.parsers, 3);
   EXPECT_EQ(observer.opaque, 3);
}

TEST(ExtCommRuleKey, TextIsTheAddressInHexAndParsesBack) {
   BgpParseExtCommSubTypeTransOpaqueRuleKey high{
      reinterpret_cast<BgpParseExtCommTransOpaqueRule*>(std::uintptr_t{0xff00})};
   EXPECT_EQ(high.valueToStrep(), "0xff00");
   EXPECT_EQ(BgpParseExtCommSubTypeTransOpaqueRuleKey::fromValueStrep("0xff00"), high);
   EXPECT_EQ(BgpParseExtCommSubTypeTransOpaqueRuleKey{}.valueToStrep(), "0x0");
   EXPECT_THROW(BgpParseExtCommSubTypeTransOpaqueRuleKey::fromValueStrep("ff00"), Kiv::RangeError);
}

TEST(ExtCommPluginsDeathTest, InstallingANullRuleIsFatal) {
   auto container = bgpParseExtCommContainerSmFactory();
   auto const& parser = container->extCommParser();
   auto const& plugin = container->extCommParserSms().begin()->second;
   BgpParseExtendedCommunityRuleKey parserKey{parser.get()};
   EXPECT_DEATH(plugin->addExtendedCommunityTypeSubRule(parserKey, nullptr),
                "ExtComm:[0-9]+: assertion failed: __null != rule");
   auto opaque = const_cast<BgpParseExtCommTransOpaqueRule*>(
      static_cast<BgpParseExtCommTransOpaqueRule const*>(
         parser->typeRule(extCommPktTypeTransOpaque).get()));
   EXPECT_DEATH(plugin->addExtCommSubTypeTransOpaqueSubRule({opaque}, nullptr),
                "ExtComm:[0-9]+: assertion failed: rule != __null");
}

} // namespace
} // namespace Routing::Bgp
