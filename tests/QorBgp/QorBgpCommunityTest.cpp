#include "QorBgp/QorBgpCommunity.h"

#include "platform/Errors.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>

namespace Routing::Bgp {
namespace {

constexpr U64 rt65000_100 = 0x0002fde800000064;

ExtComm::Ptr plain(U64 word) {
   return extCommFactory(extCommClassificationUnSpecified, ExtCommContent(word));
}

ExtComm::Ptr subtyped(U64 word) {
   ExtComm::Ptr comm = new ExtCommSubtyped(extCommClassificationUnSpecified, ExtCommContent(word));
   comm->hasNotificationActiveIs(true);
   return comm;
}

TEST(ExtCommContent, WordOctetsAndOrder) {
   ExtCommContent c(rt65000_100);
   EXPECT_EQ(c.typeOctet(), 0x00);
   EXPECT_EQ(c.subtypeOctet(), 0x02);
   EXPECT_EQ(c.valueOctet(0), 0xfd);
   EXPECT_EQ(c.valueOctet(5), 0x64);
   // The type octet is most significant, so type 0x00 sorts before type 0x01.
   EXPECT_LT(c, ExtCommContent(0x0102000000010064));
   EXPECT_LT(ExtCommContent(0x00ffffffffffffff), ExtCommContent(0x0100000000000000));
   EXPECT_LT(ExtCommContent(0x7fffffffffffffff), ExtCommContent(0x8000000000000000));
}

TEST(ExtCommContent, StreamFormIsSixteenHexDigitsAndKeepsStreamState) {
   std::ostringstream os;
   os << std::uppercase << std::setfill('*') << std::setw(4) << ExtCommContent(0) << '|'
      << ExtCommContent(0xfedcba9876543210) << '|' << std::setw(4) << std::hex << 255;
   EXPECT_EQ(os.str(), "0x0000000000000000|0xfedcba9876543210|**FF");
}

TEST(ExtCommContent, StrepIsDecimalAndParsesBack) {
   ExtCommContent c(rt65000_100);
   EXPECT_EQ(c.toStrep(), "842122827661412");
   EXPECT_EQ(ExtCommContent::fromStrep(c.toStrep()), c);
   EXPECT_EQ(ExtCommContent::fromStrep("18446744073709551615").word(), ~U64{0});
   for (char const* bad : {"", "-1", "0x12", "18446744073709551616", "12 "}) {
      SCOPED_TRACE(bad);
      EXPECT_THROW(ExtCommContent::fromStrep(bad), Kiv::RangeError);
   }
}

TEST(ExtComm, FactoryBuildsAnOwnedValueWithNotificationOn) {
   ExtComm::Ptr comm = extCommFactory(extCommClassificationRouteTarget, ExtCommContent(rt65000_100));
   EXPECT_EQ(comm->references(), 1u);
   EXPECT_TRUE(comm->hasNotificationActive());
   EXPECT_EQ(comm->classification(), extCommClassificationRouteTarget);
   EXPECT_EQ(comm->getContent().word(), rt65000_100);
   EXPECT_FALSE(comm->isDeduped());
}

TEST(ExtComm, PktTypeFallsBackToUnknownForUnnamedOctets) {
   EXPECT_EQ(plain(0x0700000000000000)->pktType(), extCommPktTypeUnknown);
   EXPECT_EQ(plain(0xff00000000000000)->pktType(), extCommPktTypeUnknown);
   EXPECT_EQ(plain(0x4300000000000000)->pktType(), extCommPktTypeNonTransOpaque);
   EXPECT_EQ(plain(0x8200000000000000)->pktType(), extCommPktTypeTransGenericPart3);
}

TEST(ExtComm, SubtypeIsSpecifiedOnlyForSubtypedValues) {
   EXPECT_TRUE(plain(rt65000_100)->pktSubtype().isUnspecified());
   BgpExtCommPktSubtype sub = subtyped(0x00ff000000000000)->pktSubtype();
   ASSERT_FALSE(sub.isUnspecified());
   EXPECT_EQ(sub.value(), 0xffu);
}

TEST(ExtComm, EqualContentsHashAndCompareEqual) {
   ExtComm::Ptr a = plain(rt65000_100);
   ExtComm::Ptr b = subtyped(rt65000_100);
   ExtComm::Ptr c = plain(rt65000_100 + 1);
   EXPECT_EQ(a->hash(), b->hash());
   EXPECT_TRUE(a->compare(b.get()));
   EXPECT_FALSE(a->compare(c.get()));
   EXPECT_NE(a->hash(), c->hash());
   EXPECT_TRUE(a->compareByContent(ExtCommContent(rt65000_100)));
   EXPECT_FALSE(a->compareByContent(ExtCommContent(0)));
}

TEST(ExtComm, IsBetterThanIsUnsignedWordOrder) {
   ExtComm::Ptr rt = plain(rt65000_100);
   ExtComm::Ptr ip = plain(0x0102000000010064);
   ExtComm::Ptr high = extCommFactory(extCommClassificationRouteTarget,
                                      ExtCommContent(0x8000000000000000));
   EXPECT_TRUE(rt->isBetterThan(ip));
   EXPECT_FALSE(ip->isBetterThan(rt));
   EXPECT_FALSE(rt->isBetterThan(plain(rt65000_100)));
   EXPECT_TRUE(ip->isBetterThan(high));
}

TEST(ExtComm, SubtypeNamesComeFromTheirTypesEnumeration) {
   struct Row {
      U64 word;
      std::string (ExtComm::*name)() const;
      char const* expected;
   };
   Row const rows[] = {
      {0x0002000000000000, &ExtComm::pktSubtypeTransTwoOctetAsString,
       "extCommPktSubtypeTransTwoOctetAsRouteTarget"},
      // 0x14 is named, but it is never a wire subtype of the transitive type.
      {0x0014000000000000, &ExtComm::pktSubtypeTransTwoOctetAsString, "subtype=20"},
      {0x010b000000000000, &ExtComm::pktSubtypeTransIpv4AddressString,
       "extCommPktSubtypeTransIpv4AddressVrfRouteImport"},
      {0x0204000000000000, &ExtComm::pktSubtypeTransFourOctetAsString,
       "extCommPktSubtypeTransFourOctetAsGeneric"},
      {0x030d000000000000, &ExtComm::pktSubtypeTransOpaqueString,
       "extCommPktSubtypeTransOpaqueDefaultGateway"},
      {0x0600000000000000, &ExtComm::pktSubtypeEvpnString, "extCommPktSubtypeEvpnMacMobility"},
      {0x0607000000000000, &ExtComm::pktSubtypeEvpnString, "subtype=7"},
      {0x0800000000000000, &ExtComm::pktSubtypeFlowspecRedirectNexthopString,
       "extCommPktSubtypeFlowspecRedirectNexthop"},
      {0x8009000000000000, &ExtComm::pktSubtypeTransGenericString,
       "extCommPktSubtypeTransGenericFlowspecTrafficRemarking"},
      {0x8108000000000000, &ExtComm::pktSubtypeTransGenericPart2String,
       "extCommPktSubtypeTransGenericPart2FlowspecRedirectIpv4"},
      {0x8208000000000000, &ExtComm::pktSubtypeTransGenericPart3String,
       "extCommPktSubtypeTransGenericPart3FlowspecRedirectAs4Byte"},
      {0x4080000000000000, &ExtComm::pktSubtypeNonTransTwoOctetAsString,
       "extCommPktSubtypeNonTransTwoOctetAsVirtualNetworkIdentifier"},
      {0x4105000000000000, &ExtComm::pktSubtypeNonTransIpv4AddressString, "subtype=5"},
      {0x4204000000000000, &ExtComm::pktSubtypeNonTransFourOctetAsString,
       "extCommPktSubtypeNonTransFourOctetAsGeneric"},
      {0x4300000000000000, &ExtComm::pktSubtypeNonTransOpaqueString,
       "extCommPktSubtypeNonTransOriginValidationState"},
      {0x43ff000000000000, &ExtComm::pktSubtypeNonTransOpaqueString, "subtype=255"},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(row.expected);
      EXPECT_EQ(((*subtyped(row.word)).*row.name)(), row.expected);
   }
   EXPECT_EQ(extCommSubtypeString<BgpExtCommPktSubtypeTransOpaque>(77), "subtype=77");
}

TEST(ExtCommDeathTest, SubtypeNameOfAnotherTypeIsFatal) {
   struct Row {
      std::string (ExtComm::*name)() const;
      char const* message;
   };
   Row const rows[] = {
      {&ExtComm::pktSubtypeTransTwoOctetAsString, "extCommPktTypeTransTwoOctetAs_ == pktType"},
      {&ExtComm::pktSubtypeTransIpv4AddressString, "extCommPktTypeTransIpv4Address_ == pktType"},
      {&ExtComm::pktSubtypeTransFourOctetAsString, "extCommPktTypeTransFourOctetAs_ == pktType"},
      {&ExtComm::pktSubtypeTransOpaqueString, "extCommPktTypeTransOpaque_ == pktType"},
      {&ExtComm::pktSubtypeEvpnString, "extCommPktTypeTransEvpn_ == pktType"},
      {&ExtComm::pktSubtypeFlowspecRedirectNexthopString,
       "extCommPktTypeTransFlowspecRedirectNexthop_ == pktType"},
      {&ExtComm::pktSubtypeTransGenericString, "extCommPktTypeTransGeneric_ == pktType"},
      {&ExtComm::pktSubtypeTransGenericPart2String, "extCommPktTypeTransGenericPart2_ == pktType"},
      {&ExtComm::pktSubtypeTransGenericPart3String, "extCommPktTypeTransGenericPart3_ == pktType"},
      {&ExtComm::pktSubtypeNonTransTwoOctetAsString,
       "extCommPktTypeNonTransTwoOctetAs_ == pktType"},
      {&ExtComm::pktSubtypeNonTransIpv4AddressString,
       "extCommPktTypeNonTransIpv4Address_ == pktType"},
      {&ExtComm::pktSubtypeNonTransFourOctetAsString,
       "extCommPktTypeNonTransFourOctetAs_ == pktType"},
      {&ExtComm::pktSubtypeNonTransOpaqueString, "extCommPktTypeNonTransOpaque_ == pktType"},
   };
   ExtComm::Ptr unknownType = subtyped(0x0700000000000000);
   for (Row const& row : rows) {
      SCOPED_TRACE(row.message);
      EXPECT_DEATH(((*unknownType).*row.name)(),
                   std::string("assertion failed: ") + row.message + "\\(\\)");
   }
}

TEST(ExtCommDeathTest, SubtypeNameOfAPlainValueIsFatal) {
   ExtComm::Ptr comm = plain(rt65000_100);
   EXPECT_DEATH(comm->pktSubtypeTransTwoOctetAsString(),
                "assertion failed: !pktSubtype\\(\\).isUnspecified\\(\\)");
}

} // namespace
} // namespace Routing::Bgp
