#include "QorBgpCommunity/platform/Ip6Addr.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>

namespace Qornet {
namespace {

using namespace std::string_literals;

TEST(Ip6Addr, TextIsCanonicalAndRoundTrips) {
   struct Row {
      char const* in;
      char const* canonical;
   };
   Row const rows[] = {
      {"::", "::"},
      {"0:0:0:0:0:0:0:1", "::1"},
      {"1::", "1::"},
      {"2001:0DB8:0000:0000:0000:0000:0000:0001", "2001:db8::1"},
      // The longest run is compressed; of equally long ones, the first.
      {"2001:0:0:1:0:0:0:1", "2001:0:0:1::1"},
      {"2001:db8:0:0:1:0:0:1", "2001:db8::1:0:0:1"},
      // A single zero group is never compressed.
      {"2001:db8:0:1:1:1:1:1", "2001:db8:0:1:1:1:1:1"},
      {"::FFFF:c000:0201", "::ffff:192.0.2.1"},
      {"ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff", "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"},
      // The longest text that parses: Ip6Addr::maxStrepLength characters.
      {"0000:0000:0000:0000:0000:ffff:255.255.255.255", "::ffff:255.255.255.255"},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(row.in);
      Ip6Addr addr = Ip6Addr::fromStrep(row.in);
      EXPECT_EQ(addr.toStrep(), row.canonical);
      EXPECT_EQ(Ip6Addr::parse(row.canonical), addr);
      std::ostringstream os;
      os << std::setfill('*') << std::hex << std::setw(50) << addr << '|' << std::setw(3) << 255;
      EXPECT_EQ(os.str(), row.canonical + "|*ff"s);
   }
   // Network order, so bytewise order is numeric order.
   EXPECT_EQ(Ip6Addr::fromStrep("102:304::").bytes()[3], 4);
   EXPECT_LT(Ip6Addr::fromStrep("::ffff"), Ip6Addr::fromStrep("1::"));
}

TEST(Ip6Addr, BadTextIsRejected) {
   for (std::string bad : {""s, " ::1"s, "::1 "s, "2001:db8::g"s, "1:2:3:4:5:6:7:8:9"s,
                           "1::2::3"s, ":::"s, "12345::"s, "192.0.2.1"s, "fe80::1%eth0"s,
                           "2001:db8::/32"s, "::ffff:1.2.3.256"s, "::1\0junk"s,
                           "0000:0000:0000:0000:0000:ffff:255.255.255.255:"s}) {
      SCOPED_TRACE(bad);
      EXPECT_EQ(Ip6Addr::parse(bad), std::nullopt);
      EXPECT_THROW(Ip6Addr::fromStrep(bad), Kiv::RangeError);
   }
   try {
      Ip6Addr::fromStrep("::g");
   } catch (Kiv::RangeError const& e) {
      EXPECT_STREQ(e.what(), "not an IPv6 address: '::g'");
   }
}

} // namespace
} // namespace Qornet
