#include "QorBgp/ExtCommIp6.h"

#include "platform/Assert.h"
#include "platform/Hash.h"

#include <algorithm>
#include <array>

namespace Routing::Bgp {

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

} // namespace Routing::Bgp
