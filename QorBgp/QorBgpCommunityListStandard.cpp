#include "QorBgp/QorBgpCommunityListStandard.h"

#include "QorBgp/QorBgpCommunityListDedupTable.h"
#include "QorBgp/QorBgpCommunityListVector.h"
#include "QorBgp/QorBgpSerialize.h"
#include "platform/DynamicBuffer.h"
#include "platform/FeatureToggle.h"
#include "platform/PosixRegex.h"

#include <atomic>
#include <mutex>

namespace Routing::Bgp {

KIV_ENUM_DEFINE(BgpCommunityValue, "Routing::Bgp::BgpCommunityValue", Kiv::noMemberLimit,
                QORBGP_BGP_COMMUNITY_VALUE_MEMBERS)

namespace {

// "65535:65535".
constexpr std::size_t colonFormMaxSize = 11;
// Inline size of the policy texts; about 40 communities fit before the heap.
constexpr std::size_t policyTextInlineCapacity = 512;

// The LLGR toggle: unread, or the value read (0 or 1).
constexpr int llgrToggleUnread = -1;
std::atomic<int> llgrToggle{llgrToggleUnread};
std::mutex llgrToggleMutex;

void appendColonForm(Kiv::DynamicBufferInterface& out, U32 value) {
   out.appendDecimal(value >> 16);
   out.append(':');
   out.appendDecimal(value & 0xFFFF);
}

std::string_view wellKnownNameOf(U32 value) {
   if (toggleQorBgpLlgrEnabled()) {
      if (value == communityLlgrStale) {
         return "llgr-stale";
      }
      if (value == communityNoLlgr) {
         return "no-llgr";
      }
   }
   switch (value) {
   case communityNoExport:
      return "no-export";
   case communityNoAdvertise:
      return "no-advertise";
   case communityNoExportSubconfed:
      return "local-as";
   case communityInternet:
      return "internet";
   case communityGshut:
      return "GSHUT";
   default:
      return {};
   }
}

// The communities separated by single spaces, each in colon form or, with
// `names`, by its well-known name when it has one.
void appendPolicyText(Kiv::DynamicBufferInterface& out, CommList::CommVector const& comms,
                      bool names) {
   for (std::size_t i = 0; i < comms.size(); ++i) {
      if (i != 0) {
         out.append(' ');
      }
      std::string_view const name = names ? wellKnownNameOf(comms[i]) : std::string_view();
      if (name.empty()) {
         appendColonForm(out, comms[i]);
      } else {
         out.append(name);
      }
   }
}

} // namespace

bool toggleQorBgpLlgrEnabled() {
   int state = llgrToggle.load(std::memory_order_acquire);
   if (state == llgrToggleUnread) [[unlikely]] {
      std::lock_guard lock(llgrToggleMutex);
      state = llgrToggle.load(std::memory_order_relaxed);
      if (state == llgrToggleUnread) {
         state = Kiv::getToggleState("QorBgpLlgr", Kiv::featureToggleFile(), true) ? 1 : 0;
         llgrToggle.store(state, std::memory_order_release);
      }
   }
   return state == 1;
}

void toggleQorBgpLlgrEnabledResetForTest() {
   llgrToggle.store(llgrToggleUnread, std::memory_order_release);
}

CommListSnapshot::Notifiee::~Notifiee() = default;

void CommListSnapshot::Notifiee::onComm(U32 const&) {}

CommListSnapshot::CommListSnapshot() = default;

CommListSnapshot::~CommListSnapshot() = default;

namespace {

// What dedupValues looks a list up by: its sorted, unique values.
struct CommListContent : Zup::DedupContentHandle {
   std::span<U32 const> values;
};

U32 valuesHash(std::span<U32 const> values) noexcept {
   U32 hash = 0;
   for (U32 value : values) {
      hash = detail::jenkinsAddU32(hash, value);
   }
   return Kiv::jenkinsFinish(hash);
}

} // namespace

CommList::CommList() noexcept = default;

CommList::~CommList() = default;

void CommList::commIs(U32 value) {
   QOR_ASSERT(!commVectorSorted());
   detail::commVectorAppend(commVector_, value);
}

CommList::PtrConst CommList::dedup(CommListDedupTable const* table) {
   if (!commVectorSorted_) {
      detail::commVectorNormalize(commVector_);
      commVectorSorted_ = true;
   }
   noExport_ = comm(communityNoExport);
   noAdvertise_ = comm(communityNoAdvertise);
   noExportSubconfed_ = comm(communityNoExportSubconfed);
   cacheHash();
   return table->dedupAs<CommList>(PtrConst(this));
}

void CommList::cacheHash() noexcept { hash_ = valuesHash(commVector_); }

U32 CommList::storedFlags() const noexcept {
   return (commVectorSorted_ ? storedSortedFlag : 0) | (noExport_ ? storedNoExportFlag : 0) |
          (noAdvertise_ ? storedNoAdvertiseFlag : 0) |
          (noExportSubconfed_ ? storedNoExportSubconfedFlag : 0);
}

void CommList::storedFlagsIs(U32 flags) noexcept {
   commVectorSorted_ = (flags & storedSortedFlag) != 0;
   noExport_ = (flags & storedNoExportFlag) != 0;
   noAdvertise_ = (flags & storedNoAdvertiseFlag) != 0;
   noExportSubconfed_ = (flags & storedNoExportSubconfedFlag) != 0;
   cacheHash();
}

bool CommList::comm(U32 value) const noexcept {
   QOR_ASSERT(commVectorSorted());
   return detail::commVectorHas(commVector_, value);
}

bool CommList::noExport() const noexcept {
   QOR_ASSERT(commVectorSorted());
   return noExport_;
}

bool CommList::noAdvertise() const noexcept {
   QOR_ASSERT(commVectorSorted());
   return noAdvertise_;
}

bool CommList::noExportSubconfed() const noexcept {
   QOR_ASSERT(commVectorSorted());
   return noExportSubconfed_;
}

U32 CommList::hash() const noexcept {
   QOR_ASSERT(commVectorSorted());
   return hash_;
}

bool CommList::compare(Zup::DedupHandle const* other) const noexcept {
   QOR_ASSERT(commVectorSorted());
   return static_cast<CommList const*>(other)->commVector_ == commVector_;
}

bool CommList::compareByContent(Zup::DedupContentHandle const& content) const noexcept {
   auto const& values = static_cast<CommListContent const&>(content).values;
   return std::equal(values.begin(), values.end(), commVector_.begin(), commVector_.end());
}

CommList::PtrConst CommList::dedupValues(CommListDedupTable const* table, std::span<U32> values) {
   std::sort(values.begin(), values.end());
   values = values.first(static_cast<std::size_t>(std::unique(values.begin(), values.end()) -
                                                  values.begin()));
   CommListContent content;
   content.values = values;
   if (auto found = table->dedupTable()->lookupByContentAs<CommList>(content, valuesHash(values))) {
      return found;
   }
   CommList::Ptr list = commListFactory();
   list->commVector_.assign(values.begin(), values.end());
   return list->dedup(table);
}

std::string CommList::serialize() const {
   QOR_ASSERT(commVectorSorted());
   SerializePathAttribute out(community, optionalTransitive, 4 * comms());
   out.addU32htonArray(commVector_);
   return out.serializedString();
}

void CommList::appendText(Kiv::DynamicBufferInterface& out) const {
   appendPolicyText(out, commVector_, true);
}

CommListSnapshot::Ptr CommList::commSnapshot() const {
   QOR_ASSERT(commVectorSorted());
   auto snapshot = Kiv::newNotifying<CommListSnapshot>();
   for (U32 value : commVector_) {
      snapshot->commIs(value, true);
   }
   return snapshot;
}

bool CommList::matchCommunitiesRegex(Routing::RouteMap::PosixRegex const* regex) const {
   QOR_ASSERT(commVectorSorted());
   Kiv::DynamicBuffer<policyTextInlineCapacity> text;
   appendPolicyText(text, commVector_, false);
   text.append('\0');
   if (regex->execute(text.data()) == 0) {
      return true;
   }
   text.clear();
   appendPolicyText(text, commVector_, true);
   text.append('\0');
   return regex->execute(text.data()) == 0;
}

std::string CommList::getStringValue(U32 value) {
   Kiv::DynamicBuffer<colonFormMaxSize> text;
   appendColonForm(text, value);
   return text.str();
}

std::string CommList::wellKnownName(U32 value) { return std::string(wellKnownNameOf(value)); }

CommList::Ptr commListFactory() { return Kiv::newNotifying<CommList>(); }

} // namespace Routing::Bgp
