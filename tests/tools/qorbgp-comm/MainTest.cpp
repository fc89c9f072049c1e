// The tool's command line: --help and --version succeed, and every mistake
// on the command line is a usage error (status 2) that says what is wrong.
#include "QorBgpCommunity/QorBgpVersion.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <sys/wait.h>

namespace {

struct Outcome {
   int status;
   std::string output; // standard output and standard error together
};

Outcome runTool(std::string const& arguments) {
   std::string const command = std::string(QORBGP_COMM) + " " + arguments + " 2>&1";
   FILE* pipe = ::popen(command.c_str(), "r");
   std::string output;
   char buffer[4096];
   while (std::size_t n = std::fread(buffer, 1, sizeof buffer, pipe)) {
      output.append(buffer, n);
   }
   int const status = ::pclose(pipe);
   return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

TEST(QorBgpCommMain, HelpAndVersionSucceed) {
   EXPECT_EQ(runTool("--help").status, 0);
   Outcome const version = runTool("--version");
   EXPECT_EQ(version.status, 0);
   EXPECT_EQ(version.output, "qorbgp-comm " QORBGP_VERSION_STRING "\n");
}

TEST(QorBgpCommMain, CommandLineMistakesAreUsageErrors) {
   struct Row {
      char const* arguments;
      char const* saying; // part of the message
   };
   for (Row const& row : {Row{"", "subcommand"}, Row{"frobnicate", "frobnicate"},
                          Row{"stats --frob x.mrt", "--frob"}, Row{"stats", "FILE"},
                          Row{"encode --kind frob 1:2", "frob"}}) {
      SCOPED_TRACE(row.arguments);
      Outcome const outcome = runTool(row.arguments);
      EXPECT_EQ(outcome.status, 2);
      EXPECT_NE(outcome.output.find(row.saying), std::string::npos) << outcome.output;
   }
}

} // namespace
