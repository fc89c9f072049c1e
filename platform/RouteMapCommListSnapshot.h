/// @file
/// The route-policy layer's community-list snapshot: a mutable, observed copy
/// of a large community list, entry by entry, for policy code that reacts to
/// single communities coming and going.
#pragma once

#include "QorBgpCommunity/platform/CommunityValue.h"
#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Notifier.h"
#include "QorBgpCommunity/platform/NotifyingCollections.h"
#include "QorBgpCommunity/platform/Ptr.h"

#include <cstddef>
#include <map>
#include <optional>

namespace Routing::RouteMap {

/// An ordered map from large community to a bool, ascending by community.
/// Every insertion, change of value and removal calls onComm(community) on the
/// notifiees, after the change, while notification is on
/// (hasNotificationActiveIs); an operation that changes nothing calls nobody.
///
/// Owned through Ptr by one consumer; not thread-safe (see Notifier.h for
/// what a callback may do).
///
/// @code{.cpp}
///   auto snapshot = Kiv::newNotifying<CommListSnapshot>();
///   snapshot->commIs(Acl::CommunityValue{65000, 1, 2}, true);   // onComm(65000:1:2)
/// @endcode
class QORBGP_EXPORT CommListSnapshot : public Kiv::Notifier {
 public:
   KIV_POINTER_TYPES(CommListSnapshot);

   /// Observer of the snapshot; told of every community inserted, changed or removed.
   class QORBGP_EXPORT Notifiee : public Kiv::Notifiee {
    public:
      ~Notifiee() override;
      /// `community` was inserted, given a new value or removed.
      virtual void onComm(Acl::CommunityValue const& community);
   };

   using CommMap = Kiv::NotifyingOrderedMap<Acl::CommunityValue, bool, Notifiee,
                                            &Notifiee::onComm>;
   using CommIterator = std::map<Acl::CommunityValue, bool>::const_iterator;

   CommListSnapshot();
   ~CommListSnapshot() override;

   /// Inserts `community`, or gives an existing entry the new value.
   void commIs(Acl::CommunityValue const& community, bool value) { comm_.set(community, value); }

   /// The value of `community`; empty when it has no entry.
   std::optional<bool> comm(Acl::CommunityValue const& community) const {
      bool const* value = comm_.find(community);
      return value ? std::optional<bool>(*value) : std::nullopt;
   }
   std::size_t comms() const noexcept { return comm_.size(); }
   /// Entries in ascending order of community. NOTE: invalidated by a change.
   ///@{
   CommIterator begin() const noexcept { return comm_.begin(); }
   CommIterator end() const noexcept { return comm_.end(); }
   ///@}

 private:
   CommMap comm_{*this};
};

} // namespace Routing::RouteMap
