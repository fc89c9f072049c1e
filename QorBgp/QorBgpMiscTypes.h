/// @file
/// Small value types for compact attribute storage: a 32-bit word read and
/// written as flags, octets or 16-bit halves (BgpDenseU32Attr), and an optional
/// unsigned value of up to 63 bits whose range each subclass fixes
/// (BgpMaybeU63, with BgpExtCommPktSubtype for the subtype octet of an
/// extended community).
#pragma once

#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Types.h"

#include <ostream>
#include <string>
#include <string_view>

namespace Routing::Bgp {

/// One 32-bit word seen through three overlapping views that share its bits:
///
/// @code{.unparsed}
///   valueBool(i)  i in 0..15   bit i (0 = least significant); bits 16..31
///                              have no flag view
///   valueU8(i)    i in 0..3    bits 8i..8i+7
///   valueU16(i)   i in 0..1    bits 16i..16i+15
/// @endcode
///
/// An index outside its view's range raises Kiv::RangeError whose text is the
/// operation's qualified name ("BgpDenseU32Attr::valueU8Is"); a rejected write
/// leaves the word unchanged. The views cannot be deleted: every *Del
/// operation raises Kiv::NotDeletableError with its own name.
///
/// A trivially copyable value; the text form is the word in decimal.
///
/// @code{.cpp}
///   BgpDenseU32Attr attr;
///   attr.valueU8Is(3, 0xAB);   // word 0xAB000000
///   attr.valueU16(1);          // 0xAB00
/// @endcode
class QORBGP_EXPORT BgpDenseU32Attr {
 public:
   static constexpr unsigned boolCount = 16;
   static constexpr unsigned u8Count = 4;
   static constexpr unsigned u16Count = 2;

   constexpr BgpDenseU32Attr() noexcept = default;
   constexpr explicit BgpDenseU32Attr(U32 value) noexcept : value_(value) {}
   /// Parses the text form: decimal digits of a value up to 4294967295, nothing
   /// else. Any other text raises Kiv::RangeError.
   explicit BgpDenseU32Attr(std::string_view text);

   U32 value() const noexcept { return value_; }

   bool valueBool(U8 index) const;
   void valueBoolIs(U8 index, bool value);
   [[noreturn]] void valueBoolDel(U8 index);

   U8 valueU8(U8 index) const;
   void valueU8Is(U8 index, U8 value);
   [[noreturn]] void valueU8Del(U8 index);

   U16 valueU16(U8 index) const;
   void valueU16Is(U8 index, U16 value);
   [[noreturn]] void valueU16Del(U8 index);

   friend bool operator==(BgpDenseU32Attr, BgpDenseU32Attr) noexcept = default;

 private:
   U32 value_ = 0;
};

/// The word in decimal.
///@{
QORBGP_EXPORT std::string valueToStrep(BgpDenseU32Attr attr);
QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, BgpDenseU32Attr attr);
///@}

/// An optional unsigned value of up to 63 bits. The word's bit 63 marks the
/// value unspecified (the unspecified word is exactly unspecifiedWord);
/// otherwise the word is the value. A new object is unspecified.
///
/// The accepted range [min(), max()] belongs to the subclass. The base range
/// is empty (1..0), so only a subclass that overrides min() and max() can hold
/// a value. Every assignment (valueIs, sequenceToValue, a subclass
/// constructor) runs checkValue(), which turns an out-of-range value into
/// unspecified before raising Kiv::RangeError("value < min or > max not
/// allowed"); an object never holds a value outside its range.
///
/// Reading the value of an unspecified object is a fatal assertion: callers
/// test isUnspecified() first or use valueWithUnspecifiedMapped().
///
/// A copyable value; copying into a base object keeps the word, and the
/// base's range applies to later assignments. Not thread-safe for writes.
class QORBGP_EXPORT BgpMaybeU63 {
 public:
   static constexpr U64 unspecifiedWord = U64{1} << 63;

   BgpMaybeU63() noexcept = default;
   BgpMaybeU63(BgpMaybeU63 const&) noexcept = default;
   BgpMaybeU63& operator=(BgpMaybeU63 const&) noexcept = default;

   // NOTE: the declaration order of the virtual operations is their vtable
   // slot order and part of the binary interface: keep it.

   /// Does nothing when unspecified. A value below min() or above max() makes
   /// the object unspecified, then raises Kiv::RangeError.
   virtual void checkValue();
   virtual U64 min() const noexcept;                    ///< 1
   virtual U64 max() const noexcept;                    ///< 0
   virtual U64 mappedUnspecifiedValue() const noexcept; ///< 0
   virtual ~BgpMaybeU63();

   bool isUnspecified() const noexcept { return (word_ & unspecifiedWord) != 0; }

   /// The value. Asserts
   /// "!isUnspecified() && \"Caller must check isUnspecified() before getting value()\"".
   U64 value() const noexcept;
   operator unsigned long() const noexcept { return value(); }
   /// The value, or mappedUnspecifiedValue() when unspecified.
   U64 valueWithUnspecifiedMapped() const noexcept;

   /// Assigns `value` and runs checkValue(). A value with bit 63 set is out of
   /// every range: the object becomes unspecified and Kiv::RangeError is raised
   /// with checkValue's text.
   void valueIs(U64 value);
   /// Makes the object unspecified.
   void valueDel() noexcept { word_ = unspecifiedWord; }

   /// "-" when unspecified, else the value in decimal.
   std::string toStrep() const;
   /// Assigns from the text form: "-" makes the object unspecified, decimal
   /// digits assign that value as valueIs does. Any other text raises
   /// Kiv::RangeError and leaves the object unchanged.
   void sequenceToValue(std::string_view text);

   /// Two unspecified values are equal; unspecified sorts before every value.
   friend bool operator==(BgpMaybeU63 const& a, BgpMaybeU63 const& b) noexcept {
      return a.word_ == b.word_;
   }

 private:
   U64 word_ = unspecifiedWord; ///< bit 63 set only as exactly unspecifiedWord
};

QORBGP_EXPORT bool operator<(BgpMaybeU63 const& a, BgpMaybeU63 const& b) noexcept;
QORBGP_EXPORT std::string valueToStrep(BgpMaybeU63 const& value);
QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, BgpMaybeU63 const& value);

/// The subtype octet of an extended community, 0..255; unspecified for a type
/// that has no subtype octet.
class QORBGP_EXPORT BgpExtCommPktSubtype : public BgpMaybeU63 {
 public:
   BgpExtCommPktSubtype() noexcept = default;
   /// Kiv::RangeError for a value above 255.
   explicit BgpExtCommPktSubtype(U64 value);

   U64 min() const noexcept override; ///< 0
   U64 max() const noexcept override; ///< 255
   ~BgpExtCommPktSubtype() override;
};

} // namespace Routing::Bgp
