#include "QorBgpCommunity/QorBgp/QorBgpCommunityListFormat.h"

#include "QorBgpCommunity/platform/DynamicBuffer.h"

#include <ostream>

namespace Routing::Bgp {

QOR_ASSERT_UNIT("QorBgpCommunityList");

namespace {

// Regex texts of typical lists fit on the stack.
constexpr std::size_t matchTextCapacity = 512;

void writeExtComm(std::ostream& os, ExtComm::PtrConst const& comm) { os << comm; }

} // namespace

void formatCommList(std::ostream& os, LargeCommList const* list) {
   if (list) {
      Kiv::DynamicBuffer<matchTextCapacity> text;
      list->appendText(text);
      os.write(text.data(), static_cast<std::streamsize>(text.size()));
   }
}

void formatCommList(std::ostream& os, ExtCommList const* list) {
   formatListElements(os, list ? list->commVectorRawPtr() : nullptr, writeExtComm, true, " ");
}

void formatCommList(std::ostream& os, ExtCommClassificationList const* list) {
   if (!list) {
      return;
   }
   os << stringValue(list->classification()) << " : ";
   formatListElements(os, list->commVectorRawPtr(), writeExtComm, false, " ");
}

void formatCommList(std::ostream& os, RtExtCommListLifeTimeNotifier const* notifier) {
   if (!notifier) {
      os << "NULL";
      return;
   }
   formatCommList(os, static_cast<ExtCommClassificationList const*>(notifier->rtExtCommListRawPtr()));
}

std::ostream& operator<<(std::ostream& os, LargeCommList const* list) {
   formatCommList(os, list);
   return os;
}

std::ostream& operator<<(std::ostream& os, ExtCommList const* list) {
   formatCommList(os, list);
   return os;
}

std::ostream& operator<<(std::ostream& os, ExtCommList const& list) { return os << &list; }

std::ostream& operator<<(std::ostream& os, ExtCommClassificationList const* list) {
   formatCommList(os, list);
   return os;
}

std::ostream& operator<<(std::ostream& os, ExtCommClassificationList const& list) {
   return os << &list;
}

std::ostream& operator<<(std::ostream& os, RtExtCommListLifeTimeNotifier const& notifier) {
   formatCommList(os, &notifier);
   return os;
}

bool matchExtCommList(ExtCommList const* list, MatchMode matchMode,
                      Routing::RouteMap::PosixRegex const* regex) {
   Kiv::DynamicBuffer<matchTextCapacity> text;
   ExtComm::StrepFormat const format(matchMode == MatchMode::standard
                                        ? ExtComm::StrepFormat::flagDefault
                                        : ExtComm::StrepFormat::flagClassification);
   for (ExtComm::PtrConst const& comm : *list->commVectorRawPtr()) {
      if (matchMode == MatchMode::ui && !comm->policyMatchStrepUI()) {
         continue;
      }
      std::string const member = matchMode == MatchMode::ui
                                    ? comm->toStrepForUI(false, false, false)
                                    : comm->toStrepForPolicy(format);
      if (member.empty()) {
         continue; // no text of its own (a plain value, a validation state): no separator either
      }
      if (text.size() != 0) {
         text.append(' ');
      }
      text.append(member);
   }
   std::string_view const strVal = text.view();
   QOR_ASSERT(!strVal.empty() || matchMode != MatchMode::ui);
   return regex->execute(strVal) == 0;
}

} // namespace Routing::Bgp
