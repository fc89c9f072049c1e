/// @file
/// Interning tables for published community lists: one list object per
/// distinct set of communities, shared by every path that carries that set.
/// CommListDedupTable holds standard lists, LargeCommListDedupTable large ones;
/// the extended-list table derives from the same base.
///
/// @code{.cpp}
///   auto table = commListDedupTableFactory();
///   CommList::PtrConst canonical = table->dedupAs(list);   // list, or the equal resident one
/// @endcode
///
/// Created multi-threaded when QorBgpGlobals::multiThreaded() is on; then two
/// threads publishing equal lists end with one resident object.
#pragma once

#include "QorBgpCommunity/platform/QorBgpGlobals.h"

#include <initializer_list>
#include <string_view>

namespace Kiv {
class DumpContext;
}

namespace Routing::Bgp {

/// Base of the interning tables of published community lists.
class QORBGP_EXPORT CommListDedupTableBase : public BasicDedupTable_ {
 public:
   KIV_POINTER_TYPES(CommListDedupTableBase);

   ~CommListDedupTableBase() override;
   virtual std::string_view fwkType() const noexcept = 0;

   /// The resident list equal to `handle` (by its hash() and compare()), or
   /// `handle` itself, now interned. The caller continues with the result.
   Zup::DedupHandle::Ptr dedup(Zup::DedupHandle::Ptr const& handle) const;
   template <class List>
   Kiv::Ptr<List const> dedupAs(Kiv::Ptr<List const> const& list) const {
      return dedupTable()->dedupAs<List>(list);
   }

   /// "DedupTable" (no line end), then the hash table as a child at indent + 2.
   virtual void dumpState(Kiv::DumpContext& context, unsigned indent) const;

 protected:
   CommListDedupTableBase() noexcept = default;

   /// One labelled hash table of a table set, for dumpState.
   struct LabelledTable {
      char const* label;
      Zup::DedupHashTable::Ptr const& table;
   };
   /// "<title>", then at indent + 2 each label, each followed by its table as
   /// a child at indent + 4.
   static void dumpTables(Kiv::DumpContext& context, unsigned indent, char const* title,
                          std::initializer_list<LabelledTable> tables);
};

/// The interning table of published standard community lists.
class QORBGP_EXPORT CommListDedupTable final : public CommListDedupTableBase {
 public:
   KIV_POINTER_TYPES(CommListDedupTable);
   std::string_view fwkType() const noexcept override;
};

/// The interning table of published large community lists.
class QORBGP_EXPORT LargeCommListDedupTable final : public CommListDedupTableBase {
 public:
   KIV_POINTER_TYPES(LargeCommListDedupTable);
   std::string_view fwkType() const noexcept override;
};

/// New tables with notification enabled.
///@{
QORBGP_EXPORT CommListDedupTable::Ptr commListDedupTableFactory();
QORBGP_EXPORT LargeCommListDedupTable::Ptr largeCommListDedupTableFactory();
///@}

} // namespace Routing::Bgp
