#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"

#include "QorBgpCommunity/platform/Ip6Addr.h"

#include <algorithm>
#include <bit>
#include <concepts>
#include <cstring>
#include <memory>
#include <utility>

namespace Routing::Bgp {

KIV_ENUM_DEFINE(CommunityDecodeStatus, "Routing::Bgp::CommunityDecodeStatus", Kiv::noMemberLimit,
                QORBGP_COMMUNITY_DECODE_STATUS_MEMBERS)
KIV_ENUM_DEFINE(BgpAttrErrorAction, "Routing::Bgp::BgpAttrErrorAction", Kiv::noMemberLimit,
                QORBGP_BGP_ATTR_ERROR_ACTION_MEMBERS)

CommunityTables::CommunityTables()
    : extCommContainer_(bgpParseExtCommContainerSmFactory()),
      extCommDedupTable_(extCommDedupTableFactory(extCommContainer_->extCommParser())),
      extCommIp6DedupTable_(extCommIp6DedupTableFactory(extCommContainer_->extCommParser())),
      commListDedupTable_(commListDedupTableFactory()),
      largeCommListDedupTable_(largeCommListDedupTableFactory()),
      extCommListDedupTable_(extCommListDedupTableFactory()),
      extCommIp6ListDedupTable_(extCommIp6ListDedupTableFactory()) {}

CommunityTables::~CommunityTables() = default;

CommunityTables::Ptr communityTablesFactory() { return Kiv::newNotifying<CommunityTables>(); }

namespace {

// Wire sizes of one element of each attribute.
constexpr std::size_t communitySize = 4;
constexpr std::size_t largeCommunitySize = 12;
constexpr std::size_t extCommunitySize = 8;
constexpr std::size_t extCommunityIp6Size = 20;
// The attribute header's extended length field is 16 bits.
constexpr std::size_t maxValueLength = 0xFFFF;

// The network-order unsigned integer at `bytes`, which need not be aligned.
template <std::unsigned_integral T>
T loadNetworkOrder(U8 const* bytes) noexcept {
   T value;
   std::memcpy(&value, bytes, sizeof value);
   if constexpr (std::endian::native == std::endian::little) {
      if constexpr (sizeof(T) == 8) {
         value = __builtin_bswap64(value);
      } else if constexpr (sizeof(T) == 4) {
         value = __builtin_bswap32(value);
      } else {
         value = __builtin_bswap16(value);
      }
   }
   return value;
}

// Whether `length` holds whole elements of `elementSize` bytes.
constexpr bool wholeElements(std::size_t elementSize, std::size_t length) noexcept {
   return length != 0 && length % elementSize == 0 && length <= maxValueLength;
}

// Why `length` does not hold whole elements, naming the attribute `kind`.
std::string lengthError(std::string_view kind, std::size_t elementSize, std::size_t length) {
   std::string reason(kind);
   reason.append(" value length ").append(std::to_string(length));
   if (length > maxValueLength) {
      reason.append(" exceeds ").append(std::to_string(maxValueLength));
   } else {
      reason.append(" is not a non-zero multiple of ").append(std::to_string(elementSize));
   }
   return reason;
}

// Elements read from an attribute value, on the stack when there are at
// most Inline of them. Only the elements read are constructed (and
// destroyed): most attributes hold one or two.
template <class T, std::size_t Inline>
class Elements {
 public:
   explicit Elements(std::size_t count) : onHeap_(count > Inline) {
      if (onHeap_) {
         heap_.reserve(count);
      }
   }
   ~Elements() { std::destroy_n(inlineData(), inlineCount_); }
   Elements(Elements const&) = delete;
   Elements& operator=(Elements const&) = delete;

   void push(T value) {
      if (onHeap_) {
         heap_.push_back(std::move(value));
      } else {
         std::construct_at(inlineData() + inlineCount_, std::move(value));
         ++inlineCount_;
      }
   }
   std::span<T> span() noexcept {
      return onHeap_ ? std::span<T>(heap_) : std::span<T>(inlineData(), inlineCount_);
   }

 private:
   T* inlineData() noexcept { return reinterpret_cast<T*>(inline_); }

   alignas(T) unsigned char inline_[Inline * sizeof(T)];
   std::size_t inlineCount_ = 0;
   bool const onHeap_;
   std::vector<T> heap_;
};

// Reads the elements of `value` (whole elements of `elementSize` bytes) with
// `read` and hands them to `use`.
template <class T, std::size_t Inline, class Read, class Use>
auto withElements(std::span<U8 const> value, std::size_t elementSize, Read read, Use use) {
   std::size_t const count = value.size() / elementSize;
   Elements<T, Inline> elements(count);
   for (std::size_t i = 0; i < count; ++i) {
      elements.push(read(value.data() + i * elementSize));
   }
   return use(elements.span());
}

template <class ListPtr>
CommunityDecodeResult<ListPtr> malformed(std::string reason) {
   return {communityDecodeMalformed, treatAsWithdraw, std::move(reason), nullptr};
}

template <class ListPtr>
CommunityDecodeResult<ListPtr> decoded(ListPtr list) {
   return {communityDecodeOk, attrErrorActionNone, {}, std::move(list)};
}

// A null (malformed) list becomes std::monostate, so that the alternative
// held always tells whether there is a list.
template <class ListPtr>
CommunityDecodeResult<AnyCommList> toAny(CommunityDecodeResult<ListPtr>&& result) {
   CommunityDecodeResult<AnyCommList> any{
      result.status, result.action, std::move(result.reason), {}};
   if (result.list) {
      any.list = std::move(result.list);
   }
   return any;
}

// 0 to 15, or -1 for a character that is no hexadecimal digit.
int hexDigitValue(char c) noexcept {
   if (c >= '0' && c <= '9') {
      return c - '0';
   }
   if (c >= 'a' && c <= 'f') {
      return c - 'a' + 10;
   }
   if (c >= 'A' && c <= 'F') {
      return c - 'A' + 10;
   }
   return -1;
}

bool isAsciiSpace(char c) noexcept {
   return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}

} // namespace

// Each decoder checks the whole length before it reads an element: a malformed
// value must leave every table as it was, and interning the values of a valid
// prefix would publish them for nothing. The list is built privately and
// published once, by dedup.
CommunityDecodeResult<CommList::PtrConst> decodeCommunities(CommunityTables const& tables,
                                                            std::span<U8 const> value) {
   if (!wholeElements(communitySize, value.size())) {
      return malformed<CommList::PtrConst>(lengthError("COMMUNITIES", communitySize, value.size()));
   }
   // Looked up before any list is built: most attributes carry a list the
   // table already holds.
   return decoded(withElements<U32, 64>(
      value, communitySize, [](U8 const* element) { return loadNetworkOrder<U32>(element); },
      [&](std::span<U32> values) {
         return CommList::dedupValues(tables.commListDedupTable().get(), values);
      }));
}

CommunityDecodeResult<LargeCommList::PtrConst> decodeLargeCommunities(CommunityTables const& tables,
                                                                      std::span<U8 const> value) {
   if (!wholeElements(largeCommunitySize, value.size())) {
      return malformed<LargeCommList::PtrConst>(lengthError("LARGE_COMMUNITY", largeCommunitySize, value.size()));
   }
   // Looked up before any list is built, as for standard communities.
   return decoded(withElements<Acl::CommunityValue, 16>(
      value, largeCommunitySize,
      [](U8 const* element) {
         return Acl::CommunityValue{loadNetworkOrder<U32>(element),
                                    loadNetworkOrder<U32>(element + 4),
                                    loadNetworkOrder<U32>(element + 8)};
      },
      [&](std::span<Acl::CommunityValue> values) {
         return LargeCommList::dedupValues(tables.largeCommListDedupTable().get(), values);
      }));
}

CommunityDecodeResult<ExtCommList::PtrConst> decodeExtCommunities(CommunityTables const& tables,
                                                                  std::span<U8 const> value) {
   if (!wholeElements(extCommunitySize, value.size())) {
      return malformed<ExtCommList::PtrConst>(lengthError("EXTENDED COMMUNITIES", extCommunitySize, value.size()));
   }
   // Each value interned, then the list looked up by them before one is built.
   return decoded(withElements<ExtComm::PtrConst, 32>(
      value, extCommunitySize,
      [&](U8 const* element) {
         return ExtComm::dedupContent(tables.extCommDedupTable().get(),
                                      ExtCommContent(loadNetworkOrder<U64>(element)));
      },
      [&](std::span<ExtComm::PtrConst> comms) {
         return ExtCommList::dedupComms(tables.extCommListDedupTable().get(), comms);
      }));
}

CommunityDecodeResult<ExtCommIp6List::PtrConst>
decodeExtCommunitiesIp6(CommunityTables const& tables, std::span<U8 const> value) {
   if (!wholeElements(extCommunityIp6Size, value.size())) {
      return malformed<ExtCommIp6List::PtrConst>(lengthError(
         "IPv6 Address Specific Extended Community", extCommunityIp6Size, value.size()));
   }
   ExtCommIp6List::Ptr list = extCommIp6ListFactory();
   list->expectedCommunityCountIs(static_cast<U32>(value.size() / extCommunityIp6Size));
   for (std::size_t at = 0; at < value.size(); at += extCommunityIp6Size) {
      U8 const* element = value.data() + at;
      Qornet::Ip6Addr::Bytes address;
      std::copy_n(element + 2, address.size(), address.begin());
      ExtCommIp6Content const content(element[0], element[1], Qornet::Ip6Addr(address),
                                      loadNetworkOrder<U16>(element + 18));
      list->commIs(ExtCommIp6::dedupContent(tables.extCommIp6DedupTable().get(), content));
   }
   return decoded(list->dedup(tables.extCommIp6ListDedupTable().get()));
}

CommunityDecodeResult<AnyCommList> decodeAttribute(CommunityTables const& tables, U8 typeCode,
                                                   std::span<U8 const> value) {
   switch (typeCode) {
   case community:
      return toAny(decodeCommunities(tables, value));
   case largeCommunity:
      return toAny(decodeLargeCommunities(tables, value));
   case extCommunity:
      return toAny(decodeExtCommunities(tables, value));
   case extCommunityIp6:
      return toAny(decodeExtCommunitiesIp6(tables, value));
   }
   std::string reason("attribute type ");
   reason.append(std::to_string(typeCode)).append(" is not a community attribute");
   return {communityDecodeNotCommunityAttribute, attrErrorActionNone, std::move(reason), {}};
}

std::string hexBytes(std::span<U8 const> bytes) {
   static constexpr char digits[] = "0123456789abcdef";
   std::string text;
   text.reserve(2 * bytes.size());
   for (U8 byte : bytes) {
      text.push_back(digits[byte >> 4]);
      text.push_back(digits[byte & 0xF]);
   }
   return text;
}

std::optional<std::vector<U8>> parseHex(std::string_view text) {
   std::vector<U8> bytes;
   bytes.reserve(text.size() / 2);
   for (std::size_t at = 0; at < text.size();) {
      if (isAsciiSpace(text[at])) {
         ++at;
         continue;
      }
      int const high = hexDigitValue(text[at]);
      int const low = at + 1 < text.size() ? hexDigitValue(text[at + 1]) : -1;
      if (high < 0 || low < 0) {
         return std::nullopt;
      }
      bytes.push_back(static_cast<U8>(high << 4 | low));
      at += 2;
   }
   return bytes;
}

} // namespace Routing::Bgp
