#include "QorBgpCommunity/QorBgp/ExtCommListEdit.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <algorithm>
#include <iterator>

namespace Routing::Bgp {

namespace {

std::vector<U64> sortedUnique(std::vector<U64> contents) {
   std::sort(contents.begin(), contents.end());
   contents.erase(std::unique(contents.begin(), contents.end()), contents.end());
   return contents;
}

U64 contentOf(ExtComm::PtrConst const& comm) noexcept { return comm->community(); }

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

} // namespace

ExtCommListEdit::ExtCommListEdit(CommunityEditKind kind, std::vector<U64> contents,
                                 Matchers matchers)
    : kind_(kind), contents_(sortedUnique(std::move(contents))), matchers_(std::move(matchers)) {
   bool const takesValues = kind == CommunityEditKind::replace || kind == CommunityEditKind::add;
   if (!takesValues && !contents_.empty()) {
      throw Kiv::RangeError(std::string(communityEditKindName(kind)) + " takes no values");
   }
   if (kind != CommunityEditKind::deleteMatching && !matchers_.empty()) {
      throw Kiv::RangeError(std::string(communityEditKindName(kind)) + " takes no matchers");
   }
   if (std::find(matchers_.begin(), matchers_.end(), nullptr) != matchers_.end()) {
      throw Kiv::NullArgumentError("ExtCommListEdit: null matcher");
   }
}

ExtCommListEdit::~ExtCommListEdit() = default;

ExtCommList::PtrConst ExtCommListEdit::apply(ExtCommList const* list,
                                             ExtCommDedupTable const* values,
                                             ExtCommListDedupTable const* lists,
                                             CommunityMatchContext const& context) const {
   ExtCommList::PtrConst const given(list);
   static ExtCommList::CommVector const none;
   auto const& current = list ? *list->commVectorRawPtr() : none; // ascending by content
   std::vector<U64> present;
   present.reserve(current.size());
   std::transform(current.begin(), current.end(), std::back_inserter(present), contentOf);
   switch (kind_) {
   case CommunityEditKind::replace:
      if (present == contents_) {
         return given;
      }
      return publish({}, contents_, values, lists);
   case CommunityEditKind::add: {
      std::vector<U64> missing;
      std::set_difference(contents_.begin(), contents_.end(), present.begin(), present.end(),
                          std::back_inserter(missing));
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
