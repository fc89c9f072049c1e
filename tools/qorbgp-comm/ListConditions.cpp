#include "ListConditions.h"

#include "QorBgpCommunity/QorBgp/CommunityPolicyParser.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"
#include "QorBgpCommunity/platform/Errors.h"

namespace QorBgpTools {

using namespace Routing::Bgp;

namespace {

// Memos per peer (32 KiB each): the distinct lists one peer sends in a dump.
constexpr std::size_t memoSlots = 1 << 12;

} // namespace

template <class Matcher>
bool ListConditions::Condition<Matcher>::matches(typename Matcher::List const* list,
                                                 CommunityMatchContext context) {
   auto& memo = memos[context.peerAs];
   if (!memo) {
      memo = std::make_unique<CommunitySetMatchMemo<Matcher>>(set, context, memoSlots);
   }
   return memo->matches(list ? *list : *empty);
}

std::optional<ListConditions> ListConditions::parse(Texts const& texts, U32 localAs,
                                                    std::string* error) {
   ListConditions conditions;
   conditions.localAs_ = localAs;
   std::string option;
   // The empty list a path without a list of that kind is judged as holding.
   auto tables = communityTablesFactory();
   try {
      if (!texts.standard.empty()) {
         option = "--standard";
         auto condition = std::make_shared<Condition<StandardCommunityMatcher>>();
         condition->set = parseStandardCommunitySet(texts.standard);
         std::vector<U32> none;
         condition->empty = CommList::dedupValues(tables->commListDedupTable().get(), none);
         conditions.standard_ = std::move(condition);
      }
      if (!texts.large.empty()) {
         option = "--large";
         auto condition = std::make_shared<Condition<LargeCommunityMatcher>>();
         condition->set = parseLargeCommunitySet(texts.large);
         std::vector<Acl::CommunityValue> none;
         condition->empty =
            LargeCommList::dedupValues(tables->largeCommListDedupTable().get(), none);
         conditions.large_ = std::move(condition);
      }
      if (!texts.extended.empty()) {
         option = "--extended";
         auto condition = std::make_shared<Condition<ExtCommunityMatcher>>();
         condition->set = parseExtCommunitySet(texts.extended);
         condition->empty = extCommListFactory()->dedup(tables->extCommListDedupTable().get());
         conditions.extended_ = std::move(condition);
      }
   } catch (Kiv::RangeError const& e) {
      *error = option + ": " + e.what();
      return std::nullopt;
   }
   return conditions;
}

bool ListConditions::matches(PathLists const& lists, U32 peerAs) {
   CommunityMatchContext const context{.peerAs = peerAs, .localAs = localAs_};
   return (!standard_ || standard_->matches(lists.standard.get(), context)) &&
          (!large_ || large_->matches(lists.large.get(), context)) &&
          (!extended_ || extended_->matches(lists.extended.get(), context));
}

} // namespace QorBgpTools
