#include "QorBgpCommunity/platform/Dedup.h"

#include "QorBgpCommunity/platform/DedupHashTable.h"

namespace Zup {

DedupHandle::~DedupHandle() = default;

DedupHandleLifeTimeNotifier::~DedupHandleLifeTimeNotifier() = default;

void DedupHandle::dedupStateIs(DedupState state) noexcept {
   QOR_ASSERT(table_ == nullptr);
   state_.store(state, std::memory_order_relaxed);
}

void DedupHandle::assertIsDeduped() const noexcept { QOR_ASSERT(isDeduped()); }

void DedupHandle::referencesIncReturnRef() const noexcept {
   QOR_ASSERT(!beingDetached());
   referencesInc();
}

void DedupHandle::referencesDecHooked() const noexcept {
   // Owners other than this caller remain: no table work, no lock.
   if (referencesDecAbove(tableReferences())) {
      return;
   }
   table_->release(this);
}

} // namespace Zup

namespace KivHoard {

namespace {

std::atomic<U64> nextSerialBlock{1}; // 0 is never a serial

// Serials are handed to threads in blocks, so that threads building lists
// at once do not all write one counter.
constexpr U64 serialBlockSize = 1024;

U64 newSerial() noexcept {
   thread_local U64 next = 0;
   thread_local U64 blockEnd = 0;
   if (next == blockEnd) {
      next = nextSerialBlock.fetch_add(serialBlockSize, std::memory_order_relaxed);
      blockEnd = next + serialBlockSize;
   }
   return next++;
}

} // namespace

DedupHandle::DedupHandle() noexcept : serial_(newSerial()) {}

DedupHandle::~DedupHandle() = default;

} // namespace KivHoard
