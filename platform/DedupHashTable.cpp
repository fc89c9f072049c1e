#include "platform/DedupHashTable.h"

#include "platform/DumpContext.h"

#include <absl/container/flat_hash_set.h>

#include <mutex>
#include <optional>
#include <vector>

namespace Zup {

namespace {

// Shards of the multi-threaded form: enough that a few dozen threads
// interning at once rarely share a lock.
constexpr unsigned multiThreadedShardBits = 6;

// What the set stores: the handle with its hash, so probing and rehashing
// never call into the handle.
struct Entry {
   U32 hash;
   DedupHandle* handle;
};
// Lookup keys: by content, by equal handle, by the very handle.
struct ContentKey {
   U32 hash;
   DedupContentHandle const* content;
};
struct EqualKey {
   U32 hash;
   DedupHandle const* handle;
};
struct IdentityKey {
   U32 hash;
   DedupHandle const* handle;
};

struct EntryHash {
   using is_transparent = void;
   // The handles' hashes are already well mixed 32-bit values; spreading them
   // over 64 bits gives the set independent bits for its groups and slots.
   static std::size_t spread(U32 hash) noexcept { return hash * 0x9e3779b97f4a7c15ull; }
   std::size_t operator()(Entry const& e) const noexcept { return spread(e.hash); }
   std::size_t operator()(ContentKey const& k) const noexcept { return spread(k.hash); }
   std::size_t operator()(EqualKey const& k) const noexcept { return spread(k.hash); }
   std::size_t operator()(IdentityKey const& k) const noexcept { return spread(k.hash); }
};

struct EntryEq {
   using is_transparent = void;
   bool operator()(Entry const& a, Entry const& b) const noexcept { return a.handle == b.handle; }
   bool operator()(Entry const& a, ContentKey const& k) const noexcept {
      return a.hash == k.hash && a.handle->compareByContent(*k.content);
   }
   bool operator()(Entry const& a, EqualKey const& k) const noexcept {
      return a.hash == k.hash && a.handle->compare(k.handle);
   }
   bool operator()(Entry const& a, IdentityKey const& k) const noexcept {
      return a.handle == k.handle;
   }
   template <class Key>
   bool operator()(Key const& k, Entry const& a) const noexcept {
      return (*this)(a, k);
   }
};

} // namespace

// Cache-line aligned, so that threads working on neighbouring shards do not
// contend for one line.
struct alignas(64) DedupHashTable::Shard {
   std::mutex mutex;
   absl::flat_hash_set<Entry, EntryHash, EntryEq> entries;

   // Locks in the multi-threaded form only.
   std::unique_lock<std::mutex> lock(bool multiThreaded) {
      return multiThreaded ? std::unique_lock(mutex) : std::unique_lock<std::mutex>();
   }
};

DedupHashTableLifeTimeNotifiee::~DedupHashTableLifeTimeNotifiee() = default;

DedupHashTable::DedupHashTable(bool multiThreaded)
    : multiThreaded_(multiThreaded), shardShift_(multiThreaded ? 32 - multiThreadedShardBits : 32),
      shards_(std::make_unique<Shard[]>(std::size_t{1} << (32 - shardShift_))) {
   QOR_ASSERT(!multiThreaded || Kiv::PtrInterface::threadSafe());
}

DedupHashTable::~DedupHashTable() {
   if (notifiee_) {
      notifiee_->handleNotificationStop(*this);
   }
   // Handles still resident live on without the table.
   std::vector<DedupHandle*> resident;
   for (std::size_t i = 0, n = std::size_t{1} << (32 - shardShift_); i < n; ++i) {
      for (Entry const& e : shards_[i].entries) {
         resident.push_back(e.handle);
      }
      shards_[i].entries.clear();
   }
   for (DedupHandle* handle : resident) {
      U32 references = handle->tableReferences();
      handle->releaseHookedIs(false);
      handle->table_ = nullptr;
      handle->flags_.fetch_and(static_cast<U8>(~DedupHandle::isDedupedFlag));
      handle->state_.store(DedupState::notDeduped, std::memory_order_relaxed);
      for (U32 i = 0; i < references; ++i) {
         handle->referencesDec();
      }
   }
}

DedupHashTable::Shard& DedupHashTable::shardFor(U32 hash) const noexcept {
   // A shift by 32 (one shard) would be undefined: that form has index 0.
   return shards_[shardShift_ == 32 ? 0 : hash >> shardShift_];
}

DedupHandle::Ptr DedupHashTable::lookupByContent(DedupContentHandle const& content,
                                                 U32 hash) const {
   Shard& shard = shardFor(hash);
   auto lock = shard.lock(multiThreaded_);
   auto it = shard.entries.find(ContentKey{hash, &content});
   if (it == shard.entries.end()) {
      return nullptr;
   }
   it->handle->referencesIncReturnRef();
   return DedupHandle::Ptr::adopt(it->handle);
}

DedupHandle::Ptr DedupHashTable::dedup(DedupHandle::Ptr const& handle) {
   QOR_ASSERT(handle && handle->dedupState() == DedupState::notDeduped);
   U32 const hash = handle->hash();
   Shard& shard = shardFor(hash);
   auto lock = shard.lock(multiThreaded_);
   auto it = shard.entries.find(EqualKey{hash, handle.get()});
   if (it != shard.entries.end()) {
      it->handle->referencesIncReturnRef();
      return DedupHandle::Ptr::adopt(it->handle);
   }
   DedupHandle* h = handle.get();
   U8 flags = DedupHandle::isDedupedFlag | DedupHandle::everDedupedFlag;
   if (notifiee_) {
      flags |= DedupHandle::haveLifeTimeNotifierFlag;
   }
   h->flags_.store(flags, std::memory_order_relaxed);
   h->state_.store(DedupState::deduped, std::memory_order_relaxed);
   h->table_ = this;
   for (U32 i = 0; i < h->tableReferences(); ++i) {
      h->referencesInc();
   }
   h->releaseHookedIs(true);
   shard.entries.insert(Entry{hash, h});
   if (notifiee_) {
      notifiee_->handleInsert(handle);
   }
   return handle;
}

void DedupHashTable::release(DedupHandle const* handle) const noexcept {
   U32 const references = handle->tableReferences();
   Shard& shard = shardFor(handle->hash());
   {
      auto lock = shard.lock(multiThreaded_);
      if (handle->referencesDecReturnCount() > references) {
         return; // a lookup took a reference meanwhile: it stays
      }
      shard.entries.erase(IdentityKey{handle->hash(), handle});
      handle->flags_.store(
         static_cast<U8>((handle->flags_.load(std::memory_order_relaxed) |
                          DedupHandle::beingDetachedFlag) &
                         ~DedupHandle::isDedupedFlag),
         std::memory_order_relaxed);
      handle->state_.store(DedupState::notDeduped, std::memory_order_relaxed);
      handle->releaseHookedIs(false);
      handle->table_ = nullptr;
      if (notifiee_) {
         notifiee_->handleRemove(const_cast<DedupHandle*>(handle));
      }
   }
   // Only the table's references are left and nothing can find the handle:
   // dropping them destroys it.
   for (U32 i = 0; i < references; ++i) {
      handle->referencesDec();
   }
}

void DedupHashTable::lifeTimeNotifieeIs(DedupHashTableLifeTimeNotifiee::Ptr const& notifiee) {
   if (notifiee == notifiee_) {
      return;
   }
   // Resident handles keep the share of references they were inserted with.
   if (notifiee_) {
      notifiee_->handleNotificationStop(*this);
   }
   notifiee_ = notifiee;
}

std::size_t DedupHashTable::size() const noexcept {
   std::size_t total = 0;
   for (std::size_t i = 0, n = std::size_t{1} << (32 - shardShift_); i < n; ++i) {
      auto lock = shards_[i].lock(multiThreaded_);
      total += shards_[i].entries.size();
   }
   return total;
}

void DedupHashTable::dumpState(Kiv::DumpContext& context, unsigned indent) const {
   context.printf(indent, "DedupHashTable (%s): %zu entries\n",
                  multiThreaded_ ? "multi-threaded" : "single-threaded", size());
}

DedupHashTable::Ptr dedupHashTableFactory(bool multiThreaded) {
   return Kiv::newNotifying<DedupHashTable>(multiThreaded);
}

} // namespace Zup
