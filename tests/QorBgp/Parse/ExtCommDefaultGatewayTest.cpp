#include "QorBgpCommunity/QorBgp/Parse/ExtCommDefaultGateway.h"

#include "ExtCommTestSupport.h"

namespace Routing::Bgp {
namespace {

using namespace kindTexts;

TEST(ExtCommDefaultGateway, Texts) {
   auto gateway = extCommDefaultGatewayFactory(content(0x030d000000000000));
   expectTexts({
      {gateway, diagnostic, "<DefaultGateway 0x030d000000000000>"},
      {gateway, plain, "DefaultGateway"},
      {gateway, ui, "DefaultGateway"},
      {gateway, everyFlag, "DefaultGateway"},
   });
}

} // namespace
} // namespace Routing::Bgp
