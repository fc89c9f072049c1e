/// @file
/// The library's trace facility, "QorBgpCommunity". The recognition plug-ins
/// trace at level 8, the lists at levels 8 and 9; see platform/Trace.h for how
/// levels are switched on (QORBGP_TRACE="QorBgpCommunity/89").
#pragma once

#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Trace.h"

namespace Routing::Bgp {

QORBGP_EXPORT Kiv::TraceFacility& qorBgpTrace() noexcept;

} // namespace Routing::Bgp
