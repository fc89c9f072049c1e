// Which paths show and match look at: by prefix (exact, more or less
// specific), peer address, peer AS, origin AS and time. Every option is
// checked when the filter is made, so a bad one is a usage error before any
// file is read.
#pragma once

#include "tools/mrt/MrtReader.h"
#include "tools/mrt/MrtWire.h"

#include <optional>
#include <string>

namespace QorBgpTools {

struct PathFilterOptions {
   std::string prefix;        // "192.0.2.0/24", "2001:DB8::/32"; empty: any
   bool moreSpecific = false; // also the prefixes inside `prefix`
   bool lessSpecific = false; // also the prefixes that cover `prefix`
   std::string peer;          // peer address; empty: any
   std::optional<U32> peerAs;
   std::optional<U32> originAs;
   std::string since; // Unix seconds or UTC "2019-01-01", "2019-01-01T00:05[:00][Z]"
   std::string until; // as `since`; both ends included
};

// Immutable once made; accepts() is const and thread-safe.
class PathFilter {
 public:
   // nullopt with `*error` set (naming the option and what is wrong) when an
   // option does not parse; a prefix with bits set past its length is refused
   // with the prefix it probably means.
   static std::optional<PathFilter> make(PathFilterOptions const& options, std::string* error);

   // Whether `path` passes every option given. Paths whose prefix is not an
   // IPv4 or IPv6 prefix (VPN, EVPN, flowspec) never pass a prefix option;
   // paths without a known origin never pass an origin option.
   bool accepts(mrt::Path const& path) const;

 private:
   PathFilter() = default;
   std::optional<mrt::detail::Prefix> prefix_;
   bool moreSpecific_ = false, lessSpecific_ = false;
   std::optional<mrt::detail::Address> peer_;
   std::optional<U32> peerAs_, originAs_;
   U32 since_ = 0, until_ = UINT32_MAX;
};

} // namespace QorBgpTools
