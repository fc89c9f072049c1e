// The members of the list cores, once for both extended community families.
#include "QorBgpCommunity/QorBgp/ExtCommListCore.h"

#include "QorBgpCommunity/QorBgp/ExtCommIp6List.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListExt.h"
#include "QorBgpCommunity/QorBgp/detail/ExtCommListFamily.h"

#include <algorithm>

namespace Routing::Bgp {

template <class Derived, class Family>
auto ExtCommClassificationListCore<Derived, Family>::comm(Key const& community) const
   -> Kiv::Ptr<Comm const> {
   return detail::ExtCommVectorLookup(derived().commVectorSorted(), comms_, community,
                                      qorAssertUnit);
}

template <class Derived, class Family>
U32 ExtCommClassificationListCore<Derived, Family>::hash() const noexcept {
   QOR_ASSERT_TEXT(derived().commVectorSorted(), "commVectorSorted()");
   return detail::ExtCommIdentityHash(comms_, qorAssertUnit);
}

template <class Derived, class Family>
bool ExtCommClassificationListCore<Derived, Family>::compare(
   Zup::DedupHandle const* other) const noexcept {
   QOR_ASSERT_TEXT(derived().commVectorSorted(), "commVectorSorted()");
   return comms_ == static_cast<ExtCommClassificationListCore const*>(other)->comms_;
}

namespace {

// Whether `objects` are the very objects `content` names, in order.
template <class Vector>
bool sameIdentities(Vector const& objects, Zup::DedupContentHandle const& content) noexcept {
   auto const& identities = static_cast<ExtCommIdentityContent const&>(content).identities;
   return std::equal(objects.begin(), objects.end(), identities.begin(), identities.end(),
                     [](auto const& object, void const* identity) { return object.get() == identity; });
}

} // namespace

template <class Derived, class Family>
bool ExtCommClassificationListCore<Derived, Family>::compareByContent(
   Zup::DedupContentHandle const& content) const noexcept {
   return sameIdentities(comms_, content);
}

template <class Derived, class Family>
auto ExtCommClassificationListCore<Derived, Family>::commSnapshot() const
   -> Kiv::Ptr<typename Family::ClassificationListSnapshot> {
   auto snapshot = Kiv::newNotifying<typename Family::ClassificationListSnapshot>(classification_);
   for (auto const& comm : comms_) {
      snapshot->commIs(comm);
   }
   return snapshot;
}

template <class Derived, class Family>
void ExtCommClassificationListCore<Derived, Family>::commAppend(Kiv::Ptr<Comm const> const& comm) {
   detail::ExtCommVectorAdd(comm, comms_, qorAssertUnit);
}

template <class Derived, class Family>
void ExtCommClassificationListCore<Derived, Family>::commVectorSort() {
   detail::ExtCommVectorSort(comms_);
}

template <class Derived, class Family>
auto ExtCommListCore<Derived, Family>::comm(Key const& community) const -> Kiv::Ptr<Comm const> {
   return detail::ExtCommVectorLookup(derived().commVectorSorted(), comms_, community,
                                      qorAssertUnit);
}

template <class Derived, class Family>
U32 ExtCommListCore<Derived, Family>::totalCommunities() const noexcept {
   QOR_ASSERT_TEXT(derived().commVectorSorted(), "commVectorSorted()");
   return comms();
}

template <class Derived, class Family>
auto ExtCommListCore<Derived, Family>::classificationList(ExtCommClassification classification)
   const -> Kiv::Ptr<typename Family::ClassificationList const> {
   QOR_ASSERT_TEXT(dedupState() != Zup::dedupHandleStateNeverDeduped(),
                   "__null == ( this ) || ( this )->dedupState() != "
                   "Zup::dedupHandleStateNeverDeduped()");
   ClassificationListVector const& lists = derived().classificationLists();
   return classification < lists.size() ? lists[classification] : nullptr;
}

template <class Derived, class Family>
U32 ExtCommListCore<Derived, Family>::hash() const noexcept {
   return detail::ExtCommIdentityHash(derived().classificationLists(), qorAssertUnit);
}

template <class Derived, class Family>
bool ExtCommListCore<Derived, Family>::compare(Zup::DedupHandle const* other) const noexcept {
   return derived().classificationLists() ==
          static_cast<Derived const*>(other)->classificationLists();
}

template <class Derived, class Family>
bool ExtCommListCore<Derived, Family>::compareByContent(
   Zup::DedupContentHandle const& content) const noexcept {
   return sameIdentities(derived().classificationLists(), content);
}

template <class Derived, class Family>
auto ExtCommListCore<Derived, Family>::commSnapshot() const
   -> Kiv::Ptr<typename Family::ListSnapshot> {
   auto snapshot = Kiv::newNotifying<typename Family::ListSnapshot>();
   for (auto const& list : derived().classificationLists()) {
      if (list) {
         snapshot->classificationListIs(list);
      }
   }
   for (auto const& comm : comms_) {
      snapshot->commIs(comm);
   }
   return snapshot;
}

template <class Derived, class Family>
void ExtCommListCore<Derived, Family>::commAppend(Kiv::Ptr<Comm const> const& comm) {
   detail::ExtCommVectorAdd(comm, comms_, qorAssertUnit);
}

template <class Derived, class Family>
void ExtCommListCore<Derived, Family>::commVectorSort() {
   detail::ExtCommVectorSort(comms_);
}

template <class Derived, class Family>
void ExtCommListCore<Derived, Family>::assertNeverDeduped() const noexcept {
   QOR_ASSERT_TEXT(dedupState() == Zup::dedupHandleStateNeverDeduped(),
                   "__null == ( this ) || ( this )->dedupState() == "
                   "Zup::dedupHandleStateNeverDeduped()");
}

// The members defined here, for both families. Members one at a time rather
// than whole classes, so that the inline accessors stay out of the library's
// exported symbols.
#define QORBGP_INSTANTIATE_CLASSIFICATION_LIST_CORE(Derived, Family)                               \
   template auto ExtCommClassificationListCore<Derived, Family>::comm(Family::Key const&)          \
      const -> Kiv::Ptr<Family::Comm const>;                                                       \
   template U32 ExtCommClassificationListCore<Derived, Family>::hash() const noexcept;             \
   template bool ExtCommClassificationListCore<Derived, Family>::compare(Zup::DedupHandle const*)  \
      const noexcept;                                                                              \
   template bool ExtCommClassificationListCore<Derived, Family>::compareByContent(                 \
      Zup::DedupContentHandle const&) const noexcept;                                              \
   template auto ExtCommClassificationListCore<Derived, Family>::commSnapshot()                    \
      const -> Kiv::Ptr<Family::ClassificationListSnapshot>;                                       \
   template void ExtCommClassificationListCore<Derived, Family>::commAppend(                       \
      Kiv::Ptr<Family::Comm const> const&);                                                        \
   template void ExtCommClassificationListCore<Derived, Family>::commVectorSort()

#define QORBGP_INSTANTIATE_LIST_CORE(Derived, Family)                                              \
   template auto ExtCommListCore<Derived, Family>::comm(Family::Key const&)                        \
      const -> Kiv::Ptr<Family::Comm const>;                                                       \
   template U32 ExtCommListCore<Derived, Family>::totalCommunities() const noexcept;               \
   template auto ExtCommListCore<Derived, Family>::classificationList(ExtCommClassification)       \
      const -> Kiv::Ptr<Family::ClassificationList const>;                                         \
   template U32 ExtCommListCore<Derived, Family>::hash() const noexcept;                           \
   template bool ExtCommListCore<Derived, Family>::compare(Zup::DedupHandle const*)                \
      const noexcept;                                                                              \
   template bool ExtCommListCore<Derived, Family>::compareByContent(                               \
      Zup::DedupContentHandle const&) const noexcept;                                              \
   template auto ExtCommListCore<Derived, Family>::commSnapshot()                                  \
      const -> Kiv::Ptr<Family::ListSnapshot>;                                                     \
   template void ExtCommListCore<Derived, Family>::commAppend(                                     \
      Kiv::Ptr<Family::Comm const> const&);                                                        \
   template void ExtCommListCore<Derived, Family>::commVectorSort();                               \
   template void ExtCommListCore<Derived, Family>::assertNeverDeduped() const noexcept

QORBGP_INSTANTIATE_CLASSIFICATION_LIST_CORE(ExtCommClassificationList, ExtCommFamily);
QORBGP_INSTANTIATE_CLASSIFICATION_LIST_CORE(ExtCommIp6ClassificationList, ExtCommIp6Family);
QORBGP_INSTANTIATE_LIST_CORE(ExtCommList, ExtCommFamily);
QORBGP_INSTANTIATE_LIST_CORE(ExtCommIp6List, ExtCommIp6Family);

} // namespace Routing::Bgp
