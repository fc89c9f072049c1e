// The community conditions `qorbgp-comm match` checks instead of its regular
// expression: a set matcher for the standard, the large and the extended list,
// in the library's policy text, their placeholders bound per path (peer-as:
// the path's peer AS; local-as: the AS the user names).
#pragma once

#include "PathLists.h"

#include "QorBgpCommunity/QorBgp/CommunitySetMatchMemo.h"

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

namespace QorBgpTools {

class ListConditions {
 public:
   // The set texts of each list kind (empty: no condition on that list).
   struct Texts {
      std::string standard;
      std::string large;
      std::string extended;
   };
   // Parses the texts; on bad text, nullopt and `error` says which option and why.
   static std::optional<ListConditions> parse(Texts const& texts, U32 localAs, std::string* error);

   bool empty() const noexcept { return !standard_ && !large_ && !extended_; }
   // Whether the path's lists satisfy every condition given. A path without a
   // list of a kind is judged as holding an empty one.
   bool matches(PathLists const& lists, U32 peerAs);

 private:
   ListConditions() = default;

   template <class Matcher>
   struct Condition {
      typename Routing::Bgp::CommunitySetMatcher<Matcher>::PtrConst set;
      typename Matcher::List::PtrConst empty;
      // One memo per peer AS: answers are remembered per list and context.
      std::unordered_map<U32, std::unique_ptr<Routing::Bgp::CommunitySetMatchMemo<Matcher>>> memos;
      bool matches(typename Matcher::List const* list, Routing::Bgp::CommunityMatchContext context);
   };

   std::shared_ptr<Condition<Routing::Bgp::StandardCommunityMatcher>> standard_;
   std::shared_ptr<Condition<Routing::Bgp::LargeCommunityMatcher>> large_;
   std::shared_ptr<Condition<Routing::Bgp::ExtCommunityMatcher>> extended_;
   U32 localAs_ = 0;
};

} // namespace QorBgpTools
