/// @file
/// The snapshot store ("hoard"): one process publishes records into a named
/// shared-memory segment (or a memory-mapped file), and readers in other
/// processes map the segment read-only and restore the records.
///
/// A segment starts with a header (magic number, format version, size, a
/// version anchor and a root location) followed by records that are only ever
/// appended. Records refer to each other by Location, an offset from the
/// segment base, so that they mean the same in every process. The writer may
/// rewrite a published record in place, but only between beginChange() and
/// endChange(), which move the version anchor seqlock-style (odd while a
/// change is in progress). A reader snapshots the anchor, reads, and then asks
/// whether the anchor is still the same even value; if it is, what it read is
/// consistent, otherwise it must discard it (and may retry).
///
/// Record layouts (host byte order, every record 8-byte aligned):
/// @code{.unparsed}
///   ExtCommRecord      16 bytes  U32 classification, U32 zero, U64 content
///   ListRecord          8 bytes  U32 flags, U32 count, then `count` elements:
///     U32                 4      a standard community
///     LargeCommRecord    12      global administrator, local data 1 and 2
///     Location            8      an ExtCommRecord of the extended list
///     ExtCommIp6Record   20      type, subtype, address, local administrator
/// @endcode
///
/// Readers of a stored value are handed a `void const*` that points at a
/// stored Location (Location::loadFrom) and a StoreManager to translate it.
#pragma once

#include "QorBgpCommunity/platform/Assert.h"
#include "QorBgpCommunity/platform/Errors.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Types.h"

#include <array>
#include <atomic>
#include <compare>
#include <cstddef>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <type_traits>

namespace hoard {

/// Where a record lies: its offset from the segment base. Offset 0 (inside the
/// header) is the null location; no record is ever published there.
class Location {
 public:
   constexpr Location() noexcept = default;
   constexpr explicit Location(U64 offset) noexcept : offset_(offset) {}

   /// The location stored at `stored`, which need not be aligned.
   static Location loadFrom(void const* stored) noexcept {
      U64 offset;
      std::memcpy(&offset, stored, sizeof offset);
      return Location(offset);
   }

   constexpr U64 offset() const noexcept { return offset_; }
   constexpr bool isNull() const noexcept { return offset_ == 0; }

   friend constexpr auto operator<=>(Location, Location) noexcept = default;

 private:
   U64 offset_ = 0;
};

/// The stored form of one 8-octet extended community.
struct ExtCommRecord {
   U32 classification = 0; ///< ExtCommClassification
   U32 reserved = 0;
   U64 content = 0; ///< ExtCommContent, type octet most significant

   friend constexpr bool operator==(ExtCommRecord const&, ExtCommRecord const&) noexcept = default;
};

/// Header of every list record; its elements follow it directly.
struct ListRecord {
   U32 flags = 0; ///< the list's flags word, opaque to the store
   U32 count = 0;

   friend constexpr bool operator==(ListRecord const&, ListRecord const&) noexcept = default;
};

/// The stored form of one large community, an element of a ListRecord.
struct LargeCommRecord {
   U32 globalAdmin = 0;
   U32 localData1 = 0;
   U32 localData2 = 0;

   friend constexpr bool operator==(LargeCommRecord const&,
                                    LargeCommRecord const&) noexcept = default;
};

/// Fields in wire order, as ExtCommIp6Content holds them.
struct ExtCommIp6Record {
   U8 type = 0;
   U8 subtype = 0;
   std::array<U8, 16> address{};
   U16 localAdmin = 0;

   friend constexpr bool operator==(ExtCommIp6Record const&,
                                    ExtCommIp6Record const&) noexcept = default;
};

static_assert(sizeof(Location) == 8 && sizeof(ExtCommRecord) == 16 && sizeof(ListRecord) == 8 &&
              sizeof(LargeCommRecord) == 12 && sizeof(ExtCommIp6Record) == 20);

/// What may be copied into and read out of a segment: plain bytes, needing no
/// more than the 8-byte alignment every record gets.
template <class T>
concept StoredRecord = std::is_trivially_copyable_v<T> && alignof(T) <= 8;

/// A segment that cannot be created, opened or grown: missing, not a hoard
/// segment, another format version, truncated, or full.
class QORBGP_EXPORT StoreError : public Kiv::Error {
 public:
   using Kiv::Error::Error;
   ~StoreError() override;
};

namespace detail {
struct Mapping;
struct SegmentHeader;
} // namespace detail

/// The publishing side of one segment, which it creates. Records are appended
/// and never freed; the segment stays in the system after the writer is gone
/// (readers may still open it) until removeSharedMemory / removeMappedFile.
///
/// One writer per segment, used from one thread; move-only.
///
/// @code{.cpp}
///   auto writer = hoard::StoreWriter::createSharedMemory("QorBgpSnapshot", 1 << 20);
///   hoard::Location rt = writer.publish(hoard::ExtCommRecord{1, 0, 0x0002fde800000064});
///   hoard::Location list = writer.publishList<hoard::Location>(sortedFlag, {&rt, 1});
///   writer.rootIs(list);
///   {
///      auto change = writer.change();
///      writer.rewrite(rt, hoard::ExtCommRecord{1, 0, 0x0002fde800000065});
///   }
/// @endcode
class QORBGP_EXPORT StoreWriter {
 public:
   /// Creates a shared-memory object (a plain name, no '/') or a file of
   /// `size` bytes, zero-filled apart from the header. StoreError when it
   /// exists already or cannot be created; Kiv::RangeError when `size` cannot
   /// hold the header.
   ///@{
   static StoreWriter createSharedMemory(std::string const& name, U64 size);
   static StoreWriter createMappedFile(std::string const& path, U64 size);
   ///@}
   /// Whether a segment of that name was there to remove.
   ///@{
   static bool removeSharedMemory(std::string const& name) noexcept;
   static bool removeMappedFile(std::string const& path) noexcept;
   ///@}

   StoreWriter(StoreWriter&&) noexcept;
   StoreWriter& operator=(StoreWriter&&) noexcept;
   ~StoreWriter();

   U64 size() const noexcept { return size_; }
   /// Bytes taken by the header and the records so far.
   U64 used() const noexcept { return used_; }

   /// Appends a copy of `record` and returns its location. Publishing touches
   /// no byte a reader can reach yet, so it needs no change. StoreError when
   /// the segment has no room left.
   template <StoredRecord T>
   Location publish(T const& record) {
      return publishBytes(&record, sizeof(T));
   }
   /// Appends a ListRecord {flags, size} followed by the elements. As
   /// publish; Kiv::RangeError when there are more than 2^32 - 1 elements.
   template <StoredRecord E>
   Location publishList(U32 flags, std::span<E const> elements) {
      return publishListBytes(flags, elements.size(), sizeof(E), elements.data());
   }

   /// The location readers find first (Location() until set). Its store is a
   /// release: records published before it are visible to a reader that
   /// loads it.
   void rootIs(Location root) noexcept;

   /// Opens and closes a change: the version anchor becomes odd, then the next
   /// even value. Changes do not nest: fatal "!changeInProgress()" when one is
   /// open, "changeInProgress()" on endChange without one.
   ///@{
   void beginChange() noexcept;
   void endChange() noexcept;
   ///@}
   bool changeInProgress() const noexcept;

   /// Closes the change it opened when it goes out of scope.
   class [[nodiscard]] Change {
    public:
      explicit Change(StoreWriter& writer) noexcept : writer_(writer) { writer_.beginChange(); }
      Change(Change const&) = delete;
      Change& operator=(Change const&) = delete;
      ~Change() { writer_.endChange(); }

    private:
      StoreWriter& writer_;
   };
   Change change() noexcept { return Change(*this); }

   /// Overwrites the published record at `at` with `record`. Only inside a
   /// change (fatal "changeInProgress()" otherwise); Kiv::RangeError when the
   /// record would not lie inside the published part of the segment or `at`
   /// is not aligned for T.
   template <StoredRecord T>
   void rewrite(Location at, T const& record) {
      rewriteBytes(at, &record, sizeof(T), alignof(T));
   }

 private:
   StoreWriter(std::unique_ptr<detail::Mapping> mapping, U64 size);
   Location publishBytes(void const* bytes, U64 size);
   Location publishListBytes(U32 flags, U64 count, U64 elementSize, void const* elements);
   void rewriteBytes(Location at, void const* bytes, U64 size, U64 alignment);
   /// Reserves `size` bytes at the end, rounded up to the record alignment.
   std::byte* allocate(U64 size, Location& at);

   std::unique_ptr<detail::Mapping> mapping_;
   std::byte* base_ = nullptr;
   detail::SegmentHeader* header_ = nullptr;
   U64 size_ = 0;
   U64 used_ = 0; ///< multiple of the record alignment; records lie in [header, used_)
};

/// The reading side: a segment mapped read-only. Translates locations into
/// local addresses, checked against the segment's bounds, and exposes the
/// version anchor. Move-only; const operations are thread-safe. Addresses it
/// hands out live as long as the manager.
///
/// WARNING: the bytes behind a translated address may change under the reader
/// while the writer is inside a change. Read through a ReaderPtr and trust
/// what was read only once validateVersionAnchor() says so.
class QORBGP_EXPORT StoreManager {
 public:
   /// Maps an existing segment. StoreError naming the segment when it does
   /// not exist, is shorter than a header, has the wrong magic number or
   /// format version, or is shorter than the size its header claims.
   ///@{
   static StoreManager openSharedMemory(std::string const& name);
   static StoreManager openMappedFile(std::string const& path);
   ///@}

   StoreManager(StoreManager&&) noexcept;
   StoreManager& operator=(StoreManager&&) noexcept;
   ~StoreManager();

   /// The segment size its header gives; translations stay below it.
   U64 size() const noexcept { return size_; }
   Location root() const noexcept;

   /// The address of `count` records of `size` bytes each at `at`, or null
   /// when `at` is null or inside the header, not a multiple of `alignment`,
   /// or the records would reach beyond the segment (overflow included).
   void const* find(Location at, U64 count, U64 size, U64 alignment) const noexcept;
   /// As find, but Kiv::RangeError naming the location, the length and the
   /// segment size instead of null.
   void const* translate(Location at, U64 count, U64 size, U64 alignment) const {
      if (void const* found = find(at, count, size, alignment)) {
         return found;
      }
      throwBadLocation(at, count, size, alignment);
   }

   /// StoreError when the segment's file or shared-memory object is now
   /// shorter than size(): cut after it was mapped, so that reading the part
   /// cut off would fault (SIGBUS) or see zeros. One fstat; restoring calls it
   /// once before it reads. A cut made while a restore is under way is not
   /// caught.
   void checkIntact() const;

   /// The anchor as it is now (acquire): odd while the writer is in a change.
   U64 versionAnchor() const noexcept;
   /// Whether everything read since `anchor` was taken is consistent: the
   /// anchor is even and has not moved.
   bool versionAnchorUnchanged(U64 anchor) const noexcept;

 private:
   StoreManager(std::unique_ptr<detail::Mapping> mapping, U64 size);
   [[noreturn]] void throwBadLocation(Location at, U64 count, U64 size, U64 alignment) const;

   std::unique_ptr<detail::Mapping> mapping_;
   std::byte const* base_ = nullptr;
   detail::SegmentHeader const* header_ = nullptr;
   U64 size_ = 0;      ///< from the header; never more than is mapped
   U64 dataBegin_ = 0; ///< the first offset a record may have
};

/// The translation and validation policy of ReaderPtr: bounds-checked
/// translation through the manager and the seqlock check of its version
/// anchor.
struct QORBGP_EXPORT BlotAnchorTranslatorValidator {
   static U64 anchor(StoreManager const& store) noexcept { return store.versionAnchor(); }
   static void const* translate(StoreManager const& store, Location at, U64 count, U64 size,
                                U64 alignment) {
      return store.translate(at, count, size, alignment);
   }
   static void const* find(StoreManager const& store, Location at, U64 count, U64 size,
                           U64 alignment) noexcept {
      return store.find(at, count, size, alignment);
   }
   static bool validate(StoreManager const& store, U64 anchor) noexcept {
      return store.versionAnchorUnchanged(anchor);
   }
};

/// A version-anchored pointer to one stored record of type T (the record
/// layout, such as ExtCommRecord, not the library type restored from it).
/// Construction takes the anchor, then translates (Kiv::RangeError for a
/// location outside the segment). Copy fields out, then call
/// validateVersionAnchor(); only when it is true are the copies consistent.
/// The manager must outlive the pointer.
///
/// @code{.cpp}
///   hoard::ReaderPtr<hoard::ListRecord> list(store, Location::loadFrom(data));
///   U32 const count = list->count;
///   if (!list.validateVersionAnchor()) { ... }   // retry or fail
///   std::memcpy(out, list.trailing<U32>(count), count * sizeof(U32));
///   bool const consistent = list.validateVersionAnchor();
/// @endcode
///
/// WARNING: never size an allocation or loop by a field before validating it;
/// a field read during a change may hold anything.
template <StoredRecord T, class Validator = BlotAnchorTranslatorValidator>
class ReaderPtr {
 public:
   ReaderPtr(StoreManager const& store, Location at)
       : store_(&store), at_(at), anchor_(Validator::anchor(store)),
         record_(static_cast<T const*>(Validator::translate(store, at, 1, sizeof(T), alignof(T)))) {
   }

   T const* get() const noexcept { return record_; }
   T const* operator->() const noexcept { return record_; }
   T const& operator*() const noexcept { return *record_; }
   Location location() const noexcept { return at_; }

   /// The `count` elements that directly follow the record (a list's element
   /// array). Kiv::RangeError when they reach beyond the segment.
   template <StoredRecord E>
   E const* trailing(U64 count) const {
      return static_cast<E const*>(Validator::translate(*store_, Location(at_.offset() + sizeof(T)),
                                                        count, sizeof(E), alignof(E)));
   }

   /// As trailing, but null instead of the error.
   template <StoredRecord E>
   E const* findTrailing(U64 count) const noexcept {
      return static_cast<E const*>(Validator::find(*store_, Location(at_.offset() + sizeof(T)),
                                                   count, sizeof(E), alignof(E)));
   }

   /// True when the anchor is even and unchanged since construction, so that
   /// everything read through this pointer (and any other) meanwhile is
   /// consistent. May be asked repeatedly.
   bool validateVersionAnchor() const noexcept { return Validator::validate(*store_, anchor_); }

 private:
   StoreManager const* store_;
   Location at_;
   U64 anchor_;
   T const* record_;
};

} // namespace hoard
