#include "QorBgpCommunity/platform/QorBgpGlobals.h"

#include <atomic>

namespace Routing::Bgp {

namespace {
std::atomic<bool> multiThreadedSetting{false};
} // namespace

bool QorBgpGlobals::multiThreaded() noexcept {
   return multiThreadedSetting.load(std::memory_order_relaxed);
}

void QorBgpGlobals::multiThreadedIs(bool on) noexcept {
   multiThreadedSetting.store(on, std::memory_order_relaxed);
   if (on) {
      Kiv::PtrInterface::threadSafeIs(true);
   }
}

BasicDedupTable_::BasicDedupTable_()
    : dedupTable_(Zup::dedupHashTableFactory(QorBgpGlobals::multiThreaded())) {}

BasicDedupTable_::~BasicDedupTable_() = default;

} // namespace Routing::Bgp
