/// @file
/// The selector of an extended community's text form (toStrepForPolicy): a
/// small set of flags in one word, shared by the 8-octet and the IPv6 values,
/// which differ only in which flags exist and where they sit.
///
/// @code{.cpp}
///   ExtComm::StrepFormat f(ExtComm::StrepFormat::flagClassification |
///                          ExtComm::StrepFormat::flagUI);
///   f.strepFormatUI();       // true
///   f.valueToStrep();        // "Value('Routing::Bgp::ExtComm::StrepFormat', ** {...})"
/// @endcode
///
/// A Layout gives `typeName` (the reflection name), `fields` (each flag's
/// reflection name and bit, in text order) and the bits of the optional flags
/// `json`, `asdot` and `linkBwWeighted` (0 for a flag the set does not have).
/// Default, classification and UI are bits 0 to 2 in every layout.
#pragma once

#include "QorBgpCommunity/platform/Types.h"
#include "QorBgpCommunity/platform/ValueText.h"

#include <string>
#include <string_view>

namespace Routing::Bgp {

/// The flags that select a value's text form; `Layout` says which optional flags exist and
/// where they sit.
template <class Layout>
class StrepFormatFlags {
 public:
   static constexpr U32 flagDefault = 1;
   static constexpr U32 flagClassification = 2;
   static constexpr U32 flagUI = 4;
   static constexpr U32 flagJson = Layout::json;
   static constexpr U32 flagAsdot = Layout::asdot;
   static constexpr U32 flagLinkBwWeighted = Layout::linkBwWeighted;
   static constexpr U32 allFlags =
      flagDefault | flagClassification | flagUI | flagJson | flagAsdot | flagLinkBwWeighted;

   constexpr StrepFormatFlags() noexcept = default;
   /// Keeps the bits of the set; RangeError when `value` is above allFlags.
   explicit StrepFormatFlags(U32 value) : value_(value & allFlags) {
      if (value > allFlags) {
         Kiv::flagSetOutOfRange(shortName(), value, allFlags);
      }
   }
   /// Parses the reflection text; RangeError when it is malformed or does not
   /// name exactly this set's flags.
   static StrepFormatFlags fromValueStrep(std::string_view text) {
      return StrepFormatFlags(Kiv::flagSetFromValueText(text, Layout::typeName, Layout::fields));
   }
   std::string valueToStrep() const {
      return Kiv::flagSetValueText(Layout::typeName, Layout::fields, value_);
   }

   U32 value() const noexcept { return value_; }
   bool has(U32 flag) const noexcept { return (value_ & flag) != 0; }
   void flagIs(U32 flag, bool on) noexcept { value_ = on ? (value_ | flag) : (value_ & ~flag); }

   bool strepFormatDefault() const noexcept { return has(flagDefault); }
   bool strepFormatClassification() const noexcept { return has(flagClassification); }
   bool strepFormatUI() const noexcept { return has(flagUI); }
   bool strepFormatJson() const noexcept
      requires(flagJson != 0)
   {
      return has(flagJson);
   }
   bool strepFormatAsdot() const noexcept { return has(flagAsdot); }
   bool strepFormatLinkBwWeighted() const noexcept { return has(flagLinkBwWeighted); }

   friend bool operator==(StrepFormatFlags, StrepFormatFlags) noexcept = default;

 private:
   /// "Routing::Bgp::ExtComm::StrepFormat" -> "ExtComm::StrepFormat"
   static constexpr std::string_view shortName() noexcept {
      return Layout::typeName.substr(std::string_view("Routing::Bgp::").size());
   }

   U32 value_ = 0; ///< only bits of allFlags are ever set
};

/// The flags of the 8-octet values' text form, ExtComm::StrepFormat.
struct ExtCommStrepLayout {
   static constexpr std::string_view typeName = "Routing::Bgp::ExtComm::StrepFormat";
   static constexpr U32 json = 8;
   static constexpr U32 asdot = 16;
   static constexpr U32 linkBwWeighted = 32;
   static constexpr Kiv::FlagField fields[] = {
      {"strepFormatDefault", 1},          {"strepFormatClassification", 2},
      {"strepFormatUI", 4},               {"strepFormatJson", json},
      {"strepFormatAsdot", asdot},        {"strepFormatLinkBwWeighted", linkBwWeighted},
   };
};

/// The IPv6 set has no JSON flag; the flags after UI sit one bit lower.
struct ExtCommIp6StrepLayout {
   static constexpr std::string_view typeName = "Routing::Bgp::ExtCommIp6::StrepFormat";
   static constexpr U32 json = 0;
   static constexpr U32 asdot = 8;
   static constexpr U32 linkBwWeighted = 16;
   static constexpr Kiv::FlagField fields[] = {
      {"strepFormatDefault", 1}, {"strepFormatClassification", 2}, {"strepFormatUI", 4},
      {"strepFormatAsdot", asdot}, {"strepFormatLinkBwWeighted", linkBwWeighted},
   };
};

} // namespace Routing::Bgp
