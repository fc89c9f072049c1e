// Community values read back from the texts qorbgp-comm prints. Every form
// that decode and show write (standardText, largeText, extendedText and
// ip6Text of PathLists.h) has one parser here that inverts its printer, so
// that `decode` output given to `encode` gives the attribute back.
//
// A printed form that leaves value bits out reads back with those bits zero:
// DefaultGateway, TunnelEncap and Origin-Validation-State keep only what
// they name, Color the two colour-only bits and the colour, and a link
// bandwidth in a unit ("10Gbps") the float nearest to the rounded rate. The
// hexadecimal forms ("0x" and 16 digits, or the type digits and six octets)
// carry every bit.
//
//   auto tables = communityTablesFactory();
//   auto encoded = encodeCommunityText(*tables, CommunityKind::extended,
//                                      "Route-Target-AS:65000:100 Color:CO(00):7");
//   encoded.attribute;   // flags, type 16, length 16, the two values
#pragma once

#include "QorBgpCommunity/QorBgp/ExtCommIp6.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"
#include "QorBgpCommunity/platform/CommunityValue.h"
#include "QorBgpCommunity/platform/Types.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace QorBgpTools {

enum class CommunityKind { standard, large, extended, ip6 };

// "standard", "large", "extended" or "ipv6"; nothing for any other name.
std::optional<CommunityKind> communityKindNamed(std::string_view name);

// The words of a list's text, one per value: split at blanks and commas,
// except that the six octets of the generic extended form ("0002:0xfd 0xe8
// 0x00 0x00 0x00 0x64") stay one word. Empty for empty or blank text.
std::vector<std::string_view> communityWords(std::string_view text);

// One value each, from one word. Nothing for text that is no printed form of
// the kind, or whose fields are out of range.
//
// Standard: "65000:100", or a well-known name as CommList::wellKnownName
// gives it (so "llgr-stale" and "no-llgr" only while their names are on).
std::optional<U32> parseStandardCommunity(std::string_view word);
// Large: "4200000000:1:2", or the global administrator in asdot, "64086.59904:1:2".
std::optional<Acl::CommunityValue> parseLargeCommunity(std::string_view word);
// Extended, as a content word: every toStrepForUI form (asdot or not, link
// bandwidth weighted or not), and the command-line shorthands "RT:<route
// target>", "SoO:<route target>" (RouteTarget::parse) and "0x" followed by
// 16 hexadecimal digits.
std::optional<U64> parseExtendedCommunity(std::string_view word);
// IPv6-address-specific: ip6ValueText's form, "0002-IP6:2001:db8::1:100",
// "0000-IP6(NT):::1:7".
std::optional<Routing::Bgp::ExtCommIp6Content> parseIp6Community(std::string_view word);

struct EncodedCommunities {
   // The whole attribute, header included, every value in the list's order;
   // empty when a word did not parse or there was none.
   std::string attribute;
   // The first word that is no value of the kind (a view into the text).
   std::string_view badWord;
   // The bytes the values would take when that is more than an attribute
   // holds (65535); then `attribute` is empty.
   std::size_t oversize = 0;
};

// The attribute of the communities of `kind` in `text` (words as
// communityWords splits them), interned through `tables`. Duplicates are
// dropped and the values sorted, as for a decoded list.
EncodedCommunities encodeCommunityText(Routing::Bgp::CommunityTables const& tables,
                                       CommunityKind kind, std::string_view text);

} // namespace QorBgpTools
