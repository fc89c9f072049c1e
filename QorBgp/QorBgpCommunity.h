/// @file
/// The extended community value (the 8-octet value of the EXTENDED COMMUNITIES
/// path attribute): its content word, the interned value object ExtComm, the
/// text-form selector ExtComm::StrepFormat, and the helpers that name type and
/// subtype octets.
///
/// An ExtComm is immutable and shared: every holder of an extended community
/// holds an ExtComm::PtrConst, and equal contents are one object once interned.
/// Typed kinds (route target, link bandwidth, ...) derive from ExtCommSubtyped
/// and override the text forms. Values may be read from any thread.
///
/// @code{.cpp}
///   auto rt = extCommFactory(extCommClassificationUnSpecified,
///                            ExtCommContent(0x0002fde800000064));
///   rt->pktType();                    // extCommPktTypeTransTwoOctetAs
///   rt->toStrep();                    // "<extCommPktTypeTransTwoOctetAs 0x0002fde800000064>"
///   rt->toStrepForUI(false, false, false);  // "0002:0xfd 0xe8 0x00 0x00 0x00 0x64"
/// @endcode
#pragma once

#include "QorBgpCommunity/QorBgp/QorBgpCommunityPacketTypes.h"
#include "QorBgpCommunity/QorBgp/QorBgpMiscTypes.h"
#include "QorBgpCommunity/QorBgp/QorBgpStrepFormat.h"
#include "QorBgpCommunity/platform/Dedup.h"
#include "QorBgpCommunity/platform/DynamicBuffer.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/HoardFwd.h"
#include "QorBgpCommunity/platform/Ptr.h"
#include "QorBgpCommunity/platform/Types.h"

#include <compare>
#include <concepts>
#include <iosfwd>
#include <string>
#include <string_view>

namespace Routing::Bgp {

class ExtCommDedupTable;

/// The eight wire octets of an extended community as one word, read in network
/// order: the type octet is bits 63-56, the subtype octet (for types that have
/// one) bits 55-48, the six value octets bits 47-0, most significant first.
/// Equality and order are those of the unsigned word, so contents sort by type,
/// then subtype, then value. Route target 65000:100 is 0x0002fde800000064.
class QORBGP_EXPORT ExtCommContent : public Zup::DedupContentHandle {
 public:
   constexpr ExtCommContent() noexcept = default;
   constexpr explicit ExtCommContent(U64 word) noexcept : word_(word) {}

   constexpr U64 word() const noexcept { return word_; }
   constexpr U8 typeOctet() const noexcept { return static_cast<U8>(word_ >> 56); }
   constexpr U8 subtypeOctet() const noexcept { return static_cast<U8>(word_ >> 48); }
   /// Value octet i, 0..5, most significant first (wire octet i + 2).
   constexpr U8 valueOctet(unsigned i) const noexcept {
      return static_cast<U8>(word_ >> (40 - 8 * i));
   }

   /// The framework's text of the word (decimal), and its inverse; RangeError
   /// for text that is not a decimal 64-bit number.
   ///@{
   QORBGP_EXPORT std::string toStrep() const;
   QORBGP_EXPORT static ExtCommContent fromStrep(std::string_view text);
   ///@}

   /// The interning hash of the word: what ExtComm::hash() returns and what
   /// its table is probed with.
   QORBGP_EXPORT U32 hash() const noexcept;

   friend constexpr bool operator==(ExtCommContent a, ExtCommContent b) noexcept {
      return a.word_ == b.word_;
   }
   friend constexpr std::strong_ordering operator<=>(ExtCommContent a, ExtCommContent b) noexcept {
      return a.word_ <=> b.word_;
   }

 private:
   U64 word_ = 0;
};

/// "0x" and sixteen lower-case hexadecimal digits, e.g. 0x0002fde800000064. The
/// stream's format state is left as it was.
QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, ExtCommContent const& content);

/// An interned extended community value: immutable, shared through PtrConst, one object per
/// content word once interned.
class QORBGP_EXPORT ExtComm : public Zup::DedupHandle {
 public:
   KIV_POINTER_TYPES(ExtComm);

   /// Which text form toStrepForPolicy renders (see QorBgpStrepFormat.h):
   /// default, classification, UI, JSON, asdot, link-bandwidth weighted.
   using StrepFormat = StrepFormatFlags<ExtCommStrepLayout>;

   /// Stores both; no check is made. Objects are created through interning or
   /// extCommFactory, never on the stack.
   ExtComm(ExtCommClassification classification, ExtCommContent const& content) noexcept;

   /// Qualified name of the dynamic type, "Routing::Bgp::ExtComm" here.
   virtual std::string_view fwkType() const noexcept;
   ~ExtComm() override;

   /// The framework's single-attribute hash of the word, seed 0.
   U32 hash() const noexcept override;
   /// Interning equality: true when `other` (an ExtComm) has the same word.
   bool compare(Zup::DedupHandle const* other) const noexcept override;
   /// True when `content`, an ExtCommContent, equals this content.
   bool compareByContent(Zup::DedupContentHandle const& content) const noexcept override;

   /// A link bandwidth whose AS number is zero; false for every other kind.
   virtual bool isLinkBandwidthWithUnspecifiedAsNumber() const noexcept { return false; }
   /// Unspecified for a plain value; the subtype octet for ExtCommSubtyped.
   virtual BgpExtCommPktSubtype pktSubtype() const noexcept;
   /// The diagnostic form: "<" type name [" " subtype] " " content ">".
   virtual void formatDerivedType(std::ostream& os) const;
   /// The policy and UI text. A plain value has text only when `format` holds
   /// both flagClassification and flagUI (the raw octets, see the .cpp);
   /// otherwise it is empty, so route policy never matches an unrecognised value.
   virtual std::string toStrepForPolicy(StrepFormat format) const;
   /// Whether policy matching uses the UI text of this value.
   virtual bool policyMatchStrepUI() const noexcept { return false; }
   virtual bool isValid() const noexcept { return true; }
   /// The order of extended community lists: true when this word is numerically
   /// smaller than `other`'s. `other` must not be null.
   virtual bool isBetterThan(PtrConst const& other) const noexcept;

   /// The canonical object for `content` in `table`: the resident one, or a new
   /// one built by the table's parser and interned. Never null.
   static PtrConst dedupContent(ExtCommDedupTable const* table, ExtCommContent const& content);
   /// A plain value (never a typed kind) restored from the snapshot store:
   /// `stored` points at the stored location of an extended-community record.
   /// The value is detached: it is never entered in a table. Null when the
   /// store changed while the record was read (read again) or the record
   /// does not hold (a classification that is none, a reserved word not 0);
   /// Kiv::RangeError for a location outside the store; hoard::StoreError
   /// for a segment cut short since it was opened.
   static PtrConst dehoard(void const* stored, hoard::StoreManager* store);

   ExtCommClassification classification() const noexcept { return classification_; }
   ExtCommContent getContent() const noexcept { return content_; }
   /// The content word: the sort key of extended community lists.
   U64 community() const noexcept { return content_.word(); }
   /// The type octet when it names a BgpExtCommPktType member, else
   /// extCommPktTypeUnknown (0x100).
   BgpExtCommPktType pktType() const noexcept;

   /// The text that stream output writes.
   std::string toStrep() const;
   /// toStrepForPolicy with flagClassification and flagUI, plus flagAsdot,
   /// flagLinkBwWeighted and flagJson as asked.
   std::string toStrepForUI(bool asdot, bool linkBwWeighted, bool json) const;
   /// "unspecified", the subtype's name in its type's enumeration (or
   /// "subtype=<decimal>"), or "none" for types without subtype names.
   void formatSubtype(std::ostream& os) const;
   /// The content's stream form.
   void formatCommunityValue(std::ostream& os) const;

   /// The subtype name for one type. Each asserts that the value is of that
   /// type ("<type member>_ == pktType()") and has a subtype
   /// ("!pktSubtype().isUnspecified()").
   ///@{
   std::string pktSubtypeTransTwoOctetAsString() const;
   std::string pktSubtypeTransIpv4AddressString() const;
   std::string pktSubtypeTransFourOctetAsString() const;
   std::string pktSubtypeTransOpaqueString() const;
   std::string pktSubtypeEvpnString() const;
   std::string pktSubtypeFlowspecRedirectNexthopString() const;
   std::string pktSubtypeTransGenericString() const;
   std::string pktSubtypeTransGenericPart2String() const;
   std::string pktSubtypeTransGenericPart3String() const;
   std::string pktSubtypeNonTransTwoOctetAsString() const;
   std::string pktSubtypeNonTransIpv4AddressString() const;
   std::string pktSubtypeNonTransFourOctetAsString() const;
   std::string pktSubtypeNonTransOpaqueString() const;
   ///@}

 private:
   template <class E>
   std::string pktSubtypeNameIn(BgpExtCommPktType type, char const* typeCheck) const;

   ExtCommClassification const classification_;
   ExtCommContent const content_;
};

/// Base of every kind whose type octet is followed by a subtype octet.
class QORBGP_EXPORT ExtCommSubtyped : public ExtComm {
 public:
   KIV_POINTER_TYPES(ExtCommSubtyped);

   using ExtComm::ExtComm;
   std::string_view fwkType() const noexcept override;
   ~ExtCommSubtyped() override;
   BgpExtCommPktSubtype pktSubtype() const noexcept override;
};

/// A new plain value with notification enabled.
QORBGP_EXPORT ExtComm::Ptr extCommFactory(ExtCommClassification classification,
                                          ExtCommContent const& content);
/// A new value of a type that carries a subtype octet, notification enabled.
QORBGP_EXPORT ExtCommSubtyped::Ptr extCommSubtypedFactory(ExtCommClassification classification,
                                                          ExtCommContent const& content);

/// The member name of `subtype` in the subtype enumeration E when it passes E's
/// membership test, else "subtype=" and the octet in decimal (e.g. subtype=77).
template <class E>
std::string extCommSubtypeString(U8 subtype) {
   E member = static_cast<E>(subtype);
   return bgpIsValidEnumMember(member) ? stringValue(member)
                                       : "subtype=" + std::to_string(subtype);
}

/// Appends the type octet without its non-transitive bit (type & 0xbf) and the
/// subtype octet, two lower-case hexadecimal digits each, then `suffix`, then
/// "(NT)" when `transitive` is false. E.g. type 0x43 subtype 0x00 -> "0300(NT)".
///@{
QORBGP_EXPORT void addExtCommTypeAsString(Kiv::DynamicBufferInterface& buffer,
                                          char const* suffix, U8 type, U8 subtype,
                                          bool transitive);
QORBGP_EXPORT std::string extCommTypeAsString(char const* suffix, U8 type, U8 subtype,
                                              bool transitive);
///@}

/// "NULL" for a null pointer, else the object's formatDerivedType. The stream's
/// format state is left as it was.
///@{
QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, ExtComm const* comm);
QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, ExtComm const& comm);
///@}
template <std::derived_from<ExtComm> T>
std::ostream& operator<<(std::ostream& os, Kiv::Ptr<T> const& comm) {
   return os << static_cast<ExtComm const*>(comm.get());
}

} // namespace Routing::Bgp
