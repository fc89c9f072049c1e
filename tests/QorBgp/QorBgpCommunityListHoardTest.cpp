#include "QorBgp/QorBgpCommunityListHoard.h"

#include "QorBgp/ExtCommIp6DedupTable.h"
#include "QorBgp/ExtCommIp6List.h"
#include "QorBgp/ExtCommIp6ListDedupTable.h"
#include "QorBgp/Parse/ExtComm.h"
#include "QorBgp/QorBgpCommunityDedupTable.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

namespace Routing::Bgp {
namespace {

// Builds the lists every test publishes: a standard, a large, an extended
// and an empty standard list.
struct Lists {
   BgpParseExtCommContainerSm::Ptr recognition = bgpParseExtCommContainerSmFactory();
   ExtCommDedupTable::Ptr values = extCommDedupTableFactory(recognition->extCommParser());
   CommListDedupTable::Ptr commTable = commListDedupTableFactory();
   LargeCommListDedupTable::Ptr largeTable = largeCommListDedupTableFactory();
   ExtCommListDedupTable::Ptr extTable = extCommListDedupTableFactory();
   CommList::PtrConst standard, empty;
   LargeCommList::PtrConst large;
   ExtCommList::PtrConst ext;

   Lists() {
      CommList::Ptr s = commListFactory();
      s->commIs(0xFFFFFF01);
      s->commIs(0x00010002);
      standard = s->dedup(commTable.get());
      empty = commListFactory()->dedup(commTable.get());
      LargeCommList::Ptr l = largeCommListFactory();
      l->commIs({65536, 1, 2});
      large = l->dedup(largeTable.get());
      ExtCommList::Ptr e = extCommListFactory();
      for (U64 w : {0x030b000000000064ull, 0x0002fde800000064ull}) {
         e->commIs(ExtComm::dedupContent(values.get(), ExtCommContent(w)));
      }
      ext = e->dedup(extTable.get());
   }
   // Publishes all four under a root list of their locations.
   void publish(hoard::StoreWriter& writer) const {
      hoard::Location const at[] = {standard->hoard(writer), large->hoard(writer),
                                    ext->hoard(writer), empty->hoard(writer)};
      writer.rootIs(writer.publishList<hoard::Location>(0, at));
   }
};

std::string segmentName() { return "/qorbgp-list-hoard-" + std::to_string(::getpid()); }

TEST(ListDehoard, AnotherProcessPublishesAndThisOneRestores) {
   std::string const name = segmentName();
   pid_t child = ::fork();
   ASSERT_GE(child, 0);
   if (child == 0) {
      Lists lists;
      auto writer = hoard::StoreWriter::createSharedMemory(name, 1 << 16);
      lists.publish(writer);
      ::_exit(0);
   }
   int status = 0;
   ::waitpid(child, &status, 0);
   ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
   struct Remove {
      std::string name;
      ~Remove() { hoard::StoreWriter::removeSharedMemory(name); }
   } remove{name};

   Lists expected;
   auto store = hoard::StoreManager::openSharedMemory(name);
   hoard::ReaderPtr<hoard::ListRecord> root(store, store.root());
   ASSERT_EQ(root->count, 4u);
   hoard::Location const* at = root.trailing<hoard::Location>(4);

   CommList::PtrConst standard = CommList::dehoard(&at[0], &store);
   ASSERT_TRUE(standard);
   EXPECT_EQ(standard->toStrep(), expected.standard->toStrep());
   EXPECT_TRUE(standard->noExport());
   EXPECT_EQ(standard->hash(), expected.standard->hash());
   EXPECT_FALSE(standard->isDeduped());

   LargeCommList::PtrConst large = LargeCommList::dehoard(&at[1], &store);
   ASSERT_TRUE(large);
   EXPECT_TRUE(large->compare(expected.large.get()));

   ExtCommList::PtrConst ext = ExtCommList::dehoard(&at[2], &store);
   ASSERT_TRUE(ext);
   // Restored values are plain ones with the stored classification.
   ASSERT_EQ(ext->comms(), expected.ext->comms());
   for (U32 i = 0; i < ext->comms(); ++i) {
      ExtComm const& restored = *(*ext->commVectorRawPtr())[i];
      ExtComm const& original = *(*expected.ext->commVectorRawPtr())[i];
      EXPECT_EQ(restored.getContent(), original.getContent());
      EXPECT_EQ(restored.classification(), original.classification());
   }
   EXPECT_EQ(ext->dedupState(), Zup::DedupState::local);
   EXPECT_EQ(ext->classificationLists()[extCommClassificationColor]->dedupState(),
             Zup::DedupState::local);

   CommList::PtrConst empty = CommList::dehoard(&at[3], &store);
   ASSERT_TRUE(empty);
   EXPECT_TRUE(empty->empty());
   EXPECT_TRUE(empty->commVectorSorted());
}

TEST(ListDehoard, AChangeDuringTheReadIsDetected) {
   std::string const path = "/tmp/qorbgp-list-hoard-" + std::to_string(::getpid());
   Lists lists;
   auto writer = hoard::StoreWriter::createMappedFile(path, 1 << 16);
   struct Remove {
      std::string path;
      ~Remove() { hoard::StoreWriter::removeMappedFile(path); }
   } remove{path};
   hoard::Location const at[] = {lists.standard->hoard(writer), lists.ext->hoard(writer)};
   auto store = hoard::StoreManager::openMappedFile(path);
   // An IPv6 list comes back with the same members, as plain detached values.
   auto ip6Values = extCommIp6DedupTableFactory(lists.recognition->extCommParser());
   auto ip6Lists = extCommIp6ListDedupTableFactory();
   ExtCommIp6List::Ptr ip6 = extCommIp6ListFactory();
   for (U16 admin : {U16{7}, U16{3}}) {
      ip6->commIs(ExtCommIp6::dedupContent(
         ip6Values.get(), ExtCommIp6Content(0x00, 0x02, Qornet::Ip6Addr::parse("2001:db8::1").value(),
                                            admin)));
   }
   ExtCommIp6List::PtrConst published = ip6->dedup(ip6Lists.get());
   hoard::Location const ip6At = published->hoard(writer);
   ExtCommIp6List::PtrConst restored = ExtCommIp6List::dehoard(&ip6At, &store);
   ASSERT_TRUE(restored);
   ASSERT_EQ(restored->comms(), 2u);
   for (U32 i = 0; i < 2; ++i) {
      EXPECT_EQ((*restored->commVectorRawPtr())[i]->getContent(),
                (*published->commVectorRawPtr())[i]->getContent());
   }
   EXPECT_EQ(restored->dedupState(), Zup::DedupState::local);

   writer.beginChange();
   EXPECT_FALSE(CommList::dehoard(&at[0], &store));
   EXPECT_FALSE(ExtCommList::dehoard(&at[1], &store));
   writer.endChange();
   EXPECT_TRUE(CommList::dehoard(&at[0], &store));
   EXPECT_TRUE(ExtCommList::dehoard(&at[1], &store));
}

} // namespace
} // namespace Routing::Bgp
