// The subcommands that read MRT files, on several files and on input they
// cannot read whole: a compressed dump cut short still gives what could be
// read, but the problem is reported on standard error with the file and
// offset, and the exit status says so.
#include "ToolTest.h"

namespace {

using ReadProblems = ToolTest;

TEST_F(ReadProblems, ATruncatedDumpIsReportedAndFails) {
   std::string const whole = path("rib.mrt.gz");
   ASSERT_EQ(run("synth " + whole + " --paths 2000 --lists 50").status, 0);
   EXPECT_EQ(run("stats " + whole).status, 0);
   EXPECT_EQ(run("stats " + whole).err, "");

   std::string const cut = path("cut.mrt.gz");
   std::filesystem::copy_file(whole, cut);
   std::filesystem::resize_file(cut, std::filesystem::file_size(whole) / 2);
   // match answers as grep does: 2 for trouble, as 1 means "nothing matched".
   for (auto [command, status] :
        {std::pair("stats ", 1), std::pair("show ", 1), std::pair("match . ", 2)}) {
      SCOPED_TRACE(command);
      Outcome const outcome = run(command + cut);
      EXPECT_EQ(outcome.status, status);
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
