// ExtComm, the plain extended community value: its content word, interning,
// text forms (the diagnostic form, the policy and UI forms, the type-and-subtype
// text, the StrepFormat selector's reflection text) and restoring from the
// snapshot store.
#include "QorBgpCommunity/QorBgp/QorBgpCommunity.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityDedupTable.h"
#include "QorBgpCommunity/QorBgp/detail/DehoardList.h"
#include "QorBgpCommunity/platform/Errors.h"
#include "QorBgpCommunity/platform/Hash.h"
#include "QorBgpCommunity/platform/StreamText.h"
#include "QorBgpCommunity/platform/Hoard.h"
#include "QorBgpCommunity/platform/StreamState.h"
#include "QorBgpCommunity/platform/ValueText.h"

#include <ostream>

namespace Routing::Bgp {

QOR_ASSERT_UNIT("QorBgpCommunity");

std::string ExtCommContent::toStrep() const { return std::to_string(word_); }

ExtCommContent ExtCommContent::fromStrep(std::string_view text) {
   auto word = Kiv::parseU64(text);
   if (!word) {
      throw Kiv::RangeError("not an extended community content: '" + std::string(text) + "'");
   }
   return ExtCommContent(*word);
}

U32 ExtCommContent::hash() const noexcept { return Kiv::hashU64(word_, 0); }

ExtComm::ExtComm(ExtCommClassification classification, ExtCommContent const& content) noexcept
    : classification_(classification), content_(content) {}

ExtComm::~ExtComm() = default;

std::string_view ExtComm::fwkType() const noexcept { return "Routing::Bgp::ExtComm"; }

U32 ExtComm::hash() const noexcept { return content_.hash(); }

bool ExtComm::compare(Zup::DedupHandle const* other) const noexcept {
   return static_cast<ExtComm const*>(other)->content_ == content_;
}

bool ExtComm::compareByContent(Zup::DedupContentHandle const& content) const noexcept {
   return static_cast<ExtCommContent const&>(content) == content_;
}

BgpExtCommPktSubtype ExtComm::pktSubtype() const noexcept { return BgpExtCommPktSubtype(); }

bool ExtComm::isBetterThan(PtrConst const& other) const noexcept {
   QOR_ASSERT(other);
   return content_ < other->content_;
}

BgpExtCommPktType ExtComm::pktType() const noexcept {
   auto type = static_cast<BgpExtCommPktType>(content_.typeOctet());
   return bgpIsValidEnumMember(type) ? type : extCommPktTypeUnknown;
}

template <class E>
std::string ExtComm::pktSubtypeNameIn(BgpExtCommPktType type, char const* typeCheck) const {
   QOR_ASSERT_TEXT(type == pktType(), typeCheck);
   QOR_ASSERT(!pktSubtype().isUnspecified());
   return extCommSubtypeString<E>(content_.subtypeOctet());
}

std::string ExtComm::pktSubtypeTransTwoOctetAsString() const {
   return pktSubtypeNameIn<BgpExtCommPktSubtypeTransTwoOctetAs>(
      extCommPktTypeTransTwoOctetAs, "extCommPktTypeTransTwoOctetAs_ == pktType()");
}

std::string ExtComm::pktSubtypeTransIpv4AddressString() const {
   return pktSubtypeNameIn<BgpExtCommPktSubtypeTransIpv4Address>(
      extCommPktTypeTransIpv4Address, "extCommPktTypeTransIpv4Address_ == pktType()");
}

std::string ExtComm::pktSubtypeTransFourOctetAsString() const {
   return pktSubtypeNameIn<BgpExtCommPktSubtypeTransFourOctetAs>(
      extCommPktTypeTransFourOctetAs, "extCommPktTypeTransFourOctetAs_ == pktType()");
}

std::string ExtComm::pktSubtypeTransOpaqueString() const {
   return pktSubtypeNameIn<BgpExtCommPktSubtypeTransOpaque>(
      extCommPktTypeTransOpaque, "extCommPktTypeTransOpaque_ == pktType()");
}

std::string ExtComm::pktSubtypeEvpnString() const {
   return pktSubtypeNameIn<BgpExtCommPktSubtypeEvpn>(extCommPktTypeTransEvpn,
                                                     "extCommPktTypeTransEvpn_ == pktType()");
}

std::string ExtComm::pktSubtypeFlowspecRedirectNexthopString() const {
   return pktSubtypeNameIn<BgpExtCommPktSubtypeTransFlowspecRedirectNexthop>(
      extCommPktTypeTransFlowspecRedirectNexthop,
      "extCommPktTypeTransFlowspecRedirectNexthop_ == pktType()");
}

std::string ExtComm::pktSubtypeTransGenericString() const {
   return pktSubtypeNameIn<BgpExtCommPktSubtypeTransGeneric>(
      extCommPktTypeTransGeneric, "extCommPktTypeTransGeneric_ == pktType()");
}

std::string ExtComm::pktSubtypeTransGenericPart2String() const {
   return pktSubtypeNameIn<BgpExtCommPktSubtypeTransGenericPart2>(
      extCommPktTypeTransGenericPart2, "extCommPktTypeTransGenericPart2_ == pktType()");
}

std::string ExtComm::pktSubtypeTransGenericPart3String() const {
   return pktSubtypeNameIn<BgpExtCommPktSubtypeTransGenericPart3>(
      extCommPktTypeTransGenericPart3, "extCommPktTypeTransGenericPart3_ == pktType()");
}

std::string ExtComm::pktSubtypeNonTransTwoOctetAsString() const {
   return pktSubtypeNameIn<BgpExtCommPktSubtypeNonTransTwoOctetAs>(
      extCommPktTypeNonTransTwoOctetAs, "extCommPktTypeNonTransTwoOctetAs_ == pktType()");
}

std::string ExtComm::pktSubtypeNonTransIpv4AddressString() const {
   return pktSubtypeNameIn<BgpExtCommPktSubtypeNonTransIpv4Address>(
      extCommPktTypeNonTransIpv4Address, "extCommPktTypeNonTransIpv4Address_ == pktType()");
}

std::string ExtComm::pktSubtypeNonTransFourOctetAsString() const {
   return pktSubtypeNameIn<BgpExtCommPktSubtypeNonTransFourOctetAs>(
      extCommPktTypeNonTransFourOctetAs, "extCommPktTypeNonTransFourOctetAs_ == pktType()");
}

std::string ExtComm::pktSubtypeNonTransOpaqueString() const {
   return pktSubtypeNameIn<BgpExtCommPktSubtypeNonTransOpaque>(
      extCommPktTypeNonTransOpaque, "extCommPktTypeNonTransOpaque_ == pktType()");
}

ExtCommSubtyped::~ExtCommSubtyped() = default;

std::string_view ExtCommSubtyped::fwkType() const noexcept {
   return "Routing::Bgp::ExtCommSubtyped";
}

BgpExtCommPktSubtype ExtCommSubtyped::pktSubtype() const noexcept {
   return BgpExtCommPktSubtype(getContent().subtypeOctet());
}

ExtComm::Ptr extCommFactory(ExtCommClassification classification, ExtCommContent const& content) {
   return Kiv::newNotifying<ExtComm>(classification, content);
}

ExtCommSubtyped::Ptr extCommSubtypedFactory(ExtCommClassification classification,
                                            ExtCommContent const& content) {
   return Kiv::newNotifying<ExtCommSubtyped>(classification, content);
}

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
   return Kiv::streamText([this](std::ostream& os) { os << *this; });
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

ExtComm::PtrConst ExtComm::dehoard(void const* stored, hoard::StoreManager* store) {
   store->checkIntact();
   return detail::dehoardExtCommRecord(stored, store);
}

ExtComm::PtrConst detail::dehoardExtCommRecord(void const* stored, hoard::StoreManager* store) {
   hoard::ReaderPtr<hoard::ExtCommRecord> record(*store, hoard::Location::loadFrom(stored));
   auto const classification = static_cast<ExtCommClassification>(record->classification);
   U32 const reserved = record->reserved;
   ExtCommContent const content(record->content);
   if (!record.validateVersionAnchor() || !bgpIsValidEnumMember(classification) || reserved != 0) {
      return nullptr;
   }
   ExtComm::Ptr comm = extCommFactory(classification, content);
   comm->dedupStateIs(Zup::DedupState::detached);
   return comm;
}

ExtComm::PtrConst ExtComm::dedupContent(ExtCommDedupTable const* table,
                                        ExtCommContent const& content) {
   Zup::DedupHashTable& hashTable = *table->dedupTable();
   if (auto found = hashTable.lookupByContentAs<ExtComm>(content, content.hash())) {
      return found;
   }
   return hashTable.dedupAs<ExtComm>(table->parseExtCommRule()->parseExtendedCommunity(content));
}

} // namespace Routing::Bgp
