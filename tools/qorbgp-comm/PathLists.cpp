#include "PathLists.h"

#include "QorBgpCommunity/QorBgp/BgpPathAttributeEnums.h"

namespace QorBgpTools {

using namespace Routing::Bgp;

namespace {

// Decodes one attribute into `slot`; a malformed one leaves it null and its
// reason in the path's list of problems.
template <class ListPtr>
void decodeInto(ListPtr& slot, CommunityDecodeResult<ListPtr> result, PathLists& lists) {
   if (!result.ok()) {
      lists.malformed.push_back(std::move(result.reason));
   }
   slot = std::move(result.list);
}

template <class Range, class Text>
std::string joined(Range const& elements, Text text) {
   std::string out;
   for (auto const& element : elements) {
      if (!out.empty()) {
         out += ' ';
      }
      out += text(element);
   }
   return out;
}

} // namespace

PathLists decodePathLists(CommunityTables const& tables, mrt::Path const& path) {
   PathLists lists;
   for (mrt::AttributeView const& attribute : path.attributes) {
      std::span<U8 const> const value = attribute.value;
      switch (attribute.typeCode) {
      case community:
         decodeInto(lists.standard, decodeCommunities(tables, value), lists);
         break;
      case largeCommunity:
         decodeInto(lists.large, decodeLargeCommunities(tables, value), lists);
         break;
      case extCommunity:
         decodeInto(lists.extended, decodeExtCommunities(tables, value), lists);
         break;
      case extCommunityIp6:
         decodeInto(lists.ip6, decodeExtCommunitiesIp6(tables, value), lists);
         break;
      default:
         break;
      }
   }
   return lists;
}

std::string standardText(CommList const* list) { return list ? list->toStrep() : std::string(); }

std::string largeText(LargeCommList const* list, bool asdot) {
   return list ? joined(*list->commVectorRawPtr(),
                        [asdot](Acl::CommunityValue const& v) {
                           return LargeCommList::displayString(v, asdot);
                        })
               : std::string();
}

std::string extendedText(ExtCommList const* list, bool asdot) {
   return list ? joined(*list->commVectorRawPtr(),
                        [asdot](ExtComm::PtrConst const& comm) {
                           return comm->toStrepForUI(asdot, false, false);
                        })
               : std::string();
}

std::string ip6ValueText(ExtCommIp6 const& comm) {
   return comm.toStrepForPolicy(ExtCommIp6::StrepFormat(
      ExtCommIp6::StrepFormat::flagClassification | ExtCommIp6::StrepFormat::flagUI));
}

std::string ip6Text(ExtCommIp6List const* list) {
   return list ? joined(*list->commVectorRawPtr(),
                        [](ExtCommIp6::PtrConst const& comm) { return ip6ValueText(*comm); })
               : std::string();
}

std::string kindLabel(ExtCommClassification kind) {
   switch (kind) {
   case extCommClassificationRouteTarget:
      return "route target";
   case extCommClassificationRouteOrigin:
      return "route origin";
   case extCommClassificationEvpn:
      return "EVPN";
   case extCommClassificationTunnelEncap:
      return "tunnel encapsulation";
   case extCommClassificationDefaultGateway:
      return "default gateway";
   case extCommClassificationFlowspec:
      return "flowspec";
   case extCommClassificationLinkBandwidth:
      return "link bandwidth";
   case extCommClassificationColor:
      return "color";
   case extCommClassificationOriginValidationState:
      return "origin validation state";
   default:
      return "other";
   }
}

std::string statusLabel(CommunityDecodeStatus status) {
   switch (status) {
   case communityDecodeOk:
      return "ok";
   case communityDecodeMalformed:
      return "malformed";
   default:
      return "not a community attribute";
   }
}

std::string actionLabel(BgpAttrErrorAction action) {
   return action == treatAsWithdraw ? "treat-as-withdraw" : "none";
}

} // namespace QorBgpTools
