#include "QorBgpCommunity/platform/DedupHashTable.h"

#include "QorBgpCommunity/platform/DumpContext.h"

#include <absl/container/flat_hash_set.h>

#include <algorithm>
#include <bit>
#include <mutex>
#include <new>
#include <optional>
#include <thread>
#include <vector>

namespace Zup {

namespace {

// Shards of the multi-threaded form: enough that a few dozen threads
// interning at once rarely share a lock.
constexpr unsigned multiThreadedShardBits = 6;

// What the set stores: the handle alone. Probing compares the set's own
// 7-bit hash tags first, so a handle is read only for a likely match; its
// hash() is asked for when the set grows. Eight bytes a slot keep the set
// dense: the table's share of a small list's memory.
struct Entry {
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
   std::size_t operator()(Entry const& e) const noexcept { return spread(e.handle->hash()); }
   std::size_t operator()(ContentKey const& k) const noexcept { return spread(k.hash); }
   std::size_t operator()(EqualKey const& k) const noexcept { return spread(k.hash); }
   std::size_t operator()(IdentityKey const& k) const noexcept { return spread(k.hash); }
};

struct EntryEq {
   using is_transparent = void;
   bool operator()(Entry const& a, Entry const& b) const noexcept { return a.handle == b.handle; }
   bool operator()(Entry const& a, ContentKey const& k) const noexcept {
      return a.handle->compareByContent(*k.content);
   }
   bool operator()(Entry const& a, EqualKey const& k) const noexcept {
      return a.handle->compare(k.handle);
   }
   bool operator()(Entry const& a, IdentityKey const& k) const noexcept {
      return a.handle == k.handle;
   }
   template <class Key>
   bool operator()(Key const& k, Entry const& a) const noexcept {
      return (*this)(a, k);
   }
};

// Reader slots of the multi-threaded form. A thread that looks a content up
// announces itself in a slot of its own instead of taking the shard's lock, so
// that lookups of hot contents from several cores write no shared line but
// the found handle's reference count. Slots are handed to threads on first
// use and taken back when the thread ends; a thread that finds them all
// taken looks up under the lock.
constexpr unsigned readerSlotCount = 64;
std::atomic<U64> readerSlotsTaken{0};

class ReaderSlotClaim {
 public:
   ReaderSlotClaim() noexcept {
      U64 taken = readerSlotsTaken.load(std::memory_order_relaxed);
      while (taken != ~U64{0}) {
         unsigned const free = static_cast<unsigned>(std::countr_one(taken));
         if (readerSlotsTaken.compare_exchange_weak(taken, taken | (U64{1} << free),
                                                    std::memory_order_relaxed)) {
            index_ = free;
            return;
         }
      }
   }
   ~ReaderSlotClaim() {
      if (index_ < readerSlotCount) {
         readerSlotsTaken.fetch_and(~(U64{1} << index_), std::memory_order_relaxed);
      }
   }
   unsigned index() const noexcept { return index_; }

 private:
   unsigned index_ = readerSlotCount; // none
};

void spinPause() noexcept {
#if defined(__x86_64__) || defined(__i386__)
   __builtin_ia32_pause();
#endif
}

unsigned readerSlotIndex() noexcept {
   thread_local ReaderSlotClaim claim;
   return claim.index();
}

} // namespace

// Odd while its thread reads a shard without the lock.
struct alignas(64) DedupHashTable::ReaderSlot {
   std::atomic<U32> sequence{0};
};

// Cache-line aligned, so that threads working on neighbouring shards do not
// contend for one line.
//
// Multi-threaded form: every change of `entries` (and every release that may
// remove a handle) holds `mutex` and, while it runs, `writing`; it starts only
// once no thread reads without the lock. Lock-free readers that see `writing`
// take the lock instead.
struct alignas(64) DedupHashTable::Shard {
   std::mutex mutex;
   std::atomic<bool> writing{false};
   absl::flat_hash_set<Entry, EntryHash, EntryEq> entries;

   // Locks in the multi-threaded form only.
   std::unique_lock<std::mutex> lock(bool multiThreaded) {
      return multiThreaded ? std::unique_lock(mutex) : std::unique_lock<std::mutex>();
   }
};

// The exclusive phase of a change, in the multi-threaded form: the shard's
// lock is held already; lock-free readers are shut out until it ends.
class DedupHashTable::WriteGuard {
 public:
   WriteGuard(DedupHashTable const& table, Shard& shard) noexcept
       : shard_(table.multiThreaded_ ? &shard : nullptr) {
      if (!shard_) {
         return;
      }
      shard_->writing.store(true, std::memory_order_seq_cst);
      for (unsigned i = 0; i < readerSlotCount; ++i) {
         std::atomic<U32> const& sequence = table.readers_[i].sequence;
         U32 const seen = sequence.load(std::memory_order_seq_cst);
         if (seen & 1) {
            // A reader is inside: its lookup is short; any change of the
            // sequence means it has left.
            for (unsigned spins = 0; sequence.load(std::memory_order_acquire) == seen; ++spins) {
               if (spins < 1024) {
                  spinPause();
               } else {
                  std::this_thread::yield(); // the reader's thread was descheduled
               }
            }
         }
      }
   }
   ~WriteGuard() {
      if (shard_) {
         shard_->writing.store(false, std::memory_order_release);
      }
   }
   WriteGuard(WriteGuard const&) = delete;
   WriteGuard& operator=(WriteGuard const&) = delete;

 private:
   Shard* shard_;
};

// The memo of content hashes: slots of (key's upper half << 32 | hash),
// indexed by the key's lower bits; 0 is empty. In the multi-threaded form,
// arrays replaced by larger ones stay until the table goes, so that a reader
// never meets a freed array.
//
// Every lookup reads `current` and the array's header: each sits on a cache
// line of its own, so that no write near them (a reference count of an object
// allocated next to them) makes the line move between cores.
struct alignas(64) DedupHashTable::HashMemo {
   struct alignas(64) Array {
      explicit Array(std::size_t size) : mask(size - 1), slots(new std::atomic<U64>[size]) {
         for (std::size_t i = 0; i < size; ++i) {
            slots[i].store(0, std::memory_order_relaxed);
         }
      }
      std::size_t const mask;
      std::unique_ptr<std::atomic<U64>[]> slots;
   };
   static constexpr std::size_t initialSize = 64;

   std::atomic<Array*> current{nullptr};
   alignas(64) std::mutex growMutex;
   std::vector<std::unique_ptr<Array>> arrays; // under growMutex
};

DedupHashTableLifeTimeNotifiee::~DedupHashTableLifeTimeNotifiee() = default;

namespace {
std::atomic<U64> nextTableSerial{1};
} // namespace

DedupHashTable::DedupHashTable(bool multiThreaded)
    : multiThreaded_(multiThreaded),
      serial_(nextTableSerial.fetch_add(1, std::memory_order_relaxed)),
      shardShift_(multiThreaded ? 32 - multiThreadedShardBits : 32),
      shards_(std::make_unique<Shard[]>(std::size_t{1} << (32 - shardShift_))),
      readers_(multiThreaded ? std::make_unique<ReaderSlot[]>(readerSlotCount) : nullptr),
      hashMemo_(std::make_unique<HashMemo>()) {
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

namespace {

template <class Set>
DedupHandle::Ptr findAndReference(Set const& entries, ContentKey const& key) {
   auto it = entries.find(key);
   if (it == entries.end()) {
      return nullptr;
   }
   it->handle->referencesIncReturnRef();
   return DedupHandle::Ptr::adopt(it->handle);
}

} // namespace

DedupHandle::Ptr DedupHashTable::lookupByContent(DedupContentHandle const& content,
                                                 U32 hash) const {
   Shard& shard = shardFor(hash);
   ContentKey const key{hash, &content};
   if (!multiThreaded_) {
      return findAndReference(shard.entries, key);
   }
   unsigned const slot = readerSlotIndex();
   if (slot < readerSlotCount) {
      // Lock-free: announce the read, then make sure no change is under way
      // (a change that starts later waits for this read to end). The
      // reference is taken before leaving, so a release waiting to remove
      // the handle sees it.
      std::atomic<U32>& sequence = readers_[slot].sequence;
      sequence.fetch_add(1, std::memory_order_seq_cst);
      if (!shard.writing.load(std::memory_order_seq_cst)) {
         DedupHandle::Ptr found = findAndReference(shard.entries, key);
         sequence.fetch_add(1, std::memory_order_release);
         return found;
      }
      sequence.fetch_add(1, std::memory_order_release);
   }
   auto lock = shard.lock(true);
   return findAndReference(shard.entries, key);
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
   {
      WriteGuard exclusive(*this, shard);
      shard.entries.insert(Entry{h});
   }
   if (hashMemo_->current.load(std::memory_order_relaxed)) {
      // Shards fill evenly: one shard's size tells the table's.
      hashMemoRoomIs(shard.entries.size() << (32 - shardShift_));
   }
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
      WriteGuard exclusive(*this, shard);
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

std::optional<U32> DedupHashTable::rememberedHash(U64 key) const noexcept {
   HashMemo::Array const* array = hashMemo_->current.load(std::memory_order_acquire);
   if (!array) {
      return std::nullopt;
   }
   U64 const slot = array->slots[key & array->mask].load(std::memory_order_relaxed);
   if (slot == 0 || (slot >> 32) != (key >> 32)) {
      return std::nullopt;
   }
   return static_cast<U32>(slot);
}

void DedupHashTable::rememberHash(U64 key, U32 hash) const noexcept {
   HashMemo::Array* array = hashMemo_->current.load(std::memory_order_acquire);
   if (!array) {
      hashMemoRoomIs(HashMemo::initialSize);
      array = hashMemo_->current.load(std::memory_order_acquire);
      if (!array) {
         return; // no memory for it: hashes are computed every time
      }
   }
   array->slots[key & array->mask].store((key >> 32) << 32 | hash, std::memory_order_relaxed);
}

void DedupHashTable::hashMemoRoomIs(std::size_t handles) const noexcept {
   HashMemo::Array const* array = hashMemo_->current.load(std::memory_order_acquire);
   if (array && array->mask >= handles) {
      return;
   }
   std::lock_guard lock(hashMemo_->growMutex);
   array = hashMemo_->current.load(std::memory_order_relaxed);
   if (array && array->mask >= handles) {
      return;
   }
   try {
      auto& arrays = hashMemo_->arrays;
      arrays.push_back(std::make_unique<HashMemo::Array>(
         std::bit_ceil(std::max(handles + 1, HashMemo::initialSize))));
      hashMemo_->current.store(arrays.back().get(), std::memory_order_release);
      if (!multiThreaded_) {
         arrays.erase(arrays.begin(), arrays.end() - 1); // no reader can hold an older one
      }
   } catch (std::bad_alloc const&) {
      // The memo only saves time: without a larger one, more is recomputed.
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
