/// @file
/// ExtCommList: the interned list of extended communities of one path (the
/// EXTENDED COMMUNITIES attribute).
///
/// Two levels: a vector of interned ExtComm values, ascending by content word
/// without duplicates, and beside it one interned classification list per
/// classification present, indexed by ExtCommClassification. A list's identity
/// in its table is that vector of classification lists, so lists with the same
/// route targets share one route-target classification list object. Summary
/// flags and a transitive count let export and policy paths decide without
/// walking the values.
///
/// @code{.cpp}
///   ExtCommList::Ptr list = extCommListFactory();
///   list->commIs(ExtComm::dedupContent(valueTable.get(), content));   // any order
///   ExtCommList::PtrConst shared = list->dedup(listTable.get());      // continue with this
///   std::string attribute = shared->serialize(ExtCommList::serialization(false, true, false));
/// @endcode
///
/// Built by one owner, then read-only and shareable between threads.
#pragma once

#include "QorBgpCommunity/QorBgp/ExtCommSnapshotBase.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListClassification.h"
#include "QorBgpCommunity/platform/CommunityValue.h"
#include "QorBgpCommunity/platform/HoardFwd.h"
#include "QorBgpCommunity/platform/PosixRegex.h"

#include <span>
#include <string>

namespace Routing::Bgp {

class ExtCommListSnapshot;

/// The flag names of ExtCommList::CommVectorAttrs, for its reflection text.
struct ExtCommListAttrsLayout {
   static constexpr std::string_view typeName = "Routing::Bgp::ExtCommList::CommVectorAttrs";
   static constexpr Kiv::FlagField fields[] = {
      {"sorted", 1},
      {"hasLinkBandwidth", 2},
      {"hasLinkBandwidthWithUnspecifiedAsNumber", 4},
      {"hasOriginValidationState", 8},
      {"hasPolicyMatchStrepUICommunities", 16},
      {"hasPrunableValues", 32},
   };
};

/// The flag names of ExtCommList::Serialization, for its reflection text.
struct ExtCommListSerializationLayout {
   static constexpr std::string_view typeName = "Routing::Bgp::ExtCommList::Serialization";
   static constexpr Kiv::FlagField fields[] = {
      {"all", 1}, {"transitive", 2}, {"linkBandwidth", 4}, {"originAsValidity", 8}};
};

/// The shared members (lookup, classification lists, identity hash and
/// compare, snapshot) are ExtCommListCore's (ExtCommListCore.h).
class QORBGP_EXPORT ExtCommList : public ExtCommListCore<ExtCommList, ExtCommFamily> {
 public:
   KIV_POINTER_TYPES(ExtCommList);

   /// The list's state flags: sorted, and which kinds of value it holds.
   class CommVectorAttrs : public Kiv::BitSetValue<ExtCommListAttrsLayout> {
    public:
      static constexpr U32 sortedBit = 1;
      static constexpr U32 hasLinkBandwidthBit = 2;
      static constexpr U32 hasLinkBandwidthWithUnspecifiedAsNumberBit = 4;
      static constexpr U32 hasOriginValidationStateBit = 8;
      static constexpr U32 hasPolicyMatchStrepUICommunitiesBit = 16;
      static constexpr U32 hasPrunableValuesBit = 32;
      using BitSetValue::BitSetValue;
      CommVectorAttrs(BitSetValue b) noexcept : BitSetValue(b) {}
   };

   /// Which values serialize() writes.
   class Serialization : public Kiv::BitSetValue<ExtCommListSerializationLayout> {
    public:
      static constexpr U32 allBit = 1;
      static constexpr U32 transitiveBit = 2;
      static constexpr U32 linkBandwidthBit = 4;
      static constexpr U32 originAsValidityBit = 8;
      using BitSetValue::BitSetValue;
      Serialization(BitSetValue b) noexcept : BitSetValue(b) {}
      bool all() const noexcept { return has(allBit); }
      bool transitive() const noexcept { return has(transitiveBit); }
      bool linkBandwidth() const noexcept { return has(linkBandwidthBit); }
      bool originAsValidity() const noexcept { return has(originAsValidityBit); }
   };

   ExtCommList();
   ~ExtCommList() override;
   virtual std::string_view fwkType() const noexcept;

   /// Building (before dedup).
   /// Appends an interned value; fatal "__null != comm" for null and the
   /// interned-state condition for a value never interned. No ordering.
   void commIs(ExtComm::PtrConst const& comm);
   void append(PtrConst const& otherExtCommList);
   void appendVector(ExtCommVector const& comms);
   void appendClassificationList(ExtCommClassificationList::PtrConst const& otherClassificationList);
   void sortComms();
   /// Sorts, then fills one classification list per classification present.
   /// dedupMode: the lists are new and will be interned, and the transitive
   /// count and UI-policy flag are computed; otherwise the lists are marked
   /// local (never to be interned), as for snapshots and scratch lists.
   void createClassificationListVector(bool dedupMode);
   /// Classifies, interns the classification lists, then this list. The
   /// caller continues with the result. The list must never have been interned.
   PtrConst dedup(ExtCommListDedupTable const* table);

   /// The list of `comms` (interned values, any order, repeats allowed;
   /// sorted and de-duplicated here in place): the resident equal list when
   /// there is one, found through its resident classification lists without
   /// building anything, else a new list of these values, interned by dedup.
   /// The fast path of decoding: most attributes carry a list already held.
   static PtrConst dedupComms(ExtCommListDedupTable const* table,
                              std::span<ExtComm::PtrConst> comms);

   /// Reading.
   U32 totalTransitiveCommunities() const noexcept { return totalTransitiveCommunities_; }
   ClassificationListVector const& classificationLists() const noexcept {
      return classificationLists_;
   }

   CommVectorAttrs commVectorAttrs() const noexcept { return attrs_; }
   bool commVectorSorted() const noexcept { return attrs_.has(CommVectorAttrs::sortedBit); }
   void commVectorSortedIs(bool sorted) noexcept { attrs_.bitIs(CommVectorAttrs::sortedBit, sorted); }
   bool hasLinkBandwidth() const noexcept { return attrs_.has(CommVectorAttrs::hasLinkBandwidthBit); }
   bool hasLinkBandwidthWithUnspecifiedAsNumber() const noexcept {
      return attrs_.has(CommVectorAttrs::hasLinkBandwidthWithUnspecifiedAsNumberBit);
   }
   bool hasOriginValidationState() const noexcept {
      return attrs_.has(CommVectorAttrs::hasOriginValidationStateBit);
   }
   bool hasPolicyMatchStrepUICommunities() const noexcept {
      return attrs_.has(CommVectorAttrs::hasPolicyMatchStrepUICommunitiesBit);
   }
   bool hasPrunableValues() const noexcept { return attrs_.has(CommVectorAttrs::hasPrunableValuesBit); }

   /// Wire output.
   static Serialization serialization(bool includeNonTransitive, bool includeLinkBandwidth,
                                      bool includeOriginAsValidity) noexcept;
   static bool serializable(ExtComm::PtrConst const& comm, Serialization s) noexcept;
   /// How many values the attribute header announces for `s`. NOTE: at most
   /// one link bandwidth and one origin validation state are counted, assumed
   /// non-transitive; lists are pruned before export, so this holds for them.
   U32 serializableCommunities(Serialization s) const noexcept;
   /// The EXTENDED COMMUNITIES attribute (type 16, flags 0xC0) holding the
   /// selected values in order; empty when nothing is selected.
   std::string serialize(Serialization s) const;

   /// This list when nothing is prunable; else the interned list of what
   /// survives pruning, or null when nothing does. The list must be interned.
   PtrConst prune(ExtCommListDedupTable const* table) const;

   /// "<local data 1>:<local data 2>" in decimal; the global administrator is
   /// deliberately left out.
   static std::string getStringValue(Acl::CommunityValue const& value);

   /// Publishes the list into the snapshot store: each value's record, then
   /// the list of their locations with the sorted flag.
   hoard::Location hoard(hoard::StoreWriter& writer) const;
   /// A private copy of a stored list: values restored (detached), the
   /// classification lists built and marked local, the list itself local,
   /// never interned. Null when the store changed while it was read or the
   /// record does not hold (flags other than sorted, values out of order or
   /// repeated or unusable, more of them than the segment has room for);
   /// Kiv::RangeError for a location outside the store; hoard::StoreError
   /// for a segment cut short since it was opened.
   static PtrConst dehoard(void const* data, hoard::StoreManager* store);

   /// "[ <value> <value> ]" (see QorBgpCommunityListFormat.h).
   std::string toStrep() const;
   /// Route policy: the standard texts, then the classification texts, then
   /// (only for lists with such values) the UI texts; the first match wins.
   bool matchCommunitiesRegex(Routing::RouteMap::PosixRegex const* regex) const;

   Kiv::Ptr<ExtCommListSnapshot> snapshot() const { return commSnapshot(); }

 private:
   ClassificationListVector classificationLists_;
   CommVectorAttrs attrs_;
   U32 totalTransitiveCommunities_ = 0;
};

/// A new, empty list in its building state.
///@{
QORBGP_EXPORT ExtCommList::Ptr extCommListFactory();
QORBGP_EXPORT ExtCommList::Ptr ExtCommListIs();
///@}

/// A notifying copy of an extended community list: its classification lists
/// by classification and its values by content word (see ExtCommSnapshotBase.h).
class QORBGP_EXPORT ExtCommListSnapshot : public ExtCommListSnapshotBase<ExtCommFamily> {
 public:
   KIV_POINTER_TYPES(ExtCommListSnapshot);
};

} // namespace Routing::Bgp
