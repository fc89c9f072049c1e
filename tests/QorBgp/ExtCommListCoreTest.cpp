// What both extended list families (ExtCommList over 8-octet values,
// ExtCommIp6List over IPv6-address-specific ones) share through their common
// core, ExtCommListCore, as one typed suite: publication, classification
// lists, lookup, identity, wire selection, snapshots and the contract checks. What only one family
// does is in its own list's test.
#include "QorBgpCommunity/QorBgp/ExtCommIp6DedupTable.h"
#include "QorBgpCommunity/QorBgp/ExtCommIp6List.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtComm.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDedupTable.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListExtDedupTable.h"
#include "QorBgpCommunity/platform/Errors.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

namespace Routing::Bgp {
namespace {

// A value's content: transitive or not by its type octet, its classification
// as its subtype, `n` as its last octet, so that contents sort by
// transitivity, then classification, then n.
struct EightOctet {
   using List = ExtCommList;
   using Snapshot = ExtCommListSnapshot;
   using Comm = ExtComm;
   using Key = U64;
   BgpParseExtCommContainerSm::Ptr recognition = bgpParseExtCommContainerSmFactory();
   ExtCommDedupTable::Ptr values = extCommDedupTableFactory(recognition->extCommParser());
   ExtCommListDedupTable::Ptr lists = extCommListDedupTableFactory();

   static Key key(ExtCommClassification c, bool transitive, U8 n) {
      return U64{transitive ? 0x80u : 0xc0u} << 56 | U64{c} << 48 | n;
   }
   static ExtComm::Ptr make(ExtCommClassification c, Key k) {
      return extCommFactory(c, ExtCommContent(k));
   }
   ExtComm::PtrConst intern(ExtComm::Ptr const& c) {
      return values->dedupTable()->dedupAs<ExtComm>(c);
   }
   static ExtCommList::Ptr newList() { return extCommListFactory(); }
   static auto newClassificationList(ExtCommClassification c) {
      return extCommClassificationListFactory(c);
   }
   static std::string serialize(ExtCommList const& list, bool all) {
      return list.serialize(ExtCommList::serialization(all, false, false));
   }
   std::size_t classificationListsInterned() const {
      return lists->extCommClassificationListDedupTable()->size() +
             lists->rtExtCommClassificationListDedupTable()->size();
   }
   static constexpr char const* listSnapshot = "ExtCommListSnapshot";
   static constexpr char const* classificationListSnapshot = "ExtCommClassificationListSnapshot";
   // Of {key(RouteTarget, true, 1), key(Color, true, 2), key(UnSpecified, false, 3)}.
   static constexpr char const* allWire = "c01018"
                                          "8001000000000001"
                                          "8008000000000002"
                                          "c000000000000003";
   static constexpr char const* transitiveWire = "c01010"
                                                 "8001000000000001"
                                                 "8008000000000002";
   // The most values under the one-octet length, and one more.
   static constexpr U8 shortMax = 31;
   static constexpr char const* shortMaxHeader = "c010f8";
   static constexpr char const* longMinHeader = "d0100100";
};

struct Ip6 {
   using List = ExtCommIp6List;
   using Snapshot = ExtCommIp6ListSnapshot;
   using Comm = ExtCommIp6;
   using Key = ExtCommIp6Content;
   BgpParseExtCommContainerSm::Ptr recognition = bgpParseExtCommContainerSmFactory();
   ExtCommIp6DedupTable::Ptr values = extCommIp6DedupTableFactory(recognition->extCommParser());
   ExtCommIp6ListDedupTable::Ptr lists = extCommIp6ListDedupTableFactory();

   static Key key(ExtCommClassification c, bool transitive, U8 n) {
      Qornet::Ip6Addr::Bytes address{0x20, 0x01, 0x0d, 0xb8};
      address[15] = n;
      return Key(transitive ? 0x00 : 0x40, c, Qornet::Ip6Addr(address), n);
   }
   static ExtCommIp6::Ptr make(ExtCommClassification c, Key k) { return extCommIp6Factory(c, k); }
   ExtCommIp6::PtrConst intern(ExtCommIp6::Ptr const& c) {
      return values->dedupTable()->dedupAs<ExtCommIp6>(c);
   }
   static ExtCommIp6List::Ptr newList() { return extCommIp6ListFactory(); }
   static auto newClassificationList(ExtCommClassification c) {
      return extCommIp6ClassificationListFactory(c);
   }
   static std::string serialize(ExtCommIp6List const& list, bool all) {
      return list.serialize(all);
   }
   std::size_t classificationListsInterned() const {
      return lists->extCommIp6ClassificationListDedupTable()->size();
   }
   static constexpr char const* listSnapshot = "ExtCommIp6ListSnapshot";
   static constexpr char const* classificationListSnapshot = "ExtCommIp6ClassificationListSnapshot";
   static constexpr char const* allWire = "c0193c"
                                          "0001"
                                          "20010db8000000000000000000000001"
                                          "0001"
                                          "0008"
                                          "20010db8000000000000000000000002"
                                          "0002"
                                          "4000"
                                          "20010db8000000000000000000000003"
                                          "0003";
   static constexpr char const* transitiveWire = "c01928"
                                                 "0001"
                                                 "20010db8000000000000000000000001"
                                                 "0001"
                                                 "0008"
                                                 "20010db8000000000000000000000002"
                                                 "0002";
   static constexpr U8 shortMax = 12;
   static constexpr char const* shortMaxHeader = "c019f0";
   static constexpr char const* longMinHeader = "d0190104";
};

struct FamilyNames {
   template <class T>
   static std::string GetName(int) {
      return std::is_same_v<T, EightOctet> ? "EightOctet" : "Ip6";
   }
};

std::string hex(std::string const& bytes) {
   return hexBytes({reinterpret_cast<U8 const*>(bytes.data()), bytes.size()});
}

template <class F>
std::string nullArgumentText(F&& call) {
   try {
      call();
   } catch (Kiv::NullArgumentError const& e) {
      return e.what();
   }
   return "no NullArgumentError";
}

template <class Family>
class ExtCommListFamilyTest : public testing::Test {
 protected:
   using List = typename Family::List;
   using CommPtr = typename Family::Comm::PtrConst;
   using Key = typename Family::Key;
   static constexpr auto rt = extCommClassificationRouteTarget;
   static constexpr auto color = extCommClassificationColor;
   static constexpr auto none = extCommClassificationUnSpecified;

   Family family;

   static Key key(ExtCommClassification c, U8 n, bool transitive = true) {
      return Family::key(c, transitive, n);
   }
   CommPtr value(ExtCommClassification c, U8 n, bool transitive = true) {
      return family.intern(Family::make(c, key(c, n, transitive)));
   }
   typename List::Ptr build(std::vector<CommPtr> const& comms) {
      typename List::Ptr list = Family::newList();
      for (CommPtr const& comm : comms) {
         list->commIs(comm);
      }
      return list;
   }
   typename List::PtrConst publish(std::vector<CommPtr> const& comms) {
      return build(comms)->dedup(family.lists.get());
   }
   // The values the wire texts of the traits are of, given once twice.
   typename List::PtrConst published() {
      return publish({value(none, 3, false), value(color, 2), value(rt, 1), value(color, 2)});
   }
};

using Families = testing::Types<EightOctet, Ip6>;
TYPED_TEST_SUITE(ExtCommListFamilyTest, Families, FamilyNames);

TYPED_TEST(ExtCommListFamilyTest, PublishSortsDropsDuplicatesAndInternsEqualContentOnce) {
   auto a = this->published();
   auto b = this->publish(
      {this->value(this->rt, 1), this->value(this->none, 3, false), this->value(this->color, 2)});
   EXPECT_EQ(a, b);
   ASSERT_EQ(a->totalCommunities(), 3u);
   EXPECT_EQ(a->commVectorRawPtr()->capacity(), 3u);
   std::vector<typename TestFixture::Key> keys;
   for (auto const& comm : *a->commVectorRawPtr()) {
      keys.push_back(comm->community());
   }
   EXPECT_EQ(keys, (std::vector{this->key(this->rt, 1), this->key(this->color, 2),
                                this->key(this->none, 3, false)}));
   EXPECT_EQ(a->totalTransitiveCommunities(), 2u);
   EXPECT_NE(this->publish({this->value(this->rt, 1), this->value(this->color, 2)}), a);

   // Lookup by content, before the first, between and after the last.
   EXPECT_EQ(a->comm(this->key(this->color, 2)), this->value(this->color, 2));
   EXPECT_EQ(a->comm(this->key(this->none, 0)), nullptr);
   EXPECT_EQ(a->comm(this->key(this->color, 1)), nullptr);
   EXPECT_EQ(a->comm(this->key(this->none, 4, false)), nullptr);

   EXPECT_EQ(this->publish({})->hash(), 0u);
   EXPECT_EQ(this->publish({}), this->publish({}));

   // Released lists leave both tables, and their values lose the lists' references.
   auto const held = this->value(this->rt, 1);
   auto const before = held->references();
   a = nullptr;
   b = nullptr;
   EXPECT_EQ(this->family.lists->dedupTable()->size(), 0u);
   EXPECT_EQ(this->family.classificationListsInterned(), 0u);
   EXPECT_EQ(held->references() + 2, before); // the list's and its classification list's
   auto again = this->build({this->value(this->rt, 1)});
   EXPECT_EQ(again->dedup(this->family.lists.get()), again);
}

TYPED_TEST(ExtCommListFamilyTest, ListsShareTheClassificationListsOfEqualValues) {
   auto red = this->publish(
      {this->value(this->rt, 2), this->value(this->color, 5), this->value(this->rt, 1)});
   auto blue = this->publish(
      {this->value(this->rt, 1), this->value(this->rt, 2), this->value(this->color, 6)});
   EXPECT_NE(red, blue);
   auto rts = red->classificationList(this->rt);
   ASSERT_TRUE(rts);
   EXPECT_EQ(rts, blue->classificationList(this->rt));
   EXPECT_EQ(rts->classification(), this->rt);
   EXPECT_EQ(rts->comms(), 2u);
   EXPECT_EQ(rts->comm(this->key(this->rt, 2)), this->value(this->rt, 2));
   EXPECT_NE(red->classificationList(this->color), blue->classificationList(this->color));
   EXPECT_EQ(this->family.classificationListsInterned(), 3u);

   // Absent classifications: below the highest present, beyond the vector, and the bound.
   auto rtOnly = this->publish({this->value(this->rt, 1)});
   EXPECT_EQ(red->classificationList(this->none), nullptr);
   EXPECT_EQ(rtOnly->classificationList(this->color), nullptr);
   EXPECT_EQ(red->classificationList(extCommClassificationOneBeyondLast), nullptr);
   EXPECT_EQ(rtOnly->classificationList(static_cast<ExtCommClassification>(200)), nullptr);
}

TYPED_TEST(ExtCommListFamilyTest, SerializeWritesAllOrOnlyTransitiveValues) {
   auto list = this->published();
   EXPECT_EQ(hex(TypeParam::serialize(*list, true)), TypeParam::allWire);
   EXPECT_EQ(hex(TypeParam::serialize(*list, false)), TypeParam::transitiveWire);
   auto nonTransitive = this->publish({this->value(this->none, 3, false)});
   EXPECT_EQ(TypeParam::serialize(*nonTransitive, false), "");
   auto empty = this->publish({});
   EXPECT_EQ(TypeParam::serialize(*empty, true), "");
   EXPECT_EQ(TypeParam::serialize(*empty, false), "");

   for (U8 count : {TypeParam::shortMax, U8(TypeParam::shortMax + 1)}) {
      SCOPED_TRACE(int{count});
      std::vector<typename TestFixture::CommPtr> comms;
      for (U8 n = 0; n < count; ++n) {
         comms.push_back(this->value(this->none, n));
      }
      std::string const wire = TypeParam::serialize(*this->publish(comms), true);
      std::string const header =
         count > TypeParam::shortMax ? TypeParam::longMinHeader : TypeParam::shortMaxHeader;
      EXPECT_EQ(hex(wire.substr(0, header.size() / 2)), header);
   }
}

TYPED_TEST(ExtCommListFamilyTest, SnapshotsHoldClassificationListsAndValuesAndRefuseNull) {
   auto empty = TypeParam::newList()->commSnapshot();
   EXPECT_TRUE(empty->hasNotificationActive());
   EXPECT_TRUE(empty->comm().empty() && empty->classificationList().empty());

   auto list = this->published();
   auto snapshot = list->commSnapshot();
   std::vector<ExtCommClassification> classifications;
   for (auto const& [classification, entry] : snapshot->classificationList()) {
      classifications.push_back(classification);
      EXPECT_EQ(entry, list->classificationList(classification));
   }
   EXPECT_EQ(classifications, (std::vector{this->none, this->rt, this->color}));
   ASSERT_EQ(snapshot->comm().size(), 3u);
   EXPECT_EQ(snapshot->comm().begin()->first, this->key(this->rt, 1));
   EXPECT_EQ(nullArgumentText([&] { snapshot->commIs(nullptr); }),
             std::string(TypeParam::listSnapshot) + "::commIs: null comm");
   EXPECT_EQ(nullArgumentText([&] { snapshot->classificationListIs(nullptr); }),
             std::string(TypeParam::listSnapshot) + "::classificationListIs: null list");

   auto colors = list->classificationList(this->color)->commSnapshot();
   EXPECT_TRUE(colors->hasNotificationActive());
   EXPECT_EQ(colors->classification(), this->color);
   ASSERT_EQ(colors->comm().size(), 1u);
   EXPECT_EQ(colors->comm().begin()->second, this->value(this->color, 2));
   EXPECT_EQ(nullArgumentText([&] { colors->commIs(nullptr); }),
             std::string(TypeParam::classificationListSnapshot) + "::commIs: null comm");
}

TYPED_TEST(ExtCommListFamilyTest, ContractBreachesAreFatal) {
   auto list = TypeParam::newList();
   EXPECT_DEATH(list->commIs(nullptr), "assertion failed: __null != comm");
   EXPECT_DEATH(list->commIs(TypeParam::make(this->rt, this->key(this->rt, 1))),
                "assertion failed: __null == \\( comm \\) \\|\\| \\( comm \\)->dedupState\\(\\) != "
                "Zup::dedupHandleStateNeverDeduped\\(\\)");
   list->commIs(this->value(this->rt, 1));
   EXPECT_DEATH(list->comm(this->key(this->rt, 1)),
                "assertion failed: commVectorSorted[[:space:]]");
   EXPECT_DEATH(list->totalCommunities(), "assertion failed: commVectorSorted\\(\\)");
   EXPECT_DEATH(TypeParam::serialize(*list, true), "assertion failed: commVectorSorted\\(\\)");
   EXPECT_DEATH(list->classificationList(this->rt),
                "assertion failed: __null == \\( this \\) \\|\\| \\( this \\)->dedupState\\(\\) != "
                "Zup::dedupHandleStateNeverDeduped\\(\\)");
   auto published = list->dedup(this->family.lists.get());
   EXPECT_DEATH(list->dedup(this->family.lists.get()),
                "assertion failed: __null == \\( this \\) \\|\\| \\( this \\)->dedupState\\(\\) == "
                "Zup::dedupHandleStateNeverDeduped\\(\\)");

   auto unsorted = TypeParam::newClassificationList(this->color);
   EXPECT_DEATH(unsorted->commIs(nullptr), "assertion failed: __null != comm");
   unsorted->commIs(this->value(this->color, 1));
   EXPECT_DEATH(unsorted->comm(this->key(this->color, 1)),
                "assertion failed: commVectorSorted[[:space:]]");
   EXPECT_DEATH(unsorted->hash(), "assertion failed: commVectorSorted\\(\\)");
   EXPECT_DEATH(unsorted->compare(unsorted.get()), "assertion failed: commVectorSorted\\(\\)");
}

} // namespace
} // namespace Routing::Bgp
