#include "QorBgp/QorBgpCommunity.h"

#include "platform/Hoard.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <typeinfo>
#include <unistd.h>

namespace Routing::Bgp {
namespace {

// A store file of this test, removed at the end.
struct StoreFile {
   std::string path = (std::filesystem::temp_directory_path() /
                       ("qorbgp-extcomm-hoard-" + std::to_string(::getpid())))
                         .string();
   hoard::StoreWriter writer = hoard::StoreWriter::createMappedFile(path, 1 << 16);
   ~StoreFile() { hoard::StoreWriter::removeMappedFile(path); }
};

TEST(ExtCommDehoard, RestoresAPlainDetachedValue) {
   StoreFile file;
   hoard::Location rt = file.writer.publish(
      hoard::ExtCommRecord{extCommClassificationRouteTarget, 0, 0x0002fde800000064});
   hoard::Location bogus = file.writer.publish(hoard::ExtCommRecord{77, 0, 1});
   auto store = hoard::StoreManager::openMappedFile(file.path);

   ExtComm::PtrConst restored = ExtComm::dehoard(&rt, &store);
   ASSERT_TRUE(restored);
   EXPECT_EQ(typeid(*restored), typeid(ExtComm)); // plain, whatever the classification
   EXPECT_EQ(restored->classification(), extCommClassificationRouteTarget);
   EXPECT_EQ(restored->getContent().word(), 0x0002fde800000064u);
   EXPECT_EQ(restored->dedupState(), Zup::DedupState::detached);
   EXPECT_FALSE(restored->isDeduped());
   EXPECT_TRUE(restored->hasNotificationActive());

   // A classification that is none is a corrupt record.
   EXPECT_FALSE(ExtComm::dehoard(&bogus, &store));

   // A read while the writer is changing the store does not validate.
   file.writer.beginChange();
   EXPECT_FALSE(ExtComm::dehoard(&rt, &store));
   file.writer.endChange();
   EXPECT_TRUE(ExtComm::dehoard(&rt, &store));

   hoard::Location outside(1 << 20);
   EXPECT_THROW(ExtComm::dehoard(&outside, &store), Kiv::RangeError);
}

} // namespace
} // namespace Routing::Bgp
