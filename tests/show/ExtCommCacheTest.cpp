#include "QorBgpCommunity/show/ExtCommCache.h"

#include <gtest/gtest.h>

namespace {

TEST(ExtCommCache, TheTwoMapsAreIndependentAndInsertReplaces) {
   auto cache = BgpShowCli::extCommCacheFactory();
   constexpr U64 rt = 0x0002fde800000064;
   EXPECT_EQ(cache->lookup(rt, false), "");
   cache->insert(rt, std::string("65000:100"), false);
   EXPECT_EQ(cache->lookup(rt, false), "65000:100");
   EXPECT_EQ(cache->lookup(rt, true), ""); // only the default map has it
   cache->insert(rt, std::string("RT:65000:100"), false);
   EXPECT_EQ(cache->lookup(rt, false), "RT:65000:100");

   auto shared = std::make_shared<std::string const>("1.0:7");
   cache->extCommToAsdotStringIs(rt, shared);
   EXPECT_EQ(cache->lookup(rt, true).data(), shared->data()); // shared, not copied
   cache->extCommToStringDel(rt);
   EXPECT_EQ(cache->lookup(rt, false), "");
   EXPECT_EQ(cache->lookup(rt, true), "1.0:7");
   cache->extCommToAsdotStringDelAll();
   EXPECT_TRUE(cache->extCommToAsdotString().empty());
}

} // namespace
