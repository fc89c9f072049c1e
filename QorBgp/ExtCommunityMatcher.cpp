#include "QorBgpCommunity/QorBgp/ExtCommunityMatcher.h"

#include "QorBgpCommunity/platform/Errors.h"

namespace Routing::Bgp {

namespace {

using Kind = ExtCommunityMatcher::Kind;

char const* kindWord(Kind kind) noexcept {
   switch (kind) {
   case Kind::routeTarget:
      return "rt";
   case Kind::routeOrigin:
      return "soo";
   case Kind::color:
      return "color";
   case Kind::linkBandwidth:
      return "lbw";
   case Kind::originValidation:
      return "ovs";
   case Kind::raw:
      return "raw";
   }
   return "";
}

bool twoFields(Kind kind) noexcept {
   return kind == Kind::routeTarget || kind == Kind::routeOrigin || kind == Kind::raw;
}

std::string addressText(U32 address) {
   return std::to_string(address >> 24) + "." + std::to_string(address >> 16 & 0xFF) + "." +
          std::to_string(address >> 8 & 0xFF) + "." + std::to_string(address & 0xFF);
}

} // namespace

ExtCommunityMatcher::ExtCommunityMatcher(Kind kind, CommunityFieldPattern first,
                                         CommunityFieldPattern second, bool globalIsAddress)
    : kind_(kind), first_(first), second_(second),
      globalIsAddress_(globalIsAddress && first.kind() == CommunityFieldPattern::Kind::exact) {
   if (!twoFields(kind) && second.kind() != CommunityFieldPattern::Kind::any) {
      throw Kiv::RangeError(std::string(kindWord(kind)) + " takes one field");
   }
   if (kind == Kind::raw && (!first.fitsIn(0xFF) || !second.fitsIn(0xFF))) {
      throw Kiv::RangeError("raw type and subtype are octets");
   }
}

ExtCommunityMatcher::~ExtCommunityMatcher() = default;

bool ExtCommunityMatcher::matches(ExtComm::PtrConst const& community,
                                  CommunityMatchContext const& context) const {
   return matches(community->community(), context);
}

bool ExtCommunityMatcher::matches(U64 content,
                                  CommunityMatchContext const& context) const noexcept {
   U8 const type = static_cast<U8>(content >> 56), subtype = static_cast<U8>(content >> 48);
   switch (kind_) {
   case Kind::routeTarget:
   case Kind::routeOrigin: {
      if (subtype != (kind_ == Kind::routeTarget ? 0x02 : 0x03)) {
         return false;
      }
      switch (type & ~0x40) { // the non-transitive forms alike
      case 0x00:              // two-octet AS : four-octet number
         return first_.matches(static_cast<U32>(content >> 32 & 0xFFFF), context) &&
                second_.matches(static_cast<U32>(content), context);
      case 0x01: // IPv4 address : two-octet number
      case 0x02: // four-octet AS : two-octet number
         return first_.matches(static_cast<U32>(content >> 16), context) &&
                second_.matches(static_cast<U32>(content & 0xFFFF), context);
      default:
         return false;
      }
   }
   case Kind::color:
      return type == 0x03 && subtype == 0x0b && first_.matches(static_cast<U32>(content), context);
   case Kind::linkBandwidth:
      return (type == 0x40 || type == 0x00) && subtype == 0x04 &&
             first_.matches(static_cast<U32>(content >> 32 & 0xFFFF), context);
   case Kind::originValidation:
      return type == 0x43 && subtype == 0x00 &&
             first_.matches(static_cast<U32>(content & 0xFF), context);
   case Kind::raw:
      return first_.matches(type, context) && second_.matches(subtype, context);
   }
   return false;
}

std::string ExtCommunityMatcher::toStrep() const {
   std::string text = kindWord(kind_);
   text += ' ';
   if (kind_ == Kind::originValidation && first_.kind() == CommunityFieldPattern::Kind::exact &&
       first_.low() <= 2) {
      static char const* const states[] = {"valid", "not-found", "invalid"};
      return text + states[first_.low()];
   }
   text += globalIsAddress_ ? addressText(first_.low()) : first_.toStrep();
   if (twoFields(kind_)) {
      text += ':' + second_.toStrep();
   }
   return text;
}

ExtCommunityMatcher::PtrConst extCommunityMatcherFactory(ExtCommunityMatcher::Kind kind,
                                                         CommunityFieldPattern first,
                                                         CommunityFieldPattern second,
                                                         bool globalIsAddress) {
   return Kiv::newNotifying<ExtCommunityMatcher>(kind, first, second, globalIsAddress);
}

} // namespace Routing::Bgp
