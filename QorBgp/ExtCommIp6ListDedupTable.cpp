#include "QorBgpCommunity/QorBgp/ExtCommIp6ListDedupTable.h"

#include "QorBgpCommunity/platform/DumpContext.h"

namespace Routing::Bgp {

ExtCommIp6ListDedupTable::ExtCommIp6ListDedupTable() { handleInitialized(); }

ExtCommIp6ListDedupTable::~ExtCommIp6ListDedupTable() = default;

std::string_view ExtCommIp6ListDedupTable::fwkType() const noexcept {
   return "Routing::Bgp::ExtCommIp6ListDedupTable";
}

void ExtCommIp6ListDedupTable::handleInitialized() {
   extCommIp6ClassificationListDedupTable_ =
      Zup::dedupHashTableFactory(QorBgpGlobals::multiThreaded());
}

void ExtCommIp6ListDedupTable::dumpState(Kiv::DumpContext& context, unsigned indent) const {
   dumpTables(context, indent, "ExtCommIp6ListDedupTable",
              {{"extCommIp6", dedupTable()},
               {"extCommIp6Classification", extCommIp6ClassificationListDedupTable_}});
}

ExtCommIp6ListDedupTable::Ptr extCommIp6ListDedupTableFactory() {
   return Kiv::newNotifying<ExtCommIp6ListDedupTable>();
}

} // namespace Routing::Bgp
