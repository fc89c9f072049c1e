// What the tests of the qorbgp-comm program share: a scratch folder of each
// test's own, running the program (the one built with the tests, named by
// QORBGP_COMM) with its output and exit status, and reading what other
// programs (bgpdump) print.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

// What `command` prints on standard output, run through the shell.
inline std::string commandOutput(std::string const& command) {
   std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
   std::string out;
   char buffer[4096];
   while (std::size_t n = pipe ? std::fread(buffer, 1, sizeof buffer, pipe.get()) : 0) {
      out.append(buffer, n);
   }
   return out;
}

// The parts of `text` between separators.
inline std::vector<std::string> split(std::string const& text, char separator) {
   std::vector<std::string> parts;
   std::stringstream in(text);
   for (std::string part; std::getline(in, part, separator);) {
      parts.push_back(part);
   }
   return parts;
}

class ToolTest : public ::testing::Test {
 protected:
   struct Outcome {
      int status; // the exit status, -1 when the program did not exit
      std::string out;
      std::string err;
   };

   void SetUp() override {
      dir_ = std::filesystem::temp_directory_path() /
             ("qorbgp-comm-test-" + std::to_string(::getpid()) + "-" +
              ::testing::UnitTest::GetInstance()->current_test_info()->name());
      std::filesystem::create_directories(dir_);
   }
   void TearDown() override { std::filesystem::remove_all(dir_); }

   // A file name in the scratch folder.
   std::string path(std::string const& name) const { return (dir_ / name).string(); }

   // Runs `qorbgp-comm <arguments>` through the shell; with `pipedFile`,
   // that file's bytes come through a pipe on its standard input.
   Outcome run(std::string const& arguments, std::string const& pipedFile = "") const {
      std::string const out = path("stdout"), err = path("stderr");
      std::string const feed = pipedFile.empty() ? "" : "cat '" + pipedFile + "' | ";
      int const status =
         std::system((feed + QORBGP_COMM + " " + arguments + " >" + out + " 2>" + err).c_str());
      return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, slurp(out), slurp(err)};
   }

 private:
   static std::string slurp(std::string const& file) {
      std::string text;
      if (FILE* f = std::fopen(file.c_str(), "rb")) {
         char buffer[4096];
         while (std::size_t n = std::fread(buffer, 1, sizeof buffer, f)) {
            text.append(buffer, n);
         }
         std::fclose(f);
      }
      return text;
   }

   std::filesystem::path dir_;
};
