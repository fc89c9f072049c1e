#include "QorBgpCommunity/QorBgp/ExtCommIp6DedupTable.h"

#include "QorBgpCommunity/platform/Errors.h"

namespace Routing::Bgp {

QOR_ASSERT_UNIT("ExtCommIp6DedupTable");

ExtCommIp6DedupTable::ExtCommIp6DedupTable(ParserPtrConst const& parseExtCommRule)
    : parseExtCommRule_(parseExtCommRule) {
   if (!parseExtCommRule_) {
      throw Kiv::NullArgumentError("ExtCommIp6DedupTable: null parser");
   }
}

ExtCommIp6DedupTable::~ExtCommIp6DedupTable() = default;

ExtCommIp6DedupTable::Ptr
extCommIp6DedupTableFactory(ExtCommIp6DedupTable::ParserPtrConst const& parseExtCommRule) {
   return Kiv::newNotifying<ExtCommIp6DedupTable>(parseExtCommRule);
}

} // namespace Routing::Bgp
