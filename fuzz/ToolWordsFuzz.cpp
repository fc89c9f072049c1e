// The words qorbgp-comm reads from its command line: community texts for
// encode, and the prefix, address and time options of show and match.
//
// Input: one selector byte (modulo 7: encode's four kinds, --prefix, --peer,
// --since), then the text.
//
// Beyond "no crash": encode's attribute decodes, and what it prints reads
// back to what prints the same; a filter option either makes a filter or says
// which option is wrong.
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"
#include "fuzz/FuzzSupport.h"
#include "tools/qorbgp-comm/CommunityText.h"
#include "tools/qorbgp-comm/PathFilter.h"
#include "tools/qorbgp-comm/PathLists.h"

#include <string>
#include <string_view>

using namespace Routing::Bgp;
using namespace QorBgpTools;

namespace {

// The printed text of a decoded list, as decode shows it.
std::string printed(AnyCommList const& list) {
   if (auto const* p = std::get_if<CommList::PtrConst>(&list)) {
      return standardText(p->get());
   }
   if (auto const* p = std::get_if<LargeCommList::PtrConst>(&list)) {
      return largeText(p->get(), false);
   }
   if (auto const* p = std::get_if<ExtCommList::PtrConst>(&list)) {
      return extendedText(p->get(), false);
   }
   if (auto const* p = std::get_if<ExtCommIp6List::PtrConst>(&list)) {
      return ip6Text(p->get());
   }
   return {};
}

// The text decode prints for encode's attribute of `text`; empty when encode
// refuses it.
std::string reprinted(CommunityTables const& tables, CommunityKind kind, std::string_view text) {
   EncodedCommunities const encoded = encodeCommunityText(tables, kind, text);
   if (encoded.attribute.empty()) {
      return {};
   }
   auto const* bytes = reinterpret_cast<U8 const*>(encoded.attribute.data());
   auto const decoded =
      decodeAttribute(tables, bytes[1], QorBgpFuzz::attributeValue(encoded.attribute));
   QORBGP_FUZZ_CHECK(decoded.ok());
   return printed(decoded.list);
}

// Reading a printed text back prints it again. (The first reading may lose
// bits that a form does not print, and so merge values that print alike;
// after that the text is stable.)
void encode(CommunityTables const& tables, CommunityKind kind, std::string_view text) {
   std::string const once = reprinted(tables, kind, text);
   if (once.empty()) {
      return;
   }
   std::string const twice = reprinted(tables, kind, once);
   QORBGP_FUZZ_CHECK(reprinted(tables, kind, twice) == twice);
}

void filter(std::string_view text, std::string PathFilterOptions::*option) {
   PathFilterOptions options;
   options.*option = std::string(text);
   std::string error;
   bool const made = PathFilter::make(options, &error).has_value();
   QORBGP_FUZZ_CHECK(made == error.empty());
   QORBGP_FUZZ_CHECK(made || error.starts_with("--"));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(U8 const* data, std::size_t size) {
   static CommunityTables::Ptr const tables = communityTablesFactory();
   if (size == 0) {
      return 0;
   }
   std::string_view const text(reinterpret_cast<char const*>(data) + 1, size - 1);
   switch (data[0] % 7) {
   case 0:
      encode(*tables, CommunityKind::standard, text);
      break;
   case 1:
      encode(*tables, CommunityKind::large, text);
      break;
   case 2:
      encode(*tables, CommunityKind::extended, text);
      break;
   case 3:
      encode(*tables, CommunityKind::ip6, text);
      break;
   case 4:
      filter(text, &PathFilterOptions::prefix);
      break;
   case 5:
      filter(text, &PathFilterOptions::peer);
      break;
   default:
      filter(text, &PathFilterOptions::since);
      break;
   }
   return 0;
}
