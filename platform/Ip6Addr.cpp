#include "QorBgpCommunity/platform/Ip6Addr.h"

#include "QorBgpCommunity/platform/Errors.h"
#include "QorBgpCommunity/platform/StreamState.h"

#include <arpa/inet.h>

#include <cstring>
#include <ostream>

namespace Qornet {

static_assert(Ip6Addr::maxStrepLength + 1 == INET6_ADDRSTRLEN);

std::optional<Ip6Addr> Ip6Addr::parse(std::string_view text) noexcept {
   // inet_pton reads a C string: anything too long for an address, or with a
   // NUL inside that would cut it short, is rejected before the copy.
   if (text.size() > maxStrepLength || text.find('\0') != std::string_view::npos) {
      return std::nullopt;
   }
   char terminated[maxStrepLength + 1];
   std::memcpy(terminated, text.data(), text.size());
   terminated[text.size()] = '\0';
   Bytes bytes;
   if (inet_pton(AF_INET6, terminated, bytes.data()) != 1) {
      return std::nullopt;
   }
   return Ip6Addr(bytes);
}

Ip6Addr Ip6Addr::fromStrep(std::string_view text) {
   if (auto addr = parse(text)) {
      return *addr;
   }
   throw Kiv::RangeError("not an IPv6 address: '" + std::string(text) + "'");
}

void Ip6Addr::appendStrep(Kiv::DynamicBufferInterface& buffer) const {
   char text[INET6_ADDRSTRLEN];
   // Cannot fail: the family is supported and the buffer is large enough.
   inet_ntop(AF_INET6, bytes_.data(), text, sizeof text);
   buffer.append(std::string_view(text));
}

std::string Ip6Addr::toStrep() const {
   Kiv::DynamicBuffer<INET6_ADDRSTRLEN> buffer;
   appendStrep(buffer);
   return buffer.str();
}

std::ostream& operator<<(std::ostream& os, Ip6Addr const& addr) {
   Kiv::StreamStateSaver saved(os);
   Kiv::DynamicBuffer<INET6_ADDRSTRLEN> buffer;
   addr.appendStrep(buffer);
   return os.write(buffer.data(), static_cast<std::streamsize>(buffer.size()));
}

} // namespace Qornet
