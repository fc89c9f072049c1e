// The tool's command line: --help and --version succeed, and every mistake
// on the command line is a usage error (status 2) that says what is wrong.
#include "QorBgpCommunity/QorBgpVersion.h"
#include "ToolTest.h"

namespace {

using QorBgpCommMain = ToolTest;

TEST_F(QorBgpCommMain, HelpAndVersionSucceed) {
   EXPECT_EQ(run("--help").status, 0);
   Outcome const version = run("--version");
   EXPECT_EQ(version.status, 0);
   EXPECT_EQ(version.out, "qorbgp-comm " QORBGP_VERSION_STRING "\n");
}

TEST_F(QorBgpCommMain, CommandLineMistakesAreUsageErrors) {
   struct Row {
      char const* arguments;
      char const* saying; // part of the message
   };
   for (Row const& row :
        {Row{"", "subcommand"}, Row{"frobnicate", "frobnicate"},
         Row{"stats --frob x.mrt", "--frob"}, Row{"stats", "FILE"},
         Row{"encode --kind frob 1:2", "frob"}, Row{"synth x.mrt --paths -5", "--paths"},
         Row{"synth x.mrt --peers 70000", "--peers"}, Row{"show x.mrt --limit -1", "--limit"},
         Row{"show x.mrt --prefix 10.1.2.3/8", "did you mean 10.0.0.0/8?"},
         Row{"match x x.mrt --prefix garbage", "not an IPv4 or IPv6 prefix"},
         Row{"show x.mrt --more-specific", "need --prefix"},
         Row{"match x x.mrt --since yesterday", "not a time"},
         Row{"match '(' x.mrt", "bad regular expression"}}) {
      SCOPED_TRACE(row.arguments);
      Outcome const outcome = run(row.arguments);
      EXPECT_EQ(outcome.status, 2);
      EXPECT_NE(outcome.err.find(row.saying), std::string::npos) << outcome.err;
   }
}

} // namespace
