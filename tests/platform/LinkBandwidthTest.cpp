#include "QorBgpCommunity/platform/LinkBandwidth.h"

#include <gtest/gtest.h>

#include <limits>

namespace Rib {
namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float inf = std::numeric_limits<float>::infinity();

TEST(LinkBandwidth, ValidMeansFiniteAndNotNegative) {
   for (float bytes : {0.0f, -0.0f, 1e-40f, 1.0f, 3.4e38f}) {
      SCOPED_TRACE(bytes);
      EXPECT_TRUE(LinkBandwidth(bytes).isValid());
   }
   for (float bytes : {nan, -nan, inf, -inf, -1e-40f, -1.0f}) {
      SCOPED_TRACE(bytes);
      EXPECT_FALSE(LinkBandwidth(bytes).isValid());
   }
}

TEST(LinkBandwidth, PlainTextIsScaledBitsPerSecondWeightedTextIsTheNumber) {
   struct Row {
      float bytesPerSecond;
      char const* plain;
      char const* weighted;
   };
   Row const rows[] = {
      {0.0f, "0bps", "0"},
      {-0.0f, "0bps", "0"},
      {1e-40f, "0bps", "0.0000000000000000000000000000000000000001"},
      {0.1f, "0.8bps", "0.1"},
      {124.0f, "992bps", "124"},
      {125.0f, "1Kbps", "125"},
      // 999.9968 bit/s rounds to 1000 bps: it moves to the next unit.
      {124.9996f, "1Kbps", "124.9996"},
      {187500.0f, "1.5Mbps", "187500"},
      {1234567.0f, "9.88Mbps", "1234567"},
      {1.25e9f, "10Gbps", "1250000000"},
      {1.25e11f, "1Tbps", "125000000000"},
      // Tbps is the largest unit.
      {1.25e14f, "1000Tbps", "125000000000000"},
      {nan, "invalid", "invalid"},
      {inf, "invalid", "invalid"},
      {-inf, "invalid", "invalid"},
      {-1.0f, "invalid", "invalid"},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(row.plain);
      LinkBandwidth bw(row.bytesPerSecond);
      EXPECT_EQ(bw.toStrep(), row.plain);
      EXPECT_EQ(bw.toStrepWeighted(), row.weighted);
      EXPECT_EQ(bw.toStrep(false), row.plain);
      EXPECT_EQ(bw.toStrep(true), row.weighted);
   }
}

TEST(LinkBandwidth, LargestFloatRendersInFull) {
   LinkBandwidth bw(std::numeric_limits<float>::max());
   EXPECT_EQ(bw.toStrepWeighted(), "340282350000000000000000000000000000000");
   EXPECT_EQ(bw.toStrep(), "2722258773108230922340139008Tbps");
}

} // namespace
} // namespace Rib
