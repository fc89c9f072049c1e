// Restoring values and lists from snapshot-store segments of arbitrary bytes,
// segments that may shrink after they were opened, and every reader of what
// comes back, whatever the stored flags said.
//
// Input:
//   byte 0        options: 0x01 keep the header as given (otherwise its magic
//                 number, format version and sizes are made valid, so that
//                 the records get read); 0x02 keep the version anchor as
//                 given (otherwise it is made even, no change in progress);
//                 0x04 cut the segment after opening it
//   byte 1        restores to run, 1 + (byte % 8)
//   per restore   a kind byte and an 8-byte location (host order); the low
//                 seven bits of the kind, modulo 5, pick standard, large,
//                 extended or IPv6 list, or one extended community; its bit
//                 0x80 takes the header's root location instead
//   with 0x04     a 4-byte count (host order): that many bytes, modulo the
//                 segment's length plus one, are cut off its end once it is
//                 open
//   the rest      the segment, mapped from a file
// Missing bytes read as zero.
//
// StoreError (a segment that does not open, or was cut since) and
// Kiv::RangeError (a location outside it) are the documented outcomes of bad
// segments; a null result is a changed or unusable record. Anything else,
// and any reader that aborts or contradicts the list's elements, fails the
// run.
#include "QorBgpCommunity/QorBgp/ExtCommIp6List.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityList.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListHoard.h"
#include "QorBgpCommunity/platform/Hoard.h"
#include "QorBgpCommunity/platform/PosixRegex.h"
#include "fuzz/FuzzSupport.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <sstream>
#include <vector>

using namespace Routing::Bgp;
using Routing::RouteMap::PosixRegex;

namespace {

// The header as the store writes it (see Hoard.cpp): magic, format version,
// header size, segment size, version anchor (then the root location).
constexpr std::size_t headerSize = 64;
constexpr U64 magicNumber = 0x514f52484f415244;
constexpr U32 formatVersion = 1;
constexpr std::size_t anchorOffset = 24;

constexpr U8 keepHeader = 0x01;
constexpr U8 keepAnchor = 0x02;
constexpr U8 cutAfterOpening = 0x04;
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

// Expressions that match texts of every list kind, and some that match none.
std::vector<PosixRegex::PtrConst> const& regexes() {
   static std::vector<PosixRegex::PtrConst> const compiled = [] {
      std::vector<PosixRegex::PtrConst> all;
      for (char const* pattern : {"^$", "no-export", "^[0-9]+:[0-9]+( |$)", "RT:", "::1"}) {
         auto c = PosixRegex::compile(pattern);
         QORBGP_FUZZ_CHECK(c);
         all.push_back(c.regex);
      }
      return all;
   }();
   return compiled;
}

template <class Vector, class Less>
bool strictlyAscending(Vector const& values, Less less) {
   return std::adjacent_find(values.begin(), values.end(), [&](auto const& a, auto const& b) {
             return !less(a, b);
          }) == values.end();
}

template <class List>
void readLists(List const& list) {
   for (PosixRegex::PtrConst const& regex : regexes()) {
      (void)list.matchCommunitiesRegex(regex.get());
   }
   (void)list.toStrep();
   (void)list.commSnapshot();
   QORBGP_FUZZ_CHECK(list.compare(&list));
   (void)list.hash();
}

void readStandard(CommList const& list) {
   std::vector<U32> const& values = *list.commVectorRawPtr();
   if (values.empty()) {
      return; // restored as it was hoarded, possibly while being built (unsorted)
   }
   QORBGP_FUZZ_CHECK(list.commVectorSorted());
   QORBGP_FUZZ_CHECK(strictlyAscending(values, std::less<U32>()));
   for (U32 value : values) {
      QORBGP_FUZZ_CHECK(list.comm(value));
   }
   auto const holds = [&](U32 value) {
      return std::find(values.begin(), values.end(), value) != values.end();
   };
   QORBGP_FUZZ_CHECK(list.noExport() == holds(communityNoExport));
   QORBGP_FUZZ_CHECK(list.noAdvertise() == holds(communityNoAdvertise));
   QORBGP_FUZZ_CHECK(list.noExportSubconfed() == holds(communityNoExportSubconfed));
   if (list.comms() <= maxSerializableCommunities) {
      std::string const wire = list.serialize();
      std::span<U8 const> const value = QorBgpFuzz::attributeValue(wire);
      QORBGP_FUZZ_CHECK(value.size() == 4 * values.size());
      for (std::size_t i = 0; i < values.size(); ++i) {
         U32 const word = U32{value[4 * i]} << 24 | U32{value[4 * i + 1]} << 16 |
                          U32{value[4 * i + 2]} << 8 | value[4 * i + 3];
         QORBGP_FUZZ_CHECK(word == values[i]);
      }
   }
   readLists(list);
}

void readLarge(LargeCommList const& list) {
   auto const& values = *list.commVectorRawPtr();
   if (values.empty()) {
      return; // as for standard lists
   }
   QORBGP_FUZZ_CHECK(list.commVectorSorted());
   QORBGP_FUZZ_CHECK(strictlyAscending(values, std::less<Acl::CommunityValue>()));
   for (Acl::CommunityValue const& value : values) {
      QORBGP_FUZZ_CHECK(list.comm(value));
   }
   if (list.comms() <= maxSerializableLargeCommunities) {
      QORBGP_FUZZ_CHECK(QorBgpFuzz::attributeValue(list.serialize()).size() == 12 * values.size());
   }
   readLists(list);
}

void readExtended(ExtCommList const& list) {
   auto const& values = *list.commVectorRawPtr();
   QORBGP_FUZZ_CHECK(list.commVectorSorted());
   QORBGP_FUZZ_CHECK(strictlyAscending(
      values, [](auto const& a, auto const& b) { return a->community() < b->community(); }));
   QORBGP_FUZZ_CHECK(list.totalCommunities() == values.size());
   for (ExtComm::PtrConst const& value : values) {
      QORBGP_FUZZ_CHECK(list.comm(value->community()) == value);
      auto const byClass = list.classificationList(value->classification());
      QORBGP_FUZZ_CHECK(byClass && byClass->comm(value->community()) == value);
   }
   for (U32 c = 0; c <= extCommClassificationOneBeyondLast; ++c) {
      if (auto const byClass = list.classificationList(static_cast<ExtCommClassification>(c))) {
         QORBGP_FUZZ_CHECK(static_cast<U32>(byClass->classification()) == c &&
                           byClass->compare(byClass.get()));
         (void)byClass->hash();
         (void)byClass->commSnapshot();
      }
   }
   if (list.comms() <= maxSerializableExtCommunities) {
      for (bool nonTransitive : {false, true}) {
         for (bool bandwidth : {false, true}) {
            (void)list.serialize(ExtCommList::serialization(nonTransitive, bandwidth, !bandwidth));
         }
      }
      QORBGP_FUZZ_CHECK(
         QorBgpFuzz::attributeValue(list.serialize(ExtCommList::serialization(true, true, true)))
            .size() == 8 * values.size());
   }
   readLists(list);
}

void readIp6(ExtCommIp6List const& list) {
   auto const& values = *list.commVectorRawPtr();
   QORBGP_FUZZ_CHECK(list.commVectorSorted());
   QORBGP_FUZZ_CHECK(strictlyAscending(
      values, [](auto const& a, auto const& b) { return a->community() < b->community(); }));
   QORBGP_FUZZ_CHECK(list.totalCommunities() == values.size());
   for (ExtCommIp6::PtrConst const& value : values) {
      QORBGP_FUZZ_CHECK(list.comm(value->community()) == value);
   }
   for (U32 c = 0; c <= extCommClassificationOneBeyondLast; ++c) {
      (void)list.classificationList(static_cast<ExtCommClassification>(c));
   }
   if (list.comms() <= maxSerializableIp6Communities) {
      (void)list.serialize(false);
      QORBGP_FUZZ_CHECK(QorBgpFuzz::attributeValue(list.serialize(true)).size() ==
                        20 * values.size());
   }
   (void)list.commsStringForm();
   (void)list.toStrep();
   (void)list.commSnapshot();
   QORBGP_FUZZ_CHECK(list.compare(&list));
   (void)list.hash();
}

void readValue(ExtComm const& comm) {
   (void)comm.toStrep();
   for (U32 format = 0; format <= ExtComm::StrepFormat::allFlags; ++format) {
      (void)comm.toStrepForPolicy(ExtComm::StrepFormat(format));
   }
   (void)comm.toStrepForUI(false, false, false);
   (void)comm.toStrepForUI(true, true, true);
   std::ostringstream os;
   comm.formatSubtype(os);
   comm.formatCommunityValue(os);
   (void)comm.pktType();
   (void)comm.pktSubtype();
   (void)comm.policyMatchStrepUI();
   (void)comm.isValid();
   (void)comm.isLinkBandwidthWithUnspecifiedAsNumber();
   QORBGP_FUZZ_CHECK(comm.compare(&comm));
   (void)comm.hash();
}

void restore(U8 kind, void const* location, hoard::StoreManager& store) {
   switch ((kind & ~fromRoot) % 5) {
   case 0:
      if (CommList::PtrConst list = CommList::dehoard(location, &store)) {
         readStandard(*list);
      }
      return;
   case 1:
      if (LargeCommList::PtrConst list = LargeCommList::dehoard(location, &store)) {
         readLarge(*list);
      }
      return;
   case 2:
      if (ExtCommList::PtrConst list = ExtCommList::dehoard(location, &store)) {
         readExtended(*list);
      }
      return;
   case 3:
      if (ExtCommIp6List::PtrConst list = ExtCommIp6List::dehoard(location, &store)) {
         readIp6(*list);
      }
      return;
   case 4:
      if (ExtComm::PtrConst comm = ExtComm::dehoard(location, &store)) {
         readValue(*comm);
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
   U32 cut = 0;
   if ((options & cutAfterOpening) != 0) {
      input.read(&cut, sizeof cut);
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
      if ((options & cutAfterOpening) != 0) {
         file.lengthIs(segment.size() - cut % (segment.size() + 1));
      }
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
