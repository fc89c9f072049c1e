#include "QorBgpCommunity/platform/Ptr.h"

namespace Kiv {

bool PtrInterface::threadSafe_ = false;

PtrInterface::~PtrInterface() = default;

void PtrInterface::zeroReferencesIs() const noexcept { delete this; }

void PtrInterface::referencesDecHooked() const noexcept {
   if (referencesDecReturnCount() == 0) {
      zeroReferencesIs();
   }
}

} // namespace Kiv
