/// @file
/// CommunityListEditMemo: an edit's results for one set of tables and evaluation
/// context, remembered per published list, so that a policy run over a full
/// table edits each distinct list once.
///
/// @code{.cpp}
///   StandardCommunityListEditMemo memo(scrub, tables, {.peerAs = 65001, .localAs = 65000});
///   for (auto& path : pathsFromPeer) {
///      path.communities = memo.apply(path.communities.get()); // scrub->apply(.., *tables, ..)
///   }
/// @endcode
///
/// What keeps what alive, and how memory is bounded: a fixed array of slots,
/// chosen at construction, each holding one input list's serial and a counted
/// reference to its result. The memo never holds an input list (only its
/// serial, unique for the whole run); it holds at most one result per slot,
/// which stays interned while its slot remembers it: until another list takes
/// the slot or the memo goes. So at most `slots` results are kept alive beyond
/// the paths that hold them. Thread-safe: several threads may apply at once
/// (with multi-threaded tables).
#pragma once

#include "QorBgpCommunity/QorBgp/CommunityListEdit.h"

#include <memory>
#include <mutex>

namespace Routing::Bgp {

/// Remembers an edit's results, for one set of tables and one context, per
/// published list.
template <class Matcher>
class QORBGP_EXPORT CommunityListEditMemo {
 public:
   using Edit = CommunityListEdit<Matcher>;
   using List = typename Edit::List;
   /// Enough for the distinct lists of a full table.
   static constexpr std::size_t defaultSlots = 1 << 14;

   /// Kiv::NullArgumentError "CommunityListEditMemo: null edit" or "... null
   /// tables" for null. `slots` is rounded up to a power of two.
   CommunityListEditMemo(typename Edit::PtrConst edit, CommunityTables::PtrConst tables,
                         CommunityMatchContext context, std::size_t slots = defaultSlots);
   ~CommunityListEditMemo();
   CommunityListEditMemo(CommunityListEditMemo const&) = delete;
   CommunityListEditMemo& operator=(CommunityListEditMemo const&) = delete;

   /// The edit's result for `list` (null: none), as Edit::apply gives it.
   typename List::PtrConst apply(List const* list) const;

 private:
   struct Slot {
      U64 serial = 0; ///< 0: empty (no serial is 0)
      typename List::PtrConst result;
   };
   static constexpr std::size_t stripeCount = 64;

   typename Edit::PtrConst const edit_;
   CommunityTables::PtrConst const tables_;
   CommunityMatchContext const context_;
   std::size_t const mask_;
   std::unique_ptr<Slot[]> const slots_;
   /// Slot i is guarded by stripe i % stripeCount.
   std::unique_ptr<std::mutex[]> const stripes_;
};

using StandardCommunityListEditMemo = CommunityListEditMemo<StandardCommunityMatcher>;
using LargeCommunityListEditMemo = CommunityListEditMemo<LargeCommunityMatcher>;
using ExtCommListEditMemo = CommunityListEditMemo<ExtCommunityMatcher>;
using ExtCommIp6ListEditMemo = CommunityListEditMemo<ExtCommIp6Matcher>;

extern template class CommunityListEditMemo<StandardCommunityMatcher>;
extern template class CommunityListEditMemo<LargeCommunityMatcher>;
extern template class CommunityListEditMemo<ExtCommunityMatcher>;
extern template class CommunityListEditMemo<ExtCommIp6Matcher>;

} // namespace Routing::Bgp
