#include "QorBgpCommunity/QorBgp/RouteTargetPrefix.h"

#include "QorBgpCommunity/platform/Assert.h"
#include "QorBgpCommunity/platform/Errors.h"
#include "QorBgpCommunity/platform/Hash.h"
#include "QorBgpCommunity/platform/StreamState.h"
#include "QorBgpCommunity/platform/ValueText.h"

#include <algorithm>
#include <bit>
#include <ostream>

namespace Routing::Bgp {

QOR_ASSERT_UNIT("RouteTargetPrefix");

namespace {

constexpr std::string_view typeName = "Routing::Bgp::RouteTargetPrefix";

[[noreturn]] void lengthOutOfRange() {
   throw Kiv::RangeError("RouteTargetPrefix::length < 0 or > 64 not allowed");
}

} // namespace

RouteTargetPrefix::RouteTargetPrefix(RouteTarget prefix, std::size_t bitlen) : prefix_(prefix) {
   bitlenIs(bitlen);
}

RouteTargetPrefix::RouteTargetPrefix(std::string_view valueText) {
   Kiv::ValueTextReader in(valueText, typeName);
   std::string_view const prefixText = in.field("prefix");
   auto const prefix = RouteTarget::parse(prefixText);
   if (!prefix) {
      throw Kiv::RangeError("malformed value text of " + std::string(typeName) +
                            ": field 'prefix' is not a route target: " + std::string(prefixText));
   }
   U64 const length = in.u64Field("length");
   in.finish();
   if (length > maxBitlen) {
      lengthOutOfRange();
   }
   prefix_ = *prefix;
   bitlenIs(length);
}

void RouteTargetPrefix::bitlenIs(std::size_t bitlen) {
   // clang-format off
   QOR_ASSERT(0 == ( bitlen >> 8 ));
   // clang-format on
   // The length is stored before it is checked, and a rejected one leaves the
   // prefix unmasked: callers rely on this order.
   if (bitlen != length_) {
      length_ = static_cast<U8>(bitlen);
   }
   if (bitlen > maxBitlen) {
      lengthOutOfRange();
   }
   prefix_ = RouteTarget(prefix_.word() & mask());
}

bool RouteTargetPrefix::extractBit(unsigned bit) const {
   QOR_ASSERT(bit < maxBitlen);
   return (prefix_.word() >> (maxBitlen - 1 - bit)) & 1u;
}

U64 RouteTargetPrefix::mask() const noexcept {
   if (length_ == 0) {
      return 0;
   }
   return ~U64{0} << (maxBitlen - std::min<unsigned>(length_, maxBitlen));
}

unsigned RouteTargetPrefix::commonPrefixLen(RouteTargetPrefix const& other) const noexcept {
   unsigned common = std::min(length_, other.length_);
   U64 const differing = prefix_.word() ^ other.prefix_.word();
   if (differing != 0) {
      common = std::min(common, static_cast<unsigned>(std::countl_zero(differing)));
   }
   return common;
}

U32 RouteTargetPrefix::hash(U32 seed) const noexcept {
   return Kiv::hashU64(length_, prefix_.hash(seed));
}

std::string RouteTargetPrefix::toStrep(bool asdot) const {
   if (prefix_.word() == 0 && length_ == 0) {
      return "0/0";
   }
   Kiv::DynamicBuffer<RouteTarget::maxStrepLength + 4> buffer;
   prefix_.appendStrep(buffer, asdot);
   buffer.append('/');
   buffer.appendDecimal(length_);
   return buffer.str();
}

std::string valueToStrep(RouteTargetPrefix const& prefix) {
   return Kiv::ValueTextWriter(typeName)
      .field("prefix", valueToStrep(prefix.prefix()))
      .field("length", U64{prefix.bitlen()})
      .finish();
}

std::ostream& operator<<(std::ostream& os, RouteTargetPrefix const& prefix) {
   Kiv::StreamStateSaver saved(os);
   return os << prefix.toStrep();
}

} // namespace Routing::Bgp
