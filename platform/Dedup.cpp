#include "platform/Dedup.h"

namespace Zup {

DedupHandle::~DedupHandle() = default;

} // namespace Zup
