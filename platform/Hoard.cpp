#include "QorBgpCommunity/platform/Hoard.h"

#include <boost/interprocess/exceptions.hpp>
#include <boost/interprocess/file_mapping.hpp>
#include <boost/interprocess/mapped_region.hpp>
#include <boost/interprocess/shared_memory_object.hpp>

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <new>
#include <system_error>
#include <utility>

namespace bip = boost::interprocess;

namespace hoard {

namespace detail {

// A mapped segment. A reader keeps its shared-memory object or file open so
// that it can tell whether the object has shrunk since (the region itself
// stays mapped either way).
struct Mapping {
   std::string name;
   bip::mapped_region region;
   bip::shared_memory_object shm;
   bip::file_mapping file;
   int descriptor = -1; ///< of shm or file; -1 when neither is open
};

// The first bytes of every segment. The anchor and root are the only fields
// that change after creation, and they change atomically.
struct SegmentHeader {
   U64 magic = 0;
   U32 formatVersion = 0;
   U32 headerSize = 0;
   U64 segmentSize = 0;
   std::atomic<U64> sequence{0};
   std::atomic<U64> root{0};
   std::array<U64, 3> reserved{};
};

static_assert(sizeof(SegmentHeader) == 64 && std::is_standard_layout_v<SegmentHeader>);
// Lock-free atomics are address-free, so they work across processes, and their
// loads are plain loads, so they work on a read-only mapping.
static_assert(std::atomic<U64>::is_always_lock_free);

} // namespace detail

namespace {

using detail::Mapping;
using detail::SegmentHeader;

constexpr U64 magicNumber = 0x514f52484f415244; // "QORHOARD"
constexpr U32 formatVersion = 1;
constexpr U64 headerSize = sizeof(SegmentHeader);
constexpr U64 recordAlignment = 8;

std::string segmentText(std::string const& name) { return "hoard segment " + name; }

// Whether `count` items of `size` bytes at `offset` lie inside [begin, end),
// suitably aligned, without overflowing.
bool fits(U64 offset, U64 count, U64 size, U64 alignment, U64 begin, U64 end) noexcept {
   return offset >= begin && offset <= end && offset % alignment == 0 &&
          (size == 0 || count <= (end - offset) / size);
}

std::unique_ptr<Mapping> makeMapping(std::string const& name, bip::mapped_region region) {
   auto mapping = std::make_unique<Mapping>();
   mapping->name = name;
   mapping->region = std::move(region);
   return mapping;
}

// Checks the header of a segment mapped with `mapped` bytes and returns the
// size it claims.
U64 checkedSegmentSize(std::string const& name, void const* base, U64 mapped) {
   if (mapped < headerSize) {
      throw StoreError(segmentText(name) + " is " + std::to_string(mapped) +
                       " bytes, too short for its " + std::to_string(headerSize) + "-byte header");
   }
   auto const* header = static_cast<SegmentHeader const*>(base);
   if (header->magic != magicNumber) {
      char hex[19];
      std::snprintf(hex, sizeof hex, "%#llx", static_cast<unsigned long long>(header->magic));
      throw StoreError(segmentText(name) + " has bad magic number " + hex);
   }
   // Pairs with the writer's fence before it stores the magic number.
   std::atomic_thread_fence(std::memory_order_acquire);
   if (header->formatVersion != formatVersion) {
      throw StoreError(segmentText(name) + " has format version " +
                       std::to_string(header->formatVersion) + ", expected " +
                       std::to_string(formatVersion));
   }
   if (header->segmentSize < headerSize || header->segmentSize > mapped) {
      throw StoreError(segmentText(name) + " is " + std::to_string(mapped) +
                       " bytes, but its header claims " + std::to_string(header->segmentSize));
   }
   return header->segmentSize;
}

void checkCreatable(U64 size) {
   if (size < headerSize) {
      throw Kiv::RangeError("hoard segment size " + std::to_string(size) + " is below the " +
                            std::to_string(headerSize) + "-byte header");
   }
}

} // namespace

StoreError::~StoreError() = default;

// ---- StoreWriter ----

StoreWriter StoreWriter::createSharedMemory(std::string const& name, U64 size) {
   checkCreatable(size);
   try {
      bip::shared_memory_object shm(bip::create_only, name.c_str(), bip::read_write);
      try {
         shm.truncate(static_cast<bip::offset_t>(size));
         return StoreWriter(makeMapping(name, bip::mapped_region(shm, bip::read_write)), size);
      } catch (...) {
         bip::shared_memory_object::remove(name.c_str());
         throw;
      }
   } catch (bip::interprocess_exception const& e) {
      throw StoreError(segmentText(name) + " cannot be created: " + e.what());
   }
}

StoreWriter StoreWriter::createMappedFile(std::string const& path, U64 size) {
   checkCreatable(size);
   // "x": fail rather than take over an existing file.
   std::FILE* file = std::fopen(path.c_str(), "wbx");
   if (file == nullptr) {
      throw StoreError(segmentText(path) + " cannot be created: " +
                       std::error_code(errno, std::generic_category()).message());
   }
   std::fclose(file);
   try {
      std::filesystem::resize_file(path, size);
      bip::file_mapping fileMapping(path.c_str(), bip::read_write);
      return StoreWriter(
         makeMapping(path, bip::mapped_region(fileMapping, bip::read_write, 0, size)), size);
   } catch (std::exception const& e) {
      std::error_code ignored;
      std::filesystem::remove(path, ignored);
      throw StoreError(segmentText(path) + " cannot be created: " + e.what());
   }
}

bool StoreWriter::removeSharedMemory(std::string const& name) noexcept {
   return bip::shared_memory_object::remove(name.c_str());
}

bool StoreWriter::removeMappedFile(std::string const& path) noexcept {
   std::error_code ignored;
   return std::filesystem::remove(path, ignored);
}

StoreWriter::StoreWriter(std::unique_ptr<Mapping> mapping, U64 size)
    : mapping_(std::move(mapping)), base_(static_cast<std::byte*>(mapping_->region.get_address())),
      size_(size), used_(headerSize) {
   header_ = new (base_) SegmentHeader;
   header_->formatVersion = formatVersion;
   header_->headerSize = headerSize;
   header_->segmentSize = size;
   // Last, so that a reader opening a segment still being set up rejects it.
   std::atomic_thread_fence(std::memory_order_release);
   header_->magic = magicNumber;
}

StoreWriter::StoreWriter(StoreWriter&&) noexcept = default;
StoreWriter& StoreWriter::operator=(StoreWriter&&) noexcept = default;
StoreWriter::~StoreWriter() = default;

std::byte* StoreWriter::allocate(U64 size, Location& at) {
   U64 const free = size_ - used_;
   U64 const rounded = size + (recordAlignment - size % recordAlignment) % recordAlignment;
   if (size > free || rounded > free) {
      throw StoreError(segmentText(mapping_->name) + " is full: " + std::to_string(size) +
                       " bytes asked, " + std::to_string(free) + " of " + std::to_string(size_) +
                       " free");
   }
   at = Location(used_);
   std::byte* place = base_ + used_;
   used_ += rounded;
   return place;
}

Location StoreWriter::publishBytes(void const* bytes, U64 size) {
   Location at;
   std::memcpy(allocate(size, at), bytes, size);
   return at;
}

Location StoreWriter::publishListBytes(U32 flags, U64 count, U64 elementSize,
                                       void const* elements) {
   if (count > UINT32_MAX) {
      throw Kiv::RangeError("hoard list of " + std::to_string(count) +
                            " elements exceeds the 32-bit element count");
   }
   // Both factors are below 2^32, so neither the product nor the header added
   // to it wraps.
   U64 const arrayBytes = count * elementSize;
   Location at;
   std::byte* place = allocate(sizeof(ListRecord) + arrayBytes, at);
   ListRecord const header{flags, static_cast<U32>(count)};
   std::memcpy(place, &header, sizeof header);
   if (arrayBytes != 0) {
      std::memcpy(place + sizeof header, elements, arrayBytes);
   }
   return at;
}

void StoreWriter::rootIs(Location root) noexcept {
   header_->root.store(root.offset(), std::memory_order_release);
}

// Seqlock writer: the odd value must be visible before any record byte
// changes, and every changed byte before the next even value.
void StoreWriter::beginChange() noexcept {
   U64 const anchor = header_->sequence.load(std::memory_order_relaxed);
   QOR_ASSERT_TEXT(anchor % 2 == 0, "!changeInProgress()");
   header_->sequence.store(anchor + 1, std::memory_order_relaxed);
   std::atomic_thread_fence(std::memory_order_release);
}

void StoreWriter::endChange() noexcept {
   U64 const anchor = header_->sequence.load(std::memory_order_relaxed);
   QOR_ASSERT_TEXT(anchor % 2 == 1, "changeInProgress()");
   header_->sequence.store(anchor + 1, std::memory_order_release);
}

bool StoreWriter::changeInProgress() const noexcept {
   return header_->sequence.load(std::memory_order_relaxed) % 2 == 1;
}

void StoreWriter::rewriteBytes(Location at, void const* bytes, U64 size, U64 alignment) {
   QOR_ASSERT(changeInProgress());
   if (!fits(at.offset(), 1, size, alignment, headerSize, used_)) {
      throw Kiv::RangeError("hoard location " + std::to_string(at.offset()) + " with " +
                            std::to_string(size) + " bytes is not inside the " +
                            std::to_string(used_) + " published bytes of " +
                            segmentText(mapping_->name));
   }
   std::memcpy(base_ + at.offset(), bytes, size);
}

// ---- StoreManager ----

StoreManager StoreManager::openSharedMemory(std::string const& name) {
   auto mapping = std::make_unique<Mapping>();
   mapping->name = name;
   U64 mapped = 0;
   try {
      mapping->shm = bip::shared_memory_object(bip::open_only, name.c_str(), bip::read_only);
      mapping->descriptor = mapping->shm.get_mapping_handle().handle;
      bip::offset_t objectSize = 0;
      mapping->shm.get_size(objectSize);
      mapped = static_cast<U64>(objectSize);
      // An empty region cannot be mapped; the header check reports it.
      if (mapped >= headerSize) {
         mapping->region = bip::mapped_region(mapping->shm, bip::read_only);
         mapped = mapping->region.get_size();
      }
   } catch (bip::interprocess_exception const& e) {
      throw StoreError(segmentText(name) + " cannot be opened: " + e.what());
   }
   U64 const size = checkedSegmentSize(name, mapping->region.get_address(), mapped);
   return StoreManager(std::move(mapping), size);
}

StoreManager StoreManager::openMappedFile(std::string const& path) {
   auto mapping = std::make_unique<Mapping>();
   mapping->name = path;
   U64 mapped = 0;
   try {
      mapped = std::filesystem::file_size(path);
      if (mapped >= headerSize) {
         mapping->file = bip::file_mapping(path.c_str(), bip::read_only);
         mapping->descriptor = mapping->file.get_mapping_handle().handle;
         mapping->region = bip::mapped_region(mapping->file, bip::read_only);
         mapped = mapping->region.get_size();
      }
   } catch (std::exception const& e) {
      throw StoreError(segmentText(path) + " cannot be opened: " + e.what());
   }
   U64 const size = checkedSegmentSize(path, mapping->region.get_address(), mapped);
   return StoreManager(std::move(mapping), size);
}

StoreManager::StoreManager(std::unique_ptr<Mapping> mapping, U64 size)
    : mapping_(std::move(mapping)),
      base_(static_cast<std::byte const*>(mapping_->region.get_address())),
      header_(reinterpret_cast<SegmentHeader const*>(base_)), size_(size), dataBegin_(headerSize) {}

StoreManager::StoreManager(StoreManager&&) noexcept = default;
StoreManager& StoreManager::operator=(StoreManager&&) noexcept = default;
StoreManager::~StoreManager() = default;

Location StoreManager::root() const noexcept {
   return Location(header_->root.load(std::memory_order_acquire));
}

void StoreManager::checkIntact() const {
   struct stat status {};
   if (fstat(mapping_->descriptor, &status) != 0) {
      throw StoreError(segmentText(mapping_->name) + " cannot be checked: " +
                       std::error_code(errno, std::generic_category()).message());
   }
   if (static_cast<U64>(status.st_size) < size_) {
      throw StoreError(segmentText(mapping_->name) + " shrank to " +
                       std::to_string(status.st_size) + " bytes below its " +
                       std::to_string(size_) + "-byte size after it was opened");
   }
}

U64 StoreManager::versionAnchor() const noexcept {
   return header_->sequence.load(std::memory_order_acquire);
}

// Seqlock reader: the record reads must complete before the anchor is read
// again.
void const* StoreManager::find(Location at, U64 count, U64 size, U64 alignment) const noexcept {
   return fits(at.offset(), count, size, alignment, dataBegin_, size_) ? base_ + at.offset()
                                                                       : nullptr;
}

bool StoreManager::versionAnchorUnchanged(U64 anchor) const noexcept {
   std::atomic_thread_fence(std::memory_order_acquire);
   return anchor % 2 == 0 && header_->sequence.load(std::memory_order_relaxed) == anchor;
}

void StoreManager::throwBadLocation(Location at, U64 count, U64 size, U64 alignment) const {
   std::string const where = "hoard location " + std::to_string(at.offset());
   std::string const segment =
      " of the " + std::to_string(size_) + "-byte " + segmentText(mapping_->name);
   if (at.isNull()) {
      throw Kiv::RangeError(where + " is null");
   }
   if (at.offset() < dataBegin_) {
      throw Kiv::RangeError(where + " lies in the header" + segment);
   }
   if (at.offset() < size_ && at.offset() % alignment != 0) {
      throw Kiv::RangeError(where + " is not aligned to " + std::to_string(alignment) + " bytes");
   }
   throw Kiv::RangeError(where + " with " + std::to_string(count) + " x " + std::to_string(size) +
                         " bytes reaches beyond the end" + segment);
}

} // namespace hoard
