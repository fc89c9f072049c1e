#include "QorBgpCommunity/platform/ValueText.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr U64 maxU64 = std::numeric_limits<U64>::max();

TEST(ValueTextWriter, WritesTheExactForm) {
   EXPECT_EQ(Kiv::ValueTextWriter("Routing::Bgp::Empty").finish(),
             "Value('Routing::Bgp::Empty', ** {})");
   EXPECT_EQ(Kiv::ValueTextWriter("Routing::Bgp::Foo")
                 .field("sorted", true)
                 .field("pruned", false)
                 .field("count", maxU64)
                 .field("inner", "Value('X', ** {'a': 0})")
                 .finish(),
             "Value('Routing::Bgp::Foo', ** {'sorted': True, 'pruned': False, "
             "'count': 18446744073709551615, 'inner': Value('X', ** {'a': 0})})");
}

TEST(ValueTextReader, ReadsFieldsInAnyOrderWithSpacesAndNestedValues) {
   std::string const text = Kiv::ValueTextWriter("T")
                                .field("flag", true)
                                .field("count", U64{0})
                                .field("inner", "Value('X', ** {'p': 1, 'q': [1, (2, 3)]})")
                                .finish();
   Kiv::ValueTextReader in(text, "T");
   EXPECT_EQ(in.field("inner"), "Value('X', ** {'p': 1, 'q': [1, (2, 3)]})");
   EXPECT_EQ(in.u64Field("count"), 0u);
   EXPECT_TRUE(in.boolField("flag"));
   in.finish();

   Kiv::ValueTextReader inner(Kiv::ValueTextReader(text, "T").field("inner"), "X");
   EXPECT_EQ(inner.u64Field("p"), 1u);
   EXPECT_EQ(inner.field("q"), "[1, (2, 3)]");
   inner.finish();

   Kiv::ValueTextReader spaced("Value('T',   **   {  'b' :  False ,'a':18446744073709551615  ,"
                               "'s': 'x,}]' , 'd': \"y')\"  })",
                               "T");
   EXPECT_FALSE(spaced.boolField("b"));
   EXPECT_EQ(spaced.u64Field("a"), maxU64);
   EXPECT_EQ(spaced.field("s"), "'x,}]'");
   EXPECT_EQ(spaced.field("d"), "\"y')\"");
   spaced.finish();
}

TEST(ValueTextReader, EveryMalformationIsARangeError) {
   using Read = void (*)(Kiv::ValueTextReader&);
   Read const readA = [](Kiv::ValueTextReader& in) { (void)in.u64Field("a"); };
   Read const readAll = [](Kiv::ValueTextReader& in) { (void)in.u64Field("a"); in.finish(); };
   Read const readBoolA = [](Kiv::ValueTextReader& in) { (void)in.boolField("a"); };
   struct Row {
      char const* text;
      Read read;
   };
   Row const rows[] = {
       {"Value('U', ** {'a': 1})", readA},                 // wrong type
       {"Value('T', ** {'b': 1})", readA},                 // missing field
       {"Value('T', ** {'a': 1, 'a': 1})", readA},         // duplicate field
       {"Value('T', ** {'a': 1, 'b': 2})", readAll},       // unread field
       {"Value('T', ** {'a': true})", readBoolA},          // bad bool
       {"Value('T', ** {'a': 1})", readBoolA},             // number for a bool
       {"Value('T', ** {'a': -1})", readA},                // bad numbers
       {"Value('T', ** {'a': 1x})", readA},
       {"Value('T', ** {'a': 18446744073709551616})", readA},
       {"Value('T', ** {'a': [1, 2})", readA},             // unclosed bracket
       {"Value('T', ** {'a': 'abc})", readA},              // unclosed quote
       {"Value('T', ** {'a': 1})x", readA},                // trailing garbage
       {"Value('T', ** {'a': 1}", readA},                  // truncated
       {"Value('T' ** {'a': 1})", readA},                  // punctuation
       {"Value('T', ** {'a' 1})", readA},
       {"Value('T', ** {'a': })", readA},
       {"Value('T', ** {'a': 1,})", readA},
       {"", readA},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(row.text);
      EXPECT_THROW(
          {
             Kiv::ValueTextReader in(row.text, "T");
             row.read(in);
          },
          Kiv::RangeError);
   }
   Kiv::ValueTextReader in("Value('T', ** {'a': 1})", "T");
   try {
      (void)in.field("b");
      ADD_FAILURE() << "no RangeError";
   } catch (Kiv::RangeError const& e) {
      EXPECT_STREQ(e.what(), "malformed value text of T: missing field 'b'");
   }
}

} // namespace
