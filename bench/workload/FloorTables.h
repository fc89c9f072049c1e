// The floor of the workload benchmark: the library's work done the most
// direct way one would write it by hand, with no framework around it.
//
//   decode    network order into host order, in a stack buffer
//   intern    std::sort + std::unique; the values' bytes hashed a word at a
//             time (absl::Hash), the hash kept in the list; an absl::flat_hash_set
//             of pointers to exactly-sized flat lists (header + values in one
//             allocation), looked up by the sorted values; allocation only
//             on a miss. Extended values are interned on their own first, one
//             flat_hash_map find each, as the library interns each value.
//   text      std::to_chars into a stack buffer
//   wire      attribute header + byte-swapped copy
#pragma once

#include "QorBgpCommunity/platform/Types.h"

#include <absl/container/flat_hash_map.h>
#include <absl/container/flat_hash_set.h>
#include <absl/hash/hash.h>

#include <cstring>
#include <memory>
#include <span>
#include <string>

namespace bench {

// A large community: twelve bytes without padding, hashed as three words.
struct LargeValue {
   U32 global, local1, local2;
   friend bool operator==(LargeValue const&, LargeValue const&) = default;
   friend auto operator<=>(LargeValue const&, LargeValue const&) = default;
};

// An interned extended community: its value and the kind it was found to be.
struct ExtValue {
   U64 value;
   U8 kind;
};

// One interned list: header and values in one exactly-sized allocation.
template <class T>
struct FlatList {
   std::size_t hash;
   std::size_t count;

   std::span<T const> values() const noexcept {
      return {reinterpret_cast<T const*>(this + 1), count};
   }
   static FlatList* make(std::span<T const> values, std::size_t hash) {
      void* memory = ::operator new(sizeof(FlatList) + values.size_bytes());
      auto* list = new (memory) FlatList{hash, values.size()};
      std::memcpy(list + 1, values.data(), values.size_bytes());
      return list;
   }
};

// The set of flat lists of one element type, owning them.
template <class T>
class FlatListSet {
 public:
   FlatListSet() = default;
   FlatListSet(FlatListSet const&) = delete;
   FlatListSet& operator=(FlatListSet const&) = delete;
   ~FlatListSet() {
      for (FlatList<T>* list : set_) {
         ::operator delete(list);
      }
   }

   // The list of `values` (sorted, unique), made on a miss.
   FlatList<T> const* intern(std::span<T const> values) {
      static_assert(sizeof(T) % 4 == 0);
      std::size_t const hash = absl::Hash<absl::Span<U32 const>>{}(absl::Span<U32 const>(
         reinterpret_cast<U32 const*>(values.data()), values.size_bytes() / 4));
      auto it = set_.find(Key{values, hash});
      if (it != set_.end()) {
         return *it;
      }
      FlatList<T>* list = FlatList<T>::make(values, hash);
      set_.insert(list);
      return list;
   }
   std::size_t size() const noexcept { return set_.size(); }

 private:
   struct Key {
      std::span<T const> values;
      std::size_t hash;
   };
   struct Hash {
      using is_transparent = void;
      std::size_t operator()(FlatList<T> const* l) const noexcept { return l->hash; }
      std::size_t operator()(Key const& k) const noexcept { return k.hash; }
   };
   struct Eq {
      using is_transparent = void;
      static bool same(std::span<T const> a, std::span<T const> b) noexcept {
         return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size_bytes()) == 0;
      }
      bool operator()(FlatList<T> const* a, FlatList<T> const* b) const noexcept { return a == b; }
      bool operator()(FlatList<T> const* a, Key const& k) const noexcept {
         return same(a->values(), k.values);
      }
      bool operator()(Key const& k, FlatList<T> const* a) const noexcept {
         return same(a->values(), k.values);
      }
   };
   absl::flat_hash_set<FlatList<T>*, Hash, Eq> set_;
};

// Every kind's tables.
class FloorTables {
 public:
   FloorTables() = default;
   FloorTables(FloorTables const&) = delete;
   FloorTables& operator=(FloorTables const&) = delete;
   ~FloorTables();

   // Decodes and interns one attribute value of `type` (8, 32 or 16; whole
   // elements): the interned list, or null for another type.
   void const* intern(U8 type, std::span<U8 const> value);
   // The text and the wire form of a list `intern` returned for `type`.
   static std::string text(U8 type, void const* list);
   static std::string wire(U8 type, void const* list);

   std::size_t lists() const noexcept {
      return standard_.size() + large_.size() + extended_.size();
   }

 private:
   FlatListSet<U32> standard_;
   FlatListSet<LargeValue> large_;
   FlatListSet<ExtValue const*> extended_;
   absl::flat_hash_map<U64, ExtValue*> extValues_;
};

} // namespace bench
