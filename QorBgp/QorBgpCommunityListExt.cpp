#include "QorBgp/QorBgpCommunityListExt.h"

#include "QorBgp/QorBgpCommunityListExtDedupTable.h"
#include "QorBgp/QorBgpSerialize.h"
#include "platform/Errors.h"

namespace Routing::Bgp {

namespace {

constexpr U8 nonTransitiveBit = 0x40;
constexpr std::size_t classificationCount = extCommClassificationOneBeyondLast;

bool isTransitive(ExtComm const& comm) noexcept {
   return (comm.getContent().typeOctet() & nonTransitiveBit) == 0;
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
      appendVector(otherExtCommList->comms_);
   }
}

void ExtCommList::appendVector(ExtCommVector const& comms) {
   comms_.reserve(comms_.size() + comms.size());
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
   ExtCommVectorSort(comms_);
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

   for (ExtComm::PtrConst const& comm : comms_) {
      std::size_t const k = comm->classification();
      if (k >= classificationLists_.size()) {
         classificationLists_.resize(k + 1);
      }
      if (ExtCommClassificationList::PtrConst const& existing = classificationLists_[k]) {
         QOR_ASSERT_TEXT(!dedupMode || existing->dedupState() == Zup::dedupHandleStateNeverDeduped(),
                         "__null == ( _classificationList ) || ( _classificationList )->dedupState() "
                         "== Zup::dedupHandleStateNeverDeduped()");
      } else {
         ExtCommClassificationList::Ptr created = newClassificationList(comm->classification());
         if (!dedupMode) {
            created->dedupStateIs(Zup::DedupState::local);
         }
         classificationLists_[k] = created;
      }
      // The classification lists are this builder's own until interned.
      const_cast<ExtCommClassificationList*>(classificationLists_[k].get())->commIs(comm);
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
   QOR_ASSERT_TEXT(dedupState() == Zup::dedupHandleStateNeverDeduped(),
                   "__null == ( this ) || ( this )->dedupState() == "
                   "Zup::dedupHandleStateNeverDeduped()");
   createClassificationListVector(true);
   for (ExtCommClassificationList::PtrConst& list : classificationLists_) {
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
      if (list->dedupState() == Zup::dedupHandleStateNeverDeduped()) {
         list = const_cast<ExtCommClassificationList*>(list.get())->dedup(table);
      } else {
         ExtCommClassificationList::PtrConst const& _classificationList = list;
         QOR_ASSERT(_classificationList->commVectorSorted());
      }
   }
   return table->dedupAs<ExtCommList>(PtrConst(this));
}

ExtComm::PtrConst ExtCommList::comm(U64 const& community) const {
   return ExtCommVectorLookup(commVectorSorted(), comms_, community);
}

U32 ExtCommList::totalCommunities() const noexcept {
   QOR_ASSERT(commVectorSorted());
   return comms();
}

ExtCommClassificationList::PtrConst
ExtCommList::classificationList(ExtCommClassification classification) const {
   QOR_ASSERT_TEXT(dedupState() != Zup::dedupHandleStateNeverDeduped(),
                   "__null == ( this ) || ( this )->dedupState() != "
                   "Zup::dedupHandleStateNeverDeduped()");
   return classification < classificationLists_.size() ? classificationLists_[classification]
                                                       : nullptr;
}

U32 ExtCommList::hash() const noexcept { return ExtCommIdentityHash(classificationLists_); }

bool ExtCommList::compare(Zup::DedupHandle const* otherExtCommList) const noexcept {
   return classificationLists_ ==
          static_cast<ExtCommList const*>(otherExtCommList)->classificationLists_;
}

bool ExtCommList::compareByContent(Zup::DedupContentHandle const&) const noexcept { return false; }

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
   U32 const count = serializableCommunities(s);
   if (count == 0) {
      return {};
   }
   SerializePathAttribute out(extCommunity, optionalTransitive, 8 * count);
   for (ExtComm::PtrConst const& comm : comms_) {
      if (serializable(comm, s)) {
         out.addU64hton(comm->community());
      }
   }
   // NOTE: an unpruned list with several link bandwidths (or validation
   // states) writes them all under a header that announces one; the whole
   // buffer is returned as written rather than checked against the header,
   // so such input from a peer never stops the process.
   return out.Serialize::serializedString(0);
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

Kiv::Ptr<ExtCommListSnapshot> ExtCommList::commSnapshot() const {
   auto snapshot = Kiv::newNotifying<ExtCommListSnapshot>();
   for (ExtCommClassificationList::PtrConst const& list : classificationLists_) {
      if (list) {
         snapshot->classificationListIs(list);
      }
   }
   for (ExtComm::PtrConst const& comm : comms_) {
      snapshot->commIs(comm);
   }
   return snapshot;
}

std::string ExtCommList::getStringValue(Acl::CommunityValue const& value) {
   return std::to_string(value.localData1) + ":" + std::to_string(value.localData2);
}

ExtCommList::Ptr extCommListFactory() { return Kiv::newNotifying<ExtCommList>(); }

ExtCommList::Ptr ExtCommListIs() { return extCommListFactory(); }

void ExtCommListSnapshot::classificationListIs(ExtCommClassificationList::PtrConst const& list) {
   if (!list) {
      throw Kiv::NullArgumentError("ExtCommListSnapshot::classificationListIs: null list");
   }
   classificationList_.set(list->classification(), list);
}

void ExtCommListSnapshot::commIs(ExtComm::PtrConst const& comm) {
   if (!comm) {
      throw Kiv::NullArgumentError("ExtCommListSnapshot::commIs: null comm");
   }
   comm_.set(comm->community(), comm);
}

} // namespace Routing::Bgp
