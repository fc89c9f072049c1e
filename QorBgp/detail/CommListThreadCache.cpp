#include "QorBgpCommunity/QorBgp/detail/CommListThreadCache.h"

#include <algorithm>
#include <new>

namespace Routing::Bgp::detail {

CommListThreadCache& CommListThreadCache::forThisThread() {
   thread_local CommListThreadCache cache;
   return cache;
}

CommList::PtrConst CommListThreadCache::find(Zup::DedupHashTable const& table,
                                             std::span<U32 const> values, U32 hash) noexcept {
   if (!entries_) {
      return nullptr;
   }
   Entry& entry = entries_[hash & (entryCount - 1)];
   if (entry.list == nullptr || entry.tableSerial != table.serial() || entry.hash != hash ||
       entry.count != values.size() || !std::equal(values.begin(), values.end(), entry.values)) {
      return nullptr;
   }
   if (entry.references == 1) {
      // The entry's own reference keeps the list interned: taking more is
      // as safe as copying a pointer to it.
      entry.list->referencesIncBy(spareBatch);
      entry.references += spareBatch;
   }
   --entry.references;
   entry.credit = std::min(entry.credit + 1, maxCredit);
   return CommList::PtrConst::adopt(entry.list);
}

void CommListThreadCache::remember(Zup::DedupHashTable const& table,
                                   CommList const& list) noexcept {
   if (!entries_) {
      entries_.reset(new (std::nothrow) Entry[entryCount]);
      if (!entries_) {
         return;
      }
   }
   Entry& entry = entries_[list.hash() & (entryCount - 1)];
   if (entry.list == &list && entry.tableSerial == table.serial()) {
      return;
   }
   if (entry.credit > 0) {
      --entry.credit;
      return;
   }
   drop(entry);
   list.referencesInc();
   entry = Entry{
      table.serial(), &list, list.commVectorRawPtr()->data(), list.comms(), list.hash(), 1, 0};
}

void CommListThreadCache::clear() noexcept {
   for (std::size_t i = 0; entries_ && i < entryCount; ++i) {
      drop(entries_[i]);
   }
}

void CommListThreadCache::drop(Entry& entry) noexcept {
   if (entry.list == nullptr) {
      return;
   }
   // The spares at once; the entry's own reference may be the list's last,
   // so it goes through the list's usual release (and its table).
   if (entry.references > 1) {
      entry.list->referencesDecBy(entry.references - 1);
   }
   entry.list->referencesDec();
   entry = Entry{};
}

} // namespace Routing::Bgp::detail
