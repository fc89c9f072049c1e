// Private helpers of the community matchers. Not part of the API.
#pragma once

#include "QorBgpCommunity/QorBgp/CommunityListEdit.h"
#include "QorBgpCommunity/platform/Errors.h"
#include "QorBgpCommunity/platform/PosixRegex.h"

#include <algorithm>
#include <string>
#include <vector>

namespace Routing::Bgp::detail {

// `regex`, or Kiv::NullArgumentError "<owner>: null regex" when it is null.
inline Routing::RouteMap::PosixRegex::PtrConst
requiredRegex(Routing::RouteMap::PosixRegex::PtrConst regex, char const* owner) {
   if (!regex) {
      throw Kiv::NullArgumentError(std::string(owner) + ": null regex");
   }
   return regex;
}

// "regex \"<pattern>\"", with '"' and '\\' escaped: what the policy parser reads.
inline std::string quotedRegexText(Routing::RouteMap::PosixRegex const& regex) {
   std::string text = "regex \"";
   for (char c : regex.pattern()) {
      if (c == '"' || c == '\\') {
         text.push_back('\\');
      }
      text.push_back(c);
   }
   text.push_back('"');
   return text;
}

// `values` sorted, each once: what an edit adds or sets.
template <class Value>
std::vector<Value> sortedUnique(std::vector<Value> values) {
   std::sort(values.begin(), values.end());
   values.erase(std::unique(values.begin(), values.end()), values.end());
   return values;
}

// An edit's arguments as its constructor takes them: values only for replace
// and add, matchers only for deleteMatching (Kiv::RangeError "<kind> takes no
// values" / "... no matchers"), no null matcher (Kiv::NullArgumentError
// "<owner>: null matcher").
template <class Matchers>
void checkEditArguments(CommunityEditKind kind, bool hasValues, Matchers const& matchers,
                        char const* owner) {
   bool const takesValues = kind == CommunityEditKind::replace || kind == CommunityEditKind::add;
   if (!takesValues && hasValues) {
      throw Kiv::RangeError(std::string(communityEditKindName(kind)) + " takes no values");
   }
   if (kind != CommunityEditKind::deleteMatching && !matchers.empty()) {
      throw Kiv::RangeError(std::string(communityEditKindName(kind)) + " takes no matchers");
   }
   if (std::find(matchers.begin(), matchers.end(), nullptr) != matchers.end()) {
      throw Kiv::NullArgumentError(std::string(owner) + ": null matcher");
   }
}

} // namespace Routing::Bgp::detail
