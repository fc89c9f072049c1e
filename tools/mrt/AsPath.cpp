#include "tools/mrt/AsPath.h"

#include "tools/mrt/MrtWire.h"

namespace QorBgpTools::mrt {

namespace {

constexpr U8 kAttrAsPath = 2;
constexpr U8 kAttrAs4Path = 17;

std::optional<std::vector<AsPath::Segment>> decode(std::span<const U8> value, bool fourOctet) {
   std::vector<AsPath::Segment> out;
   detail::SpanReader r(value);
   while (r.remaining() > 0) {
      U8 type = r.u8();
      U8 count = r.u8();
      if (type < 1 || type > 4 || count == 0) {
         return std::nullopt;
      }
      AsPath::Segment& segment = out.emplace_back(AsPath::Segment{AsPath::SegmentType(type), {}});
      for (U8 i = 0; i < count; ++i) {
         segment.asns.push_back(fourOctet ? r.u32() : r.u16());
      }
      if (!r.ok()) {
         return std::nullopt;
      }
   }
   return out;
}

// The path length as RFC 4271 counts it: a set counts one, confederation
// segments nothing.
std::size_t length(std::vector<AsPath::Segment> const& path) {
   std::size_t n = 0;
   for (auto const& segment : path) {
      n += segment.type == AsPath::SegmentType::sequence ? segment.asns.size()
           : segment.type == AsPath::SegmentType::set    ? 1
                                                         : 0;
   }
   return n;
}

// The first `keep` ASes of `path` (counted as length() does), then `tail`.
std::vector<AsPath::Segment> merged(std::vector<AsPath::Segment> const& path, std::size_t keep,
                                    std::vector<AsPath::Segment> tail) {
   std::vector<AsPath::Segment> out;
   for (auto const& segment : path) {
      if (keep == 0) {
         break;
      }
      out.push_back(segment);
      if (segment.type == AsPath::SegmentType::sequence) {
         std::size_t taken = std::min(keep, segment.asns.size());
         out.back().asns.resize(taken);
         keep -= taken;
      } else if (segment.type == AsPath::SegmentType::set) {
         --keep;
      }
   }
   out.insert(out.end(), tail.begin(), tail.end());
   return out;
}

} // namespace

std::optional<AsPath> AsPath::of(Path const& path) {
   AttributeView const* asPath = path.attribute(kAttrAsPath);
   if (!asPath) {
      return AsPath({});
   }
   auto main = decode(asPath->value, path.fourOctetAs);
   if (!main) {
      return std::nullopt;
   }
   if (AttributeView const* as4Path = path.fourOctetAs ? nullptr : path.attribute(kAttrAs4Path)) {
      auto as4 = decode(as4Path->value, true);
      if (as4 && length(*as4) <= length(*main)) {
         std::size_t const keep = length(*main) - length(*as4);
         return AsPath(merged(*main, keep, std::move(*as4)));
      }
   }
   return AsPath(std::move(*main));
}

std::string AsPath::text() const {
   std::string out;
   for (Segment const& segment : segments_) {
      char const* brackets = segment.type == SegmentType::set              ? "{}"
                             : segment.type == SegmentType::confedSequence ? "()"
                             : segment.type == SegmentType::confedSet      ? "[]"
                                                                           : nullptr;
      char const separator =
         segment.type == SegmentType::sequence || segment.type == SegmentType::confedSequence ? ' '
                                                                                              : ',';
      if (!out.empty()) {
         out.push_back(' ');
      }
      if (brackets) {
         out.push_back(brackets[0]);
      }
      for (std::size_t i = 0; i < segment.asns.size(); ++i) {
         if (i > 0) {
            out.push_back(separator);
         }
         out += std::to_string(segment.asns[i]);
      }
      if (brackets) {
         out.push_back(brackets[1]);
      }
   }
   return out;
}

std::optional<U32> AsPath::origin() const {
   if (segments_.empty()) {
      return std::nullopt;
   }
   Segment const& last = segments_.back();
   if (last.type == SegmentType::sequence ||
       (last.type == SegmentType::set && last.asns.size() == 1)) {
      return last.asns.back();
   }
   return std::nullopt;
}

} // namespace QorBgpTools::mrt
