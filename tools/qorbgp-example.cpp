// qorbgp-example: the README's walk through the library. It decodes the
// community attributes of one received path into interned lists, matches
// them against a route-map regular expression, prints their text and writes
// them back to the wire.
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"

#include <array>
#include <iostream>

using namespace Routing::Bgp;

int main() {
   // The tables every decoded value and list is interned in; one set per
   // process (or per table set the agent keeps).
   CommunityTables::Ptr tables = communityTablesFactory();

   // COMMUNITIES (type 8) as received: 65000:100 and no-export, in any order.
   std::array<U8, 8> const received = {0xff, 0xff, 0xff, 0x01, 0xfd, 0xe8, 0x00, 0x64};
   auto decoded = decodeAttribute(*tables, community, received);
   if (!decoded.ok()) { // a malformed attribute: RFC 7606 says what to do
      std::cerr << decoded.reason << " (" << stringValue(decoded.action) << ")\n";
      return 1;
   }
   CommList::PtrConst comms = std::get<CommList::PtrConst>(decoded.list);

   // EXTENDED COMMUNITIES (type 16): route target 65000:100.
   std::array<U8, 8> const rt = {0x00, 0x02, 0xfd, 0xe8, 0x00, 0x00, 0x00, 0x64};
   ExtCommList::PtrConst extComms = decodeExtCommunities(*tables, rt).list;

   // Equal content is the very same object: a second path shares the list.
   bool const shared = decodeCommunities(*tables, received).list == comms;

   // Route policy: a POSIX regular expression over the list's policy text.
   Routing::RouteMap::PosixRegex const noExport("(^| )no-export( |$)");

   // Wire output: the whole attribute, header included.
   std::string const wire = comms->serialize();

   std::cout << "text:     " << comms->toStrep() << '\n'
             << "shared:   " << shared << '\n'
             << "matches:  " << comms->matchCommunitiesRegex(&noExport) << '\n'
             << "extended: " << extComms->toStrep() << '\n'
             << "wire:     " << hexBytes({reinterpret_cast<U8 const*>(wire.data()), wire.size()})
             << '\n';
   return 0;
}
