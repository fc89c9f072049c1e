#include "QorBgpCommunity/QorBgp/ExtCommIp6List.h"

#include "QorBgpCommunity/QorBgp/ExtCommIp6DedupTable.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtComm.h"
#include "tests/platform/HoardTestSegment.h"

#include <gtest/gtest.h>

#include <sstream>

namespace Routing::Bgp {
namespace {

ExtCommIp6Content content(U8 type, U8 subtype, char const* addr, U16 localAdmin) {
   return ExtCommIp6Content(type, subtype, Qornet::Ip6Addr::fromStrep(addr), localAdmin);
}

class ExtCommIp6ListTest : public testing::Test {
 protected:
   BgpParseExtCommContainerSm::Ptr recognition = bgpParseExtCommContainerSmFactory();
   ExtCommIp6DedupTable::Ptr values = extCommIp6DedupTableFactory(recognition->extCommParser());
   ExtCommIp6ListDedupTable::Ptr lists = extCommIp6ListDedupTableFactory();

   ExtCommIp6List::PtrConst publish(std::initializer_list<ExtCommIp6Content> contents) {
      ExtCommIp6List::Ptr list = extCommIp6ListFactory();
      for (ExtCommIp6Content const& c : contents) {
         list->commIs(ExtCommIp6::dedupContent(values.get(), c));
      }
      return list->dedup(lists.get());
   }
};

TEST_F(ExtCommIp6ListTest, PolicyAndDiagnosticTexts) {
   ExtCommIp6List::PtrConst list =
      publish({content(0x40, 0x05, "::1", 0xfffe), content(0x00, 0x02, "2001:db8::1", 0x0102)});
   EXPECT_EQ(list->commsStringForm(), "2001:db8::1:258 ::1:65534 ");
   EXPECT_EQ(publish({})->commsStringForm(), "");
   std::string const members =
      "<extCommIp6PktTypeTransIpv6Address extCommIp6PktSubtypeRouteTarget addr=2001:db8::1 "
      "localAdmin=258> <extCommIp6PktTypeNonTransIpv6Address subtype=5 addr=::1 localAdmin=65534>";
   EXPECT_EQ(list->toStrep(), "[ " + members + " ]");
   EXPECT_EQ(publish({})->toStrep(), "[  ]");

   std::ostringstream os;
   os << std::hex << static_cast<ExtCommIp6List const*>(nullptr) << ' ' << list.get() << ' ' << 255;
   EXPECT_EQ(os.str(), "NULL [ " + members + " ] ff");
}

TEST_F(ExtCommIp6ListTest, DehoardRestoresTheValuesAsPlainDetachedOnes) {
   HoardTestSegment segment(true);
   hoard::StoreWriter writer = segment.create(1 << 16);
   ExtCommIp6List::PtrConst list =
      publish({content(0x00, 0x02, "2001:db8::1", 7), content(0x00, 0x02, "2001:db8::1", 3)});
   hoard::Location const at = list->hoard(writer);
   hoard::StoreManager store = segment.open();
   ExtCommIp6List::PtrConst restored = ExtCommIp6List::dehoard(&at, &store);
   ASSERT_TRUE(restored);
   ASSERT_EQ(restored->comms(), 2u);
   for (U32 i = 0; i < 2; ++i) {
      ExtCommIp6 const& value = *(*restored->commVectorRawPtr())[i];
      EXPECT_EQ(value.getContent(), (*list->commVectorRawPtr())[i]->getContent());
      EXPECT_EQ(value.dedupState(), Zup::DedupState::detached);
   }
   EXPECT_TRUE(restored->commVectorSorted());
   EXPECT_EQ(restored->dedupState(), Zup::DedupState::local);
   writer.beginChange();
   EXPECT_FALSE(ExtCommIp6List::dehoard(&at, &store));
}

} // namespace
} // namespace Routing::Bgp
