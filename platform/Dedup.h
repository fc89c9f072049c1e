/// @file
/// Interning base: the handle that every interned object derives from.
///
/// An interned ("deduped") object is the one shared object for its content in
/// a DedupHashTable (DedupHashTable.h). The table holds references of its own
/// to every resident handle: one, plus one more when the table has a lifetime
/// notifiee. When a release leaves only those, the handle leaves the table
/// (the notifiee is told) and is destroyed. A handle that a lookup finds is
/// never one on its way out: lookups and the release that would empty a handle
/// both run under the table's lock for that handle.
///
/// States of a handle:
/// @code{.unparsed}
///   notDeduped  built, not (or no longer) in a table
///   deduped     the canonical object of a table for its content
///   local       built for local use; never to be interned
///   detached    built outside any table (e.g. restored from the snapshot
///               store); plain reference counting only
/// @endcode
/// Flags: beingDetached (on its way out of its table: taking a new reference
/// through a lookup is fatal), haveLifeTimeNotifier (the table's notifiee holds
/// a reference too), everDeduped, isDeduped.
#pragma once

#include "QorBgpCommunity/platform/Assert.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Ptr.h"
#include "QorBgpCommunity/platform/Types.h"

#include <atomic>

namespace Zup {

class DedupHashTable;

/// Base of the content records that a table looks objects up by (for example
/// an extended community's 64-bit word). It has no state and no ordering: each
/// derived content defines its own equality and order.
struct QORBGP_EXPORT DedupContentHandle {};

enum class DedupState : U8 {
   notDeduped = 0,
   deduped = 1,
   local = 2,
   detached = 4,
};

/// The state of a handle that no table has ever held.
constexpr DedupState dedupHandleStateNeverDeduped() noexcept { return DedupState::notDeduped; }

/// Base of every interned object: its content hash and comparison, and its state in an
/// interning table.
class QORBGP_EXPORT DedupHandle : public Kiv::PtrInterface {
 public:
   KIV_POINTER_TYPES(DedupHandle);

   DedupState dedupState() const noexcept { return state_.load(std::memory_order_relaxed); }
   /// Sets the state of a handle outside any table (detached, local); a handle
   /// in a table changes state only through its table.
   void dedupStateIs(DedupState state) noexcept;

   bool beingDetached() const noexcept { return flag(beingDetachedFlag); }
   bool haveLifeTimeNotifier() const noexcept { return flag(haveLifeTimeNotifierFlag); }
   /// Whether the handle is the canonical object of a table for its content.
   virtual bool isDeduped() const noexcept { return flag(isDedupedFlag); }
   /// Whether it has ever been the canonical object of a table.
   virtual bool everDeduped() const noexcept { return flag(everDedupedFlag); }
   /// Fatal "isDeduped()" when it is not.
   virtual void assertIsDeduped() const noexcept;

   /// Content hash; equal contents hash equally.
   virtual U32 hash() const noexcept = 0;
   /// Table equality: true when `other` holds the same content.
   virtual bool compare(DedupHandle const* other) const noexcept = 0;
   /// True when `content`, read as this handle's content type, equals its own.
   virtual bool compareByContent(DedupContentHandle const& content) const noexcept = 0;

   /// Takes a reference for a caller that found the handle without owning it
   /// (a table lookup). Fatal when the handle is being detached.
   void referencesIncReturnRef() const noexcept;

   /// References the table holds while the handle is resident: 1, or 2 with a
   /// lifetime notifiee.
   U32 tableReferences() const noexcept { return haveLifeTimeNotifier() ? 2 : 1; }

 protected:
   DedupHandle() noexcept = default;
   ~DedupHandle() override;

   /// A release that may leave only the table's references goes through the
   /// table's lock.
   void referencesDecHooked() const noexcept override;

 private:
   friend class DedupHashTable;

   static constexpr U8 beingDetachedFlag = 1;
   static constexpr U8 haveLifeTimeNotifierFlag = 2;
   static constexpr U8 everDedupedFlag = 4;
   static constexpr U8 isDedupedFlag = 8;

   bool flag(U8 f) const noexcept { return (flags_.load(std::memory_order_relaxed) & f) != 0; }

   /// Set while resident, by the table, under its lock; cleared on the way out.
   mutable DedupHashTable* table_ = nullptr;
   mutable std::atomic<DedupState> state_{DedupState::notDeduped};
   mutable std::atomic<U8> flags_{0};
};

/// A per-object lifetime notifier: an observer object attached to one interned
/// handle for as long as that handle is interned. It refers to the handle
/// without owning it (an owning reference would keep the handle interned).
class QORBGP_EXPORT DedupHandleLifeTimeNotifier : public Kiv::PtrInterface {
 public:
   KIV_POINTER_TYPES(DedupHandleLifeTimeNotifier);

   DedupHandle const* dedupHandle() const noexcept { return handle_; }

 protected:
   explicit DedupHandleLifeTimeNotifier(DedupHandle const* handle) noexcept : handle_(handle) {}
   ~DedupHandleLifeTimeNotifier() override;

 private:
   DedupHandle const* const handle_;
};

} // namespace Zup

namespace KivHoard {

/// The interning handle of objects that can also be published into the
/// snapshot store (the community lists): a Zup::DedupHandle whose content is
/// restored by the class's own dehoard.
///
/// Every such object gets a serial number unique in the process for its whole
/// run (a 63-bit counter never wraps in practice): an answer remembered for a
/// serial can never be mistaken for one about another object, even one that
/// later lives at the same address.
class QORBGP_EXPORT DedupHandle : public Zup::DedupHandle {
 public:
   KIV_POINTER_TYPES(DedupHandle);

   U64 serial() const noexcept { return serial_; }

 protected:
   DedupHandle() noexcept;
   ~DedupHandle() override;

 private:
   U64 const serial_;
};

} // namespace KivHoard
