#include "QorBgpCommunity/QorBgp/detail/CommListVector.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityListDedupTable.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListLarge.h"

#include <gtest/gtest.h>

namespace Routing::Bgp {
namespace {

// The hash memo may remember a wrong hash for a content (two contents sharing
// a key): the lookup misses, and the list must still be the resident one.
TEST(CommListVector, AWrongRememberedHashCostsALookupNeverASecondList) {
   auto table = largeCommListDedupTableFactory();
   Zup::DedupHashTable const& dedupTable = *table->dedupTable();
   Acl::CommunityValue values[] = {{3, 0, 0}, {1, 0, 0}, {2, 0, 0}, {2, 0, 0}};
   LargeCommList::PtrConst const first = LargeCommList::dedupValues(table.get(), values);
   std::span<Acl::CommunityValue const> const sorted(values, 3);
   ASSERT_EQ(dedupTable.rememberedHash(detail::valuesKey(sorted)), first->hash());

   dedupTable.rememberHash(detail::valuesKey(sorted), first->hash() ^ 1);
   Acl::CommunityValue again[] = {{1, 0, 0}, {2, 0, 0}, {3, 0, 0}};
   EXPECT_EQ(LargeCommList::dedupValues(table.get(), again), first);
   EXPECT_EQ(dedupTable.size(), 1u);
}

} // namespace
} // namespace Routing::Bgp
