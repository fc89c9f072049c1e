#include "QorBgpCommunity/QorBgp/Parse/ExtCommRouteTarget.h"

#include "ExtCommTestSupport.h"

namespace Routing::Bgp {
namespace {

using namespace kindTexts;

TEST(ExtCommRouteTarget, Texts) {
   auto rt2 = extCommRouteTargetAsFactory(content(0x0002fde800000064), false);
   auto rt4 = extCommRouteTargetAsFactory(content(0x0202fa56ea000064), true);
   auto rtMax = extCommRouteTargetAsFactory(content(0x0002ffffffffffff), false);
   auto rtIp = extCommRouteTargetIpv4AddressFactory(content(0x0102c00002010064));
   expectTexts({
      {rt2, diagnostic, "<RouteTarget2ByteASN 65000:100 0x0002fde800000064>"},
      {rt2, plain, "65000:100"},
      {rt2, StrepFormat::flagDefault, "65000:100"},
      {rt2, classified, "RT:65000:100"},
      {rt2, ui, "Route-Target-AS:65000:100"},
      {rt2, ui | asdot, "Route-Target-AS:65000:100"},
      {rtMax, classified, "RT:65535:4294967295"},
      {rt4, diagnostic, "<RouteTarget4ByteASN 4200000000:100 0x0202fa56ea000064>"},
      {rt4, plain, "4200000000:100"},
      {rt4, asdot, "64086.59904:100"},
      {rt4, classified | asdot, "RT:64086.59904:100"},
      {rt4, ui, "Route-Target-AS4:4200000000:100"},
      {rt4, everyFlag, "Route-Target-AS4:64086.59904:100"},
      {rtIp, diagnostic, "<RouteTarget 192.0.2.1:100 0x0102c00002010064>"},
      {rtIp, plain, "192.0.2.1:100"},
      {rtIp, classified, "RT:192.0.2.1:100"},
      {rtIp, everyFlag, "Route-Target-IP:192.0.2.1:100"},
   });
}

} // namespace
} // namespace Routing::Bgp
