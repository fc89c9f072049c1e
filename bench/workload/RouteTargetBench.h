// Route-target constraint on a synthetic VPN table: which peers want a list,
// answered from the membership index against a hand-written sorted-array
// lookup; the report of one membership change over 100,000 live lists; heap
// per membership and per live route target.
#pragma once

namespace bench {

// Registers the route-target benchmarks (they make their own data).
void registerRouteTargetBenchmarks();

} // namespace bench
