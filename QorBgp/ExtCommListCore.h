/// @file
/// The core that both extended community list families are built on: the
/// 8-octet family (ExtCommList, ExtCommClassificationList and its kinds) and
/// the IPv6-address-specific family (ExtCommIp6List,
/// ExtCommIp6ClassificationList). A family is described by a traits struct
/// (ExtCommFamily, ExtCommIp6Family); each list class derives from the core
/// of its level with itself and its family as arguments, and adds only what
/// is its own (its sorted flag, classification split, wire form, text).
///
/// Both levels hold a vector of interned values, ascending by content without
/// duplicates once sorted, and are interned by the identity of what they hold:
/// a classification list by its values, a list by its classification lists
/// (so lists with the same route targets share one route-target list object).
/// Interned lists are read-only and may be read from any thread.
///
/// The members are defined once, in ExtCommListCore.cpp, and instantiated
/// there for both families.
#pragma once

#include "QorBgpCommunity/QorBgp/QorBgpCommunityPacketTypes.h"
#include "QorBgpCommunity/platform/Dedup.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Ptr.h"
#include "QorBgpCommunity/platform/Types.h"

#include <span>
#include <vector>

namespace Routing::Bgp {

class ExtComm;
class ExtCommClassificationList;
class ExtCommClassificationListSnapshot;
class ExtCommListSnapshot;
class ExtCommIp6;
struct ExtCommIp6Content;
class ExtCommIp6ClassificationList;
class ExtCommIp6ClassificationListSnapshot;
class ExtCommIp6ListSnapshot;

/// The 8-octet family: values keyed by their content word.
struct QORBGP_EXPORT ExtCommFamily {
   using Comm = ExtComm;
   using Key = U64;
   using ClassificationList = ExtCommClassificationList;
   using ClassificationListSnapshot = ExtCommClassificationListSnapshot;
   using ListSnapshot = ExtCommListSnapshot;
   /// The unit that the family's fatal assertions print.
   static constexpr char const* listUnit = "QorBgpCommunityList";
   /// The snapshot classes' names, as their error messages give them.
   static constexpr char const* listSnapshotName = "ExtCommListSnapshot";
   static constexpr char const* classificationListSnapshotName =
      "ExtCommClassificationListSnapshot";
   static constexpr char const* classificationListUnit = "QorBgpCommunityList";
};

/// The IPv6-address-specific family: values keyed by their 20-octet content.
struct QORBGP_EXPORT ExtCommIp6Family {
   using Comm = ExtCommIp6;
   using Key = ExtCommIp6Content;
   using ClassificationList = ExtCommIp6ClassificationList;
   using ClassificationListSnapshot = ExtCommIp6ClassificationListSnapshot;
   using ListSnapshot = ExtCommIp6ListSnapshot;
   static constexpr char const* listUnit = "ExtCommIp6List";
   static constexpr char const* classificationListUnit = "ExtCommIp6ClassificationList";
   static constexpr char const* listSnapshotName = "ExtCommIp6ListSnapshot";
   static constexpr char const* classificationListSnapshotName =
      "ExtCommIp6ClassificationListSnapshot";
};

/// What a classification list or a list is looked up by before one is built:
/// the identities of its elements in order (a classification list's interned
/// values; a list's interned classification lists by classification index,
/// null where it has none).
struct QORBGP_EXPORT ExtCommIdentityContent : Zup::DedupContentHandle {
   std::span<void const* const> identities;
};

/// The values of one classification taken out of a list. `Derived` provides
/// commVectorSorted().
template <class Derived, class Family>
class QORBGP_EXPORT ExtCommClassificationListCore : public Zup::DedupHandle {
 public:
   using Comm = typename Family::Comm;
   using Key = typename Family::Key;
   using CommVector = std::vector<Kiv::Ptr<Comm const>>;

   ExtCommClassification classification() const noexcept { return classification_; }

   /// The value with content `community`, or null. Fatal "commVectorSorted" on
   /// an unsorted list.
   Kiv::Ptr<Comm const> comm(Key const& community) const;
   U32 comms() const noexcept { return static_cast<U32>(comms_.size()); }
   CommVector const* commVectorRawPtr() const noexcept { return &comms_; }

   /// Jenkins one-at-a-time over the addresses of the (interned) values; 0 for
   /// none. Fatal "commVectorSorted()" on an unsorted list.
   U32 hash() const noexcept override;
   /// The very same values in the same order; the classification is not
   /// compared (lists of different classifications cannot share values, and
   /// all empty lists are one). Fatal "commVectorSorted()" on an unsorted list.
   bool compare(Zup::DedupHandle const* other) const noexcept override;
   /// True when `content` (an ExtCommIdentityContent) holds this list's
   /// values, the very same objects in the same order.
   bool compareByContent(Zup::DedupContentHandle const& content) const noexcept override;

   /// A new snapshot holding every value, notification on.
   Kiv::Ptr<typename Family::ClassificationListSnapshot> commSnapshot() const;

 protected:
   static constexpr char const* qorAssertUnit = Family::classificationListUnit;

   explicit ExtCommClassificationListCore(ExtCommClassification classification) noexcept
       : classification_(classification) {}
   ~ExtCommClassificationListCore() override = default;

   /// Appends an interned value; fatal "__null != comm" for null and the
   /// interned-state condition for a value never interned. No ordering.
   void commAppend(Kiv::Ptr<Comm const> const& comm);
   /// Sorts ascending by content, drops duplicates and trims the capacity.
   void commVectorSort();
   CommVector const& commVector() const noexcept { return comms_; }

 private:
   Derived const& derived() const noexcept { return static_cast<Derived const&>(*this); }

   ExtCommClassification const classification_;
   CommVector comms_;
};

/// The values of one path, with beside them one interned classification list
/// per classification present. `Derived` provides commVectorSorted() and
/// classificationLists(), the vector indexed by classification (null where
/// the list has no value of it).
template <class Derived, class Family>
class QORBGP_EXPORT ExtCommListCore : public KivHoard::DedupHandle {
 public:
   using Comm = typename Family::Comm;
   using Key = typename Family::Key;
   using CommVector = std::vector<Kiv::Ptr<Comm const>>;
   using ClassificationListVector =
      std::vector<Kiv::Ptr<typename Family::ClassificationList const>>;

   /// Building (before dedup).
   void expectedCommunityCountIs(U32 communityCount) { comms_.reserve(communityCount); }

   /// Reading.
   /// The value with content `community`, or null. Fatal "commVectorSorted" on
   /// an unsorted list.
   Kiv::Ptr<Comm const> comm(Key const& community) const;
   Kiv::Ptr<Comm const> lookupExtComm(Key const& community) const { return comm(community); }
   U32 comms() const noexcept { return static_cast<U32>(comms_.size()); }
   bool empty() const noexcept { return comms_.empty(); }
   /// The same count, for a sorted list only (fatal "commVectorSorted()").
   U32 totalCommunities() const noexcept;
   CommVector const* commVectorRawPtr() const noexcept { return &comms_; }
   /// The interned classification list of `classification`; null when the
   /// list has no value of it, including classifications beyond the vector.
   /// Fatal (the interned-state condition) on a list never interned.
   Kiv::Ptr<typename Family::ClassificationList const>
   classificationList(ExtCommClassification classification) const;

   /// Jenkins one-at-a-time over the addresses of the interned classification
   /// lists, in classification order; 0 for none.
   U32 hash() const noexcept override;
   /// The very same classification lists at every index.
   bool compare(Zup::DedupHandle const* other) const noexcept override;
   /// True when `content` (an ExtCommIdentityContent) holds this list's
   /// classification lists, the very same objects at every index.
   bool compareByContent(Zup::DedupContentHandle const& content) const noexcept override;

   /// A new snapshot: every classification list, then every value.
   Kiv::Ptr<typename Family::ListSnapshot> commSnapshot() const;

 protected:
   static constexpr char const* qorAssertUnit = Family::listUnit;

   ExtCommListCore() = default;
   ~ExtCommListCore() override = default;

   /// Appends an interned value (as ExtCommClassificationListCore::commAppend).
   void commAppend(Kiv::Ptr<Comm const> const& comm);
   /// Sorts ascending by content, drops duplicates and trims the capacity.
   void commVectorSort();
   CommVector const& commVector() const noexcept { return comms_; }
   /// Fatal (the never-interned condition) unless this list was never interned.
   void assertNeverDeduped() const noexcept;

 private:
   Derived const& derived() const noexcept { return static_cast<Derived const&>(*this); }

   CommVector comms_;
};

} // namespace Routing::Bgp
