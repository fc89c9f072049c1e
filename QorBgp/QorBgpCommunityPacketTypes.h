/// @file
/// Names of the type and subtype octets of an extended community.
///
/// BgpExtCommPktType names the type octet (the high-order type: bit 0x40 set
/// means non-transitive); each type that has a subtype octet has one subtype
/// enumeration. Member names are part of the library's text forms and are kept
/// exactly, including their irregular spellings (extCommPktSubtypeTransOpaqeUnknown,
/// extCommPktSubNonTransFourOctetAsUnknown).
///
/// Every enumeration has an Unknown member 0x100, a value that no wire octet can
/// equal. Membership (bgpIsValidEnumMember) accepts the named values below
/// 0x100, with one deliberate exception: the transitive two-octet-AS subtypes
/// accept nothing above 0x10, so extCommPktSubtypeNonTransTwoOctetAsLinkBandwidthAny
/// (0x14, link bandwidth of any transitivity) is never taken for a wire
/// subtype of that type. The non-transitive IPv4-address enumeration accepts
/// no value at all.
#pragma once

#include "QorBgpCommunity/platform/Enum.h"
#include "QorBgpCommunity/platform/Types.h"

namespace Routing::Bgp {

/// Membership limit of the subtype enumerations: every octet value.
inline constexpr U32 extCommOctetMemberLimit = 0xff;
/// Membership limit of the transitive two-octet-AS subtypes.
inline constexpr U32 extCommTransTwoOctetAsMemberLimit = 0x10;

#define QORBGP_EXT_COMM_PKT_TYPE(X)                                                      \
   X(extCommPktTypeTransTwoOctetAs, 0x00)                                                \
   X(extCommPktTypeTransIpv4Address, 0x01)                                               \
   X(extCommPktTypeTransFourOctetAs, 0x02)                                               \
   X(extCommPktTypeTransOpaque, 0x03)                                                    \
   X(extCommPktTypeTransQosMarking, 0x04)                                                \
   X(extCommPktTypeTransCosCapability, 0x05)                                             \
   X(extCommPktTypeTransEvpn, 0x06)                                                      \
   X(extCommPktTypeTransFlowspecRedirectNexthop, 0x08)                                   \
   X(extCommPktTypeNonTransTwoOctetAs, 0x40)                                             \
   X(extCommPktTypeNonTransIpv4Address, 0x41)                                            \
   X(extCommPktTypeNonTransFourOctetAs, 0x42)                                            \
   X(extCommPktTypeNonTransOpaque, 0x43)                                                 \
   X(extCommPktTypeNonTransQosMarking, 0x44)                                             \
   X(extCommPktTypeTransGeneric, 0x80)                                                   \
   X(extCommPktTypeTransGenericPart2, 0x81)                                              \
   X(extCommPktTypeTransGenericPart3, 0x82)                                              \
   X(extCommPktTypeUnknown, 0x100)

#define QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_TWO_OCTET_AS(X)                                \
   X(extCommPktSubtypeTransTwoOctetAsRouteTarget, 0x02)                                  \
   X(extCommPktSubtypeTransTwoOctetAsRouteOrigin, 0x03)                                  \
   X(extCommPktSubtypeTransTwoOctetAsOspfDomainIdentifier, 0x05)                         \
   X(extCommPktSubtypeTransTwoOctetAsBgpDataCollection, 0x08)                            \
   X(extCommPktSubtypeTransTwoOctetAsSourceAs, 0x09)                                     \
   X(extCommPktSubtypeTransTwoOctetAsL2VpnIdentifier, 0x0a)                              \
   X(extCommPktSubtypeTransTwoOctetAsCiscoVpnDistinguisher, 0x10)                        \
   X(extCommPktSubtypeNonTransTwoOctetAsLinkBandwidthAny, 0x14)                          \
   X(extCommPktSubtypeTransTwoOctetAsUnknown, 0x100)

#define QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_IPV4_ADDRESS(X)                                \
   X(extCommPktSubtypeTransIpv4AddressRouteTarget, 0x02)                                 \
   X(extCommPktSubtypeTransIpv4AddressRouteOrigin, 0x03)                                 \
   X(extCommPktSubtypeTransIpv4AddressOspfDomainIdentifier, 0x05)                        \
   X(extCommPktSubtypeTransIpv4AddressOspfRouteId, 0x07)                                 \
   X(extCommPktSubtypeTransIpv4AddressL2VpnIdentifier, 0x0a)                             \
   X(extCommPktSubtypeTransIpv4AddressVrfRouteImport, 0x0b)                              \
   X(extCommPktSubtypeTransIpv4AddressFlowspecRedirectIp, 0x0c)                          \
   X(extCommPktSubtypeTransIpv4AddressCiscoVpnDistinguisher, 0x10)                       \
   X(extCommPktSubtypeTransIpv4AddressUnknown, 0x100)

#define QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_FOUR_OCTET_AS(X)                               \
   X(extCommPktSubtypeTransFourOctetAsRouteTarget, 0x02)                                 \
   X(extCommPktSubtypeTransFourOctetAsRouteOrigin, 0x03)                                 \
   X(extCommPktSubtypeTransFourOctetAsGeneric, 0x04)                                     \
   X(extCommPktSubtypeTransFourOctetAsOspfDomainIdentifier, 0x05)                        \
   X(extCommPktSubtypeTransFourOctetAsBgpDataCollection, 0x08)                           \
   X(extCommPktSubtypeTransFourOctetAsSourceAs, 0x09)                                    \
   X(extCommPktSubtypeTransFourOctetAsCiscoVpnDistinguisher, 0x10)                       \
   X(extCommPktSubtypeTransFourOctetAsUnknown, 0x100)

#define QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_OPAQUE(X)                                      \
   X(extCommPktSubtypeTransOpaqueCostCommunity, 0x01)                                    \
   X(extCommPktSubtypeTransOpaqueOutboundRouteFilter, 0x03)                              \
   X(extCommPktSubtypeTransOpaqueOspfRouteType, 0x06)                                    \
   X(extCommPktSubtypeTransOpaqueColorExtendedCommunity, 0x0b)                           \
   X(extCommPktSubtypeTransOpaqueEncapsulationExtendedCommunity, 0x0c)                   \
   X(extCommPktSubtypeTransOpaqueDefaultGateway, 0x0d)                                   \
   X(extCommPktSubtypeTransOpaqeUnknown, 0x100)

#define QORBGP_EXT_COMM_PKT_SUBTYPE_EVPN(X)                                              \
   X(extCommPktSubtypeEvpnMacMobility, 0x00)                                             \
   X(extCommPktSubtypeEvpnEsiMplsLabel, 0x01)                                            \
   X(extCommPktSubtypeEvpnEsImport, 0x02)                                                \
   X(extCommPktSubtypeEvpnRouterMac, 0x03)                                               \
   X(extCommPktSubtypeEvpnLayer2Attributes, 0x04)                                        \
   X(extCommPktSubtypeEvpnEtree, 0x05)                                                   \
   X(extCommPktSubtypeEvpnDFElection, 0x06)                                              \
   X(extCommPktSubtypeEvpnNdFlags, 0x08)                                                 \
   X(extCommPktSubtypeEvpnMulticastFlags, 0x09)                                          \
   X(extCommPktSubtypeEvpnEviRtType0, 0x0a)                                              \
   X(extCommPktSubtypeEvpnEviRtType1, 0x0b)                                              \
   X(extCommPktSubtypeEvpnEviRtType2, 0x0c)                                              \
   X(extCommPktSubtypeEvpnUnknown, 0x100)

#define QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_FLOWSPEC_REDIRECT_NEXTHOP(X)                   \
   X(extCommPktSubtypeFlowspecRedirectNexthop, 0x00)                                     \
   X(extCommPktSubtypeFlowspecRedirectUnknown, 0x100)

#define QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_GENERIC(X)                                     \
   X(extCommPktSubtypeTransGenericFlowspecTrafficRate, 0x06)                             \
   X(extCommPktSubtypeTransGenericFlowspecTrafficAction, 0x07)                           \
   X(extCommPktSubtypeTransGenericFlowspecRedirectAs2Byte, 0x08)                         \
   X(extCommPktSubtypeTransGenericFlowspecTrafficRemarking, 0x09)                        \
   X(extCommPktSubtypeTransGenericLayer2InfoExtendedCommunity, 0x0a)                     \
   X(extCommPktSubtypeTransGenericEtreeInfo, 0x0b)                                       \
   X(extCommPktSubtypeTransGenericUnknown, 0x100)

#define QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_GENERIC_PART2(X)                               \
   X(extCommPktSubtypeTransGenericPart2FlowspecRedirectIpv4, 0x08)                       \
   X(extCommPktSubtypeTransGenericPart2Unknown, 0x100)

#define QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_GENERIC_PART3(X)                               \
   X(extCommPktSubtypeTransGenericPart3FlowspecRedirectAs4Byte, 0x08)                    \
   X(extCommPktSubtypeTransGenericPart3Unknown, 0x100)

#define QORBGP_EXT_COMM_PKT_SUBTYPE_NON_TRANS_TWO_OCTET_AS(X)                            \
   X(extCommPktSubtypeNonTransTwoOctetAsLinkBandwidth, 0x04)                             \
   X(extCommPktSubtypeNonTransTwoOctetAsVirtualNetworkIdentifier, 0x80)                  \
   X(extCommPktSubtypeNonTransTwoOctetAsUnknown, 0x100)

#define QORBGP_EXT_COMM_PKT_SUBTYPE_NON_TRANS_IPV4_ADDRESS(X)                            \
   X(extCommPktSubtypeNonTransIpv4AddressUnknown, 0x100)

#define QORBGP_EXT_COMM_PKT_SUBTYPE_NON_TRANS_FOUR_OCTET_AS(X)                           \
   X(extCommPktSubtypeNonTransFourOctetAsGeneric, 0x04)                                  \
   X(extCommPktSubNonTransFourOctetAsUnknown, 0x100)

#define QORBGP_EXT_COMM_PKT_SUBTYPE_NON_TRANS_OPAQUE(X)                                  \
   X(extCommPktSubtypeNonTransOriginValidationState, 0x00)                               \
   X(extCommPktSubtypeNonTransCostCommunity, 0x01)                                       \
   X(extCommPktSubtypeNonTransOpaqueUnknown, 0x100)

#define QORBGP_EXT_COMM_CLASSIFICATION(X)                                                \
   X(extCommClassificationUnSpecified, 0)                                                \
   X(extCommClassificationRouteTarget, 1)                                                \
   X(extCommClassificationRouteOrigin, 2)                                                \
   X(extCommClassificationEvpn, 3)                                                       \
   X(extCommClassificationTunnelEncap, 4)                                                \
   X(extCommClassificationDefaultGateway, 5)                                             \
   X(extCommClassificationFlowspec, 6)                                                   \
   X(extCommClassificationLinkBandwidth, 7)                                              \
   X(extCommClassificationColor, 8)                                                      \
   X(extCommClassificationOriginValidationState, 9)                                      \
   X(extCommClassificationOneBeyondLast, 10)

/// Declares the enumeration E from its X-macro LIST, with its glue.
#define QORBGP_EXT_COMM_ENUM(E, LIST)                                                    \
   enum QORBGP_EXPORT E : U32 { LIST(KIV_ENUMERATOR) };                                  \
   KIV_ENUM_GLUE(E)

QORBGP_EXT_COMM_ENUM(BgpExtCommPktType, QORBGP_EXT_COMM_PKT_TYPE);
QORBGP_EXT_COMM_ENUM(BgpExtCommPktSubtypeTransTwoOctetAs,
                     QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_TWO_OCTET_AS);
QORBGP_EXT_COMM_ENUM(BgpExtCommPktSubtypeTransIpv4Address,
                     QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_IPV4_ADDRESS);
QORBGP_EXT_COMM_ENUM(BgpExtCommPktSubtypeTransFourOctetAs,
                     QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_FOUR_OCTET_AS);
QORBGP_EXT_COMM_ENUM(BgpExtCommPktSubtypeTransOpaque, QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_OPAQUE);
QORBGP_EXT_COMM_ENUM(BgpExtCommPktSubtypeEvpn, QORBGP_EXT_COMM_PKT_SUBTYPE_EVPN);
QORBGP_EXT_COMM_ENUM(BgpExtCommPktSubtypeTransFlowspecRedirectNexthop,
                     QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_FLOWSPEC_REDIRECT_NEXTHOP);
QORBGP_EXT_COMM_ENUM(BgpExtCommPktSubtypeTransGeneric, QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_GENERIC);
QORBGP_EXT_COMM_ENUM(BgpExtCommPktSubtypeTransGenericPart2,
                     QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_GENERIC_PART2);
QORBGP_EXT_COMM_ENUM(BgpExtCommPktSubtypeTransGenericPart3,
                     QORBGP_EXT_COMM_PKT_SUBTYPE_TRANS_GENERIC_PART3);
QORBGP_EXT_COMM_ENUM(BgpExtCommPktSubtypeNonTransTwoOctetAs,
                     QORBGP_EXT_COMM_PKT_SUBTYPE_NON_TRANS_TWO_OCTET_AS);
QORBGP_EXT_COMM_ENUM(BgpExtCommPktSubtypeNonTransIpv4Address,
                     QORBGP_EXT_COMM_PKT_SUBTYPE_NON_TRANS_IPV4_ADDRESS);
QORBGP_EXT_COMM_ENUM(BgpExtCommPktSubtypeNonTransFourOctetAs,
                     QORBGP_EXT_COMM_PKT_SUBTYPE_NON_TRANS_FOUR_OCTET_AS);
QORBGP_EXT_COMM_ENUM(BgpExtCommPktSubtypeNonTransOpaque,
                     QORBGP_EXT_COMM_PKT_SUBTYPE_NON_TRANS_OPAQUE);

/// The recognised kind of an extended community. extCommClassificationOneBeyondLast
/// is the count that sizes per-classification arrays, never a value's kind.
QORBGP_EXT_COMM_ENUM(ExtCommClassification, QORBGP_EXT_COMM_CLASSIFICATION);

} // namespace Routing::Bgp
