// The algorithms that the two extended community list families share, for
// ExtCommListCore (ExtCommListCore.h) and the list classes built on it: the
// value vectors (append, sort and de-duplicate, lookup, identity hash), the
// split of a list into classification lists and their publication, and the
// selection of values for the wire. Private to the library.
//
// An element of a value vector is a counted pointer to an interned value with
// a `community()` sort key and a `classification()`; vectors are ascending in
// that key once sorted. The functions that assert take the unit their
// assertions print (the calling list's).
#pragma once

#include "QorBgpCommunity/QorBgp/QorBgpCommunityPacketTypes.h"
#include "QorBgpCommunity/QorBgp/QorBgpSerialize.h"
#include "QorBgpCommunity/platform/Assert.h"
#include "QorBgpCommunity/platform/Dedup.h"
#include "QorBgpCommunity/platform/Hash.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <new>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Routing::Bgp::detail {

// Appends `comm`, which must be set and interned (or restored), taking a
// reference.
template <class Element, class Vector>
void ExtCommVectorAdd(Element const& comm, Vector& vector, char const* qorAssertUnit) {
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

// Whether two elements have equal content.
template <class Element>
bool ExtCommCompareFn(Element const& a, Element const& b) noexcept {
   return a->community() == b->community();
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
   auto last = std::unique(vector.begin(), vector.end(), ExtCommCompareFn<Element>);
   vector.erase(last, vector.end());
   trimCapacity(vector);
}

// Whether the vector is as ExtCommVectorSort leaves it: strictly ascending by
// community().
template <class Vector>
bool ExtCommVectorStrictlyAscending(Vector const& vector) noexcept {
   using Element = typename Vector::value_type;
   return std::adjacent_find(vector.begin(), vector.end(), [](Element const& a, Element const& b) {
             return !ExtCommSortFn(a, b);
          }) == vector.end();
}

// The element whose community() equals `community`, or null. The vector must
// be sorted (fatal "commVectorSorted" otherwise).
template <class Vector, class Key>
typename Vector::value_type ExtCommVectorLookup(bool sorted, Vector const& vector,
                                                Key const& community, char const* qorAssertUnit) {
   using Element = typename Vector::value_type;
   QOR_ASSERT_TEXT(sorted, "commVectorSorted");
   auto it =
      std::lower_bound(vector.begin(), vector.end(), community, ExtCommSortFnValue<Element, Key>);
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

// Feeds the eight bytes of the address `object` to a Jenkins one-at-a-time
// hash, least significant first.
inline U32 jenkinsAddIdentity(U32 hash, void const* object) noexcept {
   U64 address = reinterpret_cast<std::uintptr_t>(object);
   if constexpr (std::endian::native == std::endian::big) {
      address = __builtin_bswap64(address);
   }
   U8 bytes[sizeof address];
   std::memcpy(bytes, &address, sizeof address);
   return Kiv::jenkinsAdd(hash, bytes);
}

// Jenkins one-at-a-time over the identities of the non-null objects, each
// the eight bytes of its address, least significant first. Equal interned
// contents are the same objects, so equal lists of them hash equally. Every
// object must be interned.
template <class Vector>
U32 ExtCommIdentityHash(Vector const& objects, char const* qorAssertUnit) noexcept {
   U32 hash = 0;
   for (auto const& p : objects) {
      if (!p) {
         continue;
      }
      QOR_ASSERT_TEXT(p->dedupState() != Zup::dedupHandleStateNeverDeduped(),
                      "__null == ( p ) || ( p )->dedupState() != "
                      "Zup::dedupHandleStateNeverDeduped()");
      hash = jenkinsAddIdentity(hash, p.get());
   }
   return Kiv::jenkinsFinish(hash);
}

// The same hash over raw identities (nulls skipped), all of interned objects.
inline U32 identitiesHash(std::span<void const* const> identities) noexcept {
   U32 hash = 0;
   for (void const* identity : identities) {
      if (identity) {
         hash = jenkinsAddIdentity(hash, identity);
      }
   }
   return Kiv::jenkinsFinish(hash);
}

// Values whose type octet has this bit set are non-transitive.
inline constexpr U8 nonTransitiveTypeBit = 0x40;

inline bool isTransitiveType(U8 typeOctet) noexcept {
   return (typeOctet & nonTransitiveTypeBit) == 0;
}

// The list of `classification` in `lists` (indexed by classification, grown
// with nulls): the one there, first handed to `reuse(list)`, which may check
// it, or a new one made by `create(classification)`. The lists are the
// builder's own until they are interned, hence the cast.
template <class ListVector, class Create, class Reuse>
auto& findOrCreateClassificationList(ListVector& lists, ExtCommClassification classification,
                                     Create create, Reuse reuse) {
   using List = std::remove_cvref_t<decltype(*std::declval<typename ListVector::value_type>())>;
   std::size_t const k = classification;
   if (k >= lists.size()) {
      lists.resize(k + 1);
   }
   if (lists[k]) {
      reuse(*lists[k]);
   } else {
      lists[k] = create(classification);
   }
   return *const_cast<List*>(lists[k].get());
}

// Appends every value of `comms` to the list `findOrCreate(classification)`
// gives for its classification.
template <class Comms, class FindOrCreate>
void splitByClassification(Comms const& comms, FindOrCreate findOrCreate) {
   for (auto const& comm : comms) {
      findOrCreate(comm->classification()).commIs(comm);
   }
}

// Interns every classification list in `lists` that is not interned yet
// (its dedup sorts it) and puts the resident list in its place; a list
// interned already must be sorted. Its assertions print `qorAssertUnit`.
template <class ListVector, class Table>
void publishClassificationLists(ListVector& lists, Table const* table, char const* qorAssertUnit) {
   using List = std::remove_cvref_t<decltype(*std::declval<typename ListVector::value_type>())>;
   for (auto& list : lists) {
      if (!list) {
         continue;
      }
      if (list->dedupState() == Zup::dedupHandleStateNeverDeduped()) {
         list = const_cast<List*>(list.get())->dedup(table);
      }
      QOR_ASSERT_TEXT(list->commVectorSorted(), "_classificationList->commVectorSorted()");
   }
}

// The attribute `type` (flags 0xC0) holding, in order, the values of `comms`
// for which `selected(comm)` holds, each written by `write(at, comm)` in
// `valueSize` bytes at `at`; `count` is how many the header announces. Empty
// when `count` is 0. Built in one allocation. NOTE: every selected value is
// written, whatever the count: an unpruned list from a peer may select more
// values than its count says, and that must never stop the process.
template <class Comms, class Selected, class Write>
std::string serializeSelected(BgpPathAttrType type, U32 valueSize, U32 count, Comms const& comms,
                              Selected selected, Write write) {
   if (count == 0) {
      return {};
   }
   std::size_t const written =
      valueSize * static_cast<std::size_t>(std::count_if(comms.begin(), comms.end(), selected));
   std::string out =
      SerializePathAttribute::headedBuffer(type, optionalTransitive, valueSize * count, written);
   char* at = out.data() + (out.size() - written);
   for (auto const& comm : comms) {
      if (selected(comm)) {
         write(at, comm);
         at += valueSize;
      }
   }
   return out;
}

} // namespace Routing::Bgp::detail
