/// @file
/// CommunitySetMatchMemo: a set matcher's answers for one evaluation context,
/// remembered per published list, so that a policy run over a full table
/// judges each distinct list once.
///
/// @code{.cpp}
///   StandardCommunitySetMatchMemo memo(blackholeOrNoExport, {.peerAs = 65001, .localAs = 65000});
///   for (auto const& path : pathsFromPeer) {
///      if (memo.matches(*path.communities)) { ... }   // as the matcher's own matches()
///   }
/// @endcode
///
/// Memory is bounded: a fixed array of slots, each one list's serial and
/// answer, chosen at construction; a list whose slot another took is judged
/// again. Serials are unique for the whole run, so a list released and
/// replaced by another at the same address is never answered from memory, and
/// the memo holds no list. Thread-safe: several threads may ask at once.
#pragma once

#include "QorBgpCommunity/QorBgp/CommunitySetMatcher.h"

#include <atomic>
#include <memory>

namespace Routing::Bgp {

/// Remembers a set matcher's answers, for one context, per published list.
template <class Matcher>
class QORBGP_EXPORT CommunitySetMatchMemo {
 public:
   using List = typename Matcher::List;
   /// Enough for the distinct lists of several full tables (512 KiB).
   static constexpr std::size_t defaultSlots = 1 << 16;

   /// Kiv::NullArgumentError "CommunitySetMatchMemo: null matcher" for null.
   /// `slots` is rounded up to a power of two.
   CommunitySetMatchMemo(typename CommunitySetMatcher<Matcher>::PtrConst matcher,
                         CommunityMatchContext context, std::size_t slots = defaultSlots);
   ~CommunitySetMatchMemo();
   CommunitySetMatchMemo(CommunitySetMatchMemo const&) = delete;
   CommunitySetMatchMemo& operator=(CommunitySetMatchMemo const&) = delete;

   /// The matcher's answer for the published `list` in this memo's context.
   bool matches(List const& list) const;

 private:
   typename CommunitySetMatcher<Matcher>::PtrConst const matcher_;
   CommunityMatchContext const context_;
   std::size_t const mask_;
   std::unique_ptr<std::atomic<U64>[]> const slots_;
};

using StandardCommunitySetMatchMemo = CommunitySetMatchMemo<StandardCommunityMatcher>;
using LargeCommunitySetMatchMemo = CommunitySetMatchMemo<LargeCommunityMatcher>;
using ExtCommunitySetMatchMemo = CommunitySetMatchMemo<ExtCommunityMatcher>;
using ExtCommIp6SetMatchMemo = CommunitySetMatchMemo<ExtCommIp6Matcher>;

extern template class CommunitySetMatchMemo<StandardCommunityMatcher>;
extern template class CommunitySetMatchMemo<LargeCommunityMatcher>;
extern template class CommunitySetMatchMemo<ExtCommunityMatcher>;
extern template class CommunitySetMatchMemo<ExtCommIp6Matcher>;

} // namespace Routing::Bgp
