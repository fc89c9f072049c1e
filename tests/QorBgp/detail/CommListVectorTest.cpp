#include "QorBgpCommunity/QorBgp/detail/CommListVector.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityListDedupTable.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListStandard.h"

#include <gtest/gtest.h>

namespace Routing::Bgp {
namespace {

// The hash memo may remember a wrong hash for a content (two contents sharing
// a key): the lookup misses, and the list must still be the resident one.
TEST(CommListVector, AWrongRememberedHashCostsALookupNeverASecondList) {
   auto table = commListDedupTableFactory();
   Zup::DedupHashTable const& dedupTable = *table->dedupTable();
   U32 values[] = {3, 1, 2, 2};
   CommList::PtrConst const first = CommList::dedupValues(table.get(), values);
   std::span<U32 const> const sorted(values, 3);
   ASSERT_EQ(dedupTable.rememberedHash(detail::valuesKey(sorted)), first->hash());

   dedupTable.rememberHash(detail::valuesKey(sorted), first->hash() ^ 1);
   U32 again[] = {1, 2, 3};
   EXPECT_EQ(CommList::dedupValues(table.get(), again), first);
   EXPECT_EQ(dedupTable.size(), 1u);
}

} // namespace
} // namespace Routing::Bgp
