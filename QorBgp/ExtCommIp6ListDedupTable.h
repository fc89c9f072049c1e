/// @file
/// Interning of IPv6-address-specific extended community lists: one
/// ExtCommIp6List per distinct set of values, shared by every path that
/// carries that set.
///
/// ExtCommIp6ListDedupTable holds two tables: the lists themselves (the base's
/// dedupTable) and the classification lists of every classification. Unlike
/// the 8-octet list table it follows no route-target lifetimes: IPv6 values
/// never reach a route-target collection.
///
/// @code{.cpp}
///   auto table = extCommIp6ListDedupTableFactory();
///   ExtCommIp6List::PtrConst shared = list->dedup(table.get());   // continue with this
/// @endcode
///
/// Both tables are created multi-threaded when QorBgpGlobals::multiThreaded()
/// is on; then two threads publishing equal lists end with one resident object.
#pragma once

#include "QorBgpCommunity/QorBgp/QorBgpCommunityListDedupTable.h"

namespace Routing::Bgp {

/// The interning table of published IPv6-address-specific extended community lists.
class QORBGP_EXPORT ExtCommIp6ListDedupTable final : public CommListDedupTableBase {
 public:
   KIV_POINTER_TYPES(ExtCommIp6ListDedupTable);

   ExtCommIp6ListDedupTable();
   ~ExtCommIp6ListDedupTable() override;
   std::string_view fwkType() const noexcept override;

   /// The interned ExtCommIp6ClassificationLists, of every classification.
   Zup::DedupHashTable::Ptr const& extCommIp6ClassificationListDedupTable() const noexcept {
      return extCommIp6ClassificationListDedupTable_;
   }

   /// "ExtCommIp6ListDedupTable", then at indent + 2 the labels extCommIp6
   /// (the list table) and extCommIp6Classification, each followed by its
   /// table as a child at indent + 4.
   void dumpState(Kiv::DumpContext& context, unsigned indent) const override;

 private:
   /// Creates the classification-list table; run by the constructor once the
   /// base has made the list table.
   void handleInitialized();

   Zup::DedupHashTable::Ptr extCommIp6ClassificationListDedupTable_;
};

/// A new table with notification on.
QORBGP_EXPORT ExtCommIp6ListDedupTable::Ptr extCommIp6ListDedupTableFactory();

} // namespace Routing::Bgp
