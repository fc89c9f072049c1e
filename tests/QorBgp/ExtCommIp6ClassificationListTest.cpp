#include "QorBgpCommunity/QorBgp/ExtCommIp6ClassificationList.h"

#include <gtest/gtest.h>

#include <sstream>

namespace Routing::Bgp {
namespace {

TEST(ExtCommIp6ClassificationList, DiagnosticText) {
   ExtCommIp6Content const rt(0x00, 0x02, Qornet::Ip6Addr::fromStrep("2001:db8::1"), 258);
   auto list = extCommIp6ClassificationListFactory(extCommClassificationRouteTarget);
   EXPECT_EQ(list->toStrep(), "[  ]");
   ExtCommIp6::Ptr comm = extCommIp6Factory(extCommClassificationRouteTarget, rt);
   comm->dedupStateIs(Zup::DedupState::detached);
   list->commIs(comm);
   std::ostringstream os;
   os << std::hex << static_cast<ExtCommIp6ClassificationList const*>(nullptr) << ' ' << list.get()
      << ' ' << 255;
   EXPECT_EQ(os.str(),
             "NULL [ <extCommIp6PktTypeTransIpv6Address addr=2001:db8::1 localAdmin=258> ] ff");
}

} // namespace
} // namespace Routing::Bgp
