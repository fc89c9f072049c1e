// The tables the tests of the 8-octet extended list and its neighbours
// intern into, and a list published from content words.
#pragma once

#include "QorBgpCommunity/QorBgp/Parse/ExtComm.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDedupTable.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListExtDedupTable.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace Routing::Bgp {

class ExtCommListTables : public testing::Test {
 protected:
   BgpParseExtCommContainerSm::Ptr recognition = bgpParseExtCommContainerSmFactory();
   ExtCommDedupTable::Ptr values = extCommDedupTableFactory(recognition->extCommParser());
   ExtCommListDedupTable::Ptr lists = extCommListDedupTableFactory();

   ExtCommList::PtrConst publish(std::initializer_list<U64> words) {
      ExtCommList::Ptr list = extCommListFactory();
      for (U64 w : words) {
         list->commIs(ExtComm::dedupContent(values.get(), ExtCommContent(w)));
      }
      return list->dedup(lists.get());
   }
};

} // namespace Routing::Bgp
