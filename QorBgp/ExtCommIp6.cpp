// ExtCommIp6, the IPv6-address-specific extended community value: its
// content, interning, the enumerations of its type and subtype octets and
// its text forms (the content text and its parse, the diagnostic form, the
// policy and UI forms, the StrepFormat selector's reflection text).
#include "QorBgpCommunity/QorBgp/ExtCommIp6.h"

#include "QorBgpCommunity/QorBgp/ExtCommIp6DedupTable.h"
#include "QorBgpCommunity/platform/Assert.h"
#include "QorBgpCommunity/platform/DynamicBuffer.h"
#include "QorBgpCommunity/platform/Errors.h"
#include "QorBgpCommunity/platform/Hash.h"
#include "QorBgpCommunity/platform/StreamState.h"
#include "QorBgpCommunity/platform/ValueText.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <ostream>
#include <sstream>

namespace Routing::Bgp {

QOR_ASSERT_UNIT("ExtCommIp6");

// clang-format off
KIV_ENUM_DEFINE(BgpExtCommIp6PktType, "Routing::Bgp::BgpExtCommIp6PktType",
                extCommOctetMemberLimit, QORBGP_EXT_COMM_IP6_PKT_TYPE)
KIV_ENUM_DEFINE(BgpExtCommIp6PktSubtypeTransIpv6Address,
                "Routing::Bgp::BgpExtCommIp6PktSubtypeTransIpv6Address",
                extCommOctetMemberLimit, QORBGP_EXT_COMM_IP6_PKT_SUBTYPE_TRANS_IPV6_ADDRESS)
KIV_ENUM_DEFINE(BgpExtCommIp6PktSubtypeNonTransIpv6Address,
                "Routing::Bgp::BgpExtCommIp6PktSubtypeNonTransIpv6Address",
                extCommOctetMemberLimit, QORBGP_EXT_COMM_IP6_PKT_SUBTYPE_NON_TRANS_IPV6_ADDRESS)
// clang-format on

U32 ExtCommIp6Content::hash() const noexcept {
   std::array<U8, 20> bytes;
   bytes[0] = type;
   bytes[1] = subtype;
   std::ranges::copy(addr.bytes(), bytes.begin() + 2);
   bytes[18] = static_cast<U8>(localAdmin);
   bytes[19] = static_cast<U8>(localAdmin >> 8);
   return Kiv::jenkinsOneAtATime(bytes);
}

ExtCommIp6::ExtCommIp6(ExtCommClassification classification,
                       ExtCommIp6Content const& content) noexcept
    : classification_(classification), content_(content) {}

ExtCommIp6::~ExtCommIp6() = default;

std::string_view ExtCommIp6::fwkType() const noexcept { return "Routing::Bgp::ExtCommIp6"; }

U32 ExtCommIp6::hash() const noexcept { return content_.hash(); }

bool ExtCommIp6::compare(Zup::DedupHandle const* other) const noexcept {
   return static_cast<ExtCommIp6 const*>(other)->content_ == content_;
}

bool ExtCommIp6::compareByContent(Zup::DedupContentHandle const& content) const noexcept {
   return static_cast<ExtCommIp6Content const&>(content) == content_;
}

BgpExtCommPktSubtype ExtCommIp6::pktSubtype() const noexcept { return BgpExtCommPktSubtype(); }

BgpExtCommIp6PktType ExtCommIp6::pktType() const noexcept {
   auto type = static_cast<BgpExtCommIp6PktType>(content_.type);
   return bgpIsValidEnumMember(type) ? type : extCommIp6PktTypeUnknown;
}

std::string ExtCommIp6::pktSubtypeTransIpv6AddressAsString() const {
   QOR_ASSERT_TEXT(extCommIp6PktTypeTransIpv6Address == pktType(),
                   "extCommIp6PktTypeTransIpv6Address_ == pktType()");
   QOR_ASSERT(!pktSubtype().isUnspecified());
   return extCommSubtypeString<BgpExtCommIp6PktSubtypeTransIpv6Address>(content_.subtype);
}

std::string ExtCommIp6::pktSubtypeNonTransIpv6AddressAsString() const {
   QOR_ASSERT_TEXT(extCommIp6PktTypeNonTransIpv6Address == pktType(),
                   "extCommIp6PktTypeNonTransIpv6Address_ == pktType()");
   QOR_ASSERT(!pktSubtype().isUnspecified());
   return extCommSubtypeString<BgpExtCommIp6PktSubtypeNonTransIpv6Address>(content_.subtype);
}

ExtCommIp6Subtyped::~ExtCommIp6Subtyped() = default;

std::string_view ExtCommIp6Subtyped::fwkType() const noexcept {
   return "Routing::Bgp::ExtCommIp6Subtyped";
}

BgpExtCommPktSubtype ExtCommIp6Subtyped::pktSubtype() const noexcept {
   return BgpExtCommPktSubtype(getContent().subtype);
}

ExtCommIp6::Ptr extCommIp6Factory(ExtCommClassification classification,
                                  ExtCommIp6Content const& content) {
   return Kiv::newNotifying<ExtCommIp6>(classification, content);
}

namespace {

constexpr U8 nonTransitiveBit = 0x40;

// "type=T;subtype=S;addr=A;localAdmin=L": 34 characters of labels and raw
// octets, up to 45 of address, up to 5 of decimal.
constexpr std::size_t contentTextCapacity = 96;
// "tttt-IP6(NT):" (13), the address (at most 45), then ":" and at most 5
// digits (6): the longest policy text fits exactly.
constexpr std::size_t policyTextCapacity = 64;
static_assert(13 + Qornet::Ip6Addr::maxStrepLength + 6 <= policyTextCapacity);

void appendContentText(Kiv::DynamicBufferInterface& buffer, ExtCommIp6Content const& content) {
   buffer.append("type=");
   buffer.append(static_cast<char>(content.type));
   buffer.append(";subtype=");
   buffer.append(static_cast<char>(content.subtype));
   buffer.append(";addr=");
   content.addr.appendStrep(buffer);
   buffer.append(";localAdmin=");
   buffer.appendDecimal(content.localAdmin);
}

// Takes "<label><value>" off the front of `text` and returns the value: the
// text up to `end`, or the rest when `end` is empty. Nothing when the label
// or the terminator is missing.
std::optional<std::string_view> takeField(std::string_view& text, std::string_view label,
                                          std::string_view end) {
   if (!text.starts_with(label)) {
      return std::nullopt;
   }
   text.remove_prefix(label.size());
   std::size_t stop = end.empty() ? text.size() : text.find(end);
   if (stop == std::string_view::npos) {
      return std::nullopt;
   }
   std::string_view value = text.substr(0, stop);
   text.remove_prefix(stop);
   return value;
}

template <class T>
std::optional<T> parseBounded(std::optional<std::string_view> text) {
   if (!text) {
      return std::nullopt;
   }
   auto value = Kiv::parseU64(*text);
   if (!value || *value > std::numeric_limits<T>::max()) {
      return std::nullopt;
   }
   return static_cast<T>(*value);
}

} // namespace

std::string valueToStrep(ExtCommIp6Content const& content) {
   Kiv::DynamicBuffer<contentTextCapacity> buffer;
   appendContentText(buffer, content);
   return buffer.str();
}

std::ostream& operator<<(std::ostream& os, ExtCommIp6Content const& content) {
   Kiv::StreamStateSaver saved(os);
   Kiv::DynamicBuffer<contentTextCapacity> buffer;
   appendContentText(buffer, content);
   return os.write(buffer.data(), static_cast<std::streamsize>(buffer.size()));
}

void ExtCommIp6Content::sequenceToValue(std::string_view text) {
   std::string_view rest = text;
   auto newType = parseBounded<U8>(takeField(rest, "type=", ";"));
   auto newSubtype = parseBounded<U8>(takeField(rest, ";subtype=", ";"));
   auto addrText = takeField(rest, ";addr=", ";");
   auto newAddr = addrText ? Qornet::Ip6Addr::parse(*addrText) : std::nullopt;
   auto newLocalAdmin = parseBounded<U16>(takeField(rest, ";localAdmin=", ""));
   if (!newType || !newSubtype || !newAddr || !newLocalAdmin) {
      throw Kiv::RangeError("not an ExtCommIp6Content text: '" + std::string(text) + "'");
   }
   type = *newType;
   subtype = *newSubtype;
   addr = *newAddr;
   localAdmin = *newLocalAdmin;
}

std::string ExtCommIp6::toStrepForPolicy(StrepFormat format) const {
   Kiv::DynamicBuffer<policyTextCapacity> buffer;
   if (format.strepFormatClassification() && format.strepFormatUI()) {
      addExtCommTypeAsString(buffer, "-IP6", content_.type, content_.subtype,
                             (content_.type & nonTransitiveBit) == 0);
      buffer.append(':');
   }
   content_.addr.appendStrep(buffer);
   buffer.append(':');
   buffer.appendDecimal(content_.localAdmin);
   return buffer.str();
}

void ExtCommIp6::formatDerivedType(std::ostream& os) const {
   os << '<' << stringValue(pktType());
   if (!pktSubtype().isUnspecified()) {
      os << ' ';
      formatSubtype(os);
   }
   // The number goes in as text, so that a caller's std::hex cannot change it.
   os << " addr=" << content_.addr << " localAdmin=" << std::to_string(content_.localAdmin) << '>';
}

void ExtCommIp6::formatSubtype(std::ostream& os) const {
   if (pktSubtype().isUnspecified()) {
      os << "unspecified";
      return;
   }
   switch (pktType()) {
   case extCommIp6PktTypeTransIpv6Address:
      os << pktSubtypeTransIpv6AddressAsString();
      return;
   case extCommIp6PktTypeNonTransIpv6Address:
      os << pktSubtypeNonTransIpv6AddressAsString();
      return;
   case extCommIp6PktTypeUnknown:
      os << "none";
      return;
   }
   QOR_ASSERT_TEXT(false, "unreachable: pktType() outside BgpExtCommIp6PktType");
}

std::string ExtCommIp6::toStrep() const {
   std::ostringstream os;
   os << *this;
   return std::move(os).str();
}

std::ostream& operator<<(std::ostream& os, ExtCommIp6 const* comm) {
   if (!comm) {
      return os << "NULL";
   }
   Kiv::StreamStateSaver saved(os);
   comm->formatDerivedType(os);
   return os;
}

std::ostream& operator<<(std::ostream& os, ExtCommIp6 const& comm) { return os << &comm; }

ExtCommIp6::PtrConst ExtCommIp6::dedupContent(ExtCommIp6DedupTable::RawPtrConst table,
                                              ExtCommIp6Content const& content) {
   Zup::DedupHashTable& hashTable = *table->dedupTable();
   if (auto found = hashTable.lookupByContentAs<ExtCommIp6>(content, content.hash())) {
      return found;
   }
   ExtCommIp6::PtrConst dedupHandle = table->parseExtCommRule()->parseExtendedCommunityIp6(content);
   QOR_ASSERT(dedupHandle);
   return hashTable.dedupAs<ExtCommIp6>(dedupHandle);
}

} // namespace Routing::Bgp
