#include "QorBgpCommunity/show/ExtCommCache.h"

namespace BgpShowCli {

ExtCommCache::~ExtCommCache() = default;

std::string_view ExtCommCache::lookup(U64 const& key, bool asdot) const noexcept {
   Map const& map = asdot ? extCommToAsdotString_ : extCommToString_;
   auto it = map.find(key);
   return it == map.end() || !it->second ? std::string_view() : std::string_view(*it->second);
}

void ExtCommCache::insert(U64 const& key, String text, bool asdot) {
   if (asdot) {
      extCommToAsdotStringIs(key, std::move(text));
   } else {
      extCommToStringIs(key, std::move(text));
   }
}

void ExtCommCache::is(Map& map, U64 key, String text) {
   auto [it, inserted] = map.try_emplace(key, text);
   if (!inserted && it->second != text) {
      it->second = std::move(text);
   }
}

ExtCommCache::Ptr extCommCacheFactory() { return Kiv::newNotifying<ExtCommCache>(); }

} // namespace BgpShowCli
