#include "QorBgpCommunity/QorBgp/QorBgpMiscTypes.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>

namespace Routing::Bgp {
namespace {

template <class Error>
void expectError(std::function<void()> const& call, char const* text) {
   try {
      call();
      ADD_FAILURE() << "no error, expected " << text;
   } catch (Error const& e) {
      EXPECT_STREQ(e.what(), text);
   }
}

TEST(BgpDenseU32Attr, BadIndexOrDeleteNamesTheOperationAndChangesNothing) {
   BgpDenseU32Attr attr(0x01020304);
   using Range = Kiv::RangeError;
   using NotDeletable = Kiv::NotDeletableError;
   expectError<Range>([&] { attr.valueBool(16); }, "BgpDenseU32Attr::valueBool");
   expectError<Range>([&] { attr.valueBoolIs(16, true); }, "BgpDenseU32Attr::valueBoolIs");
   expectError<Range>([&] { attr.valueU8(4); }, "BgpDenseU32Attr::valueU8");
   expectError<Range>([&] { attr.valueU8Is(4, 0xFF); }, "BgpDenseU32Attr::valueU8Is");
   expectError<Range>([&] { attr.valueU16(2); }, "BgpDenseU32Attr::valueU16");
   expectError<Range>([&] { attr.valueU16Is(255, 0xFFFF); }, "BgpDenseU32Attr::valueU16Is");
   expectError<NotDeletable>([&] { attr.valueBoolDel(0); }, "BgpDenseU32Attr::valueBoolDel");
   expectError<NotDeletable>([&] { attr.valueU8Del(200); }, "BgpDenseU32Attr::valueU8Del");
   expectError<NotDeletable>([&] { attr.valueU16Del(1); }, "BgpDenseU32Attr::valueU16Del");
   EXPECT_EQ(attr.value(), 0x01020304u);
}

TEST(BgpDenseU32Attr, TextIsDecimalAndParsesBack) {
   std::ostringstream os;
   os << BgpDenseU32Attr(0xFFFFFFFF);
   EXPECT_EQ(os.str(), "4294967295");
   EXPECT_EQ(BgpDenseU32Attr(std::string_view("4294967295")).value(), 0xFFFFFFFFu);
   for (char const* bad : {"4294967296", "", "-1", "12a", "0x10"}) {
      SCOPED_TRACE(bad);
      EXPECT_THROW(BgpDenseU32Attr{std::string_view(bad)}, Kiv::RangeError);
   }
}

TEST(BgpExtCommPktSubtype, RangeIsOneOctetAndRejectionLeavesItUnspecified) {
   EXPECT_EQ(BgpExtCommPktSubtype(0).value(), 0u);
   EXPECT_EQ(BgpExtCommPktSubtype(255).value(), 255u);
   static constexpr U64 rejected[] = {256, BgpMaybeU63::unspecifiedWord - 1,
                                      BgpMaybeU63::unspecifiedWord, ~U64{0}};
   for (U64 value : rejected) {
      SCOPED_TRACE(value);
      BgpExtCommPktSubtype subtype(7);
      expectError<Kiv::RangeError>([&] { subtype.valueIs(value); },
                                   "value < min or > max not allowed");
      EXPECT_TRUE(subtype.isUnspecified());
      EXPECT_THROW(BgpExtCommPktSubtype{value}, Kiv::RangeError);
   }
   // The base range is empty: a base object holds no value of its own.
   BgpMaybeU63 base;
   EXPECT_THROW(base.valueIs(0), Kiv::RangeError);
   EXPECT_THROW(base.valueIs(1), Kiv::RangeError);
   EXPECT_TRUE(base.isUnspecified());
}

TEST(BgpMaybeU63, UnspecifiedEqualsItselfAndSortsFirst) {
   BgpExtCommPktSubtype const none, zero(0), one(1);
   EXPECT_EQ(none, BgpExtCommPktSubtype());
   EXPECT_NE(none, zero);
   EXPECT_TRUE(none < zero);
   EXPECT_FALSE(zero < none);
   EXPECT_FALSE(none < none);
   EXPECT_TRUE(zero < one);
   EXPECT_EQ(none.valueWithUnspecifiedMapped(), 0u); // the base mapping
   EXPECT_EQ(one.valueWithUnspecifiedMapped(), 1u);
}

TEST(BgpMaybeU63, TextFormRoundTrips) {
   BgpExtCommPktSubtype subtype;
   EXPECT_EQ(subtype.toStrep(), "-");
   subtype.sequenceToValue("255");
   EXPECT_EQ(valueToStrep(subtype), "255");
   subtype.sequenceToValue("-");
   EXPECT_TRUE(subtype.isUnspecified());
   subtype.sequenceToValue("3");
   expectError<Kiv::RangeError>([&] { subtype.sequenceToValue("3x"); },
                                "invalid BgpMaybeU63 text '3x'");
   EXPECT_EQ(subtype.value(), 3u);
   EXPECT_THROW(subtype.sequenceToValue("256"), Kiv::RangeError);
   EXPECT_TRUE(subtype.isUnspecified());
}

TEST(BgpMaybeU63DeathTest, ReadingAnUnspecifiedValueAborts) {
   BgpExtCommPktSubtype const none;
   char const* const message =
       "QorBgpMiscTypes:[0-9]+: assertion failed: !isUnspecified\\(\\) && \"Caller must "
       "check isUnspecified\\(\\) before getting value\\(\\)\"";
   EXPECT_DEATH(none.value(), message);
   EXPECT_DEATH(static_cast<void>(static_cast<unsigned long>(none)), message);
}

} // namespace
} // namespace Routing::Bgp
