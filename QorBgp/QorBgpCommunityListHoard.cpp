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

} // namespace Routing::Bgp
