#include "HeapCounter.h"

#include <atomic>
#include <cstdlib>
#include <malloc.h>
#include <new>

namespace {
std::atomic<bool> counting{false};
std::atomic<std::size_t> live{0};
} // namespace

namespace bench {

std::size_t liveHeapBytes() noexcept { return live.load(std::memory_order_relaxed); }

HeapCounting::HeapCounting() noexcept { counting.store(true, std::memory_order_relaxed); }

HeapCounting::~HeapCounting() { counting.store(false, std::memory_order_relaxed); }

} // namespace bench

// A block freed while counting was on may have been allocated before: the
// live count is a difference of two readings taken in one scope, where the
// blocks in question are allocated and kept.
void* operator new(std::size_t size) {
   void* p = std::malloc(size ? size : 1);
   if (!p) {
      throw std::bad_alloc();
   }
   if (counting.load(std::memory_order_relaxed)) {
      live.fetch_add(malloc_usable_size(p), std::memory_order_relaxed);
   }
   return p;
}

void operator delete(void* p) noexcept {
   if (p) {
      if (counting.load(std::memory_order_relaxed)) {
         live.fetch_sub(malloc_usable_size(p), std::memory_order_relaxed);
      }
      std::free(p);
   }
}

void operator delete(void* p, std::size_t) noexcept { operator delete(p); }
