#include "platform/Errors.h"

#include <gtest/gtest.h>

namespace {

template <class E>
void expectCatchableWithItsMessage() {
   constexpr char const* message = "value < min or > max not allowed";
   try {
      throw E(message);
   } catch (E const& e) {
      EXPECT_STREQ(e.what(), message);
   }
   EXPECT_THROW(throw E(message), Kiv::Error);
   EXPECT_THROW(throw E(std::string(message)), std::runtime_error);
}

TEST(Errors, CatchableAsItselfAndItsBasesWithTheMessageUnchanged) {
   expectCatchableWithItsMessage<Kiv::RangeError>();
   expectCatchableWithItsMessage<Kiv::NullArgumentError>();
   expectCatchableWithItsMessage<Kiv::NotDeletableError>();
}

} // namespace
