/// @file
/// Text of community lists, and the regular-expression match of extended
/// lists used by route policy.
///
/// @code{.unparsed}
///   CommList                "1:2 no-export"        (null and empty: nothing)
///   LargeCommList           "1:2:3 65536:0:0"      (null and empty: nothing)
///   ExtCommList             "[ <e1> <e2> ]"        (null: "NULL", empty: "[  ]")
///   ExtCommClassificationList
///                           "extCommClassificationColor : <e1> <e2>"  (null: nothing)
///   RtExtCommListLifeTimeNotifier
///                           its route-target list as above            (null: "NULL")
/// @endcode
///
/// Every list's toStrep() is stringify(list). Printing leaves the stream's
/// flags, fill and precision as they were.
#pragma once

#include "QorBgpCommunity/QorBgp/QorBgpCommunityList.h"
#include "QorBgpCommunity/platform/PosixRegex.h"
#include "QorBgpCommunity/platform/StreamState.h"
#include "QorBgpCommunity/platform/StreamText.h"

#include <iosfwd>
#include <sstream>
#include <string>
#include <string_view>

namespace Routing::Bgp {

/// The one printer behind every list text: the elements of `elements` (null:
/// no list) written by `write(os, element)`, separated by `separator`; with
/// brackets "[ " ... " ]", and "NULL" for a null list; without, nothing for a
/// null list.
template <class Range, class Write>
void formatListElements(std::ostream& os, Range const* elements, Write write, bool brackets,
                        std::string_view separator) {
   Kiv::StreamStateSaver saved(os);
   if (!elements) {
      if (brackets) {
         os << "NULL";
      }
      return;
   }
   if (brackets) {
      os << "[ ";
   }
   bool first = true;
   for (auto const& element : *elements) {
      if (!first) {
         os << separator;
      }
      first = false;
      write(os, element);
   }
   if (brackets) {
      os << " ]";
   }
}

QORBGP_EXPORT void formatCommList(std::ostream& os, CommList const* list);
QORBGP_EXPORT void formatCommList(std::ostream& os, LargeCommList const* list);
QORBGP_EXPORT void formatCommList(std::ostream& os, ExtCommList const* list);
QORBGP_EXPORT void formatCommList(std::ostream& os, ExtCommClassificationList const* list);
QORBGP_EXPORT void formatCommList(std::ostream& os, RtExtCommListLifeTimeNotifier const* notifier);

QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, CommList const* list);
QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, LargeCommList const* list);
QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, ExtCommList const* list);
QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, ExtCommList const& list);
QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, ExtCommClassificationList const* list);
QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, ExtCommClassificationList const& list);
QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, RtExtCommListLifeTimeNotifier const& notifier);

/// The list printed by its stream operator.
template <class List>
std::string stringify(List const* const& list) {
   return Kiv::streamText([&](std::ostream& os) { os << list; });
}

/// Which text of its extended communities a route-policy regex sees.
enum class MatchMode : U32 {
   standard = 0,       ///< toStrepForPolicy with strepFormatDefault
   classification = 1, ///< toStrepForPolicy with strepFormatClassification
   ui = 2,             ///< toStrepForUI, only of values with policyMatchStrepUI()
};

/// Whether `regex` matches the list's values, rendered by `matchMode` and
/// joined with single spaces. The ui mode must find text ("!strVal.empty() ||
/// matchMode != MatchMode::ui"): use it only for lists that have
/// hasPolicyMatchStrepUICommunities().
QORBGP_EXPORT bool matchExtCommList(ExtCommList const* list, MatchMode matchMode,
                                    Routing::RouteMap::PosixRegex const* regex);

} // namespace Routing::Bgp
