// The frame of restoring a community list from the snapshot store, shared by
// every list kind. Private to the library.
#pragma once

#include "QorBgpCommunity/QorBgp/QorBgpTrace.h"
#include "QorBgpCommunity/platform/Hoard.h"

namespace Routing::Bgp::detail {

// Reads the list record at `data` into `list` (new, empty): checks the
// record's version anchor, lets `fill(list, stored, flags, count)` copy the
// elements (it returns false when an element is unusable), checks the
// anchor again and returns the list. Null when the store changed while it
// was read or `fill` failed; Kiv::RangeError (from the store) for a
// location outside it. Traces the list at level 8.
template <class ListPtr, class Fill>
ListPtr dehoardList(ListPtr list, void const* data, hoard::StoreManager* store, Fill fill) {
   QOR_TRACE(qorBgpTrace(), 8, "Dehoarding " << list->fwkType());
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

} // namespace Routing::Bgp::detail
