#include "QorBgpCommunity/QorBgp/RouteTargetPrefix.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

#include <string>

namespace Routing::Bgp {
namespace {

constexpr char lengthError[] = "RouteTargetPrefix::length < 0 or > 64 not allowed";
constexpr U64 word = 0x0002fde800000064; // 65000:100

TEST(RouteTargetPrefix, BitlenIsMasksTheStoredPrefix) {
   struct Row {
      unsigned bitlen;
      U64 mask;
      char const* text;
   };
   Row const rows[] = {
      {64, ~U64{0}, "65000:100/64"},
      {32, 0xffffffff00000000, "65000:0/32"},
      {1, 0x8000000000000000, "0x0000000000000000/1"},
      {0, 0, "0/0"},
   };
   RouteTargetPrefix p(RouteTarget(word), 64);
   for (Row const& row : rows) {
      SCOPED_TRACE(row.bitlen);
      p.bitlenIs(row.bitlen);
      EXPECT_EQ(p.bitlen(), row.bitlen);
      EXPECT_EQ(p.mask(), row.mask);
      EXPECT_EQ(p.prefixBits(), word & row.mask);
      EXPECT_EQ(p.toStrep(), row.text);
   }
   EXPECT_EQ(RouteTargetPrefix(RouteTarget::fourOctetAs(4200000000, 7), 48).toStrep(true),
             "64086.59904:0/48");
}

TEST(RouteTargetPrefix, RejectedLengthStaysStoredAndLeavesThePrefixUnmasked) {
   for (unsigned bitlen : {65u, 255u}) {
      SCOPED_TRACE(bitlen);
      RouteTargetPrefix p(RouteTarget(word), 64);
      try {
         p.bitlenIs(bitlen);
         ADD_FAILURE() << "no error";
      } catch (Kiv::RangeError const& e) {
         EXPECT_STREQ(e.what(), lengthError);
      }
      EXPECT_EQ(p.bitlen(), bitlen);
      EXPECT_EQ(p.prefixBits(), word);
   }
   RouteTargetPrefix p;
   EXPECT_DEATH(p.bitlenIs(256), "assertion failed: 0 == \\( bitlen >> 8 \\)");
}

TEST(RouteTargetPrefix, BitsAndCommonPrefixLength) {
   RouteTargetPrefix const top(RouteTarget(0x8000000000000001), 64);
   EXPECT_TRUE(top.extractBit(0));
   EXPECT_FALSE(top.extractBit(1));
   EXPECT_TRUE(top.extractBit(63));

   RouteTargetPrefix const p16(RouteTarget(word), 16), p24(RouteTarget(word), 24);
   EXPECT_EQ(p16.commonPrefixLen(p24), 16u);
   EXPECT_EQ(p24.commonPrefixLen(p16), 16u);
   EXPECT_EQ(top.commonPrefixLen(RouteTargetPrefix(RouteTarget(1), 64)), 0u);
   EXPECT_EQ(top.commonPrefixLen(RouteTargetPrefix(RouteTarget(0x8000000000000003), 64)), 62u);
}

TEST(RouteTargetPrefix, OrderIsPrefixThenLengthAndHashFollowsEquality) {
   RouteTarget const rt16(0x0002000000000000);
   RouteTargetPrefix const a(rt16, 16), b(rt16, 24), c(RouteTarget(0x0102000000000000), 8);
   EXPECT_LT(a, b);
   EXPECT_LT(b, c);
   RouteTargetPrefix const masked(RouteTarget(word), 16);
   EXPECT_EQ(a, masked);
   EXPECT_EQ(a.hash(3), masked.hash(3));
   EXPECT_NE(a.hash(3), b.hash(3));
}

TEST(RouteTargetPrefix, ValueTextRoundTripsAndRejectsBadFields) {
   RouteTargetPrefix const p(RouteTarget::ipv4Address(0xc0000201, 5), 48);
   std::string const head = "Value('Routing::Bgp::RouteTargetPrefix', ** {'prefix': ";
   EXPECT_EQ(valueToStrep(p), head + "192.0.2.1:0, 'length': 48})");
   EXPECT_EQ(RouteTargetPrefix(valueToStrep(p)), p);
   EXPECT_EQ(RouteTargetPrefix(head + "192.0.2.1:5, 'length': 48})"), p); // masked on reading

   struct Row {
      char const* fields;
      std::string error;
   };
   Row const rows[] = {
      {"65000:100, 'length': 65})", lengthError},
      {"65000:100, 'length': 256})", lengthError},
      {"65000, 'length': 8})", "malformed value text of Routing::Bgp::RouteTargetPrefix: field "
                               "'prefix' is not a route target: 65000"},
   };
   for (Row const& row : rows) {
      try {
         RouteTargetPrefix{head + row.fields};
         ADD_FAILURE() << "no error for " << row.fields;
      } catch (Kiv::RangeError const& e) {
         EXPECT_EQ(e.what(), row.error);
      }
   }
}

} // namespace
} // namespace Routing::Bgp
