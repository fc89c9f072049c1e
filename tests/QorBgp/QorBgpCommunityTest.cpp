#include "QorBgpCommunity/QorBgp/QorBgpCommunity.h"

#include "QorBgpCommunity/platform/Errors.h"
#include "tests/platform/HoardTestSegment.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <typeinfo>

namespace Routing::Bgp {
namespace {

using StrepFormat = ExtComm::StrepFormat;

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
   EXPECT_EQ(c.subtypeOctet(), 0x02);
   EXPECT_EQ(c.valueOctet(0), 0xfd);
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

TEST(ExtCommText, PolicyTextOfAPlainValueIsItsRawOctets) {
   struct Row {
      U64 word;
      char const* text;
   };
   Row const rows[] = {
      {rt65000_100, "0002:0xfd 0xe8 0x00 0x00 0x00 0x64"},
      {0x4300000000000002, "0300(NT):0x00 0x00 0x00 0x00 0x00 0x02"},
      {0x8006000000000000, "8006:0x00 0x00 0x00 0x00 0x00 0x00"},
      // The non-transitive bit shows as (NT), never in the type digits.
      {0x40ff0a0b0c0d0e0f, "00ff(NT):0x0a 0x0b 0x0c 0x0d 0x0e 0x0f"},
      {0xffffffffffffffff, "bfff(NT):0xff 0xff 0xff 0xff 0xff 0xff"},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(row.text);
      EXPECT_EQ(plain(row.word)->toStrepForPolicy(StrepFormat(6)), row.text);
      EXPECT_EQ(plain(row.word)->toStrepForPolicy(StrepFormat(63)), row.text);
      EXPECT_EQ(plain(row.word)->toStrepForUI(true, true, true), row.text);
   }
}

TEST(ExtCommText, PolicyTextNeedsBothClassificationAndUI) {
   ExtComm::Ptr comm = plain(rt65000_100);
   for (U32 flags : {0u, 1u, 2u, 4u, 8u, 16u, 32u, 59u, 61u}) {
      SCOPED_TRACE(flags);
      EXPECT_EQ(comm->toStrepForPolicy(StrepFormat(flags)), "");
   }
}

TEST(ExtCommText, DiagnosticForm) {
   struct Row {
      ExtComm::Ptr comm;
      char const* text;
   };
   Row const rows[] = {
      {plain(rt65000_100), "<extCommPktTypeTransTwoOctetAs 0x0002fde800000064>"},
      {subtyped(rt65000_100),
       "<extCommPktTypeTransTwoOctetAs extCommPktSubtypeTransTwoOctetAsRouteTarget "
       "0x0002fde800000064>"},
      {subtyped(0x0401000000000000), "<extCommPktTypeTransQosMarking none 0x0401000000000000>"},
      {subtyped(0x4105000000000000),
       "<extCommPktTypeNonTransIpv4Address subtype=5 0x4105000000000000>"},
      {subtyped(0x0714000000000000), "<extCommPktTypeUnknown none 0x0714000000000000>"},
      {plain(0), "<extCommPktTypeTransTwoOctetAs 0x0000000000000000>"},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(row.text);
      EXPECT_EQ(row.comm->toStrep(), row.text);
      std::ostringstream os;
      os << row.comm;
      EXPECT_EQ(os.str(), row.text);
   }
}

TEST(ExtCommText, StreamOutputHandlesNullAndKeepsTheCallersFormat) {
   std::ostringstream os;
   ExtComm::PtrConst none;
   os << none << ' ' << static_cast<ExtComm const*>(nullptr) << ' ';
   os << std::hex << std::showbase << std::setfill('#') << std::setw(6);
   os << subtyped(0x0401000000000000) << ' ' << std::setw(6) << 255;
   EXPECT_EQ(os.str(), "NULL NULL <extCommPktTypeTransQosMarking none 0x0401000000000000> ##0xff");
}

TEST(ExtCommText, TypeAsStringAppendsToTheBuffer) {
   Kiv::DynamicBuffer<8> buffer;
   buffer.append("x=");
   addExtCommTypeAsString(buffer, ":sfx", 0x43, 0x0b, false);
   EXPECT_EQ(buffer.view(), "x=030b:sfx(NT)");
   EXPECT_EQ(extCommTypeAsString("", 0x80, 0x06, true), "8006");
   // The caller decides transitivity; the bit is only ever cleared from the digits.
   EXPECT_EQ(extCommTypeAsString("", 0x43, 0x00, true), "0300");
   EXPECT_EQ(extCommTypeAsString("", 0x00, 0x00, false), "0000(NT)");
}

TEST(ExtCommStrepFormat, RangeIsSixBits) {
   try {
      StrepFormat(64);
      FAIL() << "64 accepted";
   } catch (Kiv::RangeError const& e) {
      EXPECT_STREQ(e.what(), "ExtComm::StrepFormat 64 > 63 not allowed");
   }
}

TEST(ExtCommStrepFormat, ReflectionText) {
   EXPECT_EQ(StrepFormat(StrepFormat::flagUI | StrepFormat::flagLinkBwWeighted).valueToStrep(),
             "Value('Routing::Bgp::ExtComm::StrepFormat', ** {'strepFormatDefault': False, "
             "'strepFormatClassification': False, 'strepFormatUI': True, 'strepFormatJson': "
             "False, 'strepFormatAsdot': False, 'strepFormatLinkBwWeighted': True})");
}

TEST(ExtCommDehoard, RestoresAPlainDetachedValue) {
   HoardTestSegment segment(true);
   hoard::StoreWriter writer = segment.create(1 << 16);
   hoard::Location rt =
      writer.publish(hoard::ExtCommRecord{extCommClassificationRouteTarget, 0, 0x0002fde800000064});
   hoard::Location bogus = writer.publish(hoard::ExtCommRecord{77, 0, 1});
   hoard::Location reserved = writer.publish(hoard::ExtCommRecord{1, 1, 0x0002fde800000064});
   hoard::StoreManager store = segment.open();

   ExtComm::PtrConst restored = ExtComm::dehoard(&rt, &store);
   ASSERT_TRUE(restored);
   EXPECT_EQ(typeid(*restored), typeid(ExtComm)); // plain, whatever the classification
   EXPECT_EQ(restored->classification(), extCommClassificationRouteTarget);
   EXPECT_EQ(restored->getContent().word(), 0x0002fde800000064u);
   EXPECT_EQ(restored->dedupState(), Zup::DedupState::detached);
   EXPECT_FALSE(restored->isDeduped());
   EXPECT_TRUE(restored->hasNotificationActive());

   // A classification that is none, or a reserved word set, is a corrupt record.
   EXPECT_FALSE(ExtComm::dehoard(&bogus, &store));
   EXPECT_FALSE(ExtComm::dehoard(&reserved, &store));

   // A read while the writer is changing the store does not validate.
   writer.beginChange();
   EXPECT_FALSE(ExtComm::dehoard(&rt, &store));
   writer.endChange();
   EXPECT_TRUE(ExtComm::dehoard(&rt, &store));

   hoard::Location outside(1 << 20);
   EXPECT_THROW(ExtComm::dehoard(&outside, &store), Kiv::RangeError);
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
