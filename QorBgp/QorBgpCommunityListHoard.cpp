#include "QorBgp/QorBgpCommunityListHoard.h"

#include "QorBgp/QorBgpTrace.h"

#include <cstring>

namespace Routing::Bgp {

namespace {

template <class List>
typename List::Ptr newList();
template <>
CommList::Ptr newList<CommList>() {
   return commListFactory();
}
template <>
LargeCommList::Ptr newList<LargeCommList>() {
   return largeCommListFactory();
}

} // namespace

template <class List, class Element>
typename List::PtrConst dehoardCommList(void const* data, hoard::StoreManager* store) {
   typename List::Ptr list = newList<List>();
   QOR_TRACE(qorBgpTrace(), 8, "Dehoarding " << list->fwkType());
   hoard::ReaderPtr<hoard::ListRecord> stored(*store, hoard::Location::loadFrom(data));
   U32 const flags = stored->flags;
   U32 const count = stored->count;
   if (!stored.validateVersionAnchor()) {
      return nullptr;
   }
   if (count != 0) {
      // Translated (and so bounds-checked) before anything is sized by the count.
      Element const* elements = stored.template trailing<Element>(count);
      auto& vector = *list->commVectorRawPtrNonConst();
      vector.resize(count);
      std::memcpy(vector.data(), elements, count * sizeof(Element));
      if (!stored.validateVersionAnchor()) {
         return nullptr;
      }
   }
   list->storedFlagsIs(flags);
   QOR_TRACE(qorBgpTrace(), 8, "  dehoarded: " << list->toStrep());
   return list;
}

template QORBGP_EXPORT CommList::PtrConst dehoardCommList<CommList, U32>(void const*,
                                                                       hoard::StoreManager*);
template QORBGP_EXPORT LargeCommList::PtrConst
dehoardCommList<LargeCommList, Acl::CommunityValue>(void const*, hoard::StoreManager*);

CommList::PtrConst CommList::dehoard(void const* data, hoard::StoreManager* store) {
   return dehoardCommList<CommList, U32>(data, store);
}

LargeCommList::PtrConst LargeCommList::dehoard(void const* data, hoard::StoreManager* store) {
   return dehoardCommList<LargeCommList, Acl::CommunityValue>(data, store);
}

hoard::Location CommList::hoard(hoard::StoreWriter& writer) const {
   return writer.publishList<U32>(storedFlags(), commVector_);
}

hoard::Location LargeCommList::hoard(hoard::StoreWriter& writer) const {
   return writer.publishList<Acl::CommunityValue>(storedFlags(), commVector_);
}

hoard::Location ExtCommList::hoard(hoard::StoreWriter& writer) const {
   std::vector<hoard::Location> values;
   values.reserve(comms_.size());
   for (ExtComm::PtrConst const& comm : comms_) {
      values.push_back(writer.publish(
         hoard::ExtCommRecord{comm->classification(), 0, comm->getContent().word()}));
   }
   return writer.publishList<hoard::Location>(commVectorSorted() ? 1 : 0, values);
}

ExtCommList::PtrConst ExtCommList::dehoard(void const* data, hoard::StoreManager* store) {
   QOR_TRACE(qorBgpTrace(), 8, "Dehoarding Routing::Bgp::ExtCommList");
   hoard::ReaderPtr<hoard::ListRecord> stored(*store, hoard::Location::loadFrom(data));
   U32 const flags = stored->flags;
   U32 const count = stored->count;
   if (!stored.validateVersionAnchor()) {
      return nullptr;
   }
   ExtCommList::Ptr list = ExtCommListIs();
   hoard::Location const* elements =
      count ? stored.template trailing<hoard::Location>(count) : nullptr;
   list->expectedCommunityCountIs(count);
   for (U32 i = 0; i < count; ++i) {
      ExtComm::PtrConst comm = ExtComm::dehoard(&elements[i], store);
      if (!comm) {
         return nullptr;
      }
      list->commIs(comm);
   }
   list->commVectorSortedIs((flags & 1) != 0);
   list->createClassificationListVector(false);
   if (!stored.validateVersionAnchor()) {
      return nullptr;
   }
   list->dedupStateIs(Zup::DedupState::local);
   QOR_TRACE(qorBgpTrace(), 8, "  dehoarded: " << list->toStrep());
   return list;
}

} // namespace Routing::Bgp
