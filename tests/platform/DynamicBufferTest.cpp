#include "QorBgpCommunity/platform/DynamicBuffer.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

namespace {

TEST(DynamicBuffer, StaysInlineUntilFullThenMovesToTheHeapKeepingContent) {
   // Both append paths cross the boundary: a char and a string.
   for (std::string_view more : {"8", "89"}) {
      SCOPED_TRACE(more);
      Kiv::DynamicBuffer<8> buf;
      buf.append("0123456");
      buf.append('7');
      EXPECT_FALSE(buf.onHeap());
      EXPECT_EQ(buf.view(), "01234567");
      if (more.size() == 1) {
         buf.append(more[0]);
      } else {
         buf.append(more);
      }
      EXPECT_TRUE(buf.onHeap());
      EXPECT_GE(buf.capacity(), 16u);
      std::string expected = "01234567" + std::string(more);
      EXPECT_EQ(buf.str(), expected);

      // Growing again on the heap, by more than doubling.
      buf.append(std::string(40, 'x'));
      EXPECT_EQ(buf.str(), expected + std::string(40, 'x'));
   }
}

TEST(DynamicBuffer, AppendingEmptyOrItsOwnContent) {
   Kiv::DynamicBuffer<4> buf;
   buf.append(std::string_view());
   buf.append("abcd");
   buf.append(std::string_view());
   EXPECT_FALSE(buf.onHeap());
   buf.append(buf.view());
   EXPECT_EQ(buf.view(), "abcdabcd");
   buf.append(buf.view()); // this time the heap storage itself is replaced
   EXPECT_EQ(buf.view(), "abcdabcdabcdabcd");
}

TEST(DynamicBuffer, HexAndDecimalDigitsFillAnExactBuffer) {
   for (auto [octet, hex] : {std::pair<U8, std::string_view>{0x00, "00"}, {0x0a, "0a"},
                             {0xf0, "f0"}, {0xff, "ff"}}) {
      SCOPED_TRACE(hex);
      Kiv::DynamicBuffer<2> buf;
      buf.appendHex2(octet);
      EXPECT_EQ(buf.view(), hex);
      EXPECT_FALSE(buf.onHeap());
   }
   for (auto [value, text] : {std::pair<U64, std::string_view>{0, "0"}, {10, "10"},
                              {std::numeric_limits<U64>::max(), "18446744073709551615"}}) {
      SCOPED_TRACE(text);
      Kiv::DynamicBuffer<20> buf;
      buf.appendDecimal(value);
      EXPECT_EQ(buf.view(), text);
      EXPECT_FALSE(buf.onHeap());
   }
}

TEST(DynamicBuffer, ResizeGrowsKeepingThePrefixAndShrinks) {
   Kiv::DynamicBuffer<4> buf;
   buf.append("abc");
   buf.resize(4);
   EXPECT_FALSE(buf.onHeap());
   buf.resize(3);
   buf.resize(100);
   EXPECT_TRUE(buf.onHeap());
   EXPECT_GE(buf.capacity(), 100u);
   EXPECT_EQ(buf.size(), 100u);
   EXPECT_EQ(buf.view().substr(0, 3), "abc");
   buf.resize(2);
   EXPECT_EQ(buf.view(), "ab");
}

} // namespace
