// Live heap bytes of this process, counted by replacing the global
// operator new and delete in the benchmark programs (the library's
// allocations go through them too). Counting is off unless a HeapCounting
// scope is open: a counter that every allocation of every thread updated
// would itself be a contended cache line in the multi-threaded figures.
#pragma once

#include <cstddef>

namespace bench {

// Bytes allocated and not yet freed while counting was on.
std::size_t liveHeapBytes() noexcept;

// Counts allocations while it lives; one at a time, on one thread.
class HeapCounting {
 public:
   HeapCounting() noexcept;
   ~HeapCounting();
   HeapCounting(HeapCounting const&) = delete;
   HeapCounting& operator=(HeapCounting const&) = delete;
};

} // namespace bench
