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

// An extended value in the policy parser's words.
std::string extValueText(U64 content) {
   U8 const type = static_cast<U8>(content >> 56), subtype = static_cast<U8>(content >> 48);
   std::string const kind = subtype == 0x02 ? "rt " : "soo ";
   if ((subtype == 0x02 || subtype == 0x03) && type == 0x00) {
      return kind + std::to_string(content >> 32 & 0xFFFF) + ":" +
             std::to_string(content & 0xFFFFFFFF);
   }
   if ((subtype == 0x02 || subtype == 0x03) && type == 0x02 &&
       (content >> 16 & 0xFFFFFFFF) > 0xFFFF) {
      return kind + std::to_string(content >> 16 & 0xFFFFFFFF) + ":" +
             std::to_string(content & 0xFFFF);
   }
   if ((subtype == 0x02 || subtype == 0x03) && type == 0x01) {
      U32 const a = static_cast<U32>(content >> 16);
      return kind + std::to_string(a >> 24) + "." + std::to_string(a >> 16 & 0xFF) + "." +
             std::to_string(a >> 8 & 0xFF) + "." + std::to_string(a & 0xFF) + ":" +
             std::to_string(content & 0xFFFF);
   }
   if (type == 0x03 && subtype == 0x0b && (content >> 32 & 0xFFFF) == 0) {
      return "color " + std::to_string(content & 0xFFFFFFFF);
   }
   if (type == 0x43 && subtype == 0x00 && (content & ~U64{0xFF} & 0xFFFFFFFFFFFF) == 0 &&
       (content & 0xFF) <= 2) {
      static char const* const states[] = {"valid", "not-found", "invalid"};
      return std::string("ovs ") + states[content & 0xFF];
   }
   char hex[19] = "0x";
   for (int i = 0; i < 16; ++i) {
      hex[2 + i] = "0123456789abcdef"[content >> (60 - 4 * i) & 0xF];
   }
   return std::string("raw ") + hex;
}

// What differs between the kinds of list: how a member gives its content
// (contentOf also takes a content, so that one order serves both), how
// the members and new contents are published, and how a value is written.
// A list's members are ascending by content in every kind.
template <class List>
struct EditFamily;

// Standard and large lists hold their values themselves.
template <class List, auto listTable>
struct PlainEditFamily {
   using Member = typename List::CommVector::value_type;
   static Member const& contentOf(Member const& value) noexcept { return value; }
   static typename List::PtrConst publish(CommunityTables const& tables,
                                          std::vector<Member> members,
                                          std::vector<Member> const& more) {
      if (members.empty() && more.empty()) {
         return nullptr;
      }
      std::vector<Member> merged;
      merged.reserve(members.size() + more.size());
      std::merge(members.begin(), members.end(), more.begin(), more.end(),
                 std::back_inserter(merged));
      return List::dedupValues((tables.*listTable)().get(), merged);
   }
   static std::string valueText(Member const& value) { return List::getStringValue(value); }
};

template <>
struct EditFamily<CommList> : PlainEditFamily<CommList, &CommunityTables::commListDedupTable> {};
template <>
struct EditFamily<LargeCommList>
    : PlainEditFamily<LargeCommList, &CommunityTables::largeCommListDedupTable> {};

template <>
struct EditFamily<ExtCommList> {
   static U64 contentOf(ExtComm::PtrConst const& comm) noexcept { return comm->community(); }
   static U64 contentOf(U64 content) noexcept { return content; }
   static ExtCommList::PtrConst publish(CommunityTables const& tables,
                                        std::vector<ExtComm::PtrConst> members,
                                        std::vector<U64> const& more) {
      for (U64 content : more) {
         members.push_back(
            ExtComm::dedupContent(tables.extCommDedupTable().get(), ExtCommContent(content)));
      }
      if (members.empty()) {
         return nullptr;
      }
      return ExtCommList::dedupComms(tables.extCommListDedupTable().get(), members);
   }
   static std::string valueText(U64 content) { return extValueText(content); }
};

template <>
struct EditFamily<ExtCommIp6List> {
   static ExtCommIp6Content contentOf(ExtCommIp6::PtrConst const& comm) noexcept {
      return comm->community();
   }
   static ExtCommIp6Content const& contentOf(ExtCommIp6Content const& content) noexcept {
      return content;
   }
   static ExtCommIp6List::PtrConst publish(CommunityTables const& tables,
                                           std::vector<ExtCommIp6::PtrConst> const& members,
                                           std::vector<ExtCommIp6Content> const& more) {
      if (members.empty() && more.empty()) {
         return nullptr;
      }
      ExtCommIp6List::Ptr list = extCommIp6ListFactory();
      for (auto const& comm : members) {
         list->commIs(comm);
      }
      for (auto const& content : more) {
         list->commIs(ExtCommIp6::dedupContent(tables.extCommIp6DedupTable().get(), content));
      }
      return list->dedup(tables.extCommIp6ListDedupTable().get());
   }
   static std::string valueText(ExtCommIp6Content const& content) {
      return std::to_string(content.type) + ":" + std::to_string(content.subtype) + " " +
             content.addr.toStrep() + ":" + std::to_string(content.localAdmin);
   }
};

} // namespace

template <class Matcher>
CommunityListEdit<Matcher>::CommunityListEdit(CommunityEditKind kind, std::vector<Content> values,
                                              Matchers matchers)
    : kind_(kind), values_(detail::sortedUnique(std::move(values))),
      matchers_(std::move(matchers)) {
   detail::checkEditArguments(kind, !values_.empty(), matchers_, "CommunityListEdit");
}

template <class Matcher>
CommunityListEdit<Matcher>::~CommunityListEdit() = default;

template <class Matcher>
typename CommunityListEdit<Matcher>::List::PtrConst
CommunityListEdit<Matcher>::apply(List const* list, CommunityTables const& tables,
                                  CommunityMatchContext const& context) const {
   using Family = EditFamily<List>;
   using Member = typename List::CommVector::value_type;
   typename List::PtrConst const given(list);
   static typename List::CommVector const none;
   auto const& current = list ? *list->commVectorRawPtr() : none; // ascending by content
   // Members and contents in one ascending order.
   auto const contentOrder = [](auto const& a, auto const& b) {
      return Family::contentOf(a) < Family::contentOf(b);
   };
   switch (kind_) {
   case CommunityEditKind::replace:
      if (std::equal(current.begin(), current.end(), values_.begin(), values_.end(),
                     [](Member const& m, Content const& c) { return Family::contentOf(m) == c; })) {
         return given;
      }
      return Family::publish(tables, {}, values_);
   case CommunityEditKind::add: {
      std::vector<Content> missing;
      std::set_difference(values_.begin(), values_.end(), current.begin(), current.end(),
                          std::back_inserter(missing), contentOrder);
      if (missing.empty()) {
         return given;
      }
      return Family::publish(tables, {current.begin(), current.end()}, missing);
   }
   case CommunityEditKind::deleteMatching: {
      std::vector<Member> kept;
      kept.reserve(current.size());
      std::copy_if(current.begin(), current.end(), std::back_inserter(kept), [&](Member const& m) {
         return std::none_of(matchers_.begin(), matchers_.end(),
                             [&](auto const& matcher) { return matcher->matches(m, context); });
      });
      if (kept.size() == current.size()) {
         return given;
      }
      return Family::publish(tables, std::move(kept), {});
   }
   case CommunityEditKind::deleteAll:
      return nullptr;
   }
   return given;
}

template <class Matcher>
std::string CommunityListEdit<Matcher>::toStrep() const {
   std::string text = communityEditKindName(kind_);
   for (Content const& value : values_) {
      text += ' ';
      text += EditFamily<List>::valueText(value);
   }
   for (auto const& m : matchers_) {
      text += ' ';
      text += m->toStrep();
   }
   return text;
}

template class CommunityListEdit<StandardCommunityMatcher>;
template class CommunityListEdit<LargeCommunityMatcher>;
template class CommunityListEdit<ExtCommunityMatcher>;
template class CommunityListEdit<ExtCommIp6Matcher>;

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

ExtCommListEdit::PtrConst extCommListEditFactory(CommunityEditKind kind, std::vector<U64> values,
                                                 ExtCommListEdit::Matchers matchers) {
   return Kiv::newNotifying<ExtCommListEdit>(kind, std::move(values), std::move(matchers));
}

ExtCommIp6ListEdit::PtrConst extCommIp6ListEditFactory(CommunityEditKind kind,
                                                       std::vector<ExtCommIp6Content> values,
                                                       ExtCommIp6ListEdit::Matchers matchers) {
   return Kiv::newNotifying<ExtCommIp6ListEdit>(kind, std::move(values), std::move(matchers));
}

} // namespace Routing::Bgp
