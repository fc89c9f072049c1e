/// @file
/// Enumerations that name BGP path attributes and their parts: attribute type
/// codes with their display names, the attribute flags octet, ORIGIN codes,
/// the local origin kind of a path and the TLV types of the Prefix-SID
/// attribute. Each one carries the library's enumeration glue (stringValue,
/// valueToStrep, bgpIsValidEnumMember, operator<<, `<Enum>Instance` from a
/// number or from text); see platform/Enum.h.
#pragma once

#include "QorBgpCommunity/platform/Enum.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Types.h"

#include <string_view>

namespace Routing::Bgp {

/// Path attribute type codes (the attribute header's type octet). Values with
/// no member here (11, 19-21, 24, ...) are still valid octets on the wire; they
/// render as their decimal number and display as "Invalid attribute".
#define QORBGP_BGP_PATH_ATTR_TYPE_MEMBERS(X)                                             \
   X(invalidPathAttr, 0)                                                                 \
   X(origin, 1)                                                                          \
   X(asPath, 2)                                                                          \
   X(nextHop, 3)                                                                         \
   X(multiExitDisc, 4)                                                                   \
   X(localPref, 5)                                                                       \
   X(atomicAggregate, 6)                                                                 \
   X(aggregator, 7)                                                                      \
   X(community, 8)                                                                       \
   X(originatorId, 9)                                                                    \
   X(clusterList, 10)                                                                    \
   X(advertiser, 12)                                                                     \
   X(rcidPath, 13)                                                                       \
   X(mpReachNlri, 14)                                                                    \
   X(mpUnreachNlri, 15)                                                                  \
   X(extCommunity, 16)                                                                   \
   X(as4Path, 17)                                                                        \
   X(as4Aggregator, 18)                                                                  \
   X(pmsiTunnel, 22)                                                                     \
   X(tunnelEncapsulation, 23)                                                            \
   X(extCommunityIp6, 25)                                                                \
   X(accumulatedIgpMetric, 26)                                                           \
   X(bgpLs, 29)                                                                          \
   X(largeCommunity, 32)                                                                 \
   X(domainPath, 36)                                                                     \
   X(prefixSid, 40)                                                                      \
   X(attrSet, 128)                                                                       \
   X(reservedForDevelopment, 255)

enum QORBGP_EXPORT BgpPathAttrType : U32 { QORBGP_BGP_PATH_ATTR_TYPE_MEMBERS(KIV_ENUMERATOR) };
KIV_ENUM_GLUE(BgpPathAttrType);

/// The name show commands print for an attribute type, e.g. "MED" for
/// multiExitDisc. Type 0 is "Invalid Path Attribute"; every value without a
/// member, including values above 255, is "Invalid attribute". The two texts
/// differ on purpose: the first names the reserved code, the second an unknown
/// one. The view refers to static storage.
QORBGP_EXPORT std::string_view bgpPathAttrTypeShowString(BgpPathAttrType type) noexcept;

/// Bits of the attribute flags octet, and the two combinations in common use.
/// Other combinations are valid flag words but not members: they render as
/// their decimal number and BgpPathAttrFlagInstance rejects them.
#define QORBGP_BGP_PATH_ATTR_FLAG_MEMBERS(X)                                             \
   X(extLen, 0x10)                                                                       \
   X(partial, 0x20)                                                                      \
   X(transitive, 0x40)                                                                   \
   X(opt, 0x80)                                                                          \
   X(optionalTransitive, 0xC0)                                                           \
   X(optionalTransitivePartial, 0xE0)

enum QORBGP_EXPORT BgpPathAttrFlag : U32 { QORBGP_BGP_PATH_ATTR_FLAG_MEMBERS(KIV_ENUMERATOR) };
KIV_ENUM_GLUE(BgpPathAttrFlag);

/// Combines flag bits without leaving the flag type, so that
/// `optionalTransitive | extLen` can be passed where a BgpPathAttrFlag is taken.
constexpr BgpPathAttrFlag operator|(BgpPathAttrFlag a, BgpPathAttrFlag b) noexcept {
   return static_cast<BgpPathAttrFlag>(static_cast<U32>(a) | static_cast<U32>(b));
}

/// Values of the ORIGIN attribute.
#define QORBGP_ORIGIN_CODE_MEMBERS(X)                                                    \
   X(originIgp, 0)                                                                       \
   X(originEgp, 1)                                                                       \
   X(originIncomplete, 2)

enum QORBGP_EXPORT OriginCode : U32 { QORBGP_ORIGIN_CODE_MEMBERS(KIV_ENUMERATOR) };
KIV_ENUM_GLUE(OriginCode);

/// How the local speaker came by a path. aspTypeMax is the count of kinds, not
/// a kind: it has a name (so it renders and parses from text) but fails
/// bgpIsValidEnumMember and AspTypeInstance(6).
#define QORBGP_ASP_TYPE_MEMBERS(X)                                                       \
   X(aspTypeLocal, 0)                                                                    \
   X(aspTypeAggregate, 1)                                                                \
   X(aspTypeDefaultOriginate, 2)                                                         \
   X(aspTypeEbgp, 3)                                                                     \
   X(aspTypeIbgp, 4)                                                                     \
   X(aspTypeConfedEbgp, 5)                                                               \
   X(aspTypeMax, 6)

enum QORBGP_EXPORT AspType : U32 { QORBGP_ASP_TYPE_MEMBERS(KIV_ENUMERATOR) };
KIV_ENUM_GLUE(AspType);

/// TLV types inside the BGP Prefix-SID attribute.
#define QORBGP_PREFIX_SID_TLV_TYPE_MEMBERS(X)                                            \
   X(invalidTlv, 0)                                                                      \
   X(labelIndexTlv, 1)                                                                   \
   X(ipv6SidTlv, 2)                                                                      \
   X(originatorSrgbTlv, 3)

enum QORBGP_EXPORT PrefixSidTlvType : U32 { QORBGP_PREFIX_SID_TLV_TYPE_MEMBERS(KIV_ENUMERATOR) };
KIV_ENUM_GLUE(PrefixSidTlvType);

/// Tunnel types of the BGP Tunnel Encapsulation attribute and of the tunnel
/// encapsulation extended community (the IANA "BGP Tunnel Encapsulation
/// Attribute Tunnel Types" registry, RFC 9012). The numbers are 16 bits on the
/// wire. Every assigned code is a member, the deprecated ones (3-6, 17)
/// included, so that a received code always renders by name; 0 (reserved) and
/// the unassigned codes from 25 up are not members.
#define QORBGP_TUNNEL_TYPE_MEMBERS(X)                                                    \
   X(tunnelTypeL2tpv3OverIp, 1)                                                          \
   X(tunnelTypeGre, 2)                                                                   \
   X(tunnelTypeTransmitTunnelEndpoint, 3)                                                \
   X(tunnelTypeIpsecInTunnelMode, 4)                                                     \
   X(tunnelTypeIpInIpWithIpsecTransportMode, 5)                                          \
   X(tunnelTypeMplsInIpWithIpsecTransportMode, 6)                                        \
   X(tunnelTypeIpInIp, 7)                                                                \
   X(tunnelTypeVxlan, 8)                                                                 \
   X(tunnelTypeNvgre, 9)                                                                 \
   X(tunnelTypeMpls, 10)                                                                 \
   X(tunnelTypeMplsInGre, 11)                                                            \
   X(tunnelTypeVxlanGpe, 12)                                                             \
   X(tunnelTypeMplsInUdp, 13)                                                            \
   X(tunnelTypeIpv6Tunnel, 14)                                                           \
   X(tunnelTypeSrPolicy, 15)                                                             \
   X(tunnelTypeBare, 16)                                                                 \
   X(tunnelTypeSrTunnel, 17)                                                             \
   X(tunnelTypeCloudSecurity, 18)                                                        \
   X(tunnelTypeGeneve, 19)                                                               \
   X(tunnelTypeAnyEncapsulation, 20)                                                     \
   X(tunnelTypeGtp, 21)                                                                  \
   X(tunnelTypeDpsTunnelEncapsulation, 22)                                               \
   X(tunnelTypeOriginatingPe, 23)                                                        \
   X(tunnelTypeDpsPolicy, 24)

enum QORBGP_EXPORT TunnelType : U32 { QORBGP_TUNNEL_TYPE_MEMBERS(KIV_ENUMERATOR) };
KIV_ENUM_GLUE(TunnelType);

} // namespace Routing::Bgp
