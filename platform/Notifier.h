/// @file
/// Change notification between framework objects.
///
/// A Notifier is an object whose attributes others may observe; a Notifiee
/// (a "reactor") observes one notifier at a time and is told synchronously, on
/// the thread that makes the change, about every change while both the
/// notifier's notification switch (PtrInterface::hasNotificationActive) and the
/// notifiee's own switch are on. A notifier class declares its own notifiee
/// base with one virtual callback per observable attribute; the notifying
/// collections (NotifyingCollections.h) call those callbacks.
///
/// Lifetime: a notifiee stops observing when it is destroyed or re-pointed
/// (notifierIs). When a notifier dies first, each of its notifiees is detached
/// and told through onNotifierDeleted().
///
/// WARNING: callbacks may add and remove notifiees of the same notifier (a new
/// one is not told of the change in flight, a removed one is told no more), but
/// must not destroy the notifier itself. Not thread-safe: a notifier and its
/// notifiees belong to one thread.
#pragma once

#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Ptr.h"

#include <cstddef>
#include <vector>

namespace Kiv {

class Notifier;

/// Observes one Notifier at a time; notifier classes derive their notifiee bases from it.
class QORBGP_EXPORT Notifiee {
 public:
   Notifiee(Notifiee const&) = delete;
   Notifiee& operator=(Notifiee const&) = delete;
   virtual ~Notifiee();

   Notifier const* notifier() const noexcept { return notifier_; }
   /// Observes `notifier` (null: nothing) instead of the current one.
   void notifierIs(Notifier const* notifier);

   bool notificationActive() const noexcept { return active_; }
   void notificationActiveIs(bool on) noexcept { active_ = on; }

   /// The observed notifier is being destroyed; the notifiee is already detached.
   virtual void onNotifierDeleted() noexcept {}

 protected:
   Notifiee() noexcept = default;

 private:
   friend class Notifier;
   Notifier const* notifier_ = nullptr;
   bool active_ = true;
};

/// An object whose changes its notifiees are told about.
class QORBGP_EXPORT Notifier : public PtrInterface {
 public:
   std::size_t notifieeCount() const noexcept;

   /// Calls f(static_cast<N&>(notifiee)) for every active notifiee, in the
   /// order they started observing, when this object's notification is on.
   /// N is the notifier's own notifiee base, which all its notifiees derive from.
   template <class N, class F>
   void notify(F&& f) const {
      if (!hasNotificationActive() || notifiees_.empty()) {
         return;
      }
      Round round(*this);
      std::size_t const count = notifiees_.size(); // later arrivals miss this change
      for (std::size_t i = 0; i < count; ++i) {
         Notifiee* n = notifiees_[i];
         if (n && n->notificationActive()) {
            f(static_cast<N&>(*n));
         }
      }
   }

 protected:
   Notifier() noexcept = default;
   ~Notifier() override;

 private:
   friend class Notifiee;

   /// Marks a notification round; removals during a round leave holes that
   /// are compacted when the outermost round ends.
   struct QORBGP_EXPORT Round {
      explicit Round(Notifier const& n) noexcept : notifier(n) { ++n.rounds_; }
      ~Round();
      Notifier const& notifier;
   };

   void attach(Notifiee* n) const;
   void detach(Notifiee* n) const noexcept;

   mutable std::vector<Notifiee*> notifiees_; ///< null entries only during a round
   mutable unsigned rounds_ = 0;
};

} // namespace Kiv
