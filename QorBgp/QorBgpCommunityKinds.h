/// @file
/// The two administrator-pair layouts of extended communities, shared by the
/// typed kinds that use them: ExtCommAsNumber (an AS number as global
/// administrator, two or four octets wide, and a local administrator) and
/// ExtCommIpv4Address (an IPv4 address and a 16-bit local administrator).
///
/// The parser builds these for AS and IPv4-address types whose subtype no kind
/// recognises (classification extCommClassificationUnSpecified); route
/// targets, route origins and link bandwidths derive from them and reuse their
/// decoding and text. Like every ExtComm they are immutable once built, owned
/// through shared pointers and readable from any thread.
///
/// @code{.cpp}
///   auto comm = extCommAsNumberFactory(extCommClassificationUnSpecified,
///                                      ExtCommContent(0x0205fa56ea000064), true);
///   comm->asNumber();                    // 4200000000
///   comm->formatAsNumber(true);          // "64086.59904"
///   comm->toStrep();  // "<extCommPktTypeTransFourOctetAs
///                     //   extCommPktSubtypeTransFourOctetAsOspfDomainIdentifier
///                     //   ASN=4200000000 0x0205fa56ea000064>"
/// @endcode
#pragma once

#include "QorBgpCommunity/QorBgp/QorBgpCommunity.h"
#include "QorBgpCommunity/platform/DynamicBuffer.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Ptr.h"
#include "QorBgpCommunity/platform/Types.h"

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

namespace Routing::Bgp {

/// The words that name one administrator-pair kind in its texts; route target
/// and route origin differ in nothing else.
struct ExtCommAdminPairWords {
   char const* policyPrefix; ///< classification form, e.g. "RT:"
   char const* uiName;       ///< UI form, before "-AS" or "-IP", e.g. "Route-Target"
   char const* diagnostic;   ///< diagnostic form, e.g. "RouteTarget"
};

/// An extended community whose value octets are an AS number and a local
/// administrator. `fourByteAs` selects the layout: false, AS = value bits
/// 47-32 and local administrator = bits 31-0; true, AS = bits 47-16 and local
/// administrator = bits 15-0. The flag is the only state beyond the content.
class QORBGP_EXPORT ExtCommAsNumber : public ExtCommSubtyped {
 public:
   KIV_POINTER_TYPES(ExtCommAsNumber);

   /// Stores all three; the flag is not checked against the type octet.
   ExtCommAsNumber(ExtCommClassification classification, ExtCommContent const& content,
                   bool fourByteAs) noexcept;
   std::string_view fwkType() const noexcept override;
   ~ExtCommAsNumber() override;

   /// "<" type name " " subtype name " ASN=" AS in decimal " " content ">".
   void formatDerivedType(std::ostream& os) const override;
   /// With flagClassification and flagUI: the type digits of
   /// addExtCommTypeAsString, ":", the AS (asdot when flagAsdot), ":", the
   /// local administrator, e.g. "0005:65000:100" or "0204(NT):1.0:7".
   /// Otherwise empty: route policy matches no unrecognised subtype by text.
   std::string toStrepForPolicy(StrepFormat format) const override;

   bool fourByteAs() const noexcept { return fourByteAs_; }
   /// The global administrator, 16 or 32 bits wide as the layout says.
   U32 asNumber() const noexcept;
   /// The local administrator, 32 or 16 bits wide as the layout says.
   U32 localAdmin() const noexcept;
   /// The AS in decimal; with `asdot` and the four-octet layout, an AS of 65536
   /// or more is "<high 16 bits>.<low 16 bits>" (4200000000 -> "64086.59904").
   /// A two-octet AS is always plain decimal.
   ///@{
   std::string formatAsNumber(bool asdot) const;
   void appendAsNumber(Kiv::DynamicBufferInterface& buffer, bool asdot) const;
   ///@}

 protected:
   /// The policy text of route targets and origins: a prefix chosen by the
   /// format (`words.policyPrefix` with flagClassification alone,
   /// `words.uiName` "-AS" ["4"] ":" with flagUI too, none without
   /// flagClassification), then AS (asdot when flagAsdot) ":" local admin.
   std::string adminPairStrepForPolicy(StrepFormat format,
                                       ExtCommAdminPairWords const& words) const;
   /// "<" `words.diagnostic` "2ByteASN " or "4ByteASN " (by type octet 0x00 or
   /// 0x02) AS ":" local admin " " content ">". Any other type is a broken
   /// invariant: fatal assertion "0 && \"unexpected type\"".
   void formatAdminPairDerivedType(std::ostream& os, ExtCommAdminPairWords const& words) const;

 private:
   bool const fourByteAs_;
};

/// An extended community whose value octets are an IPv4 address (bits 47-16)
/// and a 16-bit local administrator (bits 15-0).
class QORBGP_EXPORT ExtCommIpv4Address : public ExtCommSubtyped {
 public:
   KIV_POINTER_TYPES(ExtCommIpv4Address);

   ExtCommIpv4Address(ExtCommClassification classification,
                      ExtCommContent const& content) noexcept;
   std::string_view fwkType() const noexcept override;
   ~ExtCommIpv4Address() override;

   /// "<" type name " " subtype name " " address " " content ">".
   void formatDerivedType(std::ostream& os) const override;
   /// With flagClassification and flagUI: the type digits, ":", the address,
   /// ":", the local administrator, e.g. "0105:192.0.2.1:100". Otherwise empty.
   std::string toStrepForPolicy(StrepFormat format) const override;

   /// The address as a host-order word (192.0.2.1 is 0xc0000201).
   U32 ipv4Address() const noexcept;
   U16 localAdmin() const noexcept;
   /// Dotted decimal, e.g. "192.0.2.1".
   void appendIpv4Address(Kiv::DynamicBufferInterface& buffer) const;

 protected:
   /// Prefix as for ExtCommAsNumber (`words.uiName` "-IP:" with flagUI), then
   /// address ":" local admin.
   std::string adminPairStrepForPolicy(StrepFormat format,
                                       ExtCommAdminPairWords const& words) const;
   /// "<" `words.diagnostic` " " address ":" local admin " " content ">".
   void formatAdminPairDerivedType(std::ostream& os, ExtCommAdminPairWords const& words) const;
};

/// New objects with notification enabled; the parser's fallbacks for AS and
/// IPv4-address types whose subtype has no kind.
///@{
QORBGP_EXPORT ExtCommAsNumber::Ptr extCommAsNumberFactory(ExtCommClassification classification,
                                                          ExtCommContent const& content,
                                                          bool fourByteAs);
QORBGP_EXPORT ExtCommIpv4Address::Ptr
extCommIpv4AddressFactory(ExtCommClassification classification, ExtCommContent const& content);
///@}

namespace detail {

/// Room for the usual text of any kind; longer texts move to the heap.
inline constexpr std::size_t kindTextCapacity = 64;

/// Writes "<" `text` " " content ">", the shape of every kind's diagnostic
/// form. `text` goes out as raw characters, untouched by the stream's flags.
void writeDiagnostic(std::ostream& os, std::string_view text, ExtCommContent const& content);

} // namespace detail

} // namespace Routing::Bgp
