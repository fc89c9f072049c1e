// decode and encode: one community attribute between wire hex and text.
#include "Commands.h"
#include "CommunityText.h"
#include "PathLists.h"

#include "QorBgpCommunity/QorBgp/BgpPathAttributeEnums.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <sstream>

namespace QorBgpTools {

using namespace Routing::Bgp;

namespace {

constexpr U8 extendedLengthFlag = 0x10;
// Text that gives no community is a mistake on the command line.
constexpr int usageErrorStatus = 2;

int badWord(std::string_view word, std::string const& kind) {
   std::cerr << "qorbgp-comm encode: not " << (kind == "extended" || kind == "ipv6" ? "an " : "a ")
             << kind << " community: '" << word << "'\n";
   return usageErrorStatus;
}

} // namespace

int runEncode(EncodeOptions const& options) {
   auto const kind = communityKindNamed(options.kind);
   if (!kind) {
      std::cerr << "qorbgp-comm encode: no such kind of community: '" << options.kind << "'\n";
      return usageErrorStatus;
   }
   if (communityWords(options.text).empty()) {
      std::cerr << "qorbgp-comm encode: no communities given\n";
      return usageErrorStatus;
   }
   auto tables = communityTablesFactory();
   EncodedCommunities const encoded = encodeCommunityText(*tables, *kind, options.text);
   if (!encoded.badWord.empty()) {
      return badWord(encoded.badWord, options.kind);
   }
   if (encoded.oversize) {
      std::cerr << "qorbgp-comm encode: the communities take " << encoded.oversize
                << " bytes; an attribute holds at most 65535\n";
      return usageErrorStatus;
   }
   std::cout << hexBytes({reinterpret_cast<U8 const*>(encoded.attribute.data()),
                          encoded.attribute.size()})
             << '\n';
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
   std::size_t const length =
      (flags & extendedLengthFlag) ? ((*bytes)[2] << 8 | (*bytes)[3]) : (*bytes)[2];
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
      std::cout << jsonText(out) << '\n';
   } else if (result.ok()) {
      std::cout << name << ": " << text << '\n';
   } else {
      std::cout << name << ": " << result.reason << " (" << actionLabel(result.action) << ")\n";
   }
   return result.ok() ? 0 : 1;
}

} // namespace QorBgpTools
