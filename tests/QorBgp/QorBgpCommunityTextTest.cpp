#include "QorBgp/QorBgpCommunity.h"

#include "platform/Errors.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>

namespace Routing::Bgp {
namespace {

using StrepFormat = ExtComm::StrepFormat;

constexpr U64 rt65000_100 = 0x0002fde800000064;

ExtComm::Ptr plain(U64 word) {
   return extCommFactory(extCommClassificationUnSpecified, ExtCommContent(word));
}

ExtComm::Ptr subtyped(U64 word) {
   return new ExtCommSubtyped(extCommClassificationUnSpecified, ExtCommContent(word));
}

TEST(ExtCommText, PolicyTextOfAPlainValueIsItsRawOctets) {
   struct Row {
      U64 word;
      char const* text;
   };
   Row const rows[] = {
      {rt65000_100, "0002:0xfd 0xe8 0x00 0x00 0x00 0x64"},
      {0x4300000000000002, "0300(NT):0x00 0x00 0x00 0x00 0x00 0x02"},
      {0x8006000000000000, "8006:0x00 0x00 0x00 0x00 0x00 0x00"},
      // The non-transitive bit shows as (NT), never in the type digits.
      {0x40ff0a0b0c0d0e0f, "00ff(NT):0x0a 0x0b 0x0c 0x0d 0x0e 0x0f"},
      {0xffffffffffffffff, "bfff(NT):0xff 0xff 0xff 0xff 0xff 0xff"},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(row.text);
      EXPECT_EQ(plain(row.word)->toStrepForPolicy(StrepFormat(6)), row.text);
      EXPECT_EQ(plain(row.word)->toStrepForPolicy(StrepFormat(63)), row.text);
      EXPECT_EQ(plain(row.word)->toStrepForUI(true, true, true), row.text);
   }
}

TEST(ExtCommText, PolicyTextNeedsBothClassificationAndUI) {
   ExtComm::Ptr comm = plain(rt65000_100);
   for (U32 flags : {0u, 1u, 2u, 4u, 8u, 16u, 32u, 59u, 61u}) {
      SCOPED_TRACE(flags);
      EXPECT_EQ(comm->toStrepForPolicy(StrepFormat(flags)), "");
   }
}

// Records the flag word that toStrepForUI hands to the virtual policy form.
class FormatRecorder : public ExtComm {
 public:
   FormatRecorder() : ExtComm(extCommClassificationUnSpecified, ExtCommContent(0)) {}
   std::string toStrepForPolicy(StrepFormat format) const override {
      return std::to_string(format.value());
   }
};

TEST(ExtCommText, UIFormAddsAsdotLinkBandwidthAndJsonFlags) {
   ExtComm::Ptr comm = new FormatRecorder;
   EXPECT_EQ(comm->toStrepForUI(false, false, false), "6");
   EXPECT_EQ(comm->toStrepForUI(true, false, false), "22");
   EXPECT_EQ(comm->toStrepForUI(false, true, false), "38");
   EXPECT_EQ(comm->toStrepForUI(false, false, true), "14");
   EXPECT_EQ(comm->toStrepForUI(true, true, true), "62");
}

TEST(ExtCommText, DiagnosticForm) {
   struct Row {
      ExtComm::Ptr comm;
      char const* text;
   };
   Row const rows[] = {
      {plain(rt65000_100), "<extCommPktTypeTransTwoOctetAs 0x0002fde800000064>"},
      {subtyped(rt65000_100),
       "<extCommPktTypeTransTwoOctetAs extCommPktSubtypeTransTwoOctetAsRouteTarget "
       "0x0002fde800000064>"},
      {subtyped(0x0401000000000000), "<extCommPktTypeTransQosMarking none 0x0401000000000000>"},
      {subtyped(0x4105000000000000),
       "<extCommPktTypeNonTransIpv4Address subtype=5 0x4105000000000000>"},
      {subtyped(0x0714000000000000), "<extCommPktTypeUnknown none 0x0714000000000000>"},
      {plain(0), "<extCommPktTypeTransTwoOctetAs 0x0000000000000000>"},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(row.text);
      EXPECT_EQ(row.comm->toStrep(), row.text);
      std::ostringstream os;
      os << row.comm;
      EXPECT_EQ(os.str(), row.text);
   }
}

TEST(ExtCommText, SubtypeTextOfAPlainValueIsUnspecified) {
   std::ostringstream os;
   plain(rt65000_100)->formatSubtype(os);
   EXPECT_EQ(os.str(), "unspecified");
}

TEST(ExtCommText, StreamOutputHandlesNullAndKeepsTheCallersFormat) {
   std::ostringstream os;
   ExtComm::PtrConst none;
   os << none << ' ' << static_cast<ExtComm const*>(nullptr) << ' ';
   os << std::hex << std::showbase << std::setfill('#') << std::setw(6);
   os << subtyped(0x0401000000000000) << ' ' << std::setw(6) << 255;
   EXPECT_EQ(os.str(), "NULL NULL <extCommPktTypeTransQosMarking none 0x0401000000000000> ##0xff");
}

TEST(ExtCommText, TypeAsStringAppendsToTheBuffer) {
   Kiv::DynamicBuffer<8> buffer;
   buffer.append("x=");
   addExtCommTypeAsString(buffer, ":sfx", 0x43, 0x0b, false);
   EXPECT_EQ(buffer.view(), "x=030b:sfx(NT)");
   EXPECT_EQ(extCommTypeAsString("", 0x80, 0x06, true), "8006");
   // The caller decides transitivity; the bit is only ever cleared from the digits.
   EXPECT_EQ(extCommTypeAsString("", 0x43, 0x00, true), "0300");
   EXPECT_EQ(extCommTypeAsString("", 0x00, 0x00, false), "0000(NT)");
}

TEST(ExtCommStrepFormat, RangeIsSixBits) {
   EXPECT_EQ(StrepFormat(63).value(), 63u);
   try {
      StrepFormat(64);
      FAIL() << "64 accepted";
   } catch (Kiv::RangeError const& e) {
      EXPECT_STREQ(e.what(), "ExtComm::StrepFormat 64 > 63 not allowed");
   }
   StrepFormat f(StrepFormat::flagClassification | StrepFormat::flagAsdot);
   EXPECT_TRUE(f.strepFormatClassification());
   EXPECT_TRUE(f.strepFormatAsdot());
   EXPECT_FALSE(f.strepFormatUI());
   f.flagIs(StrepFormat::flagAsdot, false);
   EXPECT_EQ(f.value(), 2u);
}

TEST(ExtCommStrepFormat, ReflectionTextRoundTripsEveryValue) {
   EXPECT_EQ(StrepFormat(StrepFormat::flagUI | StrepFormat::flagLinkBwWeighted).valueToStrep(),
             "Value('Routing::Bgp::ExtComm::StrepFormat', ** {'strepFormatDefault': False, "
             "'strepFormatClassification': False, 'strepFormatUI': True, 'strepFormatJson': "
             "False, 'strepFormatAsdot': False, 'strepFormatLinkBwWeighted': True})");
   for (U32 v = 0; v <= StrepFormat::allFlags; ++v) {
      SCOPED_TRACE(v);
      EXPECT_EQ(StrepFormat::fromValueStrep(StrepFormat(v).valueToStrep()), StrepFormat(v));
   }
   std::string text = StrepFormat(1).valueToStrep();
   for (std::string bad : {text.substr(1), text.substr(0, text.size() - 1),
                           text.replace(text.find("True"), 4, "Yes")}) {
      SCOPED_TRACE(bad);
      EXPECT_THROW(StrepFormat::fromValueStrep(bad), Kiv::RangeError);
   }
}

} // namespace
} // namespace Routing::Bgp
