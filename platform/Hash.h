// The framework's hash functions. All are deterministic across processes and
// runs (interning tables and snapshots rely on that), and fixed: changing one
// changes every table's layout.
#pragma once

#include "platform/Types.h"

namespace Kiv {

// Single-attribute hash of a 64-bit word, cut to 32 bits. A full avalanche
// mix (every input bit affects every output bit), so that contents differing
// only in low value octets spread over the whole table.
constexpr U32 hashU64(U64 word, U32 seed) noexcept {
   U64 x = word ^ (static_cast<U64>(seed) * 0x9e3779b97f4a7c15ull);
   x ^= x >> 33;
   x *= 0xff51afd7ed558ccdull;
   x ^= x >> 33;
   x *= 0xc4ceb9fe1a85ec53ull;
   x ^= x >> 33;
   return static_cast<U32>(x);
}

} // namespace Kiv
