/// @file
/// DedupHashTable: the content-keyed set of live interned handles.
///
/// @code{.cpp}
///   auto table = Zup::dedupHashTableFactory(multiThreaded);
///   if (auto found = table->lookupByContent(content, hash)) { ... }   // a new reference
///   Foo::Ptr canonical = table->dedup(candidate);    // candidate, or the resident equal one
/// @endcode
///
/// Single-threaded form: no locking at all. Multi-threaded form: the set is
/// split into shards by hash, each with its own lock, so that threads interning
/// different contents rarely meet, and lookups by content take no lock at all
/// (each thread announces its reads in a slot of its own; a change waits for
/// the reads under way): threads that look up the same hot contents share only
/// the found handles' reference counts. It requires
/// Kiv::PtrInterface::threadSafe() (atomic counts). In both forms:
/// @code{.unparsed}
///   - lookupByContent and dedup return a handle with a reference taken for the
///     caller, never one on its way out;
///   - two threads that dedup equal new contents end with one resident handle;
///     the loser gets the winner's and its own is released with its last
///     reference;
///   - a release that leaves only the table's references removes the handle,
///     under the same lock, and destroys it.
/// @endcode
///
/// Lifetime notifiee: told of every insertion and removal, synchronously on
/// the thread that interns or releases, while that handle's shard is locked, so
/// the insertion and removal of one content are never reordered.
/// WARNING: a notifiee callback must not intern into or release handles of the
/// same table (that shard's lock is held).
///
/// Destroying the table (or stopping its notifiee) must not race with other
/// use: remaining handles are detached from it and keep living on their own.
#pragma once

#include "QorBgpCommunity/platform/Dedup.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Ptr.h"

#include <cstddef>
#include <memory>
#include <optional>

namespace Kiv {
class DumpContext;
}

namespace Zup {

/// Told of every handle that enters or leaves a DedupHashTable.
class QORBGP_EXPORT DedupHashTableLifeTimeNotifiee : public Kiv::PtrInterface {
 public:
   KIV_POINTER_TYPES(DedupHashTableLifeTimeNotifiee);

   virtual void handleInsert(DedupHandle::Ptr const& handle) = 0;
   virtual void handleRemove(DedupHandle* handle) = 0;
   /// The table stops reporting (the notifiee is replaced or the table is
   /// being torn down).
   virtual void handleNotificationStop(DedupHashTable const& table) = 0;

 protected:
   ~DedupHashTableLifeTimeNotifiee() override;
};

/// The content-keyed set of live interned handles, single- or multi-threaded.
class QORBGP_EXPORT DedupHashTable : public Kiv::PtrInterface {
 public:
   KIV_POINTER_TYPES(DedupHashTable);

   explicit DedupHashTable(bool multiThreaded);
   ~DedupHashTable() override;
   std::string_view fwkType() const noexcept { return "Zup::DedupHashTable"; }

   bool multiThreaded() const noexcept { return multiThreaded_; }
   /// Unique among the tables of the process for its whole run (never reused,
   /// unlike an address): what caches outside the table key it by.
   U64 serial() const noexcept { return serial_; }

   /// The resident handle whose content equals `content` (which hashes to
   /// `hash`), with a reference taken for the caller; null when none.
   DedupHandle::Ptr lookupByContent(DedupContentHandle const& content, U32 hash) const;
   /// The resident handle equal to `handle` (by hash() and compare()) with a
   /// reference for the caller, or `handle` itself after inserting it. The
   /// handle must not be in a table or detached.
   DedupHandle::Ptr dedup(DedupHandle::Ptr const& handle);

   /// Content hashes remembered by a cheaper key. A caller whose hash() is
   /// slow to compute (a byte-at-a-time hash over a whole list) may key the
   /// content by a fast 64-bit hash of its own (a word-at-a-time hash of the
   /// same values), remember the content's hash under it and find it again
   /// on the next lookup of that content. A key that two contents share can
   /// only give one of them the other's hash: its lookupByContent then
   /// misses, and dedup, which hashes the handle itself, still finds the
   /// resident equal handle. A wrong answer costs time, never identity.
   ///
   /// The memo is one 8-byte slot per key, direct-mapped, allocated on first
   /// use and grown with the table to between one and two slots per resident
   /// handle; safe from any thread.
   std::optional<U32> rememberedHash(U64 key) const noexcept;
   void rememberHash(U64 key, U32 hash) const noexcept;

   /// Installs (or, with null, removes) the lifetime notifiee; a previous one
   /// is told handleNotificationStop. Not thread-safe: install it before the
   /// table is shared. Only handles inserted afterwards are reported.
   void lifeTimeNotifieeIs(DedupHashTableLifeTimeNotifiee::Ptr const& notifiee);
   DedupHashTableLifeTimeNotifiee::Ptr const& lifeTimeNotifiee() const noexcept {
      return notifiee_;
   }

   /// Resident handles (a snapshot in the multi-threaded form).
   std::size_t size() const noexcept;
   /// "<indent>DedupHashTable (<form>): <size> entries".
   void dumpState(Kiv::DumpContext& context, unsigned indent) const;

   /// Typed fronts: the same operations returning the derived type.
   template <class T>
   Kiv::Ptr<T const> lookupByContentAs(DedupContentHandle const& content, U32 hash) const {
      return Kiv::Ptr<T const>::adopt(
         static_cast<T const*>(lookupByContent(content, hash).release()));
   }
   template <class T>
   Kiv::Ptr<T const> dedupAs(Kiv::Ptr<T const> const& handle) {
      DedupHandle::Ptr candidate(const_cast<T*>(handle.get()));
      return Kiv::Ptr<T const>::adopt(static_cast<T const*>(dedup(candidate).release()));
   }

 private:
   friend class DedupHandle;
   struct Shard;
   struct ReaderSlot;
   class WriteGuard;
   struct HashMemo;

   Shard& shardFor(U32 hash) const noexcept;
   /// The release of `handle` that may leave only the table's references.
   void release(DedupHandle const* handle) const noexcept;
   /// Gives the hash memo room for about `handles` resident handles.
   void hashMemoRoomIs(std::size_t handles) const noexcept;

   bool const multiThreaded_;
   U64 const serial_;
   unsigned const shardShift_; ///< shard index = hash >> shardShift_
   std::unique_ptr<Shard[]> shards_;
   std::unique_ptr<ReaderSlot[]> readers_; ///< multi-threaded form only
   DedupHashTableLifeTimeNotifiee::Ptr notifiee_;
   std::unique_ptr<HashMemo> hashMemo_;
};

/// A new table with notification enabled.
QORBGP_EXPORT DedupHashTable::Ptr dedupHashTableFactory(bool multiThreaded);

} // namespace Zup
