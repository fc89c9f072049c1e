/// @file
/// The text of route-policy matchers and edits as an operator writes them in
/// configuration, parsed into the compiled objects.
///
/// @code{.unparsed}
///   set    := ["not"] ("any" | "all" | "exact") matcher...
///   edit   := "set" value... | "add" value... | "delete" matcher... | "delete-all"
///   matcher (standard) := field ":" field | name | "regex" quoted
///   matcher (large)    := field ":" field ":" field | "regex" quoted
///   matcher (extended) := ("rt" | "soo") (address | field) ":" field
///                       | "color" field | "lbw" field | "raw" field ":" field
///                       | "ovs" ("valid" | "not-found" | "invalid" | field)
///   matcher (ipv6)     := field ":" field ipv6-prefix "/" length ":" field
///                         (type:subtype, then the address prefix and local administrator)
///   value (standard)   := number ":" number | name
///   value (large)      := number ":" number ":" number
///   value (extended)   := ("rt" | "soo") (address | number) ":" number
///                       | "color" number | "ovs" ("valid" | "not-found" | "invalid")
///                       | "raw" "0x" 16 hexadecimal digits
///   value (ipv6)       := number ":" number ipv6-address ":" number
///                         (type:subtype, then the address and local administrator)
///   field  := "*" | number | number "-" number | "peer-as" | "local-as"
///   name   := "internet" | "GSHUT" | "llgr-stale" | "no-llgr" | "no-export"
///           | "no-advertise" | "local-as"     (a whole word: the community itself)
///   quoted := '"' text '"'                    (\" and \\ inside)
/// @endcode
///
/// (address: an IPv4 address in dotted form; ExtCommunityMatcher.h says which
/// values each extended kind matches.)
///
/// Words are separated by spaces. For example "any 65000:* *:666",
/// "not all peer-as:100-199 no-export", "exact regex \"^65000:1[0-9]$\"",
/// "delete 65000:*", "add 65000:100 no-export", "set 4200000000:1:2",
/// "any rt 65000:100-199 soo 192.0.2.1:*", "not any ovs invalid".
///
/// Bad text raises Kiv::RangeError "at <column>: expected <what>, found
/// '<word>'" (columns count from 1; "found end of text" at the end); nothing is
/// built then. A number is decimal, at most 65535 in a standard community and
/// 4294967295 in a large one.
#pragma once

#include "QorBgpCommunity/QorBgp/CommunityListEdit.h"
#include "QorBgpCommunity/QorBgp/CommunitySetMatcher.h"

#include <string_view>

namespace Routing::Bgp {

QORBGP_EXPORT StandardCommunitySetMatcher::PtrConst
parseStandardCommunitySet(std::string_view text);
QORBGP_EXPORT LargeCommunitySetMatcher::PtrConst parseLargeCommunitySet(std::string_view text);
QORBGP_EXPORT ExtCommunitySetMatcher::PtrConst parseExtCommunitySet(std::string_view text);
QORBGP_EXPORT ExtCommIp6SetMatcher::PtrConst parseExtCommIp6Set(std::string_view text);
QORBGP_EXPORT StandardCommunityListEdit::PtrConst parseStandardCommunityEdit(std::string_view text);
QORBGP_EXPORT LargeCommunityListEdit::PtrConst parseLargeCommunityEdit(std::string_view text);
QORBGP_EXPORT ExtCommListEdit::PtrConst parseExtCommunityEdit(std::string_view text);
QORBGP_EXPORT ExtCommIp6ListEdit::PtrConst parseExtCommIp6Edit(std::string_view text);

} // namespace Routing::Bgp
