#include "Progress.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace QorBgpTools {

namespace {

constexpr int kBarWidth = 30;
constexpr int kLineWidth = 79;

} // namespace

Progress::Progress(std::string label, U64 total, bool besideOutput)
    : label_(std::move(label)), total_(total),
      on_(::isatty(STDERR_FILENO) && !(besideOutput && ::isatty(STDOUT_FILENO))) {}

Progress::~Progress() {
   if (shown_) {
      std::fprintf(stderr, "\r%*s\r", kLineWidth, "");
      std::fflush(stderr);
   }
}

void Progress::update(U64 done, U64 items) {
   if (!on_) {
      return;
   }
   std::unique_lock lock(mutex_, std::try_to_lock);
   if (!lock) {
      return; // another thread is drawing
   }
   long const step = total_ ? static_cast<long>(std::min<U64>(100, 100 * done / total_))
                            : static_cast<long>(items >> 16);
   if (step == last_) {
      return;
   }
   last_ = step;
   shown_ = true;
   if (total_) {
      int const filled = static_cast<int>(step) * kBarWidth / 100;
      std::fprintf(stderr, "\r[%.*s%*s] %3ld%% %12llu paths  %.24s", filled,
                   "##############################", kBarWidth - filled, "", step,
                   static_cast<unsigned long long>(items), label_.c_str());
   } else {
      std::fprintf(stderr, "\r%12llu paths  %.50s", static_cast<unsigned long long>(items),
                   label_.c_str());
   }
   std::fflush(stderr);
}

} // namespace QorBgpTools
