#include "QorBgpCommunity/platform/StreamText.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <ostream>
#include <stdexcept>
#include <string>

namespace Kiv {
namespace {

// The thread's stream is reused: what one text does to it must not reach the
// next, a text asked for while printing another must come out whole, and a
// printer that throws must leave the stream usable.
TEST(StreamText, EachTextStartsFromAFreshStreamWhateverTheOneBeforeDid) {
   EXPECT_EQ(streamText([](std::ostream& os) { os << std::hex << std::setfill('*') << std::setw(6) << 255; }),
             "****ff");
   EXPECT_EQ(streamText([](std::ostream& os) { os << std::setw(3) << 255 << ' ' << 1.5; }), "255 1.5");

   std::string const nested = streamText([](std::ostream& os) {
      os << "outer(" << streamText([](std::ostream& inner) { inner << "inner " << 42; }) << ")";
   });
   EXPECT_EQ(nested, "outer(inner 42)");

   EXPECT_THROW(streamText([](std::ostream& os) {
                   os << "half";
                   throw std::runtime_error("printer failed");
                }),
                std::runtime_error);
   std::string const longText(2000, 'x');
   EXPECT_EQ(streamText([&](std::ostream& os) { os << longText << '!'; }), longText + "!");
}

} // namespace
} // namespace Kiv
