// apply: the dump it writes, read back by Debian's bgpdump path for path
// against the input with the policy's edits worked out by hand; the report;
// edits of every kind of list; and mistakes in the policy.
#include "ToolTest.h"
#include "tools/mrt/MrtWriter.h"

#include <nlohmann/json.hpp>

#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace mrt = QorBgpTools::mrt;

using QorBgpCommApply = ToolTest;

// A bgpdump -m line's communities after "delete peer-as:*" and "add
// 65000:100": the words of field 11, those of the peer's AS (field 4) left out.
std::set<std::string> edited(std::vector<std::string> const& fields) {
   std::set<std::string> out{"65000:100"};
   std::stringstream words(fields[11]);
   for (std::string word; words >> word;) {
      if (!word.starts_with(fields[4] + ":")) {
         out.insert(word);
      }
   }
   return out;
}

std::set<std::string> words(std::string const& text) {
   std::set<std::string> out;
   std::stringstream in(text);
   for (std::string word; in >> word;) {
      out.insert(word);
   }
   return out;
}

TEST_F(QorBgpCommApply, BgpdumpReadsTheEditedDumpAsTheInputWithTheEdits) {
   if (::access("/usr/bin/bgpdump", X_OK) != 0) {
      GTEST_SKIP() << "bgpdump is not installed";
   }
   std::string const policy = path("policy");
   std::ofstream(policy) << "# peers' own communities out, ours in\n"
                            "rule scrub\n"
                            "   match standard any peer-as:*\n"
                            "   edit standard delete peer-as:*\n"
                            "rule tag\n"
                            "   edit standard add 65000:100\n";
   // A RIB dump of our own, and RIS updates (BGP messages, IPv6 ones in
   // MP_REACH_NLRI) when the shared data is there.
   std::vector<std::string> inputs{path("rib.mrt")};
   ASSERT_EQ(run("synth " + inputs[0] + " --paths 500 --lists 40").status, 0);
   std::string const updates = QORBGP_SHARED_DATA "/mrt/ris.updates.20190101.0000.gz";
   if (::access(updates.c_str(), R_OK) == 0) {
      inputs.push_back(updates);
   }
   for (std::string const& input : inputs) {
      SCOPED_TRACE(input);
      std::string const output = path("edited.mrt.gz");
      Outcome const applied = run("apply --json " + policy + " " + input + " --write " + output);
      ASSERT_EQ(applied.status, 0) << applied.err;
      nlohmann::json const report = nlohmann::json::parse(applied.out);
      EXPECT_EQ(report["rules"][1]["matched"], report["paths"]); // tag holds for every path

      auto const before = split(commandOutput("bgpdump -m " + input + " 2>/dev/null"), '\n');
      auto const after = split(commandOutput("bgpdump -m " + output + " 2>/dev/null"), '\n');
      ASSERT_EQ(after.size(), before.size());
      ASSERT_GT(before.size(), 100u);
      std::size_t announcements = 0;
      for (std::size_t i = 0; i < before.size(); ++i) {
         auto const was = split(before[i], '|'), is = split(after[i], '|');
         if (was.size() <= 11 || was[2] == "W") {
            ASSERT_EQ(after[i], before[i]);
            continue;
         }
         ++announcements;
         ASSERT_EQ(is.size(), was.size()) << after[i];
         for (std::size_t f = 0; f < was.size(); ++f) {
            if (f != 11) {
               ASSERT_EQ(is[f], was[f]) << "field " << f << " of " << after[i];
            }
         }
         ASSERT_EQ(words(is[11]), edited(was)) << before[i] << "\n" << after[i];
      }
      EXPECT_EQ(announcements, report["paths"].get<std::size_t>());

      // Edited once, nothing is left to change.
      Outcome const again = run("apply --json " + policy + " " + output);
      EXPECT_EQ(nlohmann::json::parse(again.out)["changed"], 0);
   }
}

TEST_F(QorBgpCommApply, EditsEveryKindOfList) {
   std::string const input = path("rib.mrt");
   {
      std::string error;
      auto writer = mrt::MrtWriter::create(input, mrt::Compression::none, &error);
      ASSERT_TRUE(writer) << error;
      std::vector<mrt::Peer> const peers{{1, "192.0.2.2", 65001}};
      writer->peerIndexTable(0, 0, "", peers);
      std::vector<U8> const ip6RouteTarget = {0x00, 0x02, 0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0,
                                              0,    0,    0,    0,    0,    0,    0, 1, 0, 100};
      mrt::RibEntry entry;
      entry.attributes = {{0x40, 1, {0}},
                          {0xc0, 25, ip6RouteTarget},
                          {0xc0, 32, {0, 0, 0xfd, 0xe8, 0, 0, 0, 1, 0, 0, 0, 2}}};
      std::vector<mrt::RibEntry> const entries{entry};
      writer->ribEntry(0, 0, "198.51.100.0/24", entries);
      ASSERT_TRUE(writer->close(&error)) << error;
   }
   std::string const policy = path("policy");
   std::ofstream(policy) << "rule all\n"
                            "match standard list-regex ^$\n" // no list: judged as empty
                            "edit ipv6 delete 0:2 2001:db8::/32:*\n"
                            "edit extended add color 7 rt 65000:1\n"
                            "edit large delete-all\n"
                            "edit standard set no-export\n"
                            "rule never\n"
                            "match large list-regex _65000:1:3_\n";
   std::string const output = path("edited.mrt");
   Outcome const applied = run("apply --json " + policy + " " + input + " --write " + output);
   ASSERT_EQ(applied.status, 0) << applied.err;
   nlohmann::json const report = nlohmann::json::parse(applied.out);
   EXPECT_EQ(report["rules"][0]["changed"], 1);
   EXPECT_EQ(report["rules"][1]["matched"], 0);

   Outcome const shown = run("show --json " + output);
   ASSERT_EQ(shown.status, 0) << shown.err;
   nlohmann::json const path = nlohmann::json::parse(shown.out);
   EXPECT_EQ(path["communities"], nlohmann::json({"65535:65281"}));
   EXPECT_EQ(path["extendedCommunities"],
             nlohmann::json({"Route-Target-AS:65000:1", "Color:CO(00):7"}));
   EXPECT_FALSE(path.contains("largeCommunities"));
   EXPECT_FALSE(path.contains("ipv6ExtendedCommunities"));
   EXPECT_EQ(path["asPath"], ""); // the other attributes as they were
}

TEST_F(QorBgpCommApply, MistakesInThePolicyNameTheirPlace) {
   std::string const input = path("rib.mrt");
   ASSERT_EQ(run("synth " + input + " --paths 10 --lists 2").status, 0);
   struct Case {
      char const* text;
      char const* error;
   } const cases[] = {
      {"rule a\n  match standard any 1:70000\n",
       "policy:2:22: expected a number, a range, '*', 'peer-as' or 'local-as', found '1:70000'"},
      {"rule a\n  edit big add 1:1\n",
       "policy:2:8: expected 'standard', 'large', 'extended' or 'ipv6', found 'big'"},
      {"rule a\n\n  set standard 1:1\n",
       "policy:3:3: expected 'rule', 'match' or 'edit', found 'set'"},
      {"rule two words\n", "policy:1:6: expected one word naming the rule"},
      {"# nothing\n", "policy: no rules"},
   };
   std::string const policy = path("policy");
   for (Case const& c : cases) {
      std::ofstream(policy) << c.text;
      Outcome const outcome = run("apply " + policy + " " + input);
      EXPECT_EQ(outcome.status, 2);
      EXPECT_EQ(outcome.err,
                "qorbgp-comm apply: " + policy.substr(0, policy.size() - 6) + c.error + "\n");
   }
   std::ofstream(policy) << "rule a\n";
   EXPECT_EQ(run("apply " + policy + " " + input + " --write " + input).status, 2);
   EXPECT_EQ(run("apply " + path("missing") + " " + input).status, 2);
}

} // namespace
