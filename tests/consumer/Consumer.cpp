// Decodes one COMMUNITIES attribute through the installed library and checks
// what comes back: exit 0 when the text, the sharing and the wire form are
// right, 1 otherwise.
#include <QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h>
#include <QorBgpCommunity/QorBgpVersion.h>

#include <array>
#include <iostream>

using namespace Routing::Bgp;

static_assert(QORBGP_VERSION >= 100, "the version header gives the version as a number");

int main() {
   CommunityTables::Ptr tables = communityTablesFactory();
   std::array<U8, 8> const received = {0xff, 0xff, 0xff, 0x01, 0xfd, 0xe8, 0x00, 0x64};
   auto decoded = decodeCommunities(*tables, received);
   std::string const wire = decoded.list ? decoded.list->serialize() : std::string();
   bool const ok = decoded.ok() && decoded.list->toStrep() == "65000:100 no-export" &&
                   decodeCommunities(*tables, received).list == decoded.list &&
                   hexBytes({reinterpret_cast<U8 const*>(wire.data()), wire.size()}) ==
                      "c00808fde80064ffffff01";
   std::cout << "QorBgpCommunity " << QORBGP_VERSION_STRING << ": "
             << (ok ? "ok" : "unexpected result") << '\n';
   return ok ? 0 : 1;
}
