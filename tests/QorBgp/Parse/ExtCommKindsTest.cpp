#include "QorBgp/Parse/ExtCommColor.h"
#include "QorBgp/Parse/ExtCommDefaultGateway.h"
#include "QorBgp/Parse/ExtCommLinkBandwidth.h"
#include "QorBgp/Parse/ExtCommOriginValidationState.h"
#include "QorBgp/Parse/ExtCommRouteOrigin.h"
#include "QorBgp/Parse/ExtCommRouteTarget.h"
#include "QorBgp/Parse/ExtCommTunnelEncap.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace Routing::Bgp {
namespace {

using StrepFormat = ExtComm::StrepFormat;

// Formats of the rows below; `diagnostic` asks for toStrep() instead.
constexpr U32 plain = 0;
constexpr U32 classified = StrepFormat::flagClassification;
constexpr U32 ui = classified | StrepFormat::flagUI;
constexpr U32 asdot = StrepFormat::flagAsdot;
constexpr U32 weighted = StrepFormat::flagLinkBwWeighted;
constexpr U32 everyFlag = StrepFormat::allFlags;
constexpr U32 diagnostic = ~0u;

struct Row {
   ExtComm::PtrConst comm;
   U32 format;
   char const* text;
};

void expectTexts(std::initializer_list<Row> rows) {
   for (Row const& row : rows) {
      SCOPED_TRACE(testing::Message() << row.comm->getContent() << " format " << row.format);
      std::string text = row.format == diagnostic
                            ? row.comm->toStrep()
                            : row.comm->toStrepForPolicy(StrepFormat(row.format));
      EXPECT_EQ(text, row.text);
   }
}

ExtCommContent content(U64 word) { return ExtCommContent(word); }

TEST(ExtCommRouteTarget, Texts) {
   auto rt2 = extCommRouteTargetAsFactory(content(0x0002fde800000064), false);
   auto rt4 = extCommRouteTargetAsFactory(content(0x0202fa56ea000064), true);
   auto rtMax = extCommRouteTargetAsFactory(content(0x0002ffffffffffff), false);
   auto rtIp = extCommRouteTargetIpv4AddressFactory(content(0x0102c00002010064));
   expectTexts({
      {rt2, diagnostic, "<RouteTarget2ByteASN 65000:100 0x0002fde800000064>"},
      {rt2, plain, "65000:100"},
      {rt2, StrepFormat::flagDefault, "65000:100"},
      {rt2, classified, "RT:65000:100"},
      {rt2, ui, "Route-Target-AS:65000:100"},
      {rt2, ui | asdot, "Route-Target-AS:65000:100"},
      {rtMax, classified, "RT:65535:4294967295"},
      {rt4, diagnostic, "<RouteTarget4ByteASN 4200000000:100 0x0202fa56ea000064>"},
      {rt4, plain, "4200000000:100"},
      {rt4, asdot, "64086.59904:100"},
      {rt4, classified | asdot, "RT:64086.59904:100"},
      {rt4, ui, "Route-Target-AS4:4200000000:100"},
      {rt4, everyFlag, "Route-Target-AS4:64086.59904:100"},
      {rtIp, diagnostic, "<RouteTarget 192.0.2.1:100 0x0102c00002010064>"},
      {rtIp, plain, "192.0.2.1:100"},
      {rtIp, classified, "RT:192.0.2.1:100"},
      {rtIp, everyFlag, "Route-Target-IP:192.0.2.1:100"},
   });
}

TEST(ExtCommRouteOrigin, Texts) {
   auto soo2 = extCommRouteOriginAsFactory(content(0x0003fde800000064), false);
   auto soo4 = extCommRouteOriginAsFactory(content(0x0203000100000007), true);
   auto sooIp = extCommRouteOriginIpv4AddressFactory(content(0x01030a000001ffff));
   expectTexts({
      {soo2, diagnostic, "<RouteOrigin2ByteASN 65000:100 0x0003fde800000064>"},
      {soo2, plain, "65000:100"},
      {soo2, classified, "SoO:65000:100"},
      {soo2, ui, "Route-Origin-AS:65000:100"},
      {soo4, diagnostic, "<RouteOrigin4ByteASN 65536:7 0x0203000100000007>"},
      {soo4, classified | asdot, "SoO:1.0:7"},
      {soo4, ui, "Route-Origin-AS4:65536:7"},
      {sooIp, diagnostic, "<RouteOrigin 10.0.0.1:65535 0x01030a000001ffff>"},
      {sooIp, plain, "10.0.0.1:65535"},
      {sooIp, classified, "SoO:10.0.0.1:65535"},
      {sooIp, ui, "Route-Origin-IP:10.0.0.1:65535"},
   });
}

TEST(ExtCommKindsDeathTest, BrokenPreconditionsAreFatal) {
   // Only the parser's 0x00 and 0x02 rules build AS route targets and origins.
   auto rt = extCommRouteTargetAsFactory(content(0x4002fde800000064), false);
   auto soo = extCommRouteOriginAsFactory(content(0x0103fde800000064), false);
   EXPECT_DEATH(rt->toStrep(), "assertion failed: 0 && \"unexpected type\"");
   EXPECT_DEATH(soo->toStrep(), "assertion failed: 0 && \"unexpected type\"");
   auto lbw = extCommLinkBandwidthFactory(content(0x4004fde849742400));
   EXPECT_DEATH(lbw->isBetterThan(nullptr), "assertion failed: other");
}

// 1.25e9 bytes/s (10 Gbit/s) is 0x4e9502f9; 1e6 is 0x49742400; NaN 0x7fc00000.
TEST(ExtCommLinkBandwidth, Texts) {
   auto lbw = extCommLinkBandwidthFactory(content(0x4004fde84e9502f9));
   auto mbyte = extCommLinkBandwidthFactory(content(0x4004000149742400));
   auto nan = extCommLinkBandwidthFactory(content(0x400400007fc00000));
   expectTexts({
      {lbw, diagnostic, "<LinkBandwidth 65000:1.25e+09 0x4004fde84e9502f9>"},
      {lbw, plain, "65000:1.25e+09"},
      {lbw, classified, "lbw 65000:1.25e+09"},
      {lbw, classified | weighted, "lbw 65000:1.25e+09"},
      {lbw, ui, "Link-Bandwidth-AS:65000:10Gbps"},
      {lbw, ui | weighted, "Link-Bandwidth-AS:65000:1250000000"},
      {lbw, everyFlag, "Link-Bandwidth-AS:65000:1250000000"},
      {mbyte, diagnostic, "<LinkBandwidth 1:1e+06 0x4004000149742400>"},
      {mbyte, ui, "Link-Bandwidth-AS:1:8Mbps"},
      {nan, diagnostic, "<LinkBandwidth 0:nan 0x400400007fc00000>"},
      {nan, classified, "lbw 0:nan"},
      {nan, ui, "Link-Bandwidth-AS:0:invalid"},
      {nan, ui | weighted, "Link-Bandwidth-AS:0:invalid"},
   });
}

TEST(ExtCommLinkBandwidth, ValidityAndUnspecifiedAs) {
   struct Row {
      U64 word;
      bool valid;
      bool unspecifiedAs;
   };
   Row const rows[] = {
      {0x4004fde84e9502f9, true, false},
      {0x4004000000000000, true, true},   // AS 0, bandwidth 0
      {0x4004000180000000, true, false},  // -0
      {0x400400007fc00000, false, true},  // NaN
      {0x40040001ff800000, false, false}, // -inf
      {0x40040001bf800000, false, false}, // -1
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(testing::Message() << ExtCommContent(row.word));
      auto lbw = extCommLinkBandwidthFactory(content(row.word));
      EXPECT_EQ(lbw->isValid(), row.valid);
      EXPECT_EQ(lbw->isLinkBandwidthWithUnspecifiedAsNumber(), row.unspecifiedAs);
      EXPECT_FALSE(lbw->fourByteAs());
   }
   auto tenGbps = extCommLinkBandwidthFactory(content(0x4004fde84e9502f9));
   EXPECT_EQ(tenGbps->bandwidth().bytesPerSecond(), 1.25e9f);
}

TEST(ExtCommLinkBandwidth, SmallerBandwidthIsBetter) {
   ExtComm::PtrConst oneMbyte = extCommLinkBandwidthFactory(content(0x4004fde849742400));
   // 2e6 under a smaller AS: the AS takes no part, unlike in the content order.
   ExtComm::PtrConst twoMbyte = extCommLinkBandwidthFactory(content(0x4004000149f42400));
   ExtComm::PtrConst oneMbyteToo = extCommLinkBandwidthFactory(content(0x4004000249742400));
   EXPECT_TRUE(oneMbyte->isBetterThan(twoMbyte));
   EXPECT_FALSE(twoMbyte->isBetterThan(oneMbyte));
   EXPECT_FALSE(oneMbyte->isBetterThan(oneMbyteToo));
   EXPECT_FALSE(oneMbyteToo->isBetterThan(oneMbyte));
}

TEST(ExtCommColor, Texts) {
   auto color = extCommColorFactory(content(0x030b000000000064));
   auto co01 = extCommColorFactory(content(0x030b400000000064));
   auto co10 = extCommColorFactory(content(0x030b800000000000));
   // Bits 45-32 are reserved and show nowhere.
   auto co11 = extCommColorFactory(content(0x030bffffffffffff));
   expectTexts({
      {color, diagnostic, "<Color: 100(00) 0x030b000000000064>"},
      {color, plain, "Color:CO(00):100"},
      {color, ui, "Color:CO(00):100"},
      {color, everyFlag, "Color:CO(00):100"},
      {co01, diagnostic, "<Color: 100(01) 0x030b400000000064>"},
      {co01, ui, "Color:CO(01):100"},
      {co10, diagnostic, "<Color: 0(10) 0x030b800000000000>"},
      {co10, classified, "Color:CO(10):0"},
      {co11, diagnostic, "<Color: 4294967295(11) 0x030bffffffffffff>"},
      {co11, ui, "Color:CO(11):4294967295"},
   });
   EXPECT_EQ(co01->colorOnlyBits(), 1);
   EXPECT_EQ(co10->colorOnlyBits(), 2);
   EXPECT_EQ(co11->colorValue(), 0xffffffffu);
}

TEST(ExtCommTunnelEncap, Texts) {
   auto vxlan = extCommTunnelEncapFactory(content(0x030c000000000008));
   // Only the last two value octets are the tunnel type.
   auto geneve = extCommTunnelEncapFactory(content(0x030cffffffff0013));
   auto reserved = extCommTunnelEncapFactory(content(0x030c000000000000));
   auto unassigned = extCommTunnelEncapFactory(content(0x030c00000000ffff));
   expectTexts({
      {vxlan, diagnostic, "<TunnelEncap 8:tunnelTypeVxlan 0x030c000000000008>"},
      {vxlan, plain, "tunnelTypeVxlan"},
      {vxlan, classified, "TunnelEncap:tunnelTypeVxlan"},
      {vxlan, ui, "TunnelEncap:tunnelTypeVxlan"},
      {geneve, diagnostic, "<TunnelEncap 19:tunnelTypeGeneve 0x030cffffffff0013>"},
      {reserved, diagnostic, "<TunnelEncap 0:tunnelTypeUnknown 0x030c000000000000>"},
      {reserved, plain, "tunnelTypeUnknown-0"},
      {unassigned, diagnostic, "<TunnelEncap 65535:tunnelTypeUnknown 0x030c00000000ffff>"},
      {unassigned, ui, "TunnelEncap:tunnelTypeUnknown-65535"},
   });
   EXPECT_EQ(geneve->tunnelType(), tunnelTypeGeneve);
   EXPECT_EQ(unassigned->tunnelType(), static_cast<TunnelType>(65535));
}

TEST(ExtCommOriginValidationState, Texts) {
   using State = OriginValidationState;
   auto state = [](State s) {
      return extCommOriginValidationStateFactory(
         ExtCommOriginValidationState::buildExtCommContent(s));
   };
   auto octet3 = extCommOriginValidationStateFactory(content(0x4300000000000003));
   auto octet255 = extCommOriginValidationStateFactory(content(0x43000000000000ff));
   expectTexts({
      {state(State::valid), diagnostic, "<OriginValidationState valid 0x4300000000000000>"},
      {state(State::valid), ui, "Origin-Validation-State:valid"},
      {state(State::valid), classified, ""},
      {state(State::valid), plain, ""},
      {state(State::notFound), diagnostic,
       "<OriginValidationState not-found 0x4300000000000001>"},
      {state(State::notFound), everyFlag, "Origin-Validation-State:not-found"},
      {state(State::invalid), diagnostic, "<OriginValidationState invalid 0x4300000000000002>"},
      {state(State::invalid), ui, "Origin-Validation-State:invalid"},
      {octet3, diagnostic, "<OriginValidationState unknown(3) 0x4300000000000003>"},
      {octet3, ui, "Origin-Validation-State:unknown"},
      {octet3, classified, ""},
      {octet255, diagnostic, "<OriginValidationState unknown(255) 0x43000000000000ff>"},
   });
   EXPECT_EQ(octet3->validationState(), static_cast<State>(3));
   EXPECT_EQ(state(State::invalid)->validationState(), State::invalid);
}

TEST(ExtCommDefaultGateway, Texts) {
   auto gateway = extCommDefaultGatewayFactory(content(0x030d000000000000));
   expectTexts({
      {gateway, diagnostic, "<DefaultGateway 0x030d000000000000>"},
      {gateway, plain, "DefaultGateway"},
      {gateway, ui, "DefaultGateway"},
      {gateway, everyFlag, "DefaultGateway"},
   });
}

TEST(ExtCommKinds, FactoriesFixClassificationAndEnableNotification) {
   struct Row {
      ExtComm::PtrConst comm;
      ExtCommClassification classification;
      char const* fwkType;
   };
   Row const rows[] = {
      {extCommRouteTargetAsFactory(content(0x0002fde800000064), false),
       extCommClassificationRouteTarget, "Routing::Bgp::ExtCommRouteTargetAs"},
      {extCommRouteTargetIpv4AddressFactory(content(0x0102c00002010064)),
       extCommClassificationRouteTarget, "Routing::Bgp::ExtCommRouteTargetIpv4Address"},
      {extCommRouteOriginAsFactory(content(0x0003fde800000064), false),
       extCommClassificationRouteOrigin, "Routing::Bgp::ExtCommRouteOriginAs"},
      {extCommRouteOriginIpv4AddressFactory(content(0x0103c00002010064)),
       extCommClassificationRouteOrigin, "Routing::Bgp::ExtCommRouteOriginIpv4Address"},
      {extCommLinkBandwidthFactory(content(0x4004fde84e9502f9)),
       extCommClassificationLinkBandwidth, "Routing::Bgp::ExtCommLinkBandwidth"},
      {extCommColorFactory(content(0x030b000000000064)), extCommClassificationColor,
       "Routing::Bgp::ExtCommColor"},
      {extCommTunnelEncapFactory(content(0x030c000000000008)), extCommClassificationTunnelEncap,
       "Routing::Bgp::ExtCommTunnelEncap"},
      {extCommOriginValidationStateFactory(content(0x4300000000000000)),
       extCommClassificationOriginValidationState,
       "Routing::Bgp::ExtCommOriginValidationState"},
      {extCommDefaultGatewayFactory(content(0x030d000000000000)),
       extCommClassificationDefaultGateway, "Routing::Bgp::ExtCommDefaultGateway"},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(row.fwkType);
      EXPECT_EQ(row.comm->classification(), row.classification);
      EXPECT_EQ(row.comm->fwkType(), row.fwkType);
      EXPECT_TRUE(row.comm->hasNotificationActive());
      EXPECT_FALSE(row.comm->pktSubtype().isUnspecified());
      EXPECT_FALSE(row.comm->policyMatchStrepUI());
   }
}

} // namespace
} // namespace Routing::Bgp
