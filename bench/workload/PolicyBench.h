// Route policy on the workload: set matchers afresh against a hand-written
// loop, a policy of ten rules over a million paths afresh and through memos,
// and edits answered from a memo.
#pragma once

#include "Workload.h"

namespace bench {

// Registers the policy benchmarks over `workload`, which must outlive them.
void registerPolicyBenchmarks(Workload const& workload);

} // namespace bench
