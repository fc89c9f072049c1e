// The MRT reader on arbitrary files (the input is the whole file, so gzip,
// bzip2, xz and zstd streams are read when it starts like one), and the community
// attributes of every path it hands out through the decoders, as the tool
// does.
//
// Beyond "no crash": the report counts the paths handed out, keeps at most
// kMaxProblemsKept problems, never reads more of a plain file than it has,
// and the reader stays at its end once there.
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"
#include "QorBgpCommunity/platform/QorBgpGlobals.h"
#include "fuzz/FuzzSupport.h"
#include "tools/mrt/MrtReader.h"

#include <string>

using namespace QorBgpTools::mrt;
using namespace Routing::Bgp;

// The tables in their multi-threaded form (sharded, with atomic counts), as
// the tool's stats uses them on several files.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
   QorBgpGlobals::multiThreadedIs(true);
   return 0;
}

extern "C" int LLVMFuzzerTestOneInput(U8 const* data, std::size_t size) {
   static QorBgpFuzz::MemoryFile file;
   static CommunityTables::Ptr const tables = communityTablesFactory();

   std::string error;
   auto reader = MrtReader::open(file.contentIs({data, size}), &error);
   if (!reader) { // only a compression format not read here is refused
      QORBGP_FUZZ_CHECK(error.find("is compressed as") != std::string::npos);
      return 0;
   }

   U64 paths = 0;
   Path path;
   while (reader->next(path)) {
      ++paths;
      for (AttributeView const& attribute : path.attributes) {
         auto result = decodeAttribute(*tables, attribute.typeCode, attribute.value);
         QORBGP_FUZZ_CHECK(result.ok() || !result.reason.empty());
      }
   }
   QORBGP_FUZZ_CHECK(!reader->next(path));

   Report const& report = reader->report();
   QORBGP_FUZZ_CHECK(report.paths == paths);
   QORBGP_FUZZ_CHECK(report.problems.size() <= kMaxProblemsKept);
   QORBGP_FUZZ_CHECK(report.skippedRecords + report.ignoredRecords <= report.records);
   if (reader->compression() == Compression::none) {
      QORBGP_FUZZ_CHECK(report.bytesRead <= size);
   }
   return 0;
}
