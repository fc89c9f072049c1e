#include "QorBgp/QorBgpCommunity.h"

#include "platform/Errors.h"
#include "platform/Hash.h"
#include "platform/ValueText.h"

namespace Routing::Bgp {

std::string ExtCommContent::toStrep() const { return std::to_string(word_); }

ExtCommContent ExtCommContent::fromStrep(std::string_view text) {
   auto word = Kiv::parseU64(text);
   if (!word) {
      throw Kiv::RangeError("not an extended community content: '" + std::string(text) + "'");
   }
   return ExtCommContent(*word);
}

ExtComm::ExtComm(ExtCommClassification classification, ExtCommContent const& content) noexcept
    : classification_(classification), content_(content) {}

ExtComm::~ExtComm() = default;

std::string_view ExtComm::fwkType() const noexcept { return "Routing::Bgp::ExtComm"; }

U32 ExtComm::hash() const noexcept { return Kiv::hashU64(content_.word(), 0); }

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

} // namespace Routing::Bgp
