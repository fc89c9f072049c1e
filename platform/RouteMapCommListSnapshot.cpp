#include "QorBgpCommunity/platform/RouteMapCommListSnapshot.h"

namespace Routing::RouteMap {

CommListSnapshot::Notifiee::~Notifiee() = default;

void CommListSnapshot::Notifiee::onComm(Acl::CommunityValue const&) {}

CommListSnapshot::CommListSnapshot() = default;

CommListSnapshot::~CommListSnapshot() = default;

} // namespace Routing::RouteMap
