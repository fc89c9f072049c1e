// The route-policy parser on arbitrary text, and what it builds on lists.
//
// Input: one selector byte (the community kind; set matcher or edit), then the
// text. Kiv::RangeError is the documented outcome of bad text and is caught;
// any other exception escapes and fails the run.
//
// Beyond "no crash": what the parser accepts prints back (toStrep) to a text
// that parses to the same print; a set matcher's inversion is the negation of
// its answer; an edit's result is null or an interned list, and applying the
// edit again to its own result changes nothing for add, delete and delete-all.
#include "QorBgpCommunity/QorBgp/CommunityPolicyParser.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListDedupTable.h"
#include "QorBgpCommunity/platform/Errors.h"
#include "fuzz/FuzzSupport.h"

#include <string_view>
#include <vector>

using namespace Routing::Bgp;

namespace {

CommunityMatchContext const context{.peerAs = 65001, .localAs = 65000};

template <class Set, class List>
void judge(Set const& set, List const& list) {
   bool const answer = set.matches(list, context);
   auto const inverted = Kiv::newNotifying<Set>(set.matchers(), set.mode(), !set.inverted());
   QORBGP_FUZZ_CHECK(inverted->matches(list, context) == !answer);
}

template <class Edit, class List>
void edit(Edit const& e, List const* list, CommunityTables const& tables) {
   auto const result = e.apply(list, tables, context);
   QORBGP_FUZZ_CHECK(!result || result->isDeduped());
   if (e.kind() != CommunityEditKind::replace) {
      QORBGP_FUZZ_CHECK(e.apply(result.get(), tables, context) == result);
   }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(U8 const* data, std::size_t size) {
   if (size == 0) {
      return 0;
   }
   std::string_view const text(reinterpret_cast<char const*>(data + 1), size - 1);
   static auto const tables = communityTablesFactory();
   static std::vector<U32> standardValues{0, 65001u << 16 | 666, 0xFFFFFF01, 65000u << 16 | 100};
   static std::vector<Acl::CommunityValue> largeValues{{65001, 0, 666}, {4200000000, 1, 2}};
   static auto const standardList =
      CommList::dedupValues(tables->commListDedupTable().get(), standardValues);
   static auto const largeList =
      LargeCommList::dedupValues(tables->largeCommListDedupTable().get(), largeValues);
   static auto const ip6List = std::get<ExtCommIp6List::PtrConst>(
      decodeAttribute(*tables, extCommunityIp6,
                      *parseHex("0002 20010db8000000000000000000000001 0102"))
         .list);
   static auto const extendedList = std::get<ExtCommList::PtrConst>(
      decodeAttribute(
         *tables, extCommunity,
         *parseHex("0002fde900000064 0103c000020100ff 030b000000000064 4300000000000002"))
         .list);
   try {
      switch (data[0] % 8) {
      case 0: {
         auto const set = parseStandardCommunitySet(text);
         QORBGP_FUZZ_CHECK(parseStandardCommunitySet(set->toStrep())->toStrep() == set->toStrep());
         judge(*set, *standardList);
         break;
      }
      case 1: {
         auto const set = parseLargeCommunitySet(text);
         QORBGP_FUZZ_CHECK(parseLargeCommunitySet(set->toStrep())->toStrep() == set->toStrep());
         judge(*set, *largeList);
         break;
      }
      case 2: {
         auto const e = parseStandardCommunityEdit(text);
         QORBGP_FUZZ_CHECK(parseStandardCommunityEdit(e->toStrep())->toStrep() == e->toStrep());
         edit(*e, standardList.get(), *tables);
         break;
      }
      case 6: {
         auto const set = parseExtCommIp6Set(text);
         QORBGP_FUZZ_CHECK(parseExtCommIp6Set(set->toStrep())->toStrep() == set->toStrep());
         judge(*set, *ip6List);
         break;
      }
      case 5: {
         auto const e = parseExtCommunityEdit(text);
         QORBGP_FUZZ_CHECK(parseExtCommunityEdit(e->toStrep())->toStrep() == e->toStrep());
         edit(*e, extendedList.get(), *tables);
         break;
      }
      case 4: {
         auto const set = parseExtCommunitySet(text);
         QORBGP_FUZZ_CHECK(parseExtCommunitySet(set->toStrep())->toStrep() == set->toStrep());
         judge(*set, *extendedList);
         break;
      }
      case 7: {
         auto const e = parseExtCommIp6Edit(text);
         QORBGP_FUZZ_CHECK(parseExtCommIp6Edit(e->toStrep())->toStrep() == e->toStrep());
         edit(*e, ip6List.get(), *tables);
         break;
      }
      default: {
         auto const e = parseLargeCommunityEdit(text);
         QORBGP_FUZZ_CHECK(parseLargeCommunityEdit(e->toStrep())->toStrep() == e->toStrep());
         edit(*e, largeList.get(), *tables);
         break;
      }
      }
   } catch (Kiv::RangeError const&) {
   }
   return 0;
}
