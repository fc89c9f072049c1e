#include "QorBgpCommunity/QorBgp/ExtCommIp6List.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityListFormat.h"
#include "QorBgpCommunity/QorBgp/QorBgpSerialize.h"
#include "QorBgpCommunity/QorBgp/detail/DehoardList.h"
#include "QorBgpCommunity/QorBgp/detail/ExtCommListFamily.h"
#include "QorBgpCommunity/platform/Errors.h"
#include "QorBgpCommunity/platform/Hoard.h"

#include <cstring>
#include <ostream>

namespace Routing::Bgp {

QOR_ASSERT_UNIT("ExtCommIp6List");

namespace {

constexpr std::size_t classificationCount = extCommClassificationOneBeyondLast;
// Type, subtype, 16 address octets, 2 local administrator octets.
constexpr U32 valueSize = 20;

bool isTransitive(ExtCommIp6 const& comm) noexcept {
   return detail::isTransitiveType(comm.getContent().type);
}

// The list for `classification` in `lists`, created (and the vector grown
// with null entries) when there is none yet.
ExtCommIp6ClassificationList&
ExtCommIp6ListFindOrCreateClassificationList(ExtCommIp6List::ClassificationListVector& lists,
                                             ExtCommClassification classification) {
   return detail::findOrCreateClassificationList(lists, classification,
                                                 extCommIp6ClassificationListFactory,
                                                 [](ExtCommIp6ClassificationList const&) {});
}

} // namespace

ExtCommIp6List::ExtCommIp6List() { classificationLists_.reserve(classificationCount); }

ExtCommIp6List::~ExtCommIp6List() = default;

std::string_view ExtCommIp6List::fwkType() const noexcept { return "Routing::Bgp::ExtCommIp6List"; }

void ExtCommIp6List::commIs(ExtCommIp6::PtrConst const& comm) {
   commAppend(comm);
   totalTransitiveCommunities_ += isTransitive(*comm) ? 1 : 0;
}

void ExtCommIp6List::sortComms() {
   commVectorSort();
   commVectorSorted_ = true;
   // Duplicates are gone: count again.
   totalTransitiveCommunities_ = 0;
   for (ExtCommIp6::PtrConst const& comm : commVector()) {
      totalTransitiveCommunities_ += isTransitive(*comm) ? 1 : 0;
   }
}

ExtCommIp6List::PtrConst ExtCommIp6List::dedup(ExtCommIp6ListDedupTable const* table) {
   assertNeverDeduped();
   sortComms();
   classificationLists_.clear();
   detail::splitByClassification(
      commVector(), [this](ExtCommClassification classification) -> auto& {
         return ExtCommIp6ListFindOrCreateClassificationList(classificationLists_, classification);
      });
   detail::publishClassificationLists(classificationLists_, table, qorAssertUnit);
   return table->dedupAs<ExtCommIp6List>(PtrConst(this));
}

std::string ExtCommIp6List::serialize(bool all) const {
   return detail::serializeSelected(
      extCommunityIp6, valueSize, all ? totalCommunities() : totalTransitiveCommunities_,
      commVector(), [all](ExtCommIp6::PtrConst const& comm) { return all || isTransitive(*comm); },
      [](char* at, ExtCommIp6::PtrConst const& comm) {
         ExtCommIp6Content const content = comm->community();
         at[0] = static_cast<char>(content.type);
         at[1] = static_cast<char>(content.subtype);
         std::memcpy(at + 2, content.addr.bytes().data(), 16);
         at[18] = static_cast<char>(content.localAdmin >> 8);
         at[19] = static_cast<char>(content.localAdmin);
      });
}

std::string ExtCommIp6List::commsStringForm() const {
   ExtCommIp6::StrepFormat const addressAndLocalAdmin(ExtCommIp6::StrepFormat::flagClassification);
   std::string text;
   for (ExtCommIp6::PtrConst const& comm : commVector()) {
      text += comm->toStrepForPolicy(addressAndLocalAdmin);
      text += ' ';
   }
   return text;
}

std::string ExtCommIp6List::toStrep() const { return stringify(this); }

ExtCommIp6List::Ptr extCommIp6ListFactory() { return Kiv::newNotifying<ExtCommIp6List>(); }

void formatCommList(std::ostream& os, ExtCommIp6List const* list) {
   formatListElements(
      os, list ? list->commVectorRawPtr() : nullptr,
      [](std::ostream& out, ExtCommIp6::PtrConst const& comm) { out << comm.get(); }, true, " ");
}

std::ostream& operator<<(std::ostream& os, ExtCommIp6List const* list) {
   formatCommList(os, list);
   return os;
}

hoard::Location ExtCommIp6List::hoard(hoard::StoreWriter& writer) const {
   std::vector<hoard::ExtCommIp6Record> records;
   records.reserve(comms());
   for (ExtCommIp6::PtrConst const& comm : commVector()) {
      ExtCommIp6Content const content = comm->getContent();
      records.push_back({content.type, content.subtype, content.addr.bytes(), content.localAdmin});
   }
   return writer.publishList<hoard::ExtCommIp6Record>(commVectorSorted_ ? storedSortedFlag : 0,
                                                      records);
}

ExtCommIp6List::PtrConst ExtCommIp6List::dehoard(void const* data, hoard::StoreManager* store) {
   return detail::dehoardList(
      extCommIp6ListFactory(), data, store,
      [](ExtCommIp6List& list, hoard::ReaderPtr<hoard::ListRecord>& stored, U32 flags, U32 count) {
         hoard::ExtCommIp6Record const* records =
            stored.template findTrailing<hoard::ExtCommIp6Record>(count);
         if (records == nullptr || flags != storedSortedFlag) {
            return false;
         }
         list.expectedCommunityCountIs(count);
         for (U32 i = 0; i < count; ++i) {
            hoard::ExtCommIp6Record const record = records[i];
            ExtCommIp6::Ptr comm = extCommIp6Factory(
               extCommClassificationUnSpecified,
               ExtCommIp6Content(record.type, record.subtype, Qornet::Ip6Addr(record.address),
                                 record.localAdmin));
            comm->dedupStateIs(Zup::DedupState::detached);
            list.commIs(comm);
         }
         if (!detail::ExtCommVectorStrictlyAscending(list.commVector())) {
            return false;
         }
         list.sortComms(); // sorted already; marks it so and counts
         list.dedupStateIs(Zup::DedupState::local);
         return true;
      });
}

} // namespace Routing::Bgp
