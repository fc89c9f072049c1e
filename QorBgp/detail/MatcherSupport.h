// Private helpers of the community matchers. Not part of the API.
#pragma once

#include "QorBgpCommunity/platform/Errors.h"
#include "QorBgpCommunity/platform/PosixRegex.h"

#include <string>

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

} // namespace Routing::Bgp::detail
