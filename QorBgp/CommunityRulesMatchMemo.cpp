#include "QorBgpCommunity/QorBgp/CommunityRulesMatchMemo.h"

#include "QorBgpCommunity/platform/Errors.h"
#include "QorBgpCommunity/platform/Hash.h"

#include <algorithm>
#include <bit>

namespace Routing::Bgp {

namespace {

// A slot's serial while a writer holds it (serials count up from 1).
constexpr U64 busy = ~U64{0};

} // namespace

template <class Matcher>
CommunityRulesMatchMemo<Matcher>::CommunityRulesMatchMemo(Rules rules,
                                                          CommunityMatchContext context,
                                                          std::size_t slots)
    : rules_(std::move(rules)), context_(context),
      mask_(std::bit_ceil(std::max<std::size_t>(slots, 1)) - 1),
      slots_(std::make_unique<Slot[]>(mask_ + 1)) {
   if (rules_.size() > maxRules) {
      throw Kiv::RangeError("CommunityRulesMatchMemo: more than 64 rules");
   }
   if (std::find(rules_.begin(), rules_.end(), nullptr) != rules_.end()) {
      throw Kiv::NullArgumentError("CommunityRulesMatchMemo: null rule");
   }
}

template <class Matcher>
CommunityRulesMatchMemo<Matcher>::~CommunityRulesMatchMemo() = default;

template <class Matcher>
U64 CommunityRulesMatchMemo<Matcher>::answers(List const& list) const {
   U64 const serial = list.serial();
   Slot& slot = slots_[Kiv::hashU64(serial, 0) & mask_];
   // Read as a sequence lock: the answers count when the slot named this list
   // both before and after they were read.
   if (slot.serial.load(std::memory_order_acquire) == serial) {
      U64 const remembered = slot.answers.load(std::memory_order_relaxed);
      std::atomic_thread_fence(std::memory_order_acquire);
      if (slot.serial.load(std::memory_order_relaxed) == serial) {
         return remembered;
      }
   }
   U64 computed = 0;
   for (std::size_t i = 0; i < rules_.size(); ++i) {
      if (rules_[i]->matches(list, context_)) {
         computed |= U64{1} << i;
      }
   }
   // Written as a sequence lock by one writer at a time: the writer first
   // claims the slot (busy names no list), and a slot another writer holds is
   // left alone.
   U64 held = slot.serial.load(std::memory_order_relaxed);
   if (held == busy || !slot.serial.compare_exchange_strong(held, busy, std::memory_order_acquire,
                                                            std::memory_order_relaxed)) {
      return computed;
   }
   std::atomic_thread_fence(std::memory_order_release);
   slot.answers.store(computed, std::memory_order_relaxed);
   slot.serial.store(serial, std::memory_order_release);
   return computed;
}

template class CommunityRulesMatchMemo<StandardCommunityMatcher>;
template class CommunityRulesMatchMemo<LargeCommunityMatcher>;
template class CommunityRulesMatchMemo<ExtCommunityMatcher>;
template class CommunityRulesMatchMemo<ExtCommIp6Matcher>;

} // namespace Routing::Bgp
