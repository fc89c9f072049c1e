#include "QorBgpCommunity/QorBgp/Parse/ExtCommOriginValidationState.h"

#include "ExtCommTestSupport.h"

namespace Routing::Bgp {
namespace {

using namespace kindTexts;

TEST(ExtCommOriginValidationState, Texts) {
   using State = OriginValidationState;
   auto state = [](State s) {
      return extCommOriginValidationStateFactory(
         ExtCommOriginValidationState::buildExtCommContent(s));
   };
   auto octet3 = extCommOriginValidationStateFactory(content(0x4300000000000003));
   auto octet255 = extCommOriginValidationStateFactory(content(0x43000000000000ff));
   expectTexts({
      {state(State::valid), diagnostic, "<OriginValidationState valid 0x4300000000000000>"},
      {state(State::valid), ui, "Origin-Validation-State:valid"},
      {state(State::valid), classified, ""},
      {state(State::valid), plain, ""},
      {state(State::notFound), diagnostic, "<OriginValidationState not-found 0x4300000000000001>"},
      {state(State::notFound), everyFlag, "Origin-Validation-State:not-found"},
      {state(State::invalid), diagnostic, "<OriginValidationState invalid 0x4300000000000002>"},
      {state(State::invalid), ui, "Origin-Validation-State:invalid"},
      {octet3, diagnostic, "<OriginValidationState unknown(3) 0x4300000000000003>"},
      {octet3, ui, "Origin-Validation-State:unknown"},
      {octet3, classified, ""},
      {octet255, diagnostic, "<OriginValidationState unknown(255) 0x43000000000000ff>"},
   });
}

} // namespace
} // namespace Routing::Bgp
