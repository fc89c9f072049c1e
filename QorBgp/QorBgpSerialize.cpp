#include "QorBgpCommunity/QorBgp/QorBgpSerialize.h"

#include "QorBgpCommunity/platform/Assert.h"

#include <algorithm>
#include <bit>
#include <concepts>
#include <cstring>
#include <limits>

namespace Routing::Bgp {

QOR_ASSERT_UNIT("QorBgpSerialize");

namespace {

constexpr U32 maxShortAttrSize = 0xFF; // largest length that fits the one-octet form
constexpr U32 shortHdrSize = 3;        // flags, type, one-octet length
constexpr U32 longHdrSize = 4;         // flags, type, two-octet length

template <std::unsigned_integral T>
constexpr T toNetworkOrder(T value) noexcept {
   if constexpr (std::endian::native == std::endian::big || sizeof(T) == 1) {
      return value;
   } else if constexpr (sizeof(T) == 2) {
      return __builtin_bswap16(value);
   } else if constexpr (sizeof(T) == 4) {
      return __builtin_bswap32(value);
   } else {
      static_assert(sizeof(T) == 8);
      return __builtin_bswap64(value);
   }
}

} // namespace

void Serialize::write(void const* bytes, std::size_t count) {
   if (count == 0) {
      return; // an empty span may carry a null pointer, which memcpy must not see
   }
   if (count > buffer_.size() - writeOffset_) {
      buffer_.resize(writeOffset_ + count);
   }
   std::memcpy(buffer_.data() + writeOffset_, bytes, count);
   writeOffset_ += count;
}

void Serialize::addU8(U8 value) { write(&value, sizeof value); }

void Serialize::addU16hton(U16 value) {
   U16 const wire = toNetworkOrder(value);
   write(&wire, sizeof wire);
}

void Serialize::addU32hton(U32 value) {
   U32 const wire = toNetworkOrder(value);
   write(&wire, sizeof wire);
}

void Serialize::addU64hton(U64 value) {
   U64 const wire = toNetworkOrder(value);
   write(&wire, sizeof wire);
}

void Serialize::addBytes(std::span<U8 const> bytes) { write(bytes.data(), bytes.size()); }

void Serialize::growBuffer(std::size_t extra) {
   buffer_.reserve(writeOffset_ + extra);
}

std::string Serialize::serializedString(std::size_t fromOffset) const {
   QOR_ASSERT(fromOffset <= size());
   return std::string(buffer_.data() + fromOffset, size() - fromOffset);
}

void Serialize::clear() noexcept {
   buffer_.clear();
   writeOffset_ = 0;
}

void Serialize::writeOffsetIs(std::size_t offset) noexcept {
   QOR_ASSERT(offset <= size());
   writeOffset_ = offset;
}

SerializePathAttribute::SerializePathAttribute(BgpPathAttrType type, BgpPathAttrFlag flags,
                                               U32 attrSize) {
   clearAndReInit(type, flags, attrSize);
}

void SerializePathAttribute::clearAndReInit(BgpPathAttrType type, BgpPathAttrFlag flags,
                                            U32 attrSize) {
   clear();
   attrSize_ = attrSize;
   // The header goes first so that an impossible length fails its check
   // before anything is allocated for it.
   reInitHdr(type, flags, attrSize);
   growBuffer(attrSize);
}

namespace {

// A path attribute header: flags, type, then the value length in one octet,
// or in two when extLen is set or needed.
struct AttributeHeader {
   U8 bytes[longHdrSize];
   U32 size; // 3 or 4
};

AttributeHeader attributeHeader(BgpPathAttrType type, BgpPathAttrFlag flags, U32 attrSize) {
   U32 const attrType = type;
   U32 attrFlags = flags;
   QOR_ASSERT(attrType <= 0xFF);
   QOR_ASSERT(attrFlags <= 0xFF);
   if (attrSize > maxShortAttrSize) {
      QOR_ASSERT(attrSize <= 0xFFFF);
      attrFlags |= extLen;
   }
   AttributeHeader header{{static_cast<U8>(attrFlags), static_cast<U8>(attrType)}, 0};
   if (attrFlags & extLen) {
      header.bytes[2] = static_cast<U8>(attrSize >> 8);
      header.bytes[3] = static_cast<U8>(attrSize);
      header.size = longHdrSize;
   } else {
      header.bytes[2] = static_cast<U8>(attrSize);
      header.size = shortHdrSize;
   }
   return header;
}

} // namespace

void SerializePathAttribute::reInitHdr(BgpPathAttrType type, BgpPathAttrFlag flags,
                                       U32 attrSize) {
   AttributeHeader const header = attributeHeader(type, flags, attrSize);
   addBytes(std::span<U8 const>(header.bytes, header.size));
   headerSize_ = header.size;
}

namespace {

void putWord(char*& at, U32 word) noexcept {
   U32 const wire = toNetworkOrder(word);
   std::memcpy(at, &wire, sizeof wire);
   at += sizeof wire;
}
void putWords(char*& at, U32 element) noexcept { putWord(at, element); }
void putWords(char*& at, Acl::CommunityValue const& element) noexcept {
   putWord(at, element.globalAdmin);
   putWord(at, element.localData1);
   putWord(at, element.localData2);
}

template <class Element>
std::string wordsAttribute(BgpPathAttrType type, BgpPathAttrFlag flags,
                           std::span<Element const> elements) {
   // Sizes beyond 32 bits saturate, so that they fail the length check.
   U32 const valueSize = static_cast<U32>(std::min<std::size_t>(
      elements.size(), std::numeric_limits<U32>::max() / sizeof(Element)) * sizeof(Element));
   AttributeHeader const header = attributeHeader(type, flags, valueSize);
   std::string out(header.size + valueSize, '\0');
   char* at = out.data();
   std::memcpy(at, header.bytes, header.size);
   at += header.size;
   for (Element const& element : elements) {
      putWords(at, element);
   }
   return out;
}

} // namespace

std::string SerializePathAttribute::serializeWords(BgpPathAttrType type, BgpPathAttrFlag flags,
                                                   std::span<U32 const> elements) {
   return wordsAttribute(type, flags, elements);
}

std::string SerializePathAttribute::serializeWords(BgpPathAttrType type, BgpPathAttrFlag flags,
                                                   std::span<Acl::CommunityValue const> elements) {
   static_assert(sizeof(Acl::CommunityValue) == 3 * sizeof(U32));
   return wordsAttribute(type, flags, elements);
}

std::string SerializePathAttribute::headedBuffer(BgpPathAttrType type, BgpPathAttrFlag flags,
                                                 U32 attrSize, std::size_t valueSize) {
   AttributeHeader const header = attributeHeader(type, flags, attrSize);
   std::string out(header.size + valueSize, '\0');
   std::memcpy(out.data(), header.bytes, header.size);
   return out;
}

std::string SerializePathAttribute::serializedString() const {
   std::string serialized = Serialize::serializedString(0);
   QOR_ASSERT(serialized.size() == attrSize_ + headerSize_);
   return serialized;
}

SerializePathAttributeAutoExtLen::SerializePathAttributeAutoExtLen() {
   static constexpr U8 placeholder[reservedHdrSize] = {};
   addBytes(placeholder);
}

std::string SerializePathAttributeAutoExtLen::serializeAttributeValue() const {
   return Serialize::serializedString(reservedHdrSize);
}

std::string SerializePathAttributeAutoExtLen::patchHdrAndStringify(BgpPathAttrType type,
                                                                   BgpPathAttrFlag flags) {
   std::size_t const end = size();
   // The full length, not its low 16 bits: an over-long value must fail the
   // header's length check rather than get a header with a wrapped length.
   U32 const valueSize = static_cast<U32>(
       std::min<std::size_t>(end - reservedHdrSize, std::numeric_limits<U32>::max()));
   // The header must end exactly where the value begins, so its offset comes
   // from the size reInitHdr will write: 4 bytes for a long value and also
   // when the caller asks for extLen, else 3.
   bool const longHdr = valueSize > maxShortAttrSize || (flags & extLen) != 0;
   std::size_t const hdrOffset = reservedHdrSize - (longHdr ? longHdrSize : shortHdrSize);
   writeOffsetIs(hdrOffset);
   reInitHdr(type, flags, valueSize);
   writeOffsetIs(end);
   return Serialize::serializedString(hdrOffset);
}

SerializedBgpPrefixSidAttribute::SerializedBgpPrefixSidAttribute(PrefixSidTlvType type,
                                                                 unsigned short length) {
   U32 const tlvType = type;
   QOR_ASSERT(tlvType <= 0xFF);
   addU8(static_cast<U8>(tlvType));
   addU16hton(length);
   growBuffer(length);
}

} // namespace Routing::Bgp
