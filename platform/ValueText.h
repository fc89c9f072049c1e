/// @file
/// The reflective text form shared by every small value type:
///
/// @code{.unparsed}
///   Value('Routing::Bgp::ExtComm::StrepFormat', ** {'strepFormatDefault': True, ...})
/// @endcode
///
/// ValueTextWriter builds it field by field; ValueTextReader takes it apart
/// again. Field values are the framework's texts of their types: booleans are
/// True and False, integers decimal, nested values their own Value(...) text.
///
/// @code{.cpp}
///   std::string text = Kiv::ValueTextWriter("Routing::Bgp::Foo")
///                         .field("sorted", true).field("count", U64{3}).finish();
///   Kiv::ValueTextReader in(text, "Routing::Bgp::Foo");
///   bool sorted = in.boolField("sorted");
/// @endcode
#pragma once

#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Types.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Kiv {

/// "True" or "False".
QORBGP_EXPORT std::string_view boolText(bool value) noexcept;
/// Inverse of boolText; nothing for any other text.
QORBGP_EXPORT std::optional<bool> parseBool(std::string_view text) noexcept;
/// Plain decimal digits that fit in 64 bits; nothing otherwise (no sign, no space).
QORBGP_EXPORT std::optional<U64> parseU64(std::string_view text) noexcept;

/// Builds a value's reflection text one field at a time.
class QORBGP_EXPORT ValueTextWriter {
 public:
   explicit ValueTextWriter(std::string_view typeName);

   /// Appends "'name': valueText", separated from the previous field by ", ".
   ValueTextWriter& field(std::string_view name, std::string_view valueText);
   /// NOTE: without this overload a string literal would pick the bool one
   /// (pointer-to-bool beats the conversion to string_view) and write True.
   ValueTextWriter& field(std::string_view name, char const* valueText) {
      return field(name, std::string_view(valueText));
   }
   ValueTextWriter& field(std::string_view name, bool value);
   ValueTextWriter& field(std::string_view name, U64 value);

   /// Closes the text; the writer is spent afterwards.
   std::string finish();

 private:
   std::string text_;
   bool first_ = true;
};

/// Parses the whole text at construction. Every malformation (wrong type name,
/// bad punctuation, a field asked for but missing, a field given twice, a field
/// left unread at finish(), a value of the wrong form) raises RangeError with a
/// message that names the type and what is wrong.
/// WARNING: the reader and the views that field() returns point into `text`,
/// which must outlive them.
class QORBGP_EXPORT ValueTextReader {
 public:
   ValueTextReader(std::string_view text, std::string_view typeName);

   /// The raw text of a field's value. Fields may come in any order.
   std::string_view field(std::string_view name);
   bool boolField(std::string_view name);
   U64 u64Field(std::string_view name);

   /// Checks that every field of the text was read.
   void finish() const;

 private:
   [[noreturn]] void fail(std::string_view what) const;

   std::string typeName_;
   struct Field {
      std::string_view name;
      std::string_view value;
      bool read = false;
   };
   std::vector<Field> fields_; ///< views into the caller's text
};

/// The framework's text of a raw pointer: "0x" and lower-case hexadecimal
/// digits, "0x0" for null. parsePointer reads it back (nothing for other text).
///@{
QORBGP_EXPORT std::string pointerText(void const* pointer);
QORBGP_EXPORT std::optional<std::uintptr_t> parsePointer(std::string_view text) noexcept;
///@}

/// Bit sets whose reflection text names each bit as a boolean field:
/// @code{.unparsed}
///   Value('Routing::Bgp::Foo', ** {'sorted': True, 'hasPrunableValues': False})
/// @endcode
struct FlagField {
   std::string_view name;
   U32 bit;
};

/// The reflection text of `value`, one field per entry of `fields`, in order.
QORBGP_EXPORT std::string flagSetValueText(std::string_view typeName,
                                           std::span<FlagField const> fields, U32 value);
/// Raises RangeError "<name> <value> > <max> not allowed".
[[noreturn]] QORBGP_EXPORT void flagSetOutOfRange(std::string_view name, U32 value, U32 max);
/// The bits that the text sets; RangeError when it is malformed or does not
/// name exactly the fields given.
QORBGP_EXPORT U32 flagSetFromValueText(std::string_view text, std::string_view typeName,
                                       std::span<FlagField const> fields);

} // namespace Kiv
