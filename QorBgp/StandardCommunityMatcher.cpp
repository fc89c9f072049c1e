#include "QorBgpCommunity/QorBgp/StandardCommunityMatcher.h"

#include "QorBgpCommunity/QorBgp/detail/MatcherSupport.h"
#include "QorBgpCommunity/platform/Errors.h"

namespace Routing::Bgp {

namespace {

using Routing::RouteMap::PosixRegex;

CommunityFieldPattern sixteenBits(CommunityFieldPattern field) {
   if (!field.fitsIn(0xFFFF)) {
      throw Kiv::RangeError("standard community field " + field.toStrep() + " is above 65535");
   }
   return field;
}

} // namespace

StandardCommunityMatcher::StandardCommunityMatcher(CommunityFieldPattern asPart,
                                                   CommunityFieldPattern localPart)
    : asPart_(sixteenBits(asPart)), localPart_(sixteenBits(localPart)) {}

StandardCommunityMatcher::StandardCommunityMatcher(PosixRegex::PtrConst regex)
    : asPart_(CommunityFieldPattern::any()), localPart_(CommunityFieldPattern::any()),
      regex_(detail::requiredRegex(std::move(regex), "StandardCommunityMatcher")) {}

StandardCommunityMatcher::~StandardCommunityMatcher() = default;

bool StandardCommunityMatcher::matchesText(U32 community) const {
   if (regex_->execute(CommList::getStringValue(community)) == 0) {
      return true;
   }
   std::string const name = CommList::wellKnownName(community);
   return !name.empty() && regex_->execute(name) == 0;
}

std::string StandardCommunityMatcher::toStrep() const {
   return regex_ ? detail::quotedRegexText(*regex_)
                 : asPart_.toStrep() + ":" + localPart_.toStrep();
}

StandardCommunityMatcher::PtrConst
standardCommunityMatcherFactory(CommunityFieldPattern asPart, CommunityFieldPattern localPart) {
   return Kiv::newNotifying<StandardCommunityMatcher>(asPart, localPart);
}

StandardCommunityMatcher::PtrConst standardCommunityMatcherFactory(PosixRegex::PtrConst regex) {
   return Kiv::newNotifying<StandardCommunityMatcher>(std::move(regex));
}

} // namespace Routing::Bgp
