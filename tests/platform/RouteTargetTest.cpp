#include "QorBgpCommunity/platform/RouteTarget.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

#include <functional>
#include <iomanip>
#include <sstream>

namespace Routing::Bgp {
namespace {

using namespace std::string_view_literals;

TEST(RouteTarget, EveryTextParsesBackToTheSameWord) {
   struct Row {
      U64 word;
      char const* plain;
      char const* asdot;
   };
   Row const rows[] = {
      {0x0002fde800000064, "65000:100", "65000:100"},
      {0x0002ffffffffffff, "65535:4294967295", "65535:4294967295"},
      {0x0102c00002010005, "192.0.2.1:5", "192.0.2.1:5"},
      {0x0102ffffffffffff, "255.255.255.255:65535", "255.255.255.255:65535"},
      {0x0202fa56ea000007, "4200000000:7", "64086.59904:7"},
      {0x0202000100000000, "65536:0", "1.0:0"},
      // A four-octet AS below 65536 is marked, or it would read back as type 0x00.
      {0x020200000064000a, "100L:10", "100L:10"},
      // Words that are no route target keep every bit.
      {0x0003fde800000064, "0x0003fde800000064", "0x0003fde800000064"},
      {0x0302000000000001, "0x0302000000000001", "0x0302000000000001"},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(row.plain);
      RouteTarget const rt(row.word);
      EXPECT_EQ(rt.toStrep(false), row.plain);
      EXPECT_EQ(rt.toStrep(true), row.asdot);
      EXPECT_EQ(RouteTarget::parse(row.plain), rt);
      EXPECT_EQ(RouteTarget::parse(row.asdot), rt);
      EXPECT_EQ(std::hash<RouteTarget>{}(rt), std::hash<RouteTarget>{}(RouteTarget(row.word)));
   }
   EXPECT_EQ(RouteTarget::parse("0.100:10"), RouteTarget::fourOctetAs(100, 10));
   EXPECT_EQ(RouteTarget::parse("0x0002FDE800000064"), RouteTarget::twoOctetAs(65000, 100));
   EXPECT_LT(RouteTarget::twoOctetAs(65535, 1), RouteTarget::ipv4Address(0, 0));
   std::ostringstream os;
   os << std::hex << std::setw(30) << RouteTarget::twoOctetAs(10, 20) << '|' << 255;
   EXPECT_EQ(os.str(), "10:20|ff");
}

TEST(RouteTarget, BadTextIsRejected) {
   for (std::string_view text : {"65000"sv, "65000:"sv, ":1"sv, " 1:2"sv, "1:2 "sv, "-1:2"sv,
                                 "1:2:3"sv, "65000:4294967296"sv, "65536:65536"sv, "4294967296:1"sv,
                                 "100L:65536"sv, "100l:1"sv, "L:1"sv, "4294967296L:1"sv, "1.:1"sv,
                                 "65536.0:1"sv, "0.65536:1"sv, "1.0:65536"sv, "1.2.3:4"sv,
                                 "1.2.3.256:1"sv, "1.2.3.4.5:1"sv, "192.0.2.1:65536"sv, "0x"sv,
                                 "0x00000000000000001"sv, "0x1g"sv, "0X1"sv, ""sv}) {
      SCOPED_TRACE(text);
      EXPECT_EQ(RouteTarget::parse(text), std::nullopt);
   }
   try {
      RouteTarget::fromStrep("65000");
      ADD_FAILURE() << "no error";
   } catch (Kiv::RangeError const& e) {
      EXPECT_STREQ(e.what(), "invalid RouteTarget text '65000'");
   }
}

} // namespace
} // namespace Routing::Bgp
