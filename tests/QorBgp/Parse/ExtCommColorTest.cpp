#include "QorBgpCommunity/QorBgp/Parse/ExtCommColor.h"

#include "ExtCommTestSupport.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtComm.h"
#include "QorBgpCommunity/QorBgp/QorBgpTrace.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace Routing::Bgp {
namespace {

using namespace kindTexts;

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
}

TEST(ExtCommColor, PlugInHookTracesAtLevel8) {
   std::vector<std::string> lines;
   auto previous =
      Kiv::traceSinkIs([&](Kiv::TraceFacility const&, unsigned level, std::string_view line) {
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

} // namespace
} // namespace Routing::Bgp
