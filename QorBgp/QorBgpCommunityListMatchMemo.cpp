#include "QorBgpCommunity/QorBgp/QorBgpCommunityListMatchMemo.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityListFormat.h"
#include "QorBgpCommunity/QorBgp/detail/SerialAnswerSlots.h"
#include "QorBgpCommunity/platform/Errors.h"

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
   return detail::rememberedAnswer(slots_.get(), mask_, list.serial(),
                                   [&] { return list.matchCommunitiesRegex(regex_.get()); });
}

bool RouteMapMatchMemo::matchCommunitiesRegex(CommList const& list) const { return answer(list); }

bool RouteMapMatchMemo::matchCommunitiesRegex(LargeCommList const& list) const {
   return answer(list);
}

bool RouteMapMatchMemo::matchCommunitiesRegex(ExtCommList const& list) const {
   return answer(list);
}

} // namespace Routing::Bgp
