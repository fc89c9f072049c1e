#include "QorBgpCommunity/QorBgp/ExtCommIp6DedupTable.h"

#include "QorBgpCommunity/QorBgp/Parse/ExtComm.h"
#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

#include <typeinfo>

namespace Routing::Bgp {
namespace {

TEST(ExtCommIp6DedupTable, OneObjectPerContentTypedByTheRules) {
   auto recognition = bgpParseExtCommContainerSmFactory();
   auto table = extCommIp6DedupTableFactory(recognition->extCommParser());
   auto addr = Qornet::Ip6Addr::parse("2001:db8::1").value();
   auto intern = [&](U8 type, U16 localAdmin) {
      return ExtCommIp6::dedupContent(table.get(), ExtCommIp6Content(type, 0x02, addr, localAdmin));
   };
   ExtCommIp6::PtrConst a = intern(0x00, 100);
   EXPECT_EQ(intern(0x00, 100), a);
   EXPECT_NE(intern(0x00, 101), a);
   EXPECT_EQ(typeid(*a), typeid(ExtCommIp6Subtyped));
   ExtCommIp6::PtrConst plain = intern(0x80, 100);
   EXPECT_EQ(typeid(*plain), typeid(ExtCommIp6));
   EXPECT_EQ(plain->classification(), extCommClassificationUnSpecified);
   a = nullptr;
   plain = nullptr;
   EXPECT_EQ(table->dedupTable()->size(), 0u);
   EXPECT_THROW(extCommIp6DedupTableFactory(nullptr), Kiv::NullArgumentError);
}

} // namespace
} // namespace Routing::Bgp
