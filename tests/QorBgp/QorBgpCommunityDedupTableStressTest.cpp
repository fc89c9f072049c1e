// Interning extended communities from several threads in the multi-threaded
// form. Built into the stress program, which also runs under ThreadSanitizer.
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDedupTable.h"

#include "QorBgpCommunity/QorBgp/Parse/ExtComm.h"

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>
#include <vector>

namespace Routing::Bgp {
namespace {

constexpr int threadCount = 4;
constexpr int rounds = 20000;
constexpr U64 contentCount = 64;

// Contents 0..63: even ones route targets (65000:n), odd ones route origins.
U64 word(U64 i) { return ((i % 2 == 0) ? 0x0002fde800000000ull : 0x0003fde800000000ull) | i; }

TEST(ExtCommInterningStress, ThreadsAgreeOnOneObjectPerContent) {
   QorBgpGlobals::multiThreadedIs(true);
   auto recognition = bgpParseExtCommContainerSmFactory();
   auto table = extCommDedupTableFactory(recognition->extCommParser());
   ASSERT_TRUE(table->dedupTable()->multiThreaded());

   // Anchors keep a quarter of the contents alive throughout: every thread
   // must get exactly these objects for them.
   std::vector<ExtComm::PtrConst> anchors(contentCount);
   for (U64 i = 0; i < contentCount; i += 4) {
      anchors[i] = ExtComm::dedupContent(table.get(), ExtCommContent(word(i)));
   }

   std::atomic<int> mismatches{0};
   std::vector<std::thread> threads;
   for (int t = 0; t < threadCount; ++t) {
      threads.emplace_back([&, t] {
         std::mt19937 random(t);
         std::vector<ExtComm::PtrConst> held(contentCount);
         for (int r = 0; r < rounds; ++r) {
            U64 i = random() % contentCount;
            ExtComm::PtrConst got = ExtComm::dedupContent(table.get(), ExtCommContent(word(i)));
            if ((anchors[i] && got != anchors[i]) || (held[i] && got != held[i]) ||
                got->getContent().word() != word(i) || !got->isDeduped()) {
               ++mismatches;
            }
            // Hold or drop at random, so releases race with lookups.
            held[i] = (random() % 2) ? got : nullptr;
         }
      });
   }
   for (auto& thread : threads) {
      thread.join();
   }
   EXPECT_EQ(mismatches, 0);

   // Only the anchors are left, and the route-target list names exactly the
   // anchored route targets.
   EXPECT_EQ(table->dedupTable()->size(), contentCount / 4);
   auto const& list = *table->routeTargetList();
   EXPECT_EQ(list.rtCount(), contentCount / 4);
   for (U64 i = 0; i < contentCount; ++i) {
      EXPECT_EQ(list.rtHas(RouteTarget(word(i))), i % 4 == 0) << i;
   }
   anchors.clear();
   EXPECT_EQ(table->dedupTable()->size(), 0u);
   EXPECT_EQ(list.rtCount(), 0u);
}

} // namespace
} // namespace Routing::Bgp
