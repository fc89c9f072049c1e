#include "tools/mrt/MrtReader.h"

#include "tools/mrt/MrtFile.h"
#include "tools/mrt/MrtWire.h"

#include <algorithm>
#include <array>
#include <span>

namespace QorBgpTools::mrt {

using detail::addressBytes;
using detail::cat;
using detail::Family;
using detail::SpanReader;

namespace {

// Longer records are taken for damage rather than buffered; the largest real
// RIB records (one prefix seen by every peer of a big collector) stay far below.
constexpr U32 kMaxRecordBytes = 64u << 20;
// The longest record the search for the next record after a damaged header
// accepts as a candidate (RIB records are far smaller).
constexpr U32 kMaxResyncRecordBytes = 16u << 20;
constexpr std::size_t kReadChunkBytes = 64 * 1024;
constexpr std::size_t kEtMicrosecondBytes = 4;
constexpr std::size_t kRouteDistinguisherBytes = 8;
constexpr unsigned kLabelBits = 24;
constexpr unsigned kRouteDistinguisherBits = 64;
constexpr U8 kBottomOfStack = 0x01; // in a label's third octet
constexpr unsigned kRouteTargetConstraintBits = 96;
// Record blocks kept for reuse once no path refers to them any more: the
// current record's, the one the caller's last path holds, and one that a
// caller caching the last decoded block holds.
constexpr std::size_t kPooledBlocks = 4;

enum class Outcome { used, ignored, damaged };

// How the NLRI of a SAFI encodes its route: a prefix (with labels and a
// route distinguisher in front for some), or a structure shown in hex.
enum class NlriForm { plain, labeled, vpn, evpn, flowspec, routeTargetConstraint };

std::optional<Family> familyOfAfi(U16 afi) {
   if (afi == detail::kAfiIpv4) {
      return Family::ipv4;
   }
   if (afi == detail::kAfiIpv6) {
      return Family::ipv6;
   }
   return std::nullopt;
}

std::optional<NlriForm> nlriForm(U8 safi) {
   switch (safi) {
   case detail::kSafiFlowspec:
   case detail::kSafiFlowspecVpn:
      return NlriForm::flowspec;
   case detail::kSafiUnicast:
   case detail::kSafiMulticast:
      return NlriForm::plain;
   case detail::kSafiLabeled:
      return NlriForm::labeled;
   case detail::kSafiVpn:
   case detail::kSafiVpnMulticast:
      return NlriForm::vpn;
   case detail::kSafiRouteTargetConstraint:
      return NlriForm::routeTargetConstraint;
   default:
      return std::nullopt;
   }
}

// The address family and NLRI form of routes of (AFI, SAFI), when read here.
struct RouteKind {
   Family family; // of the prefix; unused for EVPN
   NlriForm form;
};
std::optional<RouteKind> routeKind(U16 afi, U8 safi) {
   if (afi == detail::kAfiL2vpn && safi == detail::kSafiEvpn) {
      return RouteKind{Family::ipv4, NlriForm::evpn};
   }
   auto family = familyOfAfi(afi);
   auto form = nlriForm(safi);
   if (!family || !form) {
      return std::nullopt;
   }
   return RouteKind{*family, *form};
}

void appendHex(std::string& out, std::span<const U8> bytes) {
   constexpr char kHex[] = "0123456789abcdef";
   for (U8 octet : bytes) {
      out.push_back(kHex[octet >> 4]);
      out.push_back(kHex[octet & 0xf]);
   }
}

// "TABLE_DUMP_V2 subtype 2", "type 11 subtype 0", for problem texts.
std::string recordName(U16 type, U16 subtype) {
   switch (type) {
   case detail::kTableDump:
      return cat("TABLE_DUMP subtype ", subtype);
   case detail::kTableDumpV2:
      return cat("TABLE_DUMP_V2 subtype ", subtype);
   case detail::kBgp4mp:
      return cat("BGP4MP subtype ", subtype);
   case detail::kBgp4mpEt:
      return cat("BGP4MP_ET subtype ", subtype);
   default:
      return cat("type ", type, " subtype ", subtype);
   }
}

// Type 0 "as2:number", type 1 "ipv4:number", type 2 "as4:number"; any other
// type as its 16 hexadecimal digits.
void appendRouteDistinguisher(std::string& out, std::span<const U8> rd) {
   SpanReader r(rd);
   switch (r.u16()) {
   case 0: {
      U16 as = r.u16();
      out += cat(as, ":", r.u32());
      return;
   }
   case 1:
      detail::appendAddress(out, Family::ipv4, r.bytes(4));
      out += cat(":", r.u16());
      return;
   case 2: {
      U32 as = r.u32();
      out += cat(as, ":", r.u16());
      return;
   }
   default:
      out += "0x";
      appendHex(out, rd);
   }
}

// Splits a path attribute block into views appended to `out`. False, with
// `error` set, when an attribute's header or value runs past the block.
bool readAttributes(std::span<const U8> block, std::vector<AttributeView>& out,
                    std::string& error) {
   SpanReader r(block);
   while (r.remaining() > 0) {
      U8 flags = r.u8();
      U8 type = r.u8();
      std::size_t length = (flags & detail::kAttrExtendedLength) ? r.u16() : r.u8();
      auto value = r.bytes(length);
      if (!r.ok()) {
         error = cat("attribute type ", type, " length ", length, " runs past the ", block.size(),
                     "-byte attribute block");
         return false;
      }
      out.push_back({flags, type, value});
   }
   return true;
}

// Reads one NLRI: the path identifier when `addPath`, the length in bits,
// then labels and a route distinguisher as `form` has them, and the prefix,
// into `route`. False, with `error` set, when the NLRI runs past its data or
// its prefix is longer than the family allows.
bool readNlri(SpanReader& r, Family family, NlriForm form, bool addPath, Route& route,
              std::optional<U32>& pathId, std::string& error) {
   if (addPath) {
      pathId = r.u32();
   }
   if (form == NlriForm::evpn) {
      // Route type, length in octets, route.
      U8 type = r.u8();
      auto bytes = r.bytes(r.u8());
      if (!r.ok()) {
         error = "EVPN NLRI runs past its data";
         return false;
      }
      route.structured = cat("evpn:", type, ":");
      appendHex(route.structured, bytes);
      return true;
   }
   if (form == NlriForm::flowspec) {
      // Length in one octet, or in 12 bits when the first octet is 0xf0 or more.
      std::size_t length = r.u8();
      if (length >= 0xf0) {
         length = (length & 0x0f) << 8 | r.u8();
      }
      auto components = r.bytes(length);
      if (!r.ok()) {
         error = "flowspec NLRI runs past its data";
         return false;
      }
      route.structured = "flowspec:";
      appendHex(route.structured, components);
      return true;
   }
   unsigned bits = r.u8();
   SpanReader field(r.bytes((bits + 7) / 8));
   if (!r.ok()) {
      error = cat("NLRI of ", bits, " bits runs past its data");
      return false;
   }
   if (form == NlriForm::routeTargetConstraint) {
      // Origin AS and route-target prefix, up to 96 bits; the membership
      // itself is for the caller to decode.
      if (bits > kRouteTargetConstraintBits) {
         error = cat("route-target membership of ", bits, " bits, over 96");
         return false;
      }
      route.structured = "rtc:";
      appendHex(route.structured, std::array<U8, 1>{static_cast<U8>(bits)});
      appendHex(route.structured, field.rest());
      return true;
   }
   auto takeBits = [&bits](unsigned n) {
      if (bits < n) {
         return false;
      }
      bits -= n;
      return true;
   };
   if (form != NlriForm::plain) {
      bool bottom = false;
      while (!bottom) {
         if (!takeBits(kLabelBits)) {
            error = "label stack runs past the NLRI";
            return false;
         }
         auto label = field.bytes(kLabelBits / 8);
         bottom = label.size() == kLabelBits / 8 && (label[2] & kBottomOfStack) != 0;
      }
   }
   if (form == NlriForm::vpn) {
      if (!takeBits(kRouteDistinguisherBits)) {
         error = "route distinguisher runs past the NLRI";
         return false;
      }
      auto rd = field.bytes(kRouteDistinguisherBytes);
      std::copy(rd.begin(), rd.end(), route.distinguisher.emplace().begin());
   }
   if (bits > detail::maxPrefixLength(family)) {
      error = cat("prefix length ", bits, " over ", detail::maxPrefixLength(family));
      return false;
   }
   route.prefix = {{family, {}}, static_cast<U8>(bits)};
   auto octets = field.rest(); // whole octets taken before, so exactly ceil(bits / 8) left
   std::copy(octets.begin(), octets.end(), route.prefix.address.bytes.begin());
   return true;
}

} // namespace

std::string familyName(U16 afi, U8 safi) {
   if (afi == detail::kAfiL2vpn && safi == detail::kSafiEvpn) {
      return "evpn";
   }
   char const* family = afi == detail::kAfiIpv4   ? "ipv4"
                        : afi == detail::kAfiIpv6 ? "ipv6"
                                                  : nullptr;
   char const* kind = nullptr;
   switch (safi) {
   case detail::kSafiUnicast:
      kind = "unicast";
      break;
   case detail::kSafiMulticast:
      kind = "multicast";
      break;
   case detail::kSafiLabeled:
      kind = "labeled unicast";
      break;
   case detail::kSafiVpn:
      kind = "vpn";
      break;
   case detail::kSafiVpnMulticast:
      kind = "vpn multicast";
      break;
   case detail::kSafiFlowspec:
      kind = "flowspec";
      break;
   case detail::kSafiFlowspecVpn:
      kind = "vpn flowspec";
      break;
   case detail::kSafiRouteTargetConstraint:
      kind = "route-target constraint";
      break;
   default:
      break;
   }
   return family && kind ? cat(family, " ", kind) : cat("afi ", afi, " safi ", safi);
}

std::string recordTypeName(U16 type) {
   switch (type) {
   case detail::kTableDump:
      return "TABLE_DUMP";
   case detail::kTableDumpV2:
      return "TABLE_DUMP_V2";
   case detail::kBgp4mp:
      return "BGP4MP";
   case detail::kBgp4mpEt:
      return "BGP4MP_ET";
   default:
      return cat("type ", type);
   }
}

namespace detail {

// One record's bytes and the views into them that its paths hold: shared by
// those paths, reused by the reader once none is left.
struct RecordBlock {
   std::vector<U8> body;
   std::vector<AttributeView> views; // into `body`
};

} // namespace detail

Attributes::Attributes(std::vector<Attribute> const& list) {
   auto block = std::make_shared<detail::RecordBlock>();
   for (Attribute const& attribute : list) {
      detail::putBytes(block->body, attribute.value);
   }
   std::size_t at = 0;
   for (Attribute const& attribute : list) {
      block->views.push_back(
         {attribute.flags, attribute.typeCode,
          std::span<const U8>(block->body).subspan(at, attribute.value.size())});
      at += attribute.value.size();
   }
   list_ = block->views;
   owner_ = std::move(block);
}

bool operator==(Attributes const& a, Attributes const& b) {
   return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                     [](AttributeView const& x, AttributeView const& y) {
                        return x.flags == y.flags && x.typeCode == y.typeCode &&
                               std::ranges::equal(x.value, y.value);
                     });
}

std::string Route::text() const {
   if (!structured.empty()) {
      return structured;
   }
   std::string out;
   if (distinguisher) {
      appendRouteDistinguisher(out, *distinguisher);
      out.push_back(':');
   }
   detail::appendPrefix(out, prefix);
   return out;
}

std::optional<detail::Prefix> Route::ipPrefix() const {
   if (!structured.empty() || distinguisher) {
      return std::nullopt;
   }
   return prefix;
}

std::string Path::peerText() const {
   std::string out;
   detail::appendAddress(out, peerAddress.family, peerAddress.bytes);
   return out;
}

AttributeView const* Path::attribute(U8 typeCode) const {
   auto it = std::find_if(attributes.begin(), attributes.end(),
                          [typeCode](AttributeView const& a) { return a.typeCode == typeCode; });
   return it == attributes.end() ? nullptr : &*it;
}

class MrtReader::Impl {
 public:
   explicit Impl(std::unique_ptr<detail::InputFile> file) : file_(std::move(file)) {}

   bool next(Path& path);
   bool nextRecord(RecordView& record);
   U64 drain();

   Report report_;
   std::unique_ptr<detail::InputFile> file_;

 private:
   struct Peer {
      detail::Address address;
      U32 as = 0;
   };

   bool readRecord();
   // Reads up to `length` bytes into block_'s body; false when the data ends first.
   bool readBody(U32 length);
   // Fills `out` from the bytes looked ahead at, then from the file; a short
   // count means the end of the data.
   std::size_t read(std::span<U8> out);
   // Makes at least `n` bytes ahead available in lookAhead(); false when the
   // data ends first (lookAhead() then holds the rest).
   bool peek(std::size_t n);
   std::span<const U8> lookAhead() const { return std::span(ahead_).subspan(aheadPos_); }
   // After the header at `offset` (its bytes read) turned out damaged: finds
   // the next offset where a plausible header starts whose record is followed
   // by another plausible header or by the end of the data, and goes on
   // reading there. False when the data ends first.
   bool resync(U64 offset, std::span<const U8> header, std::string const& what);
   void end();
   void problem(U64 offset, std::string text);
   // A block no path refers to, emptied, for the next record.
   std::shared_ptr<detail::RecordBlock> freeBlock();
   // Gives each pending path its attributes: views into block_ by ranges_.
   void attachAttributes();
   // The attributes of the path about to be made pending: `block` split into
   // views appended to block_. False, with error_ set, when damaged.
   bool addAttributes(std::span<const U8> block) {
      blocks_.push_back(
         {static_cast<std::size_t>(block.data() - block_->body.data()), block.size()});
      std::size_t const first = block_->views.size();
      bool const ok = readAttributes(block, block_->views, error_);
      ranges_.emplace_back(first, block_->views.size() - first);
      return ok;
   }

   Outcome decode(U32 timestamp, U16 type, U16 subtype, SpanReader r);
   Outcome tableDump(U16 subtype, SpanReader r);
   Outcome peerIndexTable(SpanReader r);
   Outcome rib(U16 subtype, SpanReader r);
   Outcome bgp4mp(U32 timestamp, U16 subtype, SpanReader r);
   Outcome damaged(std::string text) {
      error_ = std::move(text);
      return Outcome::damaged;
   }
   Outcome trailing(SpanReader const& r) {
      return damaged(cat("trailing bytes after the last field: ", r.remaining()));
   }

   std::vector<Peer> peers_; // of the last PEER_INDEX_TABLE; empty after a damaged one
   std::vector<Path>
      pending_; // the current record's paths; those before nextPending_ are handed out
   std::size_t nextPending_ = 0;
   // Where each pending path's attributes are in block_->views (first, count);
   // one range may serve several paths, see attachAttributes().
   std::vector<std::pair<std::size_t, std::size_t>> ranges_;
   // The record's attribute blocks, one per range; the header fields and
   // offset of the record; where a BGP4MP message's length field is.
   std::vector<RecordView::Block> blocks_;
   std::vector<std::size_t> blockOfPath_;
   RecordView header_;
   std::optional<std::size_t> messageLengthAt_;
   std::shared_ptr<detail::RecordBlock> block_;             // the current record
   std::vector<std::shared_ptr<detail::RecordBlock>> pool_; // up to kPooledBlocks
   std::vector<U8> ahead_; // bytes read from the file and not yet taken, from aheadPos_
   std::size_t aheadPos_ = 0;
   std::string error_; // why the current record is damaged
   bool ended_ = false;
};

bool MrtReader::Impl::next(Path& path) {
   while (nextPending_ == pending_.size()) {
      if (!readRecord()) {
         return false;
      }
   }
   path = std::move(pending_[nextPending_++]);
   ++report_.paths;
   return true;
}

bool MrtReader::Impl::nextRecord(RecordView& record) {
   do {
      if (!readRecord()) {
         return false;
      }
   } while (!block_); // a damaged header was skipped: no record was framed
   report_.paths += pending_.size();
   nextPending_ = pending_.size();
   blockOfPath_.clear();
   for (std::size_t i = 0; i < pending_.size(); ++i) {
      blockOfPath_.push_back(std::min(i, blocks_.size() - 1));
   }
   record = header_;
   record.body = block_->body;
   record.paths = pending_;
   record.blockOfPath = blockOfPath_;
   record.blocks = blocks_;
   record.messageLengthAt = messageLengthAt_;
   return true;
}

U64 MrtReader::Impl::drain() {
   std::vector<U8> chunk(kReadChunkBytes);
   U64 const before = report_.bytesRead;
   while (!ended_) {
      std::size_t const got = read(chunk);
      report_.bytesRead += got;
      if (got < chunk.size()) {
         end();
      }
   }
   return report_.bytesRead - before;
}

void MrtReader::Impl::problem(U64 offset, std::string text) {
   if (report_.problems.size() < kMaxProblemsKept) {
      report_.problems.push_back({offset, std::move(text)});
   }
}

std::shared_ptr<detail::RecordBlock> MrtReader::Impl::freeBlock() {
   for (auto const& block : pool_) {
      if (block.use_count() == 1) {
         block->body.clear();
         block->views.clear();
         return block;
      }
   }
   auto block = std::make_shared<detail::RecordBlock>();
   if (pool_.size() < kPooledBlocks) {
      pool_.push_back(block);
   }
   return block;
}

void MrtReader::Impl::attachAttributes() {
   std::span<const AttributeView> const views = block_->views;
   for (std::size_t i = 0; i < pending_.size(); ++i) {
      // A message's paths share its one range.
      auto const [first, count] = ranges_[std::min(i, ranges_.size() - 1)];
      pending_[i].attributes = Attributes(block_, views.subspan(first, count));
   }
}

void MrtReader::Impl::end() {
   ended_ = true;
   if (!file_->fault().empty()) {
      problem(report_.bytesRead, file_->fault());
   }
}

bool MrtReader::Impl::readBody(U32 length) {
   // Grows with the data actually read, so a damaged length cannot make it
   // allocate much more than the file holds.
   std::vector<U8>& body = block_->body;
   body.clear();
   while (body.size() < length) {
      std::size_t want =
         std::min<std::size_t>(length - body.size(), std::max(body.size(), kReadChunkBytes));
      std::size_t had = body.size();
      body.resize(had + want);
      std::size_t got = read(std::span(body).subspan(had));
      body.resize(had + got);
      report_.bytesRead += got;
      if (got < want) {
         return false;
      }
   }
   return true;
}

bool MrtReader::Impl::readRecord() {
   pending_.clear();
   ranges_.clear();
   blocks_.clear();
   messageLengthAt_.reset();
   nextPending_ = 0;
   block_.reset();
   if (ended_) {
      return false;
   }
   U64 offset = report_.bytesRead;
   std::array<U8, detail::kMrtHeaderBytes> header{};
   std::size_t got = read(header);
   report_.bytesRead += got;
   if (got < header.size()) {
      if (got > 0 && offset == 0) {
         problem(offset, cat("not an MRT file (", got, " bytes, less than one record header)"));
      } else if (got > 0) {
         problem(offset, cat("record header cut off after ", got, " of ", header.size(), " bytes"));
      }
      end();
      return false;
   }
   ++report_.records;
   SpanReader h(header);
   U32 timestamp = h.u32();
   U16 type = h.u16();
   U16 subtype = h.u16();
   U32 length = h.u32();
   header_ = {.offset = offset, .timestamp = timestamp, .type = type, .subtype = subtype};

   if (offset == 0 && !detail::isMrtHeader(type, subtype)) {
      // Text, HTML or some other format: every "record" would be garbage.
      ++report_.skippedRecords;
      problem(offset, cat("not an MRT file (the first record's type would be ", type, " subtype ",
                          subtype, ")"));
      end();
      return false;
   }
   if (!detail::isMrtHeader(type, subtype)) {
      return resync(offset, header,
                    cat("damaged record header (type ", type, " subtype ", subtype, ")"));
   }
   if (length > kMaxRecordBytes) {
      return resync(offset, header,
                    cat(recordName(type, subtype), ": length ", length, " over the limit of ",
                        kMaxRecordBytes));
   }
   block_ = freeBlock();
   if (!readBody(length)) {
      ++report_.skippedRecords;
      problem(offset, cat(recordName(type, subtype), ": record cut off, ", block_->body.size(),
                          " of ", length, " bytes present"));
      end();
      return false;
   }

   error_.clear();
   switch (decode(timestamp, type, subtype, SpanReader(block_->body))) {
   case Outcome::used:
      attachAttributes();
      for (Path& path : pending_) {
         path.recordType = type;
      }
      break;
   case Outcome::ignored:
      ++report_.ignoredRecords;
      break;
   case Outcome::damaged:
      pending_.clear();
      ++report_.skippedRecords;
      problem(offset, cat(recordName(type, subtype), ": ", error_));
      break;
   }
   return true;
}

std::size_t MrtReader::Impl::read(std::span<U8> out) {
   std::size_t const fromAhead = std::min(out.size(), ahead_.size() - aheadPos_);
   std::copy_n(ahead_.begin() + static_cast<std::ptrdiff_t>(aheadPos_), fromAhead, out.begin());
   aheadPos_ += fromAhead;
   if (aheadPos_ == ahead_.size()) {
      ahead_.clear();
      aheadPos_ = 0;
   }
   return fromAhead + (fromAhead < out.size() ? file_->read(out.subspan(fromAhead)) : 0);
}

bool MrtReader::Impl::peek(std::size_t n) {
   while (ahead_.size() - aheadPos_ < n) {
      if (aheadPos_ > 0) {
         ahead_.erase(ahead_.begin(), ahead_.begin() + static_cast<std::ptrdiff_t>(aheadPos_));
         aheadPos_ = 0;
      }
      std::size_t const had = ahead_.size();
      std::size_t const want = std::max(n - had, kReadChunkBytes);
      ahead_.resize(had + want);
      std::size_t const got = file_->read(std::span(ahead_).subspan(had));
      ahead_.resize(had + got);
      if (got < want) {
         return ahead_.size() >= n;
      }
   }
   return true;
}

namespace {

// Whether `h` (12 bytes) could start a record of a type read here or
// commonly found in dumps, for the search after a damaged header.
bool plausibleHeader(std::span<const U8> h) {
   SpanReader r(h);
   r.skip(4); // timestamp
   U16 type = r.u16();
   U16 subtype = r.u16();
   U32 length = r.u32();
   bool const readHere = type == detail::kTableDump || type == detail::kTableDumpV2 ||
                         type == detail::kBgp4mp || type == detail::kBgp4mpEt;
   return readHere && detail::isMrtHeader(type, subtype) && length <= kMaxResyncRecordBytes;
}

} // namespace

bool MrtReader::Impl::resync(U64 offset, std::span<const U8> header, std::string const& what) {
   // The search starts one byte after the damaged header: put the rest of it back.
   ahead_.insert(ahead_.begin() + static_cast<std::ptrdiff_t>(aheadPos_), header.begin() + 1,
                 header.end());
   report_.bytesRead -= header.size() - 1;
   ++report_.skippedRecords;
   U64 skipped = 1;
   for (;; ++skipped) {
      if (!peek(detail::kMrtHeaderBytes)) {
         skipped += lookAhead().size();
         break;
      }
      auto const candidate = lookAhead().first(detail::kMrtHeaderBytes);
      if (plausibleHeader(candidate)) {
         U32 const length = SpanReader(candidate.subspan(8)).u32();
         std::size_t const next = detail::kMrtHeaderBytes + length;
         bool const followed =
            peek(next + detail::kMrtHeaderBytes)
               ? plausibleHeader(lookAhead().subspan(next).first(detail::kMrtHeaderBytes))
               : lookAhead().size() == next;
         if (followed) {
            report_.skippedBytes += skipped;
            problem(offset, cat(what, "; skipped ", skipped, " bytes to the next record"));
            return true;
         }
      }
      ++aheadPos_;
      report_.bytesRead += 1;
   }
   report_.bytesRead += lookAhead().size();
   report_.skippedBytes += skipped;
   problem(offset, cat(what, "; no record follows in the ", skipped, " bytes after it"));
   ahead_.clear();
   aheadPos_ = 0;
   end();
   return false;
}

Outcome MrtReader::Impl::decode(U32 timestamp, U16 type, U16 subtype, SpanReader r) {
   switch (type) {
   case detail::kTableDump:
      return tableDump(subtype, r);
   case detail::kTableDumpV2:
      if (subtype == detail::kPeerIndexTable) {
         return peerIndexTable(r);
      }
      if ((subtype >= detail::kRibIpv4Unicast && subtype <= detail::kRibGeneric) ||
          (subtype >= detail::kRibIpv4Unicast + detail::kAddPathOffset &&
           subtype <= detail::kRibGeneric + detail::kAddPathOffset)) {
         return rib(subtype, r);
      }
      return Outcome::ignored;
   case detail::kBgp4mpEt:
      r.skip(kEtMicrosecondBytes);
      if (!r.ok()) {
         return damaged("microsecond timestamp cut short");
      }
      return bgp4mp(timestamp, subtype, r);
   case detail::kBgp4mp:
      return bgp4mp(timestamp, subtype, r);
   default:
      return Outcome::ignored;
   }
}

Outcome MrtReader::Impl::tableDump(U16 subtype, SpanReader r) {
   if (subtype != detail::kTableDumpIpv4 && subtype != detail::kTableDumpIpv6) {
      return Outcome::ignored;
   }
   Family family = subtype == detail::kTableDumpIpv4 ? Family::ipv4 : Family::ipv6;
   r.skip(4); // view and sequence numbers
   auto prefix = r.bytes(addressBytes(family));
   U8 length = r.u8();
   r.skip(1); // status
   U32 originated = r.u32();
   auto peer = r.bytes(addressBytes(family));
   U16 peerAs = r.u16();
   auto attributes = r.bytes(r.u16());
   if (!r.ok()) {
      return damaged("entry cut short");
   }
   if (length > detail::maxPrefixLength(family)) {
      return damaged(cat("prefix length ", length, " over ", detail::maxPrefixLength(family)));
   }
   if (r.remaining() > 0) {
      return trailing(r);
   }
   Path& path = pending_.emplace_back();
   path.timestamp = originated;
   path.peerAddress.family = family;
   std::copy(peer.begin(), peer.end(), path.peerAddress.bytes.begin());
   path.peerAs = peerAs;
   path.route.prefix = {{family, {}}, length};
   std::copy(prefix.begin(), prefix.end(), path.route.prefix.address.bytes.begin());
   path.afi = family == Family::ipv4 ? detail::kAfiIpv4 : detail::kAfiIpv6;
   path.fourOctetAs = false;
   return addAttributes(attributes) ? Outcome::used : Outcome::damaged;
}

Outcome MrtReader::Impl::peerIndexTable(SpanReader r) {
   constexpr U8 kPeerIpv6 = 0x01;
   constexpr U8 kPeerAs4 = 0x02;
   peers_.clear();
   r.skip(4);       // collector BGP identifier
   r.skip(r.u16()); // view name
   U16 count = r.u16();
   if (!r.ok()) {
      return damaged("peer table header cut short");
   }
   std::vector<Peer> peers(count);
   for (U16 i = 0; i < count; ++i) {
      U8 peerType = r.u8();
      r.skip(4); // peer BGP identifier
      Family family = (peerType & kPeerIpv6) ? Family::ipv6 : Family::ipv4;
      auto address = r.bytes(addressBytes(family));
      peers[i].as = (peerType & kPeerAs4) ? r.u32() : r.u16();
      if (!r.ok()) {
         return damaged(cat("peer entry ", i, " of ", count, " cut short"));
      }
      peers[i].address.family = family;
      std::copy(address.begin(), address.end(), peers[i].address.bytes.begin());
   }
   if (r.remaining() > 0) {
      return trailing(r);
   }
   peers_ = std::move(peers);
   return Outcome::used;
}

Outcome MrtReader::Impl::rib(U16 subtype, SpanReader r) {
   bool addPath = subtype > detail::kRibGeneric;
   U16 plain = addPath ? subtype - detail::kAddPathOffset : subtype;
   r.skip(4); // sequence number
   Route route;
   std::optional<U32> nlriPathId;
   U16 afi = 0;
   U8 safi = 0;
   bool generic = plain == detail::kRibGeneric;
   if (generic) {
      afi = r.u16();
      safi = r.u8();
      auto kind = routeKind(afi, safi);
      if (!r.ok()) {
         return damaged("RIB header cut short");
      }
      if (!kind) {
         return Outcome::ignored;
      }
      // The generic ADD-PATH form carries the path identifier in the NLRI.
      if (!readNlri(r, kind->family, kind->form, addPath, route, nlriPathId, error_)) {
         return Outcome::damaged;
      }
   } else {
      Family family = plain <= detail::kRibIpv4Multicast ? Family::ipv4 : Family::ipv6;
      afi = family == Family::ipv4 ? detail::kAfiIpv4 : detail::kAfiIpv6;
      safi = plain == detail::kRibIpv4Multicast || plain == detail::kRibIpv6Multicast
                ? detail::kSafiMulticast
                : detail::kSafiUnicast;
      if (!readNlri(r, family, NlriForm::plain, false, route, nlriPathId, error_)) {
         return Outcome::damaged;
      }
   }
   bool entryPathId = addPath && !generic;
   U16 count = r.u16();
   for (U16 i = 0; i < count; ++i) {
      U16 peerIndex = r.u16();
      U32 originated = r.u32();
      std::optional<U32> pathId = nlriPathId;
      if (entryPathId) {
         pathId = r.u32();
      }
      auto attributes = r.bytes(r.u16());
      if (!r.ok()) {
         return damaged(cat("RIB entry ", i, " of ", count, " cut short"));
      }
      if (peerIndex >= peers_.size()) {
         return damaged(cat("RIB entry ", i, ": peer index ", peerIndex,
                            " outside the peer table of ", peers_.size(), " peers"));
      }
      Path& path = pending_.emplace_back();
      path.timestamp = originated;
      path.peerAddress = peers_[peerIndex].address;
      path.peerAs = peers_[peerIndex].as;
      path.route = route;
      path.pathId = pathId;
      path.afi = afi;
      path.safi = safi;
      if (!addAttributes(attributes)) {
         return damaged(cat("RIB entry ", i, ": ", error_));
      }
   }
   if (!r.ok()) {
      return damaged("RIB entry count cut short");
   }
   if (r.remaining() > 0) {
      return trailing(r);
   }
   return pending_.empty() ? Outcome::ignored : Outcome::used;
}

Outcome MrtReader::Impl::bgp4mp(U32 timestamp, U16 subtype, SpanReader r) {
   struct Kind {
      U16 subtype;
      bool as4;
      bool addPath;
   };
   static constexpr Kind kMessageKinds[] = {
      {detail::kMessage, false, false},
      {detail::kMessageAs4, true, false},
      {detail::kMessageLocal, false, false},
      {detail::kMessageAs4Local, true, false},
      {detail::kMessageAddPath, false, true},
      {detail::kMessageAs4AddPath, true, true},
      {detail::kMessageLocalAddPath, false, true},
      {detail::kMessageAs4LocalAddPath, true, true},
   };
   auto kind = std::find_if(std::begin(kMessageKinds), std::end(kMessageKinds),
                            [subtype](Kind const& k) { return k.subtype == subtype; });
   if (kind == std::end(kMessageKinds)) {
      return Outcome::ignored; // state changes and subtypes not decoded here
   }
   U32 peerAs = kind->as4 ? r.u32() : r.u16();
   r.skip(kind->as4 ? 4 : 2); // local AS
   r.skip(2);                 // interface index
   U16 afi = r.u16();
   if (!r.ok()) {
      return damaged("message header cut short");
   }
   auto family = familyOfAfi(afi);
   if (!family) {
      return damaged(cat("address family ", afi, " unknown"));
   }
   auto peer = r.bytes(addressBytes(*family));
   r.skip(addressBytes(*family)); // local address
   r.skip(detail::kBgpMarkerBytes);
   std::size_t const lengthAt = r.position();
   U16 length = r.u16();
   U8 messageType = r.u8();
   if (!r.ok()) {
      return damaged("BGP message header cut short");
   }
   if (length < detail::kBgpHeaderBytes || length - detail::kBgpHeaderBytes != r.remaining()) {
      return damaged(cat("BGP message length ", length, " but ",
                         r.remaining() + detail::kBgpHeaderBytes, " bytes in the record"));
   }
   if (messageType != detail::kBgpUpdate) {
      return Outcome::ignored;
   }
   r.skip(r.u16()); // withdrawn routes
   auto attributeBlock = r.bytes(r.u16());
   if (!r.ok()) {
      return damaged("UPDATE field lengths run past the message");
   }
   messageLengthAt_ = lengthAt;
   // One range of views for every prefix of the message.
   if (!addAttributes(attributeBlock)) {
      return Outcome::damaged;
   }
   std::span<const AttributeView> const attributes(block_->views);

   // An NLRI block that does not decode plainly is tried once more with path
   // identifiers (see the class comment); the first error is the one reported.
   auto readRoutes = [&](SpanReader nlri, U16 afi, U8 safi, RouteKind route) {
      std::size_t before = pending_.size();
      std::string firstError;
      for (bool addPath : {kind->addPath, true}) {
         SpanReader block = nlri;
         pending_.resize(before);
         bool ok = true;
         while (ok && block.remaining() > 0) {
            Path& path = pending_.emplace_back();
            path.afi = afi;
            path.safi = safi;
            path.fourOctetAs = kind->as4;
            ok =
               readNlri(block, route.family, route.form, addPath, path.route, path.pathId, error_);
         }
         if (ok) {
            return true;
         }
         if (firstError.empty()) {
            firstError = std::move(error_);
         }
         if (addPath) {
            break;
         }
      }
      error_ = std::move(firstError);
      return false;
   };
   if (!readRoutes(SpanReader(r.rest()), detail::kAfiIpv4, detail::kSafiUnicast,
                   RouteKind{Family::ipv4, NlriForm::plain})) {
      return Outcome::damaged;
   }
   for (AttributeView const& attribute : attributes) {
      if (attribute.typeCode != detail::kAttrMpReachNlri) {
         continue;
      }
      SpanReader m(attribute.value);
      U16 routeAfi = m.u16();
      U8 safi = m.u8();
      m.skip(m.u8()); // next hop
      m.skip(1);      // reserved
      if (!m.ok()) {
         return damaged("MP_REACH_NLRI cut short");
      }
      auto route = routeKind(routeAfi, safi);
      if (route && !readRoutes(m, routeAfi, safi, *route)) {
         return damaged(cat("MP_REACH_NLRI: ", error_));
      }
   }
   if (pending_.empty()) {
      return Outcome::ignored;
   }

   detail::Address peerAddress{*family, {}};
   std::copy(peer.begin(), peer.end(), peerAddress.bytes.begin());
   for (Path& path : pending_) {
      path.timestamp = timestamp;
      path.peerAddress = peerAddress;
      path.peerAs = peerAs;
   }
   return Outcome::used;
}

MrtReader::MrtReader(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
MrtReader::~MrtReader() = default;

std::unique_ptr<MrtReader> MrtReader::open(std::string const& path, std::string* error) {
   auto file = detail::InputFile::open(path, error);
   if (!file) {
      return nullptr;
   }
   return std::unique_ptr<MrtReader>(new MrtReader(std::make_unique<Impl>(std::move(file))));
}

bool MrtReader::next(Path& path) { return impl_->next(path); }
bool MrtReader::nextRecord(RecordView& record) { return impl_->nextRecord(record); }
U64 MrtReader::drain() { return impl_->drain(); }
Report const& MrtReader::report() const { return impl_->report_; }
Compression MrtReader::compression() const { return impl_->file_->compression(); }
U64 MrtReader::bytesConsumed() const { return impl_->file_->consumed(); }
U64 MrtReader::fileSize() const { return impl_->file_->size(); }

} // namespace QorBgpTools::mrt
