#include "QorBgpCommunity/platform/DedupHashTable.h"

#include "QorBgpCommunity/platform/DumpContext.h"
#include "QorBgpCommunity/platform/Hash.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

struct Word : Zup::DedupContentHandle {
   explicit Word(U64 w) : word(w) {}
   U64 word;
};

// A minimal interned value that counts its destructions.
class Value final : public Zup::DedupHandle {
 public:
   KIV_POINTER_TYPES(Value);
   Value(U64 word, int* destroyed) : word_(word), destroyed_(destroyed) {}
   ~Value() override { ++*destroyed_; }
   U32 hash() const noexcept override { return Kiv::hashU64(word_, 0); }
   bool compare(DedupHandle const* other) const noexcept override {
      return static_cast<Value const*>(other)->word_ == word_;
   }
   bool compareByContent(Zup::DedupContentHandle const& c) const noexcept override {
      return static_cast<Word const&>(c).word == word_;
   }
   U64 word() const { return word_; }

 private:
   U64 word_;
   int* destroyed_;
};

// Records the notifiee's calls as words; insertion positive, removal negated.
class Recorder final : public Zup::DedupHashTableLifeTimeNotifiee {
 public:
   void handleInsert(Zup::DedupHandle::Ptr const& h) override {
      log.push_back(static_cast<long>(static_cast<Value const&>(*h).word()));
   }
   void handleRemove(Zup::DedupHandle* h) override {
      log.push_back(-static_cast<long>(static_cast<Value const&>(*h).word()));
   }
   void handleNotificationStop(Zup::DedupHashTable const&) override { stops++; }
   std::vector<long> log;
   int stops = 0;
};

Value::PtrConst intern(Zup::DedupHashTable& table, U64 word, int* destroyed) {
   if (auto found = table.lookupByContentAs<Value>(Word(word), Kiv::hashU64(word, 0))) {
      return found;
   }
   return table.dedupAs<Value>(Value::PtrConst(new Value(word, destroyed)));
}

TEST(DedupHashTable, OneObjectPerContentAndRemovalWithTheLastOutsideReference) {
   int destroyed = 0;
   for (bool notified : {false, true}) {
      SCOPED_TRACE(notified ? "with notifiee" : "without notifiee");
      auto table = Zup::dedupHashTableFactory(false);
      Kiv::Ptr<Recorder> recorder = new Recorder;
      if (notified) {
         table->lifeTimeNotifieeIs(recorder);
      }
      destroyed = 0;
      Value::PtrConst a = intern(*table, 7, &destroyed);
      Value::PtrConst b = intern(*table, 7, &destroyed);
      EXPECT_EQ(a, b);
      EXPECT_TRUE(a->isDeduped());
      EXPECT_EQ(a->references(), 2u + a->tableReferences());
      EXPECT_EQ(table->size(), 1u);

      // A losing candidate is released; the resident one is returned.
      Value::PtrConst loser(new Value(7, &destroyed));
      EXPECT_EQ(table->dedupAs<Value>(loser), a);
      loser = nullptr;
      EXPECT_EQ(destroyed, 1);

      a = nullptr;
      EXPECT_EQ(table->size(), 1u);
      Value const* old = b.get();
      b = nullptr;
      EXPECT_EQ(table->size(), 0u);
      EXPECT_EQ(destroyed, 2);
      // Interning again builds a fresh object.
      Value::PtrConst again = intern(*table, 7, &destroyed);
      EXPECT_TRUE(again->everDeduped());
      (void)old;
      again = nullptr;
      EXPECT_EQ(recorder->log, (notified ? std::vector<long>{7, -7, 7, -7} : std::vector<long>{}));
   }
}

TEST(DedupHashTable, TearingDownDetachesResidentHandles) {
   int destroyed = 0;
   auto table = Zup::dedupHashTableFactory(false);
   Kiv::Ptr<Recorder> recorder = new Recorder;
   table->lifeTimeNotifieeIs(recorder);
   Value::PtrConst kept = intern(*table, 1, &destroyed);
   Value::PtrConst dropped = intern(*table, 2, &destroyed);
   dropped = nullptr;
   table = nullptr;
   EXPECT_EQ(recorder->stops, 1);
   EXPECT_FALSE(kept->isDeduped());
   EXPECT_EQ(kept->references(), 1u);
   kept = nullptr;
   EXPECT_EQ(destroyed, 2);
}

TEST(DedupHashTableDeathTest, ADetachedHandleCannotBeInterned) {
   int destroyed = 0;
   auto table = Zup::dedupHashTableFactory(false);
   Value::PtrConst restored(new Value(3, &destroyed));
   const_cast<Value*>(restored.get())->dedupStateIs(Zup::DedupState::detached);
   EXPECT_DEATH(table->dedupAs<Value>(restored), "assertion failed: handle && handle->dedupState");
   EXPECT_DEATH(restored->assertIsDeduped(), "assertion failed: isDeduped\\(\\)");
}

} // namespace
