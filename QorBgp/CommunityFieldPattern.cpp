#include "QorBgpCommunity/QorBgp/CommunityFieldPattern.h"

#include "QorBgpCommunity/platform/Errors.h"

namespace Routing::Bgp {

CommunityFieldPattern CommunityFieldPattern::range(U32 low, U32 high) {
   if (low > high) {
      throw Kiv::RangeError("range " + std::to_string(low) + "-" + std::to_string(high) +
                            " is empty");
   }
   return {Kind::range, low, high};
}

std::string CommunityFieldPattern::toStrep() const {
   switch (kind_) {
   case Kind::any:
      return "*";
   case Kind::exact:
      return std::to_string(low_);
   case Kind::range:
      return std::to_string(low_) + "-" + std::to_string(high_);
   case Kind::peerAs:
      return "peer-as";
   case Kind::localAs:
      return "local-as";
   }
   return {};
}

} // namespace Routing::Bgp
