// A one-line progress bar on standard error for the long subcommands, shown
// only when standard error is a terminal, so that nothing is written into a
// pipe or a log; with `besideOutput`, also only when standard output is not
// the same terminal, where it would cut through the lines printed there.
#pragma once

#include "QorBgpCommunity/platform/Types.h"

#include <mutex>
#include <string>

namespace QorBgpTools {

// Thread-safe: any thread may report; the bar is redrawn at most once per
// percent (or per 2^16 items when the total is unknown).
class Progress {
 public:
   // `total`: the amount update() counts towards (bytes of input, paths to
   // write); 0 when unknown (a pipe), then only the count of items is shown.
   Progress(std::string label, U64 total, bool besideOutput = false);
   ~Progress(); // clears the line
   Progress(Progress const&) = delete;
   Progress& operator=(Progress const&) = delete;

   // `done` of the total so far, and the number of items (paths) behind it.
   void update(U64 done, U64 items);

 private:
   std::string label_;
   U64 total_;
   bool on_;
   bool shown_ = false;
   long last_ = -1;
   std::mutex mutex_;
};

} // namespace QorBgpTools
