// What the memo tests of the stress program share: small published standard
// lists whose values overlap often, and two threads asking a memo about them
// in different orders at once.
#pragma once

#include "QorBgpCommunity/QorBgp/QorBgpCommunityListDedupTable.h"

#include <functional>
#include <random>
#include <thread>
#include <vector>

namespace Routing::Bgp::test {

// `count` lists of one to four values from the 16 communities 0:0 .. 3:3.
inline std::vector<CommList::PtrConst> smallLists(CommListDedupTable const& table, unsigned seed,
                                                  int count = 300) {
   std::mt19937 random(seed);
   std::vector<CommList::PtrConst> lists;
   for (int i = 0; i < count; ++i) {
      std::vector<U32> values(1 + random() % 4);
      for (U32& v : values) {
         v = (random() % 4) << 16 | random() % 4;
      }
      lists.push_back(CommList::dedupValues(&table, values));
   }
   return lists;
}

// Two threads, each `rounds` times over every index below `count` in an order
// of its own, counting the indexes for which `wrong(index)` holds.
inline int mismatchesOfTwoThreads(std::size_t count, std::function<bool(std::size_t)> const& wrong,
                                  int rounds = 30) {
   int mismatches[2] = {0, 0};
   std::vector<std::thread> threads;
   for (int t = 0; t < 2; ++t) {
      threads.emplace_back([&, t] {
         for (int round = 0; round < rounds; ++round) {
            for (std::size_t i = 0; i < count; ++i) {
               mismatches[t] += wrong((i * static_cast<std::size_t>(t + 1) + round) % count);
            }
         }
      });
   }
   for (auto& thread : threads) {
      thread.join();
   }
   return mismatches[0] + mismatches[1];
}

} // namespace Routing::Bgp::test
