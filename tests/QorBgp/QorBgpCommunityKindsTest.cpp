#include "QorBgpCommunity/QorBgp/QorBgpCommunityKinds.h"

#include "QorBgpCommunity/QorBgp/Parse/ExtCommRouteOrigin.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommRouteTarget.h"

#include <gtest/gtest.h>

#include <sstream>

namespace Routing::Bgp {
namespace {

using StrepFormat = ExtComm::StrepFormat;

constexpr U32 classificationAndUI = StrepFormat::flagClassification | StrepFormat::flagUI;
constexpr U32 asdotUI = classificationAndUI | StrepFormat::flagAsdot;

ExtCommAsNumber::Ptr asNumber(U64 word, bool fourByteAs) {
   return extCommAsNumberFactory(extCommClassificationUnSpecified, ExtCommContent(word),
                                 fourByteAs);
}

TEST(ExtCommAsNumber, AsdotOnlyForFourOctetAsAbove65535) {
   struct Row {
      U64 word;
      bool fourByteAs;
      char const* plain;
      char const* asdot;
   };
   Row const rows[] = {
      {0x0205fa56ea000064, true, "4200000000", "64086.59904"},
      {0x0205000100000000, true, "65536", "1.0"},
      {0x0205ffffffff0000, true, "4294967295", "65535.65535"},
      {0x02050000ffff0000, true, "65535", "65535"},
      {0x0205000000000000, true, "0", "0"},
      {0x0005ffff00000000, false, "65535", "65535"},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(row.asdot);
      auto comm = asNumber(row.word, row.fourByteAs);
      EXPECT_EQ(comm->formatAsNumber(false), row.plain);
      EXPECT_EQ(comm->formatAsNumber(true), row.asdot);
   }
}

// The parser's fallbacks for subtypes no kind recognises: a decoded UI text,
// but no policy text, so that policy never matches them by text.
TEST(ExtCommAdminPairFallbacks, Texts) {
   struct Row {
      ExtComm::Ptr comm;
      U32 format;
      char const* text;
   };
   Row const rows[] = {
      {asNumber(0x0005fde800000064, false), classificationAndUI, "0005:65000:100"},
      {asNumber(0x0005fde800000064, false), StrepFormat::flagClassification, ""},
      {asNumber(0x0005fde800000064, false), 0, ""},
      {asNumber(0x4204fa56ea000007, true), classificationAndUI, "0204(NT):4200000000:7"},
      {asNumber(0x4204fa56ea000007, true), asdotUI, "0204(NT):64086.59904:7"},
      {extCommIpv4AddressFactory(extCommClassificationUnSpecified,
                                 ExtCommContent(0x0105c00002010064)),
       classificationAndUI, "0105:192.0.2.1:100"},
      {extCommIpv4AddressFactory(extCommClassificationUnSpecified,
                                 ExtCommContent(0x4177ffffffffffff)),
       asdotUI, "0177(NT):255.255.255.255:65535"},
      {extCommIpv4AddressFactory(extCommClassificationUnSpecified,
                                 ExtCommContent(0x0105c00002010064)),
       StrepFormat::flagClassification, ""},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(testing::Message() << row.comm->getContent() << " format " << row.format);
      EXPECT_EQ(row.comm->toStrepForPolicy(StrepFormat(row.format)), row.text);
   }
}

TEST(ExtCommAdminPairFallbacks, DiagnosticFormIgnoresTheCallersStreamFlags) {
   struct Row {
      ExtComm::Ptr comm;
      char const* text;
   };
   Row const rows[] = {
      {asNumber(0x0005fde800000064, false),
       "<extCommPktTypeTransTwoOctetAs extCommPktSubtypeTransTwoOctetAsOspfDomainIdentifier "
       "ASN=65000 0x0005fde800000064>"},
      // The diagnostic AS is never asdot.
      {asNumber(0x4277fa56ea000007, true),
       "<extCommPktTypeNonTransFourOctetAs subtype=119 ASN=4200000000 0x4277fa56ea000007>"},
      {extCommIpv4AddressFactory(extCommClassificationUnSpecified,
                                 ExtCommContent(0x0105c00002010064)),
       "<extCommPktTypeTransIpv4Address extCommPktSubtypeTransIpv4AddressOspfDomainIdentifier "
       "192.0.2.1 0x0105c00002010064>"},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(row.text);
      EXPECT_EQ(row.comm->toStrep(), row.text);
      std::ostringstream os;
      os << std::hex << std::uppercase << row.comm << ' ' << 255;
      EXPECT_EQ(os.str(), std::string(row.text) + " FF");
   }
}

TEST(ExtCommAdminPairFallbacks, FactoriesKeepTheClassificationTheyAreGiven) {
   ExtComm::Ptr as = extCommAsNumberFactory(extCommClassificationEvpn,
                                            ExtCommContent(0x0005fde800000064), false);
   ExtComm::Ptr ip = extCommIpv4AddressFactory(extCommClassificationFlowspec,
                                               ExtCommContent(0x0105c00002010064));
   EXPECT_EQ(as->classification(), extCommClassificationEvpn);
   EXPECT_EQ(ip->classification(), extCommClassificationFlowspec);
   EXPECT_EQ(as->fwkType(), "Routing::Bgp::ExtCommAsNumber");
   EXPECT_EQ(ip->fwkType(), "Routing::Bgp::ExtCommIpv4Address");
}

TEST(ExtCommAsNumberDeathTest, AdminPairKindOfAnotherTypeIsFatal) {
   // Only the parser's 0x00 and 0x02 rules build AS route targets and origins.
   auto rt = extCommRouteTargetAsFactory(ExtCommContent(0x4002fde800000064), false);
   auto soo = extCommRouteOriginAsFactory(ExtCommContent(0x0103fde800000064), false);
   EXPECT_DEATH(rt->toStrep(), "assertion failed: 0 && \"unexpected type\"");
   EXPECT_DEATH(soo->toStrep(), "assertion failed: 0 && \"unexpected type\"");
}

} // namespace
} // namespace Routing::Bgp
