#include "QorBgpCommunity/platform/Notifier.h"

#include "QorBgpCommunity/platform/NotifyingCollections.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class Registry : public Kiv::Notifier {
 public:
   class Notifiee : public Kiv::Notifiee {
    public:
      virtual void onName(std::string const&) {}
      virtual void onSlot(int const&) {}
   };
   Kiv::NotifyingKeySet<std::string, Notifiee, &Notifiee::onName> names{*this};
   Kiv::NotifyingOrderedMap<int, std::string, Notifiee, &Notifiee::onSlot> slots{*this};
};

// Records every callback as "<tag>:<key>".
class Recorder : public Registry::Notifiee {
 public:
   Recorder(Registry const* registry, std::vector<std::string>& log, std::string tag)
       : log_(log), tag_(std::move(tag)) {
      notifierIs(registry);
   }
   void onName(std::string const& name) override { log_.push_back(tag_ + ":" + name); }
   void onSlot(int const& slot) override { log_.push_back(tag_ + ":" + std::to_string(slot)); }
   void onNotifierDeleted() noexcept override { log_.push_back(tag_ + ":deleted"); }

 private:
   std::vector<std::string>& log_;
   std::string tag_;
};

Kiv::Ptr<Registry> newRegistry() {
   Kiv::Ptr<Registry> registry = new Registry;
   registry->hasNotificationActiveIs(true);
   return registry;
}

TEST(NotifyingCollections, OnlyRealChangesNotify) {
   auto registry = newRegistry();
   std::vector<std::string> log;
   Recorder recorder(registry.get(), log, "r");
   registry->names.insert("a");
   registry->names.insert("a");
   EXPECT_FALSE(registry->names.erase("b"));
   EXPECT_TRUE(registry->names.erase("a"));
   registry->slots.set(2, "x");
   registry->slots.set(2, "x"); // same value: no change
   registry->slots.set(2, "y");
   registry->slots.set(1, "z");
   EXPECT_EQ(registry->slots.begin()->first, 1); // ordered
   registry->slots.clear();                     // one notification per entry
   EXPECT_EQ(log, (std::vector<std::string>{"r:a", "r:a", "r:2", "r:2", "r:1", "r:1", "r:2"}));
}

TEST(NotifyingCollections, SwitchesOnBothSidesSilenceNotification) {
   auto registry = newRegistry();
   std::vector<std::string> log;
   Recorder quiet(registry.get(), log, "quiet");
   Recorder loud(registry.get(), log, "loud");
   quiet.notificationActiveIs(false);
   registry->names.insert("a");
   registry->hasNotificationActiveIs(false);
   registry->names.insert("b");
   EXPECT_EQ(log, (std::vector<std::string>{"loud:a"}));
}

// Removes another notifiee, or itself, while being notified.
class Remover : public Registry::Notifiee {
 public:
   Remover(Registry const* registry, Kiv::Notifiee* victim) : victim_(victim) {
      notifierIs(registry);
   }
   void onName(std::string const&) override {
      ++calls;
      victim_->notifierIs(nullptr);
   }
   int calls = 0;

 private:
   Kiv::Notifiee* victim_;
};

TEST(Notifier, NotifieesMayLeaveDuringANotification) {
   auto registry = newRegistry();
   std::vector<std::string> log;
   Recorder before(registry.get(), log, "before");
   Recorder after(nullptr, log, "after");
   Remover remover(registry.get(), &after);
   after.notifierIs(registry.get());
   Remover self(registry.get(), &self);
   registry->names.insert("a");
   registry->names.insert("b");
   // "after" was removed before its turn; "self" left during its own call.
   EXPECT_EQ(log, (std::vector<std::string>{"before:a", "before:b"}));
   EXPECT_EQ(self.calls, 1);
   EXPECT_EQ(registry->notifieeCount(), 2u);
}

TEST(Notifier, ANotifierThatDiesDetachesItsNotifiees) {
   std::vector<std::string> log;
   auto registry = newRegistry();
   Recorder recorder(registry.get(), log, "r");
   registry = nullptr;
   EXPECT_EQ(recorder.notifier(), nullptr);
   EXPECT_EQ(log, (std::vector<std::string>{"r:deleted"}));
}

} // namespace
