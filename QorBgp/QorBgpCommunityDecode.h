/// @file
/// Decoding of the community path attributes of received UPDATE messages:
/// COMMUNITIES (type 8), EXTENDED COMMUNITIES (16), IPv6 Address Specific
/// Extended Community (25) and LARGE_COMMUNITY (32). A decoder takes the
/// attribute's value bytes (its header already removed), interns every value,
/// and publishes one sorted, de-duplicated list; or it reports the attribute
/// malformed together with the action the caller has to take. Data from the
/// wire never raises and never aborts.
///
/// @code{.cpp}
///   auto tables = communityTablesFactory();
///   auto result = decodeAttribute(*tables, typeCode, value);
///   if (result.ok()) {
///      auto const* comms = std::get_if<CommList::PtrConst>(&result.list);   // for type 8
///   } else if (result.action == treatAsWithdraw) {
///      ...   // withdraw the UPDATE's routes, log result.reason
///   }
/// @endcode
///
/// The hexadecimal helpers at the end serve tests and command-line tools that
/// take attribute values as text.
#pragma once

#include "QorBgpCommunity/QorBgp/BgpPathAttributeEnums.h"
#include "QorBgpCommunity/QorBgp/ExtCommIp6DedupTable.h"
#include "QorBgpCommunity/QorBgp/ExtCommIp6List.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommContainer.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDedupTable.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityList.h"
#include "QorBgpCommunity/platform/Enum.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Ptr.h"
#include "QorBgpCommunity/platform/Types.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace Routing::Bgp {

/// Everything a decoder interns into: the recognition container (whose parser
/// the value tables use), the extended and IPv6 value tables, and the
/// standard, large, extended and IPv6 list tables. All are created by the
/// constructor and kept for the object's life; the accessors never return
/// null. The tables take the form QorBgpGlobals::multiThreaded() selects at
/// creation, so in the multi-threaded form several threads may decode into
/// one CommunityTables at once.
///
/// Lists and values published through it outlive it safely: a dying table
/// releases its residents to live on by themselves.
///
/// @code{.cpp}
///   auto tables = communityTablesFactory();
///   decodeCommunities(*tables, value);
///   tables->commListDedupTable()->dedupTable()->size();   // 1
/// @endcode
class QORBGP_EXPORT CommunityTables : public Kiv::PtrInterface {
 public:
   KIV_POINTER_TYPES(CommunityTables);

   CommunityTables();
   ~CommunityTables() override;
   std::string_view fwkType() const noexcept { return "Routing::Bgp::CommunityTables"; }

   BgpParseExtCommContainerSm::Ptr const& extCommContainer() const noexcept {
      return extCommContainer_;
   }
   ExtCommDedupTable::Ptr const& extCommDedupTable() const noexcept { return extCommDedupTable_; }
   ExtCommIp6DedupTable::Ptr const& extCommIp6DedupTable() const noexcept {
      return extCommIp6DedupTable_;
   }
   CommListDedupTable::Ptr const& commListDedupTable() const noexcept {
      return commListDedupTable_;
   }
   LargeCommListDedupTable::Ptr const& largeCommListDedupTable() const noexcept {
      return largeCommListDedupTable_;
   }
   ExtCommListDedupTable::Ptr const& extCommListDedupTable() const noexcept {
      return extCommListDedupTable_;
   }
   ExtCommIp6ListDedupTable::Ptr const& extCommIp6ListDedupTable() const noexcept {
      return extCommIp6ListDedupTable_;
   }

 private:
   /// Declared in dependency order: the value tables hold the container's
   /// parser, and the list tables are destroyed first.
   BgpParseExtCommContainerSm::Ptr const extCommContainer_;
   ExtCommDedupTable::Ptr const extCommDedupTable_;
   ExtCommIp6DedupTable::Ptr const extCommIp6DedupTable_;
   CommListDedupTable::Ptr const commListDedupTable_;
   LargeCommListDedupTable::Ptr const largeCommListDedupTable_;
   ExtCommListDedupTable::Ptr const extCommListDedupTable_;
   ExtCommIp6ListDedupTable::Ptr const extCommIp6ListDedupTable_;
};

/// A new set of tables with notification on, the recognition container fully built.
QORBGP_EXPORT CommunityTables::Ptr communityTablesFactory();

#define QORBGP_COMMUNITY_DECODE_STATUS_MEMBERS(X)                                                  \
   X(communityDecodeOk, 0)                                                                         \
   X(communityDecodeMalformed, 1)                                                                  \
   X(communityDecodeNotCommunityAttribute, 2)

enum QORBGP_EXPORT CommunityDecodeStatus : U32 {
   QORBGP_COMMUNITY_DECODE_STATUS_MEMBERS(KIV_ENUMERATOR)
};
KIV_ENUM_GLUE(CommunityDecodeStatus);

/// What the receiver of a malformed path attribute does about it, among the
/// approaches of RFC 7606 section 2. Only the ones these decoders report are
/// members so far.
#define QORBGP_BGP_ATTR_ERROR_ACTION_MEMBERS(X)                                                    \
   X(attrErrorActionNone, 0)                                                                       \
   X(treatAsWithdraw, 1)

enum QORBGP_EXPORT BgpAttrErrorAction : U32 {
   QORBGP_BGP_ATTR_ERROR_ACTION_MEMBERS(KIV_ENUMERATOR)
};
KIV_ENUM_GLUE(BgpAttrErrorAction);

/// The outcome of one decode. `ListPtr` is the published list's pointer type,
/// or AnyCommList for decodeAttribute.
template <class ListPtr>
struct QORBGP_EXPORT CommunityDecodeResult {
   CommunityDecodeStatus status = communityDecodeOk;
   /// treatAsWithdraw when malformed; attrErrorActionNone otherwise.
   BgpAttrErrorAction action = attrErrorActionNone;
   /// Empty when ok; otherwise names the attribute and its bad length (or the
   /// type code that is no community attribute).
   std::string reason;
   /// The published list when ok; null (std::monostate for AnyCommList) otherwise.
   ListPtr list{};

   bool ok() const noexcept { return status == communityDecodeOk; }
};

using AnyCommList = std::variant<std::monostate, CommList::PtrConst, LargeCommList::PtrConst,
                                 ExtCommList::PtrConst, ExtCommIp6List::PtrConst>;

/// Decoders of one attribute kind each. `value` is the attribute's value
/// without its header: a non-zero multiple of the element size (4, 12, 8 or
/// 20 bytes), elements in network byte order, in any order, duplicates
/// allowed. The result holds the published list (sorted by the list's order,
/// duplicates dropped), interned through `tables`: equal sets decode to the
/// very same object.
///
/// Any other length is malformed, zero included, with the action RFC 7606
/// prescribes: treat-as-withdraw for COMMUNITIES (section 7.8), EXTENDED
/// COMMUNITIES and the IPv6 Address Specific Extended Community (section 7.14),
/// and, by RFC 8092 section 5, LARGE_COMMUNITY. So is a length above 65535,
/// which no attribute header can announce. A malformed value leaves every
/// table untouched: there is never a partial list.
QORBGP_EXPORT CommunityDecodeResult<CommList::PtrConst>
decodeCommunities(CommunityTables const& tables, std::span<U8 const> value);
/// Each element: global administrator, local data 1, local data 2.
QORBGP_EXPORT CommunityDecodeResult<LargeCommList::PtrConst>
decodeLargeCommunities(CommunityTables const& tables, std::span<U8 const> value);
/// Each element: the 8-byte content word, classified by the recognition parser.
QORBGP_EXPORT CommunityDecodeResult<ExtCommList::PtrConst>
decodeExtCommunities(CommunityTables const& tables, std::span<U8 const> value);
/// Each element: type, subtype, 16 address bytes, 2-byte local administrator.
QORBGP_EXPORT CommunityDecodeResult<ExtCommIp6List::PtrConst>
decodeExtCommunitiesIp6(CommunityTables const& tables, std::span<U8 const> value);

/// The decoder of `typeCode` (community, largeCommunity, extCommunity,
/// extCommunityIp6); its list in the matching alternative of AnyCommList.
/// Any other type code gives communityDecodeNotCommunityAttribute with
/// attrErrorActionNone, touching nothing: that attribute is the caller's to
/// handle.
QORBGP_EXPORT CommunityDecodeResult<AnyCommList>
decodeAttribute(CommunityTables const& tables, U8 typeCode, std::span<U8 const> value);

/// Two lower-case hexadecimal digits per byte, no separators; "" for no bytes.
QORBGP_EXPORT std::string hexBytes(std::span<U8 const> bytes);
/// The bytes of `text`: pairs of hexadecimal digits of either case, with ASCII
/// white space allowed between (not within) pairs; empty text is no bytes.
/// Nothing for an odd digit, any other character or a "0x" prefix.
QORBGP_EXPORT std::optional<std::vector<U8>> parseHex(std::string_view text);

} // namespace Routing::Bgp
