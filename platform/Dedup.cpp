#include "platform/Dedup.h"

#include "platform/DedupHashTable.h"

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
std::atomic<U64> nextSerial{1}; // 0 is never a serial
} // namespace

DedupHandle::DedupHandle() noexcept : serial_(nextSerial.fetch_add(1, std::memory_order_relaxed)) {}

DedupHandle::~DedupHandle() = default;

} // namespace KivHoard
