#include "QorBgpCommunity/QorBgp/QorBgpCommunityListMatchMemo.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityListFormat.h"
#include "QorBgpCommunity/platform/Errors.h"
#include "QorBgpCommunity/platform/Hash.h"

#include <bit>

namespace Routing::Bgp {

QOR_ASSERT_UNIT("QorBgpCommunityList");

RouteMapMatchMemo::RouteMapMatchMemo(Routing::RouteMap::PosixRegex::PtrConst regex,
                                     std::size_t slots)
    : regex_(std::move(regex)), mask_(std::bit_ceil(std::max<std::size_t>(slots, 1)) - 1),
      slots_(std::make_unique<std::atomic<U64>[]>(mask_ + 1)) {
   if (!regex_) {
      throw Kiv::NullArgumentError("RouteMapMatchMemo: null regex");
   }
}

RouteMapMatchMemo::~RouteMapMatchMemo() = default;

template <class List>
bool RouteMapMatchMemo::answer(List const& list) const {
   QOR_ASSERT(list.commVectorSorted());
   U64 const serial = list.serial();
   std::atomic<U64>& slot = slots_[Kiv::hashU64(serial, 0) & mask_];
   U64 const remembered = slot.load(std::memory_order_relaxed);
   if (remembered >> 1 == serial) {
      return (remembered & 1) != 0;
   }
   bool const matched = list.matchCommunitiesRegex(regex_.get());
   slot.store(serial << 1 | (matched ? 1 : 0), std::memory_order_relaxed);
   return matched;
}

bool RouteMapMatchMemo::matchCommunitiesRegex(CommList const& list) const { return answer(list); }

bool RouteMapMatchMemo::matchCommunitiesRegex(LargeCommList const& list) const {
   return answer(list);
}

bool RouteMapMatchMemo::matchCommunitiesRegex(ExtCommList const& list) const {
   return answer(list);
}

} // namespace Routing::Bgp
