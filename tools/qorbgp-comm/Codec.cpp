// decode and encode: one community attribute between wire hex and text.
#include "Commands.h"
#include "PathLists.h"

#include "QorBgpCommunity/QorBgp/BgpPathAttributeEnums.h"
#include "QorBgpCommunity/platform/RouteTarget.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <iostream>
#include <sstream>

namespace QorBgpTools {

using namespace Routing::Bgp;

namespace {

constexpr U8 extendedLengthFlag = 0x10;

std::optional<U32> number(std::string_view text, U32 max) {
   U32 value = 0;
   auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
   if (text.empty() || ec != std::errc() || end != text.data() + text.size() || value > max) {
      return std::nullopt;
   }
   return value;
}

std::vector<std::string_view> words(std::string_view text) {
   std::vector<std::string_view> out;
   while (!text.empty()) {
      auto start = text.find_first_not_of(" \t,");
      if (start == std::string_view::npos) {
         break;
      }
      text.remove_prefix(start);
      auto end = text.find_first_of(" \t,");
      out.push_back(text.substr(0, end));
      text = end == std::string_view::npos ? std::string_view() : text.substr(end);
   }
   return out;
}

std::optional<U32> standardValue(std::string_view word) {
   for (U32 known : {0u, 0xFFFF0000u, 0xFFFF0006u, 0xFFFF0007u, 0xFFFFFF01u, 0xFFFFFF02u,
                     0xFFFFFF03u}) {
      if (!CommList::wellKnownName(known).empty() && CommList::wellKnownName(known) == word) {
         return known;
      }
   }
   auto colon = word.find(':');
   if (colon == std::string_view::npos) {
      return std::nullopt;
   }
   auto high = number(word.substr(0, colon), 0xFFFF);
   auto low = number(word.substr(colon + 1), 0xFFFF);
   return high && low ? std::optional<U32>(*high << 16 | *low) : std::nullopt;
}

std::optional<Acl::CommunityValue> largeValue(std::string_view word) {
   auto first = word.find(':');
   auto second = first == std::string_view::npos ? first : word.find(':', first + 1);
   if (second == std::string_view::npos) {
      return std::nullopt;
   }
   auto a = number(word.substr(0, first), 0xFFFFFFFF);
   auto b = number(word.substr(first + 1, second - first - 1), 0xFFFFFFFF);
   auto c = number(word.substr(second + 1), 0xFFFFFFFF);
   return a && b && c ? std::optional<Acl::CommunityValue>({*a, *b, *c}) : std::nullopt;
}

// "RT:<route target>", "SoO:<route target>" or "0x" and 16 hex digits.
std::optional<U64> extendedWord(std::string_view word) {
   constexpr U64 subtypeMask = 0x00ff000000000000ull;
   constexpr U64 routeOriginSubtype = 0x0003000000000000ull;
   for (auto [prefix, origin] : {std::pair{"RT:", false}, std::pair{"SoO:", true}}) {
      std::string_view p(prefix);
      if (word.starts_with(p)) {
         auto rt = RouteTarget::parse(word.substr(p.size()));
         if (!rt) {
            return std::nullopt;
         }
         return origin ? (rt->word() & ~subtypeMask) | routeOriginSubtype : rt->word();
      }
   }
   if (word.starts_with("0x") && word.size() == 18) {
      U64 value = 0;
      auto [end, ec] = std::from_chars(word.data() + 2, word.data() + word.size(), value, 16);
      if (ec == std::errc() && end == word.data() + word.size()) {
         return value;
      }
   }
   return std::nullopt;
}

int badWord(std::string_view word, std::string const& kind) {
   std::cerr << "qorbgp-comm encode: not a " << kind << " community: '" << word << "'\n";
   return 2;
}

} // namespace

int runEncode(EncodeOptions const& options) {
   auto tables = communityTablesFactory();
   std::string wire;
   if (options.kind == "standard") {
      CommList::Ptr list = commListFactory();
      for (auto word : words(options.text)) {
         auto value = standardValue(word);
         if (!value) {
            return badWord(word, options.kind);
         }
         list->commIs(*value);
      }
      wire = list->dedup(tables->commListDedupTable().get())->serialize();
   } else if (options.kind == "large") {
      LargeCommList::Ptr list = largeCommListFactory();
      for (auto word : words(options.text)) {
         auto value = largeValue(word);
         if (!value) {
            return badWord(word, options.kind);
         }
         list->commIs(*value);
      }
      wire = list->dedup(tables->largeCommListDedupTable().get())->serialize();
   } else {
      ExtCommList::Ptr list = extCommListFactory();
      for (auto word : words(options.text)) {
         auto value = extendedWord(word);
         if (!value) {
            return badWord(word, options.kind);
         }
         list->commIs(ExtComm::dedupContent(tables->extCommDedupTable().get(), ExtCommContent(*value)));
      }
      wire = list->dedup(tables->extCommListDedupTable().get())
                ->serialize(ExtCommList::serialization(true, false, false));
   }
   std::cout << hexBytes({reinterpret_cast<U8 const*>(wire.data()), wire.size()}) << '\n';
   return 0;
}

int runDecode(DecodeOptions const& options) {
   auto bytes = parseHex(options.hex);
   if (!bytes || bytes->size() < 3) {
      std::cerr << "qorbgp-comm decode: not an attribute in hex (flags, type, length, value): '"
                << options.hex << "'\n";
      return 2;
   }
   U8 const flags = (*bytes)[0];
   U8 const type = (*bytes)[1];
   std::size_t const headerSize = (flags & extendedLengthFlag) ? 4 : 3;
   if (bytes->size() < headerSize) {
      std::cerr << "qorbgp-comm decode: the attribute header is cut short\n";
      return 1;
   }
   std::size_t const length = (flags & extendedLengthFlag) ? ((*bytes)[2] << 8 | (*bytes)[3])
                                                           : (*bytes)[2];
   if (bytes->size() - headerSize != length) {
      std::cerr << "qorbgp-comm decode: the header announces " << length << " value bytes, "
                << bytes->size() - headerSize << " follow\n";
      return 1;
   }
   auto tables = communityTablesFactory();
   std::span<U8 const> value(bytes->data() + headerSize, length);
   auto result = decodeAttribute(*tables, type, value);
   std::string text;
   std::visit(
      [&](auto const& list) {
         using T = std::decay_t<decltype(list)>;
         if constexpr (std::is_same_v<T, CommList::PtrConst>) {
            text = standardText(list.get());
         } else if constexpr (std::is_same_v<T, LargeCommList::PtrConst>) {
            text = largeText(list.get(), options.asdot);
         } else if constexpr (std::is_same_v<T, ExtCommList::PtrConst>) {
            text = extendedText(list.get(), options.asdot);
         } else if constexpr (std::is_same_v<T, ExtCommIp6List::PtrConst>) {
            text = ip6Text(list.get());
         }
      },
      result.list);
   std::string const name(bgpPathAttrTypeShowString(static_cast<BgpPathAttrType>(type)));
   if (options.json) {
      nlohmann::json out{{"type", type},
                         {"attribute", name},
                         {"status", statusLabel(result.status)},
                         {"action", actionLabel(result.action)}};
      if (result.ok()) {
         out["text"] = text;
      } else {
         out["reason"] = result.reason;
      }
      std::cout << out.dump() << '\n';
   } else if (result.ok()) {
      std::cout << name << ": " << text << '\n';
   } else {
      std::cout << name << ": " << result.reason << " (" << actionLabel(result.action) << ")\n";
   }
   return result.ok() ? 0 : 1;
}

} // namespace QorBgpTools
