#include "QorBgpCommunity/QorBgp/CommunityPolicyParser.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <vector>

namespace Routing::Bgp {

namespace {

using Routing::RouteMap::PosixRegex;

struct Word {
   std::string text;   ///< unquoted
   std::size_t column; ///< 1-based
   bool quoted = false;
};

[[noreturn]] void expected(std::string_view what, Word const* found, std::size_t endColumn) {
   std::string message = "at " + std::to_string(found ? found->column : endColumn) + ": expected " +
                         std::string(what) + ", found ";
   message += found ? "'" + found->text + "'" : "end of text";
   throw Kiv::RangeError(message);
}

// The words of `text`, separated by spaces; a quoted word keeps its spaces.
std::vector<Word> splitWords(std::string_view text) {
   std::vector<Word> words;
   std::size_t at = 0;
   while (at < text.size()) {
      if (text[at] == ' ') {
         ++at;
         continue;
      }
      Word word{{}, at + 1};
      if (text[at] == '"') {
         word.quoted = true;
         ++at;
         for (;; ++at) {
            if (at >= text.size()) {
               expected("a closing '\"'", nullptr, text.size() + 1);
            }
            if (text[at] == '"') {
               ++at;
               break;
            }
            if (text[at] == '\\' && at + 1 < text.size() &&
                (text[at + 1] == '"' || text[at + 1] == '\\')) {
               ++at;
            }
            word.text.push_back(text[at]);
         }
      } else {
         while (at < text.size() && text[at] != ' ') {
            word.text.push_back(text[at++]);
         }
      }
      words.push_back(std::move(word));
   }
   return words;
}

// The words of a text being read, one at a time.
class Reader {
 public:
   explicit Reader(std::string_view text) : words_(splitWords(text)), end_(text.size() + 1) {}

   Word const* peek() const noexcept { return next_ < words_.size() ? &words_[next_] : nullptr; }
   Word const& take(std::string_view what) {
      if (!peek()) {
         expected(what, nullptr, end_);
      }
      return words_[next_++];
   }
   bool done() const noexcept { return next_ == words_.size(); }
   [[noreturn]] void fail(std::string_view what, Word const& word) const {
      expected(what, &word, end_);
   }

 private:
   std::vector<Word> words_;
   std::size_t next_ = 0;
   std::size_t end_;
};

constexpr std::string_view fieldWhat = "a number, a range, '*', 'peer-as' or 'local-as'";

std::optional<U32> number(std::string_view text, U32 max) {
   U64 value = 0;
   auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
   if (text.empty() || error != std::errc() || end != text.data() + text.size() || value > max) {
      return std::nullopt;
   }
   return static_cast<U32>(value);
}

std::optional<CommunityFieldPattern> field(std::string_view text, U32 max) {
   if (text == "*")
      return CommunityFieldPattern::any();
   if (text == "peer-as")
      return CommunityFieldPattern::peerAs();
   if (text == "local-as")
      return CommunityFieldPattern::localAs();
   std::size_t const dash = text.find('-');
   if (dash == std::string_view::npos) {
      auto const value = number(text, max);
      return value ? std::optional(CommunityFieldPattern::exact(*value)) : std::nullopt;
   }
   auto const low = number(text.substr(0, dash), max), high = number(text.substr(dash + 1), max);
   if (!low || !high || *low > *high) {
      return std::nullopt;
   }
   return CommunityFieldPattern::range(*low, *high);
}

// The parts of `text` between colons, when there are exactly `count`.
std::optional<std::vector<std::string_view>> colonParts(std::string_view text, std::size_t count) {
   std::vector<std::string_view> parts;
   for (std::size_t start = 0;;) {
      std::size_t const colon = text.find(':', start);
      parts.push_back(text.substr(start, colon - start));
      if (colon == std::string_view::npos)
         break;
      start = colon + 1;
   }
   return parts.size() == count ? std::optional(parts) : std::nullopt;
}

std::optional<U32> wellKnown(std::string_view text) {
   static constexpr std::pair<std::string_view, U32> names[] = {
      {"internet", communityInternet},         {"GSHUT", communityGshut},
      {"llgr-stale", communityLlgrStale},      {"no-llgr", communityNoLlgr},
      {"no-export", communityNoExport},        {"no-advertise", communityNoAdvertise},
      {"local-as", communityNoExportSubconfed}};
   for (auto const& [name, value] : names) {
      if (text == name)
         return value;
   }
   return std::nullopt;
}

PosixRegex::PtrConst quotedRegex(Reader& reader) {
   Word const& word = reader.take("a quoted regular expression");
   if (!word.quoted) {
      reader.fail("a quoted regular expression", word);
   }
   PosixRegex::Compiled compiled = PosixRegex::compile(word.text);
   if (!compiled) {
      reader.fail("a regular expression that compiles (" + compiled.error + ")", word);
   }
   return compiled.regex;
}

// The kinds: how a matcher and a value of each are read.
struct StandardKind {
   using Matcher = StandardCommunityMatcher;
   static constexpr std::string_view matcherWhat =
      "a community pattern (<as>:<local>, a well-known name or regex \"...\")";
   static constexpr std::string_view valueWhat = "a community (<as>:<local> or a well-known name)";

   static Matcher::PtrConst matcher(Reader& reader) {
      Word const& word = reader.take(matcherWhat);
      if (!word.quoted && word.text == "regex") {
         return standardCommunityMatcherFactory(quotedRegex(reader));
      }
      if (auto const name = wellKnown(word.text); name && !word.quoted) {
         return standardCommunityMatcherFactory(CommunityFieldPattern::exact(*name >> 16),
                                                CommunityFieldPattern::exact(*name & 0xFFFF));
      }
      auto const parts = colonParts(word.text, 2);
      if (word.quoted || !parts) {
         reader.fail(matcherWhat, word);
      }
      auto const asPart = field((*parts)[0], 0xFFFF), local = field((*parts)[1], 0xFFFF);
      if (!asPart || !local) {
         reader.fail(fieldWhat, word);
      }
      return standardCommunityMatcherFactory(*asPart, *local);
   }
   static U32 value(Reader& reader) {
      Word const& word = reader.take(valueWhat);
      if (auto const name = wellKnown(word.text); name && !word.quoted) {
         return *name;
      }
      auto const parts = colonParts(word.text, 2);
      std::optional<U32> asPart, local;
      if (parts && !word.quoted) {
         asPart = number((*parts)[0], 0xFFFF);
         local = number((*parts)[1], 0xFFFF);
      }
      if (!asPart || !local) {
         reader.fail(valueWhat, word);
      }
      return *asPart << 16 | *local;
   }
};

struct LargeKind {
   using Matcher = LargeCommunityMatcher;
   static constexpr std::string_view matcherWhat =
      "a large community pattern (<global>:<local 1>:<local 2> or regex \"...\")";
   static constexpr std::string_view valueWhat = "a large community (<global>:<local 1>:<local 2>)";

   static Matcher::PtrConst matcher(Reader& reader) {
      Word const& word = reader.take(matcherWhat);
      if (!word.quoted && word.text == "regex") {
         return largeCommunityMatcherFactory(quotedRegex(reader));
      }
      auto const parts = colonParts(word.text, 3);
      if (word.quoted || !parts) {
         reader.fail(matcherWhat, word);
      }
      std::optional<CommunityFieldPattern> fields[3];
      for (std::size_t i = 0; i < 3; ++i) {
         fields[i] = field((*parts)[i], 0xFFFFFFFF);
         if (!fields[i]) {
            reader.fail(fieldWhat, word);
         }
      }
      return largeCommunityMatcherFactory(*fields[0], *fields[1], *fields[2]);
   }
   static Acl::CommunityValue value(Reader& reader) {
      Word const& word = reader.take(valueWhat);
      auto const parts = colonParts(word.text, 3);
      std::optional<U32> numbers[3];
      for (std::size_t i = 0; parts && !word.quoted && i < 3; ++i) {
         numbers[i] = number((*parts)[i], 0xFFFFFFFF);
      }
      if (!numbers[0] || !numbers[1] || !numbers[2]) {
         reader.fail(valueWhat, word);
      }
      return {*numbers[0], *numbers[1], *numbers[2]};
   }
};

// An IPv4 address in dotted form, as its 32-bit number.
std::optional<U32> address(std::string_view text) {
   U32 value = 0;
   for (int octet = 0; octet < 4; ++octet) {
      std::size_t const dot = octet < 3 ? text.find('.') : text.size();
      auto const part = number(text.substr(0, dot), 255);
      if (dot == std::string_view::npos || !part) {
         return std::nullopt;
      }
      value = value << 8 | *part;
      text.remove_prefix(std::min(text.size(), dot + 1));
   }
   return value;
}

struct ExtKind {
   using Matcher = ExtCommunityMatcher;
   static constexpr std::string_view matcherWhat =
      "an extended community pattern ('rt', 'soo', 'color', 'lbw', 'ovs' or 'raw')";

   static Matcher::PtrConst matcher(Reader& reader) {
      using Kind = ExtCommunityMatcher::Kind;
      Word const& kindWord = reader.take(matcherWhat);
      static constexpr std::pair<std::string_view, Kind> kinds[] = {
         {"rt", Kind::routeTarget},    {"soo", Kind::routeOrigin},      {"color", Kind::color},
         {"lbw", Kind::linkBandwidth}, {"ovs", Kind::originValidation}, {"raw", Kind::raw}};
      std::optional<Kind> kind;
      for (auto const& [word, k] : kinds) {
         if (!kindWord.quoted && kindWord.text == word)
            kind = k;
      }
      if (!kind) {
         reader.fail(matcherWhat, kindWord);
      }
      if (*kind == Kind::routeTarget || *kind == Kind::routeOrigin || *kind == Kind::raw) {
         bool const raw = *kind == Kind::raw;
         constexpr std::string_view pairWhat = "<administrator>:<local> (each a number, a range, "
                                               "'*', 'peer-as' or 'local-as'; or an IPv4 address)";
         constexpr std::string_view rawWhat = "<type>:<subtype> (each an octet, a range or '*')";
         Word const& word = reader.take(raw ? rawWhat : pairWhat);
         auto const parts = colonParts(word.text, 2);
         if (word.quoted || !parts) {
            reader.fail(raw ? rawWhat : pairWhat, word);
         }
         U32 const max = raw ? 0xFF : 0xFFFFFFFF;
         std::optional<U32> const ip = raw ? std::nullopt : address((*parts)[0]);
         auto const first =
            ip ? std::optional(CommunityFieldPattern::exact(*ip)) : field((*parts)[0], max);
         auto const second = field((*parts)[1], max);
         if (!first || !second) {
            reader.fail(raw ? rawWhat : pairWhat, word);
         }
         return extCommunityMatcherFactory(*kind, *first, *second, ip.has_value());
      }
      if (*kind == Kind::originValidation) {
         constexpr std::string_view stateWhat = "'valid', 'not-found', 'invalid' or a state number";
         Word const& word = reader.take(stateWhat);
         static constexpr std::string_view states[] = {"valid", "not-found", "invalid"};
         for (U32 state = 0; state < 3; ++state) {
            if (!word.quoted && word.text == states[state]) {
               return extCommunityMatcherFactory(*kind, CommunityFieldPattern::exact(state));
            }
         }
         auto const state = field(word.text, 0xFF);
         if (word.quoted || !state) {
            reader.fail(stateWhat, word);
         }
         return extCommunityMatcherFactory(*kind, *state);
      }
      Word const& word = reader.take(fieldWhat);
      auto const value = field(word.text, *kind == Kind::linkBandwidth ? 0xFFFF : 0xFFFFFFFF);
      if (word.quoted || !value) {
         reader.fail(fieldWhat, word);
      }
      return extCommunityMatcherFactory(*kind, *value);
   }

   // A value's content word: "rt" or "soo" <administrator>:<local> (a two-octet
   // AS with a four-octet number, an IPv4 address or four-octet AS with a
   // two-octet number), "color" <n>, "ovs" <state> or "raw" <16 hex digits>.
   static U64 value(Reader& reader) {
      constexpr std::string_view valueWhat =
         "an extended community ('rt', 'soo', 'color', 'ovs' or 'raw')";
      Word const& kindWord = reader.take(valueWhat);
      std::string_view const k = kindWord.quoted ? std::string_view() : kindWord.text;
      if (k == "rt" || k == "soo") {
         constexpr std::string_view pairWhat =
            "<administrator>:<local> (an AS up to 65535 with a number up to 4294967295, or an IPv4 "
            "address or a larger AS with a number up to 65535)";
         Word const& word = reader.take(pairWhat);
         auto const parts = colonParts(word.text, 2);
         U64 const subtype = k == "rt" ? 0x02 : 0x03;
         if (parts && !word.quoted) {
            auto const ip = address((*parts)[0]);
            auto const as = number((*parts)[0], 0xFFFFFFFF);
            auto const local = number((*parts)[1], 0xFFFFFFFF);
            if (local && (ip || as)) {
               U64 const admin = ip ? *ip : *as;
               if (!ip && admin <= 0xFFFF) {
                  return subtype << 48 | admin << 32 | *local;
               }
               if (*local <= 0xFFFF) {
                  return U64{ip ? 0x01u : 0x02u} << 56 | subtype << 48 | admin << 16 | *local;
               }
            }
         }
         reader.fail(pairWhat, word);
      }
      if (k == "color") {
         Word const& word = reader.take("a colour number");
         auto const colour = number(word.text, 0xFFFFFFFF);
         if (word.quoted || !colour) {
            reader.fail("a colour number", word);
         }
         return 0x030b000000000000 | *colour;
      }
      if (k == "ovs") {
         Word const& word = reader.take("'valid', 'not-found' or 'invalid'");
         static constexpr std::string_view states[] = {"valid", "not-found", "invalid"};
         for (U64 state = 0; state < 3; ++state) {
            if (!word.quoted && word.text == states[state]) {
               return 0x4300000000000000 | state;
            }
         }
         reader.fail("'valid', 'not-found' or 'invalid'", word);
      }
      if (k == "raw") {
         constexpr std::string_view rawWhat = "0x and 16 hexadecimal digits";
         Word const& word = reader.take(rawWhat);
         U64 content = 0;
         std::string_view const digits =
            std::string_view(word.text).substr(std::min<std::size_t>(2, word.text.size()));
         auto const [end, error] =
            std::from_chars(digits.data(), digits.data() + digits.size(), content, 16);
         if (word.quoted || word.text.size() != 18 || word.text.substr(0, 2) != "0x" ||
             error != std::errc() || end != digits.data() + digits.size()) {
            reader.fail(rawWhat, word);
         }
         return content;
      }
      reader.fail(valueWhat, kindWord);
   }
};

struct Ip6Kind {
   using Matcher = ExtCommIp6Matcher;
   static constexpr std::string_view typeWhat = "<type>:<subtype> (each an octet, a range or '*')";
   static constexpr std::string_view addressWhat =
      "<IPv6 prefix>/<length>:<local> (the local administrator a number, a range, '*', "
      "'peer-as' or 'local-as')";

   static Matcher::PtrConst matcher(Reader& reader) {
      Word const& types = reader.take(typeWhat);
      auto const parts = colonParts(types.text, 2);
      std::optional<CommunityFieldPattern> type, subtype;
      if (parts && !types.quoted) {
         type = field((*parts)[0], 0xFF);
         subtype = field((*parts)[1], 0xFF);
      }
      if (!type || !subtype) {
         reader.fail(typeWhat, types);
      }
      Word const& word = reader.take(addressWhat);
      std::string_view const text = word.text;
      std::size_t const slash = text.find('/');
      std::size_t const colon = text.rfind(':');
      std::optional<Qornet::Ip6Addr> prefix;
      std::optional<U32> length;
      std::optional<CommunityFieldPattern> local;
      if (!word.quoted && slash != std::string_view::npos && colon != std::string_view::npos &&
          colon > slash) {
         prefix = Qornet::Ip6Addr::parse(text.substr(0, slash));
         length = number(text.substr(slash + 1, colon - slash - 1), 128);
         local = field(text.substr(colon + 1), 0xFFFF);
      }
      if (!prefix || !length || !local) {
         reader.fail(addressWhat, word);
      }
      return extCommIp6MatcherFactory(*type, *subtype, *prefix, *length, *local);
   }

   static ExtCommIp6Content value(Reader& reader) {
      constexpr std::string_view typeValueWhat = "<type>:<subtype> (each an octet)";
      constexpr std::string_view addressValueWhat = "<IPv6 address>:<local administrator>";
      Word const& types = reader.take(typeValueWhat);
      auto const parts = colonParts(types.text, 2);
      std::optional<U32> type, subtype;
      if (parts && !types.quoted) {
         type = number((*parts)[0], 0xFF);
         subtype = number((*parts)[1], 0xFF);
      }
      if (!type || !subtype) {
         reader.fail(typeValueWhat, types);
      }
      Word const& word = reader.take(addressValueWhat);
      std::size_t const colon = word.text.rfind(':');
      std::optional<Qornet::Ip6Addr> address;
      std::optional<U32> local;
      if (!word.quoted && colon != std::string::npos) {
         address = Qornet::Ip6Addr::parse(std::string_view(word.text).substr(0, colon));
         local = number(std::string_view(word.text).substr(colon + 1), 0xFFFF);
      }
      if (!address || !local) {
         reader.fail(addressValueWhat, word);
      }
      return ExtCommIp6Content(static_cast<U8>(*type), static_cast<U8>(*subtype), *address,
                               static_cast<U16>(*local));
   }
};

// One or more items read by `read` up to the end of the text.
template <class Read>
auto oneOrMore(Reader& reader, Read read) {
   std::vector<decltype(read(reader))> items;
   do {
      items.push_back(read(reader));
   } while (!reader.done());
   return items;
}

template <class Kind>
typename CommunitySetMatcher<typename Kind::Matcher>::PtrConst parseSet(std::string_view text) {
   constexpr std::string_view modeWhat = "'any', 'all', 'exact' or 'not'";
   Reader reader(text);
   Word const* word = &reader.take(modeWhat);
   bool const inverted = !word->quoted && word->text == "not";
   if (inverted) {
      word = &reader.take("'any', 'all' or 'exact'");
   }
   std::optional<CommunitySetMode> mode;
   for (CommunitySetMode m :
        {CommunitySetMode::any, CommunitySetMode::all, CommunitySetMode::exact}) {
      if (!word->quoted && word->text == communitySetModeName(m))
         mode = m;
   }
   if (!mode) {
      reader.fail(inverted ? "'any', 'all' or 'exact'" : modeWhat, *word);
   }
   auto matchers = oneOrMore(reader, [](Reader& r) { return Kind::matcher(r); });
   return Kiv::newNotifying<CommunitySetMatcher<typename Kind::Matcher>>(std::move(matchers), *mode,
                                                                         inverted);
}

template <class Kind, class Edit = CommunityListEdit<typename Kind::Matcher>>
typename Edit::PtrConst parseEdit(std::string_view text) {
   constexpr std::string_view kindWhat = "'set', 'add', 'delete' or 'delete-all'";
   Reader reader(text);
   Word const& word = reader.take(kindWhat);
   std::vector<decltype(Kind::value(reader))> values;
   typename Edit::Matchers matchers;
   CommunityEditKind kind = CommunityEditKind::deleteAll;
   if (word.quoted) {
      reader.fail(kindWhat, word);
   } else if (word.text == "set" || word.text == "add") {
      kind = word.text == "set" ? CommunityEditKind::replace : CommunityEditKind::add;
      values = oneOrMore(reader, [](Reader& r) { return Kind::value(r); });
   } else if (word.text == "delete") {
      kind = CommunityEditKind::deleteMatching;
      matchers = oneOrMore(reader, [](Reader& r) { return Kind::matcher(r); });
   } else if (word.text == "delete-all") {
      kind = CommunityEditKind::deleteAll;
      if (Word const* extra = reader.peek()) {
         reader.fail("end of text", *extra);
      }
   } else {
      reader.fail(kindWhat, word);
   }
   return Kiv::newNotifying<Edit>(kind, std::move(values), std::move(matchers));
}

} // namespace

StandardCommunitySetMatcher::PtrConst parseStandardCommunitySet(std::string_view text) {
   return parseSet<StandardKind>(text);
}

LargeCommunitySetMatcher::PtrConst parseLargeCommunitySet(std::string_view text) {
   return parseSet<LargeKind>(text);
}

ExtCommunitySetMatcher::PtrConst parseExtCommunitySet(std::string_view text) {
   return parseSet<ExtKind>(text);
}

ExtCommIp6SetMatcher::PtrConst parseExtCommIp6Set(std::string_view text) {
   return parseSet<Ip6Kind>(text);
}

StandardCommunityListEdit::PtrConst parseStandardCommunityEdit(std::string_view text) {
   return parseEdit<StandardKind>(text);
}

LargeCommunityListEdit::PtrConst parseLargeCommunityEdit(std::string_view text) {
   return parseEdit<LargeKind>(text);
}

ExtCommListEdit::PtrConst parseExtCommunityEdit(std::string_view text) {
   return parseEdit<ExtKind>(text);
}

ExtCommIp6ListEdit::PtrConst parseExtCommIp6Edit(std::string_view text) {
   return parseEdit<Ip6Kind>(text);
}

} // namespace Routing::Bgp
