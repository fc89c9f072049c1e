#include "QorBgpCommunity/QorBgp/Parse/ExtCommRouteOrigin.h"

#include "ExtCommTestSupport.h"

namespace Routing::Bgp {
namespace {

using namespace kindTexts;

TEST(ExtCommRouteOrigin, Texts) {
   auto soo2 = extCommRouteOriginAsFactory(content(0x0003fde800000064), false);
   auto soo4 = extCommRouteOriginAsFactory(content(0x0203000100000007), true);
   auto sooIp = extCommRouteOriginIpv4AddressFactory(content(0x01030a000001ffff));
   expectTexts({
      {soo2, diagnostic, "<RouteOrigin2ByteASN 65000:100 0x0003fde800000064>"},
      {soo2, plain, "65000:100"},
      {soo2, classified, "SoO:65000:100"},
      {soo2, ui, "Route-Origin-AS:65000:100"},
      {soo4, diagnostic, "<RouteOrigin4ByteASN 65536:7 0x0203000100000007>"},
      {soo4, classified | asdot, "SoO:1.0:7"},
      {soo4, ui, "Route-Origin-AS4:65536:7"},
      {sooIp, diagnostic, "<RouteOrigin 10.0.0.1:65535 0x01030a000001ffff>"},
      {sooIp, plain, "10.0.0.1:65535"},
      {sooIp, classified, "SoO:10.0.0.1:65535"},
      {sooIp, ui, "Route-Origin-IP:10.0.0.1:65535"},
   });
}

} // namespace
} // namespace Routing::Bgp
