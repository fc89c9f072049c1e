#include "QorBgpCommunity/QorBgp/Parse/ExtCommTunnelEncap.h"

#include "ExtCommTestSupport.h"

namespace Routing::Bgp {
namespace {

using namespace kindTexts;

TEST(ExtCommTunnelEncap, Texts) {
   auto vxlan = extCommTunnelEncapFactory(content(0x030c000000000008));
   // Only the last two value octets are the tunnel type.
   auto geneve = extCommTunnelEncapFactory(content(0x030cffffffff0013));
   auto reserved = extCommTunnelEncapFactory(content(0x030c000000000000));
   auto unassigned = extCommTunnelEncapFactory(content(0x030c00000000ffff));
   expectTexts({
      {vxlan, diagnostic, "<TunnelEncap 8:tunnelTypeVxlan 0x030c000000000008>"},
      {vxlan, plain, "tunnelTypeVxlan"},
      {vxlan, classified, "TunnelEncap:tunnelTypeVxlan"},
      {vxlan, ui, "TunnelEncap:tunnelTypeVxlan"},
      {geneve, diagnostic, "<TunnelEncap 19:tunnelTypeGeneve 0x030cffffffff0013>"},
      {reserved, diagnostic, "<TunnelEncap 0:tunnelTypeUnknown 0x030c000000000000>"},
      {reserved, plain, "tunnelTypeUnknown-0"},
      {unassigned, diagnostic, "<TunnelEncap 65535:tunnelTypeUnknown 0x030c00000000ffff>"},
      {unassigned, ui, "TunnelEncap:tunnelTypeUnknown-65535"},
   });
}

} // namespace
} // namespace Routing::Bgp
