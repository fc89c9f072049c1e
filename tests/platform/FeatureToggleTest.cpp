#include "platform/FeatureToggle.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

namespace {

// A toggle file with `content` in a fresh temporary directory; removed with it.
class ToggleFile {
 public:
   explicit ToggleFile(std::string const& content) {
      std::string pattern = (std::filesystem::temp_directory_path() / "qorbgp-toggle-XXXXXX").string();
      dir_ = mkdtemp(pattern.data());
      path_ = dir_ + "/toggles.conf";
      std::ofstream(path_, std::ios::binary) << content;
   }
   ~ToggleFile() { std::filesystem::remove_all(dir_); }
   std::string const& path() const { return path_; }

 private:
   std::string dir_;
   std::string path_;
};

TEST(FeatureToggle, ReadsWellFormedLinesAndFallsBackToTheDefault) {
   struct Row {
      char const* content;
      std::optional<bool> state; // empty: the caller's default
   };
   Row const rows[] = {
      {"QorBgpLlgr=off\n", false},
      {"QorBgpLlgr=on", true},
      {"QorBgpLlgr=0\n", false},
      {"QorBgpLlgr=1\n", true},
      {"QorBgpLlgr=FALSE\n", false},
      {"QorBgpLlgr=True\n", true},
      {" \tQorBgpLlgr = off \t# not now\r\n", false},
      {"\n# comment\n\nOther=on\nQorBgpLlgr=off\n", false},
      {"QorBgpLlgr=off\nQorBgpLlgr=on\n", true},     // the last line wins
      {"QorBgpLlgr=off\nQorBgpLlgr=maybe\n", false}, // a malformed line does not count
      {"# QorBgpLlgr=off\n", std::nullopt},
      {"QorBgpLlgr\n", std::nullopt},
      {"QorBgpLlgr=\n", std::nullopt},
      {"QorBgpLlgr=offf\n", std::nullopt},
      {"QorBgpLlgrX=off\nXQorBgpLlgr=off\nqorbgpllgr=off\n", std::nullopt},
      {"=off\n==\n\xff\xfe=\x01\n", std::nullopt},
      {"", std::nullopt},
   };
   for (Row const& row : rows) {
      SCOPED_TRACE(::testing::Message() << "file: \"" << row.content << '"');
      ToggleFile file(row.content);
      for (bool defaultState : {false, true}) {
         EXPECT_EQ(Kiv::getToggleState("QorBgpLlgr", file.path(), defaultState),
                   row.state.value_or(defaultState));
      }
   }
   ToggleFile file("=on\n");
   EXPECT_FALSE(Kiv::getToggleState("", file.path(), false));
   EXPECT_TRUE(Kiv::getToggleState("QorBgpLlgr", file.path() + ".missing", true));
   EXPECT_FALSE(Kiv::getToggleState("QorBgpLlgr", "/", false)); // a directory, not a file
}

TEST(FeatureToggle, FileComesFromTheEnvironmentOrTheDefault) {
   setenv("QORBGP_TOGGLE_FILE", "/tmp/elsewhere.conf", 1);
   EXPECT_EQ(Kiv::featureToggleFile(), "/tmp/elsewhere.conf");
   setenv("QORBGP_TOGGLE_FILE", "", 1);
   EXPECT_EQ(Kiv::featureToggleFile(), "/etc/qorbgp/toggles.conf");
   unsetenv("QORBGP_TOGGLE_FILE");
   EXPECT_EQ(Kiv::featureToggleFile(), "/etc/qorbgp/toggles.conf");
}

} // namespace
