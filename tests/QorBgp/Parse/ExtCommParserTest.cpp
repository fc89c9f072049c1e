#include "QorBgpCommunity/QorBgp/Parse/ExtCommParser.h"

#include "ExtCommTestSupport.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtComm.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommColor.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommDefaultGateway.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommLinkBandwidth.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommOriginValidationState.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommRouteOrigin.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommRouteTarget.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommTunnelEncap.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityKinds.h"
#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

#include <typeindex>

namespace Routing::Bgp {
namespace {

// Every kind the full container registers: a value of it, and the type,
// classification and type name the parser must give it.
struct Kind {
   U64 word;
   std::type_index type;
   ExtCommClassification classification;
   char const* fwkType;
};

class EveryRegisteredKind : public testing::TestWithParam<Kind> {};

TEST_P(EveryRegisteredKind, ParsesToItsOwnTypeAndClassification) {
   Kind const& kind = GetParam();
   auto container = bgpParseExtCommContainerSmFactory();
   ExtComm::PtrConst value =
      container->extCommParser()->parseExtendedCommunity(ExtCommContent(kind.word));
   ASSERT_TRUE(value);
   EXPECT_EQ(typeOf(value).name(), kind.type.name());
   EXPECT_EQ(value->classification(), kind.classification);
   EXPECT_EQ(value->fwkType(), std::string("Routing::Bgp::ExtComm") + kind.fwkType);
   EXPECT_EQ(value->getContent().word(), kind.word);
   EXPECT_EQ(value->references(), 1u); // a new object per call, owned by the caller only
   EXPECT_TRUE(value->hasNotificationActive());
   EXPECT_FALSE(value->pktSubtype().isUnspecified());
   EXPECT_FALSE(value->policyMatchStrepUI());
}

INSTANTIATE_TEST_SUITE_P(
   FullContainer, EveryRegisteredKind,
   testing::Values(Kind{0x0002fde800000064, typeOf<ExtCommRouteTargetAs>(),
                        extCommClassificationRouteTarget, "RouteTargetAs"},
                   Kind{0x0202000000010064, typeOf<ExtCommRouteTargetAs>(),
                        extCommClassificationRouteTarget, "RouteTargetAs"},
                   Kind{0x0102c0000201006e, typeOf<ExtCommRouteTargetIpv4Address>(),
                        extCommClassificationRouteTarget, "RouteTargetIpv4Address"},
                   Kind{0x0003fde800000064, typeOf<ExtCommRouteOriginAs>(),
                        extCommClassificationRouteOrigin, "RouteOriginAs"},
                   Kind{0x0203000000010064, typeOf<ExtCommRouteOriginAs>(),
                        extCommClassificationRouteOrigin, "RouteOriginAs"},
                   Kind{0x0103c0000201006e, typeOf<ExtCommRouteOriginIpv4Address>(),
                        extCommClassificationRouteOrigin, "RouteOriginIpv4Address"},
                   Kind{0x030b000000000064, typeOf<ExtCommColor>(), extCommClassificationColor,
                        "Color"},
                   Kind{0x030c000000000008, typeOf<ExtCommTunnelEncap>(),
                        extCommClassificationTunnelEncap, "TunnelEncap"},
                   Kind{0x030d000000000000, typeOf<ExtCommDefaultGateway>(),
                        extCommClassificationDefaultGateway, "DefaultGateway"},
                   Kind{0x4004fde84e9502f9, typeOf<ExtCommLinkBandwidth>(),
                        extCommClassificationLinkBandwidth, "LinkBandwidth"},
                   Kind{0x4300000000000002, typeOf<ExtCommOriginValidationState>(),
                        extCommClassificationOriginValidationState, "OriginValidationState"}),
   [](testing::TestParamInfo<Kind> const& info) {
      return info.param.fwkType + std::to_string(info.index);
   });

TEST(ExtCommParser, TypesAndSubtypesWithoutAKindGiveTheirFallback) {
   auto container = bgpParseExtCommContainerSmFactory();
   struct Row {
      U64 word;
      std::type_index type;
   };
   Row const rows[] = {
      // Type rules without a sub-rule for the subtype build their fallback.
      {0x0004fde84e9502f9, typeOf<ExtCommAsNumber>()}, // link bandwidth only non-transitive
      {0x0014000000000000, typeOf<ExtCommAsNumber>()},
      {0x4002fde800000064, typeOf<ExtCommAsNumber>()}, // no route target when non-transitive
      {0x42ff000000000000, typeOf<ExtCommAsNumber>()},
      {0x0107000000000000, typeOf<ExtCommIpv4Address>()},
      {0x4102c0000201006e, typeOf<ExtCommIpv4Address>()},
      {0x030a000000000000, typeOf<ExtCommSubtyped>()},
      {0x8006000000000000, typeOf<ExtCommSubtyped>()},
      {0x4301000000000000, typeOf<ExtCommSubtyped>()},
      // Types without a type rule, members or not, give a plain value.
      {0x0400000000000000, typeOf<ExtComm>()},
      {0x0800000000000000, typeOf<ExtComm>()},
      {0x4400000000000000, typeOf<ExtComm>()},
      {0xff02000000000000, typeOf<ExtComm>()},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(testing::Message() << std::hex << row.word);
      ExtComm::PtrConst value =
         container->extCommParser()->parseExtendedCommunity(ExtCommContent(row.word));
      ASSERT_TRUE(value);
      EXPECT_EQ(typeOf(value).name(), row.type.name());
      EXPECT_EQ(value->classification(), extCommClassificationUnSpecified);
      EXPECT_EQ(value->getContent().word(), row.word);
   }
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

TEST(ExtCommParser, RemovingOrReplacingASubRule) {
   auto container = bgpParseExtCommContainerSmFactory();
   auto const& parser = container->extCommParser();
   auto opaque = Kiv::staticPtrCast<BgpParseExtCommTransOpaqueRule const>(
      parser->typeRule(extCommPktTypeTransOpaque));
   ASSERT_TRUE(opaque);
   EXPECT_EQ(opaque->subTypeRules().size(), 3u);
   auto mutableOpaque = const_cast<BgpParseExtCommTransOpaqueRule*>(opaque.get());

   // A later rule for the same subtype replaces the earlier one.
   mutableOpaque->subTypeRuleIs(
      new BgpParseExtComSubTypeTransOpaqueDefaultGatewayRule(parser->parseControl()));
   EXPECT_EQ(opaque->subTypeRules().size(), 3u);
   // (The default-gateway rule answers with its own kind whatever the subtype.)
   mutableOpaque->subTypeRuleIs(
      new BgpParseExtCommKindSubRule<BgpParseExtComSubTypeTransOpaqueRuleBase,
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

} // namespace
} // namespace Routing::Bgp
