// Live heap bytes of this process, counted by replacing the global
// operator new and delete in the benchmark program (the library's
// allocations go through them too).
#pragma once

#include <cstddef>

namespace bench {

std::size_t liveHeapBytes() noexcept;

} // namespace bench
