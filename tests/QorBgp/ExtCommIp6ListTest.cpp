#include "QorBgp/ExtCommIp6List.h"

#include "QorBgp/ExtCommIp6DedupTable.h"
#include "QorBgp/Parse/ExtComm.h"
#include "platform/DumpContext.h"
#include "platform/Errors.h"

#include <gtest/gtest.h>

#include <sstream>

namespace Routing::Bgp {
namespace {

ExtCommIp6Content content(U8 type, U8 subtype, char const* addr, U16 localAdmin) {
   return ExtCommIp6Content(type, subtype, Qornet::Ip6Addr::fromStrep(addr), localAdmin);
}

ExtCommIp6Content const rtA = content(0x00, 0x02, "2001:db8::1", 0x0102);
ExtCommIp6Content const rtB = content(0x00, 0x02, "2001:db8::2", 7);
ExtCommIp6Content const nonTrans = content(0x40, 0x05, "::1", 0xfffe);

std::string hex(std::string const& bytes) {
   static char const digits[] = "0123456789abcdef";
   std::string out;
   for (unsigned char c : bytes) {
      out += digits[c >> 4];
      out += digits[c & 15];
   }
   return out;
}

class ExtCommIp6ListTest : public testing::Test {
 protected:
   BgpParseExtCommContainerSm::Ptr recognition = bgpParseExtCommContainerSmFactory();
   ExtCommIp6DedupTable::Ptr values = extCommIp6DedupTableFactory(recognition->extCommParser());
   ExtCommIp6ListDedupTable::Ptr lists = extCommIp6ListDedupTableFactory();

   ExtCommIp6::PtrConst value(ExtCommIp6Content const& c) {
      return ExtCommIp6::dedupContent(values.get(), c);
   }
   // No recognition rule classifies IPv6 values: intern one of `classification` by hand.
   ExtCommIp6::PtrConst classified(ExtCommClassification classification,
                                   ExtCommIp6Content const& c) {
      return values->dedupTable()->dedupAs<ExtCommIp6>(extCommIp6Factory(classification, c));
   }
   ExtCommIp6List::Ptr build(std::initializer_list<ExtCommIp6::PtrConst> comms) {
      ExtCommIp6List::Ptr list = extCommIp6ListFactory();
      for (ExtCommIp6::PtrConst const& comm : comms) {
         list->commIs(comm);
      }
      return list;
   }
   ExtCommIp6List::PtrConst publish(std::initializer_list<ExtCommIp6::PtrConst> comms) {
      return build(comms)->dedup(lists.get());
   }
};

TEST_F(ExtCommIp6ListTest, EqualSetsInAnyOrderInternToOneSortedList) {
   ExtCommIp6List::PtrConst a = publish({value(nonTrans), value(rtB), value(rtA), value(rtB)});
   ExtCommIp6List::PtrConst b = publish({value(rtA), value(nonTrans), value(rtB)});
   EXPECT_EQ(a, b);
   ASSERT_EQ(a->totalCommunities(), 3u);
   EXPECT_EQ(a->commVectorRawPtr()->capacity(), 3u);
   EXPECT_EQ((*a->commVectorRawPtr())[0]->community(), rtA);
   EXPECT_EQ((*a->commVectorRawPtr())[2]->community(), nonTrans);
   EXPECT_EQ(a->lookupExtComm(rtB), value(rtB));
   EXPECT_EQ(a->comm(content(0x00, 0x02, "2001:db8::2", 8)), nullptr);
   EXPECT_EQ(a->comm(content(0xff, 0, "::", 0)), nullptr);
   EXPECT_EQ(a->classificationList(extCommClassificationUnSpecified)->comms(), 3u);
   EXPECT_EQ(a->classificationList(extCommClassificationRouteTarget), nullptr);
   EXPECT_EQ(a->classificationList(extCommClassificationOneBeyondLast), nullptr);
   EXPECT_NE(publish({value(rtA), value(rtB)}), a);

   a = nullptr;
   b = nullptr;
   EXPECT_EQ(lists->dedupTable()->size(), 0u);
   EXPECT_EQ(lists->extCommIp6ClassificationListDedupTable()->size(), 0u);
   EXPECT_TRUE(publish({value(rtA)})->isDeduped());
}

TEST_F(ExtCommIp6ListTest, ListsShareTheClassificationListsTheyHaveInCommon) {
   ExtCommIp6::PtrConst rt1 = classified(extCommClassificationRouteTarget, rtA);
   ExtCommIp6::PtrConst rt2 = classified(extCommClassificationRouteTarget, rtB);
   ExtCommIp6List::PtrConst red = publish({rt2, value(nonTrans), rt1});
   ExtCommIp6List::PtrConst blue = publish({rt1, rt2});
   EXPECT_NE(red, blue);
   auto rts = red->classificationList(extCommClassificationRouteTarget);
   ASSERT_TRUE(rts);
   EXPECT_EQ(rts, blue->classificationList(extCommClassificationRouteTarget));
   EXPECT_EQ(rts->comm(rtB), rt2);
   EXPECT_EQ(blue->classificationList(extCommClassificationUnSpecified), nullptr);
   EXPECT_EQ(lists->extCommIp6ClassificationListDedupTable()->size(), 2u);
}

TEST_F(ExtCommIp6ListTest, SerializeWritesTwentyBytesPerSelectedMember) {
   ExtCommIp6List::PtrConst list = publish({value(nonTrans), value(rtA), value(rtA)});
   std::string const rtAWire = "0002" "20010db8000000000000000000000001" "0102";
   std::string const nonTransWire = "4005" "00000000000000000000000000000001" "fffe";
   EXPECT_EQ(hex(list->serialize(true)), "c01928" + rtAWire + nonTransWire);
   // The duplicate rtA is not counted: the header matches the one member written.
   EXPECT_EQ(hex(list->serialize(false)), "c01914" + rtAWire);
   EXPECT_EQ(publish({value(nonTrans)})->serialize(false), "");

   ExtCommIp6List::PtrConst empty = publish({});
   EXPECT_EQ(empty->serialize(true), "");
   EXPECT_EQ(empty->serialize(false), "");
   EXPECT_EQ(empty->commsStringForm(), "");
   EXPECT_EQ(empty->hash(), 0u);
}

TEST_F(ExtCommIp6ListTest, ThirteenMembersNeedTheExtendedLengthHeader) {
   ExtCommIp6List::Ptr list = extCommIp6ListFactory();
   list->expectedCommunityCountIs(13);
   for (U16 i = 0; i < 13; ++i) {
      list->commIs(value(content(0x00, 0x02, "2001:db8::1", i)));
   }
   std::string const wire = list->dedup(lists.get())->serialize(true);
   ASSERT_EQ(wire.size(), 4u + 260u);
   EXPECT_EQ(hex(wire.substr(0, 4)), "d0190104");
   EXPECT_EQ(hex(wire.substr(wire.size() - 20)), "0002" "20010db8000000000000000000000001" "000c");
}

TEST_F(ExtCommIp6ListTest, Texts) {
   ExtCommIp6List::PtrConst list = publish({value(nonTrans), value(rtA)});
   EXPECT_EQ(list->commsStringForm(), "2001:db8::1:258 ::1:65534 ");
   std::string const members =
      "<extCommIp6PktTypeTransIpv6Address extCommIp6PktSubtypeRouteTarget addr=2001:db8::1 "
      "localAdmin=258> <extCommIp6PktTypeNonTransIpv6Address subtype=5 addr=::1 localAdmin=65534>";
   EXPECT_EQ(list->toStrep(), "[ " + members + " ]");
   EXPECT_EQ(list->classificationList(extCommClassificationUnSpecified)->toStrep(),
             "[ " + members + " ]");
   EXPECT_EQ(publish({})->toStrep(), "[  ]");

   std::ostringstream os;
   os << std::hex << static_cast<ExtCommIp6List const*>(nullptr) << ' '
      << static_cast<ExtCommIp6ClassificationList const*>(nullptr) << ' ' << list.get() << ' '
      << 255;
   EXPECT_EQ(os.str(), "NULL NULL [ " + members + " ] ff");
}

TEST_F(ExtCommIp6ListTest, SnapshotsHoldClassificationListsThenMembers) {
   struct Counter : ExtCommIp6ListSnapshot::Notifiee {
      int lists = 0, comms = 0;
      void onClassificationList(ExtCommClassification const&) override { ++lists; }
      void onComm(ExtCommIp6Content const&) override { ++comms; }
   };
   auto empty = extCommIp6ListFactory()->commSnapshot();
   EXPECT_TRUE(empty->hasNotificationActive());
   EXPECT_TRUE(empty->comm().empty());

   ExtCommIp6List::PtrConst list =
      publish({value(rtA), classified(extCommClassificationColor, rtB)});
   auto snapshot = list->commSnapshot();
   EXPECT_EQ(snapshot->classificationList().size(), 2u);
   ASSERT_EQ(snapshot->comm().size(), 2u);
   EXPECT_EQ(snapshot->comm().begin()->first, rtA);
   Counter counter;
   counter.notifierIs(snapshot.get());
   snapshot->commDel(rtA);
   snapshot->commDel(rtA);
   snapshot->classificationListDelAll();
   EXPECT_EQ(counter.comms, 1);
   EXPECT_EQ(counter.lists, 2);
   EXPECT_THROW(snapshot->commIs(nullptr), Kiv::NullArgumentError);
   EXPECT_THROW(snapshot->classificationListIs(nullptr), Kiv::NullArgumentError);

   auto colors = list->classificationList(extCommClassificationColor)->commSnapshot();
   EXPECT_EQ(colors->classification(), extCommClassificationColor);
   EXPECT_EQ(colors->comm().size(), 1u);
   EXPECT_THROW(colors->commIs(nullptr), Kiv::NullArgumentError);
   EXPECT_TRUE(extCommIp6ClassificationListSnapshotFactory(extCommClassificationColor)
                  ->hasNotificationActive());
}

TEST_F(ExtCommIp6ListTest, DumpLabelsBothTables) {
   ExtCommIp6List::PtrConst list = publish({value(rtA)});
   Kiv::DumpContext context;
   lists->dumpState(context, 0);
   EXPECT_EQ(context.str(), "ExtCommIp6ListDedupTable\n"
                            "  extCommIp6\n"
                            "    DedupHashTable (single-threaded): 1 entries\n"
                            "  extCommIp6Classification\n"
                            "    DedupHashTable (single-threaded): 1 entries\n");
}

TEST_F(ExtCommIp6ListTest, ContractBreachesAreFatal) {
   ExtCommIp6List::Ptr list = extCommIp6ListFactory();
   EXPECT_DEATH(list->commIs(nullptr), "assertion failed: __null != comm");
   EXPECT_DEATH(list->commIs(extCommIp6Factory(extCommClassificationUnSpecified, rtA)),
                "assertion failed: __null == \\( comm \\)");
   list->commIs(value(rtA));
   EXPECT_DEATH(list->comm(rtA), "assertion failed: commVectorSorted[[:space:]]");
   EXPECT_DEATH(list->totalCommunities(), "assertion failed: commVectorSorted\\(\\)");
   EXPECT_DEATH(list->serialize(true), "assertion failed: commVectorSorted\\(\\)");
   list->sortComms();
   EXPECT_EQ(list->comm(rtA), value(rtA));
   EXPECT_DEATH(list->classificationList(extCommClassificationUnSpecified),
                "assertion failed: __null == \\( this \\) \\|\\| \\( this \\)->dedupState\\(\\) != "
                "Zup::dedupHandleStateNeverDeduped\\(\\)");
   ExtCommIp6List::PtrConst published = list->dedup(lists.get());
   EXPECT_DEATH(list->dedup(lists.get()),
                "assertion failed: __null == \\( this \\) \\|\\| \\( this \\)->dedupState\\(\\) == "
                "Zup::dedupHandleStateNeverDeduped\\(\\)");
   auto unsorted = extCommIp6ClassificationListFactory(extCommClassificationColor);
   EXPECT_DEATH(unsorted->hash(), "assertion failed: commVectorSorted\\(\\)");
   EXPECT_DEATH(unsorted->compare(unsorted.get()), "assertion failed: commVectorSorted\\(\\)");
}

} // namespace
} // namespace Routing::Bgp
