#include "QorBgpCommunity/QorBgp/ExtCommIp6.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>

namespace Routing::Bgp {
namespace {

using namespace std::string_literals;
using StrepFormat = ExtCommIp6::StrepFormat;

ExtCommIp6Content content(U8 type, U8 subtype, char const* addr, U16 localAdmin) {
   return ExtCommIp6Content(type, subtype, Qornet::Ip6Addr::fromStrep(addr), localAdmin);
}

ExtCommIp6::Ptr subtyped(ExtCommIp6Content const& c) {
   return new ExtCommIp6Subtyped(extCommClassificationUnSpecified, c);
}

ExtCommIp6Content const rt = content(0x00, 0x02, "2001:db8::1", 100);

TEST(ExtCommIp6Content, OrderIsTypeSubtypeAddressThenLocalAdmin) {
   ExtCommIp6Content const ascending[] = {
      content(0x00, 0x02, "2001:db8::1", 0x00ff),
      // A number, not its bytes in memory: 0x0100 follows 0x00ff.
      content(0x00, 0x02, "2001:db8::1", 0x0100), content(0x00, 0x02, "2001:db8::2", 0),
      content(0x00, 0x03, "::", 0), content(0x40, 0x00, "::", 0), content(0x80, 0x00, "::", 0)};
   for (std::size_t i = 1; i < std::size(ascending); ++i) {
      SCOPED_TRACE(i);
      EXPECT_LT(ascending[i - 1], ascending[i]);
      EXPECT_FALSE(ascending[i] < ascending[i - 1]);
   }
}

TEST(ExtCommIp6, FactoryValueEqualityIsByContentOnly) {
   ExtCommIp6::Ptr a = extCommIp6Factory(extCommClassificationRouteTarget, rt);
   EXPECT_TRUE(a->pktSubtype().isUnspecified());
   EXPECT_EQ(subtyped(rt)->pktSubtype(), BgpExtCommPktSubtype(2));
   EXPECT_TRUE(a->compare(subtyped(rt).get()));
   EXPECT_EQ(a->hash(), subtyped(rt)->hash());
   EXPECT_FALSE(a->compare(subtyped(content(0x00, 0x02, "2001:db8::1", 101)).get()));
   EXPECT_TRUE(a->compareByContent(rt));
   EXPECT_FALSE(a->compareByContent(content(0x00, 0x02, "2001:db8::", 100)));
}

TEST(ExtCommIp6, DiagnosticFormAndSubtypeNames) {
   std::pair<ExtCommIp6::Ptr, char const*> const rows[] = {
      {extCommIp6Factory(extCommClassificationUnSpecified, rt),
       "<extCommIp6PktTypeTransIpv6Address addr=2001:db8::1 localAdmin=100>"},
      {subtyped(rt), "<extCommIp6PktTypeTransIpv6Address extCommIp6PktSubtypeRouteTarget "
                     "addr=2001:db8::1 localAdmin=100>"},
      {subtyped(content(0x00, 0x05, "::", 0)),
       "<extCommIp6PktTypeTransIpv6Address subtype=5 addr=:: localAdmin=0>"},
      {subtyped(content(0x40, 0x02, "fe80::1", 65535)),
       "<extCommIp6PktTypeNonTransIpv6Address subtype=2 addr=fe80::1 localAdmin=65535>"},
      {subtyped(content(0x80, 0x02, "::ffff:192.0.2.1", 7)),
       "<extCommIp6PktTypeUnknown none addr=::ffff:192.0.2.1 localAdmin=7>"},
   };
   for (auto const& [comm, text] : rows) {
      SCOPED_TRACE(text);
      EXPECT_EQ(comm->toStrep(), text);
   }
   // A null object, and the caller's stream format left as it was.
   std::ostringstream os;
   os << ExtCommIp6::PtrConst() << ' ' << std::hex << std::setfill('#') << std::setw(6)
      << subtyped(content(0x40, 0, "::", 100)) << ' ' << std::setw(6) << 255;
   EXPECT_EQ(os.str(), "NULL <extCommIp6PktTypeNonTransIpv6Address subtype=0 addr=:: "
                       "localAdmin=100> ####ff");
}

TEST(ExtCommIp6DeathTest, SubtypeNameAssertsTypeAndSubtype) {
   EXPECT_DEATH(subtyped(content(0x40, 2, "::", 0))->pktSubtypeTransIpv6AddressAsString(),
                "ExtCommIp6:[0-9]+: assertion failed: "
                "extCommIp6PktTypeTransIpv6Address_ == pktType\\(\\)");
   EXPECT_DEATH(subtyped(content(0x80, 2, "::", 0))->pktSubtypeNonTransIpv6AddressAsString(),
                "ExtCommIp6:[0-9]+: assertion failed: "
                "extCommIp6PktTypeNonTransIpv6Address_ == pktType\\(\\)");
   EXPECT_DEATH(extCommIp6Factory(extCommClassificationUnSpecified, rt)
                   ->pktSubtypeTransIpv6AddressAsString(),
                "ExtCommIp6:[0-9]+: assertion failed: !pktSubtype\\(\\).isUnspecified\\(\\)");
}

TEST(ExtCommIp6, PolicyTextHasTheTypeOnlyWithClassificationAndUI) {
   std::tuple<ExtCommIp6Content, U32, char const*> const rows[] = {
      {rt, 0, "2001:db8::1:100"},
      {rt, 2, "2001:db8::1:100"},
      {rt, 4, "2001:db8::1:100"},
      {rt, 6, "0002-IP6:2001:db8::1:100"},
      {rt, 31, "0002-IP6:2001:db8::1:100"},
      {content(0xc0, 0xff, "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff", 65535), 6,
       "80ff-IP6(NT):ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff:65535"},
      {content(0x80, 0x00, "::", 0), 6, "8000-IP6::::0"},
   };
   for (auto const& [c, format, text] : rows) {
      SCOPED_TRACE(text);
      EXPECT_EQ(subtyped(c)->toStrepForPolicy(StrepFormat(format)), text);
   }
}

TEST(ExtCommIp6Content, TextHasRawTypeOctetsButParsesDecimal) {
   EXPECT_EQ(valueToStrep(content('A', 'b', "2001:db8::1", 7)),
             "type=A;subtype=b;addr=2001:db8::1;localAdmin=7");
   std::ostringstream os;
   os << std::setw(60) << std::hex << content(0x00, 0x02, "::", 65535) << '|' << 255;
   EXPECT_EQ(os.str(), "type=\0;subtype=\2;addr=::;localAdmin=65535|ff"s);

   ExtCommIp6Content c;
   c.sequenceToValue("type=0;subtype=2;addr=2001:DB8::1;localAdmin=100");
   EXPECT_EQ(c, rt);
   c.sequenceToValue("type=255;subtype=255;addr=::;localAdmin=65535");
   EXPECT_EQ(c, content(0xff, 0xff, "::", 65535));
   for (std::string bad : {""s, valueToStrep(rt), "type=0subtype=2;addr=::;localAdmin=1"s,
                           "type=256;subtype=2;addr=::;localAdmin=1"s,
                           "type=0;subtype=2;addr=::;localAdmin=65536"s,
                           "type=0;subtype=2;addr=::g;localAdmin=1"s, "type=0;subtype=2;addr=::"s,
                           "type=0;subtype=2;addr=::;localAdmin=1;"s}) {
      SCOPED_TRACE(bad);
      EXPECT_THROW(c.sequenceToValue(bad), Kiv::RangeError);
      EXPECT_EQ(c, content(0xff, 0xff, "::", 65535));
   }
}

TEST(ExtCommIp6StrepFormat, RangeIsFiveBitsAndTextNamesItsType) {
   EXPECT_THROW(StrepFormat(32), Kiv::RangeError);
   EXPECT_EQ(StrepFormat(StrepFormat::flagUI | StrepFormat::flagLinkBwWeighted).valueToStrep(),
             "Value('Routing::Bgp::ExtCommIp6::StrepFormat', ** {'strepFormatDefault': False, "
             "'strepFormatClassification': False, 'strepFormatUI': True, 'strepFormatAsdot': "
             "False, 'strepFormatLinkBwWeighted': True})");
   // The 8-octet selector's text names another type and a sixth flag.
   EXPECT_THROW(StrepFormat::fromValueStrep(ExtComm::StrepFormat(2).valueToStrep()),
                Kiv::RangeError);
}

} // namespace
} // namespace Routing::Bgp
