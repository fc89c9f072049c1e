// A small route policy over the community lists of paths, in the library's
// policy text: ordered rules, each a name, match conditions (a set matcher on
// one kind of list; all of a rule's must hold) and edits (of one kind of list
// each). Each rule whose conditions hold on the lists the rules before it left
// applies its edits in order; a rule without conditions holds for every path.
//
//   # Scrub the peer's own communities; tag routes of customer VPNs.
//   rule scrub
//      match standard any peer-as:*
//      edit standard delete peer-as:*
//   rule customers
//      match extended any rt 65000:100-199
//      edit large add 65000:1:100
//
// Lines are "rule <name>", "match <kind> <set>" and "edit <kind> <edit>",
// kind one of standard, large, extended, ipv6; "match <kind> list-regex
// <regex>" matches a route-map regular expression against the whole list's
// text, as `qorbgp-comm match` does. Blank lines and lines starting with '#'
// are skipped. peer-as in a matcher is each path's peer AS, local-as
// the AS given to the policy.
//
// Answers and edits go through the library's memos, one per condition or
// edit (per peer AS for those that name peer-as), so that each distinct list
// is judged and edited once. Not thread-safe.
#pragma once

#include "PathLists.h"

#include "QorBgpCommunity/QorBgp/CommunityListEditMemo.h"
#include "QorBgpCommunity/QorBgp/CommunitySetMatchMemo.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListMatchMemo.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

namespace QorBgpTools {

class CommunityPolicy {
 public:
   // What one rule did over a run, in paths.
   struct RuleCounts {
      std::string name;
      U64 matched = 0; // paths whose lists met every condition
      U64 changed = 0; // of those, paths whose lists an edit changed
   };

   // An empty policy publishing its edits into `tables` (those the paths'
   // lists are decoded into).
   CommunityPolicy(Routing::Bgp::CommunityTables::PtrConst tables, U32 localAs);
   CommunityPolicy(CommunityPolicy&&) noexcept;
   ~CommunityPolicy();

   // The policy text above; nullopt with `*error` "<source>:<line>:<column>:
   // <what was expected>" for bad text, or "<source>: no rules" for none.
   static std::optional<CommunityPolicy> parse(std::string_view text, std::string const& source,
                                               Routing::Bgp::CommunityTables::PtrConst tables,
                                               U32 localAs, std::string* error);

   // Building, line by line: a new rule, then conditions and edits of the
   // last rule (of a rule named "" when none was started). Bad text throws
   // the library's Kiv::RangeError ("at <column>: expected ..."); "ipv6"
   // and the other kinds by CommunityKind's names.
   void addRule(std::string name);
   void addMatch(std::string_view kind, std::string_view set);
   void addEdit(std::string_view kind, std::string_view edit);

   bool empty() const noexcept { return rules_.empty(); }
   struct Outcome {
      bool matched = false; // some rule's conditions held
      bool changed = false; // an edit changed the lists
   };
   // Runs the rules over `lists`, edited in place, counting `paths` paths
   // (the paths that share these lists) for each rule. Paths with a
   // malformed community attribute are judged as they are but never edited:
   // what was received cannot be written back.
   Outcome run(PathLists& lists, U32 peerAs, U64 paths);
   std::vector<RuleCounts> counts() const;

 private:
   template <class Matcher>
   struct Condition {
      using MatcherType = Matcher;
      typename Routing::Bgp::CommunitySetMatcher<Matcher>::PtrConst set;
   };
   // A route-map regular expression on the whole list's text, as match's
   // REGEX; one memo answers each list once for every peer (IPv6 lists, which
   // have no memo, are matched every time).
   template <class Matcher>
   struct ListRegex {
      using MatcherType = Matcher;
      Routing::RouteMap::PosixRegex::PtrConst regex;
      std::shared_ptr<Routing::Bgp::RouteMapMatchMemo const> memo;
   };
   template <class Matcher>
   struct Edit {
      using MatcherType = Matcher;
      typename Routing::Bgp::CommunityListEdit<Matcher>::PtrConst edit;
   };
   using Action = std::variant<
      Condition<Routing::Bgp::StandardCommunityMatcher>,
      Condition<Routing::Bgp::LargeCommunityMatcher>, Condition<Routing::Bgp::ExtCommunityMatcher>,
      Condition<Routing::Bgp::ExtCommIp6Matcher>, ListRegex<Routing::Bgp::StandardCommunityMatcher>,
      ListRegex<Routing::Bgp::LargeCommunityMatcher>, ListRegex<Routing::Bgp::ExtCommunityMatcher>,
      ListRegex<Routing::Bgp::ExtCommIp6Matcher>, Edit<Routing::Bgp::StandardCommunityMatcher>,
      Edit<Routing::Bgp::LargeCommunityMatcher>, Edit<Routing::Bgp::ExtCommunityMatcher>,
      Edit<Routing::Bgp::ExtCommIp6Matcher>>;
   struct Step {
      Action action;
      // Whether the answer depends on the peer AS (peer-as in the text):
      // then the step has a memo per peer AS, else one for all.
      bool perPeer = false;
   };
   struct Rule {
      RuleCounts counts;
      std::vector<Step> steps; // conditions first, then edits, each in the order given
   };
   // A step's memo, made when first used.
   using Memo = std::variant<std::unique_ptr<Routing::Bgp::StandardCommunitySetMatchMemo>,
                             std::unique_ptr<Routing::Bgp::LargeCommunitySetMatchMemo>,
                             std::unique_ptr<Routing::Bgp::ExtCommunitySetMatchMemo>,
                             std::unique_ptr<Routing::Bgp::ExtCommIp6SetMatchMemo>,
                             std::unique_ptr<Routing::Bgp::StandardCommunityListEditMemo>,
                             std::unique_ptr<Routing::Bgp::LargeCommunityListEditMemo>,
                             std::unique_ptr<Routing::Bgp::ExtCommListEditMemo>,
                             std::unique_ptr<Routing::Bgp::ExtCommIp6ListEditMemo>>;
   // The empty lists a path without a list of that kind is judged as holding.
   struct EmptyLists {
      Routing::Bgp::CommList::PtrConst standard;
      Routing::Bgp::LargeCommList::PtrConst large;
      Routing::Bgp::ExtCommList::PtrConst extended;
      Routing::Bgp::ExtCommIp6List::PtrConst ip6;
   };

   Rule& lastRule();
   void addStep(Action action, std::string_view text, bool condition);
   std::vector<Memo>& memosOf(U32 peerAs);

   Routing::Bgp::CommunityTables::PtrConst tables_;
   U32 localAs_;
   EmptyLists empty_;
   std::vector<Rule> rules_;
   // One per step of every rule, in order: the memos of steps that do not
   // depend on the peer AS, and those of the ones that do, by peer AS.
   std::vector<Memo> sharedMemos_;
   std::unordered_map<U32, std::vector<Memo>> peerMemos_;
};

} // namespace QorBgpTools
