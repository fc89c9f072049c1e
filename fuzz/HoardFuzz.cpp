// Restoring values and lists from snapshot-store segments of arbitrary bytes.
//
// Input:
//   byte 0        options: 0x01 keep the header as given (otherwise its magic
//                 number, format version and sizes are made valid, so that
//                 the records get read); 0x02 keep the version anchor as
//                 given (otherwise it is made even, no change in progress)
//   byte 1        restores to run, 1 + (byte % 8)
//   per restore   a kind byte and an 8-byte location (host order); the low
//                 seven bits of the kind, modulo 5, pick standard, large,
//                 extended or IPv6 list, or one extended community; its bit
//                 0x80 takes the header's root location instead
//   the rest      the segment, mapped from a file
// Missing bytes read as zero.
//
// StoreError (a segment that does not open) and Kiv::RangeError (a location
// outside it) are the documented outcomes of bad segments; a null result is
// a changed or unusable record. Anything else fails the run.
#include "QorBgpCommunity/QorBgp/ExtCommIp6List.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityList.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListHoard.h"
#include "fuzz/FuzzSupport.h"
#include "QorBgpCommunity/platform/Hoard.h"

#include <algorithm>
#include <cstring>
#include <vector>

using namespace Routing::Bgp;

namespace {

// The header as the store writes it (see Hoard.cpp): magic, format version,
// header size, segment size, version anchor (then the root location).
constexpr std::size_t headerSize = 64;
constexpr U64 magicNumber = 0x514f52484f415244;
constexpr U32 formatVersion = 1;
constexpr std::size_t anchorOffset = 24;

constexpr U8 keepHeader = 0x01;
constexpr U8 keepAnchor = 0x02;
constexpr U8 fromRoot = 0x80;
// The longest lists the attribute encoders take (65535 value bytes).
constexpr U32 maxSerializableCommunities = 16383;
constexpr U32 maxSerializableLargeCommunities = 5461;
constexpr U32 maxSerializableExtCommunities = 8191;
constexpr U32 maxSerializableIp6Communities = 3276;

template <class T>
void put(std::vector<U8>& bytes, std::size_t at, T value) {
   std::memcpy(bytes.data() + at, &value, sizeof value);
}

// Copies `size` bytes from the input, zeros past its end.
class Reader {
 public:
   Reader(U8 const* data, std::size_t size) : data_(data), size_(size) {}
   void read(void* out, std::size_t size) {
      std::size_t const have = std::min(size, size_ - at_);
      std::memcpy(out, data_ + at_, have);
      std::memset(static_cast<U8*>(out) + have, 0, size - have);
      at_ += have;
   }
   U8 byte() {
      U8 b;
      read(&b, 1);
      return b;
   }
   std::vector<U8> rest() { return {data_ + at_, data_ + size_}; }

 private:
   U8 const* data_;
   std::size_t size_;
   std::size_t at_ = 0;
};

void restore(U8 kind, void const* location, hoard::StoreManager& store) {
   switch ((kind & ~fromRoot) % 5) {
   case 0:
      if (CommList::PtrConst list = CommList::dehoard(location, &store)) {
         (void)list->toStrep();
         if (list->commVectorSorted() && list->comms() <= maxSerializableCommunities) {
            (void)list->serialize();
            (void)list->noExport();
         }
      }
      return;
   case 1:
      if (LargeCommList::PtrConst list = LargeCommList::dehoard(location, &store)) {
         (void)list->toStrep();
         if (list->commVectorSorted() && list->comms() <= maxSerializableLargeCommunities) {
            (void)list->serialize();
         }
      }
      return;
   case 2:
      if (ExtCommList::PtrConst list = ExtCommList::dehoard(location, &store)) {
         QORBGP_FUZZ_CHECK(list->commVectorSorted());
         (void)list->toStrep();
         if (list->comms() <= maxSerializableExtCommunities) {
            (void)list->serialize(ExtCommList::serialization(true, true, true));
         }
         (void)list->commSnapshot();
      }
      return;
   case 3:
      if (ExtCommIp6List::PtrConst list = ExtCommIp6List::dehoard(location, &store)) {
         (void)list->toStrep();
         (void)list->commsStringForm();
         if (list->commVectorSorted() && list->comms() <= maxSerializableIp6Communities) {
            (void)list->serialize(true);
         }
      }
      return;
   case 4:
      if (ExtComm::PtrConst comm = ExtComm::dehoard(location, &store)) {
         (void)comm->toStrep();
         (void)comm->toStrepForUI(false, false, false);
      }
      return;
   }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(U8 const* data, std::size_t size) {
   static QorBgpFuzz::MemoryFile file;

   Reader input(data, size);
   U8 const options = input.byte();
   std::size_t const restores = 1 + input.byte() % 8;
   std::vector<U8> kinds(restores);
   std::vector<U8> locations(restores * sizeof(U64));
   for (std::size_t i = 0; i < restores; ++i) {
      kinds[i] = input.byte();
      input.read(&locations[i * sizeof(U64)], sizeof(U64));
   }
   std::vector<U8> segment = input.rest();
   if ((options & keepHeader) == 0) {
      segment.resize(std::max(segment.size(), headerSize));
      put(segment, 0, magicNumber);
      put(segment, 8, formatVersion);
      put(segment, 12, static_cast<U32>(headerSize));
      put(segment, 16, static_cast<U64>(segment.size()));
   }
   if ((options & keepAnchor) == 0 && segment.size() >= headerSize) {
      segment[anchorOffset] &= 0xFE;
   }

   try {
      hoard::StoreManager store = hoard::StoreManager::openMappedFile(file.contentIs(segment));
      U64 const root = store.root().offset();
      for (std::size_t i = 0; i < restores; ++i) {
         void const* location = (kinds[i] & fromRoot) != 0
                                   ? static_cast<void const*>(&root)
                                   : static_cast<void const*>(&locations[i * sizeof(U64)]);
         try {
            restore(kinds[i], location, store);
         } catch (Kiv::RangeError const&) {
         }
      }
   } catch (hoard::StoreError const&) {
   }
   return 0;
}
