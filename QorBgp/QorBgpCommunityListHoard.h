/// @file
/// Restoring community lists that another process published into the
/// snapshot store. The lists come back as private copies, never interned.
#pragma once

#include "QorBgpCommunity/QorBgp/QorBgpCommunityList.h"
#include "QorBgpCommunity/platform/Hoard.h"

namespace Routing::Bgp {

/// Rebuilds a standard (Element U32) or large (Element Acl::CommunityValue)
/// list from the store: `data` points at the stored location of the list.
/// The elements are copied as stored and must bear out the flags word (see
/// the lists' storedFlagsIs); the list is not interned. Null when the store
/// changed while it was read or the record does not hold (flags, order,
/// repeats, or more elements than the segment has room for);
/// Kiv::RangeError for a location outside the store; hoard::StoreError for a
/// segment cut short since it was opened. Traces at level 8.
template <class List, class Element>
typename List::PtrConst dehoardCommList(void const* data, hoard::StoreManager* store);

extern template QORBGP_EXPORT CommList::PtrConst dehoardCommList<CommList, U32>(void const*,
                                                                              hoard::StoreManager*);
extern template QORBGP_EXPORT LargeCommList::PtrConst
dehoardCommList<LargeCommList, Acl::CommunityValue>(void const*, hoard::StoreManager*);

} // namespace Routing::Bgp
