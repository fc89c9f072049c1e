#include "QorBgpCommunity/platform/FeatureToggle.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include <unistd.h>

namespace {

TEST(FeatureToggle, ReadsWellFormedLinesAndFallsBackToTheDefault) {
   struct Row {
      char const* content;
      std::optional<bool> state; // empty: the caller's default
   };
   Row const rows[] = {
      {"QorBgpLlgr=off\n", false},
      {"QorBgpLlgr=1", true},
      {"QorBgpLlgr=FALSE\n", false},
      {" \tQorBgpLlgr = On \t# for now\r\n", true},
      {"\n# comment\n\nOther=on\nQorBgpLlgr=0\n", false},
      {"QorBgpLlgr=off\nQorBgpLlgr=true\n", true},   // the last line wins
      {"QorBgpLlgr=off\nQorBgpLlgr=maybe\n", false}, // a malformed line does not count
      {"# QorBgpLlgr=off\nQorBgpLlgr\nQorBgpLlgr=\nQorBgpLlgr=offf\n", std::nullopt},
      {"QorBgpLlgrX=off\nqorbgpllgr=off\n=off\n\xff\xfe=\x01\n", std::nullopt},
   };
   std::string const path = std::filesystem::temp_directory_path() /
                            ("qorbgp-toggle-" + std::to_string(getpid()) + ".conf");
   for (Row const& row : rows) {
      SCOPED_TRACE(::testing::Message() << "file: \"" << row.content << '"');
      std::ofstream(path, std::ios::binary) << row.content;
      for (bool defaultState : {false, true}) {
         EXPECT_EQ(Kiv::getToggleState("QorBgpLlgr", path, defaultState),
                   row.state.value_or(defaultState));
      }
   }
   EXPECT_TRUE(Kiv::getToggleState("", path, true)); // the file holds "=off"
   std::filesystem::remove(path);
   EXPECT_TRUE(Kiv::getToggleState("QorBgpLlgr", path, true));
   EXPECT_FALSE(Kiv::getToggleState("QorBgpLlgr", "/", false)); // a directory
}

} // namespace
