#include "QorBgpCommunity/QorBgp/QorBgpMiscTypes.h"

#include "QorBgpCommunity/platform/Assert.h"
#include "QorBgpCommunity/platform/Errors.h"
#include "QorBgpCommunity/platform/ValueText.h"

#include <limits>

namespace Routing::Bgp {

QOR_ASSERT_UNIT("QorBgpMiscTypes");

namespace {

constexpr U64 maxDenseWord = std::numeric_limits<U32>::max();

void checkIndex(unsigned index, unsigned count, char const* operation) {
   if (index >= count) {
      throw Kiv::RangeError(operation);
   }
}

// Replaces the `width` bits at `shift` with `bits`.
U32 withField(U32 word, unsigned shift, U32 width, U32 bits) noexcept {
   U32 const mask = ((U32{1} << width) - 1) << shift;
   return (word & ~mask) | ((bits << shift) & mask);
}

} // namespace

BgpDenseU32Attr::BgpDenseU32Attr(std::string_view text) {
   auto const word = Kiv::parseU64(text);
   if (!word || *word > maxDenseWord) {
      throw Kiv::RangeError("invalid BgpDenseU32Attr text '" + std::string(text) + "'");
   }
   value_ = static_cast<U32>(*word);
}

bool BgpDenseU32Attr::valueBool(U8 index) const {
   checkIndex(index, boolCount, "BgpDenseU32Attr::valueBool");
   return (value_ >> index) & 1u;
}

void BgpDenseU32Attr::valueBoolIs(U8 index, bool value) {
   checkIndex(index, boolCount, "BgpDenseU32Attr::valueBoolIs");
   value_ = withField(value_, index, 1, value ? 1u : 0u);
}

void BgpDenseU32Attr::valueBoolDel(U8) {
   throw Kiv::NotDeletableError("BgpDenseU32Attr::valueBoolDel");
}

U8 BgpDenseU32Attr::valueU8(U8 index) const {
   checkIndex(index, u8Count, "BgpDenseU32Attr::valueU8");
   return static_cast<U8>(value_ >> (8u * index));
}

void BgpDenseU32Attr::valueU8Is(U8 index, U8 value) {
   checkIndex(index, u8Count, "BgpDenseU32Attr::valueU8Is");
   value_ = withField(value_, 8u * index, 8, value);
}

void BgpDenseU32Attr::valueU8Del(U8) {
   throw Kiv::NotDeletableError("BgpDenseU32Attr::valueU8Del");
}

U16 BgpDenseU32Attr::valueU16(U8 index) const {
   checkIndex(index, u16Count, "BgpDenseU32Attr::valueU16");
   return static_cast<U16>(value_ >> (16u * index));
}

void BgpDenseU32Attr::valueU16Is(U8 index, U16 value) {
   checkIndex(index, u16Count, "BgpDenseU32Attr::valueU16Is");
   value_ = withField(value_, 16u * index, 16, value);
}

void BgpDenseU32Attr::valueU16Del(U8) {
   throw Kiv::NotDeletableError("BgpDenseU32Attr::valueU16Del");
}

std::string valueToStrep(BgpDenseU32Attr attr) { return std::to_string(attr.value()); }

std::ostream& operator<<(std::ostream& os, BgpDenseU32Attr attr) {
   return os << valueToStrep(attr);
}

void BgpMaybeU63::checkValue() {
   if (isUnspecified()) {
      return;
   }
   if (word_ < min() || word_ > max()) {
      // Unspecified before raising: a rejected value must not stay behind.
      word_ = unspecifiedWord;
      throw Kiv::RangeError("value < min or > max not allowed");
   }
}

U64 BgpMaybeU63::min() const noexcept { return 1; }

U64 BgpMaybeU63::max() const noexcept { return 0; }

U64 BgpMaybeU63::mappedUnspecifiedValue() const noexcept { return 0; }

BgpMaybeU63::~BgpMaybeU63() = default;

U64 BgpMaybeU63::value() const noexcept {
   QOR_ASSERT(!isUnspecified() && "Caller must check isUnspecified() before getting value()");
   return word_;
}

U64 BgpMaybeU63::valueWithUnspecifiedMapped() const noexcept {
   return isUnspecified() ? mappedUnspecifiedValue() : word_;
}

void BgpMaybeU63::valueIs(U64 value) {
   if (value & unspecifiedWord) {
      word_ = unspecifiedWord;
      throw Kiv::RangeError("value < min or > max not allowed");
   }
   word_ = value;
   checkValue();
}

std::string BgpMaybeU63::toStrep() const {
   return isUnspecified() ? std::string("-") : std::to_string(word_);
}

void BgpMaybeU63::sequenceToValue(std::string_view text) {
   if (text == "-") {
      valueDel();
      return;
   }
   auto const value = Kiv::parseU64(text);
   if (!value) {
      throw Kiv::RangeError("invalid BgpMaybeU63 text '" + std::string(text) + "'");
   }
   valueIs(*value);
}

bool operator<(BgpMaybeU63 const& a, BgpMaybeU63 const& b) noexcept {
   if (a.isUnspecified() || b.isUnspecified()) {
      return a.isUnspecified() && !b.isUnspecified();
   }
   return a.value() < b.value();
}

std::string valueToStrep(BgpMaybeU63 const& value) { return value.toStrep(); }

std::ostream& operator<<(std::ostream& os, BgpMaybeU63 const& value) {
   return os << value.toStrep();
}

BgpExtCommPktSubtype::BgpExtCommPktSubtype(U64 value) {
   // In this constructor checkValue already dispatches to this class, so the
   // 0..255 range applies.
   valueIs(value);
}

U64 BgpExtCommPktSubtype::min() const noexcept { return 0; }

U64 BgpExtCommPktSubtype::max() const noexcept { return 255; }

BgpExtCommPktSubtype::~BgpExtCommPktSubtype() = default;

} // namespace Routing::Bgp
