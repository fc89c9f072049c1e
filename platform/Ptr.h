/// @file
/// Reference-counted framework objects and the smart pointers that own them.
///
/// Every library object derives from PtrInterface and is owned only through
/// Ptr<T> (Ptr<T const> for immutable access). Counts are intrusive: a raw
/// pointer to a live object can be turned back into an owning Ptr.
///
/// Thread safety: counts are updated with plain loads and stores unless the
/// process-wide switch PtrInterface::threadSafeIs(true) is on, in which case
/// they are atomic read-modify-writes. Flip the switch at start-up, before a
/// second thread can touch any object; an object shared between threads while
/// the switch is off is a data race.
///
/// @code{.cpp}
///   Kiv::Ptr<Foo> foo = new Foo;        // count 1
///   Kiv::Ptr<Foo const> view = foo;     // count 2
///   foo = nullptr;                      // count 1; view keeps it alive
/// @endcode
#pragma once

#include "QorBgpCommunity/platform/Assert.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Types.h"

#include <atomic>
#include <compare>
#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

namespace Kiv {

/// Base of every reference-counted framework object: the intrusive count and the notification
/// switch.
class QORBGP_EXPORT PtrInterface {
 public:
   PtrInterface(PtrInterface const&) = delete;
   PtrInterface& operator=(PtrInterface const&) = delete;

   /// Process-wide switch between plain and atomic reference counts.
   ///@{
   static void threadSafeIs(bool on) noexcept { threadSafe_ = on; }
   static bool threadSafe() noexcept { return threadSafe_; }
   ///@}

   U32 references() const noexcept { return references_.load(std::memory_order_relaxed); }

   void referencesInc() const noexcept {
      if (threadSafe_) {
         references_.fetch_add(1, std::memory_order_relaxed);
      } else {
         references_.store(references_.load(std::memory_order_relaxed) + 1,
                           std::memory_order_relaxed);
      }
   }

   /// Takes `count` references at once, for an owner that holds one already
   /// and hands the others out later.
   void referencesIncBy(U32 count) const noexcept {
      if (threadSafe_) {
         references_.fetch_add(count, std::memory_order_relaxed);
      } else {
         references_.store(references_.load(std::memory_order_relaxed) + count,
                           std::memory_order_relaxed);
      }
   }
   /// Drops `count` references of an owner that keeps at least one more, so
   /// that none of them can be the last. Asserts "before > count".
   void referencesDecBy(U32 count) const noexcept {
      U32 before;
      if (threadSafe_) {
         before = references_.fetch_sub(count, std::memory_order_release);
      } else {
         before = references_.load(std::memory_order_relaxed);
         references_.store(before - count, std::memory_order_relaxed);
      }
      QOR_ASSERT(before > count);
   }
   /// Drops one reference; the last one calls zeroReferencesIs(), which
   /// destroys the object. An object whose release is hooked (an interned
   /// object, which must leave its table before only the table holds it)
   /// goes through referencesDecHooked() instead.
   void referencesDec() const noexcept {
      if (releaseHooked_.load(std::memory_order_relaxed)) [[unlikely]] {
         referencesDecHooked();
         return;
      }
      if (referencesDecReturnCount() == 0) {
         zeroReferencesIs();
      }
   }

   /// Per-object switch for change notification. Factories turn it on before
   /// handing an object out; observers are told of changes only while it is on.
   ///@{
   bool hasNotificationActive() const noexcept { return notificationActive_; }
   virtual void hasNotificationActiveIs(bool on) noexcept { notificationActive_ = on; }
   ///@}

 protected:
   PtrInterface() noexcept = default;
   virtual ~PtrInterface();

   /// Called once the count has reached zero. The default deletes the object.
   virtual void zeroReferencesIs() const noexcept;

   /// Release hook (see referencesDec). Switch it only while no other thread
   /// can release the object.
   void releaseHookedIs(bool hooked) const noexcept {
      releaseHooked_.store(hooked, std::memory_order_relaxed);
   }
   virtual void referencesDecHooked() const noexcept;

   /// Drops one reference and returns the count left; never destroys.
   U32 referencesDecReturnCount() const noexcept {
      U32 before;
      if (threadSafe_) {
         before = references_.fetch_sub(1, std::memory_order_acq_rel);
      } else {
         before = references_.load(std::memory_order_relaxed);
         references_.store(before - 1, std::memory_order_relaxed);
      }
      QOR_ASSERT(before > 0);
      return before - 1;
   }
   /// Drops one reference only if more than `floor` remain afterwards;
   /// returns whether it did. Lock-free.
   bool referencesDecAbove(U32 floor) const noexcept {
      U32 count = references_.load(std::memory_order_relaxed);
      while (count > floor + 1) {
         if (!threadSafe_) {
            references_.store(count - 1, std::memory_order_relaxed);
            return true;
         }
         if (references_.compare_exchange_weak(count, count - 1, std::memory_order_acq_rel,
                                               std::memory_order_relaxed)) {
            return true;
         }
      }
      return false;
   }

 private:
   static bool threadSafe_;
   mutable std::atomic<U32> references_{0};
   mutable std::atomic<bool> releaseHooked_{false};
   bool notificationActive_ = false;
};

/// Owning pointer to a PtrInterface-derived object; T may be const-qualified.
/// Compares, orders and hashes by address.
template <class T>
class Ptr {
 public:
   Ptr() noexcept = default;
   Ptr(std::nullptr_t) noexcept {}
   Ptr(T* p) noexcept : p_(p) { acquire(); }
   Ptr(Ptr const& o) noexcept : p_(o.p_) { acquire(); }
   Ptr(Ptr&& o) noexcept : p_(std::exchange(o.p_, nullptr)) {}
   template <class U>
      requires std::is_convertible_v<U*, T*>
   Ptr(Ptr<U> const& o) noexcept : p_(o.get()) { acquire(); }
   template <class U>
      requires std::is_convertible_v<U*, T*>
   Ptr(Ptr<U>&& o) noexcept : p_(o.release()) {}
   ~Ptr() { dispose(); }

   Ptr& operator=(Ptr o) noexcept {
      std::swap(p_, o.p_);
      return *this;
   }

   T* get() const noexcept { return p_; }
   T* operator->() const noexcept { return p_; }
   T& operator*() const noexcept { return *p_; }
   explicit operator bool() const noexcept { return p_ != nullptr; }

   /// Gives up ownership without dropping the reference.
   [[nodiscard]] T* release() noexcept { return std::exchange(p_, nullptr); }
   /// Takes over a reference that the caller already holds (the inverse of release).
   [[nodiscard]] static Ptr adopt(T* p) noexcept {
      Ptr owner;
      owner.p_ = p;
      return owner;
   }

   friend bool operator==(Ptr const& a, Ptr const& b) noexcept { return a.p_ == b.p_; }
   friend bool operator==(Ptr const& a, std::nullptr_t) noexcept { return a.p_ == nullptr; }
   friend auto operator<=>(Ptr const& a, Ptr const& b) noexcept {
      return std::compare_three_way{}(a.p_, b.p_);
   }

 private:
   void acquire() const noexcept {
      if (p_) {
         p_->referencesInc();
      }
   }
   void dispose() noexcept {
      if (p_) {
         p_->referencesDec();
      }
   }

   T* p_ = nullptr;
};

template <class T, class U>
Ptr<T> staticPtrCast(Ptr<U> const& p) noexcept {
   return Ptr<T>(static_cast<T*>(p.get()));
}

template <class T, class U>
Ptr<T> dynamicPtrCast(Ptr<U> const& p) noexcept {
   return Ptr<T>(dynamic_cast<T*>(p.get()));
}

/// Creates an object the way every factory hands one out: owned by a Ptr, with
/// notification already on.
template <class T, class... Args>
Ptr<T> newNotifying(Args&&... args) {
   Ptr<T> object = new T(std::forward<Args>(args)...);
   object->hasNotificationActiveIs(true);
   return object;
}

} // namespace Kiv

/// Hashes a Ptr by address, so that pointers can key unordered containers.
template <class T>
struct std::hash<Kiv::Ptr<T>> {
   std::size_t operator()(Kiv::Ptr<T> const& p) const noexcept { return std::hash<T*>{}(p.get()); }
};

/// Declares the pointer names every library class carries.
#define KIV_POINTER_TYPES(Class)                                                         \
   using Ptr = ::Kiv::Ptr<Class>;                                                        \
   using PtrConst = ::Kiv::Ptr<Class const>;                                             \
   using RawPtrConst = Class const*
