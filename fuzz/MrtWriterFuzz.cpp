// The MRT writer on what callers hand it: prefix and address texts and
// attribute values from the input, written as a RIB entry and as a BGP4MP
// UPDATE, then read back.
//
// Input: lines "prefix\npeer address\n", then the value of a COMMUNITIES
// attribute (the rest).
//
// Beyond "no crash": a caller mistake raises Kiv::RangeError and writes
// nothing (the file still reads back whole); what the writer accepts reads
// back as the same paths, prefix and attribute included.
#include "QorBgpCommunity/platform/Errors.h"
#include "fuzz/FuzzSupport.h"
#include "tools/mrt/MrtReader.h"
#include "tools/mrt/MrtWire.h"
#include "tools/mrt/MrtWriter.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>

using namespace QorBgpTools::mrt;

namespace {

std::string_view line(std::string_view& input) {
   std::size_t const end = input.find('\n');
   std::string_view const first = input.substr(0, end);
   input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
   return first;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(U8 const* data, std::size_t size) {
   static std::string const file =
      (std::filesystem::temp_directory_path() / ("qorbgp-writer-fuzz-" + std::to_string(getpid())))
         .string();
   std::string_view input(reinterpret_cast<char const*>(data), size);
   std::string const prefix(line(input));
   std::string const peer(line(input));
   Attribute const communities{0xc0, 8, {input.begin(), input.end()}};

   std::string error;
   auto writer = MrtWriter::create(file, Compression::none, &error);
   QORBGP_FUZZ_CHECK(writer != nullptr);
   std::size_t written = 0;
   bool peerTable = false;
   try {
      std::vector<Peer> const peers{{1, peer, 64500}};
      writer->peerIndexTable(1, 2, "fuzz", peers);
      peerTable = true;
      std::vector<RibEntry> const entries{{0, 3, std::nullopt, {communities}}};
      writer->ribEntry(1, 0, prefix, entries);
      ++written;
   } catch (Kiv::RangeError const&) {
   }
   try {
      writer->bgp4mpUpdate({.timestamp = 4,
                            .peerAs = 64500,
                            .localAs = 64501,
                            .peerAddress = peer,
                            .localAddress = peer,
                            .attributes = {communities},
                            .prefixes = {prefix}});
      ++written;
   } catch (Kiv::RangeError const&) {
   }
   QORBGP_FUZZ_CHECK(writer->close(&error));

   auto reader = MrtReader::open(file, &error);
   QORBGP_FUZZ_CHECK(reader != nullptr);
   std::size_t read = 0;
   for (Path path; reader->next(path); ++read) {
      AttributeView const* read8 = path.attribute(8);
      QORBGP_FUZZ_CHECK(read8 && std::equal(read8->value.begin(), read8->value.end(),
                                            communities.value.begin(), communities.value.end()));
      auto const parsed = path.route.ipPrefix();
      QORBGP_FUZZ_CHECK(parsed && detail::parsePrefix(prefix)->length == parsed->length);
   }
   QORBGP_FUZZ_CHECK(reader->report().problems.empty());
   QORBGP_FUZZ_CHECK(read == written || (!peerTable && read == 0));
   return 0;
}
