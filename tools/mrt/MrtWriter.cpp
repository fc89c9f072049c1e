#include "tools/mrt/MrtWriter.h"

#include "tools/mrt/MrtFile.h"
#include "tools/mrt/MrtWire.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <algorithm>
#include <limits>

namespace QorBgpTools::mrt {

using detail::cat;
using detail::Family;
using detail::putBytes;
using detail::putU16;
using detail::putU32;
using detail::putU8;

namespace {

constexpr std::size_t kMax16 = std::numeric_limits<U16>::max();
constexpr std::size_t kMaxShortAttribute = 255;
constexpr U8 kPeerIpv6 = 0x01;
constexpr U8 kPeerAs4 = 0x02;

detail::Address parseAddress(std::string_view text, char const* what) {
   auto address = detail::parseAddress(text);
   if (!address) {
      throw Kiv::RangeError(cat("malformed ", what, " '", text, "'"));
   }
   return *address;
}

detail::Prefix parsePrefix(std::string_view text) {
   auto prefix = detail::parsePrefix(text);
   if (!prefix) {
      throw Kiv::RangeError(cat("malformed prefix '", text, "'"));
   }
   return *prefix;
}

std::span<const U8> addressOctets(detail::Address const& address) {
   return std::span(address.bytes).first(detail::addressBytes(address.family));
}

void checkFits(std::size_t value, std::size_t max, char const* what) {
   if (value > max) {
      throw Kiv::RangeError(cat(what, " ", value, " over ", max));
   }
}

// Reserves a 2-octet length field, to be filled by patchLength.
std::size_t reserveLength(std::vector<U8>& out) {
   putU16(out, 0);
   return out.size();
}

// Fills the length field reserved at `end` - 2 with the bytes written since.
void patchLength(std::vector<U8>& out, std::size_t end, char const* what) {
   std::size_t length = out.size() - end;
   checkFits(length, kMax16, what);
   out[end - 2] = static_cast<U8>(length >> 8);
   out[end - 1] = static_cast<U8>(length);
}

void beginRecord(std::vector<U8>& out, U32 timestamp, U16 type, U16 subtype) {
   out.clear();
   putU32(out, timestamp);
   putU16(out, type);
   putU16(out, subtype);
   putU32(out, 0); // length, set by finishRecord
}

void finishRecord(std::vector<U8>& out) {
   std::size_t length = out.size() - detail::kMrtHeaderBytes;
   checkFits(length, std::numeric_limits<U32>::max(), "record length");
   for (int i = 0; i < 4; ++i) {
      out[detail::kMrtHeaderBytes - 1 - i] = static_cast<U8>(length >> (8 * i));
   }
}

void putRoute(std::vector<U8>& out, detail::Prefix const& prefix, std::optional<U32> pathId) {
   if (pathId) {
      putU32(out, *pathId);
   }
   detail::putPrefix(out, prefix);
}

} // namespace

void appendAttributes(std::vector<U8>& out, std::span<const Attribute> attributes) {
   for (Attribute const& attribute : attributes) {
      std::size_t length = attribute.value.size();
      checkFits(length, kMax16, "attribute length");
      bool extended =
         length > kMaxShortAttribute || (attribute.flags & detail::kAttrExtendedLength);
      putU8(out, extended ? attribute.flags | detail::kAttrExtendedLength : attribute.flags);
      putU8(out, attribute.typeCode);
      if (extended) {
         putU16(out, static_cast<U16>(length));
      } else {
         putU8(out, static_cast<U8>(length));
      }
      putBytes(out, attribute.value);
   }
}

Compression compressionForName(std::string_view file) {
   if (file.ends_with(".gz")) {
      return Compression::gzip;
   }
   if (file.ends_with(".bz2")) {
      return Compression::bzip2;
   }
   if (file.ends_with(".xz")) {
      return Compression::xz;
   }
   if (file.ends_with(".zst")) {
      return Compression::zstd;
   }
   return Compression::none;
}

std::vector<U8>
replaceAttributeBlocks(RecordView const& record,
                       std::span<const std::optional<std::vector<U8>>> replacement) {
   if (replacement.size() != record.blocks.size()) {
      throw Kiv::RangeError("replaceAttributeBlocks: " + std::to_string(replacement.size()) +
                            " replacements for " + std::to_string(record.blocks.size()) +
                            " attribute blocks");
   }
   auto const maxLength = std::numeric_limits<U16>::max();
   std::vector<U8> body;
   body.reserve(record.body.size());
   std::size_t copied = 0; // of record.body
   std::ptrdiff_t growth = 0;
   for (std::size_t i = 0; i < record.blocks.size(); ++i) {
      if (!replacement[i]) {
         continue;
      }
      RecordView::Block const& block = record.blocks[i];
      std::vector<U8> const& bytes = *replacement[i];
      if (bytes.size() > maxLength) {
         throw Kiv::RangeError("attribute block of " + std::to_string(bytes.size()) +
                               " bytes; its length field holds at most 65535");
      }
      // Up to the block's length field, the new length, the new block.
      body.insert(body.end(), record.body.begin() + static_cast<std::ptrdiff_t>(copied),
                  record.body.begin() + static_cast<std::ptrdiff_t>(block.offset - 2));
      detail::putU16(body, static_cast<U16>(bytes.size()));
      body.insert(body.end(), bytes.begin(), bytes.end());
      copied = block.offset + block.size;
      growth += static_cast<std::ptrdiff_t>(bytes.size()) - static_cast<std::ptrdiff_t>(block.size);
   }
   body.insert(body.end(), record.body.begin() + static_cast<std::ptrdiff_t>(copied),
               record.body.end());
   if (record.messageLengthAt && growth != 0) {
      std::size_t const at = *record.messageLengthAt;
      std::ptrdiff_t const length = (body[at] << 8 | body[at + 1]) + growth;
      if (length > maxLength) {
         throw Kiv::RangeError("BGP message of " + std::to_string(length) +
                               " bytes; its length field holds at most 65535");
      }
      body[at] = static_cast<U8>(length >> 8);
      body[at + 1] = static_cast<U8>(length);
   }
   return body;
}

void appendPrefix(std::vector<U8>& out, std::string_view prefix) {
   detail::putPrefix(out, parsePrefix(prefix));
}

MrtWriter::MrtWriter(std::unique_ptr<detail::OutputFile> file) : file_(std::move(file)) {}

MrtWriter::~MrtWriter() { (void)file_->close(nullptr); }

std::unique_ptr<MrtWriter> MrtWriter::create(std::string const& path, Compression compression,
                                             std::string* error) {
   auto file = detail::OutputFile::create(path, compression, error);
   if (!file) {
      return nullptr;
   }
   return std::unique_ptr<MrtWriter>(new MrtWriter(std::move(file)));
}

void MrtWriter::peerIndexTable(U32 timestamp, U32 collectorId, std::string_view viewName,
                               std::span<const Peer> peers) {
   checkFits(viewName.size(), kMax16, "view name length");
   checkFits(peers.size(), kMax16, "peer count");
   beginRecord(buffer_, timestamp, detail::kTableDumpV2, detail::kPeerIndexTable);
   putU32(buffer_, collectorId);
   putU16(buffer_, static_cast<U16>(viewName.size()));
   buffer_.insert(buffer_.end(), viewName.begin(), viewName.end());
   putU16(buffer_, static_cast<U16>(peers.size()));
   for (Peer const& peer : peers) {
      auto address = parseAddress(peer.address, "peer address");
      bool as4 = peer.as > kMax16;
      putU8(buffer_, static_cast<U8>((address.family == Family::ipv6 ? kPeerIpv6 : 0) |
                                     (as4 ? kPeerAs4 : 0)));
      putU32(buffer_, peer.bgpId);
      putBytes(buffer_, addressOctets(address));
      if (as4) {
         putU32(buffer_, peer.as);
      } else {
         putU16(buffer_, static_cast<U16>(peer.as));
      }
   }
   finishRecord(buffer_);
   write(buffer_);
}

void MrtWriter::ribEntry(U32 timestamp, U32 sequence, std::string_view prefix,
                         std::span<const RibEntry> entries) {
   auto parsed = parsePrefix(prefix);
   bool addPath = !entries.empty() && entries.front().pathId.has_value();
   if (std::any_of(entries.begin(), entries.end(),
                   [addPath](RibEntry const& e) { return e.pathId.has_value() != addPath; })) {
      throw Kiv::RangeError(
         cat("RIB entries of ", prefix, " mix entries with and without a path id"));
   }
   checkFits(entries.size(), kMax16, "RIB entry count");
   U16 subtype =
      parsed.address.family == Family::ipv4 ? detail::kRibIpv4Unicast : detail::kRibIpv6Unicast;
   beginRecord(buffer_, timestamp, detail::kTableDumpV2,
               addPath ? subtype + detail::kAddPathOffset : subtype);
   putU32(buffer_, sequence);
   detail::putPrefix(buffer_, parsed);
   putU16(buffer_, static_cast<U16>(entries.size()));
   for (RibEntry const& entry : entries) {
      putU16(buffer_, entry.peerIndex);
      putU32(buffer_, entry.originatedTime);
      if (addPath) {
         putU32(buffer_, *entry.pathId);
      }
      auto end = reserveLength(buffer_);
      appendAttributes(buffer_, entry.attributes);
      patchLength(buffer_, end, "attribute block length");
   }
   finishRecord(buffer_);
   write(buffer_);
}

void MrtWriter::bgp4mpUpdate(Bgp4mpUpdate const& update) {
   auto peer = parseAddress(update.peerAddress, "peer address");
   auto local = parseAddress(update.localAddress, "local address");
   if (peer.family != local.family) {
      throw Kiv::RangeError(cat("peer address ", update.peerAddress, " and local address ",
                                update.localAddress, " differ in family"));
   }
   if (!update.as4) {
      checkFits(std::max(update.peerAs, update.localAs), kMax16, "2-octet AS");
   }
   U16 subtype = update.pathId ? (update.as4 ? detail::kMessageAs4AddPath : detail::kMessageAddPath)
                               : (update.as4 ? detail::kMessageAs4 : detail::kMessage);
   beginRecord(buffer_, update.timestamp,
               update.extendedTimestamp ? detail::kBgp4mpEt : detail::kBgp4mp, subtype);
   if (update.extendedTimestamp) {
      putU32(buffer_, update.microseconds);
   }
   for (U32 as : {update.peerAs, update.localAs}) {
      if (update.as4) {
         putU32(buffer_, as);
      } else {
         putU16(buffer_, static_cast<U16>(as));
      }
   }
   putU16(buffer_, 0); // interface index
   putU16(buffer_, peer.family == Family::ipv4 ? detail::kAfiIpv4 : detail::kAfiIpv6);
   putBytes(buffer_, addressOctets(peer));
   putBytes(buffer_, addressOctets(local));

   std::size_t messageStart = buffer_.size();
   buffer_.insert(buffer_.end(), detail::kBgpMarkerBytes, 0xff);
   putU16(buffer_, 0); // message length, set below
   putU8(buffer_, detail::kBgpUpdate);
   auto withdrawnEnd = reserveLength(buffer_);
   for (auto const& text : update.withdrawn) {
      auto prefix = parsePrefix(text);
      if (prefix.address.family != Family::ipv4) {
         throw Kiv::RangeError(cat("withdrawn prefix ", text, " is not IPv4"));
      }
      putRoute(buffer_, prefix, update.pathId);
   }
   patchLength(buffer_, withdrawnEnd, "withdrawn routes length");

   std::vector<detail::Prefix> ipv4;
   Attribute mpReach{detail::kAttrOptional, detail::kAttrMpReachNlri, {}};
   for (auto const& text : update.prefixes) {
      auto prefix = parsePrefix(text);
      if (prefix.address.family == Family::ipv4) {
         ipv4.push_back(prefix);
         continue;
      }
      if (mpReach.value.empty()) {
         constexpr U8 kNextHopBytes = 16;
         putU16(mpReach.value, detail::kAfiIpv6);
         putU8(mpReach.value, detail::kSafiUnicast);
         putU8(mpReach.value, kNextHopBytes);
         if (peer.family == Family::ipv6) {
            putBytes(mpReach.value, addressOctets(peer));
         } else {
            mpReach.value.insert(mpReach.value.end(), kNextHopBytes, 0);
         }
         putU8(mpReach.value, 0); // reserved
      }
      putRoute(mpReach.value, prefix, update.pathId);
   }
   auto attributesEnd = reserveLength(buffer_);
   appendAttributes(buffer_, update.attributes);
   if (!mpReach.value.empty()) {
      appendAttributes(buffer_, std::span(&mpReach, 1));
   }
   patchLength(buffer_, attributesEnd, "attribute block length");
   for (auto const& prefix : ipv4) {
      putRoute(buffer_, prefix, update.pathId);
   }
   std::size_t messageLength = buffer_.size() - messageStart;
   checkFits(messageLength, kMax16, "BGP message length");
   buffer_[messageStart + detail::kBgpMarkerBytes] = static_cast<U8>(messageLength >> 8);
   buffer_[messageStart + detail::kBgpMarkerBytes + 1] = static_cast<U8>(messageLength);
   finishRecord(buffer_);
   write(buffer_);
}

void MrtWriter::record(U32 timestamp, U16 type, U16 subtype, std::span<const U8> body) {
   beginRecord(buffer_, timestamp, type, subtype);
   putBytes(buffer_, body);
   finishRecord(buffer_);
   write(buffer_);
}

void MrtWriter::raw(std::span<const U8> bytes) { write(bytes); }

void MrtWriter::write(std::span<const U8> bytes) {
   file_->write(bytes);
   offset_ += bytes.size();
}

bool MrtWriter::close(std::string* error) { return file_->close(error); }

} // namespace QorBgpTools::mrt
