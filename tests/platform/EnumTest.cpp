#include "QorBgpCommunity/platform/Enum.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

#include <sstream>

namespace EnumTestTypes {

// 0x100 is named but lies above the member limit, like the Unknown members
// that no wire octet can equal.
#define ENUM_TEST_SHADE_LIST(X)                                                          \
   X(shadeNone, 0)                                                                       \
   X(shadeLight, 1)                                                                      \
   X(shadeDark, 7)                                                                       \
   X(shadeUnknown, 0x100)

enum Shade : U32 { ENUM_TEST_SHADE_LIST(KIV_ENUMERATOR) };
KIV_ENUM_GLUE(Shade);
KIV_ENUM_DEFINE(Shade, "Test::Shade", 0xff, ENUM_TEST_SHADE_LIST)

} // namespace EnumTestTypes

namespace {

using namespace EnumTestTypes;

std::string rangeErrorText(auto&& call) {
   try {
      call();
   } catch (Kiv::RangeError const& e) {
      return e.what();
   }
   return "no RangeError";
}

TEST(EnumGlue, NamesMembershipAndConstructionFromNumbers) {
   struct Row {
      U32 value;
      char const* text;
      bool member;
   };
   Row const rows[] = {
       {0, "shadeNone", true},      {1, "shadeLight", true},          {2, "2", false},
       {7, "shadeDark", true},      {0xff, "255", false},             {0x100, "shadeUnknown", false},
       {0x101, "257", false},       {0xffffffff, "4294967295", false},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(row.value);
      auto e = static_cast<Shade>(row.value);
      EXPECT_EQ(stringValue(e), row.text);
      EXPECT_EQ(valueToStrep(e), row.text);
      EXPECT_EQ(bgpIsValidEnumMember(e), row.member);
      if (row.member) {
         EXPECT_EQ(ShadeInstance(row.value), e);
      } else {
         EXPECT_EQ(rangeErrorText([&] { ShadeInstance(row.value); }),
                   "no member " + std::to_string(row.value) + " in Test::Shade");
      }
   }
}

TEST(EnumGlue, ConstructionFromText) {
   EXPECT_EQ(ShadeInstance("shadeDark"), shadeDark);
   EXPECT_EQ(ShadeInstance("shadeNone"), shadeNone);
   // Every name parses back, even one above the member limit; numbers must be members.
   EXPECT_EQ(ShadeInstance("shadeUnknown"), shadeUnknown);
   EXPECT_EQ(ShadeInstance("7"), shadeDark);
   EXPECT_EQ(ShadeInstance("0"), shadeNone);

   for (char const* text : {"", "256", "2", "shadedark", "shadeDark ", " 7", "7x", "-1", "+1",
                            "0x7", "4294967296"}) {
      SCOPED_TRACE(text);
      EXPECT_THROW(ShadeInstance(std::string_view(text)), Kiv::RangeError);
   }
   EXPECT_EQ(rangeErrorText([] { ShadeInstance("shadePurple"); }),
             "no member 'shadePurple' in Test::Shade");
}

TEST(EnumGlue, StreamsNameOrNumber) {
   std::ostringstream out;
   out << shadeLight << ' ' << static_cast<Shade>(3) << ' ' << shadeUnknown;
   EXPECT_EQ(out.str(), "shadeLight 3 shadeUnknown");
}

} // namespace
