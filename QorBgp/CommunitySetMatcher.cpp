#include "QorBgpCommunity/QorBgp/CommunitySetMatcher.h"

#include "QorBgpCommunity/QorBgp/detail/FieldTests.h"
#include "QorBgpCommunity/platform/Errors.h"

#include <algorithm>

namespace Routing::Bgp {

char const* communitySetModeName(CommunitySetMode mode) noexcept {
   switch (mode) {
   case CommunitySetMode::any:
      return "any";
   case CommunitySetMode::all:
      return "all";
   case CommunitySetMode::exact:
      return "exact";
   }
   return "";
}

template <class Matcher>
CommunitySetMatcher<Matcher>::CommunitySetMatcher(Matchers matchers, CommunitySetMode mode,
                                                  bool inverted)
    : matchers_(std::move(matchers)), mode_(mode), inverted_(inverted) {
   if (std::find(matchers_.begin(), matchers_.end(), nullptr) != matchers_.end()) {
      throw Kiv::NullArgumentError("CommunitySetMatcher: null matcher");
   }
   if constexpr (requires { Matcher::fieldCount; }) {
      tests_ = detail::FieldTests::compile<Matcher>(matchers_);
   }
}

template <class Matcher>
CommunitySetMatcher<Matcher>::~CommunitySetMatcher() = default;

template <class Matcher>
bool CommunitySetMatcher<Matcher>::matches(List const& list,
                                           CommunityMatchContext const& context) const {
   if constexpr (requires { Matcher::fieldCount; }) {
      if (tests_) {
         return tests_->answer<Matcher>(mode_, *list.commVectorRawPtr(), context) != inverted_;
      }
   }
   auto const& values = *list.commVectorRawPtr();
   bool answer = false;
   if (mode_ == CommunitySetMode::any) {
      answer = std::any_of(values.begin(), values.end(), [&](auto const& value) {
         return std::any_of(matchers_.begin(), matchers_.end(),
                            [&](auto const& m) { return m->matches(value, context); });
      });
   } else {
      // Which matchers some value matched, and whether every value was matched.
      std::vector<bool> matched(matchers_.size());
      bool everyValue = true;
      for (auto const& value : values) {
         bool valueMatched = false;
         for (std::size_t i = 0; i < matchers_.size(); ++i) {
            if (matchers_[i]->matches(value, context)) {
               matched[i] = true;
               valueMatched = true;
            }
         }
         everyValue = everyValue && valueMatched;
      }
      answer = std::find(matched.begin(), matched.end(), false) == matched.end() &&
               (mode_ == CommunitySetMode::all || everyValue);
   }
   return answer != inverted_;
}

template <class Matcher>
std::string CommunitySetMatcher<Matcher>::toStrep() const {
   std::string text = inverted_ ? "not " : "";
   text += communitySetModeName(mode_);
   for (auto const& m : matchers_) {
      text += ' ';
      text += m->toStrep();
   }
   return text;
}

template class CommunitySetMatcher<StandardCommunityMatcher>;
template class CommunitySetMatcher<LargeCommunityMatcher>;
template class CommunitySetMatcher<ExtCommunityMatcher>;
template class CommunitySetMatcher<ExtCommIp6Matcher>;

StandardCommunitySetMatcher::PtrConst
standardCommunitySetMatcherFactory(StandardCommunitySetMatcher::Matchers matchers,
                                   CommunitySetMode mode, bool inverted) {
   return Kiv::newNotifying<StandardCommunitySetMatcher>(std::move(matchers), mode, inverted);
}

LargeCommunitySetMatcher::PtrConst
largeCommunitySetMatcherFactory(LargeCommunitySetMatcher::Matchers matchers, CommunitySetMode mode,
                                bool inverted) {
   return Kiv::newNotifying<LargeCommunitySetMatcher>(std::move(matchers), mode, inverted);
}

ExtCommunitySetMatcher::PtrConst
extCommunitySetMatcherFactory(ExtCommunitySetMatcher::Matchers matchers, CommunitySetMode mode,
                              bool inverted) {
   return Kiv::newNotifying<ExtCommunitySetMatcher>(std::move(matchers), mode, inverted);
}

ExtCommIp6SetMatcher::PtrConst extCommIp6SetMatcherFactory(ExtCommIp6SetMatcher::Matchers matchers,
                                                           CommunitySetMode mode, bool inverted) {
   return Kiv::newNotifying<ExtCommIp6SetMatcher>(std::move(matchers), mode, inverted);
}

} // namespace Routing::Bgp
