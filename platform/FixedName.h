/// @file
/// A string literal usable as a template argument, so that class templates can
/// carry the reflection name of each named instantiation:
///
/// @code{.cpp}
///   template <Kiv::FixedName Name> struct Rule { std::string_view name() { return Name.view(); } };
///   using ColorRule = Rule<"Routing::Bgp::ColorRule">;
/// @endcode
#pragma once

#include "QorBgpCommunity/platform/Export.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace Kiv {

/// A string literal held by value, usable as a template argument.
template <std::size_t N>
struct QORBGP_EXPORT FixedName {
   constexpr FixedName(char const (&text)[N]) noexcept { std::copy_n(text, N, chars); }
   constexpr std::string_view view() const noexcept { return {chars, N - 1}; }
   char chars[N];
};

} // namespace Kiv
