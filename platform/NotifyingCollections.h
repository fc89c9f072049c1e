/// @file
/// Collections that tell their owner's notifiees about every change.
///
/// Each collection is a member of a Notifier (its owner) and is bound to one
/// callback of the owner's notifiee base, `void (N::*)(Key const&)`. An
/// insertion or removal that changes the collection calls that callback on
/// every notifiee, synchronously, after the change; an operation that changes
/// nothing notifies nobody. Receivers get the key only and look the entry up
/// if they care: it may have changed again by then.
///
/// @code{.cpp}
///   class Registry : public Kiv::Notifier {
///    public:
///      struct Notifiee : Kiv::Notifiee { virtual void onName(std::string const&) {} };
///      Kiv::NotifyingKeySet<std::string, Notifiee, &Notifiee::onName> names{*this};
///   };
/// @endcode
///
/// Iteration order: unspecified for the key set and hash map, ascending for the
/// ordered map. WARNING: a callback that changes the collection invalidates
/// iterators of the hash-based collections; iterate over a copy when callbacks
/// may run.
#pragma once

#include "QorBgpCommunity/platform/Notifier.h"

#include <functional>
#include <map>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace Kiv {

namespace detail {

template <class N, class Key, void (N::*OnChange)(Key const&)>
class NotifyingBase {
 protected:
   explicit NotifyingBase(Notifier const& owner) noexcept : owner_(owner) {}
   void changed(Key const& key) const {
      owner_.notify<N>([&key](N& n) { (n.*OnChange)(key); });
   }

 private:
   Notifier const& owner_;
};

} // namespace detail

/// A set of keys that tells its owner's notifiees about every key inserted or removed.
template <class Key, class N, void (N::*OnChange)(Key const&), class Hash = std::hash<Key>>
class NotifyingKeySet : detail::NotifyingBase<N, Key, OnChange> {
 public:
   using Set = std::unordered_set<Key, Hash>;

   explicit NotifyingKeySet(Notifier const& owner) : detail::NotifyingBase<N, Key, OnChange>(owner) {}
   NotifyingKeySet(NotifyingKeySet const&) = delete;
   NotifyingKeySet& operator=(NotifyingKeySet const&) = delete;

   /// Inserts the key; notifies only when it was absent. Returns the key.
   Key insert(Key const& key) {
      if (keys_.insert(key).second) {
         this->changed(key);
      }
      return key;
   }
   /// Removes the key; notifies and returns true only when it was present.
   /// `key` may refer to the stored key itself: it is copied first.
   bool erase(Key const& key) {
      Key const removed = key;
      if (keys_.erase(removed) == 0) {
         return false;
      }
      this->changed(removed);
      return true;
   }
   /// Removes every key, each removal notifying.
   void clear() {
      while (!keys_.empty()) {
         erase(*keys_.begin());
      }
   }
   bool contains(Key const& key) const { return keys_.contains(key); }
   std::size_t size() const noexcept { return keys_.size(); }
   bool empty() const noexcept { return keys_.empty(); }
   typename Set::const_iterator begin() const noexcept { return keys_.begin(); }
   typename Set::const_iterator end() const noexcept { return keys_.end(); }

 private:
   Set keys_;
};

/// Shared body of the two maps; Map is std::unordered_map or std::map.
template <class Map, class N, void (N::*OnChange)(typename Map::key_type const&)>
class NotifyingMap : detail::NotifyingBase<N, typename Map::key_type, OnChange> {
 public:
   using Key = typename Map::key_type;
   using Value = typename Map::mapped_type;
   using const_iterator = typename Map::const_iterator;

   explicit NotifyingMap(Notifier const& owner)
       : detail::NotifyingBase<N, Key, OnChange>(owner) {}
   NotifyingMap(NotifyingMap const&) = delete;
   NotifyingMap& operator=(NotifyingMap const&) = delete;

   /// Inserts or replaces; notifies only when the entry changed (an equal
   /// value leaves it and the notifiees alone).
   void set(Key const& key, Value value) {
      auto [it, inserted] = entries_.try_emplace(key, value);
      if (!inserted) {
         if (it->second == value) {
            return;
         }
         it->second = std::move(value);
      }
      this->changed(key);
   }
   /// Removes the entry; notifies and returns true only when it was present.
   /// `key` may refer to the stored key itself: it is copied first.
   bool erase(Key const& key) {
      auto it = entries_.find(key);
      if (it == entries_.end()) {
         return false;
      }
      Key const removed = it->first;
      [[maybe_unused]] Value dropped = std::move(it->second); // released after the notification
      entries_.erase(it);
      this->changed(removed);
      return true;
   }
   void clear() {
      while (!entries_.empty()) {
         erase(entries_.begin()->first);
      }
   }
   /// The value, or null when absent. Valid until the entry changes.
   Value const* find(Key const& key) const {
      auto it = entries_.find(key);
      return it == entries_.end() ? nullptr : &it->second;
   }
   bool contains(Key const& key) const { return entries_.contains(key); }
   std::size_t size() const noexcept { return entries_.size(); }
   bool empty() const noexcept { return entries_.empty(); }
   typename Map::const_iterator begin() const noexcept { return entries_.begin(); }
   typename Map::const_iterator end() const noexcept { return entries_.end(); }

 private:
   Map entries_;
};

template <class Key, class Value, class N, void (N::*OnChange)(Key const&),
          class Hash = std::hash<Key>>
using NotifyingHashMap = NotifyingMap<std::unordered_map<Key, Value, Hash>, N, OnChange>;

template <class Key, class Value, class N, void (N::*OnChange)(Key const&)>
using NotifyingOrderedMap = NotifyingMap<std::map<Key, Value>, N, OnChange>;

} // namespace Kiv
