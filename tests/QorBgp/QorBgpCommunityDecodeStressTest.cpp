// Large and extended lists decoded from several threads while others let go
// of the last references to equal lists: the decoders' lookups by content
// (through remembered hashes and, for extended lists, resident
// classification lists) race with removals and with the growth of the hash
// memo. Built into the stress program, which also runs under ThreadSanitizer.
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>
#include <vector>

namespace Routing::Bgp {
namespace {

constexpr int threadCount = 4;
constexpr int rounds = 6000;
constexpr U32 listCount = 300; // enough that the hash memo grows while in use

// List i of `type`: i % 5 + 2 values derived from i, in descending order and
// with the first repeated (what a peer may send).
std::vector<U8> attribute(U8 type, U32 i) {
   std::vector<U8> value;
   U32 const count = i % 5 + 2;
   for (U32 k = count; k > 0; --k) {
      for (int copy = 0; copy < (k == count ? 2 : 1); ++copy) {
         U32 const words[] = {0x00020000u | (i & 0xFFFF), i * 131 + k, k};
         for (std::size_t w = 0; w < (type == largeCommunity ? 3 : 2); ++w) {
            for (int shift = 24; shift >= 0; shift -= 8) {
               value.push_back(static_cast<U8>(words[w] >> shift));
            }
         }
      }
   }
   return value;
}

TEST(CommunityDecodeStress, LookupsByContentRaceWithLastReleasesAndMemoGrowth) {
   QorBgpGlobals::multiThreadedIs(true);
   auto tables = communityTablesFactory();
   std::atomic<int> mismatches{0};
   std::vector<std::thread> threads;
   for (int t = 0; t < threadCount; ++t) {
      threads.emplace_back([&, t] {
         std::mt19937 random(200 + t);
         std::vector<AnyCommList> held(2 * listCount);
         for (int r = 0; r < rounds; ++r) {
            U32 const i = random() % listCount;
            U8 const type = (random() % 2) ? largeCommunity : extCommunity;
            std::size_t const slot = (type == largeCommunity ? 0 : listCount) + i;
            AnyCommList got = decodeAttribute(*tables, type, attribute(type, i)).list;
            std::size_t const comms =
               type == largeCommunity ? std::get<LargeCommList::PtrConst>(got)->comms()
                                      : std::get<ExtCommList::PtrConst>(got)->comms();
            if ((!std::holds_alternative<std::monostate>(held[slot]) && got != held[slot]) ||
                comms != i % 5 + 2) {
               ++mismatches;
            }
            held[slot] = (random() % 2) ? std::move(got) : AnyCommList{};
         }
      });
   }
   for (auto& thread : threads) {
      thread.join();
   }
   EXPECT_EQ(mismatches, 0);
   EXPECT_EQ(tables->largeCommListDedupTable()->dedupTable()->size(), 0u);
   EXPECT_EQ(tables->extCommListDedupTable()->dedupTable()->size(), 0u);
}

} // namespace
} // namespace Routing::Bgp
