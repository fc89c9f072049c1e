// What the subcommands that read MRT files say about input they could not
// read whole.
#pragma once

#include "tools/mrt/MrtReader.h"

#include <string>

namespace QorBgpTools {

// Prints each problem `report` holds to standard error as
// "qorbgp-comm <command>: <file> offset <n>: <text>", and a count of the
// damaged records beyond those. True when `file` was read whole: no problem
// at all (no damaged record, no truncated or damaged compressed stream).
bool reportReadProblems(char const* command, std::string const& file, mrt::Report const& report);

} // namespace QorBgpTools
