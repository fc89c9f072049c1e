// Standard, large, extended and IPv6 extended lists built from fuzz bytes
// through the public building interface, then published, matched against a
// fixed set of route-policy expressions, rendered and serialised, with the
// lists' invariants checked on every input:
//
//   - a published list is ascending without duplicates and holds exactly the
//     values it was given;
//   - publishing the same values again (another order, repeats) gives the
//     very same object, as does interning the same extended value twice;
//   - decoding the list's own attribute gives the very same object;
//   - an attribute with every value has a length field that counts the
//     bytes that follow it;
//   - the standard and large lists match an expression exactly when their
//     documented text forms do, and a route map's match memo (kept across
//     inputs, so lists die and new ones take their addresses) answers as
//     the list itself does.
//
// The values mix well-known and typed ones (route targets, link bandwidths,
// colours, ...) with arbitrary words, so that recognition and pruning see
// both.
#include "QorBgpCommunity/QorBgp/ExtCommIp6List.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityList.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListFormat.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListMatchMemo.h"
#include "fuzz/FuzzSupport.h"
#include "QorBgpCommunity/platform/PosixRegex.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <vector>

using namespace Routing::Bgp;
using Routing::RouteMap::PosixRegex;

namespace {

constexpr std::size_t maxListSize = 40;
// Few enough that lists keep taking each other's slots.
constexpr std::size_t memoSlots = 4;

constexpr U32 communityPalette[] = {
   0x00000000, 0xFFFF0000, 0xFFFF0006, 0xFFFF0007, 0xFFFFFF01, 0xFFFFFF02,
   0xFFFFFF03, 0xFFFFFFFF, 0xFFFF029A, 0xFDE80064, 0x00010002,
};
constexpr U32 largeWordPalette[] = {0, 1, 65535, 65536, 4200000000, 0xFFFFFFFF};
// Type and subtype octets of the recognised kinds and their neighbours.
constexpr U8 extTypePalette[] = {0x00, 0x01, 0x02, 0x03, 0x06, 0x08, 0x40,
                                 0x41, 0x42, 0x43, 0x80, 0x81, 0x82};
constexpr U8 extSubtypePalette[] = {0x00, 0x02, 0x03, 0x04, 0x09, 0x0b, 0x0c, 0x0d, 0x14};
constexpr U8 ip6TypePalette[] = {0x00, 0x40, 0x01};
constexpr U8 ip6SubtypePalette[] = {0x02, 0x03, 0x0b, 0x00};

constexpr char const* patterns[] = {
   "^",
   "^$",
   "(^| )65535:666( |$)",
   "no-export|no-advertise|local-as",
   "^[0-9]+:[0-9]+( [0-9]+:[0-9]+)*$",
   "65000:100",
   "^4200000000:",
   ":0:",
   "RT:",
   "Route-Target",
   "(Color|Link-Bandwidth|Origin-Validation)",
   "[0-9]+\\.[0-9]+",
   "2001:db8::",
   "((a|b)*c)?x",
};

struct Fixture {
   CommunityTables::Ptr tables = communityTablesFactory();
   std::vector<PosixRegex::PtrConst> regexes;
   std::vector<std::unique_ptr<RouteMapMatchMemo>> memos; // one per expression

   Fixture() {
      for (char const* pattern : patterns) {
         auto compiled = PosixRegex::compile(pattern);
         QORBGP_FUZZ_CHECK(compiled);
         regexes.push_back(compiled.regex);
         memos.push_back(std::make_unique<RouteMapMatchMemo>(compiled.regex, memoSlots));
      }
   }

   // The list's answer for every expression, which the memos must repeat
   // (asked twice: once to fill the slot, once to answer from it).
   template <class List>
   void checkMemos(List const& list) const {
      for (std::size_t i = 0; i < regexes.size(); ++i) {
         bool const answer = list.matchCommunitiesRegex(regexes[i].get());
         QORBGP_FUZZ_CHECK(memos[i]->matchCommunitiesRegex(list) == answer);
         QORBGP_FUZZ_CHECK(memos[i]->matchCommunitiesRegex(list) == answer);
      }
   }
};

template <class T, std::size_t N>
T pick(FuzzedDataProvider& fdp, T const (&palette)[N]) {
   return palette[fdp.ConsumeIntegralInRange<std::size_t>(0, N - 1)];
}

// Either a palette entry or an arbitrary value.
template <class T, std::size_t N>
T value(FuzzedDataProvider& fdp, T const (&palette)[N]) {
   return fdp.ConsumeBool() ? pick(fdp, palette) : fdp.ConsumeIntegral<T>();
}

// The values once more, another order and with a repeat.
template <class T>
std::vector<T> shuffled(std::vector<T> values) {
   std::reverse(values.begin(), values.end());
   if (!values.empty()) {
      values.push_back(values.back());
   }
   return values;
}

template <class T>
std::vector<T> sortedUnique(std::vector<T> values) {
   std::sort(values.begin(), values.end());
   values.erase(std::unique(values.begin(), values.end()), values.end());
   return values;
}

// The length field of a serialised attribute counts the rest of it.
void checkHeader(std::string const& attribute) {
   if (attribute.empty()) {
      return;
   }
   QORBGP_FUZZ_CHECK(attribute.size() >= 3);
   auto const* bytes = reinterpret_cast<U8 const*>(attribute.data());
   bool const extended = (bytes[0] & 0x10) != 0;
   std::size_t const header = extended ? 4 : 3;
   QORBGP_FUZZ_CHECK(attribute.size() >= header);
   std::size_t const length = extended ? (std::size_t{bytes[2]} << 8 | bytes[3]) : bytes[2];
   QORBGP_FUZZ_CHECK(length == attribute.size() - header);
}

template <class ListPtr>
void checkDecodesToItself(Fixture const& fx, U8 typeCode, std::string const& attribute,
                          ListPtr const& list) {
   checkHeader(attribute);
   auto decoded = decodeAttribute(*fx.tables, typeCode, QorBgpFuzz::attributeValue(attribute));
   QORBGP_FUZZ_CHECK(decoded.ok());
   QORBGP_FUZZ_CHECK(std::get<ListPtr>(decoded.list) == list);
}

bool matches(PosixRegex const& regex, std::string const& text) { return regex.execute(text) == 0; }

CommList::PtrConst publishStandard(Fixture const& fx, std::vector<U32> const& values) {
   CommList::Ptr list = commListFactory();
   for (U32 v : values) {
      list->commIs(v);
   }
   return list->dedup(fx.tables->commListDedupTable().get());
}

void standard(Fixture const& fx, FuzzedDataProvider& fdp) {
   std::vector<U32> values(fdp.ConsumeIntegralInRange<std::size_t>(0, maxListSize));
   for (U32& v : values) {
      v = value(fdp, communityPalette);
   }
   CommList::PtrConst const list = publishStandard(fx, values);
   QORBGP_FUZZ_CHECK(*list->commVectorRawPtr() == sortedUnique(values));
   QORBGP_FUZZ_CHECK(publishStandard(fx, shuffled(values)) == list);
   if (!list->empty()) {
      checkDecodesToItself(fx, community, list->serialize(), list);
   }

   std::string colon;
   std::string named;
   for (U32 v : *list->commVectorRawPtr()) {
      std::string const name = CommList::wellKnownName(v);
      colon += (colon.empty() ? "" : " ") + CommList::getStringValue(v);
      named += (named.empty() ? "" : " ") + (name.empty() ? CommList::getStringValue(v) : name);
   }
   QORBGP_FUZZ_CHECK(list->toStrep() == named);
   for (PosixRegex::PtrConst const& regex : fx.regexes) {
      QORBGP_FUZZ_CHECK(list->matchCommunitiesRegex(regex.get()) ==
                        (matches(*regex, colon) || matches(*regex, named)));
   }
   fx.checkMemos(*list);
   (void)list->commSnapshot();
}

LargeCommList::PtrConst publishLarge(Fixture const& fx,
                                     std::vector<Acl::CommunityValue> const& values) {
   LargeCommList::Ptr list = largeCommListFactory();
   for (Acl::CommunityValue const& v : values) {
      list->commIs(v);
   }
   return list->dedup(fx.tables->largeCommListDedupTable().get());
}

void large(Fixture const& fx, FuzzedDataProvider& fdp) {
   std::vector<Acl::CommunityValue> values(fdp.ConsumeIntegralInRange<std::size_t>(0, maxListSize));
   for (Acl::CommunityValue& v : values) {
      v = {value(fdp, largeWordPalette), value(fdp, largeWordPalette),
           value(fdp, largeWordPalette)};
   }
   LargeCommList::PtrConst const list = publishLarge(fx, values);
   QORBGP_FUZZ_CHECK(*list->commVectorRawPtr() == sortedUnique(values));
   QORBGP_FUZZ_CHECK(publishLarge(fx, shuffled(values)) == list);
   if (!list->empty()) {
      checkDecodesToItself(fx, largeCommunity, list->serialize(), list);
   }

   std::string text;
   for (Acl::CommunityValue const& v : *list->commVectorRawPtr()) {
      text += (text.empty() ? "" : " ") + LargeCommList::getStringValue(v);
      (void)LargeCommList::displayString(v, true);
   }
   QORBGP_FUZZ_CHECK(list->toStrep() == text);
   for (PosixRegex::PtrConst const& regex : fx.regexes) {
      QORBGP_FUZZ_CHECK(list->matchCommunitiesRegex(regex.get()) == matches(*regex, text));
   }
   fx.checkMemos(*list);
}

ExtCommList::PtrConst publishExtended(Fixture const& fx, std::vector<U64> const& words) {
   ExtCommList::Ptr list = extCommListFactory();
   for (U64 word : words) {
      ExtComm::PtrConst const comm =
         ExtComm::dedupContent(fx.tables->extCommDedupTable().get(), ExtCommContent(word));
      QORBGP_FUZZ_CHECK(comm->community() == word);
      list->commIs(comm);
   }
   return list->dedup(fx.tables->extCommListDedupTable().get());
}

void renderExtComm(ExtComm const& comm) {
   (void)comm.toStrep();
   for (U32 format = 0; format <= ExtComm::StrepFormat::allFlags; ++format) {
      (void)comm.toStrepForPolicy(ExtComm::StrepFormat(format));
   }
   (void)comm.toStrepForUI(true, true, true);
   std::ostringstream os;
   comm.formatSubtype(os);
   comm.formatDerivedType(os);
}

void extended(Fixture const& fx, FuzzedDataProvider& fdp) {
   std::vector<U64> words(fdp.ConsumeIntegralInRange<std::size_t>(0, maxListSize));
   for (U64& word : words) {
      U64 const type = value(fdp, extTypePalette);
      U64 const subtype = value(fdp, extSubtypePalette);
      word = type << 56 | subtype << 48 | (fdp.ConsumeIntegral<U64>() & 0xFFFFFFFFFFFF);
   }
   ExtCommList::PtrConst const list = publishExtended(fx, words);
   std::vector<U64> held;
   for (ExtComm::PtrConst const& comm : *list->commVectorRawPtr()) {
      held.push_back(comm->community());
      QORBGP_FUZZ_CHECK(ExtComm::dedupContent(fx.tables->extCommDedupTable().get(),
                                              comm->getContent()) == comm);
      renderExtComm(*comm);
   }
   QORBGP_FUZZ_CHECK(held == sortedUnique(words));
   QORBGP_FUZZ_CHECK(list->commVectorSorted());
   QORBGP_FUZZ_CHECK(publishExtended(fx, shuffled(words)) == list);
   if (!list->empty()) {
      checkDecodesToItself(fx, extCommunity,
                           list->serialize(ExtCommList::serialization(true, true, true)), list);
   }

   (void)list->toStrep();
   for (PosixRegex::PtrConst const& regex : fx.regexes) {
      (void)list->matchCommunitiesRegex(regex.get());
      (void)matchExtCommList(list.get(), MatchMode::classification, regex.get());
      if (list->hasPolicyMatchStrepUICommunities()) {
         (void)matchExtCommList(list.get(), MatchMode::ui, regex.get());
      }
   }
   fx.checkMemos(*list);
   for (ExtCommClassificationList::PtrConst const& classification : list->classificationLists()) {
      if (classification) {
         (void)classification->toStrep();
      }
   }
   (void)list->commSnapshot();

   // What is left after pruning is exported. Its attribute with every value
   // is well-formed; the selective ones count at most one link bandwidth and
   // one origin validation state in their header, by design, so only run.
   if (ExtCommList::PtrConst const pruned = list->prune(fx.tables->extCommListDedupTable().get())) {
      QORBGP_FUZZ_CHECK(!pruned->hasPrunableValues());
      checkHeader(pruned->serialize(ExtCommList::serialization(true, true, true)));
      for (bool linkBandwidth : {false, true}) {
         for (bool validity : {false, true}) {
            (void)pruned->serialize(ExtCommList::serialization(false, linkBandwidth, validity));
         }
      }
   }
}

ExtCommIp6List::PtrConst publishIp6(Fixture const& fx,
                                    std::vector<ExtCommIp6Content> const& contents) {
   ExtCommIp6List::Ptr list = extCommIp6ListFactory();
   for (ExtCommIp6Content const& content : contents) {
      list->commIs(ExtCommIp6::dedupContent(fx.tables->extCommIp6DedupTable().get(), content));
   }
   return list->dedup(fx.tables->extCommIp6ListDedupTable().get());
}

void ip6(Fixture const& fx, FuzzedDataProvider& fdp) {
   std::vector<ExtCommIp6Content> contents(fdp.ConsumeIntegralInRange<std::size_t>(0, maxListSize / 2));
   for (ExtCommIp6Content& content : contents) {
      Qornet::Ip6Addr::Bytes address{};
      if (fdp.ConsumeBool()) {
         address = {0x20, 0x01, 0x0d, 0xb8};
         address[15] = fdp.ConsumeIntegral<U8>();
      } else {
         fdp.ConsumeData(address.data(), address.size());
      }
      content = ExtCommIp6Content(value(fdp, ip6TypePalette), value(fdp, ip6SubtypePalette),
                                  Qornet::Ip6Addr(address), fdp.ConsumeIntegral<U16>());
   }
   ExtCommIp6List::PtrConst const list = publishIp6(fx, contents);
   std::vector<ExtCommIp6Content> held;
   for (ExtCommIp6::PtrConst const& comm : *list->commVectorRawPtr()) {
      held.push_back(comm->getContent());
      (void)comm->toStrep();
      for (U32 format = 0; format <= ExtCommIp6::StrepFormat::allFlags; ++format) {
         (void)comm->toStrepForPolicy(ExtCommIp6::StrepFormat(format));
      }
   }
   QORBGP_FUZZ_CHECK(held == sortedUnique(contents));
   QORBGP_FUZZ_CHECK(publishIp6(fx, shuffled(contents)) == list);
   if (!list->empty()) {
      checkDecodesToItself(fx, extCommunityIp6, list->serialize(true), list);
   }
   checkHeader(list->serialize(false));
   (void)list->toStrep();
   (void)list->commsStringForm();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(U8 const* data, std::size_t size) {
   static Fixture const fx;
   FuzzedDataProvider fdp(data, size);
   standard(fx, fdp);
   large(fx, fdp);
   extended(fx, fdp);
   ip6(fx, fdp);
   return 0;
}
