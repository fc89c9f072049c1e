#include "QorBgpCommunity/QorBgp/CommunityListEdit.h"

#include "QorBgpCommunity/QorBgp/detail/MatcherSupport.h"

#include <algorithm>
#include <iterator>

namespace Routing::Bgp {

char const* communityEditKindName(CommunityEditKind kind) noexcept {
   switch (kind) {
   case CommunityEditKind::replace:
      return "set";
   case CommunityEditKind::add:
      return "add";
   case CommunityEditKind::deleteMatching:
      return "delete";
   case CommunityEditKind::deleteAll:
      return "delete-all";
   }
   return "";
}

namespace {

// The interned list of `values` (sorted, unique); null for none.
template <class List, class Table, class Value>
typename List::PtrConst publish(Table const* table, std::vector<Value> values) {
   if (values.empty()) {
      return nullptr;
   }
   return List::dedupValues(table, values);
}

} // namespace

template <class Matcher>
CommunityListEdit<Matcher>::CommunityListEdit(CommunityEditKind kind, std::vector<Value> values,
                                              Matchers matchers)
    : kind_(kind), values_(detail::sortedUnique(std::move(values))),
      matchers_(std::move(matchers)) {
   detail::checkEditArguments(kind, !values_.empty(), matchers_, "CommunityListEdit");
}

template <class Matcher>
CommunityListEdit<Matcher>::~CommunityListEdit() = default;

template <class Matcher>
typename CommunityListEdit<Matcher>::List::PtrConst
CommunityListEdit<Matcher>::apply(List const* list, Table const* table,
                                  CommunityMatchContext const& context) const {
   typename List::PtrConst const given(list);
   static std::vector<Value> const none;
   auto const& current = list ? *list->commVectorRawPtr() : none;
   switch (kind_) {
   case CommunityEditKind::replace:
      if (std::equal(current.begin(), current.end(), values_.begin(), values_.end())) {
         return given;
      }
      return publish<List>(table, values_);
   case CommunityEditKind::add: {
      if (std::includes(current.begin(), current.end(), values_.begin(), values_.end())) {
         return given;
      }
      std::vector<Value> merged;
      merged.reserve(current.size() + values_.size());
      std::set_union(current.begin(), current.end(), values_.begin(), values_.end(),
                     std::back_inserter(merged));
      return publish<List>(table, std::move(merged));
   }
   case CommunityEditKind::deleteMatching: {
      std::vector<Value> kept;
      kept.reserve(current.size());
      std::copy_if(current.begin(), current.end(), std::back_inserter(kept), [&](Value const& v) {
         return std::none_of(matchers_.begin(), matchers_.end(),
                             [&](auto const& m) { return m->matches(v, context); });
      });
      if (kept.size() == current.size()) {
         return given;
      }
      return publish<List>(table, std::move(kept));
   }
   case CommunityEditKind::deleteAll:
      return nullptr;
   }
   return given;
}

template <class Matcher>
std::string CommunityListEdit<Matcher>::toStrep() const {
   std::string text = communityEditKindName(kind_);
   for (Value const& value : values_) {
      text += ' ';
      text += List::getStringValue(value);
   }
   for (auto const& m : matchers_) {
      text += ' ';
      text += m->toStrep();
   }
   return text;
}

template class CommunityListEdit<StandardCommunityMatcher>;
template class CommunityListEdit<LargeCommunityMatcher>;

StandardCommunityListEdit::PtrConst
standardCommunityListEditFactory(CommunityEditKind kind, std::vector<U32> values,
                                 StandardCommunityListEdit::Matchers matchers) {
   return Kiv::newNotifying<StandardCommunityListEdit>(kind, std::move(values),
                                                       std::move(matchers));
}

LargeCommunityListEdit::PtrConst
largeCommunityListEditFactory(CommunityEditKind kind, std::vector<Acl::CommunityValue> values,
                              LargeCommunityListEdit::Matchers matchers) {
   return Kiv::newNotifying<LargeCommunityListEdit>(kind, std::move(values), std::move(matchers));
}

} // namespace Routing::Bgp
