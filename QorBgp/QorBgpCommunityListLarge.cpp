#include "QorBgpCommunity/QorBgp/QorBgpCommunityListLarge.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityListDedupTable.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListFormat.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListHoard.h"
#include "QorBgpCommunity/QorBgp/QorBgpSerialize.h"
#include "QorBgpCommunity/QorBgp/QorBgpTrace.h"
#include "QorBgpCommunity/QorBgp/detail/CommListVector.h"
#include "QorBgpCommunity/platform/Hoard.h"
#include "QorBgpCommunity/platform/PosixRegex.h"

#include <charconv>

namespace Routing::Bgp {

QOR_ASSERT_UNIT("QorBgpCommunityList");

namespace {

// Inline size of the policy text; about 15 communities fit before the heap.
constexpr std::size_t policyTextInlineCapacity = 512;
// The smallest global administrator that asdot writes in two halves.
constexpr U32 asdotMin = 65536;

// What dedupValues looks a list up by: its sorted, unique values.
struct LargeCommListContent : Zup::DedupContentHandle {
   std::span<Acl::CommunityValue const> values;
};

U32 valuesHash(std::span<Acl::CommunityValue const> values) noexcept {
   U32 hash = 0;
   for (Acl::CommunityValue const& value : values) {
      hash = detail::jenkinsAddU32(hash, value.globalAdmin);
      hash = detail::jenkinsAddU32(hash, value.localData1);
      hash = detail::jenkinsAddU32(hash, value.localData2);
   }
   return Kiv::jenkinsFinish(hash);
}

} // namespace

std::size_t LargeCommunityFormatter::format(Kiv::DynamicBufferInterface& buffer,
                                            Acl::CommunityValue const& value, bool asdot) {
   std::size_t const before = buffer.size();
   if (asdot && value.globalAdmin >= asdotMin) {
      buffer.appendDecimal(value.globalAdmin >> 16);
      buffer.append('.');
      buffer.appendDecimal(value.globalAdmin & 0xFFFF);
   } else {
      buffer.appendDecimal(value.globalAdmin);
   }
   buffer.append(':');
   buffer.appendDecimal(value.localData1);
   buffer.append(':');
   buffer.appendDecimal(value.localData2);
   return buffer.size() - before;
}

LargeCommList::LargeCommList() noexcept = default;

LargeCommList::~LargeCommList() = default;

void LargeCommList::commIs(Acl::CommunityValue const& value) {
   QOR_ASSERT(!commVectorSorted());
   detail::commVectorAppend(commVector_, value);
}

LargeCommList::PtrConst LargeCommList::dedup(LargeCommListDedupTable const* table) {
   if (!commVectorSorted_) {
      detail::commVectorNormalize(commVector_);
      commVectorSorted_ = true;
   }
   cacheHash();
   return table->dedupAs<LargeCommList>(PtrConst(this));
}

void LargeCommList::cacheHash() noexcept { hash_ = valuesHash(commVector_); }

LargeCommList::PtrConst LargeCommList::dedupValues(LargeCommListDedupTable const* table,
                                                   std::span<Acl::CommunityValue> values) {
   values = detail::sortUnique(values);
   LargeCommListContent content;
   content.values = values;
   Zup::DedupHashTable const& dedupTable = *table->dedupTable();
   U32 const hash = detail::rememberedValuesHash<Acl::CommunityValue>(dedupTable, values, valuesHash);
   if (auto found = dedupTable.lookupByContentAs<LargeCommList>(content, hash)) {
      return found;
   }
   LargeCommList::Ptr list = largeCommListFactory();
   list->commVector_.assign(values.begin(), values.end());
   return list->dedup(table);
}

bool LargeCommList::storedFlagsIs(U32 flags) noexcept {
   if (commVector_.empty()) {
      commVectorSorted_ = (flags & storedSortedFlag) != 0;
      cacheHash();
      return true;
   }
   if (flags != storedSortedFlag || !detail::commVectorNormalized(commVector_)) {
      return false;
   }
   commVectorSorted_ = true;
   cacheHash();
   return true;
}

bool LargeCommList::comm(Acl::CommunityValue const& value) const noexcept {
   QOR_ASSERT(commVectorSorted());
   return detail::commVectorHas(commVector_, value);
}

U32 LargeCommList::hash() const noexcept {
   QOR_ASSERT(commVectorSorted());
   return hash_;
}

bool LargeCommList::compare(Zup::DedupHandle const* other) const noexcept {
   QOR_ASSERT(commVectorSorted());
   return static_cast<LargeCommList const*>(other)->commVector_ == commVector_;
}

bool LargeCommList::compareByContent(Zup::DedupContentHandle const& content) const noexcept {
   auto const& values = static_cast<LargeCommListContent const&>(content).values;
   return std::equal(values.begin(), values.end(), commVector_.begin(), commVector_.end());
}

std::string LargeCommList::serialize() const {
   QOR_ASSERT(commVectorSorted());
   return SerializePathAttribute::serializeWords(largeCommunity, optionalTransitive, commVector_);
}

RouteMap::CommListSnapshot::Ptr LargeCommList::commSnapshot() const {
   QOR_ASSERT(commVectorSorted());
   auto snapshot = Kiv::newNotifying<RouteMap::CommListSnapshot>();
   for (Acl::CommunityValue const& value : commVector_) {
      snapshot->commIs(value, true);
   }
   return snapshot;
}

bool LargeCommList::matchCommunitiesRegex(Routing::RouteMap::PosixRegex const* regex) const {
   QOR_ASSERT(commVectorSorted());
   Kiv::DynamicBuffer<policyTextInlineCapacity> text;
   appendText(text);
   text.append('\0');
   return regex->execute(text.data()) == 0;
}

std::string LargeCommList::getStringValue(Acl::CommunityValue const& value) {
   return displayString(value, false);
}

std::string LargeCommList::displayString(Acl::CommunityValue const& value, bool asdot) {
   Kiv::DynamicBuffer<LargeCommunityFormatter::maxSize> text;
   LargeCommunityFormatter::format(text, value, asdot);
   return text.str();
}

LargeCommList::Ptr largeCommListFactory() { return Kiv::newNotifying<LargeCommList>(); }

LargeCommList::PtrConst LargeCommList::dehoard(void const* data, hoard::StoreManager* store) {
   return dehoardCommList<LargeCommList, Acl::CommunityValue>(data, store);
}

hoard::Location LargeCommList::hoard(hoard::StoreWriter& writer) const {
   return writer.publishList<Acl::CommunityValue>(storedFlags(), commVector_);
}

std::string LargeCommList::toStrep() const {
   Kiv::DynamicBuffer<policyTextInlineCapacity> text;
   appendText(text);
   return text.str();
}

void LargeCommList::appendText(Kiv::DynamicBufferInterface& out) const {
   if (commVector_.empty()) {
      return;
   }
   // Written in place into room for the longest texts, then trimmed.
   std::size_t const start = out.size();
   out.resize(start + commVector_.size() * (LargeCommunityFormatter::maxSize + 1));
   char* at = out.data() + start;
   for (Acl::CommunityValue const& value : commVector_) {
      at = std::to_chars(at, at + 10, value.globalAdmin).ptr;
      *at++ = ':';
      at = std::to_chars(at, at + 10, value.localData1).ptr;
      *at++ = ':';
      at = std::to_chars(at, at + 10, value.localData2).ptr;
      *at++ = ' ';
   }
   out.resize(static_cast<std::size_t>(at - out.data()) - 1); // without the last space
}

} // namespace Routing::Bgp
