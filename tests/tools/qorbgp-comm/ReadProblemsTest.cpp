// The subcommands that read MRT files, on several files and on input they
// cannot read whole: a compressed dump cut short still gives what could be
// read, but the problem is reported on standard error with the file and
// offset, and the exit status is 1.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

struct Outcome {
   int status;
   std::string out;
   std::string err;
};

std::string slurp(std::string const& file) {
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

class ReadProblems : public ::testing::Test {
 protected:
   void SetUp() override {
      dir_ = std::filesystem::temp_directory_path() /
             ("qorbgp-read-problems-" + std::to_string(::getpid()));
      std::filesystem::create_directories(dir_);
   }
   void TearDown() override { std::filesystem::remove_all(dir_); }

   Outcome run(std::string const& arguments) const {
      std::string const out = (dir_ / "out").string(), err = (dir_ / "err").string();
      int const status = std::system(
         (std::string(QORBGP_COMM) + " " + arguments + " >" + out + " 2>" + err).c_str());
      return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, slurp(out), slurp(err)};
   }

   std::filesystem::path dir_;
};

TEST_F(ReadProblems, ATruncatedDumpIsReportedAndFails) {
   std::string const whole = (dir_ / "rib.mrt.gz").string();
   ASSERT_EQ(run("synth " + whole + " --paths 2000 --lists 50").status, 0);
   EXPECT_EQ(run("stats " + whole).status, 0);
   EXPECT_EQ(run("stats " + whole).err, "");

   std::string const cut = (dir_ / "cut.mrt.gz").string();
   std::filesystem::copy_file(whole, cut);
   std::filesystem::resize_file(cut, std::filesystem::file_size(whole) / 2);
   for (char const* command : {"stats ", "show ", "match . "}) {
      SCOPED_TRACE(command);
      Outcome const outcome = run(command + cut);
      EXPECT_EQ(outcome.status, 1);
      EXPECT_FALSE(outcome.out.empty()); // what could be read is still shown
      EXPECT_NE(outcome.err.find(cut + " offset "), std::string::npos) << outcome.err;
   }

   // Several files are read one after the other; a damaged one does not stop
   // the others, and the status still says that one was not read whole.
   Outcome const one = run("show " + whole);
   Outcome const two = run("show " + whole + " " + whole);
   EXPECT_EQ(two.status, 0);
   EXPECT_EQ(two.out, one.out + one.out);
   Outcome const mixed = run("show " + cut + " " + whole);
   EXPECT_EQ(mixed.status, 1);
   EXPECT_NE(mixed.out.find(one.out), std::string::npos);
}

} // namespace
