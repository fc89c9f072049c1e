/// @file
/// ExtCommIp6Matcher: a compiled route-policy pattern for one
/// IPv6-address-specific extended community (RFC 5701): type octet, subtype
/// octet, global administrator within an address prefix, local administrator.
///
/// @code{.cpp}
///   auto fromSite = extCommIp6MatcherFactory(CommunityFieldPattern::exact(0x00),
///                                            CommunityFieldPattern::exact(0x02),
///                                            *Qornet::Ip6Addr::parse("2001:db8::"), 32,
///                                            CommunityFieldPattern::any());  // RT 2001:db8::/32:*
///   ExtCommIp6SetMatcher::PtrConst any = extCommIp6SetMatcherFactory({fromSite},
///   CommunitySetMode::any, false);
/// @endcode
///
/// Immutable once made; may be used from any thread at once.
#pragma once

#include "QorBgpCommunity/QorBgp/CommunityFieldPattern.h"
#include "QorBgpCommunity/QorBgp/ExtCommIp6List.h"

#include <string>

namespace Routing::Bgp {

/// One IPv6-address-specific extended community, by its four fields.
class QORBGP_EXPORT ExtCommIp6Matcher : public Kiv::PtrInterface {
 public:
   KIV_POINTER_TYPES(ExtCommIp6Matcher);
   using List = ExtCommIp6List;
   using Value = ExtCommIp6::PtrConst;
   using Content = ExtCommIp6Content; ///< a value as an edit adds or sets it

   /// The address matches when its first `prefixLength` bits are `prefix`'s
   /// (0: every address). Kiv::RangeError "prefix length <n> is above 128",
   /// "type and subtype are octets", "local administrator is 16 bits".
   ExtCommIp6Matcher(CommunityFieldPattern type, CommunityFieldPattern subtype,
                     Qornet::Ip6Addr prefix, unsigned prefixLength,
                     CommunityFieldPattern localAdmin);
   ~ExtCommIp6Matcher() override;

   bool matches(ExtCommIp6::PtrConst const& community, CommunityMatchContext const& context) const;
   bool matches(ExtCommIp6Content const& content, CommunityMatchContext const& context) const;

   /// "<type>:<subtype> <prefix>/<length>:<local>".
   std::string toStrep() const;

 private:
   CommunityFieldPattern const type_;
   CommunityFieldPattern const subtype_;
   Qornet::Ip6Addr const prefix_; ///< bits past the length cleared
   unsigned const prefixLength_;
   CommunityFieldPattern const localAdmin_;
};

/// A new matcher, notification on (see the constructor for the errors).
QORBGP_EXPORT ExtCommIp6Matcher::PtrConst
extCommIp6MatcherFactory(CommunityFieldPattern type, CommunityFieldPattern subtype,
                         Qornet::Ip6Addr prefix, unsigned prefixLength,
                         CommunityFieldPattern localAdmin);

} // namespace Routing::Bgp
