/// @file
/// The route-policy layer's large community value (RFC 8092): three 32-bit
/// words, as the large community list holds and sorts them.
#pragma once

#include "QorBgpCommunity/platform/Types.h"

#include <compare>

namespace Acl {

/// A large community: global administrator (the owner's AS number) and two
/// operator-defined words. A trivially copyable 12-byte value; equality is
/// field-wise and the order lexicographic over (globalAdmin, localData1,
/// localData2), so lists sort by owner first.
///
/// @code{.cpp}
///   Acl::CommunityValue v{65536, 1, 2};   // 65536:1:2
/// @endcode
struct CommunityValue {
   U32 globalAdmin = 0;
   U32 localData1 = 0;
   U32 localData2 = 0;

   friend constexpr bool operator==(CommunityValue const&, CommunityValue const&) noexcept = default;
   friend constexpr std::strong_ordering operator<=>(CommunityValue const&,
                                                     CommunityValue const&) noexcept = default;
};

static_assert(sizeof(CommunityValue) == 12);

} // namespace Acl
