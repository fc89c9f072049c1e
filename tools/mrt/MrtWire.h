// Byte-level pieces shared by the MRT reader and writer: the record type and
// subtype numbers, a bounds-checked big-endian reader over a byte span,
// big-endian appenders, and the text forms of IP addresses and prefixes.
// Private to the qorbgp-mrt library (tests may use it to build records by hand).
#pragma once

#include "QorBgpCommunity/platform/Types.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace QorBgpTools::mrt::detail {

// MRT record types.
inline constexpr U16 kTableDump = 12;
inline constexpr U16 kTableDumpV2 = 13;
inline constexpr U16 kBgp4mp = 16;
inline constexpr U16 kBgp4mpEt = 17;

// Whether a record header of this type and subtype can be right: a record
// type in use (OSPFv2, TABLE_DUMP, TABLE_DUMP_V2, BGP4MP, IS-IS, OSPFv3 and
// their extended-timestamp variants; not the types deprecated before them)
// and, for the types read here, one of their subtypes.
constexpr bool isMrtHeader(U16 type, U16 subtype) {
   switch (type) {
   case kTableDump:
      return subtype == 1 || subtype == 2;
   case kTableDumpV2:
      return subtype >= 1 && subtype <= 12;
   case kBgp4mp:
   case kBgp4mpEt:
      return subtype <= 11;
   case 11:
   case 32:
   case 33:
   case 48:
   case 49:
      return true;
   default:
      return false;
   }
}

// TABLE_DUMP subtypes.
inline constexpr U16 kTableDumpIpv4 = 1;
inline constexpr U16 kTableDumpIpv6 = 2;

// TABLE_DUMP_V2 subtypes; the ADD-PATH ones are the plain ones plus kAddPathOffset.
inline constexpr U16 kPeerIndexTable = 1;
inline constexpr U16 kRibIpv4Unicast = 2;
inline constexpr U16 kRibIpv4Multicast = 3;
inline constexpr U16 kRibIpv6Unicast = 4;
inline constexpr U16 kRibIpv6Multicast = 5;
inline constexpr U16 kRibGeneric = 6;
inline constexpr U16 kAddPathOffset = 6;

// BGP4MP subtypes; the ADD-PATH message ones are 8..11 in the order of
// kMessage, kMessageAs4, kMessageLocal, kMessageAs4Local.
inline constexpr U16 kStateChange = 0;
inline constexpr U16 kMessage = 1;
inline constexpr U16 kMessageAs4 = 4;
inline constexpr U16 kStateChangeAs4 = 5;
inline constexpr U16 kMessageLocal = 6;
inline constexpr U16 kMessageAs4Local = 7;
inline constexpr U16 kMessageAddPath = 8;
inline constexpr U16 kMessageAs4AddPath = 9;
inline constexpr U16 kMessageLocalAddPath = 10;
inline constexpr U16 kMessageAs4LocalAddPath = 11;

inline constexpr std::size_t kMrtHeaderBytes = 12;
inline constexpr std::size_t kBgpMarkerBytes = 16;
inline constexpr std::size_t kBgpHeaderBytes = 19; // marker, length, type
inline constexpr U8 kBgpUpdate = 2;

inline constexpr U16 kAfiIpv4 = 1;
inline constexpr U16 kAfiIpv6 = 2;
inline constexpr U8 kSafiUnicast = 1;
inline constexpr U8 kSafiMulticast = 2;
inline constexpr U8 kSafiLabeled = 4;
inline constexpr U8 kSafiVpn = 128;
inline constexpr U8 kSafiVpnMulticast = 129;
inline constexpr U8 kSafiRouteTargetConstraint = 132;
inline constexpr U16 kAfiL2vpn = 25;
inline constexpr U8 kSafiEvpn = 70;
inline constexpr U8 kSafiFlowspec = 133;
inline constexpr U8 kSafiFlowspecVpn = 134;

inline constexpr U8 kAttrExtendedLength = 0x10;
inline constexpr U8 kAttrOptional = 0x80;
inline constexpr U8 kAttrMpReachNlri = 14;

// Reads big-endian fields from a byte span it does not own. A read past the
// end yields zero (or an empty span), reads nothing and sets a failure flag
// that stays set; callers read a whole structure and check ok() once.
class SpanReader {
 public:
   explicit SpanReader(std::span<const U8> data) noexcept : data_(data) {}

   U8 u8() noexcept { return static_cast<U8>(number(1)); }
   U16 u16() noexcept { return static_cast<U16>(number(2)); }
   U32 u32() noexcept { return static_cast<U32>(number(4)); }
   std::span<const U8> bytes(std::size_t n) noexcept {
      if (!take(n)) {
         return {};
      }
      return data_.subspan(pos_ - n, n);
   }
   void skip(std::size_t n) noexcept { take(n); }

   bool ok() const noexcept { return !failed_; }
   // Bytes left; zero once a read has failed.
   std::size_t remaining() const noexcept { return failed_ ? 0 : data_.size() - pos_; }
   std::span<const U8> rest() noexcept { return bytes(remaining()); }
   // Bytes read so far from the start of the span.
   std::size_t position() const noexcept { return pos_; }

 private:
   bool take(std::size_t n) noexcept {
      if (failed_ || n > data_.size() - pos_) {
         failed_ = true;
         return false;
      }
      pos_ += n;
      return true;
   }
   U32 number(std::size_t n) noexcept {
      if (!take(n)) {
         return 0;
      }
      U32 value = 0;
      for (std::size_t i = pos_ - n; i < pos_; ++i) {
         value = (value << 8) | data_[i];
      }
      return value;
   }

   std::span<const U8> data_;
   std::size_t pos_ = 0; // <= data_.size()
   bool failed_ = false;
};

inline void putU8(std::vector<U8>& out, U8 value) { out.push_back(value); }
inline void putU16(std::vector<U8>& out, U16 value) {
   out.insert(out.end(), {static_cast<U8>(value >> 8), static_cast<U8>(value)});
}
inline void putU32(std::vector<U8>& out, U32 value) {
   out.insert(out.end(), {static_cast<U8>(value >> 24), static_cast<U8>(value >> 16),
                          static_cast<U8>(value >> 8), static_cast<U8>(value)});
}
inline void putBytes(std::vector<U8>& out, std::span<const U8> bytes) {
   out.insert(out.end(), bytes.begin(), bytes.end());
}

enum class Family : U8 { ipv4, ipv6 };

constexpr std::size_t addressBytes(Family family) { return family == Family::ipv4 ? 4 : 16; }
constexpr unsigned maxPrefixLength(Family family) { return family == Family::ipv4 ? 32 : 128; }

// An address in network order; bytes past addressBytes(family) are zero.
struct Address {
   Family family = Family::ipv4;
   std::array<U8, 16> bytes{};

   friend bool operator==(Address const&, Address const&) = default;
};

struct Prefix {
   Address address;
   U8 length = 0; // <= maxPrefixLength(address.family)

   friend bool operator==(Prefix const&, Prefix const&) = default;
};

// Dotted quad for IPv4, the RFC 5952 form for IPv6. `bytes` holds at least
// addressBytes(family) bytes.
void appendAddress(std::string& out, Family family, std::span<const U8> bytes);
// "address/length".
void appendPrefix(std::string& out, Prefix const& prefix);

// "192.0.2.1" or "2001:db8::1"; nullopt for anything else.
std::optional<Address> parseAddress(std::string_view text);
// "192.0.2.0/24" or "2001:db8::/32"; nullopt when either part is bad or the
// length exceeds the family's. Bits past the length are kept as given.
std::optional<Prefix> parsePrefix(std::string_view text);

// The wire form of a prefix: a length octet and the ceil(length / 8) octets
// that hold it.
void putPrefix(std::vector<U8>& out, Prefix const& prefix);

// Concatenates strings and integers into one message text.
template <typename... Parts>
std::string cat(Parts const&... parts) {
   std::string out;
   auto add = [&out](auto const& part) {
      if constexpr (std::is_integral_v<std::decay_t<decltype(part)>>) {
         char buf[24];
         auto end = std::to_chars(buf, buf + sizeof buf, static_cast<U64>(part)).ptr;
         out.append(buf, end);
      } else {
         out.append(part);
      }
   };
   (add(parts), ...);
   return out;
}

} // namespace QorBgpTools::mrt::detail
