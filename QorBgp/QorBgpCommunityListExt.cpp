#include "QorBgpCommunity/QorBgp/QorBgpCommunityListExt.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityListExtDedupTable.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListFormat.h"
#include "QorBgpCommunity/QorBgp/QorBgpSerialize.h"
#include "QorBgpCommunity/QorBgp/QorBgpTrace.h"
#include "QorBgpCommunity/QorBgp/detail/CommListVector.h"
#include "QorBgpCommunity/QorBgp/detail/DehoardList.h"
#include "QorBgpCommunity/QorBgp/detail/ExtCommListFamily.h"
#include "QorBgpCommunity/platform/Errors.h"
#include "QorBgpCommunity/platform/Hoard.h"

#include <algorithm>

namespace Routing::Bgp {

QOR_ASSERT_UNIT("QorBgpCommunityList");

namespace {

constexpr std::size_t classificationCount = extCommClassificationOneBeyondLast;

bool isTransitive(ExtComm const& comm) noexcept {
   return detail::isTransitiveType(comm.getContent().typeOctet());
}

// A new, empty classification list of the kind its classification calls for.
ExtCommClassificationList::Ptr newClassificationList(ExtCommClassification classification) {
   switch (classification) {
   case extCommClassificationRouteTarget:
      return rtExtCommClassificationListFactory(classification);
   case extCommClassificationLinkBandwidth:
      return linkBandwidthExtCommClassificationListFactory();
   default:
      return extCommClassificationListFactory(classification);
   }
}

} // namespace

ExtCommList::ExtCommList() { classificationLists_.reserve(classificationCount); }

ExtCommList::~ExtCommList() = default;

std::string_view ExtCommList::fwkType() const noexcept { return "Routing::Bgp::ExtCommList"; }

void ExtCommList::append(PtrConst const& otherExtCommList) {
   if (otherExtCommList) {
      appendVector(*otherExtCommList->commVectorRawPtr());
   }
}

void ExtCommList::appendVector(ExtCommVector const& comms) {
   expectedCommunityCountIs(static_cast<U32>(commVector().size() + comms.size()));
   for (ExtComm::PtrConst const& comm : comms) {
      commIs(comm);
   }
}

void ExtCommList::appendClassificationList(
   ExtCommClassificationList::PtrConst const& otherClassificationList) {
   if (otherClassificationList) {
      appendVector(*otherClassificationList->commVectorRawPtr());
   }
}

void ExtCommList::sortComms() {
   commVectorSort();
   commVectorSortedIs(true);
}

void ExtCommList::createClassificationListVector(bool dedupMode) {
   sortComms();
   if (classificationLists_.capacity() < classificationCount) {
      ClassificationListVector exact;
      exact.reserve(classificationCount);
      std::move(classificationLists_.begin(), classificationLists_.end(), std::back_inserter(exact));
      classificationLists_.swap(exact);
   }
   totalTransitiveCommunities_ = 0;
   attrs_.bitIs(CommVectorAttrs::hasLinkBandwidthBit, false);
   attrs_.bitIs(CommVectorAttrs::hasPolicyMatchStrepUICommunitiesBit, false);

   auto create = [dedupMode](ExtCommClassification classification) {
      ExtCommClassificationList::Ptr created = newClassificationList(classification);
      if (!dedupMode) {
         created->dedupStateIs(Zup::DedupState::local);
      }
      return created;
   };
   auto reuse = [dedupMode](ExtCommClassificationList const& existing) {
      QOR_ASSERT_TEXT(!dedupMode || existing.dedupState() == Zup::dedupHandleStateNeverDeduped(),
                      "__null == ( _classificationList ) || ( _classificationList )->dedupState() "
                      "== Zup::dedupHandleStateNeverDeduped()");
   };
   detail::splitByClassification(
      commVector(), [&](ExtCommClassification classification) -> auto& {
         return detail::findOrCreateClassificationList(classificationLists_, classification, create,
                                                       reuse);
      });
   for (ExtComm::PtrConst const& comm : commVector()) {
      if (dedupMode) {
         totalTransitiveCommunities_ += isTransitive(*comm) ? 1 : 0;
         if (comm->policyMatchStrepUI()) {
            attrs_.bitIs(CommVectorAttrs::hasPolicyMatchStrepUICommunitiesBit, true);
         }
      }
      if (comm->isLinkBandwidthWithUnspecifiedAsNumber()) {
         attrs_.bitIs(CommVectorAttrs::hasLinkBandwidthWithUnspecifiedAsNumberBit, true);
      }
   }
}

ExtCommList::PtrConst ExtCommList::dedup(ExtCommListDedupTable const* table) {
   assertNeverDeduped();
   createClassificationListVector(true);
   for (ExtCommClassificationList::PtrConst const& list : classificationLists_) {
      if (!list) {
         continue;
      }
      if (list->hasPrunableValues()) {
         attrs_.bitIs(CommVectorAttrs::hasPrunableValuesBit, true);
      }
      if (list->classification() == extCommClassificationLinkBandwidth) {
         attrs_.bitIs(CommVectorAttrs::hasLinkBandwidthBit, true);
      } else if (list->classification() == extCommClassificationOriginValidationState) {
         attrs_.bitIs(CommVectorAttrs::hasOriginValidationStateBit, true);
      }
   }
   detail::publishClassificationLists(classificationLists_, table, qorAssertUnit);
   return table->dedupAs<ExtCommList>(PtrConst(this));
}

namespace {

// Lists longer than this are built rather than looked up by their parts.
constexpr std::size_t findableComms = 64;

// The resident list of `comms` (interned values, sorted, no repeats), found
// through its resident classification lists; null when it or one of them is
// not resident. Builds nothing: values grouped by classification, each
// group looked up by the identities of its values, then the list by the
// identities of the classification lists found.
ExtCommList::PtrConst findResident(ExtCommListDedupTable const* table,
                                   std::span<ExtComm::PtrConst const> comms) {
   if (comms.size() > findableComms) {
      return nullptr;
   }
   std::size_t starts[classificationCount + 1] = {};
   for (ExtComm::PtrConst const& comm : comms) {
      ++starts[comm->classification() + 1];
   }
   for (std::size_t k = 0; k < classificationCount; ++k) {
      starts[k + 1] += starts[k];
   }
   void const* grouped[findableComms];
   std::size_t next[classificationCount];
   std::copy_n(starts, classificationCount, next);
   for (ExtComm::PtrConst const& comm : comms) {
      grouped[next[comm->classification()]++] = comm.get();
   }
   ExtCommClassificationList::PtrConst held[classificationCount];
   void const* lists[classificationCount] = {};
   std::size_t listCount = 0;
   ExtCommIdentityContent content;
   for (std::size_t k = 0; k < classificationCount; ++k) {
      if (starts[k] == starts[k + 1]) {
         continue;
      }
      content.identities = std::span<void const* const>(grouped + starts[k], starts[k + 1] - starts[k]);
      Zup::DedupHashTable const& target = k == extCommClassificationRouteTarget
                                             ? *table->rtExtCommClassificationListDedupTable()
                                             : *table->extCommClassificationListDedupTable();
      U32 const hash =
         detail::rememberedValuesHash<void const*>(target, content.identities, detail::identitiesHash);
      held[k] = target.lookupByContentAs<ExtCommClassificationList>(content, hash);
      if (!held[k]) {
         return nullptr;
      }
      lists[k] = held[k].get();
      listCount = k + 1;
   }
   content.identities = std::span<void const* const>(lists, listCount);
   Zup::DedupHashTable const& target = *table->dedupTable();
   U32 const hash =
      detail::rememberedValuesHash<void const*>(target, content.identities, detail::identitiesHash);
   return target.lookupByContentAs<ExtCommList>(content, hash);
}

} // namespace

ExtCommList::PtrConst ExtCommList::dedupComms(ExtCommListDedupTable const* table,
                                              std::span<ExtComm::PtrConst> comms) {
   auto const less = detail::ExtCommSortFn<ExtComm::PtrConst>;
   if (std::adjacent_find(comms.begin(), comms.end(), [&](auto const& a, auto const& b) {
          return !less(a, b);
       }) != comms.end()) {
      std::sort(comms.begin(), comms.end(), less);
      comms = comms.first(static_cast<std::size_t>(
         std::unique(comms.begin(), comms.end(), detail::ExtCommCompareFn<ExtComm::PtrConst>) -
         comms.begin()));
   }
   if (PtrConst found = findResident(table, comms)) {
      return found;
   }
   Ptr list = extCommListFactory();
   list->expectedCommunityCountIs(static_cast<U32>(comms.size()));
   for (ExtComm::PtrConst const& comm : comms) {
      list->commIs(comm);
   }
   return list->dedup(table);
}

void ExtCommList::commIs(ExtComm::PtrConst const& comm) { commAppend(comm); }

ExtCommList::Serialization ExtCommList::serialization(bool includeNonTransitive,
                                                      bool includeLinkBandwidth,
                                                      bool includeOriginAsValidity) noexcept {
   if (includeNonTransitive) {
      return Serialization(Serialization::allBit);
   }
   return Serialization(Serialization::transitiveBit |
                        (includeLinkBandwidth ? Serialization::linkBandwidthBit : 0) |
                        (includeOriginAsValidity ? Serialization::originAsValidityBit : 0));
}

bool ExtCommList::serializable(ExtComm::PtrConst const& comm, Serialization s) noexcept {
   return s.all() || (s.transitive() && isTransitive(*comm)) ||
          (s.linkBandwidth() && comm->classification() == extCommClassificationLinkBandwidth) ||
          (s.originAsValidity() &&
           comm->classification() == extCommClassificationOriginValidationState);
}

U32 ExtCommList::serializableCommunities(Serialization s) const noexcept {
   if (s.all()) {
      return totalCommunities();
   }
   return (s.transitive() ? totalTransitiveCommunities_ : 0) +
          (s.linkBandwidth() && hasLinkBandwidth() ? 1 : 0) +
          (s.originAsValidity() && hasOriginValidationState() ? 1 : 0);
}

std::string ExtCommList::serialize(Serialization s) const {
   // NOTE: an unpruned list with several link bandwidths (or validation
   // states) writes them all under a header that announces one.
   return detail::serializeSelected(
      extCommunity, sizeof(U64), serializableCommunities(s), commVector(),
      [s](ExtComm::PtrConst const& comm) { return serializable(comm, s); },
      [](char* at, ExtComm::PtrConst const& comm) {
         U64 const word = comm->community();
         for (int i = 0; i < 8; ++i) {
            at[i] = static_cast<char>(word >> (56 - 8 * i));
         }
      });
}

ExtCommList::PtrConst ExtCommList::prune(ExtCommListDedupTable const* table) const {
   if (!hasPrunableValues()) {
      return PtrConst(this);
   }
   assertIsDeduped();
   ExtCommList::Ptr pruned = extCommListFactory();
   for (ExtCommClassificationList::PtrConst const& list : classificationLists_) {
      if (!list) {
         continue;
      }
      pruned->appendVector(list->hasPrunableValues() ? list->prune() : *list->commVectorRawPtr());
   }
   return pruned->empty() ? nullptr : pruned->dedup(table);
}

std::string ExtCommList::getStringValue(Acl::CommunityValue const& value) {
   return std::to_string(value.localData1) + ":" + std::to_string(value.localData2);
}

ExtCommList::Ptr extCommListFactory() { return Kiv::newNotifying<ExtCommList>(); }

ExtCommList::Ptr ExtCommListIs() { return extCommListFactory(); }

hoard::Location ExtCommList::hoard(hoard::StoreWriter& writer) const {
   std::vector<hoard::Location> values;
   values.reserve(comms());
   for (ExtComm::PtrConst const& comm : commVector()) {
      values.push_back(writer.publish(
         hoard::ExtCommRecord{comm->classification(), 0, comm->getContent().word()}));
   }
   return writer.publishList<hoard::Location>(commVectorSorted() ? 1 : 0, values);
}

ExtCommList::PtrConst ExtCommList::dehoard(void const* data, hoard::StoreManager* store) {
   return detail::dehoardList(
      extCommListFactory(), data, store,
      [store](ExtCommList& list, hoard::ReaderPtr<hoard::ListRecord>& stored, U32 flags,
              U32 count) {
         hoard::Location const* elements = stored.template findTrailing<hoard::Location>(count);
         if (elements == nullptr || flags != CommVectorAttrs::sortedBit) {
            return false;
         }
         list.expectedCommunityCountIs(count);
         for (U32 i = 0; i < count; ++i) {
            ExtComm::PtrConst comm = detail::dehoardExtCommRecord(&elements[i], store);
            if (!comm) {
               return false;
            }
            list.commIs(comm);
         }
         // Classifying sorts; a stored list must be sorted already.
         if (!detail::ExtCommVectorStrictlyAscending(list.commVector())) {
            return false;
         }
         list.createClassificationListVector(false);
         // Filled in order from the sorted values, each held once: readable
         // as sorted lists, though never interned.
         for (ExtCommClassificationList::PtrConst const& byClass : list.classificationLists_) {
            if (byClass) {
               const_cast<ExtCommClassificationList&>(*byClass).commVectorSortedIs(true);
            }
         }
         list.dedupStateIs(Zup::DedupState::local);
         return true;
      });
}

bool ExtCommList::matchCommunitiesRegex(Routing::RouteMap::PosixRegex const* regex) const {
   return matchExtCommList(this, MatchMode::standard, regex) ||
          matchExtCommList(this, MatchMode::classification, regex) ||
          (hasPolicyMatchStrepUICommunities() && matchExtCommList(this, MatchMode::ui, regex));
}

std::string ExtCommList::toStrep() const { return stringify<ExtCommList>(this); }

} // namespace Routing::Bgp
