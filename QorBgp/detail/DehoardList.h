// The frame of restoring a community list from the snapshot store, shared by
// every list kind. Private to the library.
#pragma once

#include "QorBgpCommunity/QorBgp/QorBgpCommunity.h"
#include "QorBgpCommunity/QorBgp/QorBgpTrace.h"
#include "QorBgpCommunity/platform/Hoard.h"

namespace Routing::Bgp::detail {

// Reads the list record at `data` into `list` (new, empty): checks that the
// segment still has its size, checks the record's version anchor, lets
// `fill(list, stored, flags, count)` copy the elements (it returns false when
// the record does not hold: elements beyond the segment, out of order or
// repeated, unusable, or flags that the elements contradict), checks the
// anchor again and returns the list. Null when the store changed while it
// was read or `fill` failed; Kiv::RangeError (from the store) for a location
// outside it; hoard::StoreError for a segment cut short since it was opened.
// Traces the list at level 8.
template <class ListPtr, class Fill>
ListPtr dehoardList(ListPtr list, void const* data, hoard::StoreManager* store, Fill fill) {
   QOR_TRACE(qorBgpTrace(), 8, "Dehoarding " << list->fwkType());
   store->checkIntact();
   hoard::ReaderPtr<hoard::ListRecord> stored(*store, hoard::Location::loadFrom(data));
   U32 const flags = stored->flags;
   U32 const count = stored->count;
   if (!stored.validateVersionAnchor()) {
      return nullptr;
   }
   if (!fill(*list, stored, flags, count) || !stored.validateVersionAnchor()) {
      return nullptr;
   }
   QOR_TRACE(qorBgpTrace(), 8, "  dehoarded: " << list->toStrep());
   return list;
}

// ExtComm::dehoard without its check of the segment's size, for a list that
// made it already.
ExtComm::PtrConst dehoardExtCommRecord(void const* stored, hoard::StoreManager* store);

} // namespace Routing::Bgp::detail
