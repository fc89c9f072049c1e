#include "QorBgpCommunity/platform/Ptr.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

// Lifecycle counter: tests see "destroyed exactly once".
class Counted : public Kiv::PtrInterface {
 public:
   KIV_POINTER_TYPES(Counted);
   explicit Counted(std::atomic<int>* destroyed) : destroyed_(destroyed) {}
   ~Counted() override { ++*destroyed_; }

 private:
   std::atomic<int>* destroyed_;
};

class Derived : public Counted {
 public:
   KIV_POINTER_TYPES(Derived);
   using Counted::Counted;
};

TEST(Ptr, CountFollowsCopyMoveConvertAndReset) {
   std::atomic<int> destroyed{0};
   auto* raw = new Derived(&destroyed);
   {
      Derived::Ptr derived = raw;
      Counted::Ptr base = derived;
      Counted::PtrConst view = base;
      Counted::Ptr moved = std::move(base);
      Counted::PtrConst movedConst = std::move(moved);
      EXPECT_EQ(base, nullptr);
      EXPECT_EQ(moved, nullptr);
      EXPECT_EQ(raw->references(), 3u);
      derived = derived;
      view = movedConst;
      EXPECT_TRUE(view == derived);
      EXPECT_EQ(raw->references(), 3u);

      // A raw pointer to a live object becomes an owning one again.
      Counted::Ptr again = static_cast<Counted*>(raw);
      Counted* released = again.release();
      EXPECT_EQ(raw->references(), 4u);
      released->referencesDec();

      // Batches: taken at once, given back at once while one stays.
      raw->referencesIncBy(5);
      EXPECT_EQ(raw->references(), 8u);
      raw->referencesDecBy(5);
      EXPECT_EQ(raw->references(), 3u);

      derived = nullptr;
      view = nullptr;
      EXPECT_EQ(raw->references(), 1u);
      EXPECT_EQ(destroyed, 0);
   }
   EXPECT_EQ(destroyed, 1);
}

TEST(Ptr, AtomicCountsSurviveConcurrentCopiesAndDestroyOnce) {
   bool const wasThreadSafe = Kiv::PtrInterface::threadSafe();
   Kiv::PtrInterface::threadSafeIs(true);
   constexpr unsigned threadCount = 4;
   for (bool mainKeepsIt : {true, false}) {
      SCOPED_TRACE(mainKeepsIt ? "main drops last" : "a worker drops last");
      std::atomic<int> destroyed{0};
      std::atomic<bool> go{false};
      Counted::Ptr shared = new Counted(&destroyed);
      std::vector<std::thread> threads;
      for (unsigned t = 0; t < threadCount; ++t) {
         threads.emplace_back([mine = shared, &go]() mutable {
            while (!go) {
               std::this_thread::yield();
            }
            for (int i = 0; i < 20000; ++i) {
               Counted::Ptr copy = mine;
               Counted::PtrConst view = std::move(copy);
            }
            mine = nullptr;
         });
      }
      EXPECT_EQ(shared->references(), threadCount + 1);
      if (!mainKeepsIt) {
         shared = nullptr;
      }
      go = true;
      for (auto& thread : threads) {
         thread.join();
      }
      if (mainKeepsIt) {
         EXPECT_EQ(shared->references(), 1u);
         EXPECT_EQ(destroyed, 0);
         shared = nullptr;
      }
      EXPECT_EQ(destroyed, 1);
   }
   Kiv::PtrInterface::threadSafeIs(wasThreadSafe);
}

TEST(PtrDeathTest, ReleasingAnUnreferencedObjectAborts) {
   std::atomic<int> destroyed{0};
   Counted object(&destroyed);
   for (bool atomic : {false, true}) {
      EXPECT_DEATH(
          {
             Kiv::PtrInterface::threadSafeIs(atomic);
             object.referencesDec();
          },
          "assertion failed: before > 0");
   }
   // A batch that would include the last reference.
   Counted::Ptr held = new Counted(&destroyed);
   EXPECT_DEATH(held->referencesDecBy(1), "assertion failed: before > count");
}

} // namespace
