#include "Workload.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"

#include <zlib.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <string_view>

namespace bench {

bool loadAttributes(char const* path, Workload& workload) {
   gzFile in = gzopen(path, "rb");
   if (!in) {
      return false;
   }
   static char line[1 << 18];
   while (gzgets(in, line, sizeof line)) {
      char* space = std::strchr(line, ' ');
      if (!space) {
         continue;
      }
      std::string_view hex(space + 1);
      while (!hex.empty() && (hex.back() == '\n' || hex.back() == '\r')) {
         hex.remove_suffix(1);
      }
      if (auto bytes = Routing::Bgp::parseHex(hex)) {
         workload.push_back({static_cast<U8>(std::atoi(line)), std::move(*bytes)});
      }
   }
   gzclose(in);
   return true;
}

namespace {

// One attribute value of `type` with `count` elements; extended values are
// route targets (type 0x00, subtype 0x02) as most real ones are.
Occurrence makeList(std::mt19937& random, U8 type, int count) {
   Occurrence o{type, {}};
   int const element = type == 8 ? 4 : type == 32 ? 12 : 8;
   for (int n = count * element; n > 0; --n) {
      o.value.push_back(static_cast<U8>(random()));
   }
   if (type == 16) {
      for (std::size_t k = 0; k < o.value.size(); k += 8) {
         o.value[k] = 0x00, o.value[k + 1] = 0x02;
      }
   }
   return o;
}

} // namespace

Workload realisticWorkload() {
   std::mt19937 random(3);
   std::vector<Occurrence> distinct;
   for (int i = 0; i < 17600; ++i) {
      U8 const type = static_cast<U8>(i % 25 == 0 ? 32 : i % 40 == 1 ? 16 : 8);
      distinct.push_back(makeList(random, type, 1 + static_cast<int>(random() % 8)));
   }
   Workload workload;
   for (int i = 0; i < 560000; ++i) {
      double const u = std::uniform_real_distribution<double>(0, 1)(random);
      workload.push_back(distinct[static_cast<std::size_t>(double(distinct.size()) * u * u * u)]);
   }
   return workload;
}

Workload uniformWorkload(std::size_t distinct, std::size_t occurrences) {
   std::mt19937 random(7);
   std::vector<Occurrence> lists;
   for (U8 type : {U8{8}, U8{32}, U8{16}}) {
      for (std::size_t i = 0; i < distinct; ++i) {
         lists.push_back(makeList(random, type, 2 + static_cast<int>(random() % 7)));
      }
   }
   Workload workload;
   workload.reserve(occurrences);
   for (std::size_t i = 0; i < occurrences; ++i) {
      workload.push_back(lists[random() % lists.size()]);
   }
   return workload;
}

} // namespace bench
