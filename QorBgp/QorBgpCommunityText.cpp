// Text forms of the plain extended community value: the diagnostic form
// (stream output, toStrep), the policy and UI form, the type-and-subtype text,
// and the StrepFormat selector's reflection text.
#include "QorBgp/QorBgpCommunity.h"

#include "platform/Errors.h"
#include "platform/StreamState.h"
#include "platform/ValueText.h"

#include <ostream>
#include <sstream>

namespace Routing::Bgp {

namespace {

constexpr char hexDigits[] = "0123456789abcdef";
constexpr U8 nonTransitiveBit = 0x40;
// The policy text of a plain value is "tttt(NT):0x.. 0x.. 0x.. 0x.. 0x.. 0x..",
// at most 43 characters: it never leaves the stack.
constexpr std::size_t policyTextCapacity = 64;


} // namespace

std::ostream& operator<<(std::ostream& os, ExtCommContent const& content) {
   // Written as raw characters, so the stream's flags and fill neither affect
   // the text nor get changed by it; the width is consumed.
   Kiv::StreamStateSaver saved(os);
   char text[18] = {'0', 'x'};
   U64 word = content.word();
   for (int i = 17; i >= 2; --i, word >>= 4) {
      text[i] = hexDigits[word & 0xf];
   }
   return os.write(text, sizeof text);
}

void addExtCommTypeAsString(Kiv::DynamicBufferInterface& buffer, char const* suffix, U8 type,
                            U8 subtype, bool transitive) {
   buffer.appendHex2(type & static_cast<U8>(~nonTransitiveBit));
   buffer.appendHex2(subtype);
   buffer.append(suffix);
   if (!transitive) {
      buffer.append("(NT)");
   }
}

std::string extCommTypeAsString(char const* suffix, U8 type, U8 subtype, bool transitive) {
   Kiv::DynamicBuffer<policyTextCapacity> buffer;
   addExtCommTypeAsString(buffer, suffix, type, subtype, transitive);
   return buffer.str();
}

// "tttt[(NT)]:0xv0 0xv1 0xv2 0xv3 0xv4 0xv5": the type and subtype digits,
// then the six value octets in hexadecimal, most significant first.
std::string ExtComm::toStrepForPolicy(StrepFormat format) const {
   if (!format.strepFormatClassification() || !format.strepFormatUI()) {
      return {};
   }
   ExtCommContent content = getContent();
   Kiv::DynamicBuffer<policyTextCapacity> buffer;
   addExtCommTypeAsString(buffer, "", content.typeOctet(), content.subtypeOctet(),
                          (content.typeOctet() & nonTransitiveBit) == 0);
   for (unsigned i = 0; i < 6; ++i) {
      buffer.append(i == 0 ? ":0x" : " 0x");
      buffer.appendHex2(content.valueOctet(i));
   }
   return buffer.str();
}

std::string ExtComm::toStrepForUI(bool asdot, bool linkBwWeighted, bool json) const {
   StrepFormat format(StrepFormat::flagClassification | StrepFormat::flagUI);
   format.flagIs(StrepFormat::flagAsdot, asdot);
   format.flagIs(StrepFormat::flagLinkBwWeighted, linkBwWeighted);
   format.flagIs(StrepFormat::flagJson, json);
   return toStrepForPolicy(format);
}

void ExtComm::formatDerivedType(std::ostream& os) const {
   os << '<' << stringValue(pktType());
   if (!pktSubtype().isUnspecified()) {
      os << ' ';
      formatSubtype(os);
   }
   os << ' ';
   formatCommunityValue(os);
   os << '>';
}

void ExtComm::formatSubtype(std::ostream& os) const {
   if (pktSubtype().isUnspecified()) {
      os << "unspecified";
      return;
   }
   switch (pktType()) {
   case extCommPktTypeTransTwoOctetAs:
      os << pktSubtypeTransTwoOctetAsString();
      return;
   case extCommPktTypeTransIpv4Address:
      os << pktSubtypeTransIpv4AddressString();
      return;
   case extCommPktTypeTransFourOctetAs:
      os << pktSubtypeTransFourOctetAsString();
      return;
   case extCommPktTypeTransOpaque:
      os << pktSubtypeTransOpaqueString();
      return;
   case extCommPktTypeTransEvpn:
      os << pktSubtypeEvpnString();
      return;
   case extCommPktTypeTransFlowspecRedirectNexthop:
      os << pktSubtypeFlowspecRedirectNexthopString();
      return;
   case extCommPktTypeNonTransTwoOctetAs:
      os << pktSubtypeNonTransTwoOctetAsString();
      return;
   case extCommPktTypeNonTransIpv4Address:
      os << pktSubtypeNonTransIpv4AddressString();
      return;
   case extCommPktTypeNonTransFourOctetAs:
      os << pktSubtypeNonTransFourOctetAsString();
      return;
   case extCommPktTypeNonTransOpaque:
      os << pktSubtypeNonTransOpaqueString();
      return;
   case extCommPktTypeTransGeneric:
      os << pktSubtypeTransGenericString();
      return;
   case extCommPktTypeTransGenericPart2:
      os << pktSubtypeTransGenericPart2String();
      return;
   case extCommPktTypeTransGenericPart3:
      os << pktSubtypeTransGenericPart3String();
      return;
   case extCommPktTypeTransQosMarking:
   case extCommPktTypeTransCosCapability:
   case extCommPktTypeNonTransQosMarking:
   case extCommPktTypeUnknown:
      os << "none";
      return;
   }
   QOR_ASSERT_TEXT(false, "unreachable: pktType() outside BgpExtCommPktType");
}

void ExtComm::formatCommunityValue(std::ostream& os) const { os << getContent(); }

std::string ExtComm::toStrep() const {
   std::ostringstream os;
   os << *this;
   return std::move(os).str();
}

std::ostream& operator<<(std::ostream& os, ExtComm const* comm) {
   if (!comm) {
      return os << "NULL";
   }
   Kiv::StreamStateSaver saved(os);
   comm->formatDerivedType(os);
   return os;
}

std::ostream& operator<<(std::ostream& os, ExtComm const& comm) { return os << &comm; }

} // namespace Routing::Bgp
