// encode reads back what decode and show print: a list's text (plain and
// asdot) encodes to the list's own attribute, over the fuzz seed corpora and
// over generated values of every kind, extended fallback forms included.
// Forms that leave bits out (colour, tunnel, default gateway, validation
// state, link bandwidth) must at least print the same text again.
#include "tools/qorbgp-comm/CommunityText.h"
#include "ToolTest.h"
#include "tools/mrt/MrtReader.h"
#include "tools/qorbgp-comm/PathLists.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

using namespace Routing::Bgp;
using namespace QorBgpTools;

struct Printed {
   CommunityKind kind;
   U8 typeCode;
   std::string text;
   std::string attribute; // every value
};

Printed printed(AnyCommList const& list, bool asdot) {
   if (auto const* p = std::get_if<CommList::PtrConst>(&list)) {
      return {CommunityKind::standard, community, standardText(p->get()), (*p)->serialize()};
   }
   if (auto const* p = std::get_if<LargeCommList::PtrConst>(&list)) {
      return {CommunityKind::large, largeCommunity, largeText(p->get(), asdot), (*p)->serialize()};
   }
   if (auto const* p = std::get_if<ExtCommList::PtrConst>(&list)) {
      return {CommunityKind::extended, extCommunity, extendedText(p->get(), asdot),
              (*p)->serialize(ExtCommList::serialization(true, true, true))};
   }
   auto const& p = std::get<ExtCommIp6List::PtrConst>(list);
   return {CommunityKind::ip6, extCommunityIp6, ip6Text(p.get()), p->serialize(true)};
}

std::span<U8 const> valueOf(std::string const& attribute) {
   constexpr U8 extendedLengthFlag = 0x10;
   std::size_t const header = (attribute[0] & extendedLengthFlag) ? 4 : 3;
   return {reinterpret_cast<U8 const*>(attribute.data()) + header, attribute.size() - header};
}

class CommunityText : public ToolTest {
 protected:
   // `list`'s text encodes to its own attribute; with `exact` false, to an
   // attribute that prints the same text.
   void expectReadBack(AnyCommList const& list, bool exact = true) {
      for (bool asdot : {false, true}) {
         Printed const before = printed(list, asdot);
         SCOPED_TRACE(before.text);
         EncodedCommunities const encoded = encodeCommunityText(*tables_, before.kind, before.text);
         ASSERT_EQ(encoded.badWord, "");
         if (exact) {
            EXPECT_EQ(hexBytes(valueOf(encoded.attribute)), hexBytes(valueOf(before.attribute)));
         }
         auto again = decodeAttribute(*tables_, before.typeCode, valueOf(encoded.attribute));
         ASSERT_TRUE(again.ok()) << again.reason;
         EXPECT_EQ(printed(again.list, asdot).text, before.text);
      }
   }

   AnyCommList decoded(U8 typeCode, std::vector<U8> const& value) {
      return decodeAttribute(*tables_, typeCode, value).list;
   }

   void expectRejected(CommunityKind kind, std::initializer_list<char const*> words) {
      for (std::string_view word : words) {
         EXPECT_EQ(encodeCommunityText(*tables_, kind, word).badWord, word);
      }
   }

   CommunityTables::Ptr tables_ = communityTablesFactory();
};

std::vector<U8> bigEndian(U64 value, std::size_t bytes) {
   std::vector<U8> out(bytes);
   for (std::size_t i = bytes; i-- > 0; value >>= 8) {
      out[i] = static_cast<U8>(value);
   }
   return out;
}

// DecodeAttributeFuzz seeds are a selector byte (the attribute kind below
// 0xF0) and an attribute value; MrtReaderFuzz seeds are MRT dumps.
TEST_F(CommunityText, FuzzSeedsReadBack) {
   namespace fs = std::filesystem;
   constexpr U8 selectorTypes[] = {community, largeCommunity, extCommunity, extCommunityIp6};
   std::size_t lists = 0;
   for (auto const& seed :
        fs::directory_iterator(fs::path(QORBGP_FUZZ_CORPUS) / "DecodeAttributeFuzz")) {
      std::ifstream in(seed.path(), std::ios::binary);
      std::vector<U8> bytes{std::istreambuf_iterator<char>(in), {}};
      if (bytes.empty() || bytes[0] >= 0xF0) {
         continue;
      }
      auto result = decodeAttribute(*tables_, selectorTypes[bytes[0] % 4],
                                    std::span<U8 const>(bytes).subspan(1));
      if (result.ok()) {
         SCOPED_TRACE(seed.path().string());
         expectReadBack(result.list);
         ++lists;
      }
   }
   for (auto const& seed : fs::directory_iterator(fs::path(QORBGP_FUZZ_CORPUS) / "MrtReaderFuzz")) {
      SCOPED_TRACE(seed.path().string());
      std::string error;
      auto reader = mrt::MrtReader::open(seed.path().string(), &error);
      ASSERT_TRUE(reader) << error;
      for (mrt::Path path; reader->next(path);) {
         PathLists const found = decodePathLists(*tables_, path);
         auto readBack = [&](auto const& list) {
            if (list) {
               expectReadBack(AnyCommList(list));
               ++lists;
            }
         };
         readBack(found.standard);
         readBack(found.large);
         readBack(found.extended);
         readBack(found.ip6);
      }
   }
   EXPECT_GE(lists, 4u); // the seeds hold a list of every kind
}

TEST_F(CommunityText, StandardAndLarge) {
   std::vector<U8> standard;
   for (U32 value : {0x00000000u, 0x00010002u, 0xFFFF0000u, 0xFFFF0006u, 0xFFFF0007u, 0xFFFFFF01u,
                     0xFFFFFF02u, 0xFFFFFF03u, 0xFFFFFFFFu}) {
      auto bytes = bigEndian(value, 4);
      standard.insert(standard.end(), bytes.begin(), bytes.end());
   }
   expectReadBack(decoded(community, standard));
   std::vector<U8> large;
   for (U32 global : {0u, 65535u, 65536u, 4200000000u, 0xFFFFFFFFu}) {
      for (U32 data : {0u, 0xFFFFFFFFu}) {
         for (U32 word : {global, data, 7u}) {
            auto bytes = bigEndian(word, 4);
            large.insert(large.end(), bytes.begin(), bytes.end());
         }
      }
   }
   expectReadBack(decoded(largeCommunity, large));

   expectRejected(CommunityKind::standard,
                  {"65536:1", "1:65536", "1", "1:2:3", "-1:2", "no_export"});
   expectRejected(CommunityKind::large,
                  {"1:2", "1:2:3:4", "4294967296:1:2", "65536.0:1:2", "1.2.3:4:5"});

   // 16383 values fit the two-octet attribute length, 16384 do not.
   std::string many;
   for (U32 i = 1; i <= 16384; ++i) {
      many += std::to_string(i) + ":1 ";
   }
   EncodedCommunities const tooMany = encodeCommunityText(*tables_, CommunityKind::standard, many);
   EXPECT_EQ(tooMany.oversize, 65536u);
   EXPECT_TRUE(tooMany.attribute.empty());
   many.resize(many.rfind("16384:1"));
   EXPECT_EQ(encodeCommunityText(*tables_, CommunityKind::standard, many).attribute.size(),
             4 + 65532u); // with the extended-length header
}

TEST_F(CommunityText, Extended) {
   // The words of the forms that leave bits out, and of the shorthands; the
   // generated values below cover the other forms through the printer.
   struct Row {
      char const* text;
      U64 word;
   };
   for (Row const& row : {
           Row{"Link-Bandwidth-AS:65000:10Gbps", 0x4004fde84e9502f9},
           Row{"Link-Bandwidth-AS:1:1250000000", 0x400400014e9502f9},
           Row{"Link-Bandwidth-AS:1:1.5Mbps", 0x4004000148371b00},
           Row{"Color:CO(10):7", 0x030b800000000007},
           Row{"TunnelEncap:tunnelTypeVxlan", 0x030c000000000008},
           Row{"TunnelEncap:tunnelTypeUnknown-300", 0x030c00000000012c},
           Row{"DefaultGateway", 0x030d000000000000},
           Row{"Origin-Validation-State:not-found", 0x4300000000000001},
           Row{"RT:65000:1", 0x0002fde800000001},
           Row{"SoO:192.0.2.1:5", 0x0103c00002010005},
           Row{"0x030b000000000064", 0x030b000000000064},
        }) {
      SCOPED_TRACE(row.text);
      EXPECT_EQ(encodeCommunityText(*tables_, CommunityKind::extended, row.text).attribute,
                std::string("\xc0\x10\x08", 3) +
                   std::string(reinterpret_cast<char const*>(bigEndian(row.word, 8).data()), 8));
   }

   // Every recognised kind and every fallback (administrator pairs, octets,
   // unknown types), over value octets from none to all set.
   constexpr U8 types[] = {0x00, 0x01, 0x02, 0x03, 0x04, 0x06, 0x07, 0x08, 0x40,
                           0x41, 0x42, 0x43, 0x44, 0x80, 0x81, 0x82, 0xc0, 0xff};
   constexpr U8 subtypes[] = {0x00, 0x02, 0x03, 0x04, 0x0b, 0x0c, 0x0d, 0x14, 0xff};
   constexpr U64 values[] = {0, 0xfde800000064, 0x00014e9502f9, 0x7fffffffffff, 0xffffffffffff};
   constexpr U16 lossy[] = {0x030b, 0x030c, 0x030d, 0x4004, 0x4300};
   for (U8 type : types) {
      for (U8 subtype : subtypes) {
         bool const exact =
            std::find(std::begin(lossy), std::end(lossy), type << 8 | subtype) == std::end(lossy);
         for (U64 value : values) {
            expectReadBack(
               decoded(extCommunity, bigEndian(U64{type} << 56 | U64{subtype} << 48 | value, 8)),
               exact);
         }
      }
   }

   expectRejected(CommunityKind::extended,
                  {"Route-Target-AS:65536:1", "Route-Target-AS4:1:65536", "Route-Target-IP:1.2.3:4",
                   "Route-Target-IP:256.0.0.1:1", "Color:CO(2):1", "Color:CO(00)",
                   "DefaultGateway:1", "TunnelEncap:tunnelTypeFrob", "Origin-Validation-State:bad",
                   "Link-Bandwidth-AS:1:-5Mbps", "Link-Bandwidth-AS:1:5Pbps", "4002:1:2",
                   "0302:1:2", "0002:0x00", "0x030b", "RT:frob"});
}

TEST_F(CommunityText, Ip6) {
   std::vector<U8> value;
   for (U8 type : {0x00, 0x40, 0x80, 0xc0}) {
      for (U8 subtype : {0x02, 0x05, 0xff}) {
         for (char const* address : {"::", "2001:db8::1", "2001:db8::", "::ffff:192.0.2.1",
                                     "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"}) {
            auto const bytes = Qornet::Ip6Addr::fromStrep(address).bytes();
            value.insert(value.end(), {type, subtype});
            value.insert(value.end(), bytes.begin(), bytes.end());
            value.insert(value.end(), {subtype, type}); // local administrator
         }
      }
   }
   expectReadBack(decoded(extCommunityIp6, value));
   expectRejected(CommunityKind::ip6,
                  {"0002-IP6:2001:db8::1", "0002-IP6:2001:db8::1:65536", "0002:2001:db8::1:1",
                   "4002-IP6:::1:1", "0002-IP6(NT)2001::1:1"});
}

// The program itself: decode's text through encode, and its usage errors.
TEST_F(CommunityText, EncodeCommand) {
   std::string const attribute = "c0191400022001"
                                 "0db8000000000000000000000001"
                                 "0064";
   Outcome const shown = run("decode " + attribute);
   ASSERT_EQ(shown.status, 0) << shown.err;
   std::string const text = shown.out.substr(shown.out.find(": ") + 2);
   Outcome const encoded = run("encode --kind ipv6 '" + text.substr(0, text.size() - 1) + "'");
   EXPECT_EQ(encoded.out, attribute + "\n");

   struct Row {
      char const* arguments;
      char const* saying; // part of the message
   };
   for (Row const& row : {Row{"encode ''", "no communities"}, Row{"encode ' , '", "no communities"},
                          Row{"encode --kind extended 'Route-Target-AS:1:2 frob'", "'frob'"}}) {
      SCOPED_TRACE(row.arguments);
      Outcome const outcome = run(row.arguments);
      EXPECT_EQ(outcome.status, 2);
      EXPECT_EQ(outcome.out, "");
      EXPECT_NE(outcome.err.find(row.saying), std::string::npos) << outcome.err;
   }
}

} // namespace
