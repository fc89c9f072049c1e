// The community attributes the workload benchmark replays: one occurrence per
// attribute of one path, read from "<type code> <hex value>" lines (gzip
// allowed) or made up in the shape of real tables.
#pragma once

#include "QorBgpCommunity/platform/Types.h"

#include <cstddef>
#include <vector>

namespace bench {

struct Occurrence {
   U8 type;
   std::vector<U8> value;
};

using Workload = std::vector<Occurrence>;

// Appends the lines of `path`; false when it cannot be opened.
bool loadAttributes(char const* path, Workload& workload);

// Real tables' shape: ~560k occurrences over ~17.6k distinct lists, mostly
// standard, some large and extended, popular lists much more common.
Workload realisticWorkload();

// `occurrences` attributes drawn evenly from `distinct` lists of each of the
// standard, large and extended kinds: for cost against table size.
Workload uniformWorkload(std::size_t distinct, std::size_t occurrences);

} // namespace bench
