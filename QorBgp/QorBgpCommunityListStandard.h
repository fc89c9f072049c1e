/// @file
/// The standard community list (RFC 1997): the interned list of 32-bit
/// communities that one path carries in its COMMUNITIES attribute, the names
/// of the well-known communities, the LLGR feature toggle that governs two of
/// those names, and CommListSnapshot, an observed per-entry copy of a list.
#pragma once

#include "QorBgpCommunity/platform/Dedup.h"
#include "QorBgpCommunity/platform/DynamicBuffer.h"
#include "QorBgpCommunity/platform/Enum.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/HoardFwd.h"
#include "QorBgpCommunity/platform/Notifier.h"
#include "QorBgpCommunity/platform/NotifyingCollections.h"
#include "QorBgpCommunity/platform/Ptr.h"
#include "QorBgpCommunity/platform/Types.h"

#include <cstddef>
#include <span>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Routing::RouteMap {
class PosixRegex;
}

namespace Routing::Bgp {

class CommListDedupTable;

/// The well-known communities. Value 0 and the graceful-shutdown value are
/// named too, although neither is an RFC 1997 well-known community.
#define QORBGP_BGP_COMMUNITY_VALUE_MEMBERS(X)                                            \
   X(communityInternet, 0x00000000u)                                                     \
   X(communityGshut, 0xFFFF0000u)                                                        \
   X(communityLlgrStale, 0xFFFF0006u)                                                    \
   X(communityNoLlgr, 0xFFFF0007u)                                                       \
   X(communityNoExport, 0xFFFFFF01u)                                                     \
   X(communityNoAdvertise, 0xFFFFFF02u)                                                  \
   X(communityNoExportSubconfed, 0xFFFFFF03u)

enum QORBGP_EXPORT BgpCommunityValue : U32 {
   QORBGP_BGP_COMMUNITY_VALUE_MEMBERS(KIV_ENUMERATOR)
};
KIV_ENUM_GLUE(BgpCommunityValue);

/// Whether the long-lived graceful restart communities (llgr-stale, no-llgr)
/// have names: the toggle "QorBgpLlgr" of Kiv::featureToggleFile(), on by
/// default. Read on first use, by one thread however many ask at once, and
/// kept for the life of the process.
QORBGP_EXPORT bool toggleQorBgpLlgrEnabled();
/// Forgets the value read, so that the next toggleQorBgpLlgrEnabled() reads
/// the toggle file again. Tests only; not to race with readers.
QORBGP_EXPORT void toggleQorBgpLlgrEnabledResetForTest();

/// A mutable, observed copy of a standard community list: an ordered map from
/// community to a bool, ascending by community. Every insertion, change of
/// value and removal calls onComm(community) on the notifiees, after the
/// change, while notification is on; an operation that changes nothing calls
/// nobody.
///
/// Owned through Ptr by one consumer; not thread-safe (see Notifier.h for what
/// a callback may do).
///
/// @code{.cpp}
///   CommListSnapshot::Ptr snapshot = list->commSnapshot();   // every community, true
///   snapshot->commDel(communityNoExport);                     // onComm(0xFFFFFF01)
/// @endcode
class QORBGP_EXPORT CommListSnapshot : public Kiv::Notifier {
 public:
   KIV_POINTER_TYPES(CommListSnapshot);

   /// Observer of the snapshot; told of every community inserted, changed or removed.
   class QORBGP_EXPORT Notifiee : public Kiv::Notifiee {
    public:
      ~Notifiee() override;
      /// `community` was inserted, given a new value or removed.
      virtual void onComm(U32 const& community);
   };

   using CommIterator = std::map<U32, bool>::const_iterator;

   CommListSnapshot();
   ~CommListSnapshot() override;

   /// Inserts `community`, or gives its entry the new value.
   void commIs(U32 community, bool value) { comm_.set(community, value); }
   /// Removes the entry; false when there was none.
   bool commDel(U32 community) { return comm_.erase(community); }
   /// Removes the entry at `entry`, which must be a valid, dereferenceable iterator.
   void commDel(CommIterator entry) { comm_.erase(entry->first); }
   /// Removes every entry, each removal notifying.
   void commDelAll() { comm_.clear(); }

   /// The value of `community`; empty when it has no entry.
   std::optional<bool> comm(U32 community) const {
      bool const* value = comm_.find(community);
      return value ? std::optional<bool>(*value) : std::nullopt;
   }
   std::size_t comms() const noexcept { return comm_.size(); }
   /// Entries in ascending order. NOTE: invalidated by a change.
   ///@{
   CommIterator begin() const noexcept { return comm_.begin(); }
   CommIterator end() const noexcept { return comm_.end(); }
   ///@}

 private:
   Kiv::NotifyingOrderedMap<U32, bool, Notifiee, &Notifiee::onComm> comm_{*this};
};

/// The interned list of standard communities of one path.
///
/// Two phases. Building: made by commListFactory(), filled by one owner with
/// commIs in any order, duplicates allowed. Published: dedup() sorts it,
/// drops duplicates, trims its storage and interns it in a CommListDedupTable;
/// the caller continues with the object that dedup returns (the resident equal
/// list, or this one) and drops its own. A published list is immutable,
/// shared, compared by identity and may be read from any thread; it leaves its
/// table and dies with its last outside reference. There is no way back.
///
/// Reading a list before dedup and writing one after it are programming
/// errors: fatal assertions "commVectorSorted()" and "!commVectorSorted()".
/// Only comms(), empty() and the raw vector pointers may be used in both
/// phases.
///
/// @code{.cpp}
///   CommList::Ptr list = commListFactory();
///   list->commIs(communityNoExport);
///   list->commIs(0x00010002);                          // 1:2
///   CommList::PtrConst shared = list->dedup(table.get());
///   shared->noExport();                                // true
///   shared->serialize();                               // C0 08 08 00 01 00 02 FF FF FF 01
/// @endcode
class QORBGP_EXPORT CommList : public KivHoard::DedupHandle {
 public:
   KIV_POINTER_TYPES(CommList);
   /// Ascending without duplicates and with capacity equal to size once
   /// published; in insertion order while building.
   using CommVector = std::vector<U32>;

   CommList() noexcept;
   ~CommList() override;

   std::string_view fwkType() const noexcept { return "Routing::Bgp::CommList"; }

   /// Appends `value` (no order, no duplicate check). Asserts "!commVectorSorted()".
   void commIs(U32 value);

   /// Publishes the list: sorts it, drops duplicates, trims the vector, caches
   /// the well-known flags and the hash, and interns it in `table`. Returns the
   /// resident equal list or this one, now interned; never null. A list sorted
   /// already (restored sorted) is only re-flagged and interned.
   PtrConst dedup(CommListDedupTable const* table);

   bool commVectorSorted() const noexcept { return commVectorSorted_; }

   /// Membership, by binary search. Asserts "commVectorSorted()".
   bool comm(U32 value) const noexcept;
   U32 comms() const noexcept { return static_cast<U32>(commVector_.size()); }
   bool empty() const noexcept { return commVector_.empty(); }

   /// Whether the list holds NO_EXPORT, NO_ADVERTISE, NO_EXPORT_SUBCONFED.
   /// Each asserts "commVectorSorted()".
   ///@{
   bool noExport() const noexcept;
   bool noAdvertise() const noexcept;
   bool noExportSubconfed() const noexcept;
   ///@}

   /// The vector itself, for code that restores or renders lists in bulk.
   /// WARNING: filling a list through the non-const pointer bypasses the phase
   /// checks and the cached flags and hash; dedup() refreshes them.
   ///@{
   CommVector const* commVectorRawPtr() const noexcept { return &commVector_; }
   CommVector* commVectorRawPtrNonConst() noexcept { return &commVector_; }
   ///@}

   /// Jenkins one-at-a-time over the communities' bytes in list order, each
   /// least significant byte first; 0 for an empty list. Cached by dedup().
   /// Asserts "commVectorSorted()".
   U32 hash() const noexcept override;
   /// Same communities in the same order (`other` is a CommList). Asserts
   /// "commVectorSorted()".
   bool compare(Zup::DedupHandle const* other) const noexcept override;
   /// True when `content`, the sorted values dedupValues looks a list up by,
   /// are this list's.
   bool compareByContent(Zup::DedupContentHandle const& content) const noexcept override;

   /// The whole COMMUNITIES path attribute: flags 0xC0, type 8, a length of
   /// 4 * comms() (extended-length header above 255 bytes), then each
   /// community in network byte order, ascending. Asserts "commVectorSorted()";
   /// a list above 16383 communities (65535 value bytes) is fatal.
   std::string serialize() const;
   /// The list's text (see QorBgpCommunityListFormat.h).
   std::string toStrep() const;
   /// The list of the given values, sorted and de-duplicated here in place:
   /// the resident equal list when there is one (found without building a
   /// list), else a new one of exactly these values, interned. The fast path
   /// of decoding: most attributes a router receives carry a list it holds.
   static PtrConst dedupValues(CommListDedupTable const* table, std::span<U32> values);
   /// In multi-threaded tables each thread remembers the lists it looked up
   /// this way, with references to hand out taken in batches, so that threads
   /// decoding the same popular lists do not contend for their counts. Those
   /// references keep a list interned after its last path has let go, until
   /// another list takes its place in the cache, the thread ends, or the
   /// thread calls this.
   static void releaseThreadCache() noexcept;

   /// Appends that text: names for well-known communities, colon form otherwise.
   void appendText(Kiv::DynamicBufferInterface& out) const;

   /// The flags word of a stored list: sorted, then the three cached flags.
   static constexpr U32 storedSortedFlag = 1;
   static constexpr U32 storedNoExportFlag = 2;
   static constexpr U32 storedNoAdvertiseFlag = 4;
   static constexpr U32 storedNoExportSubconfedFlag = 8;
   U32 storedFlags() const noexcept;
   /// Sets the flags of a restored list from its elements, which are in
   /// place, and tells whether `flags`, the stored word, says the same. False
   /// for elements out of order or repeated, a word without the sorted flag
   /// or with unknown bits, and cached flags the elements contradict; the
   /// list is then to be dropped. An empty list takes the word as it is
   /// (sorted or not, as it was hoarded) and is never refused.
   bool storedFlagsIs(U32 flags) noexcept;
   /// Publishes the list (flags word and elements) into the snapshot store.
   hoard::Location hoard(hoard::StoreWriter& writer) const;
   /// A private, never-interned copy of a list another process published:
   /// `data` points at its stored location. Null when the store changed while
   /// it was read or the record does not hold (see storedFlagsIs, and a count
   /// beyond the segment); Kiv::RangeError for a location outside the store;
   /// StoreError for a segment cut short since it was opened.
   static PtrConst dehoard(void const* data, hoard::StoreManager* store);

   /// A new snapshot, notification on, holding every community with value
   /// true (one insertion per community). Asserts "commVectorSorted()".
   CommListSnapshot::Ptr commSnapshot() const;

   /// Route-policy match: true when `regex` (not null) matches the list's
   /// colon-form text ("1:2 65535:65281", possibly empty), or else the same
   /// text with every well-known community by its name ("1:2 no-export"); the
   /// second text is tried even when it has no name. Asserts "commVectorSorted()".
   bool matchCommunitiesRegex(Routing::RouteMap::PosixRegex const* regex) const;

   /// Colon form: AS part and local part in decimal, e.g. 0xFFFFFF01 -> "65535:65281".
   static std::string getStringValue(U32 value);
   /// "internet", "GSHUT", "no-export", "no-advertise", "local-as" (for
   /// NO_EXPORT_SUBCONFED), and while toggleQorBgpLlgrEnabled() "llgr-stale"
   /// and "no-llgr"; "" for every other value.
   static std::string wellKnownName(U32 value);

 private:
   void cacheHash() noexcept;

   CommVector commVector_;
   U32 hash_ = 0;                  ///< valid while commVectorSorted_
   bool commVectorSorted_ = false; ///< set once by dedup(), never cleared
   bool noExport_ = false;         ///< cached by dedup()
   bool noAdvertise_ = false;
   bool noExportSubconfed_ = false;
};

/// A new, empty list in its building phase, notification on.
QORBGP_EXPORT CommList::Ptr commListFactory();

} // namespace Routing::Bgp
