#include "CommunityPolicy.h"

#include "CommunityText.h"

#include "QorBgpCommunity/QorBgp/CommunityPolicyParser.h"
#include "QorBgpCommunity/platform/Errors.h"

#include <charconv>

namespace QorBgpTools {

using namespace Routing::Bgp;
using Routing::RouteMap::PosixRegex;

namespace {

// Memo slots of a step for every peer: enough for the distinct lists of a
// full table; of a step for one peer AS, for those one peer sends.
constexpr std::size_t sharedMemoSlots = 1 << 14;
constexpr std::size_t peerMemoSlots = 1 << 12;

template <class Matcher, class Lists>
auto& listOf(Lists& lists) {
   if constexpr (std::is_same_v<Matcher, StandardCommunityMatcher>) {
      return lists.standard;
   } else if constexpr (std::is_same_v<Matcher, LargeCommunityMatcher>) {
      return lists.large;
   } else if constexpr (std::is_same_v<Matcher, ExtCommunityMatcher>) {
      return lists.extended;
   } else {
      return lists.ip6;
   }
}

// f.template operator()<Matcher>() for the matcher of the kind named `name`
// ("standard", "large", "extended", "ipv6").
template <class F>
auto withMatcherOf(std::string_view name, F f) {
   if (auto const kind = communityKindNamed(name)) {
      switch (*kind) {
      case CommunityKind::standard:
         return f.template operator()<StandardCommunityMatcher>();
      case CommunityKind::large:
         return f.template operator()<LargeCommunityMatcher>();
      case CommunityKind::extended:
         return f.template operator()<ExtCommunityMatcher>();
      case CommunityKind::ip6:
         return f.template operator()<ExtCommIp6Matcher>();
      }
   }
   throw Kiv::RangeError("at 1: expected 'standard', 'large', 'extended' or 'ipv6', found '" +
                         std::string(name) + "'");
}

// The library's parsers by matcher kind.
template <class Matcher>
auto parsedSet(std::string_view text) {
   if constexpr (std::is_same_v<Matcher, StandardCommunityMatcher>) {
      return parseStandardCommunitySet(text);
   } else if constexpr (std::is_same_v<Matcher, LargeCommunityMatcher>) {
      return parseLargeCommunitySet(text);
   } else if constexpr (std::is_same_v<Matcher, ExtCommunityMatcher>) {
      return parseExtCommunitySet(text);
   } else {
      return parseExtCommIp6Set(text);
   }
}
template <class Matcher>
auto parsedEdit(std::string_view text) {
   if constexpr (std::is_same_v<Matcher, StandardCommunityMatcher>) {
      return parseStandardCommunityEdit(text);
   } else if constexpr (std::is_same_v<Matcher, LargeCommunityMatcher>) {
      return parseLargeCommunityEdit(text);
   } else if constexpr (std::is_same_v<Matcher, ExtCommunityMatcher>) {
      return parseExtCommunityEdit(text);
   } else {
      return parseExtCommIp6Edit(text);
   }
}

// The memo of type `T` in `memo`, made by `make` when there is none yet.
template <class T, class Memo, class Make>
T& memoOf(Memo& memo, Make make) {
   auto* held = std::get_if<std::unique_ptr<T>>(&memo);
   if (!held || !*held) {
      memo = make();
      held = std::get_if<std::unique_ptr<T>>(&memo);
   }
   return **held;
}

} // namespace

CommunityPolicy::CommunityPolicy(CommunityTables::PtrConst tables, U32 localAs)
    : tables_(std::move(tables)), localAs_(localAs) {
   std::vector<U32> noValues;
   empty_.standard = CommList::dedupValues(tables_->commListDedupTable().get(), noValues);
   std::vector<Acl::CommunityValue> noLargeValues;
   empty_.large =
      LargeCommList::dedupValues(tables_->largeCommListDedupTable().get(), noLargeValues);
   empty_.extended = extCommListFactory()->dedup(tables_->extCommListDedupTable().get());
   empty_.ip6 = extCommIp6ListFactory()->dedup(tables_->extCommIp6ListDedupTable().get());
}

CommunityPolicy::CommunityPolicy(CommunityPolicy&&) noexcept = default;
CommunityPolicy::~CommunityPolicy() = default;

CommunityPolicy::Rule& CommunityPolicy::lastRule() {
   if (rules_.empty()) {
      addRule("");
   }
   return rules_.back();
}

void CommunityPolicy::addRule(std::string name) {
   rules_.push_back({.counts = {.name = std::move(name)}, .steps = {}});
}

void CommunityPolicy::addStep(Action action, std::string_view text, bool condition) {
   Step step{.action = std::move(action), .perPeer = text.find("peer-as") != text.npos};
   auto& steps = lastRule().steps;
   // Conditions go before the rule's edits: all of them are judged on the
   // lists as the rule finds them.
   auto const isEdit = [](Step const& s) {
      return std::visit(
         [](auto const& a) {
            return requires { a.edit; };
         },
         s.action);
   };
   auto const at = condition ? std::find_if(steps.begin(), steps.end(), isEdit) : steps.end();
   steps.insert(at, std::move(step));
   sharedMemos_.clear();
   peerMemos_.clear();
}

void CommunityPolicy::addMatch(std::string_view kind, std::string_view set) {
   constexpr std::string_view listRegex = "list-regex";
   if (!set.starts_with(listRegex) ||
       (set.size() != listRegex.size() && set[listRegex.size()] != ' ')) {
      addStep(withMatcherOf(kind,
                            [&]<class Matcher>() -> Action {
                               return Condition<Matcher>{parsedSet<Matcher>(set)};
                            }),
              set, true);
      return;
   }
   std::string_view pattern = set.substr(listRegex.size());
   pattern.remove_prefix(std::min(pattern.find_first_not_of(' '), pattern.size()));
   if (pattern.empty()) {
      throw Kiv::RangeError("at " + std::to_string(set.size() + 1) +
                            ": expected a regular expression, found end of text");
   }
   auto compiled = PosixRegex::compile(PosixRegex::withDelimiters(pattern));
   if (!compiled) {
      throw Kiv::RangeError("at " + std::to_string(set.size() - pattern.size() + 1) + ": " +
                            compiled.error);
   }
   addStep(withMatcherOf(kind,
                         [&]<class Matcher>() -> Action {
                            // IPv6 lists have no memo: their text is matched each time.
                            std::shared_ptr<RouteMapMatchMemo const> memo;
                            if constexpr (!std::is_same_v<Matcher, ExtCommIp6Matcher>) {
                               memo = std::make_shared<RouteMapMatchMemo const>(compiled.regex);
                            }
                            return ListRegex<Matcher>{compiled.regex, memo};
                         }),
           "", true);
}

void CommunityPolicy::addEdit(std::string_view kind, std::string_view edit) {
   addStep(
      withMatcherOf(
         kind, [&]<class Matcher>() -> Action { return Edit<Matcher>{parsedEdit<Matcher>(edit)}; }),
      edit, false);
}

std::vector<CommunityPolicy::Memo>& CommunityPolicy::memosOf(U32 peerAs) {
   auto& memos = peerMemos_[peerAs];
   if (memos.empty()) {
      std::size_t steps = 0;
      for (Rule const& rule : rules_) {
         steps += rule.steps.size();
      }
      memos.resize(steps);
      sharedMemos_.resize(steps);
   }
   return memos;
}

CommunityPolicy::Outcome CommunityPolicy::run(PathLists& lists, U32 peerAs, U64 paths) {
   CommunityMatchContext const context{.peerAs = peerAs, .localAs = localAs_};
   bool const editable = lists.malformed.empty();
   auto& peerMemos = memosOf(peerAs);
   Outcome outcome;
   std::size_t next = 0;
   for (Rule& rule : rules_) {
      bool holds = true, changed = false;
      for (Step const& step : rule.steps) {
         Memo& memo = step.perPeer ? peerMemos[next] : sharedMemos_[next];
         std::size_t const slots = step.perPeer ? peerMemoSlots : sharedMemoSlots;
         ++next;
         if (!holds) {
            continue;
         }
         std::visit(
            [&]<class Kind>(Kind const& s) {
               using Matcher = typename Kind::MatcherType;
               if constexpr (requires { s.set; }) {
                  auto& answers = memoOf<CommunitySetMatchMemo<Matcher>>(memo, [&] {
                     return std::make_unique<CommunitySetMatchMemo<Matcher>>(s.set, context, slots);
                  });
                  auto const* list = listOf<Matcher>(lists).get();
                  holds = answers.matches(list ? *list : *listOf<Matcher>(empty_));
               } else if constexpr (requires { s.regex; }) {
                  auto const* list = listOf<Matcher>(lists).get();
                  auto const& judged = list ? *list : *listOf<Matcher>(empty_);
                  if constexpr (std::is_same_v<Matcher, ExtCommIp6Matcher>) {
                     holds = s.regex->execute(ip6Text(&judged).c_str()) == 0;
                  } else {
                     holds = s.memo->matchCommunitiesRegex(judged);
                  }
               } else if (editable) {
                  auto& results = memoOf<CommunityListEditMemo<Matcher>>(memo, [&] {
                     return std::make_unique<CommunityListEditMemo<Matcher>>(s.edit, tables_,
                                                                             context, slots);
                  });
                  auto& list = listOf<Matcher>(lists);
                  auto result = results.apply(list.get());
                  if (result != list) {
                     list = std::move(result);
                     changed = true;
                  }
               }
            },
            step.action);
      }
      if (holds) {
         outcome.matched = true;
         outcome.changed = outcome.changed || changed;
         rule.counts.matched += paths;
         rule.counts.changed += changed ? paths : 0;
      }
   }
   return outcome;
}

std::vector<CommunityPolicy::RuleCounts> CommunityPolicy::counts() const {
   std::vector<RuleCounts> counts;
   for (Rule const& rule : rules_) {
      counts.push_back(rule.counts);
   }
   return counts;
}

std::optional<CommunityPolicy> CommunityPolicy::parse(std::string_view text,
                                                      std::string const& source,
                                                      CommunityTables::PtrConst tables, U32 localAs,
                                                      std::string* error) {
   CommunityPolicy policy(std::move(tables), localAs);
   std::size_t lineNumber = 0;
   while (!text.empty()) {
      std::size_t const end = std::min(text.find('\n'), text.size());
      std::string_view const line = text.substr(0, end);
      text.remove_prefix(std::min(end + 1, text.size()));
      ++lineNumber;
      // The words of the line: a verb, for match and edit a kind, then the rest.
      std::size_t column = 0; // 0-based, of what is being read
      auto word = [&] {
         std::size_t const start = line.find_first_not_of(" \t\r", column);
         if (start == std::string_view::npos) {
            column = line.size();
            return std::string_view();
         }
         std::size_t const stop = std::min(line.find_first_of(" \t\r", start), line.size());
         column = start;
         std::string_view const w = line.substr(start, stop - start);
         return w;
      };
      auto fail = [&](std::size_t at, std::string const& what) {
         *error =
            source + ":" + std::to_string(lineNumber) + ":" + std::to_string(at + 1) + ": " + what;
      };
      std::string_view const verb = word();
      if (verb.empty() || verb.front() == '#') {
         continue;
      }
      column += verb.size();
      try {
         if (verb == "rule") {
            std::string_view const name = word();
            if (name.empty() ||
                line.find_first_not_of(" \t\r", column + name.size()) != std::string_view::npos) {
               fail(column, "expected one word naming the rule");
               return std::nullopt;
            }
            policy.addRule(std::string(name));
            continue;
         }
         if (verb != "match" && verb != "edit") {
            fail(column - verb.size(),
                 "expected 'rule', 'match' or 'edit', found '" + std::string(verb) + "'");
            return std::nullopt;
         }
         std::string_view const kind = word();
         std::size_t const kindColumn = column;
         column += kind.size();
         std::size_t const rest = std::min(line.find_first_not_of(" \t", column), line.size());
         if (!communityKindNamed(kind)) {
            fail(kindColumn, "expected 'standard', 'large', 'extended' or 'ipv6', found " +
                                (kind.empty() ? "end of line" : "'" + std::string(kind) + "'"));
            return std::nullopt;
         }
         std::string_view body = line.substr(rest);
         while (!body.empty() && (body.back() == '\r' || body.back() == ' ')) {
            body.remove_suffix(1);
         }
         column = rest;
         if (verb == "match") {
            policy.addMatch(kind, body);
         } else {
            policy.addEdit(kind, body);
         }
      } catch (Kiv::RangeError const& e) {
         // "at <n>: ..." counts from the start of the set or edit text.
         std::string_view message = e.what();
         std::size_t at = 1;
         if (message.starts_with("at ")) {
            auto const [p, ec] =
               std::from_chars(message.data() + 3, message.data() + message.size(), at);
            if (ec == std::errc() && std::string_view(p, 2) == ": ") {
               message.remove_prefix(static_cast<std::size_t>(p + 2 - message.data()));
            }
         }
         fail(column + at - 1, std::string(message));
         return std::nullopt;
      }
   }
   if (policy.empty()) {
      *error = source + ": no rules";
      return std::nullopt;
   }
   return policy;
}

} // namespace QorBgpTools
