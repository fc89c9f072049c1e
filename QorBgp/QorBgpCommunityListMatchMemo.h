/// @file
/// A route-map pattern's memory of its answers. Published lists are interned
/// and immutable, so what a compiled regular expression answers for a list
/// never changes; a route map that matches millions of paths sharing a few
/// thousand lists needs to run the expression once per list.
///
/// @code{.cpp}
///   RouteMapMatchMemo memo(new Routing::RouteMap::PosixRegex("(^| )65535:666( |$)"));
///   for (auto const& path : paths) {
///      if (memo.matchCommunitiesRegex(*path.communities)) { ... }   // as list->matchCommunitiesRegex
///   }
/// @endcode
///
/// The memo is a fixed array of slots (bounded memory, chosen at construction),
/// each remembering one list's serial number and answer; a list whose slot
/// another list took is simply matched again. Serial numbers are unique for
/// the whole run, so a list released and replaced by another at the same
/// address is never answered from memory. Thread-safe: slots are single
/// atomic words, so several threads may match through one memo at once.
#pragma once

#include "QorBgpCommunity/QorBgp/QorBgpCommunityList.h"
#include "QorBgpCommunity/platform/PosixRegex.h"

#include <atomic>
#include <cstddef>
#include <memory>

namespace Routing::Bgp {

/// Remembers a compiled route-map expression's answers for published lists, so that each list
/// is matched once.
class QORBGP_EXPORT RouteMapMatchMemo {
 public:
   /// Enough for the distinct lists of several full tables (512 KiB).
   static constexpr std::size_t defaultSlots = 1 << 16;

   /// `regex` must not be null. `slots` is rounded up to a power of two.
   explicit RouteMapMatchMemo(Routing::RouteMap::PosixRegex::PtrConst regex,
                              std::size_t slots = defaultSlots);
   ~RouteMapMatchMemo();
   RouteMapMatchMemo(RouteMapMatchMemo const&) = delete;
   RouteMapMatchMemo& operator=(RouteMapMatchMemo const&) = delete;

   /// The list's own matchCommunitiesRegex answer. The list must be published.
   ///@{
   bool matchCommunitiesRegex(CommList const& list) const;
   bool matchCommunitiesRegex(LargeCommList const& list) const;
   bool matchCommunitiesRegex(ExtCommList const& list) const;
   ///@}

   Routing::RouteMap::PosixRegex const& regex() const noexcept { return *regex_; }

 private:
   template <class List>
   bool answer(List const& list) const;

   Routing::RouteMap::PosixRegex::PtrConst const regex_;
   std::size_t const mask_;
   /// serial << 1 | answer; 0 is an empty slot (no serial is 0).
   std::unique_ptr<std::atomic<U64>[]> const slots_;
};

} // namespace Routing::Bgp
