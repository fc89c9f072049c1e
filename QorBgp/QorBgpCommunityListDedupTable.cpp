#include "QorBgpCommunity/QorBgp/QorBgpCommunityListDedupTable.h"

#include "QorBgpCommunity/platform/DumpContext.h"

namespace Routing::Bgp {

CommListDedupTableBase::~CommListDedupTableBase() = default;

Zup::DedupHandle::Ptr CommListDedupTableBase::dedup(Zup::DedupHandle::Ptr const& handle) const {
   return dedupTable()->dedup(handle);
}

void CommListDedupTableBase::dumpState(Kiv::DumpContext& context, unsigned indent) const {
   context.printf(indent, "DedupTable");
   context.child(dedupTable(), indent + 2);
}

void CommListDedupTableBase::dumpTables(Kiv::DumpContext& context, unsigned indent,
                                        char const* title,
                                        std::initializer_list<LabelledTable> tables) {
   context.printf(indent, "%s\n", title);
   for (LabelledTable const& labelled : tables) {
      context.printf(indent + 2, "%s\n", labelled.label);
      context.child(labelled.table, indent + 4);
   }
}

std::string_view CommListDedupTable::fwkType() const noexcept {
   return "Routing::Bgp::CommListDedupTable";
}

std::string_view LargeCommListDedupTable::fwkType() const noexcept {
   return "Routing::Bgp::LargeCommListDedupTable";
}

CommListDedupTable::Ptr commListDedupTableFactory() {
   return Kiv::newNotifying<CommListDedupTable>();
}

LargeCommListDedupTable::Ptr largeCommListDedupTableFactory() {
   return Kiv::newNotifying<LargeCommListDedupTable>();
}

} // namespace Routing::Bgp
