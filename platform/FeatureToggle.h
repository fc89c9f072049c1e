/// @file
/// Feature toggles: named on/off switches that a deployment sets in a toggle
/// file, so that a behaviour can be turned off without a new build.
///
/// Location: the file that QORBGP_TOGGLE_FILE names when that environment
/// variable is set and not empty, else /etc/qorbgp/toggles.conf
/// (featureToggleFile()).
///
/// Format: one toggle per line, `Name=State`, where State is on, off, true,
/// false, 1 or 0 (letters in any case). Spaces and tabs around the name and
/// the state are ignored; `#` starts a comment that runs to the end of the
/// line; blank lines are skipped. When a name appears more than once, the last
/// well-formed line wins. A malformed line (no `=`, an empty name, another
/// state) is ignored.
///
/// @code{.unparsed}
///   # /etc/qorbgp/toggles.conf
///   QorBgpLlgr=off      # long-lived graceful restart names off
/// @endcode
#pragma once

#include "QorBgpCommunity/platform/Export.h"

#include <string>
#include <string_view>

namespace Kiv {

/// The toggle file used when QORBGP_TOGGLE_FILE is not set.
inline constexpr std::string_view defaultFeatureToggleFile = "/etc/qorbgp/toggles.conf";

/// The toggle file path of this process: QORBGP_TOGGLE_FILE when set and not
/// empty, else defaultFeatureToggleFile. Read from the environment on each call.
QORBGP_EXPORT std::string featureToggleFile();

/// The state of toggle `name` in the toggle file at path `file`; `defaultState`
/// when the file cannot be read or has no well-formed line for `name`. Reads
/// the file on every call and never throws for its content: callers that must
/// see one value for the life of the process read it once and keep it.
/// Thread-safe.
QORBGP_EXPORT bool getToggleState(std::string_view name, std::string_view file,
                                  bool defaultState);

} // namespace Kiv
