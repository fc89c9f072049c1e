/// @file
/// Keeps a renderer from changing its caller's stream format: saves the flags,
/// fill and precision and restores them on destruction. The field width, like
/// that of any formatted output, is consumed: it is cleared on entry, so that
/// it pads none of the pieces the renderer writes, and stays 0 afterwards.
#pragma once

#include <ios>

namespace Kiv {

/// Saves a stream's format state and restores it on destruction.
class StreamStateSaver {
 public:
   explicit StreamStateSaver(std::ios& s)
       : stream_(s), flags_(s.flags()), precision_(s.precision()), fill_(s.fill()) {
      s.width(0);
   }
   ~StreamStateSaver() {
      stream_.flags(flags_);
      stream_.precision(precision_);
      stream_.fill(fill_);
      stream_.width(0);
   }
   StreamStateSaver(StreamStateSaver const&) = delete;
   StreamStateSaver& operator=(StreamStateSaver const&) = delete;

 private:
   std::ios& stream_;
   std::ios::fmtflags flags_;
   std::streamsize precision_;
   char fill_;
};

} // namespace Kiv
