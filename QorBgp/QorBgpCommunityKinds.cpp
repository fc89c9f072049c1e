#include "QorBgpCommunity/QorBgp/QorBgpCommunityKinds.h"

#include "QorBgpCommunity/platform/Assert.h"

#include <ostream>

namespace Routing::Bgp {

QOR_ASSERT_UNIT("QorBgpCommunity");

namespace {

constexpr U8 nonTransitiveBit = 0x40;
constexpr U32 twoOctetAsMax = 0xffff;

// The type and subtype digits of the UI form of an unrecognised subtype.
void appendTypeDigits(Kiv::DynamicBufferInterface& buffer, ExtCommContent const& content) {
   addExtCommTypeAsString(buffer, "", content.typeOctet(), content.subtypeOctet(),
                          (content.typeOctet() & nonTransitiveBit) == 0);
}

// The prefix of an administrator-pair policy text; `layout` is "-AS", "-AS4"
// or "-IP" and shows only in the UI form.
void appendPolicyPrefix(Kiv::DynamicBufferInterface& buffer, ExtComm::StrepFormat format,
                        ExtCommAdminPairWords const& words, char const* layout) {
   if (!format.strepFormatClassification()) {
      return;
   }
   if (format.strepFormatUI()) {
      buffer.append(words.uiName);
      buffer.append(layout);
      buffer.append(':');
   } else {
      buffer.append(words.policyPrefix);
   }
}

bool hasClassificationAndUI(ExtComm::StrepFormat format) {
   return format.strepFormatClassification() && format.strepFormatUI();
}

} // namespace

namespace detail {

void writeDiagnostic(std::ostream& os, std::string_view text, ExtCommContent const& content) {
   // "<text 0x%016x>" in one write: each write to a stream costs more than
   // composing the whole of it.
   Kiv::DynamicBuffer<kindTextCapacity + 24> out;
   out.append('<');
   out.append(text);
   out.append(" 0x");
   for (int shift = 56; shift >= 0; shift -= 8) {
      out.appendHex2(static_cast<U8>(content.word() >> shift));
   }
   out.append('>');
   os.write(out.data(), static_cast<std::streamsize>(out.size()));
}

} // namespace detail

ExtCommAsNumber::ExtCommAsNumber(ExtCommClassification classification,
                                 ExtCommContent const& content, bool fourByteAs) noexcept
    : ExtCommSubtyped(classification, content), fourByteAs_(fourByteAs) {}

ExtCommAsNumber::~ExtCommAsNumber() = default;

std::string_view ExtCommAsNumber::fwkType() const noexcept {
   return "Routing::Bgp::ExtCommAsNumber";
}

U32 ExtCommAsNumber::asNumber() const noexcept {
   U64 word = getContent().word();
   return fourByteAs_ ? static_cast<U32>(word >> 16) : static_cast<U16>(word >> 32);
}

U32 ExtCommAsNumber::localAdmin() const noexcept {
   U64 word = getContent().word();
   return fourByteAs_ ? static_cast<U16>(word) : static_cast<U32>(word);
}

void ExtCommAsNumber::appendAsNumber(Kiv::DynamicBufferInterface& buffer, bool asdot) const {
   U32 as = asNumber();
   if (asdot && fourByteAs_ && as > twoOctetAsMax) {
      buffer.appendDecimal(as >> 16);
      buffer.append('.');
      buffer.appendDecimal(as & twoOctetAsMax);
   } else {
      buffer.appendDecimal(as);
   }
}

std::string ExtCommAsNumber::formatAsNumber(bool asdot) const {
   Kiv::DynamicBuffer<detail::kindTextCapacity> buffer;
   appendAsNumber(buffer, asdot);
   return buffer.str();
}

// Numbers in every kind's diagnostic form go through a buffer, never through
// `os <<`, so that a caller's std::hex or width cannot change them.
void ExtCommAsNumber::formatDerivedType(std::ostream& os) const {
   os << '<' << stringValue(pktType());
   if (!pktSubtype().isUnspecified()) {
      os << ' ';
      formatSubtype(os);
   }
   Kiv::DynamicBuffer<detail::kindTextCapacity> buffer;
   buffer.append(" ASN=");
   appendAsNumber(buffer, false);
   buffer.append(' ');
   os.write(buffer.data(), static_cast<std::streamsize>(buffer.size()));
   formatCommunityValue(os);
   os << '>';
}

std::string ExtCommAsNumber::toStrepForPolicy(StrepFormat format) const {
   if (!hasClassificationAndUI(format)) {
      return {};
   }
   Kiv::DynamicBuffer<detail::kindTextCapacity> buffer;
   appendTypeDigits(buffer, getContent());
   buffer.append(':');
   appendAsNumber(buffer, format.strepFormatAsdot());
   buffer.append(':');
   buffer.appendDecimal(localAdmin());
   return buffer.str();
}

std::string ExtCommAsNumber::adminPairStrepForPolicy(StrepFormat format,
                                                     ExtCommAdminPairWords const& words) const {
   Kiv::DynamicBuffer<detail::kindTextCapacity> buffer;
   appendPolicyPrefix(buffer, format, words, fourByteAs_ ? "-AS4" : "-AS");
   appendAsNumber(buffer, format.strepFormatAsdot());
   buffer.append(':');
   buffer.appendDecimal(localAdmin());
   return buffer.str();
}

void ExtCommAsNumber::formatAdminPairDerivedType(std::ostream& os,
                                                 ExtCommAdminPairWords const& words) const {
   BgpExtCommPktType type = pktType();
   if (type != extCommPktTypeTransTwoOctetAs && type != extCommPktTypeTransFourOctetAs) {
      QOR_ASSERT(0 && "unexpected type");
   }
   Kiv::DynamicBuffer<detail::kindTextCapacity> buffer;
   buffer.append(words.diagnostic);
   buffer.append(type == extCommPktTypeTransTwoOctetAs ? "2ByteASN " : "4ByteASN ");
   appendAsNumber(buffer, false);
   buffer.append(':');
   buffer.appendDecimal(localAdmin());
   detail::writeDiagnostic(os, buffer.view(), getContent());
}

ExtCommIpv4Address::ExtCommIpv4Address(ExtCommClassification classification,
                                       ExtCommContent const& content) noexcept
    : ExtCommSubtyped(classification, content) {}

ExtCommIpv4Address::~ExtCommIpv4Address() = default;

std::string_view ExtCommIpv4Address::fwkType() const noexcept {
   return "Routing::Bgp::ExtCommIpv4Address";
}

U32 ExtCommIpv4Address::ipv4Address() const noexcept {
   return static_cast<U32>(getContent().word() >> 16);
}

U16 ExtCommIpv4Address::localAdmin() const noexcept {
   return static_cast<U16>(getContent().word());
}

void ExtCommIpv4Address::appendIpv4Address(Kiv::DynamicBufferInterface& buffer) const {
   ExtCommContent content = getContent();
   for (unsigned i = 0; i < 4; ++i) {
      if (i != 0) {
         buffer.append('.');
      }
      buffer.appendDecimal(content.valueOctet(i));
   }
}

void ExtCommIpv4Address::formatDerivedType(std::ostream& os) const {
   os << '<' << stringValue(pktType());
   if (!pktSubtype().isUnspecified()) {
      os << ' ';
      formatSubtype(os);
   }
   Kiv::DynamicBuffer<detail::kindTextCapacity> buffer;
   buffer.append(' ');
   appendIpv4Address(buffer);
   buffer.append(' ');
   os.write(buffer.data(), static_cast<std::streamsize>(buffer.size()));
   formatCommunityValue(os);
   os << '>';
}

std::string ExtCommIpv4Address::toStrepForPolicy(StrepFormat format) const {
   if (!hasClassificationAndUI(format)) {
      return {};
   }
   Kiv::DynamicBuffer<detail::kindTextCapacity> buffer;
   appendTypeDigits(buffer, getContent());
   buffer.append(':');
   appendIpv4Address(buffer);
   buffer.append(':');
   buffer.appendDecimal(localAdmin());
   return buffer.str();
}

std::string
ExtCommIpv4Address::adminPairStrepForPolicy(StrepFormat format,
                                            ExtCommAdminPairWords const& words) const {
   Kiv::DynamicBuffer<detail::kindTextCapacity> buffer;
   appendPolicyPrefix(buffer, format, words, "-IP");
   appendIpv4Address(buffer);
   buffer.append(':');
   buffer.appendDecimal(localAdmin());
   return buffer.str();
}

void ExtCommIpv4Address::formatAdminPairDerivedType(std::ostream& os,
                                                    ExtCommAdminPairWords const& words) const {
   Kiv::DynamicBuffer<detail::kindTextCapacity> buffer;
   buffer.append(words.diagnostic);
   buffer.append(' ');
   appendIpv4Address(buffer);
   buffer.append(':');
   buffer.appendDecimal(localAdmin());
   detail::writeDiagnostic(os, buffer.view(), getContent());
}

ExtCommAsNumber::Ptr extCommAsNumberFactory(ExtCommClassification classification,
                                            ExtCommContent const& content, bool fourByteAs) {
   return Kiv::newNotifying<ExtCommAsNumber>(classification, content, fourByteAs);
}

ExtCommIpv4Address::Ptr extCommIpv4AddressFactory(ExtCommClassification classification,
                                                  ExtCommContent const& content) {
   return Kiv::newNotifying<ExtCommIpv4Address>(classification, content);
}

} // namespace Routing::Bgp
