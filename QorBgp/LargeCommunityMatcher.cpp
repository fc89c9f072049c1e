#include "QorBgpCommunity/QorBgp/LargeCommunityMatcher.h"

#include "QorBgpCommunity/QorBgp/detail/MatcherSupport.h"
#include "QorBgpCommunity/platform/DynamicBuffer.h"

namespace Routing::Bgp {

using Routing::RouteMap::PosixRegex;

LargeCommunityMatcher::LargeCommunityMatcher(CommunityFieldPattern global,
                                             CommunityFieldPattern local1,
                                             CommunityFieldPattern local2) noexcept
    : global_(global), local1_(local1), local2_(local2) {}

LargeCommunityMatcher::LargeCommunityMatcher(PosixRegex::PtrConst regex)
    : global_(CommunityFieldPattern::any()), local1_(CommunityFieldPattern::any()),
      local2_(CommunityFieldPattern::any()),
      regex_(detail::requiredRegex(std::move(regex), "LargeCommunityMatcher")) {}

LargeCommunityMatcher::~LargeCommunityMatcher() = default;

bool LargeCommunityMatcher::matchesText(Acl::CommunityValue const& community) const {
   Kiv::DynamicBuffer<LargeCommunityFormatter::maxSize + 1> text;
   LargeCommunityFormatter::format(text, community, false);
   text.append('\0');
   return regex_->execute(text.data()) == 0;
}

std::string LargeCommunityMatcher::toStrep() const {
   return regex_ ? detail::quotedRegexText(*regex_)
                 : global_.toStrep() + ":" + local1_.toStrep() + ":" + local2_.toStrep();
}

LargeCommunityMatcher::PtrConst largeCommunityMatcherFactory(CommunityFieldPattern global,
                                                             CommunityFieldPattern local1,
                                                             CommunityFieldPattern local2) {
   return Kiv::newNotifying<LargeCommunityMatcher>(global, local1, local2);
}

LargeCommunityMatcher::PtrConst largeCommunityMatcherFactory(PosixRegex::PtrConst regex) {
   return Kiv::newNotifying<LargeCommunityMatcher>(std::move(regex));
}

} // namespace Routing::Bgp
