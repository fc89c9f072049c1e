#include "QorBgpCommunity/platform/Assert.h"

#include <gtest/gtest.h>

namespace {

TEST(AssertDeathTest, UndeclaredUnitIsTheFileName) {
   int answer = 41;
   EXPECT_DEATH(QOR_ASSERT(answer == 42), "^AssertTest:[0-9]+: assertion failed: answer == 42");
}

TEST(AssertDeathTest, ExplicitTextReplacesTheExpression) {
   EXPECT_DEATH(QOR_ASSERT_TEXT(false, "extCommPktTypeTransEvpn_ == pktType()"),
                "assertion failed: extCommPktTypeTransEvpn_ == pktType\\(\\)");
}

} // namespace

namespace declared {
QOR_ASSERT_UNIT("SomeModule");

TEST(AssertDeathTest, DeclaredUnitReplacesTheFileName) {
   EXPECT_DEATH(QOR_ASSERT(false), "^SomeModule:[0-9]+: assertion failed: false");
}

} // namespace declared
