// Writer of MRT files, plain or compressed: TABLE_DUMP_V2 peer tables and
// IPv4/IPv6 unicast RIB records (ADD-PATH ones when path identifiers are
// given), BGP4MP and BGP4MP_ET UPDATE messages, and raw records and bytes for
// building damaged files. Used by the tool's synthetic data and by tests.
//
//   std::string error;
//   auto writer = MrtWriter::create("rib.bz2", Compression::bzip2, &error);
//   Peer peers[] = {{0xc0000201, "192.0.2.1", 64500}};
//   writer->peerIndexTable(now, 0x0a000001, "main", peers);
//   RibEntry entries[] = {{0, now, std::nullopt, {{0x40, 1, {0}}, {0xc0, 8, communities}}}};
//   writer->ribEntry(now, 0, "198.51.100.0/24", entries);
//   if (!writer->close(&error)) { fail(error); }
#pragma once

#include "tools/mrt/MrtReader.h"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace QorBgpTools::mrt {

namespace detail {
class OutputFile;
}

// A PEER_INDEX_TABLE entry. The address family follows `address`; the AS is
// written in 4 octets when it does not fit in 2.
struct Peer {
   U32 bgpId = 0;
   std::string address;
   U32 as = 0;
};

struct RibEntry {
   U16 peerIndex = 0;
   U32 originatedTime = 0;
   std::optional<U32> pathId;
   std::vector<Attribute> attributes;
};

// One BGP UPDATE in a BGP4MP or BGP4MP_ET record. The peer and local
// addresses must be of the same family.
struct Bgp4mpUpdate {
   U32 timestamp = 0;
   U32 microseconds = 0; // written with extendedTimestamp only
   U32 peerAs = 0;
   U32 localAs = 0;
   std::string peerAddress{};
   std::string localAddress{};
   bool as4 = true;                // MESSAGE_AS4 rather than MESSAGE
   bool extendedTimestamp = false; // BGP4MP_ET rather than BGP4MP
   std::optional<U32> pathId{};    // an ADD-PATH subtype, this identifier on every route
   std::vector<Attribute> attributes{};
   // IPv4 prefixes go into the UPDATE's NLRI field; IPv6 ones into an
   // MP_REACH_NLRI attribute (next hop: the peer address when IPv6, else ::)
   // appended after `attributes`.
   std::vector<std::string> prefixes{};
   std::vector<std::string> withdrawn{}; // IPv4 only
};

// Appends path attributes in wire form. A value over 255 bytes gets the
// extended-length flag and a 2-octet length; a shorter one keeps the flags
// as given. Throws Kiv::RangeError for a value over 65535 bytes.
void appendAttributes(std::vector<U8>& out, std::span<const Attribute> attributes);

// Appends a prefix ("192.0.2.0/24") in NLRI form: a length octet and the
// octets that hold it. Throws Kiv::RangeError for a malformed prefix.
void appendPrefix(std::vector<U8>& out, std::string_view prefix);

// The compression a file name asks for: gzip for ".gz", bzip2 ".bz2", xz
// ".xz", zstd ".zst", else none.
Compression compressionForName(std::string_view file);

// The body of `record` with each attribute block i for which `replacement[i]`
// is set replaced by it, the length fields that count it (the block's own, a
// BGP4MP message's) adjusted. Throws Kiv::RangeError when a length no longer
// fits its field (65535 octets), and for a replacement count other than the
// record's block count.
std::vector<U8> replaceAttributeBlocks(RecordView const& record,
                                       std::span<const std::optional<std::vector<U8>>> replacement);

// Writes one MRT file front to back. Owns the open file; not copyable; not
// thread-safe.
//
// Caller mistakes (malformed prefix or address text, mixed families, a count
// or length that does not fit its field) throw Kiv::RangeError and write
// nothing. Write failures are sticky and reported by close().
class MrtWriter {
 public:
   // nullptr with `*error` set when the file cannot be created.
   static std::unique_ptr<MrtWriter> create(std::string const& path, Compression compression,
                                            std::string* error);
   // Closes the file if close() was not called, dropping any error.
   ~MrtWriter();
   MrtWriter(MrtWriter const&) = delete;
   MrtWriter& operator=(MrtWriter const&) = delete;

   void peerIndexTable(U32 timestamp, U32 collectorId, std::string_view viewName,
                       std::span<const Peer> peers);
   // RIB_IPV4_UNICAST or RIB_IPV6_UNICAST after the prefix's family, or their
   // ADD-PATH subtypes when the entries carry path identifiers (all or none).
   void ribEntry(U32 timestamp, U32 sequence, std::string_view prefix,
                 std::span<const RibEntry> entries);
   void bgp4mpUpdate(Bgp4mpUpdate const& update);
   // A record with this header and body; the length field is the body's size.
   void record(U32 timestamp, U16 type, U16 subtype, std::span<const U8> body);
   // Bytes as they are, e.g. a header whose length promises more than follows.
   void raw(std::span<const U8> bytes);

   // Bytes written so far before compression: the offset the next record
   // will have in the MRT stream.
   U64 offset() const { return offset_; }

   // Flushes and closes; false with `*error` set when any write failed.
   // Calls after a successful close do nothing and return true.
   [[nodiscard]] bool close(std::string* error);

 private:
   explicit MrtWriter(std::unique_ptr<detail::OutputFile> file);
   void write(std::span<const U8> bytes);
   std::unique_ptr<detail::OutputFile> file_;
   std::vector<U8> buffer_; // the record being built, reused
   U64 offset_ = 0;
};

} // namespace QorBgpTools::mrt
