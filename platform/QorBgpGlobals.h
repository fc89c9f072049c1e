/// @file
/// Agent-wide services the library relies on: the multi-threaded setting and
/// the basic interning table that value and list tables are built on.
#pragma once

#include "QorBgpCommunity/platform/DedupHashTable.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Ptr.h"

namespace Routing::Bgp {

/// The agent's global settings.
class QORBGP_EXPORT QorBgpGlobals {
 public:
   /// Whether interning tables are created in their multi-threaded form.
   static bool multiThreaded() noexcept;
   /// Set at start-up, before any table exists and before a second thread
   /// runs. Turning it on also makes reference counts atomic
   /// (Kiv::PtrInterface::threadSafeIs), which the multi-threaded tables need.
   static void multiThreadedIs(bool on) noexcept;
};

/// The basic interning table: owns one Zup::DedupHashTable, created in the
/// form that QorBgpGlobals::multiThreaded() selects when the table is made.
class QORBGP_EXPORT BasicDedupTable_ : public Kiv::PtrInterface {
 public:
   KIV_POINTER_TYPES(BasicDedupTable_);

   Zup::DedupHashTable::Ptr const& dedupTable() const noexcept { return dedupTable_; }

 protected:
   BasicDedupTable_();
   ~BasicDedupTable_() override;

 private:
   Zup::DedupHashTable::Ptr const dedupTable_;
};

} // namespace Routing::Bgp
