// Operations on vectors of interned extended communities, shared by the
// extended lists, their classification lists and the IPv6-address-specific
// lists. An element is a counted pointer to an interned value with a
// `community()` sort key; vectors are ascending in that key once sorted.
#pragma once

#include "platform/Assert.h"
#include "platform/Dedup.h"
#include "platform/Hash.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <new>
#include <vector>

namespace Routing::Bgp {

// Appends `comm`, which must be set and interned (or restored), taking a
// reference.
template <class Element, class Vector>
void ExtCommVectorAdd(Element const& comm, Vector& vector) {
   QOR_ASSERT_TEXT(comm != nullptr, "__null != comm");
   QOR_ASSERT_TEXT(comm == nullptr || comm->dedupState() != Zup::dedupHandleStateNeverDeduped(),
                   "__null == ( comm ) || ( comm )->dedupState() != "
                   "Zup::dedupHandleStateNeverDeduped()");
   vector.push_back(comm);
}

template <class Element>
bool ExtCommSortFn(Element const& a, Element const& b) noexcept {
   return a->community() < b->community();
}

template <class Element, class Key>
bool ExtCommSortFnValue(Element const& comm, Key const& value) noexcept {
   return comm->community() < value;
}

// Makes capacity equal to size. Allocation failure is swallowed: the vector
// keeps its larger buffer.
template <class Vector>
void trimCapacity(Vector& vector) noexcept {
   if (vector.capacity() == vector.size()) {
      return;
   }
   try {
      Vector exact;
      exact.reserve(vector.size());
      std::move(vector.begin(), vector.end(), std::back_inserter(exact));
      vector.swap(exact);
   } catch (std::bad_alloc const&) {
   }
}

// Sorts ascending by community(), drops later duplicates (releasing their
// references) and trims the capacity to the size.
template <class Vector>
void ExtCommVectorSort(Vector& vector) {
   using Element = typename Vector::value_type;
   std::sort(vector.begin(), vector.end(), ExtCommSortFn<Element>);
   auto last = std::unique(vector.begin(), vector.end(), [](Element const& a, Element const& b) {
      return a->community() == b->community();
   });
   vector.erase(last, vector.end());
   trimCapacity(vector);
}

// The element whose community() equals `community`, or null. The vector must
// be sorted (fatal "commVectorSorted" otherwise).
template <class Vector, class Key>
typename Vector::value_type ExtCommVectorLookup(bool sorted, Vector const& vector,
                                                Key const& community) {
   using Element = typename Vector::value_type;
   QOR_ASSERT_TEXT(sorted, "commVectorSorted");
   auto it = std::lower_bound(vector.begin(), vector.end(), community,
                              ExtCommSortFnValue<Element, Key>);
   if (it == vector.end()) {
      return nullptr;
   }
   Element const& extComm = *it;
   if (extComm->community() == community) {
      return extComm;
   }
   QOR_ASSERT(extComm->community() > community);
   return nullptr;
}

// Jenkins one-at-a-time over the identities of the non-null objects, each
// the eight bytes of its address, least significant first. Equal interned
// contents are the same objects, so equal lists of them hash equally. Every
// object must be interned.
template <class Vector>
U32 ExtCommIdentityHash(Vector const& objects) noexcept {
   U32 hash = 0;
   for (auto const& p : objects) {
      if (!p) {
         continue;
      }
      QOR_ASSERT_TEXT(p->dedupState() != Zup::dedupHandleStateNeverDeduped(),
                      "__null == ( p ) || ( p )->dedupState() != "
                      "Zup::dedupHandleStateNeverDeduped()");
      U64 address = reinterpret_cast<std::uintptr_t>(p.get());
      if constexpr (std::endian::native == std::endian::big) {
         address = __builtin_bswap64(address);
      }
      U8 bytes[sizeof address];
      std::memcpy(bytes, &address, sizeof address);
      hash = Kiv::jenkinsAdd(hash, bytes);
   }
   return Kiv::jenkinsFinish(hash);
}

} // namespace Routing::Bgp
