#include "CommunityText.h"

#include "QorBgpCommunity/QorBgp/BgpPathAttributeEnums.h"
#include "QorBgpCommunity/platform/RouteTarget.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <limits>

namespace QorBgpTools {

using namespace Routing::Bgp;

namespace {

constexpr std::string_view separators = " \t\r\n,";
constexpr U8 nonTransitiveBit = 0x40;
constexpr std::string_view nonTransitiveMark = "(NT)";
constexpr U32 twoOctetMax = 0xFFFF;
constexpr U32 fourOctetMax = 0xFFFFFFFF;
// The six value octets of the generic form, each "0x" and two digits.
constexpr std::size_t valueOctets = 6;
constexpr std::string_view octetPrefix = "0x";

// The type and subtype octets in their place in the content word.
constexpr U64 typeWord(U8 type, U8 subtype) { return U64{type} << 56 | U64{subtype} << 48; }

// Decimal digits only (no sign, no blanks), at most `max`.
std::optional<U32> decimal(std::string_view text, U32 max) {
   U32 value = 0;
   auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
   if (text.empty() || ec != std::errc() || end != text.data() + text.size() || value > max) {
      return std::nullopt;
   }
   return value;
}

// Exactly `digits` hexadecimal digits of either case.
std::optional<U64> hexadecimal(std::string_view text, std::size_t digits) {
   U64 value = 0;
   auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
   if (text.size() != digits || ec != std::errc() || end != text.data() + text.size()) {
      return std::nullopt;
   }
   return value;
}

// The text before and after the first `separator`.
std::optional<std::pair<std::string_view, std::string_view>> splitAt(std::string_view text,
                                                                     char separator) {
   auto at = text.find(separator);
   if (at == std::string_view::npos) {
      return std::nullopt;
   }
   return std::pair{text.substr(0, at), text.substr(at + 1)};
}

// An AS number: decimal, or for four octets also asdot ("64086.59904").
std::optional<U32> asNumber(std::string_view text, bool fourOctets) {
   if (auto halves = splitAt(text, '.'); halves && fourOctets) {
      auto high = decimal(halves->first, twoOctetMax);
      auto low = decimal(halves->second, twoOctetMax);
      return high && low ? std::optional<U32>(*high << 16 | *low) : std::nullopt;
   }
   return decimal(text, fourOctets ? fourOctetMax : twoOctetMax);
}

std::optional<U32> ipv4Address(std::string_view text) {
   U32 address = 0;
   for (int i = 0; i < 4; ++i) {
      auto dot = i < 3 ? splitAt(text, '.') : std::pair{text, std::string_view()};
      auto octet = dot ? decimal(dot->first, 0xFF) : std::nullopt;
      if (!octet) {
         return std::nullopt;
      }
      address = address << 8 | *octet;
      text = dot->second;
   }
   return address;
}

// The three layouts of a global and a local administrator in the six value
// octets, as the type octet (non-transitive bit aside) selects them.
enum class AdminLayout { twoOctetAs, ipv4Address, fourOctetAs, none };

AdminLayout adminLayoutOf(U8 type) {
   switch (type & ~nonTransitiveBit) {
   case 0x00:
      return AdminLayout::twoOctetAs;
   case 0x01:
      return AdminLayout::ipv4Address;
   case 0x02:
      return AdminLayout::fourOctetAs;
   default:
      return AdminLayout::none;
   }
}

// "<global>:<local>" as the six value octets: a two-octet AS and a 32-bit
// local administrator, or an IPv4 address or four-octet AS and a 16-bit one.
std::optional<U64> adminPair(std::string_view text, AdminLayout layout) {
   auto parts = splitAt(text, ':');
   if (!parts) {
      return std::nullopt;
   }
   auto [global, local] = *parts;
   std::optional<U32> g;
   std::optional<U32> l;
   switch (layout) {
   case AdminLayout::twoOctetAs:
      g = asNumber(global, false);
      l = decimal(local, fourOctetMax);
      return g && l ? std::optional<U64>(U64{*g} << 32 | *l) : std::nullopt;
   case AdminLayout::ipv4Address:
   case AdminLayout::fourOctetAs:
      g = layout == AdminLayout::ipv4Address ? ipv4Address(global) : asNumber(global, true);
      l = decimal(local, twoOctetMax);
      return g && l ? std::optional<U64>(U64{*g} << 16 | *l) : std::nullopt;
   case AdminLayout::none:
      break;
   }
   return std::nullopt;
}

// Takes "tttt<suffix>[(NT)]:" off the front of `text`: the type octet with
// the non-transitive bit given by the mark (the digits never hold it) and
// the subtype octet.
std::optional<std::pair<U8, U8>> takeTypeDigits(std::string_view& text, std::string_view suffix) {
   auto digits = hexadecimal(text.substr(0, 4), 4);
   std::string_view rest = text.substr(std::min<std::size_t>(4, text.size()));
   if (!digits || ((*digits >> 8) & nonTransitiveBit) != 0 || !rest.starts_with(suffix)) {
      return std::nullopt;
   }
   rest.remove_prefix(suffix.size());
   U8 type = static_cast<U8>(*digits >> 8);
   if (rest.starts_with(nonTransitiveMark)) {
      type |= nonTransitiveBit;
      rest.remove_prefix(nonTransitiveMark.size());
   }
   if (!rest.starts_with(':')) {
      return std::nullopt;
   }
   text = rest.substr(1);
   return std::pair{type, static_cast<U8>(*digits)};
}

// "0x.. 0x.. 0x.. 0x.. 0x.. 0x..": the six value octets, most significant first.
std::optional<U64> valueOctetsText(std::string_view text) {
   U64 value = 0;
   std::size_t count = 0;
   for (std::string_view word : communityWords(text)) {
      auto octet = word.starts_with(octetPrefix) ? hexadecimal(word.substr(2), 2) : std::nullopt;
      if (!octet || ++count > valueOctets) {
         return std::nullopt;
      }
      value = value << 8 | *octet;
   }
   return count == valueOctets ? std::optional<U64>(value) : std::nullopt;
}

// Whether `word` is the first word of the generic form: type digits, then
// ":0x" and the first octet, the other five octets following as words.
bool opensValueOctets(std::string_view word) {
   std::string_view rest = word;
   return takeTypeDigits(rest, "") && rest.starts_with(octetPrefix) && rest.size() == 4;
}

// A link bandwidth as Rib::LinkBandwidth writes it: a rate in bits per
// second with a unit ("10Gbps"), the weighted form (bytes per second, no
// unit) or "invalid"; the float of bytes per second.
std::optional<float> bandwidth(std::string_view text) {
   constexpr std::string_view units[] = {"bps", "Kbps", "Mbps", "Gbps", "Tbps"};
   constexpr double unitStep = 1000;
   constexpr double bitsPerByte = 8;
   if (text == "invalid") {
      // Any NaN, infinity or negative number prints so; this is one of them.
      return std::numeric_limits<float>::quiet_NaN();
   }
   if (text.empty() || text.front() < '0' || text.front() > '9') {
      return std::nullopt; // no sign, "inf" or "nan": none of them is printed
   }
   double scale = 0;
   for (std::size_t i = std::size(units); i-- > 0;) {
      if (text.ends_with(units[i])) {
         scale = std::pow(unitStep, static_cast<double>(i)) / bitsPerByte;
         text.remove_suffix(units[i].size());
         break;
      }
   }
   double number = 0;
   float weighted = 0;
   auto const* end = text.data() + text.size();
   auto [at, ec] = scale != 0
                      ? std::from_chars(text.data(), end, number, std::chars_format::fixed)
                      : std::from_chars(text.data(), end, weighted, std::chars_format::fixed);
   if (ec != std::errc() || at != end) {
      return std::nullopt;
   }
   float const bytes = scale != 0 ? static_cast<float>(number * scale) : weighted;
   return std::isfinite(bytes) ? std::optional<float>(bytes) : std::nullopt;
}

// One printed extended form: the text it begins with, and the reader of the
// text after that. `word` is the type and subtype of the kind in place, and
// `layout` the administrator layout of the pair forms. A reader answers for
// the whole word: the first form whose prefix matches decides.
struct ExtendedForm {
   std::string_view prefix;
   U64 word;
   AdminLayout layout;
   std::optional<U64> (*read)(ExtendedForm const& form, std::string_view rest);
};

std::optional<U64> readAdminPair(ExtendedForm const& form, std::string_view rest) {
   auto pair = adminPair(rest, form.layout);
   return pair ? std::optional<U64>(form.word | *pair) : std::nullopt;
}

std::optional<U64> readLinkBandwidth(ExtendedForm const& form, std::string_view rest) {
   auto parts = splitAt(rest, ':');
   auto as = parts ? asNumber(parts->first, false) : std::nullopt;
   auto bytes = parts ? bandwidth(parts->second) : std::nullopt;
   return as && bytes ? std::optional<U64>(form.word | U64{*as} << 32 | std::bit_cast<U32>(*bytes))
                      : std::nullopt;
}

// "bb):<colour>", after "Color:CO(": the two colour-only bits (47 and 46).
std::optional<U64> readColor(ExtendedForm const& form, std::string_view rest) {
   constexpr unsigned colorOnlyShift = 46;
   auto bit = [](char c) {
      return c == '0' || c == '1' ? std::optional<U64>(c - '0') : std::nullopt;
   };
   if (rest.size() < 4 || rest.substr(2, 2) != "):") {
      return std::nullopt;
   }
   auto high = bit(rest[0]);
   auto low = bit(rest[1]);
   auto color = decimal(rest.substr(4), fourOctetMax);
   return high && low && color
             ? std::optional<U64>(form.word | (*high << 1 | *low) << colorOnlyShift | *color)
             : std::nullopt;
}

std::optional<U64> readValidationState(ExtendedForm const& form, std::string_view rest) {
   // In state order; "unknown" stands for every other octet, 3 is the first.
   constexpr std::string_view states[] = {"valid", "not-found", "invalid", "unknown"};
   for (U64 state = 0; state < std::size(states); ++state) {
      if (rest == states[state]) {
         return form.word | state;
      }
   }
   return std::nullopt;
}

std::optional<U64> readTunnelType(ExtendedForm const& form, std::string_view rest) {
#define QORBGP_TUNNEL_TYPE_NAME(name, value) std::pair<std::string_view, U64>{#name, value},
   constexpr std::pair<std::string_view, U64> names[] = {
      QORBGP_TUNNEL_TYPE_MEMBERS(QORBGP_TUNNEL_TYPE_NAME)};
#undef QORBGP_TUNNEL_TYPE_NAME
   for (auto const& [name, value] : names) {
      if (rest == name) {
         return form.word | value;
      }
   }
   constexpr std::string_view unknown = "tunnelTypeUnknown-";
   auto number =
      rest.starts_with(unknown) ? decimal(rest.substr(unknown.size()), twoOctetMax) : std::nullopt;
   return number ? std::optional<U64>(form.word | *number) : std::nullopt;
}

std::optional<U64> readNothingMore(ExtendedForm const& form, std::string_view rest) {
   return rest.empty() ? std::optional<U64>(form.word) : std::nullopt;
}

// "RT:" and "SoO:": a RouteTarget text, as a route target or as a route
// origin (its subtype octet replaced).
std::optional<U64> readRouteTarget(ExtendedForm const&, std::string_view rest) {
   auto rt = RouteTarget::parse(rest);
   return rt ? std::optional<U64>(rt->word()) : std::nullopt;
}

std::optional<U64> readRouteOrigin(ExtendedForm const& form, std::string_view rest) {
   constexpr U64 subtypeMask = typeWord(0, 0xFF);
   auto rt = RouteTarget::parse(rest);
   return rt ? std::optional<U64>((rt->word() & ~subtypeMask) | form.word) : std::nullopt;
}

std::optional<U64> readWord(ExtendedForm const&, std::string_view rest) {
   return hexadecimal(rest, 16);
}

// The form of a value no kind claims: type digits, then an administrator
// pair for the types that have one, else the six value octets.
std::optional<U64> readGeneric(ExtendedForm const&, std::string_view rest) {
   auto octets = takeTypeDigits(rest, "");
   if (!octets) {
      return std::nullopt;
   }
   auto [type, subtype] = *octets;
   auto value =
      rest.starts_with(octetPrefix) ? valueOctetsText(rest) : adminPair(rest, adminLayoutOf(type));
   return value ? std::optional<U64>(typeWord(type, subtype) | *value) : std::nullopt;
}

constexpr U64 routeTarget = 0x02;
constexpr U64 routeOrigin = 0x03;

// Every form toStrepForUI prints, then the command-line shorthands, then the
// generic form, which has no prefix and so comes last.
constexpr ExtendedForm extendedForms[] = {
   {"Route-Target-AS:", typeWord(0x00, routeTarget), AdminLayout::twoOctetAs, readAdminPair},
   {"Route-Target-AS4:", typeWord(0x02, routeTarget), AdminLayout::fourOctetAs, readAdminPair},
   {"Route-Target-IP:", typeWord(0x01, routeTarget), AdminLayout::ipv4Address, readAdminPair},
   {"Route-Origin-AS:", typeWord(0x00, routeOrigin), AdminLayout::twoOctetAs, readAdminPair},
   {"Route-Origin-AS4:", typeWord(0x02, routeOrigin), AdminLayout::fourOctetAs, readAdminPair},
   {"Route-Origin-IP:", typeWord(0x01, routeOrigin), AdminLayout::ipv4Address, readAdminPair},
   {"Link-Bandwidth-AS:", typeWord(0x40, 0x04), AdminLayout::none, readLinkBandwidth},
   {"Color:CO(", typeWord(0x03, 0x0b), AdminLayout::none, readColor},
   {"TunnelEncap:", typeWord(0x03, 0x0c), AdminLayout::none, readTunnelType},
   {"DefaultGateway", typeWord(0x03, 0x0d), AdminLayout::none, readNothingMore},
   {"Origin-Validation-State:", typeWord(0x43, 0x00), AdminLayout::none, readValidationState},
   {"RT:", 0, AdminLayout::none, readRouteTarget},
   {"SoO:", typeWord(0, routeOrigin), AdminLayout::none, readRouteOrigin},
   {"0x", 0, AdminLayout::none, readWord},
   {"", 0, AdminLayout::none, readGeneric},
};

} // namespace

std::optional<CommunityKind> communityKindNamed(std::string_view name) {
   constexpr std::pair<std::string_view, CommunityKind> kinds[] = {
      {"standard", CommunityKind::standard},
      {"large", CommunityKind::large},
      {"extended", CommunityKind::extended},
      {"ipv6", CommunityKind::ip6}};
   for (auto const& [kindName, kind] : kinds) {
      if (name == kindName) {
         return kind;
      }
   }
   return std::nullopt;
}

std::vector<std::string_view> communityWords(std::string_view text) {
   std::vector<std::string_view> out;
   auto next = [&text]() -> std::string_view {
      auto start = std::min(text.find_first_not_of(separators), text.size());
      text.remove_prefix(start);
      auto end = std::min(text.find_first_of(separators), text.size());
      std::string_view word = text.substr(0, end);
      text.remove_prefix(end);
      return word;
   };
   auto isOctet = [](std::string_view word) {
      return word.size() == 4 && word.starts_with(octetPrefix);
   };
   for (std::string_view word = next(); !word.empty(); word = next()) {
      if (opensValueOctets(word)) {
         // The word grows over the other five octets, when they follow.
         std::string_view const after = text;
         std::string_view last = word;
         std::size_t octets = 1;
         for (std::string_view w; octets < valueOctets && isOctet(w = next()); ++octets) {
            last = w;
         }
         if (octets == valueOctets) {
            word = std::string_view(word.data(), last.data() + last.size() - word.data());
         } else {
            text = after;
         }
      }
      out.push_back(word);
   }
   return out;
}

std::optional<U32> parseStandardCommunity(std::string_view word) {
#define QORBGP_COMMUNITY_VALUE(name, value) value,
   constexpr U32 named[] = {QORBGP_BGP_COMMUNITY_VALUE_MEMBERS(QORBGP_COMMUNITY_VALUE)};
#undef QORBGP_COMMUNITY_VALUE
   for (U32 value : named) {
      std::string const name = CommList::wellKnownName(value);
      if (!name.empty() && name == word) {
         return value;
      }
   }
   auto parts = splitAt(word, ':');
   auto high = parts ? decimal(parts->first, twoOctetMax) : std::nullopt;
   auto low = parts ? decimal(parts->second, twoOctetMax) : std::nullopt;
   return high && low ? std::optional<U32>(*high << 16 | *low) : std::nullopt;
}

std::optional<Acl::CommunityValue> parseLargeCommunity(std::string_view word) {
   auto first = splitAt(word, ':');
   auto second = first ? splitAt(first->second, ':') : std::nullopt;
   if (!second) {
      return std::nullopt;
   }
   auto global = asNumber(first->first, true);
   auto data1 = decimal(second->first, fourOctetMax);
   auto data2 = decimal(second->second, fourOctetMax);
   return global && data1 && data2 ? std::optional<Acl::CommunityValue>({*global, *data1, *data2})
                                   : std::nullopt;
}

std::optional<U64> parseExtendedCommunity(std::string_view word) {
   for (ExtendedForm const& form : extendedForms) {
      if (word.starts_with(form.prefix)) {
         return form.read(form, word.substr(form.prefix.size()));
      }
   }
   return std::nullopt;
}

std::optional<ExtCommIp6Content> parseIp6Community(std::string_view word) {
   auto octets = takeTypeDigits(word, "-IP6");
   auto colon = word.rfind(':');
   if (!octets || colon == std::string_view::npos) {
      return std::nullopt;
   }
   auto address = Qornet::Ip6Addr::parse(word.substr(0, colon));
   auto local = decimal(word.substr(colon + 1), twoOctetMax);
   return address && local
             ? std::optional<ExtCommIp6Content>(std::in_place, octets->first, octets->second,
                                                *address, static_cast<U16>(*local))
             : std::nullopt;
}

namespace {

// Parses every word of `text` with `parse` and gives each value to `add`;
// the first word that does not parse, or an empty view when all did.
template <class Parse, class Add>
std::string_view addWords(std::string_view text, Parse parse, Add add) {
   for (std::string_view word : communityWords(text)) {
      auto value = parse(word);
      if (!value) {
         return word;
      }
      add(*value);
   }
   return {};
}

// The attribute of a published list, or (oversize set) none when its values
// take more than the two-octet attribute length can say.
template <class List, class Serialize>
void serializeInto(EncodedCommunities& out, List const& list, std::size_t valueBytes,
                   Serialize serialize) {
   constexpr std::size_t maxValueBytes = 0xFFFF;
   std::size_t const bytes = list->commVectorRawPtr()->size() * valueBytes;
   if (bytes > maxValueBytes) {
      out.oversize = bytes;
   } else {
      out.attribute = serialize(*list);
   }
}

} // namespace

EncodedCommunities encodeCommunityText(CommunityTables const& tables, CommunityKind kind,
                                       std::string_view text) {
   EncodedCommunities out;
   if (communityWords(text).empty()) {
      return out;
   }
   switch (kind) {
   case CommunityKind::standard: {
      CommList::Ptr list = commListFactory();
      out.badWord = addWords(text, parseStandardCommunity, [&](U32 v) { list->commIs(v); });
      if (out.badWord.empty()) {
         serializeInto(out, list->dedup(tables.commListDedupTable().get()), 4,
                       [](CommList const& l) { return l.serialize(); });
      }
      break;
   }
   case CommunityKind::large: {
      LargeCommList::Ptr list = largeCommListFactory();
      out.badWord = addWords(text, parseLargeCommunity,
                             [&](Acl::CommunityValue const& v) { list->commIs(v); });
      if (out.badWord.empty()) {
         serializeInto(out, list->dedup(tables.largeCommListDedupTable().get()), 12,
                       [](LargeCommList const& l) { return l.serialize(); });
      }
      break;
   }
   case CommunityKind::extended: {
      ExtCommList::Ptr list = extCommListFactory();
      out.badWord = addWords(text, parseExtendedCommunity, [&](U64 word) {
         list->commIs(
            ExtComm::dedupContent(tables.extCommDedupTable().get(), ExtCommContent(word)));
      });
      if (out.badWord.empty()) {
         serializeInto(out, list->dedup(tables.extCommListDedupTable().get()), 8,
                       [](ExtCommList const& l) {
                          return l.serialize(ExtCommList::serialization(true, true, true));
                       });
      }
      break;
   }
   case CommunityKind::ip6: {
      ExtCommIp6List::Ptr list = extCommIp6ListFactory();
      out.badWord = addWords(text, parseIp6Community, [&](ExtCommIp6Content const& content) {
         list->commIs(ExtCommIp6::dedupContent(tables.extCommIp6DedupTable().get(), content));
      });
      if (out.badWord.empty()) {
         serializeInto(out, list->dedup(tables.extCommIp6ListDedupTable().get()), 20,
                       [](ExtCommIp6List const& l) { return l.serialize(true); });
      }
      break;
   }
   }
   return out;
}

} // namespace QorBgpTools
