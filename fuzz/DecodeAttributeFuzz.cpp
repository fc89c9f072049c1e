// The community attribute decoders on arbitrary attribute values.
//
// Input: one selector byte, then the attribute value. Selectors below 0xF0
// pick one of the four community attributes (selector % 4); the rest are
// passed on as type codes that are no community attribute.
//
// Beyond "no crash": the result agrees with the length rule, a decoded list
// re-encodes to its elements sorted bytewise without repeats (every list's
// order is the bytewise order of its wire elements), and decoding the same
// value again gives the very same list object.
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"
#include "fuzz/FuzzSupport.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

using namespace Routing::Bgp;

namespace {

constexpr U8 communityTypes[] = {community, largeCommunity, extCommunity, extCommunityIp6};
constexpr U8 firstNonCommunitySelector = 0xF0;

std::size_t elementSize(U8 typeCode) {
   switch (typeCode) {
   case community:
      return 4;
   case largeCommunity:
      return 12;
   case extCommunity:
      return 8;
   case extCommunityIp6:
      return 20;
   }
   return 0;
}

// The value as the encoders write it: the elements in bytewise order, each once.
std::string normalised(std::span<U8 const> value, std::size_t size) {
   std::vector<std::string> elements;
   for (std::size_t at = 0; at < value.size(); at += size) {
      elements.emplace_back(reinterpret_cast<char const*>(value.data() + at), size);
   }
   std::sort(elements.begin(), elements.end());
   elements.erase(std::unique(elements.begin(), elements.end()), elements.end());
   std::string out;
   for (std::string const& element : elements) {
      out += element;
   }
   return out;
}

// The whole attribute of a decoded list, every value included.
std::string serialised(AnyCommList const& list) {
   if (auto const* p = std::get_if<CommList::PtrConst>(&list)) {
      return (*p)->serialize();
   }
   if (auto const* p = std::get_if<LargeCommList::PtrConst>(&list)) {
      return (*p)->serialize();
   }
   if (auto const* p = std::get_if<ExtCommList::PtrConst>(&list)) {
      return (*p)->serialize(ExtCommList::serialization(true, true, true));
   }
   return std::get<ExtCommIp6List::PtrConst>(list)->serialize(true);
}

std::string text(AnyCommList const& list) {
   return std::visit(
      [](auto const& p) -> std::string {
         if constexpr (std::is_same_v<std::decay_t<decltype(p)>, std::monostate>) {
            return {};
         } else {
            return p->toStrep();
         }
      },
      list);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(U8 const* data, std::size_t size) {
   static CommunityTables::Ptr const tables = communityTablesFactory();
   if (size == 0) {
      return 0;
   }
   U8 const selector = data[0];
   U8 const typeCode =
      selector < firstNonCommunitySelector ? communityTypes[selector % 4] : selector;
   std::span<U8 const> const value(data + 1, size - 1);

   auto result = decodeAttribute(*tables, typeCode, value);
   std::size_t const element = elementSize(typeCode);
   if (element == 0) {
      QORBGP_FUZZ_CHECK(result.status == communityDecodeNotCommunityAttribute);
      QORBGP_FUZZ_CHECK(result.action == attrErrorActionNone);
      QORBGP_FUZZ_CHECK(std::holds_alternative<std::monostate>(result.list));
      return 0;
   }
   bool const wellFormed = !value.empty() && value.size() % element == 0 && value.size() <= 0xFFFF;
   if (!wellFormed) {
      QORBGP_FUZZ_CHECK(result.status == communityDecodeMalformed);
      QORBGP_FUZZ_CHECK(result.action == treatAsWithdraw);
      QORBGP_FUZZ_CHECK(!result.reason.empty());
      QORBGP_FUZZ_CHECK(std::holds_alternative<std::monostate>(result.list));
      return 0;
   }
   QORBGP_FUZZ_CHECK(result.ok() && result.action == attrErrorActionNone);
   QORBGP_FUZZ_CHECK(!std::holds_alternative<std::monostate>(result.list));

   std::string const attribute = serialised(result.list);
   std::span<U8 const> const encoded = QorBgpFuzz::attributeValue(attribute);
   std::string const expected = normalised(value, element);
   QORBGP_FUZZ_CHECK(encoded.size() == expected.size() &&
                     std::memcmp(encoded.data(), expected.data(), expected.size()) == 0);
   QORBGP_FUZZ_CHECK(static_cast<U8>(attribute[1]) == typeCode);

   // The same value, and its normal form, intern to the same list.
   auto again = decodeAttribute(*tables, typeCode, value);
   QORBGP_FUZZ_CHECK(again.list == result.list);
   auto reencoded = decodeAttribute(*tables, typeCode, encoded);
   QORBGP_FUZZ_CHECK(reencoded.list == result.list);

   (void)text(result.list);
   return 0;
}
