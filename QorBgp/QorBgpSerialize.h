/// @file
/// Writers of BGP wire data: a growable byte writer and, on top of it, the
/// writers of a path attribute (header and value) and of a Prefix-SID TLV.
///
/// Every community list serialiser goes through SerializePathAttribute:
///
/// @code{.cpp}
///   SerializePathAttribute out(community, optionalTransitive, 4 * n);
///   for (U32 comm : comms) out.addU32hton(comm);
///   std::string attribute = out.serializedString();   // header + 4n bytes
/// @endcode
///
/// or, for lists of 32-bit words, in one call:
///
/// @code{.cpp}
///   std::string attribute = SerializePathAttribute::serializeWords(community, optionalTransitive, comms);
/// @endcode
///
/// Writers are not copyable or movable (their first bytes live inline) and not
/// thread-safe; they are meant to live on the stack of one serialising call.
#pragma once

#include "QorBgpCommunity/QorBgp/BgpPathAttributeEnums.h"
#include "QorBgpCommunity/platform/CommunityValue.h"
#include "QorBgpCommunity/platform/DynamicBuffer.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Types.h"

#include <cstddef>
#include <span>
#include <string>

namespace Routing::Bgp {

/// A byte writer with a write position. Bytes are written at the position,
/// which then moves past them; writing past the end extends the data, writing
/// before it (after writeOffsetIs) overwrites in place. The first
/// inlineCapacity bytes need no allocation; beyond that the storage grows on
/// demand, at least doubling.
class QORBGP_EXPORT Serialize {
 public:
   static constexpr std::size_t inlineCapacity = 4096;

   Serialize() noexcept = default;

   void addU8(U8 value);
   /// Multi-byte values go out in network byte order (most significant first).
   ///@{
   void addU16hton(U16 value);
   void addU32hton(U32 value);
   void addU64hton(U64 value);
   ///@}
   /// WARNING: `bytes` must not view this writer's own data; growing the
   /// storage would free it before the copy.
   void addBytes(std::span<U8 const> bytes);

   /// Makes room for at least `extra` bytes after the write position, so that
   /// writing them allocates nothing. Written data is kept.
   void growBuffer(std::size_t extra);

   /// The data from `fromOffset` to the end. Asserts "fromOffset <= size()".
   std::string serializedString(std::size_t fromOffset) const;

   /// Bytes written (the end of the data, wherever the write position is).
   std::size_t size() const noexcept { return buffer_.size(); }
   std::size_t capacity() const noexcept { return buffer_.capacity(); }
   std::size_t writeOffset() const noexcept { return writeOffset_; }

 protected:
   /// Drops all data; the storage is kept for reuse.
   void clear() noexcept;
   /// Moves the write position. Asserts "offset <= size()".
   void writeOffsetIs(std::size_t offset) noexcept;

 private:
   void write(void const* bytes, std::size_t count);

   Kiv::DynamicBuffer<inlineCapacity> buffer_; ///< size() is the end of the data
   std::size_t writeOffset_ = 0;               ///< <= buffer_.size()
};

/// A path attribute whose value length is known before the value is written:
/// the header goes out first, then the caller appends exactly the promised
/// number of value bytes with the add* operations.
///
/// Header layout: flags octet, type octet, then the value length in one octet,
/// or in two octets (network order) when the flags hold extLen. A length above
/// 255 forces extLen on; extLen given by the caller for a short value is kept.
class QORBGP_EXPORT SerializePathAttribute : public Serialize {
 public:
   /// Writes the header; see clearAndReInit.
   SerializePathAttribute(BgpPathAttrType type, BgpPathAttrFlag flags, U32 attrSize);

   /// Starts over: drops all data, writes the header for `attrSize` value
   /// bytes and makes room for them.
   void clearAndReInit(BgpPathAttrType type, BgpPathAttrFlag flags, U32 attrSize);

   /// Writes a header at the write position and sets headerSize() to its size,
   /// 3 or 4. Asserts "attrType <= 0xFF" and "attrFlags <= 0xFF", and, for a
   /// length above 255, "attrSize <= 0xFFFF". Does not change attrSize().
   void reInitHdr(BgpPathAttrType type, BgpPathAttrFlag flags, U32 attrSize);

   /// The whole attribute, header and value. Asserts
   /// "serialized.size() == attrSize_ + headerSize_": the caller wrote exactly
   /// the value length it promised.
   std::string serializedString() const;

   U32 headerSize() const noexcept { return headerSize_; }
   U32 attrSize() const noexcept { return attrSize_; }

   /// The whole attribute whose value is `elements`, each 32-bit word in
   /// network byte order (a large community is its three words in order),
   /// built in one allocation of exactly its size, no writer needed: the
   /// header as reInitHdr writes it (same assertions), then the words. The
   /// fast path of the standard and large community lists.
   ///@{
   static std::string serializeWords(BgpPathAttrType type, BgpPathAttrFlag flags,
                                     std::span<U32 const> elements);
   static std::string serializeWords(BgpPathAttrType type, BgpPathAttrFlag flags,
                                     std::span<Acl::CommunityValue const> elements);
   ///@}
   /// An attribute to fill in place, in one allocation: its header announcing
   /// `attrSize` value bytes (as reInitHdr writes it, same assertions), then
   /// `valueSize` zero bytes, the last of the string, for the caller to write.
   static std::string headedBuffer(BgpPathAttrType type, BgpPathAttrFlag flags, U32 attrSize,
                                   std::size_t valueSize);

 protected:
   /// A writer with no header yet.
   SerializePathAttribute() noexcept = default;

 private:
   U32 headerSize_ = 0; ///< 3 or 4 once a header is written
   U32 attrSize_ = 0;   ///< the value length promised to clearAndReInit
};

/// A path attribute whose value length is known only once the value is
/// written. The writer starts with reservedHdrSize placeholder bytes; the
/// caller appends the value and then calls patchHdrAndStringify, which fills
/// in the smallest header that fits and returns the attribute.
///
/// @code{.cpp}
///   SerializePathAttributeAutoExtLen out;
///   for (...) out.addU64hton(word);
///   std::string attribute = out.patchHdrAndStringify(extCommunity, optionalTransitive);
/// @endcode
class QORBGP_EXPORT SerializePathAttributeAutoExtLen : public SerializePathAttribute {
 public:
   static constexpr std::size_t reservedHdrSize = 4;

   SerializePathAttributeAutoExtLen();

   /// The value bytes written so far (everything after the reserved header).
   std::string serializeAttributeValue() const;

   /// Writes the header for the value written so far and returns header and
   /// value. The header is 3 bytes for a value of up to 255 bytes, else 4 (as
   /// for reInitHdr, extLen in `flags` also makes it 4). Asserts as reInitHdr
   /// does, so a value above 65535 bytes is fatal. May be called again after
   /// more value bytes are added.
   std::string patchHdrAndStringify(BgpPathAttrType type, BgpPathAttrFlag flags);

   /// The inherited whole-buffer form would include unused placeholder bytes.
   std::string serializedString() const = delete;
};

/// A Prefix-SID TLV: the writer starts with the TLV header (type octet, then
/// `length` in two octets, network order); the caller appends `length` value
/// bytes. Asserts "tlvType <= 0xFF".
class QORBGP_EXPORT SerializedBgpPrefixSidAttribute : public Serialize {
 public:
   SerializedBgpPrefixSidAttribute(PrefixSidTlvType type, unsigned short length);
};

} // namespace Routing::Bgp
