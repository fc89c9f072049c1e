/// @file
/// The large community list (RFC 8092): the interned list of 12-byte large
/// communities that one path carries in its LARGE_COMMUNITY attribute, and
/// the text form of a single large community.
#pragma once

#include "QorBgpCommunity/platform/CommunityValue.h"
#include "QorBgpCommunity/platform/Dedup.h"
#include "QorBgpCommunity/platform/DynamicBuffer.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/HoardFwd.h"
#include "QorBgpCommunity/platform/Ptr.h"
#include "QorBgpCommunity/platform/RouteMapCommListSnapshot.h"
#include "QorBgpCommunity/platform/Types.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Routing::RouteMap {
class PosixRegex;
}

namespace Routing::Bgp {

class LargeCommListDedupTable;

/// Text of one large community: global administrator, ":", local data 1, ":",
/// local data 2, all in decimal without padding (65536:1:2). With asdot, a
/// global administrator of 65536 or more is written as its high and low 16
/// bits joined by "." (1.0:1:2); smaller ones stay plain.
struct QORBGP_EXPORT LargeCommunityFormatter {
   /// The longest text: "4294967295:4294967295:4294967295".
   static constexpr std::size_t maxSize = 32;

   /// Appends the text of `value` to `buffer`; returns the number of
   /// characters appended.
   static std::size_t format(Kiv::DynamicBufferInterface& buffer,
                             Acl::CommunityValue const& value, bool asdot);
};

/// The interned list of large communities of one path. Phases, sharing and
/// failure rules are those of CommList (QorBgpCommunityListStandard.h): built
/// by one owner with commIs, published by dedup (sorted by
/// Acl::CommunityValue's order, duplicates dropped, storage trimmed,
/// interned), then immutable and readable from any thread. Reading before
/// dedup and writing after it are fatal assertions "commVectorSorted()" and
/// "!commVectorSorted()". No large community has a well-known meaning, so
/// there are no cached flags.
///
/// @code{.cpp}
///   LargeCommList::Ptr list = largeCommListFactory();
///   list->commIs(Acl::CommunityValue{65000, 1, 2});
///   LargeCommList::PtrConst shared = list->dedup(table.get());
///   LargeCommList::getStringValue(shared->commVectorRawPtr()->front());   // "65000:1:2"
/// @endcode
class QORBGP_EXPORT LargeCommList : public KivHoard::DedupHandle {
 public:
   KIV_POINTER_TYPES(LargeCommList);
   /// Ascending without duplicates and with capacity equal to size once
   /// published; in insertion order while building.
   using CommVector = std::vector<Acl::CommunityValue>;

   LargeCommList() noexcept;
   ~LargeCommList() override;

   std::string_view fwkType() const noexcept { return "Routing::Bgp::LargeCommList"; }

   /// Appends `value` (no order, no duplicate check). Asserts "!commVectorSorted()".
   void commIs(Acl::CommunityValue const& value);

   /// Publishes the list as CommList::dedup does (sort, unique, trim, cache
   /// the hash, intern in `table`) and returns the resident equal list or
   /// this one; never null.
   PtrConst dedup(LargeCommListDedupTable const* table);
   /// The list of the given values, sorted and de-duplicated here in place:
   /// the resident equal list when there is one (found without building a
   /// list), else a new one of exactly these values, interned. See
   /// CommList::dedupValues.
   static PtrConst dedupValues(LargeCommListDedupTable const* table,
                               std::span<Acl::CommunityValue> values);

   bool commVectorSorted() const noexcept { return commVectorSorted_; }

   /// Membership, by binary search. Asserts "commVectorSorted()".
   bool comm(Acl::CommunityValue const& value) const noexcept;
   U32 comms() const noexcept { return static_cast<U32>(commVector_.size()); }
   bool empty() const noexcept { return commVector_.empty(); }

   /// See CommList::commVectorRawPtr; the same warning applies.
   ///@{
   CommVector const* commVectorRawPtr() const noexcept { return &commVector_; }
   CommVector* commVectorRawPtrNonConst() noexcept { return &commVector_; }
   ///@}

   /// Jenkins one-at-a-time over each element's global administrator, local
   /// data 1 and local data 2, each least significant byte first; 0 for an
   /// empty list. Cached by dedup(). Asserts "commVectorSorted()".
   U32 hash() const noexcept override;
   /// Same communities in the same order (`other` is a LargeCommList).
   /// Asserts "commVectorSorted()".
   bool compare(Zup::DedupHandle const* other) const noexcept override;
   /// True when `content`, the sorted values dedupValues looks a list up by,
   /// are this list's.
   bool compareByContent(Zup::DedupContentHandle const& content) const noexcept override;

   /// The whole LARGE_COMMUNITY path attribute: flags 0xC0, type 32, a length
   /// of 12 * comms() (extended-length header above 255 bytes), then each
   /// community's three words in network byte order, ascending. Asserts
   /// "commVectorSorted()"; a list above 5461 communities is fatal.
   std::string serialize() const;
   /// The list's text (see QorBgpCommunityListFormat.h).
   std::string toStrep() const;

   /// The flags word of a stored list.
   static constexpr U32 storedSortedFlag = 1;
   U32 storedFlags() const noexcept { return commVectorSorted_ ? storedSortedFlag : 0; }
   /// Marks a restored list, its elements in place, sorted when `flags` (the
   /// stored word) is the sorted flag alone and the elements are strictly
   /// ascending; otherwise false, and the list is to be dropped. An empty list
   /// takes the sorted flag as it is (as it was hoarded) and is never refused.
   bool storedFlagsIs(U32 flags) noexcept;
   /// Publishes the list (flags word and elements) into the snapshot store.
   hoard::Location hoard(hoard::StoreWriter& writer) const;
   /// A private, never-interned copy of a stored list (see CommList::dehoard).
   static PtrConst dehoard(void const* data, hoard::StoreManager* store);

   /// A new route-policy snapshot, notification on, holding every community
   /// with value true (one insertion per community). Asserts "commVectorSorted()".
   RouteMap::CommListSnapshot::Ptr commSnapshot() const;

   /// Route-policy match: true when `regex` (not null) matches the list's text,
   /// the communities in plain form (never asdot) separated by single spaces,
   /// possibly empty. Asserts "commVectorSorted()".
   bool matchCommunitiesRegex(Routing::RouteMap::PosixRegex const* regex) const;

   /// LargeCommunityFormatter's text without asdot.
   static std::string getStringValue(Acl::CommunityValue const& value);
   /// LargeCommunityFormatter's text, asdot as asked.
   static std::string displayString(Acl::CommunityValue const& value, bool asdot);
   /// Appends the list's text: each value as getStringValue gives it,
   /// separated by single spaces (what toStrep returns and route policy sees).
   void appendText(Kiv::DynamicBufferInterface& out) const;

 private:
   void cacheHash() noexcept;

   CommVector commVector_;
   U32 hash_ = 0;                  ///< valid while commVectorSorted_
   bool commVectorSorted_ = false; ///< set once by dedup(), never cleared
};

/// A new, empty list in its building phase, notification on.
QORBGP_EXPORT LargeCommList::Ptr largeCommListFactory();

} // namespace Routing::Bgp
