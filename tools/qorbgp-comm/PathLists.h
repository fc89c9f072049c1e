// The community lists of one MRT path, decoded and interned through the
// library, and their show texts.
#pragma once

#include "tools/mrt/MrtReader.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"

#include <string>

namespace QorBgpTools {

struct PathLists {
   Routing::Bgp::CommList::PtrConst standard;
   Routing::Bgp::LargeCommList::PtrConst large;
   Routing::Bgp::ExtCommList::PtrConst extended;
   Routing::Bgp::ExtCommIp6List::PtrConst ip6;
   // Malformed community attributes of the path (each to be treated as a
   // withdrawal), with the decoder's reason.
   std::vector<std::string> malformed;
};

// Decodes every community attribute of `path`. The lists are interned in
// `tables`: paths with equal lists share one object.
PathLists decodePathLists(Routing::Bgp::CommunityTables const& tables, mrt::Path const& path);

// decodePathLists once per attribute block: the paths of one BGP message
// share their block, so a message announcing many prefixes is decoded once.
// Not thread-safe; one per reading thread.
class PathListsDecoder {
 public:
   explicit PathListsDecoder(Routing::Bgp::CommunityTables const& tables) : tables_(tables) {}
   // The lists of `path`; valid until the next call.
   PathLists const& lists(mrt::Path const& path) {
      if (!decoded_ || !path.attributes.sameBlock(block_)) {
         lists_ = decodePathLists(tables_, path);
         block_ = path.attributes;
         decoded_ = true;
      }
      return lists_;
   }

 private:
   Routing::Bgp::CommunityTables const& tables_;
   mrt::Attributes block_;
   PathLists lists_;
   bool decoded_ = false;
};

// Show texts: names for well-known standard communities, asdot on request,
// each extended community in its UI form.
std::string standardText(Routing::Bgp::CommList const* list);
std::string largeText(Routing::Bgp::LargeCommList const* list, bool asdot);
std::string extendedText(Routing::Bgp::ExtCommList const* list, bool asdot);
std::string ip6Text(Routing::Bgp::ExtCommIp6List const* list);
// One IPv6-address-specific value in the show text ip6Text joins.
std::string ip6ValueText(Routing::Bgp::ExtCommIp6 const& comm);

// JSON text of `value`; bytes that are not UTF-8 (a file name, a reason
// quoting input) become U+FFFD instead of making the JSON library throw.
template <class Json>
std::string jsonText(Json const& value, int indent = -1) {
   return value.dump(indent, ' ', false, Json::error_handler_t::replace);
}

// Readable labels for the tool's own reports, where the library has only
// enumerator names: "route target", "link bandwidth", ...; "ok", "malformed",
// "not a community attribute"; "none", "treat-as-withdraw".
std::string kindLabel(Routing::Bgp::ExtCommClassification kind);
std::string statusLabel(Routing::Bgp::CommunityDecodeStatus status);
std::string actionLabel(Routing::Bgp::BgpAttrErrorAction action);

} // namespace QorBgpTools
