// The tool against Debian's bgpdump: on an MRT file the tool writes itself,
// both must see the same standard and large communities on every path, in
// the same order of paths. bgpdump -m prints standard communities but not
// large ones, so those are taken from its verbose form.
#include "ToolTest.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

struct PathCommunities {
   std::string prefix;
   std::string peer;
   std::set<std::string> standard;
   std::set<std::string> large;
   bool operator==(PathCommunities const&) const = default;
};

std::ostream& operator<<(std::ostream& os, PathCommunities const& p) {
   os << p.prefix << " from " << p.peer << " [";
   for (auto const& c : p.standard)
      os << ' ' << c;
   os << " ] [";
   for (auto const& c : p.large)
      os << ' ' << c;
   return os << " ]";
}

// bgpdump names three well-known communities.
std::string numeric(std::string const& token) {
   if (token == "no-export")
      return "65535:65281";
   if (token == "no-advertise")
      return "65535:65282";
   if (token == "no-export-subconfed")
      return "65535:65283";
   return token;
}

std::set<std::string> tokens(std::string const& text) {
   std::set<std::string> out;
   std::stringstream in(text);
   for (std::string token; in >> token;) {
      out.insert(numeric(token));
   }
   return out;
}

TEST(BgpdumpComparison, SameCommunitiesOnEveryPath) {
   if (::access("/usr/bin/bgpdump", X_OK) != 0) {
      GTEST_SKIP() << "bgpdump is not installed";
   }
   std::string const file = "/tmp/qorbgp-bgpdump-" + std::to_string(::getpid()) + ".mrt";
   ASSERT_EQ(std::system((std::string(QORBGP_COMM) + " synth " + file +
                          " --paths 600 --lists 60 --seed 3 2>/dev/null")
                            .c_str()),
             0);

   std::vector<PathCommunities> theirs;
   for (std::string const& line :
        split(commandOutput("bgpdump -m " + file + " 2>/dev/null"), '\n')) {
      auto fields = split(line, '|');
      if (fields.size() > 11) {
         theirs.push_back({fields[5], fields[3], tokens(fields[11]), {}});
      }
   }
   std::size_t block = 0;
   for (std::string const& line : split(commandOutput("bgpdump " + file + " 2>/dev/null"), '\n')) {
      if (line.empty()) {
         ++block;
      } else if (line.starts_with("LARGE_COMMUNITY: ") && block < theirs.size()) {
         theirs[block].large = tokens(line.substr(17));
      }
   }

   std::vector<PathCommunities> ours;
   for (std::string const& line :
        split(commandOutput(std::string(QORBGP_COMM) + " show --json " + file), '\n')) {
      auto path = nlohmann::json::parse(line);
      PathCommunities p{path["prefix"], path["peer"], {}, {}};
      for (auto const& c : path.value("communities", nlohmann::json::array()))
         p.standard.insert(c);
      for (auto const& c : path.value("largeCommunities", nlohmann::json::array()))
         p.large.insert(c);
      ours.push_back(std::move(p));
   }
   std::remove(file.c_str());

   ASSERT_EQ(ours.size(), 600u);
   ASSERT_EQ(theirs.size(), ours.size());
   for (std::size_t i = 0; i < ours.size(); ++i) {
      ASSERT_EQ(ours[i], theirs[i]) << "path " << i;
   }
}

} // namespace
