#include "QorBgpCommunity/QorBgp/CommunitySetMatchMemo.h"

#include "QorBgpCommunity/QorBgp/detail/SerialAnswerSlots.h"
#include "QorBgpCommunity/platform/Errors.h"

#include <algorithm>
#include <bit>

namespace Routing::Bgp {

template <class Matcher>
CommunitySetMatchMemo<Matcher>::CommunitySetMatchMemo(
   typename CommunitySetMatcher<Matcher>::PtrConst matcher, CommunityMatchContext context,
   std::size_t slots)
    : matcher_(std::move(matcher)), context_(context),
      mask_(std::bit_ceil(std::max<std::size_t>(slots, 1)) - 1),
      slots_(std::make_unique<std::atomic<U64>[]>(mask_ + 1)) {
   if (!matcher_) {
      throw Kiv::NullArgumentError("CommunitySetMatchMemo: null matcher");
   }
}

template <class Matcher>
CommunitySetMatchMemo<Matcher>::~CommunitySetMatchMemo() = default;

template <class Matcher>
bool CommunitySetMatchMemo<Matcher>::matches(List const& list) const {
   return detail::rememberedAnswer(slots_.get(), mask_, list.serial(),
                                   [&] { return matcher_->matches(list, context_); });
}

template class CommunitySetMatchMemo<StandardCommunityMatcher>;
template class CommunitySetMatchMemo<LargeCommunityMatcher>;
template class CommunitySetMatchMemo<ExtCommunityMatcher>;
template class CommunitySetMatchMemo<ExtCommIp6Matcher>;

} // namespace Routing::Bgp
