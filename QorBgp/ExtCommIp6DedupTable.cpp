#include "QorBgp/ExtCommIp6DedupTable.h"

#include "platform/Errors.h"

namespace Routing::Bgp {

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

ExtCommIp6::PtrConst ExtCommIp6::dedupContent(ExtCommIp6DedupTable::RawPtrConst table,
                                              ExtCommIp6Content const& content) {
   Zup::DedupHashTable& hashTable = *table->dedupTable();
   if (auto found = hashTable.lookupByContentAs<ExtCommIp6>(content, content.hash())) {
      return found;
   }
   ExtCommIp6::PtrConst dedupHandle = table->parseExtCommRule()->parseExtendedCommunityIp6(content);
   QOR_ASSERT(dedupHandle);
   return hashTable.dedupAs<ExtCommIp6>(dedupHandle);
}

} // namespace Routing::Bgp
