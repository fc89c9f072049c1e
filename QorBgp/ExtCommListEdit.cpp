#include "QorBgpCommunity/QorBgp/ExtCommListEdit.h"

#include "QorBgpCommunity/QorBgp/detail/MatcherSupport.h"

#include <algorithm>
#include <iterator>

namespace Routing::Bgp {

namespace {

U64 contentOf(ExtComm::PtrConst const& comm) noexcept { return comm->community(); }

// Content words and interned values in one ascending order.
struct ContentOrder {
   bool operator()(U64 a, ExtComm::PtrConst const& b) const noexcept { return a < contentOf(b); }
   bool operator()(ExtComm::PtrConst const& a, U64 b) const noexcept { return contentOf(a) < b; }
};

// The interned list of `comms` and of the values of `more`; null for none.
ExtCommList::PtrConst publish(std::vector<ExtComm::PtrConst> comms, std::vector<U64> const& more,
                              ExtCommDedupTable const* values, ExtCommListDedupTable const* lists) {
   for (U64 content : more) {
      comms.push_back(ExtComm::dedupContent(values, ExtCommContent(content)));
   }
   if (comms.empty()) {
      return nullptr;
   }
   return ExtCommList::dedupComms(lists, comms);
}

// A value in the policy parser's words.
std::string valueText(U64 content) {
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

} // namespace

std::string ExtCommListEdit::toStrep() const {
   std::string text = communityEditKindName(kind_);
   for (U64 content : contents_) {
      text += ' ';
      text += valueText(content);
   }
   for (auto const& m : matchers_) {
      text += ' ';
      text += m->toStrep();
   }
   return text;
}

ExtCommListEdit::ExtCommListEdit(CommunityEditKind kind, std::vector<U64> contents,
                                 Matchers matchers)
    : kind_(kind), contents_(detail::sortedUnique(std::move(contents))),
      matchers_(std::move(matchers)) {
   detail::checkEditArguments(kind, !contents_.empty(), matchers_, "ExtCommListEdit");
}

ExtCommListEdit::~ExtCommListEdit() = default;

ExtCommList::PtrConst ExtCommListEdit::apply(ExtCommList const* list,
                                             ExtCommDedupTable const* values,
                                             ExtCommListDedupTable const* lists,
                                             CommunityMatchContext const& context) const {
   ExtCommList::PtrConst const given(list);
   static ExtCommList::CommVector const none;
   auto const& current = list ? *list->commVectorRawPtr() : none; // ascending by content
   switch (kind_) {
   case CommunityEditKind::replace:
      if (std::equal(current.begin(), current.end(), contents_.begin(), contents_.end(),
                     [](ExtComm::PtrConst const& comm, U64 content) {
                        return contentOf(comm) == content;
                     })) {
         return given;
      }
      return publish({}, contents_, values, lists);
   case CommunityEditKind::add: {
      std::vector<U64> missing;
      std::set_difference(contents_.begin(), contents_.end(), current.begin(), current.end(),
                          std::back_inserter(missing), ContentOrder());
      if (missing.empty()) {
         return given;
      }
      return publish({current.begin(), current.end()}, missing, values, lists);
   }
   case CommunityEditKind::deleteMatching: {
      std::vector<ExtComm::PtrConst> kept;
      std::copy_if(current.begin(), current.end(), std::back_inserter(kept), [&](auto const& comm) {
         return std::none_of(matchers_.begin(), matchers_.end(),
                             [&](auto const& m) { return m->matches(comm, context); });
      });
      if (kept.size() == current.size()) {
         return given;
      }
      return publish(std::move(kept), {}, values, lists);
   }
   case CommunityEditKind::deleteAll:
      return nullptr;
   }
   return given;
}

ExtCommListEdit::PtrConst extCommListEditFactory(CommunityEditKind kind, std::vector<U64> contents,
                                                 ExtCommListEdit::Matchers matchers) {
   return Kiv::newNotifying<ExtCommListEdit>(kind, std::move(contents), std::move(matchers));
}

} // namespace Routing::Bgp
