/// @file
/// The framework's hash functions. All are deterministic across processes and
/// runs (interning tables and snapshots rely on that), and fixed: changing one
/// changes every table's layout.
#pragma once

#include "QorBgpCommunity/platform/Types.h"

#include <span>

namespace Kiv {

/// Single-attribute hash of a 64-bit word, cut to 32 bits. A full avalanche
/// mix (every input bit affects every output bit), so that contents differing
/// only in low value octets spread over the whole table.
constexpr U32 hashU64(U64 word, U32 seed) noexcept {
   U64 x = word ^ (static_cast<U64>(seed) * 0x9e3779b97f4a7c15ull);
   x ^= x >> 33;
   x *= 0xff51afd7ed558ccdull;
   x ^= x >> 33;
   x *= 0xc4ceb9fe1a85ec53ull;
   x ^= x >> 33;
   return static_cast<U32>(x);
}

/// Jenkins one-at-a-time hash of a byte sequence, continuing from `hash`
/// (0 to start): per byte h += b; h += h << 10; h ^= h >> 6; then the final
/// h += h << 3; h ^= h >> 11; h += h << 15. Use jenkinsAdd to feed bytes in
/// pieces and jenkinsFinish once at the end.
constexpr U32 jenkinsAdd(U32 hash, std::span<U8 const> bytes) noexcept {
   for (U8 b : bytes) {
      hash += b;
      hash += hash << 10;
      hash ^= hash >> 6;
   }
   return hash;
}

constexpr U32 jenkinsFinish(U32 hash) noexcept {
   hash += hash << 3;
   hash ^= hash >> 11;
   hash += hash << 15;
   return hash;
}

constexpr U32 jenkinsOneAtATime(std::span<U8 const> bytes) noexcept {
   return jenkinsFinish(jenkinsAdd(0, bytes));
}

} // namespace Kiv
