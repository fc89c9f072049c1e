// Writes the seed corpus of every fuzz target, each input made by the library
// or the MRT writer itself so that the seeds are well-formed starting points:
//
//   qorbgp-fuzz-seeds fuzz/corpus
//
// writes <dir>/<target>/seed-<name> and leaves other files alone (crashers
// kept as regression inputs included).
#include "QorBgpCommunity/QorBgp/ExtCommIp6List.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityList.h"
#include "QorBgpCommunity/QorBgp/QorBgpMiscTypes.h"
#include "QorBgpCommunity/QorBgp/RouteTargetPrefix.h"
#include "fuzz/FuzzSupport.h"
#include "QorBgpCommunity/platform/Hoard.h"
#include "QorBgpCommunity/platform/Ip6Addr.h"
#include "tools/mrt/MrtWriter.h"

#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>

using namespace Routing::Bgp;
using namespace QorBgpTools::mrt;
namespace fs = std::filesystem;

namespace {

fs::path root;

void write(std::string const& target, std::string const& name, std::string const& bytes) {
   fs::create_directories(root / target);
   std::ofstream(root / target / ("seed-" + name), std::ios::binary) << bytes;
}

std::string bytesOf(std::span<U8 const> value) {
   return {reinterpret_cast<char const*>(value.data()), value.size()};
}

std::string readFile(fs::path const& path) {
   std::ifstream in(path, std::ios::binary);
   return {std::istreambuf_iterator<char>(in), {}};
}

// A list of each kind, published in `tables`.
struct Lists {
   CommList::PtrConst standard;
   LargeCommList::PtrConst large;
   ExtCommList::PtrConst extended;
   ExtCommIp6List::PtrConst ip6;
};

Lists makeLists(CommunityTables const& tables) {
   Lists lists;
   CommList::Ptr standard = commListFactory();
   for (U32 v : {0xFFFFFF01u, 0xFDE80064u, 0xFFFF029Au}) {
      standard->commIs(v);
   }
   lists.standard = standard->dedup(tables.commListDedupTable().get());
   LargeCommList::Ptr large = largeCommListFactory();
   large->commIs({4200000000, 1, 2});
   large->commIs({65000, 0, 7});
   lists.large = large->dedup(tables.largeCommListDedupTable().get());
   ExtCommList::Ptr extended = extCommListFactory();
   // Route target 65000:100, link bandwidth, colour 7, origin validation state.
   for (U64 word : {0x0002fde800000064ull, 0x4004fde847f42400ull, 0x030b000000000007ull,
                    0x4300000000000001ull}) {
      extended->commIs(ExtComm::dedupContent(tables.extCommDedupTable().get(), ExtCommContent(word)));
   }
   lists.extended = extended->dedup(tables.extCommListDedupTable().get());
   ExtCommIp6List::Ptr ip6 = extCommIp6ListFactory();
   ip6->commIs(ExtCommIp6::dedupContent(
      tables.extCommIp6DedupTable().get(),
      ExtCommIp6Content(0x00, 0x02, Qornet::Ip6Addr::fromStrep("2001:db8::1"), 100)));
   lists.ip6 = ip6->dedup(tables.extCommIp6ListDedupTable().get());
   return lists;
}

void decodeSeeds(Lists const& lists) {
   auto value = [](char selector, std::string const& attribute) {
      return selector + bytesOf(QorBgpFuzz::attributeValue(attribute));
   };
   write("DecodeAttributeFuzz", "communities", value(0, lists.standard->serialize()));
   write("DecodeAttributeFuzz", "large", value(1, lists.large->serialize()));
   write("DecodeAttributeFuzz", "extended",
         value(2, lists.extended->serialize(ExtCommList::serialization(true, true, true))));
   write("DecodeAttributeFuzz", "ip6", value(3, lists.ip6->serialize(true)));
   write("DecodeAttributeFuzz", "malformed", std::string("\x00\x01\x02\x03\x04\x05", 6));
   write("DecodeAttributeFuzz", "not-community", "\xf1\x40\x01\x00");
}

void mrtSeeds(Lists const& lists) {
   auto attribute = [](U8 typeCode, std::string const& serialized) {
      auto value = QorBgpFuzz::attributeValue(serialized);
      return Attribute{0xc0, typeCode, {value.begin(), value.end()}};
   };
   std::vector<Attribute> const attributes = {{0x40, 1, {0}},
                                              attribute(8, lists.standard->serialize())};
   std::vector<Attribute> rich = {
      {0x40, 1, {0}},
      attribute(32, lists.large->serialize()),
      attribute(16, lists.extended->serialize(ExtCommList::serialization(true, true, true))),
      attribute(25, lists.ip6->serialize(true)),
   };
   fs::path const scratch = fs::temp_directory_path() / ("qorbgp-seeds-" + std::to_string(getpid()));
   struct File {
      std::string name;
      Compression compression;
   };
   for (File const& f : {File{"rib", Compression::none}, File{"rib-gz", Compression::gzip},
                         File{"rib-bz2", Compression::bzip2}, File{"rib-xz", Compression::xz},
                         File{"rib-zst", Compression::zstd}, File{"updates", Compression::none},
                         File{"updates-many", Compression::none},
                         File{"updates-rtc", Compression::none}}) {
      std::string error;
      fs::remove(scratch);
      auto writer = MrtWriter::create(scratch, f.compression, &error);
      if (!writer) {
         throw std::runtime_error(error);
      }
      if (f.name == "updates-rtc") {
         // Route-target memberships (AFI 1, SAFI 132) in MP_REACH_NLRI: the
         // default, then 65000 65000:100/64.
         std::vector<U8> reach{0, 1, 132, 4, 192, 0, 2, 1, 0, 0};
         for (U8 octet : {96, 0, 0, 0xfd, 0xe8, 0, 2, 0xfd, 0xe8, 0, 0, 0, 100}) {
            reach.push_back(octet);
         }
         std::vector<Attribute> withReach = attributes;
         withReach.push_back({0x80, 14, reach});
         writer->bgp4mpUpdate({.timestamp = 2003, .peerAs = 64501, .localAs = 64502,
                               .peerAddress = "192.0.2.1", .localAddress = "192.0.2.2",
                               .attributes = withReach});
      } else if (f.name == "updates-many") {
         // One message announcing many prefixes with many attributes: the
         // shape of a record whose paths must share their attributes.
         std::vector<Attribute> many = attributes;
         for (U8 i = 0; i < 200; ++i) {
            many.push_back({0x40, static_cast<U8>(99 + i % 100), {}});
         }
         std::vector<std::string> prefixes;
         for (int i = 0; i < 1000; ++i) {
            prefixes.push_back("10." + std::to_string(i / 256) + "." + std::to_string(i % 256) + ".0/24");
         }
         writer->bgp4mpUpdate({.timestamp = 2002, .peerAs = 64501, .localAs = 64502,
                               .peerAddress = "192.0.2.1", .localAddress = "192.0.2.2",
                               .attributes = many, .prefixes = prefixes});
      } else if (f.name == "updates") {
         writer->bgp4mpUpdate({.timestamp = 2000, .peerAs = 64501, .localAs = 64502,
                               .peerAddress = "192.0.2.1", .localAddress = "192.0.2.2",
                               .attributes = rich, .prefixes = {"198.51.100.0/24"},
                               .withdrawn = {"203.0.113.0/24"}});
         writer->bgp4mpUpdate({.timestamp = 2001, .peerAs = 4200000001, .localAs = 1,
                               .peerAddress = "2001:db8::1", .localAddress = "2001:db8::2",
                               .extendedTimestamp = true, .pathId = 7, .attributes = attributes,
                               .prefixes = {"2001:db8:100::/40"}});
      } else {
         Peer const peers[] = {{0xc0000201, "192.0.2.1", 64500}, {0xc0000202, "2001:db8::2", 4200000000}};
         writer->peerIndexTable(1000, 0x0a000001, "seed", peers);
         writer->ribEntry(1000, 0, "198.51.100.0/24",
                          std::vector<RibEntry>{{0, 1000, std::nullopt, attributes},
                                                {1, 1001, std::nullopt, rich}});
         writer->ribEntry(1000, 1, "2001:db8:100::/40",
                          std::vector<RibEntry>{{1, 1002, 5, rich}});
      }
      if (!writer->close(&error)) {
         throw std::runtime_error(error);
      }
      write("MrtReaderFuzz", f.name, readFile(scratch));
   }
   fs::remove(scratch);
}

void textSeeds() {
   // In the order of the target's parser table.
   std::vector<std::string> const texts = {
      ExtComm::StrepFormat(7).valueToStrep(),
      ExtCommIp6::StrepFormat(9).valueToStrep(),
      ExtCommList::CommVectorAttrs(33).valueToStrep(),
      ExtCommList::Serialization(6).valueToStrep(),
      ExtCommClassificationList::CommVectorAttrs(3).valueToStrep(),
      valueToStrep(RouteTargetPrefix(RouteTarget::twoOctetAs(65000, 100), 32)),
      "192.0.2.1:5",
      "type=0;subtype=2;addr=2001:db8::1;localAdmin=100",
      "::ffff:192.0.2.1",
      "extCommPktTypeTransOpaque",
      "extCommPktSubtypeTransTwoOctetAsRouteTarget",
      "extCommClassificationRouteTarget",
      "64",
      "no-export",
      "largeCommunity",
      "communityDecodeMalformed",
      "-",
      "255",
      "4294967295",
      "18446744073709551615",
      "c0 08 04 ff ff ff 01",
      "# toggles\nQorBgpLlgr=off   # names off\nOther=1\n",
      "QorBgpCommunity/89,*/1",
   };
   for (std::size_t i = 0; i < texts.size(); ++i) {
      write("TextParsersFuzz", std::to_string(i), static_cast<char>(i) + texts[i]);
   }
}

void hoardSeeds(Lists const& lists) {
   fs::path const path = fs::temp_directory_path() / ("qorbgp-seeds-" + std::to_string(getpid()));
   fs::remove(path);
   std::vector<std::pair<U8, U64>> restores;
   U64 used = 0;
   {
      auto writer = hoard::StoreWriter::createMappedFile(path, 4096);
      restores = {{0, lists.standard->hoard(writer).offset()},
                  {1, lists.large->hoard(writer).offset()},
                  {2, lists.extended->hoard(writer).offset()},
                  {3, lists.ip6->hoard(writer).offset()}};
      writer.rootIs(hoard::Location(restores[2].second));
      used = writer.used();
   }
   std::string const segment = readFile(path).substr(0, used);
   fs::remove(path);
   // The root (the extended list), and that list's first value on its own:
   // the location stored as its first element.
   U64 firstValue = 0;
   std::memcpy(&firstValue, segment.data() + restores[2].second + sizeof(hoard::ListRecord),
               sizeof firstValue);
   restores.push_back({0x80 | 2, 0});
   restores.push_back({4, firstValue});

   std::string seed{'\0', static_cast<char>(restores.size() - 1)};
   for (auto const& [kind, offset] : restores) {
      seed += static_cast<char>(kind);
      seed.append(reinterpret_cast<char const*>(&offset), sizeof offset);
   }
   write("HoardFuzz", "lists", seed + segment);
   // The same, its segment cut by 24 bytes once open (option 0x04).
   seed[0] = 0x04;
   U32 const cut = 24;
   seed.append(reinterpret_cast<char const*>(&cut), sizeof cut);
   write("HoardFuzz", "lists-cut", seed + segment);
}

void listSeeds() {
   std::mt19937 random(1);
   for (std::size_t size : {16, 64, 256, 1024}) {
      std::string bytes(size, '\0');
      for (char& c : bytes) {
         c = static_cast<char>(random());
      }
      write("CommListsFuzz", std::to_string(size), bytes);
   }
}

} // namespace

int main(int argc, char** argv) {
   if (argc != 2) {
      std::cerr << "usage: qorbgp-fuzz-seeds CORPUS_DIR\n";
      return 2;
   }
   root = argv[1];
   auto tables = communityTablesFactory();
   Lists const lists = makeLists(*tables);
   decodeSeeds(lists);
   mrtSeeds(lists);
   textSeeds();
   hoardSeeds(lists);
   listSeeds();
   return 0;
}
