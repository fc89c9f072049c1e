/// @file
/// CommunityRulesMatchMemo: the answers of several set matchers (a policy's
/// rules) for one evaluation context, remembered together per published list,
/// so that a policy run over a full table looks each path's list up once and
/// judges each distinct list once for all its rules.
///
/// @code{.cpp}
///   StandardCommunityRulesMatchMemo memo({blackhole, noExport, fromCustomers}, context);
///   U64 const answers = memo.answers(*path.communities);   // bit i: rule i matched
/// @endcode
///
/// Memory is bounded: a fixed array of 16-byte slots, each one list's serial and
/// its answers, chosen at construction; a list whose slot another took is
/// judged again. The memo holds no list. Thread-safe: several threads may ask
/// at once (a slot is read and written like a sequence lock, the list's serial
/// standing for the sequence, serials never being reused; one writer at a time
/// claims a slot).
#pragma once

#include "QorBgpCommunity/QorBgp/CommunitySetMatcher.h"

#include <atomic>
#include <memory>
#include <vector>

namespace Routing::Bgp {

/// Remembers up to 64 set matchers' answers, for one context, per published list.
template <class Matcher>
class QORBGP_EXPORT CommunityRulesMatchMemo {
 public:
   using List = typename Matcher::List;
   using Rules = std::vector<typename CommunitySetMatcher<Matcher>::PtrConst>;
   static constexpr std::size_t maxRules = 64;
   /// Enough for the distinct lists of several full tables (1 MiB).
   static constexpr std::size_t defaultSlots = 1 << 16;

   /// Kiv::RangeError "CommunityRulesMatchMemo: more than 64 rules";
   /// Kiv::NullArgumentError "CommunityRulesMatchMemo: null rule". `slots` is
   /// rounded up to a power of two.
   CommunityRulesMatchMemo(Rules rules, CommunityMatchContext context,
                           std::size_t slots = defaultSlots);
   ~CommunityRulesMatchMemo();
   CommunityRulesMatchMemo(CommunityRulesMatchMemo const&) = delete;
   CommunityRulesMatchMemo& operator=(CommunityRulesMatchMemo const&) = delete;

   /// Bit i set when rule i matches the published `list` in this context.
   U64 answers(List const& list) const;

   Rules const& rules() const noexcept { return rules_; }

 private:
   struct Slot {
      std::atomic<U64> serial{0}; ///< 0: empty; all ones: being written
      std::atomic<U64> answers{0};
   };

   Rules const rules_;
   CommunityMatchContext const context_;
   std::size_t const mask_;
   std::unique_ptr<Slot[]> const slots_;
};

using StandardCommunityRulesMatchMemo = CommunityRulesMatchMemo<StandardCommunityMatcher>;
using LargeCommunityRulesMatchMemo = CommunityRulesMatchMemo<LargeCommunityMatcher>;
using ExtCommunityRulesMatchMemo = CommunityRulesMatchMemo<ExtCommunityMatcher>;
using ExtCommIp6RulesMatchMemo = CommunityRulesMatchMemo<ExtCommIp6Matcher>;

extern template class CommunityRulesMatchMemo<StandardCommunityMatcher>;
extern template class CommunityRulesMatchMemo<LargeCommunityMatcher>;
extern template class CommunityRulesMatchMemo<ExtCommunityMatcher>;
extern template class CommunityRulesMatchMemo<ExtCommIp6Matcher>;

} // namespace Routing::Bgp
