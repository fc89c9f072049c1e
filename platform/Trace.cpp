#include "QorBgpCommunity/platform/Trace.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <cstdio>
#include <cstdlib>
#include <mutex>

namespace Kiv {

namespace {

struct SinkState {
   std::mutex mutex;
   TraceSink sink;
};

SinkState& sinkState() {
   static SinkState state;
   return state;
}

} // namespace

U16 traceLevelsFromSpec(std::string_view spec, std::string_view facility) noexcept {
   U16 levels = 0;
   while (!spec.empty()) {
      std::size_t comma = spec.find(',');
      std::string_view entry = spec.substr(0, comma);
      spec = comma == std::string_view::npos ? std::string_view() : spec.substr(comma + 1);

      std::size_t slash = entry.find('/');
      if (slash == std::string_view::npos) {
         continue;
      }
      std::string_view name = entry.substr(0, slash);
      std::string_view digits = entry.substr(slash + 1);
      if (name != facility && name != "*") {
         continue;
      }
      U16 entryLevels = 0;
      bool wellFormed = !digits.empty();
      for (char c : digits) {
         if (c == '*') {
            entryLevels = TraceFacility::allLevels;
         } else if (c >= '0' && c <= '9') {
            entryLevels |= static_cast<U16>(1u << (c - '0'));
         } else {
            wellFormed = false;
         }
      }
      if (wellFormed) {
         levels |= entryLevels;
      }
   }
   return levels;
}

TraceFacility::TraceFacility(std::string name) : name_(std::move(name)) {
   if (char const* spec = std::getenv("QORBGP_TRACE")) {
      levelsIs(traceLevelsFromSpec(spec, name_));
   }
}

void TraceFacility::levelIs(unsigned level, bool on) {
   if (level > maxLevel) {
      throw RangeError("trace level " + std::to_string(level) + " > 9 not allowed");
   }
   U16 bit = static_cast<U16>(1u << level);
   if (on) {
      levels_.fetch_or(bit, std::memory_order_relaxed);
   } else {
      levels_.fetch_and(static_cast<U16>(~bit), std::memory_order_relaxed);
   }
}

void TraceFacility::write(unsigned level, std::string_view line) const {
   SinkState& state = sinkState();
   std::lock_guard lock(state.mutex);
   if (state.sink) {
      state.sink(*this, level, line);
   } else {
      std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
   }
}

TraceSink traceSinkIs(TraceSink sink) {
   SinkState& state = sinkState();
   std::lock_guard lock(state.mutex);
   std::swap(state.sink, sink);
   return sink;
}

} // namespace Kiv
