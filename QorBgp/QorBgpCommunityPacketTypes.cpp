#include "QorBgpCommunity/QorBgp/QorBgpCommunityPacketTypes.h"

namespace Routing::Bgp {

// clang-format off
KIV_ENUM_DEFINE(BgpExtCommPktType, "Routing::Bgp::BgpExtCommPktType",
                extCommOctetMemberLimit, QORBGP_EXT_COMM_PKT_TYPE)
KIV_ENUM_DEFINE(BgpExtCommPktSubtypeTransTwoOctetAs,
                "Routing::Bgp::BgpExtCommPktSubtypeTransTwoOctetAs",
                extCommTransTwoOctetAsMemberLimit, QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_TWO_OCTET_AS)
KIV_ENUM_DEFINE(BgpExtCommPktSubtypeTransIpv4Address,
                "Routing::Bgp::BgpExtCommPktSubtypeTransIpv4Address",
                extCommOctetMemberLimit, QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_IPV4_ADDRESS)
KIV_ENUM_DEFINE(BgpExtCommPktSubtypeTransFourOctetAs,
                "Routing::Bgp::BgpExtCommPktSubtypeTransFourOctetAs",
                extCommOctetMemberLimit, QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_FOUR_OCTET_AS)
KIV_ENUM_DEFINE(BgpExtCommPktSubtypeTransOpaque, "Routing::Bgp::BgpExtCommPktSubtypeTransOpaque",
                extCommOctetMemberLimit, QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_OPAQUE)
KIV_ENUM_DEFINE(BgpExtCommPktSubtypeEvpn, "Routing::Bgp::BgpExtCommPktSubtypeEvpn",
                extCommOctetMemberLimit, QORBGP_EXT_COMM_PKT_SUBTYPE_EVPN)
KIV_ENUM_DEFINE(BgpExtCommPktSubtypeTransFlowspecRedirectNexthop,
                "Routing::Bgp::BgpExtCommPktSubtypeTransFlowspecRedirectNexthop",
                extCommOctetMemberLimit, QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_FLOWSPEC_REDIRECT_NEXTHOP)
KIV_ENUM_DEFINE(BgpExtCommPktSubtypeTransGeneric, "Routing::Bgp::BgpExtCommPktSubtypeTransGeneric",
                extCommOctetMemberLimit, QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_GENERIC)
KIV_ENUM_DEFINE(BgpExtCommPktSubtypeTransGenericPart2,
                "Routing::Bgp::BgpExtCommPktSubtypeTransGenericPart2",
                extCommOctetMemberLimit, QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_GENERIC_PART2)
KIV_ENUM_DEFINE(BgpExtCommPktSubtypeTransGenericPart3,
                "Routing::Bgp::BgpExtCommPktSubtypeTransGenericPart3",
                extCommOctetMemberLimit, QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_GENERIC_PART3)
KIV_ENUM_DEFINE(BgpExtCommPktSubtypeNonTransTwoOctetAs,
                "Routing::Bgp::BgpExtCommPktSubtypeNonTransTwoOctetAs",
                extCommOctetMemberLimit, QORBGP_EXT_COMM_PKT_SUBTYPE_NON_TRANS_TWO_OCTET_AS)
KIV_ENUM_DEFINE(BgpExtCommPktSubtypeNonTransIpv4Address,
                "Routing::Bgp::BgpExtCommPktSubtypeNonTransIpv4Address",
                extCommOctetMemberLimit, QORBGP_EXT_COMM_PKT_SUBTYPE_NON_TRANS_IPV4_ADDRESS)
KIV_ENUM_DEFINE(BgpExtCommPktSubtypeNonTransFourOctetAs,
                "Routing::Bgp::BgpExtCommPktSubtypeNonTransFourOctetAs",
                extCommOctetMemberLimit, QORBGP_EXT_COMM_PKT_SUBTYPE_NON_TRANS_FOUR_OCTET_AS)
KIV_ENUM_DEFINE(BgpExtCommPktSubtypeNonTransOpaque,
                "Routing::Bgp::BgpExtCommPktSubtypeNonTransOpaque",
                extCommOctetMemberLimit, QORBGP_EXT_COMM_PKT_SUBTYPE_NON_TRANS_OPAQUE)
KIV_ENUM_DEFINE(ExtCommClassification, "Routing::Bgp::ExtCommClassification",
                extCommClassificationOneBeyondLast - 1, QORBGP_EXT_COMM_CLASSIFICATION)
// clang-format on

} // namespace Routing::Bgp
