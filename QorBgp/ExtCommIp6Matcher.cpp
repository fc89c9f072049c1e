#include "QorBgpCommunity/QorBgp/ExtCommIp6Matcher.h"

#include "QorBgpCommunity/platform/Errors.h"

namespace Routing::Bgp {

namespace {

// `address` with every bit past `length` cleared.
Qornet::Ip6Addr masked(Qornet::Ip6Addr const& address, unsigned length) {
   if (length > 128) {
      throw Kiv::RangeError("prefix length " + std::to_string(length) + " is above 128");
   }
   Qornet::Ip6Addr::Bytes bytes = address.bytes();
   for (unsigned i = 0; i < bytes.size(); ++i) {
      unsigned const kept = length > 8 * i ? std::min(8u, length - 8 * i) : 0;
      bytes[i] &= static_cast<U8>(0xFF00 >> kept);
   }
   return Qornet::Ip6Addr(bytes);
}

CommunityFieldPattern within(CommunityFieldPattern field, U32 max, char const* message) {
   if (!field.fitsIn(max)) {
      throw Kiv::RangeError(message);
   }
   return field;
}

} // namespace

ExtCommIp6Matcher::ExtCommIp6Matcher(CommunityFieldPattern type, CommunityFieldPattern subtype,
                                     Qornet::Ip6Addr prefix, unsigned prefixLength,
                                     CommunityFieldPattern localAdmin)
    : type_(within(type, 0xFF, "type and subtype are octets")),
      subtype_(within(subtype, 0xFF, "type and subtype are octets")),
      prefix_(masked(prefix, prefixLength)), prefixLength_(prefixLength),
      localAdmin_(within(localAdmin, 0xFFFF, "local administrator is 16 bits")) {}

ExtCommIp6Matcher::~ExtCommIp6Matcher() = default;

bool ExtCommIp6Matcher::matches(ExtCommIp6::PtrConst const& community,
                                CommunityMatchContext const& context) const {
   return matches(community->community(), context);
}

bool ExtCommIp6Matcher::matches(ExtCommIp6Content const& content,
                                CommunityMatchContext const& context) const {
   return type_.matches(content.type, context) && subtype_.matches(content.subtype, context) &&
          localAdmin_.matches(content.localAdmin, context) &&
          masked(content.addr, prefixLength_) == prefix_;
}

std::string ExtCommIp6Matcher::toStrep() const {
   return type_.toStrep() + ":" + subtype_.toStrep() + " " + prefix_.toStrep() + "/" +
          std::to_string(prefixLength_) + ":" + localAdmin_.toStrep();
}

ExtCommIp6Matcher::PtrConst extCommIp6MatcherFactory(CommunityFieldPattern type,
                                                     CommunityFieldPattern subtype,
                                                     Qornet::Ip6Addr prefix, unsigned prefixLength,
                                                     CommunityFieldPattern localAdmin) {
   return Kiv::newNotifying<ExtCommIp6Matcher>(type, subtype, prefix, prefixLength, localAdmin);
}

} // namespace Routing::Bgp
