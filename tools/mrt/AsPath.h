// The AS path of an MRT path, from its AS_PATH attribute (and AS4_PATH, for
// 2-octet sessions), for display and for filtering by origin AS.
//
//   if (auto asPath = AsPath::of(path)) { print(asPath->text()); use(asPath->origin()); }
#pragma once

#include "tools/mrt/MrtReader.h"

#include <optional>
#include <string>
#include <vector>

namespace QorBgpTools::mrt {

// An AS path with 4-octet AS numbers throughout. Immutable value.
class AsPath {
 public:
   enum class SegmentType : U8 { set = 1, sequence = 2, confedSequence = 3, confedSet = 4 };
   struct Segment {
      SegmentType type;
      std::vector<U32> asns;
      friend bool operator==(Segment const&, Segment const&) = default;
   };

   // The path's AS path; an empty one when it has no AS_PATH attribute;
   // nullopt when AS_PATH is malformed (a segment runs past the attribute, or
   // has an unknown type or no AS). For a 2-octet path with an AS4_PATH, the
   // two are merged: the leading AS_PATH numbers that AS4_PATH does not
   // cover, then AS4_PATH (ignored when malformed or longer than AS_PATH).
   static std::optional<AsPath> of(Path const& path);

   std::vector<Segment> const& segments() const { return segments_; }
   // "3356 174 {64500,64501}": sequences space-separated, sets in braces,
   // confederation sequences in parentheses and sets in brackets.
   std::string text() const;
   // The AS that originated the route: the last AS of a final sequence, or the
   // only member of a final set; nullopt otherwise (empty path, larger set).
   std::optional<U32> origin() const;

 private:
   explicit AsPath(std::vector<Segment> segments) : segments_(std::move(segments)) {}
   std::vector<Segment> segments_;
};

} // namespace QorBgpTools::mrt
