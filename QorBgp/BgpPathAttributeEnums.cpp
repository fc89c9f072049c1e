#include "QorBgpCommunity/QorBgp/BgpPathAttributeEnums.h"

namespace Routing::Bgp {

KIV_ENUM_DEFINE(BgpPathAttrType, "Routing::Bgp::BgpPathAttrType", Kiv::noMemberLimit,
                QORBGP_BGP_PATH_ATTR_TYPE_MEMBERS)
KIV_ENUM_DEFINE(BgpPathAttrFlag, "Routing::Bgp::BgpPathAttrFlag", Kiv::noMemberLimit,
                QORBGP_BGP_PATH_ATTR_FLAG_MEMBERS)
KIV_ENUM_DEFINE(OriginCode, "Routing::Bgp::OriginCode", Kiv::noMemberLimit,
                QORBGP_ORIGIN_CODE_MEMBERS)
// The bound aspTypeMax is named but lies above the limit of valid kinds.
KIV_ENUM_DEFINE(AspType, "Routing::Bgp::AspType", aspTypeConfedEbgp, QORBGP_ASP_TYPE_MEMBERS)
KIV_ENUM_DEFINE(PrefixSidTlvType, "Routing::Bgp::PrefixSidTlvType", Kiv::noMemberLimit,
                QORBGP_PREFIX_SID_TLV_TYPE_MEMBERS)

std::string_view bgpPathAttrTypeShowString(BgpPathAttrType type) noexcept {
   // Every member is listed (-Wswitch keeps it so); values without a member
   // fall through to the text for unknown codes.
   switch (type) {
   case invalidPathAttr: return "Invalid Path Attribute";
   case origin: return "Origin";
   case asPath: return "AS Path";
   case nextHop: return "Nexthop";
   case multiExitDisc: return "MED";
   case localPref: return "Local Preference";
   case atomicAggregate: return "Atomic Aggregator";
   case aggregator: return "Aggregator";
   case community: return "Community";
   case originatorId: return "Originator ID";
   case clusterList: return "Cluster List";
   case advertiser: return "Advertiser";
   case rcidPath: return "RCID Path";
   case mpReachNlri: return "MP Reach NLRI";
   case mpUnreachNlri: return "MP Unreach NLRI";
   case extCommunity: return "Extended Community";
   case as4Path: return "AS4 Path";
   case as4Aggregator: return "AS4 Aggregator";
   case pmsiTunnel: return "PMSI Tunnel";
   case tunnelEncapsulation: return "Tunnel Encapsulation";
   case extCommunityIp6: return "IPv6 Address Specific Extended Community";
   case accumulatedIgpMetric: return "Accumulated IGP Metric";
   case bgpLs: return "Link State";
   case largeCommunity: return "Large Community";
   case domainPath: return "Domain Path";
   case prefixSid: return "BGP Prefix-SID";
   case attrSet: return "Attribute Set";
   case reservedForDevelopment: return "Reserved for Development";
   }
   return "Invalid attribute";
}

KIV_ENUM_DEFINE(TunnelType, "Routing::Bgp::TunnelType", Kiv::noMemberLimit,
                QORBGP_TUNNEL_TYPE_MEMBERS)

} // namespace Routing::Bgp
