#include "QorBgpCommunity/QorBgp/Parse/ExtCommLinkBandwidth.h"

#include "ExtCommTestSupport.h"

namespace Routing::Bgp {
namespace {

using namespace kindTexts;

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
      {0x400400007fc00000, false, true},  // AS 0, NaN
      {0x40040001bf800000, false, false}, // -1
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(testing::Message() << ExtCommContent(row.word));
      auto lbw = extCommLinkBandwidthFactory(content(row.word));
      EXPECT_EQ(lbw->isValid(), row.valid);
      EXPECT_EQ(lbw->isLinkBandwidthWithUnspecifiedAsNumber(), row.unspecifiedAs);
   }
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

TEST(ExtCommLinkBandwidthDeathTest, ComparingWithNothingIsFatal) {
   auto lbw = extCommLinkBandwidthFactory(content(0x4004fde849742400));
   EXPECT_DEATH(lbw->isBetterThan(nullptr), "assertion failed: other");
}

} // namespace
} // namespace Routing::Bgp
