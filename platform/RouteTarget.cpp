#include "QorBgpCommunity/platform/RouteTarget.h"

#include "QorBgpCommunity/platform/Errors.h"
#include "QorBgpCommunity/platform/StreamState.h"
#include "QorBgpCommunity/platform/ValueText.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <ostream>

namespace Routing::Bgp {

namespace {

constexpr U64 max16 = std::numeric_limits<U16>::max();
constexpr U64 max32 = std::numeric_limits<U32>::max();
constexpr std::size_t maxHexDigits = 16;

// A decimal field no larger than `max`.
std::optional<U64> decimal(std::string_view text, U64 max) noexcept {
   auto value = Kiv::parseU64(text);
   if (!value || *value > max) {
      return std::nullopt;
   }
   return value;
}

std::optional<U64> hexWord(std::string_view digits) noexcept {
   U64 word = 0;
   auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), word, 16);
   if (digits.empty() || digits.size() > maxHexDigits || ec != std::errc() ||
       end != digits.data() + digits.size()) {
      return std::nullopt;
   }
   return word;
}

// "a.b.c.d" with four decimal octets.
std::optional<U32> dottedQuad(std::string_view text) noexcept {
   U32 address = 0;
   for (int i = 0; i < 4; ++i) {
      std::size_t const dot = i < 3 ? text.find('.') : text.size();
      auto const octet = decimal(text.substr(0, dot), 0xff);
      if (!octet || dot == std::string_view::npos) {
         return std::nullopt;
      }
      address = address << 8 | static_cast<U32>(*octet);
      text.remove_prefix(std::min(dot + 1, text.size()));
   }
   return address;
}

} // namespace

std::optional<RouteTarget> RouteTarget::parse(std::string_view text) noexcept {
   if (text.starts_with("0x")) {
      auto const word = hexWord(text.substr(2));
      return word ? std::optional(RouteTarget(*word)) : std::nullopt;
   }
   std::size_t const colon = text.find(':');
   if (colon == std::string_view::npos) {
      return std::nullopt;
   }
   std::string_view const admin = text.substr(0, colon);
   auto const local = decimal(text.substr(colon + 1), max32);
   if (!local) {
      return std::nullopt;
   }
   bool const local16 = *local <= max16;
   switch (std::count(admin.begin(), admin.end(), '.')) {
   case 0:
      if (admin.ends_with('L')) {
         auto const as = decimal(admin.substr(0, admin.size() - 1), max32);
         if (as && local16) {
            return fourOctetAs(static_cast<U32>(*as), static_cast<U16>(*local));
         }
      } else if (auto const as = decimal(admin, max32)) {
         if (*as <= max16) {
            return twoOctetAs(static_cast<U16>(*as), static_cast<U32>(*local));
         }
         if (local16) {
            return fourOctetAs(static_cast<U32>(*as), static_cast<U16>(*local));
         }
      }
      return std::nullopt;
   case 1: {
      std::size_t const dot = admin.find('.');
      auto const high = decimal(admin.substr(0, dot), max16);
      auto const low = decimal(admin.substr(dot + 1), max16);
      if (!high || !low || !local16) {
         return std::nullopt;
      }
      return fourOctetAs(static_cast<U32>(*high << 16 | *low), static_cast<U16>(*local));
   }
   case 3: {
      auto const address = dottedQuad(admin);
      if (!address || !local16) {
         return std::nullopt;
      }
      return ipv4Address(*address, static_cast<U16>(*local));
   }
   default:
      return std::nullopt;
   }
}

RouteTarget RouteTarget::fromStrep(std::string_view text) {
   if (auto rt = parse(text)) {
      return *rt;
   }
   throw Kiv::RangeError("invalid RouteTarget text '" + std::string(text) + "'");
}

void RouteTarget::appendStrep(Kiv::DynamicBufferInterface& buffer, bool asdot) const {
   if (subtype() == subtypeRouteTarget) {
      switch (type()) {
      case typeTwoOctetAs:
         buffer.appendDecimal(static_cast<U16>(word_ >> 32));
         buffer.append(':');
         buffer.appendDecimal(static_cast<U32>(word_));
         return;
      case typeIpv4Address:
         for (int shift = 40; shift >= 16; shift -= 8) {
            buffer.appendDecimal(static_cast<U8>(word_ >> shift));
            buffer.append(shift > 16 ? '.' : ':');
         }
         buffer.appendDecimal(static_cast<U16>(word_));
         return;
      case typeFourOctetAs: {
         U32 const as = static_cast<U32>(word_ >> 16);
         if (as <= max16) {
            buffer.appendDecimal(as);
            buffer.append('L');
         } else if (asdot) {
            buffer.appendDecimal(as >> 16);
            buffer.append('.');
            buffer.appendDecimal(as & max16);
         } else {
            buffer.appendDecimal(as);
         }
         buffer.append(':');
         buffer.appendDecimal(static_cast<U16>(word_));
         return;
      }
      default:
         break;
      }
   }
   buffer.append("0x");
   for (int shift = 56; shift >= 0; shift -= 8) {
      buffer.appendHex2(static_cast<U8>(word_ >> shift));
   }
}

std::string RouteTarget::toStrep(bool asdot) const {
   Kiv::DynamicBuffer<maxStrepLength> buffer;
   appendStrep(buffer, asdot);
   return buffer.str();
}

std::string valueToStrep(RouteTarget rt) { return rt.toStrep(false); }

std::ostream& operator<<(std::ostream& os, RouteTarget rt) {
   Kiv::StreamStateSaver saved(os);
   Kiv::DynamicBuffer<RouteTarget::maxStrepLength> buffer;
   rt.appendStrep(buffer);
   return os.write(buffer.data(), static_cast<std::streamsize>(buffer.size()));
}

} // namespace Routing::Bgp
