#include "QorBgp/Parse/ExtComm.h"

#include "QorBgp/Parse/ExtCommColor.h"
#include "QorBgp/Parse/ExtCommDefaultGateway.h"
#include "QorBgp/Parse/ExtCommLinkBandwidth.h"
#include "QorBgp/Parse/ExtCommOriginValidationState.h"
#include "QorBgp/Parse/ExtCommRouteOrigin.h"
#include "QorBgp/Parse/ExtCommRouteTarget.h"
#include "QorBgp/Parse/ExtCommTunnelEncap.h"
#include "QorBgp/QorBgpCommunityKinds.h"
#include "platform/Errors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <typeindex>
#include <vector>

namespace Routing::Bgp {
namespace {

template <class T>
std::type_index typeOf() {
   return std::type_index(typeid(T));
}

template <class T>
std::type_index typeOf(Kiv::Ptr<T const> const& value) {
   return std::type_index(typeid(*value));
}

struct ParseRow {
   U64 word;
   std::type_index type;
   ExtCommClassification classification;
};

void expectParses(BgpParseExtendedCommunityRule const& parser, std::vector<ParseRow> const& rows) {
   for (ParseRow const& row : rows) {
      SCOPED_TRACE(testing::Message() << std::hex << row.word);
      ExtComm::PtrConst value = parser.parseExtendedCommunity(ExtCommContent(row.word));
      ASSERT_TRUE(value);
      EXPECT_EQ(typeOf(value).name(), row.type.name());
      EXPECT_EQ(value->classification(), row.classification);
      EXPECT_EQ(value->getContent().word(), row.word);
      EXPECT_EQ(value->references(), 1u); // a new object per call, owned by the caller only
   }
}

TEST(ExtCommParser, EveryKindAndFallbackOfTheFullContainer) {
   auto container = bgpParseExtCommContainerSmFactory();
   auto const u = extCommClassificationUnSpecified;
   expectParses(*container->extCommParser(), {
      {0x0002fde800000064, typeOf<ExtCommRouteTargetAs>(), extCommClassificationRouteTarget},
      {0x0202000000010064, typeOf<ExtCommRouteTargetAs>(), extCommClassificationRouteTarget},
      {0x0102c0000201006e, typeOf<ExtCommRouteTargetIpv4Address>(), extCommClassificationRouteTarget},
      {0x0003fde800000064, typeOf<ExtCommRouteOriginAs>(), extCommClassificationRouteOrigin},
      {0x0203000000010064, typeOf<ExtCommRouteOriginAs>(), extCommClassificationRouteOrigin},
      {0x0103c0000201006e, typeOf<ExtCommRouteOriginIpv4Address>(), extCommClassificationRouteOrigin},
      {0x030b000000000064, typeOf<ExtCommColor>(), extCommClassificationColor},
      {0x030c000000000008, typeOf<ExtCommTunnelEncap>(), extCommClassificationTunnelEncap},
      {0x030d000000000000, typeOf<ExtCommDefaultGateway>(), extCommClassificationDefaultGateway},
      {0x4004fde84e9502f9, typeOf<ExtCommLinkBandwidth>(), extCommClassificationLinkBandwidth},
      {0x4300000000000002, typeOf<ExtCommOriginValidationState>(),
       extCommClassificationOriginValidationState},
      // Type rules without a sub-rule for the subtype build their fallback.
      {0x0004fde84e9502f9, typeOf<ExtCommAsNumber>(), u}, // link bandwidth only non-transitive
      {0x0005000000000000, typeOf<ExtCommAsNumber>(), u},
      {0x0014000000000000, typeOf<ExtCommAsNumber>(), u},
      {0x0209000000000000, typeOf<ExtCommAsNumber>(), u},
      {0x4002fde800000064, typeOf<ExtCommAsNumber>(), u}, // no route target when non-transitive
      {0x42ff000000000000, typeOf<ExtCommAsNumber>(), u},
      {0x0107000000000000, typeOf<ExtCommIpv4Address>(), u},
      {0x4102c0000201006e, typeOf<ExtCommIpv4Address>(), u},
      {0x030a000000000000, typeOf<ExtCommSubtyped>(), u},
      {0x8006000000000000, typeOf<ExtCommSubtyped>(), u},
      {0x8108000000000000, typeOf<ExtCommSubtyped>(), u},
      {0x8208000000000000, typeOf<ExtCommSubtyped>(), u},
      {0x4301000000000000, typeOf<ExtCommSubtyped>(), u},
      // Types without a type rule, members or not, give a plain value.
      {0x0400000000000000, typeOf<ExtComm>(), u},
      {0x0500000000000000, typeOf<ExtComm>(), u},
      {0x0600000000000000, typeOf<ExtComm>(), u},
      {0x0700000000000000, typeOf<ExtComm>(), u},
      {0x0800000000000000, typeOf<ExtComm>(), u},
      {0x4400000000000000, typeOf<ExtComm>(), u},
      {0xff02000000000000, typeOf<ExtComm>(), u},
   });
   ExtComm::PtrConst unknownSubtype =
      container->extCommParser()->parseExtendedCommunity(ExtCommContent(0x0014000000000000));
   EXPECT_NE(unknownSubtype->toStrep().find(" subtype=20 "), std::string::npos)
      << unknownSubtype->toStrep();
}

TEST(ExtCommParser, Ip6TypesGiveSubtypedValuesAndOthersPlainOnes) {
   auto container = bgpParseExtCommContainerSmFactory();
   auto parse = [&](U8 type, U8 subtype) {
      return container->extCommParser()->parseExtendedCommunityIp6(
         ExtCommIp6Content(type, subtype, Qornet::Ip6Addr(), 100));
   };
   EXPECT_EQ(typeOf(parse(0x00, 0x02)), typeOf<ExtCommIp6Subtyped>());
   EXPECT_EQ(typeOf(parse(0x40, 0x02)), typeOf<ExtCommIp6Subtyped>());
   EXPECT_EQ(typeOf(parse(0x80, 0x02)), typeOf<ExtCommIp6>());
   EXPECT_EQ(parse(0x00, 0x02)->classification(), extCommClassificationUnSpecified);
}

TEST(ExtCommParser, ShowStringIsTheUITextOfTheParse) {
   auto container = bgpParseExtCommContainerSmFactory();
   auto const& parser = *container->extCommParser();
   for (U64 word : {0x0002fde800000064ull, 0x0202fa56ea000064ull, 0x4004fde84e9502f9ull,
                    0x4300000000000003ull, 0x8006000000000000ull, 0x0700000000000000ull}) {
      for (int flags = 0; flags < 8; ++flags) {
         bool asdot = flags & 1, weighted = flags & 2, json = flags & 4;
         SCOPED_TRACE(testing::Message() << std::hex << word << " flags " << flags);
         EXPECT_EQ(parser.showString(word, asdot, weighted, json),
                   parser.parseExtendedCommunity(ExtCommContent(word))
                      ->toStrepForUI(asdot, weighted, json));
      }
   }
}

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

TEST(ExtCommPlugins, RemovingOrReplacingASubRule) {
   auto container = bgpParseExtCommContainerSmFactory();
   auto const& parser = container->extCommParser();
   auto opaque = Kiv::staticPtrCast<BgpParseExtCommTransOpaqueRule const>(
      parser->typeRule(extCommPktTypeTransOpaque));
   ASSERT_TRUE(opaque);
   EXPECT_EQ(opaque->subTypeRules().size(), 3u);
   auto mutableOpaque = const_cast<BgpParseExtCommTransOpaqueRule*>(opaque.get());

   // A later rule for the same subtype replaces the earlier one.
   mutableOpaque->subTypeRuleIs(new BgpParseExtComSubTypeTransOpaqueDefaultGatewayRule(
      parser->parseControl()));
   EXPECT_EQ(opaque->subTypeRules().size(), 3u);
   // (The default-gateway rule answers with its own kind whatever the subtype.)
   mutableOpaque->subTypeRuleIs(new BgpParseExtCommKindSubRule<
                                BgpParseExtComSubTypeTransOpaqueRuleBase,
                                extCommPktSubtypeTransOpaqueColorExtendedCommunity,
                                &extCommDefaultGatewayFactory, "Test::ColorAsGateway">(
      parser->parseControl()));
   ExtCommContent color(0x030b000000000064);
   EXPECT_EQ(typeOf(parser->parseExtendedCommunity(color)), typeOf<ExtCommDefaultGateway>());

   mutableOpaque->subTypeRuleDel(extCommPktSubtypeTransOpaqueColorExtendedCommunity);
   EXPECT_EQ(typeOf(parser->parseExtendedCommunity(color)), typeOf<ExtCommSubtyped>());
   EXPECT_THROW(mutableOpaque->subTypeRuleIs(nullptr), Kiv::NullArgumentError);
   EXPECT_THROW(parser->typeRuleIs(nullptr), Kiv::NullArgumentError);

   parser->typeRuleDel(extCommPktTypeTransOpaque);
   EXPECT_EQ(typeOf(parser->parseExtendedCommunity(color)), typeOf<ExtComm>());
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

TEST(ExtCommRuleCollections, NotifiesOnlyForRealChanges) {
   auto registry = bgpParseExtCommRuleCollectionsFactory();
   CountingObserver observer(registry.get());
   BgpParseExtCommSubTypeTransOpaqueRuleKey key{
      reinterpret_cast<BgpParseExtCommTransOpaqueRule*>(std::uintptr_t{0x1000})};
   registry->extendedCommSubTypeTransOpaqueRuleInstanceIs(key);
   registry->extendedCommSubTypeTransOpaqueRuleInstanceIs(key);
   EXPECT_EQ(observer.opaque, 1);
   EXPECT_TRUE(registry->extendedCommSubTypeTransOpaqueRuleInstanceHas(key));
   EXPECT_TRUE(registry->extendedCommSubTypeTransOpaqueRuleInstanceDel(key));
   EXPECT_FALSE(registry->extendedCommSubTypeTransOpaqueRuleInstanceDel(key));
   EXPECT_EQ(observer.opaque, 2);

   registry->hasNotificationActiveIs(false);
   registry->extendedCommSubTypeTransOpaqueRuleInstanceIs(key);
   EXPECT_EQ(observer.opaque, 2);
}

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

TEST(ExtCommRuleKey, OrdersByAddressAndParsesBackFromItsText) {
   BgpParseExtCommSubTypeTransOpaqueRuleKey low{
      reinterpret_cast<BgpParseExtCommTransOpaqueRule*>(std::uintptr_t{0x10})};
   BgpParseExtCommSubTypeTransOpaqueRuleKey high{
      reinterpret_cast<BgpParseExtCommTransOpaqueRule*>(std::uintptr_t{0xff00})};
   EXPECT_LT(low, high);
   EXPECT_EQ(high.valueToStrep(), "0xff00");
   EXPECT_EQ(BgpParseExtCommSubTypeTransOpaqueRuleKey::fromValueStrep("0xff00"), high);
   EXPECT_EQ(BgpParseExtCommSubTypeTransOpaqueRuleKey{}.valueToStrep(), "0x0");
   EXPECT_THROW(BgpParseExtCommSubTypeTransOpaqueRuleKey::fromValueStrep("ff00"), Kiv::RangeError);
   EXPECT_FALSE(BgpParseExtCommControl());
   auto registry = bgpParseExtCommRuleCollectionsFactory();
   EXPECT_EQ(BgpParseExtCommControl(registry), BgpParseExtCommControl(registry));
   EXPECT_NE(BgpParseExtCommControl(registry), BgpParseExtCommControl());
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

TEST(ExtCommPlugins, HooksTraceAtLevel8) {
   std::vector<std::string> lines;
   auto previous = Kiv::traceSinkIs(
      [&](Kiv::TraceFacility const&, unsigned level, std::string_view line) {
         if (level == 8) {
            lines.emplace_back(line);
         }
      });
   U16 levels = qorBgpTrace().levels();
   qorBgpTrace().levelIs(8, true);
   auto registry = bgpParseExtCommRuleCollectionsFactory();
   auto parser = bgpParseExtendedCommunityRuleFactory(BgpParseExtCommControl(registry));
   auto plugin = BgpParseExtCommColorSmIs(registry);
   qorBgpTrace().levelsIs(levels);
   Kiv::traceSinkIs(std::move(previous));

   ASSERT_EQ(lines.size(), 1u);
   EXPECT_THAT(lines[0], testing::MatchesRegex("ExtCommColor:[0-9]+:BgpParseExtCommColorSm::"
                                               "instantiateExtCommSubTypeTransOpaqueSubRule "
                                               "0x[0-9a-f]+ "));
}

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
