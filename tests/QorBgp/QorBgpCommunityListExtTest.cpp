#include "QorBgp/QorBgpCommunityListExtDedupTable.h"

#include "QorBgp/Parse/ExtComm.h"
#include "QorBgp/QorBgpCommunityDedupTable.h"
#include "platform/DumpContext.h"
#include "platform/Errors.h"

#include <gtest/gtest.h>

#include <cstring>

namespace Routing::Bgp {
namespace {

constexpr U64 rtA = 0x0002fde800000064;     // 65000:100
constexpr U64 rtB = 0x0002fde8000000c8;     // 65000:200
constexpr U64 color = 0x030b000000000064;   // colour 100
constexpr U64 color2 = 0x030b0000000000c8;  // colour 200
constexpr U64 lbw1M = 0x4004fde849742400;   // 1e6 bytes/s
constexpr U64 lbw2M = 0x4004fde849f42400;   // 2e6 bytes/s
constexpr U64 ovs = 0x4300000000000000;     // origin validation: valid

class ExtCommListTest : public testing::Test {
 protected:
   BgpParseExtCommContainerSm::Ptr recognition = bgpParseExtCommContainerSmFactory();
   ExtCommDedupTable::Ptr values = extCommDedupTableFactory(recognition->extCommParser());
   ExtCommListDedupTable::Ptr lists = extCommListDedupTableFactory();

   ExtComm::PtrConst value(U64 word) {
      return ExtComm::dedupContent(values.get(), ExtCommContent(word));
   }
   ExtCommList::Ptr build(std::initializer_list<U64> words) {
      ExtCommList::Ptr list = extCommListFactory();
      for (U64 w : words) {
         list->commIs(value(w));
      }
      return list;
   }
   ExtCommList::PtrConst publish(std::initializer_list<U64> words) {
      return build(words)->dedup(lists.get());
   }
   std::size_t collectionSize() const {
      return lists->notifyingRtExtCommListCollection()->rtExtCommLists().size();
   }
};

std::string hex(std::string const& bytes) {
   static char const digits[] = "0123456789abcdef";
   std::string out;
   for (unsigned char c : bytes) {
      out += digits[c >> 4];
      out += digits[c & 15];
   }
   return out;
}

TEST_F(ExtCommListTest, EqualSetsInAnyOrderInternToOneTrimmedList) {
   ExtCommList::PtrConst a = publish({color, rtB, rtA, rtA});
   ExtCommList::PtrConst b = publish({rtA, color, rtB});
   EXPECT_EQ(a, b);
   ASSERT_EQ(a->comms(), 3u);
   EXPECT_EQ(a->commVectorRawPtr()->capacity(), 3u);
   EXPECT_EQ((*a->commVectorRawPtr())[0]->community(), rtA);
   EXPECT_EQ(a->comm(rtB)->community(), rtB);
   EXPECT_EQ(a->comm(rtB + 1), nullptr);
   EXPECT_EQ(a->classificationList(extCommClassificationLinkBandwidth), nullptr);
   EXPECT_EQ(a->classificationList(extCommClassificationOneBeyondLast), nullptr);
   EXPECT_EQ(a->classificationList(extCommClassificationColor)->comms(), 1u);
   EXPECT_NE(publish({rtA, rtB}), a);

   // Released lists leave the table; publishing again interns anew.
   a = nullptr;
   b = nullptr;
   EXPECT_EQ(lists->dedupTable()->size(), 0u);
   EXPECT_TRUE(publish({rtA, rtB, color})->isDeduped());
}

TEST_F(ExtCommListTest, ListsWithTheSameRouteTargetsShareOneNotifier) {
   ExtCommList::PtrConst red = publish({rtA, rtB, color});
   ExtCommList::PtrConst blue = publish({rtB, rtA, color2});
   EXPECT_NE(red, blue);
   auto rts = red->classificationList(extCommClassificationRouteTarget);
   EXPECT_EQ(rts, blue->classificationList(extCommClassificationRouteTarget));
   auto const& rtList = static_cast<RtExtCommClassificationList const&>(*rts);
   ASSERT_TRUE(rtList.lifeTimeNotifier());
   EXPECT_EQ(rtList.lifeTimeNotifier()->rtExtCommListRawPtr(), &rtList);
   EXPECT_EQ(collectionSize(), 1u);

   red = nullptr;
   EXPECT_EQ(collectionSize(), 1u);
   blue = nullptr;
   rts = nullptr;
   EXPECT_EQ(collectionSize(), 0u);
}

TEST_F(ExtCommListTest, TearingTheTableDownEmptiesTheCollection) {
   ExtCommList::PtrConst list = publish({rtA});
   auto collection = lists->notifyingRtExtCommListCollection();
   EXPECT_EQ(collection->rtExtCommLists().size(), 1u);
   auto rts = list->classificationList(extCommClassificationRouteTarget);
   lists = nullptr;
   EXPECT_TRUE(collection->rtExtCommLists().empty());
   EXPECT_FALSE(static_cast<RtExtCommClassificationList const&>(*rts).lifeTimeNotifier());
}

TEST_F(ExtCommListTest, SerializationSelectsAndCounts) {
   ExtCommList::PtrConst list = publish({ovs, lbw1M, color, rtA});
   EXPECT_EQ(list->totalTransitiveCommunities(), 2u);
   EXPECT_TRUE(list->hasLinkBandwidth());
   EXPECT_TRUE(list->hasOriginValidationState());
   struct Row {
      ExtCommList::Serialization s;
      char const* bytes;
   };
   Row const rows[] = {
      {ExtCommList::serialization(true, false, false),
       "c01020" "0002fde800000064" "030b000000000064" "4004fde849742400" "4300000000000000"},
      {ExtCommList::serialization(false, false, false), "c01010" "0002fde800000064" "030b000000000064"},
      {ExtCommList::serialization(false, true, false),
       "c01018" "0002fde800000064" "030b000000000064" "4004fde849742400"},
      {ExtCommList::serialization(false, true, true),
       "c01020" "0002fde800000064" "030b000000000064" "4004fde849742400" "4300000000000000"},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(row.s.valueToStrep());
      EXPECT_EQ(hex(list->serialize(row.s)), row.bytes);
   }
   EXPECT_EQ(publish({lbw1M, ovs})->serialize(ExtCommList::serialization(false, false, false)), "");

   // Two link bandwidths: the header announces one, the body carries both.
   ExtCommList::PtrConst two = publish({lbw1M, lbw2M});
   EXPECT_EQ(hex(two->serialize(ExtCommList::serialization(false, true, false))),
             "c01008" "4004fde849742400" "4004fde849f42400");
}

TEST_F(ExtCommListTest, ExtendedLengthHeaderFromThirtyTwoValues) {
   ExtCommList::Ptr list = extCommListFactory();
   for (U64 i = 0; i < 32; ++i) {
      list->commIs(value(rtA + i));
   }
   std::string wire = list->dedup(lists.get())->serialize(ExtCommList::serialization(true, false, false));
   ASSERT_EQ(wire.size(), 4u + 256u);
   EXPECT_EQ(hex(wire.substr(0, 4)), "d0100100");
}

TEST_F(ExtCommListTest, PruningKeepsTheBestLinkBandwidth) {
   ExtCommList::PtrConst two = publish({rtA, lbw2M, lbw1M});
   EXPECT_TRUE(two->hasPrunableValues());
   ExtCommList::PtrConst pruned = two->prune(lists.get());
   ASSERT_EQ(pruned->comms(), 2u);
   EXPECT_EQ(pruned->comm(lbw1M)->community(), lbw1M); // the smaller bandwidth is "better"
   EXPECT_EQ(pruned->comm(lbw2M), nullptr);
   ExtCommList::PtrConst one = publish({rtA, lbw1M});
   EXPECT_FALSE(one->hasPrunableValues());
   EXPECT_EQ(one->prune(lists.get()), one);

   // Equally good ones: the first added stays best.
   auto lb = linkBandwidthExtCommClassificationListFactory();
   ExtComm::PtrConst first = value(lbw1M);
   lb->commIs(first);
   EXPECT_FALSE(lb->hasPrunableValues());
   lb->commIs(value(0x4004000a49742400)); // same bandwidth, another AS
   EXPECT_TRUE(lb->hasPrunableValues());
   EXPECT_EQ(lb->prune(), ExtCommVector{first});
}

TEST_F(ExtCommListTest, SnapshotsNotifyOncePerEntry) {
   struct Counter : ExtCommListSnapshot::Notifiee {
      int lists = 0, comms = 0;
      void onClassificationList(ExtCommClassification const&) override { ++lists; }
      void onComm(U64 const&) override { ++comms; }
   };
   auto empty = extCommListFactory()->commSnapshot();
   EXPECT_TRUE(empty->hasNotificationActive());
   EXPECT_TRUE(empty->comm().empty());

   ExtCommList::PtrConst list = publish({rtA, rtB, color});
   auto snapshot = list->snapshot();
   EXPECT_EQ(snapshot->classificationList().size(), 2u);
   EXPECT_EQ(snapshot->comm().size(), 3u);
   Counter counter;
   counter.notifierIs(snapshot.get());
   snapshot->commDel(rtA);
   snapshot->classificationListDelAll();
   EXPECT_EQ(counter.comms, 1);
   EXPECT_EQ(counter.lists, 2);
   EXPECT_THROW(snapshot->commIs(nullptr), Kiv::NullArgumentError);
   EXPECT_THROW(snapshot->classificationListIs(nullptr), Kiv::NullArgumentError);
   auto rtSnapshot = list->classificationList(extCommClassificationRouteTarget)->commSnapshot();
   EXPECT_EQ(rtSnapshot->comm().size(), 2u);
   EXPECT_THROW(rtSnapshot->commIs(nullptr), Kiv::NullArgumentError);
}

TEST_F(ExtCommListTest, AttributeTextsRoundTrip) {
   ExtCommList::CommVectorAttrs attrs(1 | 8);
   EXPECT_EQ(attrs.valueToStrep(),
             "Value('Routing::Bgp::ExtCommList::CommVectorAttrs', ** {'sorted': True, "
             "'hasLinkBandwidth': False, 'hasLinkBandwidthWithUnspecifiedAsNumber': False, "
             "'hasOriginValidationState': True, 'hasPolicyMatchStrepUICommunities': False, "
             "'hasPrunableValues': False})");
   EXPECT_EQ(ExtCommList::CommVectorAttrs::fromValueStrep(attrs.valueToStrep()), attrs);
   ExtCommList::Serialization s = ExtCommList::serialization(false, true, true);
   EXPECT_EQ(s.value(), 14u);
   EXPECT_EQ(ExtCommList::Serialization::fromValueStrep(s.valueToStrep()), s);
   EXPECT_EQ(ExtCommList::getStringValue(Acl::CommunityValue{65000, 7, 9}), "7:9");
   EXPECT_EQ(ExtCommClassificationList::CommVectorAttrs(3).valueToStrep(),
             "Value('Routing::Bgp::ExtCommClassificationList::CommVectorAttrs', ** {'sorted': True, "
             "'hasPrunableValues': True})");
}

TEST_F(ExtCommListTest, DumpsLabelTheThreeTables) {
   ExtCommList::PtrConst list = publish({rtA, color});
   Kiv::DumpContext context;
   lists->dumpState(context, 0);
   lists->notifyingRtExtCommListCollection()->dumpState(context, 0);
   EXPECT_EQ(context.str(),
             "ExtCommListDedupTable\n"
             "  extComm\n"
             "    DedupHashTable (single-threaded): 1 entries\n"
             "  extCommClassification\n"
             "    DedupHashTable (single-threaded): 1 entries\n"
             "  rtExtCommClassification\n"
             "    DedupHashTable (single-threaded): 1 entries\n"
             "NotifyingRtExtCommListCollection rtExtCommLists #1;\n"
             "  rtExtCommList extCommClassificationRouteTarget : "
             "<RouteTarget2ByteASN 65000:100 0x0002fde800000064>\n");
}

TEST_F(ExtCommListTest, ContractBreachesAreFatal) {
   ExtCommList::Ptr list = extCommListFactory();
   EXPECT_DEATH(list->commIs(nullptr), "assertion failed: __null != comm");
   ExtComm::PtrConst loose = extCommFactory(extCommClassificationUnSpecified, ExtCommContent(1));
   EXPECT_DEATH(list->commIs(loose), "assertion failed: __null == \\( comm \\)");
   EXPECT_DEATH(list->comm(rtA), "assertion failed: commVectorSorted[[:space:]]");
   EXPECT_DEATH(list->totalCommunities(), "assertion failed: commVectorSorted\\(\\)");
   EXPECT_DEATH(list->classificationList(extCommClassificationRouteTarget),
                "assertion failed: __null == \\( this \\) \\|\\| \\( this \\)->dedupState\\(\\) != ");
   ExtCommList::Ptr twice = build({rtA});
   ExtCommList::PtrConst published = twice->dedup(lists.get());
   EXPECT_DEATH(twice->dedup(lists.get()),
                "assertion failed: __null == \\( this \\) \\|\\| \\( this \\)->dedupState\\(\\) == ");
   auto unsorted = extCommClassificationListFactory(extCommClassificationColor);
   EXPECT_DEATH(unsorted->hash(), "assertion failed: commVectorSorted\\(\\)");
}

} // namespace
} // namespace Routing::Bgp
