// Private helpers of the standard and large community lists: the operations
// on their flat element vectors that both share. Not part of the public API.
#pragma once

#include "QorBgpCommunity/platform/DedupHashTable.h"
#include "QorBgpCommunity/platform/Hash.h"
#include "QorBgpCommunity/platform/Types.h"

#include <absl/hash/hash.h>
#include <absl/types/span.h>

#include <algorithm>
#include <new>
#include <optional>
#include <span>
#include <type_traits>
#include <vector>

namespace Routing::Bgp::detail {

// Appends `value`; a full vector doubles its capacity (the first allocation
// holds one element). Allocation failure propagates.
template <class T>
void commVectorAppend(std::vector<T>& comms, T const& value) {
   if (comms.size() == comms.capacity()) {
      comms.reserve(std::max<std::size_t>(1, 2 * comms.capacity()));
   }
   comms.push_back(value);
}

// Sorts ascending by operator<, keeps one of each run of equal elements and
// moves the elements into an allocation of exactly their number. When that
// allocation fails the vector keeps its larger buffer.
template <class T>
void commVectorNormalize(std::vector<T>& comms) noexcept {
   std::sort(comms.begin(), comms.end());
   comms.erase(std::unique(comms.begin(), comms.end()), comms.end());
   if (comms.capacity() > comms.size()) {
      try {
         std::vector<T>(comms.begin(), comms.end()).swap(comms);
      } catch (std::bad_alloc const&) {
         // Keeping the spare capacity costs memory only.
      }
   }
}

// Sorts `values` ascending and returns its prefix without repeats.
template <class T>
std::span<T> sortUnique(std::span<T> values) noexcept {
   // Nearly every attribute arrives sorted without repeats: one pass tells.
   if (std::adjacent_find(values.begin(), values.end(),
                          [](T const& a, T const& b) { return !(a < b); }) == values.end()) {
      return values;
   }
   std::sort(values.begin(), values.end());
   return values.first(
      static_cast<std::size_t>(std::unique(values.begin(), values.end()) - values.begin()));
}

// Whether the vector is in the order commVectorNormalize leaves it: strictly
// ascending, no element repeated.
template <class T>
bool commVectorNormalized(std::vector<T> const& comms) noexcept {
   return std::adjacent_find(comms.begin(), comms.end(),
                             [](T const& a, T const& b) { return !(a < b); }) == comms.end();
}

// Membership in a vector that commVectorNormalize has sorted.
template <class T>
bool commVectorHas(std::vector<T> const& comms, T const& value) noexcept {
   auto bound = std::lower_bound(comms.begin(), comms.end(), value);
   return bound != comms.end() && !(value < *bound);
}

// What the hash memo of an interning table keys `values` by: a word-at-a-time
// hash of their bytes.
template <class T>
U64 valuesKey(std::span<T const> values) noexcept {
   static_assert(sizeof(T) % sizeof(U32) == 0 && std::has_unique_object_representations_v<T>);
   return absl::Hash<absl::Span<U32 const>>{}(absl::Span<U32 const>(
      reinterpret_cast<U32 const*>(values.data()), values.size_bytes() / sizeof(U32)));
}

// The hash() of a list holding `values` (sorted, unique): `compute`d, or
// remembered by `table` under a word-at-a-time hash of the values' bytes,
// which costs a fraction of hashing them a byte at a time. Up to eight bytes
// are hashed directly: that is as quick as a look at the memo.
template <class T, class Compute>
U32 rememberedValuesHash(Zup::DedupHashTable const& table, std::span<T const> values,
                         Compute compute) noexcept {
   constexpr std::size_t directBytes = 8;
   if (values.size_bytes() <= directBytes) {
      return compute(values);
   }
   U64 const key = valuesKey(values);
   if (std::optional<U32> remembered = table.rememberedHash(key)) {
      return *remembered;
   }
   U32 const hash = compute(values);
   table.rememberHash(key, hash);
   return hash;
}

// Feeds the four bytes of `word` to a Jenkins one-at-a-time hash, least
// significant first.
constexpr U32 jenkinsAddU32(U32 hash, U32 word) noexcept {
   U8 const bytes[4] = {static_cast<U8>(word), static_cast<U8>(word >> 8),
                        static_cast<U8>(word >> 16), static_cast<U8>(word >> 24)};
   return Kiv::jenkinsAdd(hash, bytes);
}

} // namespace Routing::Bgp::detail
