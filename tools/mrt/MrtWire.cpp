#include "tools/mrt/MrtWire.h"

#include <arpa/inet.h>

#include <cstring>

namespace QorBgpTools::mrt::detail {

namespace {

// Longest address text parseAddress accepts (an IPv6 address with an
// embedded dotted quad), plus the terminating NUL inet_pton needs.
constexpr std::size_t kAddressTextBytes = INET6_ADDRSTRLEN + 1;

} // namespace

void appendAddress(std::string& out, Family family, std::span<const U8> bytes) {
   char buf[INET6_ADDRSTRLEN];
   int af = family == Family::ipv4 ? AF_INET : AF_INET6;
   // inet_ntop cannot fail with a known family and a buffer of this size.
   inet_ntop(af, bytes.data(), buf, sizeof buf);
   out.append(buf);
}

void appendPrefix(std::string& out, Prefix const& prefix) {
   appendAddress(out, prefix.address.family, prefix.address.bytes);
   out.push_back('/');
   char buf[4];
   auto end = std::to_chars(buf, buf + sizeof buf, unsigned{prefix.length}).ptr;
   out.append(buf, end);
}

std::optional<Address> parseAddress(std::string_view text) {
   if (text.empty() || text.size() >= kAddressTextBytes) {
      return std::nullopt;
   }
   char buf[kAddressTextBytes];
   std::memcpy(buf, text.data(), text.size());
   buf[text.size()] = '\0';
   Address address;
   bool ipv6 = text.find(':') != std::string_view::npos;
   address.family = ipv6 ? Family::ipv6 : Family::ipv4;
   if (inet_pton(ipv6 ? AF_INET6 : AF_INET, buf, address.bytes.data()) != 1) {
      return std::nullopt;
   }
   return address;
}

std::optional<Prefix> parsePrefix(std::string_view text) {
   auto slash = text.find('/');
   if (slash == std::string_view::npos) {
      return std::nullopt;
   }
   auto address = parseAddress(text.substr(0, slash));
   auto digits = text.substr(slash + 1);
   unsigned length = 0;
   auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), length);
   if (!address || digits.empty() || ec != std::errc() || end != digits.data() + digits.size() ||
       length > maxPrefixLength(address->family)) {
      return std::nullopt;
   }
   return Prefix{*address, static_cast<U8>(length)};
}

void putPrefix(std::vector<U8>& out, Prefix const& prefix) {
   putU8(out, prefix.length);
   putBytes(out, std::span(prefix.address.bytes).first((prefix.length + 7u) / 8));
}

} // namespace QorBgpTools::mrt::detail
