// Standard lists looked up by value from several threads, through each
// thread's cache of them. Built into the stress program, which also runs
// under ThreadSanitizer.
#include "QorBgpCommunity/QorBgp/detail/CommListThreadCache.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>
#include <vector>

namespace Routing::Bgp {
namespace {

constexpr int threadCount = 4;
constexpr int rounds = 20000;

// Standard lists looked up by their values (the decoder's path, which reads
// the table without its lock) while other threads release the last
// references to equal lists.
TEST(CommListInterningStress, LookupsByValueRaceWithLastReleases) {
   QorBgpGlobals::multiThreadedIs(true);
   auto tables = communityTablesFactory();
   constexpr U32 listCount = 32;
   std::atomic<int> mismatches{0};
   std::vector<std::thread> threads;
   for (int t = 0; t < threadCount; ++t) {
      threads.emplace_back([&, t] {
         std::mt19937 random(100 + t);
         std::vector<CommList::PtrConst> held(listCount);
         for (int r = 0; r < rounds; ++r) {
            U32 const i = random() % listCount;
            // List i: communities 1:1 .. 1:(i+1), given in descending order.
            std::vector<U32> values;
            for (U32 k = i + 1; k > 0; --k) {
               values.push_back(0x00010000u | k);
            }
            CommList::PtrConst got =
               CommList::dedupValues(tables->commListDedupTable().get(), values);
            if ((held[i] && got != held[i]) || got->comms() != i + 1 || !got->comm(0x00010001u) ||
                !got->isDeduped()) {
               ++mismatches;
            }
            held[i] = (random() % 2) ? got : nullptr;
         }
      });
   }
   for (auto& thread : threads) {
      thread.join();
   }
   EXPECT_EQ(mismatches, 0);
   EXPECT_EQ(tables->commListDedupTable()->dedupTable()->size(), 0u);
}

// The per-thread cache of lists looked up by value keeps them interned after
// their paths let go, hands out counted references, and never answers for a
// table other than the one it looked the list up in.
TEST(CommListThreadCache, KeepsListsUntilReleasedAndTellsTablesApart) {
   QorBgpGlobals::multiThreadedIs(true);
   std::vector<U32> const values{0x00010002, 0x00010001};
   auto lookUp = [&](CommunityTables const& tables) {
      std::vector<U32> copy = values;
      return CommList::dedupValues(tables.commListDedupTable().get(), copy);
   };
   auto tables = communityTablesFactory();
   auto const& table = *tables->commListDedupTable()->dedupTable();
   {
      CommList::PtrConst first = lookUp(*tables);
      std::vector<CommList::PtrConst> paths;
      for (int i = 0; i < 100; ++i) { // past a batch of spare references
         paths.push_back(lookUp(*tables));
         EXPECT_EQ(paths.back(), first);
      }
      EXPECT_GE(first->references(), 1u + 101u); // the table's, and one per path
   }
   EXPECT_EQ(table.size(), 1u); // the cache still holds it
   CommList::releaseThreadCache();
   EXPECT_EQ(table.size(), 0u);

   // A list cached for a table that is gone is not the answer for a new one,
   // even at the same address.
   CommList::PtrConst old = lookUp(*tables);
   tables = nullptr;
   EXPECT_FALSE(old->isDeduped());
   auto fresh = communityTablesFactory();
   CommList::PtrConst now = lookUp(*fresh);
   EXPECT_NE(now, old);
   EXPECT_TRUE(now->isDeduped());
   CommList::releaseThreadCache();
}

} // namespace
} // namespace Routing::Bgp
