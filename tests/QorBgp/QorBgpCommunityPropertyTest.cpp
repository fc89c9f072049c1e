// Randomised properties of the text forms, the wire codecs and the interning
// tables. Case i draws from a generator seeded seed + i, so a failure names
// its seed and case and replays alone; QORBGP_PROPERTY_SEED picks another seed.
#include "QorBgp/QorBgpCommunityDecode.h"

#include "QorBgp/RouteTargetPrefix.h"
#include "platform/Errors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <map>
#include <random>
#include <set>

namespace Routing::Bgp {
namespace {

using Random = std::mt19937_64;

U64 const seed = [] {
   char const* text = std::getenv("QORBGP_PROPERTY_SEED");
   return text != nullptr && *text != '\0' ? std::strtoull(text, nullptr, 0) : U64{20240611};
}();

int failureCount() {
   return testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count();
}

template <class Case>
void forCases(char const* property, int count, Case&& oneCase) {
   int const before = failureCount();
   for (int i = 0; i < count && failureCount() == before; ++i) {
      Random random(seed + static_cast<U64>(i));
      oneCase(random);
      if (failureCount() != before) {
         ADD_FAILURE() << property << ": failed at seed " << seed << ", case " << i;
      }
   }
}

// Of random width, so that small values are as common as large ones; now and
// then the largest.
template <std::unsigned_integral T>
T anyOf(Random& random) {
   unsigned const width = random() % (8 * sizeof(T) + 1);
   if (random() % 8 == 0) {
      return std::numeric_limits<T>::max();
   }
   return static_cast<T>(width == 0 ? 0 : random() >> (64 - width));
}

bool isRouteTarget(U64 word) { return (word >> 56) <= 2 && (word >> 48 & 0xff) == 2; }

// ---- Text forms ----

// `text`, the value text of `value`, parses back, and so does it with its
// fields shuffled; with a field missing or given twice it is a RangeError.
template <class T, class Parse>
void expectValueTextRoundTrips(Random& random, T const& value, std::string const& text,
                               Parse parse) {
   EXPECT_EQ(parse(text), value) << text;
   std::size_t const open = text.find('{') + 1;
   std::vector<std::string> fields;
   for (std::size_t at = open, end; at < text.size() - 2; at = end + 2) {
      end = std::min(text.find(", ", at), text.size() - 2);
      fields.push_back(text.substr(at, end - at));
   }
   auto const rejoined = [&] {
      std::string out = text.substr(0, open);
      for (std::string const& f : fields) {
         out.append(out.back() == '{' ? "" : ", ").append(f);
      }
      return out + "})";
   };
   std::shuffle(fields.begin(), fields.end(), random);
   EXPECT_EQ(parse(rejoined()), value) << rejoined();
   std::size_t const victim = random() % fields.size();
   random() % 2 ? fields.push_back(fields[victim]) : (void)fields.erase(fields.begin() + victim);
   EXPECT_THROW(parse(rejoined()), Kiv::RangeError) << rejoined();
}

template <class Set, U32 all>
void flagSetRoundTrips(Random& random) {
   Set const set(static_cast<U32>(random() % (all + 1)));
   expectValueTextRoundTrips(random, set, set.valueToStrep(),
                             [](std::string const& t) { return Set::fromValueStrep(t); });
}

TEST(TextProperty, FlagSetTextsRoundTripInAnyFieldOrder) {
   forCases("flag sets", 200, [](Random& random) {
      using ListAttrs = ExtCommList::CommVectorAttrs;
      using ClassAttrs = ExtCommClassificationList::CommVectorAttrs;
      flagSetRoundTrips<ExtComm::StrepFormat, ExtComm::StrepFormat::allFlags>(random);
      flagSetRoundTrips<ExtCommIp6::StrepFormat, ExtCommIp6::StrepFormat::allFlags>(random);
      flagSetRoundTrips<ListAttrs, ListAttrs::allBits>(random);
      flagSetRoundTrips<ExtCommList::Serialization, ExtCommList::Serialization::allBits>(random);
      flagSetRoundTrips<ClassAttrs, ClassAttrs::allBits>(random);
   });
}

// Each layout with fields of random width, and words of other types and
// subtypes (non-transitive look-alikes among them).
RouteTarget anyRouteTarget(Random& random) {
   static constexpr U8 types[] = {0x00, 0x01, 0x02, 0x40, 0x41, 0x42, 0x03};
   switch (random() % 5) {
   case 0:
      return RouteTarget::twoOctetAs(anyOf<U16>(random), anyOf<U32>(random));
   case 1:
      return RouteTarget::ipv4Address(anyOf<U32>(random), anyOf<U16>(random));
   case 2:
      return RouteTarget::fourOctetAs(anyOf<U32>(random), anyOf<U16>(random));
   case 3:
      return RouteTarget(U64{types[random() % std::size(types)]} << 56 |
                         U64{anyOf<U8>(random)} << 48 | anyOf<U64>(random) >> 16);
   }
   return RouteTarget(anyOf<U64>(random));
}

TEST(TextProperty, RouteTargetAndPrefixTextsParseBackToTheSameWord) {
   forCases("route target text", 2000, [](Random& random) {
      RouteTarget const rt = anyRouteTarget(random);
      for (bool asdot : {false, true}) {
         std::string const text = rt.toStrep(asdot);
         EXPECT_LE(text.size(), RouteTarget::maxStrepLength) << text;
         EXPECT_EQ(RouteTarget::parse(text), rt) << text << (asdot ? " (asdot)" : "");
      }
      // The word itself, in 1 to 16 digits of either case.
      char digits[17];
      std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(rt.word()));
      std::string hex(digits +
                      random() % (std::min<std::size_t>(std::strspn(digits, "0"), 15) + 1));
      for (char& c : hex) {
         c = random() % 2 ? static_cast<char>(std::toupper(c)) : c;
      }
      EXPECT_EQ(RouteTarget::parse("0x" + hex), rt) << hex;

      RouteTargetPrefix const prefix(rt, random() % (RouteTargetPrefix::maxBitlen + 1));
      EXPECT_EQ(prefix.prefixBits() & ~prefix.mask(), 0u) << prefix;
      expectValueTextRoundTrips(random, prefix, valueToStrep(prefix),
                                [](std::string const& t) { return RouteTargetPrefix(t); });
   });
}

TEST(TextProperty, Ip6AddressTextsParseBackCompressedOrNot) {
   forCases("IPv6 address text", 2000, [](Random& random) {
      // Zero groups are common, so that zero runs of every length occur; now
      // and then an IPv4-mapped address. `full` has every group, with or
      // without leading zeros, in either case.
      bool const mapped = random() % 8 == 0;
      Qornet::Ip6Addr::Bytes bytes;
      std::string full;
      for (std::size_t i = 0; i < 8; ++i) {
         U16 const g = mapped ? (i < 5    ? 0
                                 : i == 5 ? 0xffff
                                          : anyOf<U16>(random))
                              : (random() % 2 ? anyOf<U16>(random) : 0);
         bytes[2 * i] = static_cast<U8>(g >> 8);
         bytes[2 * i + 1] = static_cast<U8>(g);
         char group[8];
         std::snprintf(group, sizeof group, random() % 2 ? "%04X" : "%x", g);
         full.append(i == 0 ? "" : ":").append(group);
      }
      Qornet::Ip6Addr const addr(bytes);
      EXPECT_LE(addr.toStrep().size(), Qornet::Ip6Addr::maxStrepLength);
      EXPECT_EQ(Qornet::Ip6Addr::parse(addr.toStrep()), addr) << addr;
      EXPECT_EQ(Qornet::Ip6Addr::parse(full), addr) << full;
   });
}

// An optional value over the whole 63-bit range.
struct AnyU63 : BgpMaybeU63 {
   U64 min() const noexcept override { return 0; }
   U64 max() const noexcept override { return (U64{1} << 63) - 1; }
};

TEST(TextProperty, ContentAndOptionalValueTextsRoundTrip) {
   forCases("content and optional value text", 2000, [](Random& random) {
      ExtCommContent const content(anyOf<U64>(random));
      EXPECT_EQ(ExtCommContent::fromStrep(content.toStrep()), content) << content;

      U64 const wide = anyOf<U64>(random);
      AnyU63 value;
      AnyU63 restored;
      restored.sequenceToValue("1");
      if (wide > value.max()) {
         EXPECT_THROW(value.valueIs(wide), Kiv::RangeError) << wide;
      } else if (random() % 8 != 0) { // else it stays unspecified
         value.valueIs(wide);
      }
      restored.sequenceToValue(value.toStrep());
      EXPECT_TRUE(restored == value) << value.toStrep() << " read back as " << restored.toStrep();

      U16 const octet = anyOf<U16>(random);
      BgpExtCommPktSubtype subtype;
      if (octet > 255) {
         EXPECT_THROW(BgpExtCommPktSubtype{octet}, Kiv::RangeError) << octet;
         EXPECT_THROW(subtype.sequenceToValue(std::to_string(octet)), Kiv::RangeError);
         EXPECT_TRUE(subtype.isUnspecified());
      } else {
         subtype.sequenceToValue(BgpExtCommPktSubtype(octet).toStrep());
         EXPECT_EQ(subtype.value(), octet);
      }
   });
}

// A name reads back to its value, an unnamed value prints as its number, and
// a number (or its text) is taken, as EInstance takes it, exactly when it is a member.
template <class E>
void enumTextRoundTrips(Random& random) {
   Kiv::EnumDescriptor const& d = enumDescriptor(E{});
   U32 const near = d.members[random() % d.members.size()].value + U32(random() % 5) - 2;
   U32 const v = random() % 2 ? near : anyOf<U32>(random);
   std::string const text = valueToStrep(static_cast<E>(v));
   bool const member = bgpIsValidEnumMember(static_cast<E>(v));
   if (Kiv::enumMemberName(d, v).empty()) {
      EXPECT_EQ(text, std::to_string(v));
      EXPECT_FALSE(member) << d.typeName << " " << v;
   } else {
      EXPECT_EQ(Kiv::enumValueFromText(d, text), v) << text;
   }
   for (bool byText : {false, true}) {
      try {
         U32 const got =
            byText ? Kiv::enumValueFromText(d, std::to_string(v)) : Kiv::enumValueFromNumber(d, v);
         EXPECT_TRUE(member && got == v) << d.typeName << " " << v << " accepted";
      } catch (Kiv::RangeError const&) {
         EXPECT_FALSE(member) << d.typeName << " " << v << " rejected";
      }
   }
}

template <class... E>
void enumTextsRoundTrip(Random& random) {
   (enumTextRoundTrips<E>(random), ...);
}

TEST(TextProperty, EnumerationNamesAndNumbersReadBack) {
   forCases("enumeration text", 300, [](Random& random) {
      enumTextsRoundTrip<
         BgpPathAttrType, BgpPathAttrFlag, OriginCode, AspType, PrefixSidTlvType, TunnelType,
         CommunityDecodeStatus, BgpAttrErrorAction, BgpCommunityValue, ExtCommClassification,
         BgpExtCommPktType, BgpExtCommPktSubtypeTransTwoOctetAs,
         BgpExtCommPktSubtypeTransIpv4Address, BgpExtCommPktSubtypeTransFourOctetAs,
         BgpExtCommPktSubtypeTransOpaque, BgpExtCommPktSubtypeEvpn,
         BgpExtCommPktSubtypeTransFlowspecRedirectNexthop, BgpExtCommPktSubtypeTransGeneric,
         BgpExtCommPktSubtypeTransGenericPart2, BgpExtCommPktSubtypeTransGenericPart3,
         BgpExtCommPktSubtypeNonTransTwoOctetAs, BgpExtCommPktSubtypeNonTransIpv4Address,
         BgpExtCommPktSubtypeNonTransFourOctetAs, BgpExtCommPktSubtypeNonTransOpaque,
         BgpExtCommIp6PktType, BgpExtCommIp6PktSubtypeTransIpv6Address,
         BgpExtCommIp6PktSubtypeNonTransIpv6Address>(random);
   });
}

// ---- Wire round trips ----

struct WireKind {
   U8 typeCode;
   std::size_t elementSize;
} const wireKinds[] = {
   {community, 4}, {largeCommunity, 12}, {extCommunity, 8}, {extCommunityIp6, 20}};

// One element's wire bytes; extended ones mostly with a type and subtype pair
// that some recognition rule knows.
std::string randomElement(Random& random, WireKind const& kind) {
   static constexpr U8 pairs[][2] = {{0x00, 0x02}, {0x01, 0x02}, {0x02, 0x02}, {0x00, 0x03},
                                     {0x40, 0x04}, {0x03, 0x0b}, {0x03, 0x0c}, {0x03, 0x0d},
                                     {0x43, 0x00}, {0x06, 0x00}, {0x42, 0x02}};
   std::string element(kind.elementSize, '\0');
   std::generate(element.begin(), element.end(), [&] { return static_cast<char>(random()); });
   if (kind.elementSize >= 8 && random() % 4 != 0) {
      U8 const* pair = pairs[random() % std::size(pairs)];
      element[0] = static_cast<char>(pair[0]);
      element[1] = static_cast<char>(pair[1]);
   }
   return element;
}

std::span<U8 const> bytesOf(std::string const& s) {
   return {reinterpret_cast<U8 const*>(s.data()), s.size()};
}

void const* identity(AnyCommList const& any) {
   return std::visit(
      [](auto const& list) -> void const* {
         if constexpr (std::is_same_v<std::decay_t<decltype(list)>, std::monostate>) {
            return nullptr;
         } else {
            return list.get();
         }
      },
      any);
}

std::string serialized(AnyCommList const& any) {
   if (auto const* list = std::get_if<CommList::PtrConst>(&any)) {
      return (*list)->serialize();
   }
   if (auto const* large = std::get_if<LargeCommList::PtrConst>(&any)) {
      return (*large)->serialize();
   }
   if (auto const* ext = std::get_if<ExtCommList::PtrConst>(&any)) {
      return (*ext)->serialize(ExtCommList::serialization(true, false, false));
   }
   return std::get<ExtCommIp6List::PtrConst>(any)->serialize(true);
}

TEST(WireProperty, ReencodedListsAreSortedUniqueAndDecodeToTheSameObject) {
   CommunityTables::Ptr tables = communityTablesFactory();
   for (WireKind const& kind : wireKinds) {
      forCases("wire round trip", 400, [&](Random& random) {
         // Up to twice what a 1-octet length holds, drawn from a pool smaller
         // than the list so that duplicates are common.
         std::size_t const count = 1 + random() % (2 * 255 / kind.elementSize);
         std::vector<std::string> pool(1 + random() % count);
         std::generate(pool.begin(), pool.end(), [&] { return randomElement(random, kind); });
         std::string value;
         std::set<std::string> distinct;
         for (std::size_t i = 0; i < count; ++i) {
            value += *distinct.insert(pool[random() % pool.size()]).first;
         }
         auto const first = decodeAttribute(*tables, kind.typeCode, bytesOf(value));
         ASSERT_TRUE(first.ok()) << first.reason;
         std::string const attribute = serialized(first.list);
         bool const extended = (static_cast<U8>(attribute.at(0)) & extLen) != 0;
         std::size_t const header = extended ? 4 : 3;
         std::size_t const length =
            extended ? static_cast<U8>(attribute.at(2)) << 8 | static_cast<U8>(attribute.at(3))
                     : static_cast<U8>(attribute.at(2));
         EXPECT_EQ(static_cast<U8>(attribute[1]), kind.typeCode);
         ASSERT_EQ(length, attribute.size() - header);
         EXPECT_EQ(extended, length > 255);
         std::vector<std::string> written;
         for (std::size_t at = header; at < attribute.size(); at += kind.elementSize) {
            written.push_back(attribute.substr(at, kind.elementSize));
         }
         // Wire order is numeric order for every kind, as std::string compares bytes unsigned.
         EXPECT_EQ(written, std::vector<std::string>(distinct.begin(), distinct.end()))
            << "in  " << hexBytes(bytesOf(value)) << "\nout " << hexBytes(bytesOf(attribute));
         auto const again =
            decodeAttribute(*tables, kind.typeCode, bytesOf(attribute).subspan(header));
         EXPECT_EQ(identity(again.list), identity(first.list));
      });
   }
}

// ---- Interning ----

// A published list the test holds, with the distinct elements it was built from.
struct Held {
   U8 typeCode;
   std::set<std::string> elements;
   AnyCommList list;
};

U64 wordOf(std::string const& element) {
   U64 word = 0;
   for (char c : element) {
      word = word << 8 | static_cast<U8>(c);
   }
   return word;
}

// Equal contents are one object, among the lists and among the extended
// lists' classification lists, and each table holds exactly the distinct
// live contents.
void expectOneObjectPerLiveContent(CommunityTables const& tables, std::vector<Held> const& held) {
   std::map<std::pair<U8, std::set<std::string>>, void const*> lists;
   std::map<std::pair<ExtCommClassification, std::vector<U64>>, void const*> classLists;
   std::set<U64> extValues;
   std::set<std::string> ip6Values;
   std::size_t rtClassLists = 0;
   for (Held const& h : held) {
      auto const known = lists.emplace(std::pair(h.typeCode, h.elements), identity(h.list)).first;
      EXPECT_EQ(known->second, identity(h.list)) << "two lists of one content";
      if (auto const* ext = std::get_if<ExtCommList::PtrConst>(&h.list)) {
         for (ExtCommClassificationList::PtrConst const& c : (*ext)->classificationLists()) {
            if (!c) {
               continue;
            }
            std::vector<U64> words;
            for (ExtComm::PtrConst const& v : *c->commVectorRawPtr()) {
               words.push_back(v->community());
            }
            auto const [at, fresh] =
               classLists.emplace(std::pair(c->classification(), words), c.get());
            EXPECT_EQ(at->second, c.get()) << "two lists of one content: " << c->toStrep();
            rtClassLists += fresh && c->classification() == extCommClassificationRouteTarget;
         }
         for (std::string const& e : h.elements) {
            extValues.insert(wordOf(e));
         }
      } else if (h.typeCode == extCommunityIp6) {
         ip6Values.insert(h.elements.begin(), h.elements.end());
      }
   }
   auto const live = [&](U8 typeCode) {
      return std::count_if(lists.begin(), lists.end(),
                           [&](auto const& l) { return l.first.first == typeCode; });
   };
   ExtCommListDedupTable const& extLists = *tables.extCommListDedupTable();
   EXPECT_EQ(tables.commListDedupTable()->dedupTable()->size(), live(community));
   EXPECT_EQ(tables.largeCommListDedupTable()->dedupTable()->size(), live(largeCommunity));
   EXPECT_EQ(extLists.dedupTable()->size(), live(extCommunity));
   EXPECT_EQ(tables.extCommIp6ListDedupTable()->dedupTable()->size(), live(extCommunityIp6));
   EXPECT_EQ(tables.extCommDedupTable()->dedupTable()->size(), extValues.size());
   EXPECT_EQ(tables.extCommIp6DedupTable()->dedupTable()->size(), ip6Values.size());
   EXPECT_EQ(extLists.rtExtCommClassificationListDedupTable()->size(), rtClassLists);
   EXPECT_EQ(extLists.notifyingRtExtCommListCollection()->rtExtCommLists().size(), rtClassLists);
   EXPECT_EQ(extLists.extCommClassificationListDedupTable()->size(),
             classLists.size() - rtClassLists);
   EXPECT_EQ(tables.extCommDedupTable()->routeTargetList()->rtCount(),
             std::count_if(extValues.begin(), extValues.end(), isRouteTarget));
}

TEST(InterningProperty, EqualContentIsOneLiveObjectAndTablesHoldOnlyLiveContents) {
   forCases("interning", 8, [](Random& random) {
      CommunityTables::Ptr tables = communityTablesFactory();
      // Six elements per kind, so that equal sets recur in other orders.
      std::vector<std::vector<std::string>> universe;
      for (WireKind const& kind : wireKinds) {
         universe.emplace_back(6);
         std::generate(universe.back().begin(), universe.back().end(),
                       [&] { return randomElement(random, kind); });
      }
      std::vector<Held> held;
      for (int step = 0; step < 250 && !testing::Test::HasFailure(); ++step) {
         if (held.empty() || random() % 8 < 5) {
            std::size_t const k = random() % std::size(wireKinds);
            Held h{wireKinds[k].typeCode, {}, {}};
            std::string value;
            for (std::size_t n = 1 + random() % 8; n > 0; --n) {
               value += *h.elements.insert(universe[k][random() % universe[k].size()]).first;
            }
            h.list = decodeAttribute(*tables, h.typeCode, bytesOf(value)).list;
            held.push_back(std::move(h));
         } else {
            std::swap(held[random() % held.size()], held.back());
            held.pop_back();
         }
         expectOneObjectPerLiveContent(*tables, held);
      }
      held.clear();
      expectOneObjectPerLiveContent(*tables, held);
   });
}

struct RouteTargetReports : NotifyingRouteTargetList::Notifiee {
   void onRt(RouteTarget const&) override { ++count; }
   int count = 0;
};

TEST(InterningProperty, RouteTargetListIsTheSetOfLiveRouteTargetValues) {
   forCases("route-target list", 30, [](Random& random) {
      CommunityTables::Ptr tables = communityTablesFactory();
      ExtCommDedupTable const* table = tables->extCommDedupTable().get();
      NotifyingRouteTargetList const& rts = *table->routeTargetList();
      RouteTargetReports reports;
      reports.notifierIs(&rts);
      // Route targets of each layout, and look-alikes of other types or subtypes.
      static constexpr U8 types[] = {0x00, 0x01, 0x02, 0x40, 0x42, 0x03};
      static constexpr U8 subtypes[] = {0x02, 0x02, 0x02, 0x03, 0x04, 0x0b, 0x00};
      std::set<U64> pool;
      while (pool.size() < 16) {
         pool.insert(U64{types[random() % std::size(types)]} << 56 |
                     U64{subtypes[random() % std::size(subtypes)]} << 48 | random() >> 60);
      }
      std::vector<ExtComm::PtrConst> held;
      std::map<U64, int> holders;
      int changes = 0;
      for (int step = 0; step < 300 && !testing::Test::HasFailure(); ++step) {
         if (held.empty() || random() % 2 == 0) {
            U64 const word = *std::next(pool.begin(), random() % pool.size());
            held.push_back(ExtComm::dedupContent(table, ExtCommContent(word)));
            changes += holders[word]++ == 0 && isRouteTarget(word);
         } else {
            std::swap(held[random() % held.size()], held.back());
            changes +=
               --holders[held.back()->community()] == 0 && isRouteTarget(held.back()->community());
            held.pop_back();
         }
         std::size_t live = 0;
         for (U64 word : pool) {
            bool const expected = holders[word] > 0 && isRouteTarget(word);
            live += expected;
            EXPECT_EQ(rts.rtHas(RouteTarget(word)), expected)
               << RouteTarget(word) << ", step " << step;
         }
         EXPECT_EQ(rts.rtCount(), live);
         EXPECT_EQ(reports.count, changes) << "reports at step " << step;
      }
   });
}

} // namespace
} // namespace Routing::Bgp
