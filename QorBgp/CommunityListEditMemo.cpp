#include "QorBgpCommunity/QorBgp/CommunityListEditMemo.h"

#include "QorBgpCommunity/platform/Errors.h"
#include "QorBgpCommunity/platform/Hash.h"

#include <algorithm>
#include <bit>

namespace Routing::Bgp {

template <class Matcher>
CommunityListEditMemo<Matcher>::CommunityListEditMemo(typename Edit::PtrConst edit,
                                                      CommunityTables::PtrConst tables,
                                                      CommunityMatchContext context,
                                                      std::size_t slots)
    : edit_(std::move(edit)), tables_(std::move(tables)), context_(context),
      mask_(std::bit_ceil(std::max<std::size_t>(slots, 1)) - 1),
      slots_(std::make_unique<Slot[]>(mask_ + 1)),
      stripes_(std::make_unique<std::mutex[]>(stripeCount)) {
   if (!edit_) {
      throw Kiv::NullArgumentError("CommunityListEditMemo: null edit");
   }
   if (!tables_) {
      throw Kiv::NullArgumentError("CommunityListEditMemo: null tables");
   }
}

template <class Matcher>
CommunityListEditMemo<Matcher>::~CommunityListEditMemo() = default;

template <class Matcher>
typename CommunityListEditMemo<Matcher>::List::PtrConst
CommunityListEditMemo<Matcher>::apply(List const* list) const {
   if (!list) {
      return edit_->apply(nullptr, *tables_, context_);
   }
   U64 const serial = list->serial();
   std::size_t const index = Kiv::hashU64(serial, 0) & mask_;
   Slot& slot = slots_[index];
   std::mutex& stripe = stripes_[index % stripeCount];
   {
      std::lock_guard lock(stripe);
      if (slot.serial == serial) {
         return slot.result;
      }
   }
   // Edited outside the lock: publishing may take the tables' locks.
   typename List::PtrConst result = edit_->apply(list, *tables_, context_);
   typename List::PtrConst replaced;
   {
      std::lock_guard lock(stripe);
      replaced = std::move(slot.result); // released after the lock: it may be the last reference
      slot.serial = serial;
      slot.result = result;
   }
   return result;
}

template class CommunityListEditMemo<StandardCommunityMatcher>;
template class CommunityListEditMemo<LargeCommunityMatcher>;
template class CommunityListEditMemo<ExtCommunityMatcher>;
template class CommunityListEditMemo<ExtCommIp6Matcher>;

} // namespace Routing::Bgp
