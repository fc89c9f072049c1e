#include "QorBgpCommunity/QorBgp/QorBgpCommunityListHoard.h"

#include "QorBgpCommunity/QorBgp/detail/DehoardList.h"

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
   return detail::dehoardList(
      newList<List>(), data, store,
      [](List& list, hoard::ReaderPtr<hoard::ListRecord>& stored, U32 flags, U32 count) {
         // Bounds-checked before anything is sized by the count.
         Element const* elements = stored.template findTrailing<Element>(count);
         if (elements == nullptr) {
            return false;
         }
         if (count != 0) {
            auto& vector = *list.commVectorRawPtrNonConst();
            vector.resize(count);
            std::memcpy(vector.data(), elements, count * sizeof(Element));
         }
         return list.storedFlagsIs(flags);
      });
}

template QORBGP_EXPORT CommList::PtrConst dehoardCommList<CommList, U32>(void const*,
                                                                       hoard::StoreManager*);
template QORBGP_EXPORT LargeCommList::PtrConst
dehoardCommList<LargeCommList, Acl::CommunityValue>(void const*, hoard::StoreManager*);

} // namespace Routing::Bgp
