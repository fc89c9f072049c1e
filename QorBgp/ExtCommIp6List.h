/// @file
/// ExtCommIp6List: the interned list of IPv6-address-specific extended
/// communities carried by one path (the IPv6 Address Specific Extended
/// Community attribute, type 25).
///
/// Two levels, as for the 8-octet ExtCommList: a vector of interned
/// ExtCommIp6 values, ascending by content without duplicates, and beside it
/// one interned ExtCommIp6ClassificationList per classification present,
/// indexed by ExtCommClassification. A list's identity in its table is that
/// vector of classification lists. A transitive count lets serialize(false)
/// size the attribute without a pass.
///
/// @code{.cpp}
///   ExtCommIp6List::Ptr list = extCommIp6ListFactory();
///   list->commIs(ExtCommIp6::dedupContent(valueTable.get(), content));   // any order
///   ExtCommIp6List::PtrConst shared = list->dedup(listTable.get());      // continue with this
///   std::string attribute = shared->serialize(false);                    // transitive ones only
/// @endcode
///
/// Built by one owner, then read-only and shareable between threads.
#pragma once

#include "QorBgpCommunity/platform/HoardFwd.h"

#include "QorBgpCommunity/QorBgp/ExtCommIp6ClassificationList.h"
#include "QorBgpCommunity/QorBgp/ExtCommIp6ListDedupTable.h"

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace Routing::Bgp {

class ExtCommIp6ListSnapshot;

/// The shared members (lookup, classification lists, identity hash and
/// compare, snapshot) are ExtCommListCore's (ExtCommListCore.h).
class QORBGP_EXPORT ExtCommIp6List : public ExtCommListCore<ExtCommIp6List, ExtCommIp6Family> {
 public:
   KIV_POINTER_TYPES(ExtCommIp6List);

   ExtCommIp6List();
   ~ExtCommIp6List() override;
   virtual std::string_view fwkType() const noexcept;

   /// Building (before dedup).
   /// Appends an interned value; fatal "__null != comm" for null and the
   /// interned-state condition for a value never interned. No ordering.
   void commIs(ExtCommIp6::PtrConst const& comm);
   /// Sorts ascending by content, drops duplicates and trims the capacity.
   void sortComms();
   /// Sorts, splits the members into classification lists, interns those and
   /// then this list; the caller continues with the result (this list or the
   /// resident equal one). Fatal (the never-interned condition) when called
   /// a second time.
   PtrConst dedup(ExtCommIp6ListDedupTable const* table);

   /// Reading.
   /// Members whose type octet has bit 0x40 clear.
   U32 totalTransitiveCommunities() const noexcept { return totalTransitiveCommunities_; }
   bool commVectorSorted() const noexcept { return commVectorSorted_; }
   /// Indexed by classification; null where no member has that classification.
   ClassificationListVector const& classificationLists() const noexcept {
      return classificationLists_;
   }

   /// The attribute (type 25, flags 0xC0, 20 bytes per value: type, subtype,
   /// address, local administrator in network order) holding every member
   /// when `all`, else the transitive ones; the header grows to 4 bytes past
   /// 255 value bytes. Empty when nothing is selected. `all` needs a sorted
   /// list (fatal "commVectorSorted()").
   std::string serialize(bool all) const;

   /// The members' policy text (address:localAdmin), each followed by one
   /// space, the last one included: "2001:db8::1:100 2001:db8::2:7 ".
   /// Empty for an empty list.
   std::string commsStringForm() const;

   /// Publishes the members' records and the sorted flag into the snapshot store.
   hoard::Location hoard(hoard::StoreWriter& writer) const;
   /// The flags word of a stored list.
   static constexpr U32 storedSortedFlag = 1;
   /// A private, never-interned copy of a stored list, its members restored as
   /// detached plain values. Null when the store changed while it was read or
   /// the record does not hold (flags other than sorted, members out of order
   /// or repeated, more of them than the segment has room for);
   /// Kiv::RangeError for a location outside the store; hoard::StoreError
   /// for a segment cut short since it was opened.
   static PtrConst dehoard(void const* data, hoard::StoreManager* store);
   /// The stream text, "[ <m1> <m2> ]".
   std::string toStrep() const;

 private:
   /// The member vector (the core's) comes first.
   bool commVectorSorted_ = false;
   ClassificationListVector classificationLists_; ///< null where no member has that classification
   U32 totalTransitiveCommunities_ = 0; ///< counts the members, duplicates included until sorted
};

/// A new, empty list in its building state.
QORBGP_EXPORT ExtCommIp6List::Ptr extCommIp6ListFactory();

/// "[ ", the members in order in their diagnostic form separated by one space,
/// then " ]" ("[  ]" when empty); "NULL" for a null list. The stream's format
/// state is left as it was.
///@{
QORBGP_EXPORT void formatCommList(std::ostream& os, ExtCommIp6List const* list);
QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, ExtCommIp6List const* list);
///@}

/// A notifying copy of an IPv6 list: its classification lists by
/// classification and its members by content. Owned by one consumer;
/// notifications run on the thread that changes it.
class QORBGP_EXPORT ExtCommIp6ListSnapshot : public ExtCommListSnapshotBase<ExtCommIp6Family> {
 public:
   KIV_POINTER_TYPES(ExtCommIp6ListSnapshot);
};

} // namespace Routing::Bgp
