#include "QorBgpCommunity/platform/Notifier.h"

#include <algorithm>

namespace Kiv {

Notifiee::~Notifiee() {
   if (notifier_) {
      notifier_->detach(this);
   }
}

void Notifiee::notifierIs(Notifier const* notifier) {
   if (notifier == notifier_) {
      return;
   }
   if (notifier_) {
      notifier_->detach(this);
   }
   notifier_ = notifier;
   if (notifier_) {
      notifier_->attach(this);
   }
}

std::size_t Notifier::notifieeCount() const noexcept {
   return static_cast<std::size_t>(
      std::count_if(notifiees_.begin(), notifiees_.end(), [](Notifiee* n) { return n; }));
}

Notifier::~Notifier() {
   std::vector<Notifiee*> notifiees;
   notifiees.swap(notifiees_);
   for (Notifiee* n : notifiees) {
      if (n) {
         n->notifier_ = nullptr;
         n->onNotifierDeleted();
      }
   }
}

Notifier::Round::~Round() {
   if (--notifier.rounds_ == 0) {
      std::erase(notifier.notifiees_, nullptr);
   }
}

void Notifier::attach(Notifiee* n) const { notifiees_.push_back(n); }

void Notifier::detach(Notifiee* n) const noexcept {
   auto it = std::find(notifiees_.begin(), notifiees_.end(), n);
   if (it == notifiees_.end()) {
      return;
   }
   if (rounds_ > 0) {
      *it = nullptr;
   } else {
      notifiees_.erase(it);
   }
}

} // namespace Kiv
