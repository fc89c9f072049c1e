#include "QorBgpCommunity/QorBgp/QorBgpSerialize.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace Routing::Bgp {
namespace {

using Bytes = std::vector<U8>;

std::string hex(Bytes const& bytes) {
   std::string text;
   for (char digits[4]; U8 b : bytes) {
      text.append(digits, std::snprintf(digits, sizeof digits, "%02x ", b));
   }
   return text;
}

void expectBytes(std::string const& actual, Bytes const& expected) {
   Bytes const got(actual.begin(), actual.end());
   EXPECT_EQ(got, expected) << "got      " << hex(got) << "\nexpected " << hex(expected);
}

// `count` bytes 0, 1, 2, ... (mod 256), so that misplaced bytes show; after `head`.
Bytes counting(std::size_t count, Bytes head = {}) {
   for (std::size_t i = 0; i < count; ++i) {
      head.push_back(static_cast<U8>(i));
   }
   return head;
}

TEST(Serialize, WritesNetworkOrderAndKeepsDataAcrossGrowth) {
   SerializePathAttribute out(community, optionalTransitive, 15);
   out.addU8(0x00);
   out.addU16hton(0x0102);
   out.addU32hton(0x03040506);
   out.addU64hton(0x0708090a0b0c0d0eULL);
   expectBytes(out.serializedString(), counting(15, {0xC0, 8, 15}));

   // The TLV writer makes room for its whole value up front, moving the header
   // it has written from the inline area to the heap.
   SerializedBgpPrefixSidAttribute tlv(labelIndexTlv, 0xFFFF);
   std::size_t const capacity = tlv.capacity();
   tlv.addBytes(counting(0xFFFF));
   EXPECT_EQ(tlv.capacity(), capacity);
   expectBytes(tlv.serializedString(0), counting(0xFFFF, {1, 0xFF, 0xFF}));
   expectBytes(tlv.serializedString(0xFFFF + 1), {0xFD, 0xFE});
}

TEST(SerializePathAttribute, HeaderLengthFormFollowsSizeAndCallerExtLen) {
   struct Row {
      BgpPathAttrFlag flags;
      U32 size;
      Bytes header;
   };
   Row const rows[] = {
       {optionalTransitive, 0, {0xC0, 16, 0}},
       {optionalTransitive, 255, {0xC0, 16, 0xFF}},
       {optionalTransitive, 256, {0xD0, 16, 0x01, 0x00}},
       {optionalTransitive, 0xFFFF, {0xD0, 16, 0xFF, 0xFF}},
       {optionalTransitive | extLen, 10, {0xD0, 16, 0x00, 0x0A}},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(::testing::Message() << "flags " << row.flags << " size " << row.size);
      SerializePathAttribute out(extCommunity, row.flags, row.size);
      out.addBytes(counting(row.size));
      EXPECT_EQ(out.headerSize(), row.header.size());
      expectBytes(out.serializedString(), counting(row.size, row.header));

      // The writer that learns the length at the end chooses the same header,
      // and with extLen from the caller that header must not eat the value.
      SerializePathAttributeAutoExtLen autoLen;
      autoLen.addBytes(counting(row.size));
      expectBytes(autoLen.patchHdrAndStringify(extCommunity, row.flags),
                  counting(row.size, row.header));
      Bytes value = counting(row.size);
      value.push_back(0xEE);
      autoLen.addU8(0xEE); // the write position is back at the end
      expectBytes(autoLen.serializeAttributeValue(), value);
   }
}

TEST(SerializePathAttribute, ClearAndReInitStartsAFreshAttribute) {
   SerializePathAttribute out(community, optionalTransitive, 300);
   out.addBytes(counting(300));
   out.clearAndReInit(largeCommunity, optionalTransitive, 2);
   out.addU16hton(0xBEEF);
   expectBytes(out.serializedString(), {0xC0, 32, 2, 0xBE, 0xEF});
}

TEST(SerializeDeathTest, HeaderFieldsMustFit) {
   EXPECT_DEATH(SerializePathAttribute(static_cast<BgpPathAttrType>(0x100), opt, 1),
                "QorBgpSerialize:[0-9]+: assertion failed: attrType <= 0xFF");
   EXPECT_DEATH(SerializePathAttribute(community, static_cast<BgpPathAttrFlag>(0x100), 1),
                "assertion failed: attrFlags <= 0xFF");
   EXPECT_DEATH(SerializedBgpPrefixSidAttribute(static_cast<PrefixSidTlvType>(0x100), 1),
                "assertion failed: tlvType <= 0xFF");
   EXPECT_DEATH(SerializePathAttribute(community, optionalTransitive, 0x10000),
                "assertion failed: attrSize <= 0xFFFF");
   SerializePathAttributeAutoExtLen autoLen;
   autoLen.addBytes(counting(0x10000));
   EXPECT_DEATH(autoLen.patchHdrAndStringify(extCommunity, optionalTransitive),
                "assertion failed: attrSize <= 0xFFFF");
   std::vector<U32> const tooLong(0x4000); // 65536 value bytes
   EXPECT_DEATH(SerializePathAttribute::serializeWords(community, optionalTransitive, tooLong),
                "assertion failed: attrSize <= 0xFFFF");
}

TEST(SerializeDeathTest, ValueMustHaveThePromisedLength) {
   char const* const message = "serialized.size\\(\\) == attrSize_ \\+ headerSize_";
   SerializePathAttribute shortValue(community, optionalTransitive, 4);
   shortValue.addU16hton(1);
   EXPECT_DEATH(shortValue.serializedString(), message);
   SerializePathAttribute longValue(community, optionalTransitive, 4);
   longValue.addU64hton(1);
   EXPECT_DEATH(longValue.serializedString(), message);
   EXPECT_DEATH(longValue.Serialize::serializedString(13), "fromOffset <= size\\(\\)");
}

} // namespace
} // namespace Routing::Bgp
