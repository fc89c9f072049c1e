// Route-target membership NLRI and text from outside: the NLRI decoder on
// arbitrary bytes, and the membership text parser on arbitrary text.
//
// Input: one selector byte (even: NLRI, odd: text), then the bytes.
//
// Beyond "no crash": a field that decodes encodes back to a field that
// decodes to the same memberships (its own bytes, but for bits past a
// length); what the text parser accepts prints back to text it reads to the
// same membership. Bad text raises Kiv::RangeError, which is caught.
#include "QorBgpCommunity/QorBgp/RouteTargetMembership.h"
#include "QorBgpCommunity/platform/Errors.h"
#include "fuzz/FuzzSupport.h"

#include <string_view>
#include <vector>

using namespace Routing::Bgp;

extern "C" int LLVMFuzzerTestOneInput(U8 const* data, std::size_t size) {
   if (size == 0) {
      return 0;
   }
   std::span<U8 const> const rest(data + 1, size - 1);
   if (data[0] % 2 == 0) {
      auto const decoded = decodeRouteTargetMemberships(rest);
      std::string const nlri = encodeRouteTargetMemberships(decoded.memberships);
      std::vector<U8> const bytes(nlri.begin(), nlri.end());
      auto const again = decodeRouteTargetMemberships(bytes);
      QORBGP_FUZZ_CHECK(again.ok() && again.memberships == decoded.memberships);
      QORBGP_FUZZ_CHECK(!decoded.ok() || bytes.size() == rest.size());
      return 0;
   }
   try {
      auto const membership = RouteTargetMembership::fromStrep(
         std::string_view(reinterpret_cast<char const*>(rest.data()), rest.size()));
      QORBGP_FUZZ_CHECK(RouteTargetMembership::fromStrep(membership.toStrep()) == membership);
   } catch (Kiv::RangeError const&) {
   }
   return 0;
}
