#include "PathFilter.h"

#include "tools/mrt/AsPath.h"

#include <charconv>
#include <cstring>
#include <ctime>

namespace QorBgpTools {

namespace {

using mrt::detail::Address;
using mrt::detail::Prefix;

// Whether the first `bits` bits of `a` and `b` agree.
bool samePrefix(Address const& a, Address const& b, unsigned bits) {
   std::size_t const whole = bits / 8;
   if (std::memcmp(a.bytes.data(), b.bytes.data(), whole) != 0) {
      return false;
   }
   unsigned const rest = bits % 8;
   U8 const mask = static_cast<U8>(0xff00 >> rest);
   return rest == 0 || ((a.bytes[whole] ^ b.bytes[whole]) & mask) == 0;
}

// `prefix` with the bits past its length cleared.
Prefix network(Prefix prefix) {
   for (unsigned bit = prefix.length; bit < 128; ++bit) {
      prefix.address.bytes[bit / 8] &= static_cast<U8>(~(0x80 >> (bit % 8)));
   }
   return prefix;
}

std::string prefixText(Prefix const& prefix) {
   std::string out;
   mrt::detail::appendPrefix(out, prefix);
   return out;
}

// Unix seconds, or a UTC date with an optional time of day.
std::optional<U32> parseTime(std::string const& text) {
   U32 seconds = 0;
   auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), seconds);
   if (ec == std::errc() && end == text.data() + text.size()) {
      return seconds;
   }
   for (char const* format : {"%Y-%m-%dT%H:%M:%SZ", "%Y-%m-%dT%H:%M:%S", "%Y-%m-%d %H:%M:%S",
                              "%Y-%m-%dT%H:%MZ", "%Y-%m-%dT%H:%M", "%Y-%m-%d %H:%M", "%Y-%m-%d"}) {
      std::tm tm{};
      char const* rest = ::strptime(text.c_str(), format, &tm);
      if (rest && *rest == '\0') {
         std::time_t const t = ::timegm(&tm);
         if (t >= 0 && t <= std::time_t(UINT32_MAX)) {
            return static_cast<U32>(t);
         }
      }
   }
   return std::nullopt;
}

} // namespace

std::optional<PathFilter> PathFilter::make(PathFilterOptions const& options, std::string* error) {
   PathFilter filter;
   if (!options.prefix.empty()) {
      auto prefix = mrt::detail::parsePrefix(options.prefix);
      if (!prefix) {
         *error = "--prefix: not an IPv4 or IPv6 prefix: '" + options.prefix +
                  "' (e.g. 192.0.2.0/24, 2001:db8::/32)";
         return std::nullopt;
      }
      Prefix const net = network(*prefix);
      if (std::memcmp(net.address.bytes.data(), prefix->address.bytes.data(), 16) != 0) {
         *error = "--prefix: '" + options.prefix + "' has bits set past its length; did you mean " +
                  prefixText(net) + "?";
         return std::nullopt;
      }
      filter.prefix_ = net;
   } else if (options.moreSpecific || options.lessSpecific) {
      *error = "--more-specific and --less-specific need --prefix";
      return std::nullopt;
   }
   filter.moreSpecific_ = options.moreSpecific;
   filter.lessSpecific_ = options.lessSpecific;
   if (!options.peer.empty()) {
      filter.peer_ = mrt::detail::parseAddress(options.peer);
      if (!filter.peer_) {
         *error = "--peer: not an IPv4 or IPv6 address: '" + options.peer + "'";
         return std::nullopt;
      }
   }
   filter.peerAs_ = options.peerAs;
   filter.originAs_ = options.originAs;
   for (auto [text, into, name] : {std::tuple(&options.since, &filter.since_, "--since"),
                                   std::tuple(&options.until, &filter.until_, "--until")}) {
      if (text->empty()) {
         continue;
      }
      auto seconds = parseTime(*text);
      if (!seconds) {
         *error = std::string(name) + ": not a time: '" + *text +
                  "' (Unix seconds, or UTC as 2019-01-01 or 2019-01-01T00:05:00Z)";
         return std::nullopt;
      }
      *into = *seconds;
   }
   return filter;
}

bool PathFilter::accepts(mrt::Path const& path) const {
   if (path.timestamp < since_ || path.timestamp > until_) {
      return false;
   }
   if (peerAs_ && path.peerAs != *peerAs_) {
      return false;
   }
   if (peer_) {
      if (path.peerAddress != *peer_) {
         return false;
      }
   }
   if (prefix_) {
      auto prefix = path.route.ipPrefix();
      if (!prefix || prefix->address.family != prefix_->address.family) {
         return false;
      }
      bool const inside = prefix->length >= prefix_->length &&
                          samePrefix(prefix->address, prefix_->address, prefix_->length);
      bool const covering = prefix->length <= prefix_->length &&
                            samePrefix(prefix->address, prefix_->address, prefix->length);
      bool const exact = inside && prefix->length == prefix_->length;
      if (!exact && !(moreSpecific_ && inside) && !(lessSpecific_ && covering)) {
         return false;
      }
   }
   if (originAs_) {
      auto asPath = mrt::AsPath::of(path);
      if (!asPath || asPath->origin() != originAs_) {
         return false;
      }
   }
   return true;
}

} // namespace QorBgpTools
