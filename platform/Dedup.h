// Interning base: the handle that every interned object derives from.
//
// An interned ("deduped") object is the one shared object for its content; a
// DedupHashTable (added with the interning tables) finds it by content and
// hands it out. This header holds the parts that values need before any table
// exists: the content base and the handle's interface for equality, hashing
// and its deduped state.
#pragma once

#include "platform/Assert.h"
#include "platform/Export.h"
#include "platform/Ptr.h"
#include "platform/Types.h"

namespace Zup {

// Base of the content records that a table looks objects up by (for example
// an extended community's 64-bit word). It has no state and no ordering: each
// derived content defines its own equality and order.
struct QORBGP_EXPORT DedupContentHandle {};

class QORBGP_EXPORT DedupHandle : public Kiv::PtrInterface {
 public:
   KIV_POINTER_TYPES(DedupHandle);

   // Whether the handle is the canonical object of a table for its content.
   virtual bool isDeduped() const noexcept { return isDeduped_; }
   // Whether it has ever been the canonical object of a table.
   virtual bool everDeduped() const noexcept { return everDeduped_; }
   virtual void assertIsDeduped() const noexcept { QOR_ASSERT(isDeduped()); }

   // Content hash; equal contents hash equally.
   virtual U32 hash() const noexcept = 0;
   // Table equality: true when `other` holds the same content.
   virtual bool compare(DedupHandle const* other) const noexcept = 0;
   // True when `content`, read as this handle's content type, equals its own.
   virtual bool compareByContent(DedupContentHandle const& content) const noexcept = 0;

 protected:
   DedupHandle() noexcept = default;
   ~DedupHandle() override;

   void isDedupedIs(bool deduped) noexcept {
      isDeduped_ = deduped;
      everDeduped_ = everDeduped_ || deduped;
   }

 private:
   bool isDeduped_ = false;
   bool everDeduped_ = false;
};

} // namespace Zup
