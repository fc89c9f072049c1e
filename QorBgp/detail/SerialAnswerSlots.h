// Private to the memos of route-policy answers: bounded, thread-safe memory of
// a yes/no answer per published list, keyed by the list's process-unique
// serial. Not part of the API.
#pragma once

#include "QorBgpCommunity/platform/Hash.h"
#include "QorBgpCommunity/platform/Types.h"

#include <atomic>
#include <cstddef>

namespace Routing::Bgp::detail {

// The answer remembered in `slots` (mask + 1 of them) for `serial`, or
// `compute()`'s, then remembered in place of whatever list shared its slot.
// A slot is one atomic word, serial << 1 | answer (0 is empty: no serial is 0),
// so threads may ask at once; a race costs a recomputation, never a wrong answer.
template <class Compute>
bool rememberedAnswer(std::atomic<U64>* slots, std::size_t mask, U64 serial, Compute compute) {
   std::atomic<U64>& slot = slots[Kiv::hashU64(serial, 0) & mask];
   U64 const remembered = slot.load(std::memory_order_relaxed);
   if (remembered >> 1 == serial) {
      return (remembered & 1) != 0;
   }
   bool const answer = compute();
   slot.store(serial << 1 | (answer ? 1 : 0), std::memory_order_relaxed);
   return answer;
}

} // namespace Routing::Bgp::detail
