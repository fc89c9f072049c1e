// Streaming reader of MRT routing data dumps: RIB snapshots (TABLE_DUMP,
// TABLE_DUMP_V2 with its ADD-PATH subtypes) and BGP message logs (BGP4MP,
// BGP4MP_ET), from plain, gzip, bzip2, xz or zstd files or pipes. It turns them into one Path per
// announced (prefix, peer) pair with that path's BGP attributes, undecoded, so
// that callers pick the attributes they care about.
//
//   std::string error;
//   auto reader = MrtReader::open("updates.20190101.0000.gz", &error);
//   if (!reader) { fail(error); }
//   Path path;
//   while (reader->next(path)) {
//      if (auto const* communities = path.attribute(8)) { use(path.route, communities->value); }
//   }
//   for (auto const& problem : reader->report().problems) { warn(problem.offset, problem.text); }
#pragma once

#include "QorBgpCommunity/platform/Types.h"
#include "tools/mrt/MrtWire.h"

#include <array>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace QorBgpTools::mrt {

enum class Compression { none, gzip, bzip2, xz, zstd };

// One BGP path attribute as written to a file (see MrtWriter) or built by
// hand. `flags` keeps the extended-length bit (0x10) as it was; `value`
// excludes the header.
struct Attribute {
   U8 flags = 0;
   U8 typeCode = 0;
   std::vector<U8> value;

   friend bool operator==(Attribute const&, Attribute const&) = default;
};

// One BGP path attribute as the reader hands it out: `value` points into the
// record it was read from, which the Attributes holding it keep alive.
struct AttributeView {
   U8 flags = 0;
   U8 typeCode = 0;
   std::span<const U8> value;
};

// The attributes of a path in wire order, repeats kept: views into an
// immutable block shared by copies, so that the paths of one BGP message
// (one block for all the prefixes it announces) hold their attributes once,
// however many there are, and reading copies no attribute. Compares by
// content.
class Attributes {
 public:
   Attributes() = default;
   // A block of its own holding copies of `list` (for paths built by hand).
   Attributes(std::vector<Attribute> const& list); // NOLINT: a list is a block
   Attributes(std::initializer_list<Attribute> list) : Attributes(std::vector<Attribute>(list)) {}
   // Views that `owner` keeps valid.
   Attributes(std::shared_ptr<void const> owner, std::span<const AttributeView> list)
       : owner_(std::move(owner)), list_(list) {}

   std::span<const AttributeView> list() const { return list_; }
   auto begin() const { return list_.begin(); }
   auto end() const { return list_.end(); }
   std::size_t size() const { return list_.size(); }
   AttributeView const& operator[](std::size_t i) const { return list_[i]; }
   // Whether both are the very same views (the same message), not only equal.
   bool sameBlock(Attributes const& other) const {
      return list_.data() == other.list_.data() && list_.size() == other.list_.size() &&
             owner_ == other.owner_;
   }

   friend bool operator==(Attributes const& a, Attributes const& b);

 private:
   std::shared_ptr<void const> owner_; // keeps what list_ and its values point to
   std::span<const AttributeView> list_;
};

// The route a path is for, kept in wire form and turned into text only when
// printed. Trivially cheap to copy except for EVPN and flowspec routes.
struct Route {
   detail::Prefix prefix; // the IP prefix; unused for EVPN and flowspec routes
   // Set for VPN routes: the route distinguisher in front of the prefix.
   std::optional<std::array<U8, 8>> distinguisher;
   // EVPN, flowspec and route-target constraint routes, given by their NLRI
   // in hex (rare enough to format when read): "evpn:<route type>:<hex of the
   // route>", "flowspec:<hex of the components>", "rtc:<hex of the length
   // octet and the membership>". Empty for IP routes.
   std::string structured;

   // "192.0.2.0/24", "2001:db8::/32"; VPN routes with their route
   // distinguisher in front: "65000:1:10.0.0.0/8", "192.0.2.1:5:10.0.0.0/8";
   // else `structured`.
   std::string text() const;
   // The IP prefix of a plain or labeled route; nullopt for VPN, EVPN and
   // flowspec routes.
   std::optional<detail::Prefix> ipPrefix() const;

   friend bool operator==(Route const&, Route const&) = default;
};

// A route to one prefix as one peer announced or held it.
struct Path {
   // Seconds since 1970: the route's originated time for RIB entries, the
   // record's time for BGP4MP messages.
   U32 timestamp = 0;
   detail::Address peerAddress; // text: peerText()
   U32 peerAs = 0;
   Route route;               // text: route.text()
   std::optional<U32> pathId; // set for ADD-PATH records only
   Attributes attributes;
   // The MRT record's type: 12 TABLE_DUMP, 13 TABLE_DUMP_V2, 16 BGP4MP, 17 BGP4MP_ET.
   U16 recordType = 13;
   // The route's address family: AFI 1 IPv4, 2 IPv6, 25 L2VPN; SAFI 1
   // unicast, 2 multicast, 4 labeled, 70 EVPN, 128 VPN, 129 VPN multicast,
   // 132 route-target constraint, 133 flowspec, 134 VPN flowspec.
   U16 afi = 1;
   U8 safi = 1;
   // Whether AS_PATH holds 4-octet AS numbers; 2-octet ones come from
   // TABLE_DUMP and from BGP4MP messages of 2-octet sessions (which may add
   // an AS4_PATH).
   bool fourOctetAs = true;

   // "192.0.2.1", "2001:db8::1".
   std::string peerText() const;
   // The first attribute of that type, or nullptr.
   AttributeView const* attribute(U8 typeCode) const;

   friend bool operator==(Path const&, Path const&) = default;
};

// "ipv4 unicast", "ipv6 vpn", "evpn", "ipv4 flowspec", ...; "afi 3 safi 1"
// for a family without a name here.
std::string familyName(U16 afi, U8 safi);
// "TABLE_DUMP", "TABLE_DUMP_V2", "BGP4MP", "BGP4MP_ET"; "type 11" otherwise.
std::string recordTypeName(U16 type);

// Something wrong in the input, at `offset` bytes into the decompressed MRT
// stream (the start of the record concerned).
struct Problem {
   U64 offset = 0;
   std::string text;
};

inline constexpr std::size_t kMaxProblemsKept = 100;

struct Report {
   U64 records = 0; // records whose header was complete
   U64 paths = 0;   // paths handed out by next()
   // Records dropped as damaged: truncated, or with fields that contradict
   // each other. Each one also has a Problem (while fewer than
   // kMaxProblemsKept are kept).
   U64 skippedRecords = 0;
   // Well-formed records that carry no announcement: state changes, OPENs,
   // KEEPALIVEs, withdrawal-only UPDATEs, address families or record types
   // not decoded here. Peer index tables count as neither skipped nor ignored.
   U64 ignoredRecords = 0;
   // Bytes passed over after a damaged record header (an unknown type, a
   // length over the limit) to the next plausible record: a header of a type
   // read here whose record is followed by another such header or the end.
   U64 skippedBytes = 0;
   U64 bytesRead = 0;             // of the decompressed MRT stream
   std::vector<Problem> problems; // the first kMaxProblemsKept, in file order
};

// One record as read, for rewriting a dump record by record: its header
// fields, its body, the paths it announces and where each path's attribute
// block lies in the body. Valid until the reader's next call.
struct RecordView {
   // Where an attribute block lies in the body; the two octets before it
   // hold its length.
   struct Block {
      std::size_t offset = 0;
      std::size_t size = 0;
   };
   U64 offset = 0; // of the record header in the decompressed stream
   U32 timestamp = 0;
   U16 type = 0;
   U16 subtype = 0;
   std::span<const U8> body{};
   std::span<const Path> paths{}; // none for ignored and damaged records
   // Per path, the index of its block in `blocks` (the paths of one BGP
   // message share one).
   std::span<const std::size_t> blockOfPath{};
   std::span<const Block> blocks{};
   // For a BGP4MP message: where in the body the BGP message's length field is.
   std::optional<std::size_t> messageLengthAt{};
};

// Reads one MRT file front to back, holding one record at a time (records
// over 64 MiB are taken for damage). Owns the open file; movable through
// its unique_ptr only; not thread-safe.
//
// Bad data never throws and never stops the reader while records can still be
// framed: a damaged record is reported and skipped as a whole (none of its
// paths are returned), and reading resumes after it using the record's
// length field; a damaged header (unknown type, length over the limit) is
// skipped byte by byte to the next plausible record (see skippedBytes).
// Reading ends at the end of the data, at a record header cut off by it, or
// where the compressed stream is damaged; the last two are reported as
// problems too.
//
// NOTE: some routers log ADD-PATH sessions under the plain BGP4MP message
// subtypes; an NLRI block that does not decode plainly is decoded with path
// identifiers when that works.
//
// NOTE: RIB_GENERIC_ADDPATH is read with the path identifier inside the
// NLRI, as the MRT ADD-PATH extension defines it; some routers write it into
// each RIB entry instead, which reads as damaged records here.
class MrtReader {
 public:
   // Opens `path` ("-": standard input), choosing the decompression from the
   // first bytes (gzip 1f 8b, bzip2 "BZh", xz fd "7zXZ" 00, zstd 28 b5 2f fd,
   // anything else plain); the input is never sought, so pipes work. On
   // failure returns nullptr and sets `*error` (e.g. `cannot open "x.mrt": No
   // such file or directory`, or a compression format not read here).
   //
   // Data whose first record header names no MRT record type is not read on:
   // its one problem says "not an MRT file".
   static std::unique_ptr<MrtReader> open(std::string const& path, std::string* error);
   ~MrtReader();
   MrtReader(MrtReader const&) = delete;
   MrtReader& operator=(MrtReader const&) = delete;

   // Stores the next path into `path` and returns true; false at the end of
   // the input (and on every call after it), leaving `path` unchanged.
   [[nodiscard]] bool next(Path& path);

   // Reads the next whole record into `record` and returns true; false at
   // the end of the input. Paths of the current record that next() has not
   // handed out yet are skipped: use one of the two for a whole file. Bytes skipped after a damaged header belong to
   // no record; report() counts them.
   [[nodiscard]] bool nextRecord(RecordView& record);

   // Reads the rest of the input without decoding it (to time the
   // decompression alone); returns the bytes read. A damaged or cut-off
   // compressed stream ends it as it ends next(), with its problem reported.
   U64 drain();

   Report const& report() const;
   Compression compression() const;
   // Bytes of the file itself consumed so far, to compare with fileSize()
   // for a progress display; it may run ahead of the paths by a read buffer.
   U64 bytesConsumed() const;
   U64 fileSize() const;

 private:
   class Impl;
   explicit MrtReader(std::unique_ptr<Impl> impl);
   std::unique_ptr<Impl> impl_;
};

} // namespace QorBgpTools::mrt
