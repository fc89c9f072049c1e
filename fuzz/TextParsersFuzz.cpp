// Every parser of text from configuration, reflection, the toggle file and
// the trace setting, on arbitrary text.
//
// Input: one selector byte (picks the parser, modulo their number), then the
// text. Kiv::RangeError is the documented outcome of bad text and is caught;
// any other exception escapes and fails the run.
//
// Beyond "no crash": what a parser accepts renders to a text that parses back
// to the same value, the optional and the raising form of a parser agree, and
// a rejected assignment leaves its object as documented.
#include "QorBgpCommunity/QorBgp/BgpPathAttributeEnums.h"
#include "QorBgpCommunity/QorBgp/ExtCommIp6.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunity.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityList.h"
#include "QorBgpCommunity/QorBgp/QorBgpMiscTypes.h"
#include "QorBgpCommunity/QorBgp/RouteTargetPrefix.h"
#include "fuzz/FuzzSupport.h"
#include "QorBgpCommunity/platform/Errors.h"
#include "QorBgpCommunity/platform/FeatureToggle.h"
#include "QorBgpCommunity/platform/Ip6Addr.h"
#include "QorBgpCommunity/platform/RouteTarget.h"
#include "QorBgpCommunity/platform/Trace.h"

#include <string>
#include <string_view>

using namespace Routing::Bgp;

namespace {

template <class Flags>
void flagSet(std::string_view text) {
   Flags const flags = Flags::fromValueStrep(text);
   QORBGP_FUZZ_CHECK(Flags::fromValueStrep(flags.valueToStrep()) == flags);
}

void routeTargetPrefix(std::string_view text) {
   RouteTargetPrefix const prefix(text);
   QORBGP_FUZZ_CHECK(prefix.bitlen() <= RouteTargetPrefix::maxBitlen);
   QORBGP_FUZZ_CHECK((prefix.prefixBits() & ~prefix.mask()) == 0);
   QORBGP_FUZZ_CHECK(RouteTargetPrefix(valueToStrep(prefix)) == prefix);
   (void)prefix.toStrep(true);
}

void routeTarget(std::string_view text) {
   std::optional<RouteTarget> const rt = RouteTarget::parse(text);
   bool raised = false;
   try {
      QORBGP_FUZZ_CHECK(RouteTarget::fromStrep(text) == rt);
   } catch (Kiv::RangeError const&) {
      raised = true;
   }
   QORBGP_FUZZ_CHECK(raised == !rt);
   if (rt) {
      for (bool asdot : {false, true}) {
         std::string const strep = rt->toStrep(asdot);
         QORBGP_FUZZ_CHECK(strep.size() <= RouteTarget::maxStrepLength);
         QORBGP_FUZZ_CHECK(RouteTarget::parse(strep) == rt);
      }
   }
}

void ip6Addr(std::string_view text) {
   std::optional<Qornet::Ip6Addr> const addr = Qornet::Ip6Addr::parse(text);
   bool raised = false;
   try {
      QORBGP_FUZZ_CHECK(Qornet::Ip6Addr::fromStrep(text) == addr);
   } catch (Kiv::RangeError const&) {
      raised = true;
   }
   QORBGP_FUZZ_CHECK(raised == !addr);
   if (addr) {
      std::string const strep = addr->toStrep();
      QORBGP_FUZZ_CHECK(strep.size() <= Qornet::Ip6Addr::maxStrepLength);
      QORBGP_FUZZ_CHECK(Qornet::Ip6Addr::parse(strep) == addr);
   }
}

void extCommIp6Content(std::string_view text) {
   ExtCommIp6Content const before(7, 9, Qornet::Ip6Addr::fromStrep("2001:db8::7"), 77);
   ExtCommIp6Content content = before;
   try {
      content.sequenceToValue(text);
   } catch (Kiv::RangeError const&) {
      QORBGP_FUZZ_CHECK(content == before);
      throw;
   }
   std::string const canonical =
      "type=" + std::to_string(content.type) + ";subtype=" + std::to_string(content.subtype) +
      ";addr=" + content.addr.toStrep() + ";localAdmin=" + std::to_string(content.localAdmin);
   ExtCommIp6Content again;
   again.sequenceToValue(canonical);
   QORBGP_FUZZ_CHECK(again == content);
   (void)valueToStrep(content);
}

template <class E, E (*instance)(std::string_view)>
void enumeration(std::string_view text) {
   E const e = instance(text);
   QORBGP_FUZZ_CHECK(instance(stringValue(e)) == e);
}

// One value of each kind of range: an empty one (the base) and 0..255.
template <class Maybe>
void maybeU63(std::string_view text) {
   Maybe value;
   if (value.min() <= value.max()) {
      value.valueIs(value.max());
   }
   Maybe const before = value;
   try {
      value.sequenceToValue(text);
   } catch (Kiv::RangeError const&) {
      QORBGP_FUZZ_CHECK(value == before || value.isUnspecified());
      throw;
   }
   Maybe again;
   again.sequenceToValue(value.toStrep());
   QORBGP_FUZZ_CHECK(again == value);
   QORBGP_FUZZ_CHECK(value.isUnspecified() ||
                     (value.value() >= value.min() && value.value() <= value.max()));
}

void denseU32(std::string_view text) {
   BgpDenseU32Attr const attr(text);
   QORBGP_FUZZ_CHECK(BgpDenseU32Attr(valueToStrep(attr)) == attr);
}

void extCommContent(std::string_view text) {
   ExtCommContent const content = ExtCommContent::fromStrep(text);
   QORBGP_FUZZ_CHECK(ExtCommContent::fromStrep(content.toStrep()) == content);
}

void hex(std::string_view text) {
   std::optional<std::vector<U8>> const bytes = parseHex(text);
   if (bytes) {
      QORBGP_FUZZ_CHECK(bytes->size() <= text.size() / 2);
      QORBGP_FUZZ_CHECK(parseHex(hexBytes(*bytes)) == bytes);
   }
}

// The text as a toggle file: a name's state is the file's or, when the file
// has no well-formed line for it, the default asked for.
void toggleFile(std::string_view text) {
   static QorBgpFuzz::MemoryFile file;
   std::string const& path =
      file.contentIs({reinterpret_cast<U8 const*>(text.data()), text.size()});
   bool const whenOff = Kiv::getToggleState("QorBgpLlgr", path, false);
   bool const whenOn = Kiv::getToggleState("QorBgpLlgr", path, true);
   QORBGP_FUZZ_CHECK(whenOff == whenOn || (!whenOff && whenOn));
}

void traceSpec(std::string_view text) {
   (void)Kiv::traceLevelsFromSpec(text, "QorBgpCommunity");
}

using Parser = void (*)(std::string_view);

constexpr Parser parsers[] = {
   flagSet<ExtComm::StrepFormat>,
   flagSet<ExtCommIp6::StrepFormat>,
   flagSet<ExtCommList::CommVectorAttrs>,
   flagSet<ExtCommList::Serialization>,
   flagSet<ExtCommClassificationList::CommVectorAttrs>,
   routeTargetPrefix,
   routeTarget,
   extCommIp6Content,
   ip6Addr,
   enumeration<BgpExtCommPktType, BgpExtCommPktTypeInstance>,
   enumeration<BgpExtCommPktSubtypeTransTwoOctetAs, BgpExtCommPktSubtypeTransTwoOctetAsInstance>,
   enumeration<ExtCommClassification, ExtCommClassificationInstance>,
   enumeration<BgpExtCommIp6PktType, BgpExtCommIp6PktTypeInstance>,
   enumeration<BgpCommunityValue, BgpCommunityValueInstance>,
   enumeration<BgpPathAttrType, BgpPathAttrTypeInstance>,
   enumeration<CommunityDecodeStatus, CommunityDecodeStatusInstance>,
   maybeU63<BgpMaybeU63>,
   maybeU63<BgpExtCommPktSubtype>,
   denseU32,
   extCommContent,
   hex,
   toggleFile,
   traceSpec,
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(U8 const* data, std::size_t size) {
   if (size == 0) {
      return 0;
   }
   Parser const parse = parsers[data[0] % std::size(parsers)];
   try {
      parse(std::string_view(reinterpret_cast<char const*>(data + 1), size - 1));
   } catch (Kiv::RangeError const&) {
   }
   return 0;
}
