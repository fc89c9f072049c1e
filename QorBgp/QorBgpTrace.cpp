#include "QorBgpCommunity/QorBgp/QorBgpTrace.h"

namespace Routing::Bgp {

Kiv::TraceFacility& qorBgpTrace() noexcept {
   static Kiv::TraceFacility facility("QorBgpCommunity");
   return facility;
}

} // namespace Routing::Bgp
