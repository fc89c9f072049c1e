/// @file
/// Interning of IPv6-address-specific extended communities: one shared
/// ExtCommIp6 per distinct 20-octet content, built on first use by the
/// recognition parser. Unlike the 8-octet table it reports nothing: IPv6
/// values never reach a route-target list.
///
/// @code{.cpp}
///   auto table = extCommIp6DedupTableFactory(recognition->extCommParser());
///   ExtCommIp6::PtrConst v = ExtCommIp6::dedupContent(table.get(), content);
/// @endcode
#pragma once

#include "QorBgpCommunity/QorBgp/ExtCommIp6.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommParser.h"
#include "QorBgpCommunity/platform/QorBgpGlobals.h"

namespace Routing::Bgp {

/// The interning table of IPv6-address-specific extended communities.
class QORBGP_EXPORT ExtCommIp6DedupTable : public BasicDedupTable_ {
 public:
   KIV_POINTER_TYPES(ExtCommIp6DedupTable);
   using ParserPtrConst = Kiv::Ptr<BgpParseExtendedCommunityRule const>;

   explicit ExtCommIp6DedupTable(ParserPtrConst const& parseExtCommRule);
   ~ExtCommIp6DedupTable() override;
   std::string_view fwkType() const noexcept { return "Routing::Bgp::ExtCommIp6DedupTable"; }

   ParserPtrConst parseExtCommRule() const noexcept { return parseExtCommRule_; }

 private:
   ParserPtrConst const parseExtCommRule_;
};

/// A new table with notification enabled. The parser must not be null.
QORBGP_EXPORT ExtCommIp6DedupTable::Ptr
extCommIp6DedupTableFactory(ExtCommIp6DedupTable::ParserPtrConst const& parseExtCommRule);

} // namespace Routing::Bgp
