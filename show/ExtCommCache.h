/// @file
/// BgpShowCli::ExtCommCache: the texts already produced for 8-octet extended
/// communities, so that show commands printing many routes format each
/// community once. Two independent maps, one for the default text and one for
/// the asdot text, both keyed by the community's 64-bit value. The cache never
/// formats: the caller formats on a miss and inserts. No bound, no eviction.
///
/// @code{.cpp}
///   auto cache = BgpShowCli::extCommCacheFactory();
///   std::string_view text = cache->lookup(word, asdot);
///   if (text.empty()) { cache->insert(word, comm->toStrepForUI(asdot, false, false), asdot); }
/// @endcode
///
/// Owned by one show-command thread; not synchronised.
#pragma once

#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Ptr.h"
#include "QorBgpCommunity/platform/Types.h"

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace BgpShowCli {

/// The texts already produced for 8-octet extended communities, default and asdot, keyed by
/// value.
class QORBGP_EXPORT ExtCommCache : public Kiv::PtrInterface {
 public:
   KIV_POINTER_TYPES(ExtCommCache);
   /// Texts are shared, not copied, between the cache and its callers.
   using String = std::shared_ptr<std::string const>;

   ExtCommCache() = default;
   ~ExtCommCache() override;

   /// The cached text of `key` in the map `asdot` selects; empty when absent.
   std::string_view lookup(U64 const& key, bool asdot) const noexcept;
   void insert(U64 const& key, String text, bool asdot);
   void insert(U64 const& key, std::string text, bool asdot) {
      insert(key, std::make_shared<std::string const>(std::move(text)), asdot);
   }

   /// Insert, or replace the text of an existing key (storing the very same
   /// shared text again changes nothing).
   ///@{
   void extCommToStringIs(U64 const& key, String text) { is(extCommToString_, key, std::move(text)); }
   void extCommToAsdotStringIs(U64 const& key, String text) {
      is(extCommToAsdotString_, key, std::move(text));
   }
   ///@}
   void extCommToStringDel(U64 const& key) { extCommToString_.erase(key); }
   void extCommToAsdotStringDel(U64 const& key) { extCommToAsdotString_.erase(key); }
   void extCommToStringDelAll() { extCommToString_.clear(); }
   void extCommToAsdotStringDelAll() { extCommToAsdotString_.clear(); }

   using Map = std::unordered_map<U64, String>;
   Map const& extCommToString() const noexcept { return extCommToString_; }
   Map const& extCommToAsdotString() const noexcept { return extCommToAsdotString_; }

 private:
   static void is(Map& map, U64 key, String text);

   Map extCommToString_;
   Map extCommToAsdotString_;
};

QORBGP_EXPORT ExtCommCache::Ptr extCommCacheFactory();

} // namespace BgpShowCli
