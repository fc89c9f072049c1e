// Private to the standard community list: each thread's cache of the lists
// it has looked up by value in multi-threaded tables. Not part of the API.
//
// Threads that decode the same popular lists would otherwise each take every
// path's reference with an atomic increment of the same count, whose cache
// line then moves between the cores on every decode. A cached list instead
// carries spare references that its thread took in one batch: handing one
// out writes nothing shared, and comparing a list's values reads only its
// value array, which no one writes after publication.
//
// The cache keeps one reference per cached list (so the list stays interned
// and its values valid) plus the spares not yet handed out. A list whose
// paths are all gone therefore stays in its table until its entry is
// replaced, the thread ends, or the thread calls CommList::releaseThreadCache().
#pragma once

#include "QorBgpCommunity/QorBgp/QorBgpCommunityListStandard.h"
#include "QorBgpCommunity/platform/DedupHashTable.h"

#include <memory>
#include <span>

namespace Routing::Bgp::detail {

class CommListThreadCache {
 public:
   // The calling thread's cache.
   static CommListThreadCache& forThisThread();

   CommListThreadCache() = default;
   ~CommListThreadCache() { clear(); }
   CommListThreadCache(CommListThreadCache const&) = delete;
   CommListThreadCache& operator=(CommListThreadCache const&) = delete;

   // The cached list of `table` whose values are `values` (sorted, unique,
   // hashing to `hash`), with a reference for the caller; null when none.
   CommList::PtrConst find(Zup::DedupHashTable const& table, std::span<U32 const> values,
                           U32 hash) noexcept;
   // Caches `list`, interned in `table` and held by the caller, in place of
   // whatever list shared its entry.
   void remember(Zup::DedupHashTable const& table, CommList const& list) noexcept;
   // Gives back every reference the cache holds.
   void clear() noexcept;

 private:
   struct Entry {
      U64 tableSerial = 0;
      CommList const* list = nullptr;
      U32 const* values = nullptr;
      U32 count = 0;
      U32 hash = 0;
      U32 references = 0; // the entry's own one plus the spares
      U32 credit = 0;     // hits banked against replacement
   };
   static constexpr std::size_t entryCount = 4096; // a power of two: 160 KiB
   // Spares taken at once when an entry runs out.
   static constexpr U32 spareBatch = 32;
   // A hit banks one credit, up to this; a miss that would replace the
   // entry spends one instead while any is left, so that a list seen once
   // does not push out one seen often.
   static constexpr U32 maxCredit = 4;

   static void drop(Entry& entry) noexcept;

   // Allocated on first use, so that threads that never look lists up in
   // multi-threaded tables pay nothing; null after an allocation failure
   // (then nothing is cached).
   std::unique_ptr<Entry[]> entries_;
};

} // namespace Routing::Bgp::detail
