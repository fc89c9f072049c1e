/// @file
/// Small bit-set value types with a reflective text: each bit is a boolean
/// field of Value('\<type\>', ** {'\<bit name\>': True, ...}).
///
/// @code{.cpp}
///   struct Layout {
///      static constexpr std::string_view typeName = "Routing::Bgp::Foo::Attrs";
///      static constexpr Kiv::FlagField fields[] = {{"sorted", 1}, {"hasPrunableValues", 2}};
///   };
///   class Attrs : public Kiv::BitSetValue<Layout> { ... named accessors ... };
/// @endcode
///
/// Construction from a raw U32 keeps the bits the layout names and drops the
/// rest; the text parser rejects anything but exactly the layout's fields.
#pragma once

#include "QorBgpCommunity/platform/Types.h"
#include "QorBgpCommunity/platform/ValueText.h"

#include <string>
#include <string_view>

namespace Kiv {

/// A word of named flags whose reflection text names each bit; `Layout` gives the names.
template <class Layout>
class BitSetValue {
 public:
   static constexpr U32 allBits = [] {
      U32 bits = 0;
      for (FlagField const& f : Layout::fields) {
         bits |= f.bit;
      }
      return bits;
   }();

   constexpr BitSetValue() noexcept = default;
   constexpr explicit BitSetValue(U32 raw) noexcept : bits_(raw & allBits) {}

   /// RangeError when the text is malformed.
   static BitSetValue fromValueStrep(std::string_view text) {
      return BitSetValue(flagSetFromValueText(text, Layout::typeName, Layout::fields));
   }
   std::string valueToStrep() const { return flagSetValueText(Layout::typeName, Layout::fields, bits_); }

   constexpr U32 value() const noexcept { return bits_; }
   constexpr bool has(U32 bit) const noexcept { return (bits_ & bit) != 0; }
   constexpr void bitIs(U32 bit, bool on) noexcept { bits_ = on ? (bits_ | bit) : (bits_ & ~bit); }

   friend constexpr bool operator==(BitSetValue, BitSetValue) noexcept = default;

 private:
   U32 bits_ = 0;
};

} // namespace Kiv
