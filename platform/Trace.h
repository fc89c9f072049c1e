/// @file
/// Numbered tracing, levels 0 to 9, per facility.
///
/// A facility is a named switchboard of ten levels. Levels are switched on in
/// code (levelIs, levelsIs) or from the environment variable QORBGP_TRACE, read
/// when the facility is created:
///
/// @code{.unparsed}
///   QORBGP_TRACE="QorBgpCommunity/89,Other/*"
/// @endcode
///
/// a comma-separated list of \<facility\>/\<levels\>, where \<levels\> is a string of
/// digits or '*' for all ten, and a facility name of '*' matches every facility.
///
/// A disabled trace point costs one load and one well-predicted branch; the
/// message is neither built nor formatted:
///
/// @code{.cpp}
///   QOR_TRACE(traceFacility(), 8, "Dehoarding " << list->fwkType());
/// @endcode
///
/// Lines go to the current sink: standard error unless traceSinkIs() installed
/// another. Thread-safe: levels are atomic and sink calls are serialised.
#pragma once

#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Types.h"

#include <atomic>
#include <functional>
#include <sstream>
#include <string>
#include <string_view>

namespace Kiv {

/// A named trace facility and the levels enabled for it.
class QORBGP_EXPORT TraceFacility {
 public:
   static constexpr unsigned maxLevel = 9;
   static constexpr U16 allLevels = (1u << (maxLevel + 1)) - 1;

   /// Creates the facility with the levels that QORBGP_TRACE gives it.
   explicit TraceFacility(std::string name);
   TraceFacility(TraceFacility const&) = delete;
   TraceFacility& operator=(TraceFacility const&) = delete;

   std::string const& name() const noexcept { return name_; }

   bool enabled(unsigned level) const noexcept {
      return (levels_.load(std::memory_order_relaxed) >> level) & 1u;
   }
   U16 levels() const noexcept { return levels_.load(std::memory_order_relaxed); }
   /// Bit i of the mask switches level i; bits above 9 are ignored.
   void levelsIs(U16 mask) noexcept { levels_.store(mask & allLevels, std::memory_order_relaxed); }
   /// RangeError for a level above 9.
   void levelIs(unsigned level, bool on);

   /// Hands one line (without its newline) to the sink.
   void write(unsigned level, std::string_view line) const;

 private:
   std::string name_;
   std::atomic<U16> levels_{0};
};

/// The levels that a QORBGP_TRACE-style setting gives a facility name.
/// Malformed entries are ignored, so that a typo in the environment never stops
/// the agent.
QORBGP_EXPORT U16 traceLevelsFromSpec(std::string_view spec, std::string_view facility) noexcept;

using TraceSink = std::function<void(TraceFacility const&, unsigned level, std::string_view line)>;

/// Installs a sink (an empty function restores standard error) and returns the
/// previous one.
QORBGP_EXPORT TraceSink traceSinkIs(TraceSink sink);

} // namespace Kiv

#define QOR_TRACE(facility, level, message)                                              \
   do {                                                                                  \
      if ((facility).enabled(level)) [[unlikely]] {                                      \
         std::ostringstream qorTraceLine_;                                               \
         qorTraceLine_ << message;                                                       \
         (facility).write(level, qorTraceLine_.view());                                  \
      }                                                                                  \
   } while (0)
