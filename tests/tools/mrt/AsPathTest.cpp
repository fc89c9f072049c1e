#include "tools/mrt/AsPath.h"

#include <gtest/gtest.h>

namespace QorBgpTools::mrt {
namespace {

Path withAsPath(bool fourOctet, std::vector<U8> asPath, std::vector<U8> as4Path = {}) {
   Path path;
   path.fourOctetAs = fourOctet;
   std::vector<Attribute> attributes{{0x40, 2, std::move(asPath)}};
   if (!as4Path.empty()) {
      attributes.push_back({0xc0, 17, std::move(as4Path)});
   }
   path.attributes = std::move(attributes);
   return path;
}

TEST(AsPathTest, SegmentsReadAsTextAndOrigin) {
   struct Row {
      char const* name;
      Path path;
      char const* text;
      std::optional<U32> origin;
   } const rows[] = {
      {"no AS_PATH", Path{}, "", std::nullopt},
      {"sequence and set", withAsPath(true, {2, 2, 0, 0, 0x0d, 0x1c, 0x00, 0x01, 0x00, 0x00,
                                             1, 2, 0, 0, 0xfb, 0xf4, 0,    0,    0xfb, 0xf5}),
       "3356 65536 {64500,64501}", std::nullopt},
      {"confederation first",
       withAsPath(true, {3, 1, 0, 0, 0xfd, 0xe8, 4, 1, 0, 0, 0xfd, 0xe9, 2, 1, 0, 0, 0x0d, 0x1c}),
       "(65000) [65001] 3356", 3356},
      // AS_TRANS (23456) stands for 4200000000 on a 2-octet session.
      {"AS4_PATH merged",
       withAsPath(false, {2, 3, 0x0d, 0x1c, 0x5b, 0xa0, 0x5b, 0xa0},
                  {2, 2, 0xfa, 0x56, 0xea, 0x00, 0xfa, 0x56, 0xea, 0x01}),
       "3356 4200000000 4200000001", 4200000001},
      {"AS4_PATH longer than AS_PATH is ignored",
       withAsPath(false, {2, 1, 0x5b, 0xa0}, {2, 2, 0, 0, 0, 1, 0, 0, 0, 2}), "23456", 23456},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(row.name);
      auto asPath = AsPath::of(row.path);
      ASSERT_TRUE(asPath);
      EXPECT_EQ(asPath->text(), row.text);
      EXPECT_EQ(asPath->origin(), row.origin);
   }
}

TEST(AsPathTest, MalformedAsPathHasNone) {
   for (std::vector<U8> const& bytes : {std::vector<U8>{2, 2, 0, 0, 0, 1}, // cut short
                                        std::vector<U8>{5, 1, 0, 0, 0, 1}, // segment type 5
                                        std::vector<U8>{2, 0}}) {          // empty segment
      EXPECT_FALSE(AsPath::of(withAsPath(true, bytes)));
   }
}

} // namespace
} // namespace QorBgpTools::mrt
