// Randomised properties of the text forms, the wire codecs and the interning
// tables. Cases come from one fixed seed, each from a generator of its own
// (seed + case index), so a failing case is named by seed and index and
// reproduces alone; QORBGP_PROPERTY_SEED picks another seed for exploration.
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

// Runs `count` cases of `property`, stopping at the first that fails.
template <class Case>
void forCases(char const* property, int count, Case&& oneCase) {
   int const before = failureCount();
   for (int i = 0; i < count; ++i) {
      Random random(seed + static_cast<U64>(i));
      oneCase(random);
      if (failureCount() != before) {
         ADD_FAILURE() << property << ": failed at seed " << seed << ", case " << i;
         return;
      }
   }
}

// A value of random width (small values as common as large ones), now and
// then the largest.
template <std::unsigned_integral T>
T anyOf(Random& random) {
   if (random() % 8 == 0) {
      return std::numeric_limits<T>::max();
   }
   unsigned const width = random() % (8 * sizeof(T) + 1);
   return static_cast<T>(width == 0 ? 0 : random() >> (64 - width));
}

bool isRouteTarget(U64 word) { return (word >> 56) <= 2 && (word >> 48 & 0xff) == 2; }

// ---- Text forms ----

// A value text cut into its head "Value('T', ** {" and its "'name': value" fields.
struct ValueTextParts {
   std::string head;
   std::vector<std::string> fields;

   explicit ValueTextParts(std::string const& text) : head(text.substr(0, text.find('{') + 1)) {
      std::string const body = text.substr(head.size(), text.rfind('}') - head.size());
      for (std::size_t at = 0; at < body.size();) {
         std::size_t const end = std::min(body.find(", ", at), body.size());
         fields.push_back(body.substr(at, end - at));
         at = end + 2;
      }
   }
   std::string text() const {
      std::string out = head;
      for (std::size_t i = 0; i < fields.size(); ++i) {
         out.append(i == 0 ? "" : ", ").append(fields[i]);
      }
      return out + "})";
   }
};

// The value's text parses back, with its fields in any order, and not with
// one of them missing or given twice.
template <class T, class Parse>
void expectValueTextRoundTrips(Random& random, T const& value, std::string const& text,
                               Parse parse) {
   EXPECT_EQ(parse(text), value) << text;
   ValueTextParts parts(text);
   std::shuffle(parts.fields.begin(), parts.fields.end(), random);
   EXPECT_EQ(parse(parts.text()), value) << parts.text();
   std::size_t const victim = random() % parts.fields.size();
   if (random() % 2 == 0) {
      parts.fields.erase(parts.fields.begin() + static_cast<std::ptrdiff_t>(victim));
   } else {
      parts.fields.push_back(parts.fields[victim]);
   }
   EXPECT_THROW(parse(parts.text()), Kiv::RangeError) << parts.text();
}

template <class Set, U32 all>
void flagSetRoundTrips(Random& random) {
   Set const set(static_cast<U32>(random() % (all + 1)));
   expectValueTextRoundTrips(random, set, set.valueToStrep(),
                             [](std::string const& t) { return Set::fromValueStrep(t); });
}

TEST(TextProperty, FlagSetTextsRoundTripInAnyFieldOrder) {
   forCases("flag sets", 200, [](Random& random) {
      flagSetRoundTrips<ExtComm::StrepFormat, ExtComm::StrepFormat::allFlags>(random);
      flagSetRoundTrips<ExtCommIp6::StrepFormat, ExtCommIp6::StrepFormat::allFlags>(random);
      flagSetRoundTrips<ExtCommList::CommVectorAttrs, ExtCommList::CommVectorAttrs::allBits>(random);
      flagSetRoundTrips<ExtCommList::Serialization, ExtCommList::Serialization::allBits>(random);
      flagSetRoundTrips<ExtCommClassificationList::CommVectorAttrs,
                        ExtCommClassificationList::CommVectorAttrs::allBits>(random);
   });
}

// Every layout with fields of random width, and words of other types and
// subtypes (non-transitive route-target look-alikes among them).
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
                         U64{anyOf<U8>(random)} << 48 | (anyOf<U64>(random) >> 16));
   }
   return RouteTarget(anyOf<U64>(random));
}

TEST(TextProperty, RouteTargetAndPrefixTextsParseBackToTheSameWord) {
   forCases("route target text", 2000, [](Random& random) {
      RouteTarget const rt = anyRouteTarget(random);
      for (bool asdot : {false, true}) {
         std::string const text = rt.toStrep(asdot);
         EXPECT_LE(text.size(), RouteTarget::maxStrepLength) << text;
         EXPECT_EQ(RouteTarget::parse(text), rt) << text << " asdot " << asdot;
      }
      // The word itself: 1 to 16 digits of either case.
      char digits[17];
      std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(rt.word()));
      std::size_t const zeros = std::min<std::size_t>(std::strspn(digits, "0"), 15);
      std::string hex(digits + random() % (zeros + 1));
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

TEST(TextProperty, Ip6AddressTextsParseBackInEveryForm) {
   forCases("IPv6 address text", 2000, [](Random& random) {
      // Zero groups are common, so that runs of every length get compressed.
      std::array<U16, 8> groups{};
      for (U16& g : groups) {
         g = random() % 2 ? anyOf<U16>(random) : 0;
      }
      if (random() % 8 == 0) { // IPv4-mapped
         std::fill_n(groups.begin(), 5, 0);
         groups[5] = 0xffff;
      }
      Qornet::Ip6Addr::Bytes bytes;
      for (std::size_t i = 0; i < 8; ++i) {
         bytes[2 * i] = static_cast<U8>(groups[i] >> 8);
         bytes[2 * i + 1] = static_cast<U8>(groups[i]);
      }
      Qornet::Ip6Addr const addr(bytes);
      std::string const text = addr.toStrep();
      EXPECT_LE(text.size(), Qornet::Ip6Addr::maxStrepLength);
      EXPECT_EQ(Qornet::Ip6Addr::parse(text), addr) << text;
      // Uncompressed with leading zeros in random case, and with the last 32 bits dotted.
      std::string full;
      std::string mixed;
      for (std::size_t i = 0; i < 8; ++i) {
         char group[8];
         std::snprintf(group, sizeof group, random() % 2 ? "%04X" : "%x", groups[i]);
         full.append(i == 0 ? "" : ":").append(group);
         mixed.append(i < 6 ? group : "").append(i < 5 ? ":" : "");
      }
      mixed += ':' + std::to_string(bytes[12]) + '.' + std::to_string(bytes[13]) + '.' +
               std::to_string(bytes[14]) + '.' + std::to_string(bytes[15]);
      EXPECT_EQ(Qornet::Ip6Addr::parse(full), addr) << full;
      EXPECT_EQ(Qornet::Ip6Addr::parse(mixed), addr) << mixed;
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
      if (random() % 8 == 0) {
         restored.sequenceToValue("1");
         restored.sequenceToValue(value.toStrep()); // "-", unspecified again
      } else if (wide > value.max()) {
         EXPECT_THROW(value.valueIs(wide), Kiv::RangeError) << wide;
         EXPECT_THROW(restored.sequenceToValue(std::to_string(wide)), Kiv::RangeError);
      } else {
         value.valueIs(wide);
         restored.sequenceToValue(value.toStrep());
      }
      EXPECT_TRUE(restored == value) << value.toStrep() << " read back as " << restored.toStrep();

      U16 const octet = anyOf<U16>(random);
      if (octet > 255) {
         EXPECT_THROW(BgpExtCommPktSubtype{octet}, Kiv::RangeError) << octet;
      } else {
         BgpExtCommPktSubtype subtype;
         subtype.sequenceToValue(BgpExtCommPktSubtype(octet).toStrep());
         EXPECT_EQ(subtype.value(), octet);
      }
   });
}

// Names read back to their values, unnamed values print as their decimal
// number, and EInstance accepts a number (or its text) exactly when it is a member.
template <class E, class Instance>
void enumTextRoundTrips(Random& random, Instance instance) {
   Kiv::EnumDescriptor const& d = enumDescriptor(E{});
   U32 const near = d.members[random() % d.members.size()].value;
   U32 const v = random() % 2 ? near + static_cast<U32>(random() % 5) - 2 : anyOf<U32>(random);
   E const e = static_cast<E>(v);
   std::string const text = valueToStrep(e);
   bool const member = bgpIsValidEnumMember(e);
   if (Kiv::enumMemberName(d, v).empty()) {
      EXPECT_EQ(text, std::to_string(v));
      EXPECT_FALSE(member) << d.typeName << " " << v;
   } else {
      EXPECT_EQ(instance(std::string_view(text)), e) << text;
   }
   for (bool byText : {false, true}) {
      try {
         E const got = byText ? instance(std::string_view(std::to_string(v))) : instance(v);
         EXPECT_TRUE(member && got == e) << d.typeName << " " << v << " accepted";
      } catch (Kiv::RangeError const&) {
         EXPECT_FALSE(member) << d.typeName << " " << v << " rejected";
      }
   }
}

#define QORBGP_ENUM_ROUND_TRIP(E) enumTextRoundTrips<E>(random, [](auto x) { return E##Instance(x); })

TEST(TextProperty, EnumerationNamesAndNumbersReadBackThroughInstance) {
   forCases("enumeration text", 300, [](Random& random) {
      QORBGP_ENUM_ROUND_TRIP(BgpPathAttrType);
      QORBGP_ENUM_ROUND_TRIP(BgpPathAttrFlag);
      QORBGP_ENUM_ROUND_TRIP(OriginCode);
      QORBGP_ENUM_ROUND_TRIP(AspType);
      QORBGP_ENUM_ROUND_TRIP(PrefixSidTlvType);
      QORBGP_ENUM_ROUND_TRIP(TunnelType);
      QORBGP_ENUM_ROUND_TRIP(CommunityDecodeStatus);
      QORBGP_ENUM_ROUND_TRIP(BgpAttrErrorAction);
      QORBGP_ENUM_ROUND_TRIP(BgpCommunityValue);
      QORBGP_ENUM_ROUND_TRIP(ExtCommClassification);
      QORBGP_ENUM_ROUND_TRIP(BgpExtCommPktType);
      QORBGP_ENUM_ROUND_TRIP(BgpExtCommPktSubtypeTransTwoOctetAs);
      QORBGP_ENUM_ROUND_TRIP(BgpExtCommPktSubtypeTransIpv4Address);
      QORBGP_ENUM_ROUND_TRIP(BgpExtCommPktSubtypeTransFourOctetAs);
      QORBGP_ENUM_ROUND_TRIP(BgpExtCommPktSubtypeTransOpaque);
      QORBGP_ENUM_ROUND_TRIP(BgpExtCommPktSubtypeEvpn);
      QORBGP_ENUM_ROUND_TRIP(BgpExtCommPktSubtypeTransFlowspecRedirectNexthop);
      QORBGP_ENUM_ROUND_TRIP(BgpExtCommPktSubtypeTransGeneric);
      QORBGP_ENUM_ROUND_TRIP(BgpExtCommPktSubtypeTransGenericPart2);
      QORBGP_ENUM_ROUND_TRIP(BgpExtCommPktSubtypeTransGenericPart3);
      QORBGP_ENUM_ROUND_TRIP(BgpExtCommPktSubtypeNonTransTwoOctetAs);
      QORBGP_ENUM_ROUND_TRIP(BgpExtCommPktSubtypeNonTransIpv4Address);
      QORBGP_ENUM_ROUND_TRIP(BgpExtCommPktSubtypeNonTransFourOctetAs);
      QORBGP_ENUM_ROUND_TRIP(BgpExtCommPktSubtypeNonTransOpaque);
      QORBGP_ENUM_ROUND_TRIP(BgpExtCommIp6PktType);
      QORBGP_ENUM_ROUND_TRIP(BgpExtCommIp6PktSubtypeTransIpv6Address);
      QORBGP_ENUM_ROUND_TRIP(BgpExtCommIp6PktSubtypeNonTransIpv6Address);
   });
}

// ---- Wire round trips ----

struct WireKind {
   U8 typeCode;
   std::size_t elementSize;
};
WireKind const wireKinds[] = {
   {community, 4}, {largeCommunity, 12}, {extCommunity, 8}, {extCommunityIp6, 20}};

// The wire bytes of one random element; extended ones mostly start with a
// type and subtype pair that a recognition rule knows.
std::string randomElement(Random& random, WireKind const& kind) {
   static constexpr U8 pairs[][2] = {{0x00, 0x02}, {0x01, 0x02}, {0x02, 0x02}, {0x00, 0x03},
                                     {0x40, 0x04}, {0x03, 0x0b}, {0x03, 0x0c}, {0x03, 0x0d},
                                     {0x43, 0x00}, {0x06, 0x00}, {0x42, 0x02}};
   std::string element(kind.elementSize, '\0');
   std::generate(element.begin(), element.end(), [&] { return static_cast<char>(random()); });
   if (kind.elementSize >= 8 && random() % 4 != 0) {
      auto const& pair = pairs[random() % std::size(pairs)];
      element[0] = static_cast<char>(pair[0]);
      element[1] = static_cast<char>(pair[1]);
   }
   return element;
}

void const* identity(AnyCommList const& any) {
   return std::visit([](auto const& list) -> void const* {
      if constexpr (std::is_same_v<std::decay_t<decltype(list)>, std::monostate>) {
         return nullptr;
      } else {
         return list.get();
      }
   }, any);
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

std::span<U8 const> bytesOf(std::string const& s) {
   return {reinterpret_cast<U8 const*>(s.data()), s.size()};
}

TEST(WireProperty, ReencodedListsAreSortedUniqueAndDecodeToTheSameObject) {
   CommunityTables::Ptr tables = communityTablesFactory();
   for (WireKind const& kind : wireKinds) {
      forCases("wire round trip", 400, [&](Random& random) {
         // Up to twice the elements a 1-byte length holds, from a pool smaller
         // than the list, so that duplicates are common.
         std::size_t const count = 1 + random() % (2 * 255 / kind.elementSize);
         std::vector<std::string> pool(1 + random() % count);
         std::generate(pool.begin(), pool.end(), [&] { return randomElement(random, kind); });
         std::string value;
         std::set<std::string> distinct;
         for (std::size_t i = 0; i < count; ++i) {
            std::string const& element = pool[random() % pool.size()];
            distinct.insert(element);
            value += element;
         }
         auto const first = decodeAttribute(*tables, kind.typeCode, bytesOf(value));
         ASSERT_TRUE(first.ok()) << first.reason;
         std::string const attribute = serialized(first.list);
         bool const extended = (static_cast<U8>(attribute.at(0)) & extLen) != 0;
         std::size_t const header = extended ? 4 : 3;
         std::size_t const length = extended ? static_cast<U8>(attribute.at(2)) << 8 |
                                                  static_cast<U8>(attribute.at(3))
                                             : static_cast<U8>(attribute.at(2));
         EXPECT_EQ(static_cast<U8>(attribute[1]), kind.typeCode);
         ASSERT_EQ(length, attribute.size() - header);
         EXPECT_EQ(extended, length > 255);
         std::vector<std::string> written;
         for (std::size_t at = header; at < attribute.size(); at += kind.elementSize) {
            written.push_back(attribute.substr(at, kind.elementSize));
         }
         // Wire order is numeric order for every kind, and std::string compares bytes unsigned.
         EXPECT_EQ(written, std::vector<std::string>(distinct.begin(), distinct.end()))
            << "in  " << hexBytes(bytesOf(value)) << "\nout " << hexBytes(bytesOf(attribute));
         auto const again = decodeAttribute(*tables, kind.typeCode, bytesOf(attribute).subspan(header));
         EXPECT_EQ(identity(again.list), identity(first.list));
      });
   }
}

// ---- Interning ----

U64 wordOf(std::string const& element) {
   U64 word = 0;
   for (char c : element.substr(0, 8)) {
      word = word << 8 | static_cast<U8>(c);
   }
   return word;
}

// A published list held by the test, with the distinct elements it was built from.
struct Held {
   U8 typeCode;
   std::set<std::string> elements;
   AnyCommList list;
};

// Equal contents are one object, among the lists and among their
// classification lists, and every table holds exactly the distinct contents
// that are alive.
void expectOneObjectPerLiveContent(CommunityTables const& tables, std::vector<Held> const& held) {
   std::map<std::pair<U8, std::set<std::string>>, void const*> lists;
   std::map<std::pair<ExtCommClassification, std::vector<U64>>, void const*> extClassLists;
   std::map<std::vector<ExtCommIp6Content>, void const*> ip6ClassLists;
   std::set<U64> extValues;
   std::set<std::string> ip6Values;
   std::size_t rtClassLists = 0;
   for (Held const& h : held) {
      auto const [known, fresh] = lists.emplace(std::pair(h.typeCode, h.elements), identity(h.list));
      EXPECT_EQ(known->second, identity(h.list)) << "two objects for one content";
      if (auto const* ext = std::get_if<ExtCommList::PtrConst>(&h.list)) {
         std::size_t members = 0;
         for (auto const& c : (*ext)->classificationLists()) {
            if (c) {
               std::vector<U64> words;
               for (ExtComm::PtrConst const& v : *c->commVectorRawPtr()) {
                  words.push_back(v->community());
               }
               members += words.size();
               auto const [at, isNew] = extClassLists.emplace(std::pair(c->classification(), words), c.get());
               EXPECT_EQ(at->second, c.get()) << "two objects for one " << c->toStrep();
               rtClassLists += isNew && c->classification() == extCommClassificationRouteTarget;
            }
         }
         EXPECT_EQ(members, (*ext)->comms());
         std::transform(h.elements.begin(), h.elements.end(), std::inserter(extValues, extValues.end()), wordOf);
      } else if (auto const* ip6 = std::get_if<ExtCommIp6List::PtrConst>(&h.list)) {
         for (U32 c = 0; c < extCommClassificationOneBeyondLast; ++c) {
            if (auto const list = (*ip6)->classificationList(static_cast<ExtCommClassification>(c))) {
               std::vector<ExtCommIp6Content> members;
               for (ExtCommIp6::PtrConst const& v : *list->commVectorRawPtr()) {
                  members.push_back(v->getContent());
               }
               auto const [at, isNew] = ip6ClassLists.emplace(members, list.get());
               EXPECT_EQ(at->second, list.get()) << "two objects for one " << list->toStrep();
            }
         }
         ip6Values.insert(h.elements.begin(), h.elements.end());
      }
   }
   auto const liveLists = [&](U8 typeCode) {
      return std::count_if(lists.begin(), lists.end(), [&](auto const& l) { return l.first.first == typeCode; });
   };
   EXPECT_EQ(tables.commListDedupTable()->dedupTable()->size(), liveLists(community));
   EXPECT_EQ(tables.largeCommListDedupTable()->dedupTable()->size(), liveLists(largeCommunity));
   EXPECT_EQ(tables.extCommListDedupTable()->dedupTable()->size(), liveLists(extCommunity));
   EXPECT_EQ(tables.extCommIp6ListDedupTable()->dedupTable()->size(), liveLists(extCommunityIp6));
   EXPECT_EQ(tables.extCommDedupTable()->dedupTable()->size(), extValues.size());
   EXPECT_EQ(tables.extCommIp6DedupTable()->dedupTable()->size(), ip6Values.size());
   ExtCommListDedupTable const& extLists = *tables.extCommListDedupTable();
   EXPECT_EQ(extLists.rtExtCommClassificationListDedupTable()->size(), rtClassLists);
   EXPECT_EQ(extLists.notifyingRtExtCommListCollection()->rtExtCommLists().size(), rtClassLists);
   EXPECT_EQ(extLists.extCommClassificationListDedupTable()->size(),
             extClassLists.size() - rtClassLists);
   EXPECT_EQ(tables.extCommIp6ListDedupTable()->extCommIp6ClassificationListDedupTable()->size(),
             ip6ClassLists.size());
   EXPECT_EQ(tables.extCommDedupTable()->routeTargetList()->rtCount(),
             std::count_if(extValues.begin(), extValues.end(), isRouteTarget));
}

TEST(InterningProperty, EqualContentIsOneLiveObjectAndTablesHoldOnlyLiveContents) {
   forCases("interning", 8, [](Random& random) {
      CommunityTables::Ptr tables = communityTablesFactory();
      // Few elements per kind, so that equal sets recur in different orders.
      std::vector<std::vector<std::string>> universe;
      for (WireKind const& kind : wireKinds) {
         universe.emplace_back(6);
         std::generate(universe.back().begin(), universe.back().end(),
                       [&] { return randomElement(random, kind); });
      }
      std::vector<Held> held;
      for (int step = 0; step < 250; ++step) {
         if (held.empty() || random() % 8 < 5) {
            std::size_t const k = random() % std::size(wireKinds);
            Held h{wireKinds[k].typeCode, {}, {}};
            std::string value;
            for (std::size_t n = 1 + random() % 8; n > 0; --n) {
               std::string const& element = universe[k][random() % universe[k].size()];
               h.elements.insert(element);
               value += element;
            }
            h.list = decodeAttribute(*tables, h.typeCode, bytesOf(value)).list;
            held.push_back(std::move(h));
         } else {
            std::swap(held[random() % held.size()], held.back());
            held.pop_back();
         }
         expectOneObjectPerLiveContent(*tables, held);
         if (testing::Test::HasFailure()) {
            ADD_FAILURE() << "at step " << step;
            return;
         }
      }
      held.clear();
      expectOneObjectPerLiveContent(*tables, held);
   });
}

struct RouteTargetReports : NotifyingRouteTargetList::Notifiee {
   void onRt(RouteTarget const&) override { ++count; }
   int count = 0;
};

TEST(InterningProperty, RouteTargetListIsTheSetOfLiveRouteTargets) {
   forCases("route-target list", 30, [](Random& random) {
      CommunityTables::Ptr tables = communityTablesFactory();
      ExtCommDedupTable const* table = tables->extCommDedupTable().get();
      NotifyingRouteTargetList const& rts = *table->routeTargetList();
      RouteTargetReports reports;
      reports.notifierIs(&rts);
      // Route targets of every layout and look-alikes of other types or subtypes.
      static constexpr U8 types[] = {0x00, 0x01, 0x02, 0x40, 0x42, 0x03};
      static constexpr U8 otherSubtypes[] = {0x03, 0x04, 0x0b, 0x00};
      std::vector<U64> pool(16);
      for (U64& word : pool) {
         U8 const subtype = random() % 2 ? 0x02 : otherSubtypes[random() % std::size(otherSubtypes)];
         word = U64{types[random() % std::size(types)]} << 56 | U64{subtype} << 48 | (random() >> 56);
      }
      std::vector<ExtComm::PtrConst> held;
      std::map<U64, int> holders;
      int changes = 0;
      for (int step = 0; step < 300; ++step) {
         U64 word;
         if (held.empty() || random() % 2 == 0) {
            word = pool[random() % pool.size()];
            held.push_back(ExtComm::dedupContent(table, ExtCommContent(word)));
            changes += holders[word]++ == 0 && isRouteTarget(word);
         } else {
            std::swap(held[random() % held.size()], held.back());
            word = held.back()->community();
            held.pop_back();
            changes += --holders[word] == 0 && isRouteTarget(word);
         }
         std::size_t live = 0;
         for (U64 w : std::set<U64>(pool.begin(), pool.end())) {
            bool const expected = holders[w] > 0 && isRouteTarget(w);
            live += expected;
            EXPECT_EQ(rts.rtHas(RouteTarget(w)), expected) << RouteTarget(w) << " at step " << step;
         }
         EXPECT_EQ(rts.rtCount(), live);
         ASSERT_EQ(reports.count, changes) << "reports at step " << step << ", last " << RouteTarget(word);
      }
   });
}

} // namespace
} // namespace Routing::Bgp
