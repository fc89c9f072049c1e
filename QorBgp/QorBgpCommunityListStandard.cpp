#include "QorBgpCommunity/QorBgp/QorBgpCommunityListStandard.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityListDedupTable.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListFormat.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListHoard.h"
#include "QorBgpCommunity/QorBgp/QorBgpSerialize.h"
#include "QorBgpCommunity/QorBgp/QorBgpTrace.h"
#include "QorBgpCommunity/QorBgp/detail/CommListThreadCache.h"
#include "QorBgpCommunity/QorBgp/detail/CommListVector.h"
#include "QorBgpCommunity/platform/DynamicBuffer.h"
#include "QorBgpCommunity/platform/FeatureToggle.h"
#include "QorBgpCommunity/platform/Hoard.h"
#include "QorBgpCommunity/platform/PosixRegex.h"

#include <atomic>
#include <charconv>
#include <cstring>
#include <mutex>

namespace Routing::Bgp {

QOR_ASSERT_UNIT("QorBgpCommunityList");

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

// The name of a well-known community; `llgrNames` gives the two LLGR
// communities theirs (toggleQorBgpLlgrEnabled()).
std::string_view wellKnownNameOf(U32 value, bool llgrNames) {
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
   case communityLlgrStale:
      return llgrNames ? "llgr-stale" : std::string_view();
   case communityNoLlgr:
      return llgrNames ? "no-llgr" : std::string_view();
   default:
      return {};
   }
}

// Every named community is 0 or has the AS part 65535: the test that spares
// ordinary communities the name lookup.
constexpr bool mayHaveName(U32 value) noexcept { return value == 0 || (value >> 16) == 0xFFFF; }

// The longest text of one community with its separator: "no-advertise ".
constexpr std::size_t maxElementTextSize = 13;
static_assert(colonFormMaxSize + 1 <= maxElementTextSize);

// The communities separated by single spaces, each in colon form or, with
// `names`, by its well-known name when it has one. Written in place into room
// made for the longest texts, then trimmed: no per-character checks.
void appendPolicyText(Kiv::DynamicBufferInterface& out, CommList::CommVector const& comms,
                      bool names) {
   if (comms.empty()) {
      return;
   }
   bool const llgrNames = names && toggleQorBgpLlgrEnabled();
   std::size_t const start = out.size();
   out.resize(start + comms.size() * maxElementTextSize);
   char* at = out.data() + start;
   for (U32 value : comms) {
      if (names && mayHaveName(value)) {
         std::string_view const name = wellKnownNameOf(value, llgrNames);
         if (!name.empty()) {
            std::memcpy(at, name.data(), name.size());
            at += name.size();
            *at++ = ' ';
            continue;
         }
      }
      at = std::to_chars(at, at + 5, value >> 16).ptr;
      *at++ = ':';
      at = std::to_chars(at, at + 5, value & 0xFFFF).ptr;
      *at++ = ' ';
   }
   out.resize(static_cast<std::size_t>(at - out.data()) - 1); // without the last space
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

bool CommList::storedFlagsIs(U32 flags) noexcept {
   if (commVector_.empty()) {
      commVectorSorted_ = (flags & storedSortedFlag) != 0;
      noExport_ = (flags & storedNoExportFlag) != 0;
      noAdvertise_ = (flags & storedNoAdvertiseFlag) != 0;
      noExportSubconfed_ = (flags & storedNoExportSubconfedFlag) != 0;
      cacheHash();
      return true;
   }
   if (!detail::commVectorNormalized(commVector_)) {
      return false;
   }
   commVectorSorted_ = true;
   noExport_ = comm(communityNoExport);
   noAdvertise_ = comm(communityNoAdvertise);
   noExportSubconfed_ = comm(communityNoExportSubconfed);
   cacheHash();
   // Also refuses a word without the sorted flag or with unknown bits.
   return storedFlags() == flags;
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
   values = detail::sortUnique(values);
   Zup::DedupHashTable const& dedupTable = *table->dedupTable();
   // Hashed directly: most standard lists are short enough that remembering
   // their hash (QorBgpCommunityListLarge.cpp) saves no time, only memory.
   U32 const hash = valuesHash(values);
   detail::CommListThreadCache* cache = nullptr;
   if (dedupTable.multiThreaded()) {
      cache = &detail::CommListThreadCache::forThisThread();
      if (auto cached = cache->find(dedupTable, values, hash)) {
         return cached;
      }
   }
   CommListContent content;
   content.values = values;
   PtrConst list = dedupTable.lookupByContentAs<CommList>(content, hash);
   if (!list) {
      CommList::Ptr built = commListFactory();
      built->commVector_.assign(values.begin(), values.end());
      list = built->dedup(table);
   }
   if (cache) {
      cache->remember(dedupTable, *list);
   }
   return list;
}

void CommList::releaseThreadCache() noexcept { detail::CommListThreadCache::forThisThread().clear(); }

std::string CommList::serialize() const {
   QOR_ASSERT(commVectorSorted());
   return SerializePathAttribute::serializeWords(community, optionalTransitive, commVector_);
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

std::string CommList::wellKnownName(U32 value) {
   return std::string(wellKnownNameOf(value, toggleQorBgpLlgrEnabled()));
}

CommList::Ptr commListFactory() { return Kiv::newNotifying<CommList>(); }

CommList::PtrConst CommList::dehoard(void const* data, hoard::StoreManager* store) {
   return dehoardCommList<CommList, U32>(data, store);
}

hoard::Location CommList::hoard(hoard::StoreWriter& writer) const {
   return writer.publishList<U32>(storedFlags(), commVector_);
}

// Standard lists are the most printed: their text is built in a stack
// buffer and written in one piece.
constexpr std::size_t standardTextCapacity = 1024;

std::string CommList::toStrep() const {
   Kiv::DynamicBuffer<standardTextCapacity> text;
   appendText(text);
   return text.str();
}

void formatCommList(std::ostream& os, CommList const* list) {
   if (list) {
      Kiv::DynamicBuffer<standardTextCapacity> text;
      list->appendText(text);
      os.write(text.data(), static_cast<std::streamsize>(text.size()));
   }
}

std::ostream& operator<<(std::ostream& os, CommList const* list) {
   formatCommList(os, list);
   return os;
}

} // namespace Routing::Bgp
