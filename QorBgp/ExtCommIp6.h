/// @file
/// The IPv6-address-specific extended community (the 20-octet value of the
/// IPv6 Address Specific Extended Community attribute): its content record,
/// the names of its type and subtype octets, the interned value object
/// ExtCommIp6 and its text-form selector ExtCommIp6::StrepFormat.
///
/// An ExtCommIp6 is the 20-octet counterpart of ExtComm: immutable and shared,
/// held as ExtCommIp6::PtrConst, one object per content once interned, and
/// readable from any thread. Kinds whose type octet is followed by a subtype
/// octet are ExtCommIp6Subtyped.
///
/// @code{.cpp}
///   ExtCommIp6Content c(0x00, 0x02, Qornet::Ip6Addr::fromStrep("2001:db8::1"), 100);
///   auto rt = extCommIp6Factory(extCommClassificationRouteTarget, c);
///   rt->toStrep();     // "<extCommIp6PktTypeTransIpv6Address addr=2001:db8::1 localAdmin=100>"
///   rt->toStrepForPolicy(ExtCommIp6::StrepFormat());   // "2001:db8::1:100"
/// @endcode
#pragma once

#include "QorBgpCommunity/QorBgp/QorBgpCommunity.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityPacketTypes.h"
#include "QorBgpCommunity/QorBgp/QorBgpMiscTypes.h"
#include "QorBgpCommunity/platform/Dedup.h"
#include "QorBgpCommunity/platform/Enum.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Ip6Addr.h"
#include "QorBgpCommunity/platform/Ptr.h"
#include "QorBgpCommunity/platform/Types.h"

#include <compare>
#include <concepts>
#include <iosfwd>
#include <string>
#include <string_view>
#include <type_traits>

namespace Routing::Bgp {

class ExtCommIp6DedupTable;

/// The type octet. Bit 0x40 set means non-transitive; every other octet is
/// extCommIp6PktTypeUnknown (0x100) to pktType(), a value no octet can equal.
#define QORBGP_EXT_COMM_IP6_PKT_TYPE(X)                                                  \
   X(extCommIp6PktTypeTransIpv6Address, 0x00)                                            \
   X(extCommIp6PktTypeNonTransIpv6Address, 0x40)                                         \
   X(extCommIp6PktTypeUnknown, 0x100)

/// Subtypes of type 0x00, those of the IANA registry of transitive
/// IPv6-address-specific subtypes. Membership accepts exactly the named values
/// below 0x100 (the mask 0x7181c over 0..0x12).
#define QORBGP_EXT_COMM_IP6_PKT_SUBTYPE_TRANS_IPV6_ADDRESS(X)                            \
   X(extCommIp6PktSubtypeRouteTarget, 0x02)                                              \
   X(extCommIp6PktSubtypeRouteOrigin, 0x03)                                              \
   X(extCommIp6PktSubtypeOspf3RouteAttributes, 0x04)                                     \
   X(extCommIp6PktSubtypeVrfRouteImport, 0x0b)                                           \
   X(extCommIp6PktSubtypeFlowspecRedirectIpv6, 0x0c)                                     \
   X(extCommIp6PktSubtypeCiscoVpnDistinguisher, 0x10)                                    \
   X(extCommIp6PktSubtypeUuidRouteTarget, 0x11)                                          \
   X(extCommIp6PktSubtypeInterAreaP2MPNextHop, 0x12)                                     \
   X(extCommIp6PktSubtypeTransIpv6AddressUnknown, 0x100)

/// Subtypes of type 0x40: none is recognised, so membership accepts no value.
#define QORBGP_EXT_COMM_IP6_PKT_SUBTYPE_NON_TRANS_IPV6_ADDRESS(X)                        \
   X(extCommIp6PktSubtypeNonTransIpv6AddressUnknown, 0x100)

QORBGP_EXT_COMM_ENUM(BgpExtCommIp6PktType, QORBGP_EXT_COMM_IP6_PKT_TYPE);
QORBGP_EXT_COMM_ENUM(BgpExtCommIp6PktSubtypeTransIpv6Address,
                     QORBGP_EXT_COMM_IP6_PKT_SUBTYPE_TRANS_IPV6_ADDRESS);
QORBGP_EXT_COMM_ENUM(BgpExtCommIp6PktSubtypeNonTransIpv6Address,
                     QORBGP_EXT_COMM_IP6_PKT_SUBTYPE_NON_TRANS_IPV6_ADDRESS);

/// The 20 octets of an IPv6-address-specific extended community, fields in
/// wire order. Equality needs all four fields equal; order is by type, then
/// subtype, then address, then local administrator, all unsigned.
struct QORBGP_EXPORT ExtCommIp6Content : Zup::DedupContentHandle {
   constexpr ExtCommIp6Content() noexcept = default;
   constexpr ExtCommIp6Content(U8 type, U8 subtype, Qornet::Ip6Addr addr, U16 localAdmin) noexcept
       : type(type), subtype(subtype), addr(addr), localAdmin(localAdmin) {}

   U8 type = 0;           ///< BgpExtCommIp6PktType when a member
   U8 subtype = 0;        ///< meaningful only for subtyped kinds
   Qornet::Ip6Addr addr;  ///< Global Administrator
   U16 localAdmin = 0;    ///< Local Administrator, host order

   /// Jenkins one-at-a-time over type, subtype, the 16 address bytes and
   /// localAdmin low byte then high byte (Kiv::jenkinsOneAtATime of those 20
   /// bytes). Deterministic: interning tables depend on it.
   U32 hash() const noexcept;

   /// Parses "type=T;subtype=S;addr=A;localAdmin=L" with T, S and L decimal
   /// (T and S up to 255, L up to 65535) and A any address text that
   /// Qornet::Ip6Addr::parse accepts. Kiv::RangeError naming the text for
   /// anything else; the content is then unchanged.
   /// NOTE: this is not the inverse of valueToStrep, which writes T and S as
   /// raw bytes.
   void sequenceToValue(std::string_view text);

   friend bool operator==(ExtCommIp6Content const& a, ExtCommIp6Content const& b) noexcept {
      return (a <=> b) == 0;
   }
   friend std::strong_ordering operator<=>(ExtCommIp6Content const& a,
                                           ExtCommIp6Content const& b) noexcept {
      if (auto c = a.type <=> b.type; c != 0) {
         return c;
      }
      if (auto c = a.subtype <=> b.subtype; c != 0) {
         return c;
      }
      if (auto c = a.addr <=> b.addr; c != 0) {
         return c;
      }
      return a.localAdmin <=> b.localAdmin;
   }
};

static_assert(std::is_trivially_copyable_v<ExtCommIp6Content> && sizeof(ExtCommIp6Content) == 20);

/// "type=T;subtype=S;addr=A;localAdmin=L": T and S each the one raw octet
/// itself (a character, not digits; 0x00 is a NUL character), A the address's
/// standard text, L decimal. Stream output writes the same text and leaves the
/// stream's format state as it was.
///@{
QORBGP_EXPORT std::string valueToStrep(ExtCommIp6Content const& content);
QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, ExtCommIp6Content const& content);
///@}

/// An interned IPv6-address-specific extended community value: immutable, shared through
/// PtrConst, one object per content once interned.
class QORBGP_EXPORT ExtCommIp6 : public Zup::DedupHandle {
 public:
   KIV_POINTER_TYPES(ExtCommIp6);

   /// Which text form toStrepForPolicy renders (see QorBgpStrepFormat.h):
   /// like ExtComm::StrepFormat without the JSON flag.
   using StrepFormat = StrepFormatFlags<ExtCommIp6StrepLayout>;

   /// The canonical object for `content` in `table`: the resident one, or a new
   /// one built by the table's parser and interned. Never null.
   static PtrConst dedupContent(ExtCommIp6DedupTable const* table, ExtCommIp6Content const& content);

   /// Stores both; no check is made. Objects are created through interning or
   /// extCommIp6Factory, never on the stack.
   ExtCommIp6(ExtCommClassification classification, ExtCommIp6Content const& content) noexcept;

   /// Qualified name of the dynamic type, "Routing::Bgp::ExtCommIp6" here.
   virtual std::string_view fwkType() const noexcept;
   ~ExtCommIp6() override;

   /// The content's hash (ExtCommIp6Content::hash).
   U32 hash() const noexcept override;
   /// Interning equality: true when `other` (an ExtCommIp6) has equal content.
   bool compare(Zup::DedupHandle const* other) const noexcept override;
   /// True when `content`, an ExtCommIp6Content, equals this content.
   bool compareByContent(Zup::DedupContentHandle const& content) const noexcept override;

   /// Unspecified for a plain value; the subtype octet for ExtCommIp6Subtyped.
   virtual BgpExtCommPktSubtype pktSubtype() const noexcept;
   /// The diagnostic form:
   /// @code{.unparsed}
   ///   "<" type name [" " subtype text] " addr=" address " localAdmin=" decimal ">"
   /// @endcode
   virtual void formatDerivedType(std::ostream& os) const;
   /// The policy and UI text: "[tttt-IP6[(NT)]:]address:localAdmin", the type
   /// part only when `format` holds both flagClassification and flagUI (see
   /// addExtCommTypeAsString). E.g. "2001:db8::1:100", "0002-IP6:2001:db8::1:100".
   virtual std::string toStrepForPolicy(StrepFormat format) const;

   ExtCommClassification classification() const noexcept { return classification_; }
   ExtCommIp6Content getContent() const noexcept { return content_; }
   ExtCommIp6Content community() const noexcept { return content_; } ///< the list sort key
   /// The type octet when it names a BgpExtCommIp6PktType member (0x00 or
   /// 0x40), else extCommIp6PktTypeUnknown (0x100).
   BgpExtCommIp6PktType pktType() const noexcept;

   /// The text that stream output writes.
   std::string toStrep() const;
   /// "unspecified" without a subtype; else the subtype's name for type 0x00
   /// or 0x40 (or "subtype=<decimal>" when it names no valid member), and
   /// "none" for any other type.
   void formatSubtype(std::ostream& os) const;

   /// The subtype name for one type. Each asserts that the value is of that
   /// type ("<type member>_ == pktType()") and has a subtype
   /// ("!pktSubtype().isUnspecified()").
   ///@{
   std::string pktSubtypeTransIpv6AddressAsString() const;
   std::string pktSubtypeNonTransIpv6AddressAsString() const;
   ///@}

 private:
   ExtCommClassification const classification_;
   ExtCommIp6Content const content_;
};

/// Base of every kind whose type octet is followed by a subtype octet.
class QORBGP_EXPORT ExtCommIp6Subtyped : public ExtCommIp6 {
 public:
   KIV_POINTER_TYPES(ExtCommIp6Subtyped);

   using ExtCommIp6::ExtCommIp6;
   std::string_view fwkType() const noexcept override;
   ~ExtCommIp6Subtyped() override;
   BgpExtCommPktSubtype pktSubtype() const noexcept override;
};

/// A new plain value, not yet interned, with notification enabled.
QORBGP_EXPORT ExtCommIp6::Ptr extCommIp6Factory(ExtCommClassification classification,
                                                ExtCommIp6Content const& content);

/// "NULL" for a null pointer, else the object's formatDerivedType. The stream's
/// format state is left as it was.
///@{
QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, ExtCommIp6 const* comm);
QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, ExtCommIp6 const& comm);
///@}
template <std::derived_from<ExtCommIp6> T>
std::ostream& operator<<(std::ostream& os, Kiv::Ptr<T> const& comm) {
   return os << static_cast<ExtCommIp6 const*>(comm.get());
}

} // namespace Routing::Bgp
