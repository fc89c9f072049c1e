// Restoring extended communities from the snapshot store.
#include "QorBgp/QorBgpCommunity.h"

#include "platform/Hoard.h"

namespace Routing::Bgp {

ExtComm::PtrConst ExtComm::dehoard(void const* stored, hoard::StoreManager* store) {
   hoard::ReaderPtr<hoard::ExtCommRecord> record(*store, hoard::Location::loadFrom(stored));
   auto const classification = static_cast<ExtCommClassification>(record->classification);
   ExtCommContent const content(record->content);
   if (!record.validateVersionAnchor() || !bgpIsValidEnumMember(classification)) {
      return nullptr;
   }
   ExtComm::Ptr comm = extCommFactory(classification, content);
   comm->dedupStateIs(Zup::DedupState::detached);
   return comm;
}

} // namespace Routing::Bgp
