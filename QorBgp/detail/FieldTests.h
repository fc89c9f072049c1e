// Private helper of CommunitySetMatcher. Not part of the API.
//
// Matchers of fields (standard and large community matchers without a regex)
// compiled into masked range tests, so that judging a list costs a few
// compares per value and matcher instead of a call per field. Matcher m
// matches a value when every one of its tests t holds:
//
//    (part & mask[t]) - low[t] <= span[t]      (unsigned)
//
// where `part` is the whole 32-bit standard community, or the large
// community's global administrator, local data 1 or local data 2. A standard
// matcher is one test when its bounds are one range of the masked value (any
// AS: the local part under mask 0xFFFF; one AS, or any local part: the whole
// value), else two, one per part.
#pragma once

#include "QorBgpCommunity/QorBgp/CommunitySetMatcher.h"

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

namespace Routing::Bgp::detail {

class FieldTests {
 public:
   // The most matchers compiled; sets of more are judged matcher by matcher.
   static constexpr std::size_t maxMatchers = 16;

   // The tests of `matchers`, or null when one is a regex matcher or there
   // are more than maxMatchers.
   template <class Matcher>
   static std::unique_ptr<FieldTests const>
   compile(std::vector<typename Matcher::PtrConst> const& matchers) {
      if (matchers.size() > maxMatchers ||
          std::any_of(matchers.begin(), matchers.end(),
                      [](auto const& m) { return !m || m->hasRegex(); })) {
         return nullptr;
      }
      auto tests = std::unique_ptr<FieldTests>(new FieldTests);
      if constexpr (Matcher::fieldCount == 2) {
         bool const whole = std::all_of(matchers.begin(), matchers.end(), [](auto const& m) {
            return wholeValue(m->fields()[0], m->fields()[1]);
         });
         tests->perMatcher_ = whole ? 1 : 2;
         for (auto const& m : matchers) {
            auto const [as, local] = m->fields();
            if (whole) {
               bool const anyAs = as.kind() == CommunityFieldPattern::Kind::any;
               tests->add(anyAs ? 0xFFFF : 0xFFFFFFFF, anyAs ? local : as, anyAs ? 0 : 16,
                          anyAs ? CommunityFieldPattern::any() : local);
            } else {
               tests->add(0xFFFF0000, as, 16, CommunityFieldPattern::any());
               tests->add(0xFFFF, local, 0, CommunityFieldPattern::any());
            }
         }
      } else {
         tests->perMatcher_ = Matcher::fieldCount;
         for (auto const& m : matchers) {
            for (CommunityFieldPattern const& field : m->fields()) {
               tests->add(0xFFFFFFFF, field, 0, CommunityFieldPattern::any());
            }
         }
      }
      return tests;
   }

   // The answer of `mode` for `values` (a list's values, ascending), the
   // placeholders bound from `context`.
   template <class Matcher, class Values>
   bool answer(CommunitySetMode mode, Values const& values,
               CommunityMatchContext const& context) const {
      if constexpr (Matcher::fieldCount == 2) {
         return perMatcher_ == 1 ? answerOf<Matcher, 1>(mode, values, context)
                                 : answerOf<Matcher, 2>(mode, values, context);
      } else {
         return answerOf<Matcher, Matcher::fieldCount>(mode, values, context);
      }
   }

 private:
   FieldTests() = default;

   // A test bound at match time: its low bound takes the context's value,
   // shifted into place; a value past `most` fits no community.
   struct Placeholder {
      U8 test;
      U8 shift;
      CommunityFieldPattern::Kind kind;
      U32 most;
   };

   // Whether a standard matcher's two fields bound one range of a masked
   // value: any AS (mask 0xFFFF on the local part), or one AS or any local
   // part (the whole value). A placeholder AS counts as one value; a
   // placeholder local part is bound alone, so only under any AS.
   static bool wholeValue(CommunityFieldPattern const& as, CommunityFieldPattern const& local) {
      auto const one = [](CommunityFieldPattern const& f) {
         return f.kind() != CommunityFieldPattern::Kind::any &&
                f.kind() != CommunityFieldPattern::Kind::range;
      };
      bool const boundLocal = local.kind() == CommunityFieldPattern::Kind::peerAs ||
                              local.kind() == CommunityFieldPattern::Kind::localAs;
      return as.kind() == CommunityFieldPattern::Kind::any || (one(as) && !boundLocal) ||
             local.kind() == CommunityFieldPattern::Kind::any;
   }

   // One test: `high` bounds the part under `mask`, shifted left by `shift`;
   // `low` below it adds a lower field (any: every value of the bits under
   // the shift).
   void add(U32 mask, CommunityFieldPattern const& high, U8 shift,
            CommunityFieldPattern const& lower) {
      bool const placeholder = high.kind() == CommunityFieldPattern::Kind::peerAs ||
                               high.kind() == CommunityFieldPattern::Kind::localAs;
      U32 const lowerLow = lower.kind() == CommunityFieldPattern::Kind::any ? 0 : lower.low();
      U32 const lowerSpan = shift == 0 ? 0
                            : lower.kind() == CommunityFieldPattern::Kind::any
                               ? (U32{1} << shift) - 1
                               : lower.high() - lower.low();
      U32 const highSpan = high.kind() == CommunityFieldPattern::Kind::any
                              ? mask >> shift
                              : (placeholder ? 0 : high.high() - high.low());
      if (placeholder) {
         placeholders_.push_back({static_cast<U8>(low_.size()), shift, high.kind(), mask >> shift});
      }
      mask_.push_back(mask);
      low_.push_back((placeholder || high.kind() == CommunityFieldPattern::Kind::any
                         ? 0
                         : high.low() << shift) |
                     lowerLow);
      span_.push_back(highSpan << shift | lowerSpan);
   }

   template <class Matcher, std::size_t width, class Values>
   bool answerOf(CommunitySetMode mode, Values const& values,
                 CommunityMatchContext const& context) const {
      std::size_t const testCount = low_.size();
      U32 const* mask = mask_.data();
      U32 const* low = low_.data();
      U32 const* span = span_.data();
      std::array<U32, maxMatchers * 3> boundMask, boundLow;
      if (!placeholders_.empty()) {
         std::copy_n(mask_.begin(), testCount, boundMask.begin());
         std::copy_n(low_.begin(), testCount, boundLow.begin());
         for (Placeholder const& p : placeholders_) {
            U32 const value =
               p.kind == CommunityFieldPattern::Kind::peerAs ? context.peerAs : context.localAs;
            if (value > p.most) {
               boundMask[p.test] = 0; // (part & 0) - 1 is never within the span
               boundLow[p.test] = 1;
            } else {
               boundLow[p.test] |= value << p.shift;
            }
         }
         mask = boundMask.data();
         low = boundLow.data();
      }
      auto matchedBy = [&](auto const& value, std::size_t m) {
         for (std::size_t k = 0; k < width; ++k) {
            std::size_t const t = m * width + k;
            U32 part; // standard tests all read the whole value
            if constexpr (Matcher::fieldCount == 2) {
               part = value;
            } else {
               part = Matcher::fieldValues(value)[k];
            }
            if ((part & mask[t]) - low[t] > span[t]) {
               return false;
            }
         }
         return true;
      };
      std::size_t const matcherCount = testCount / width;
      if (mode == CommunitySetMode::any) {
         for (auto const& value : values) {
            for (std::size_t m = 0; m < matcherCount; ++m) {
               if (matchedBy(value, m)) {
                  return true;
               }
            }
         }
         return false;
      }
      U32 matched = 0; // which matchers some value matched
      bool everyValue = true;
      for (auto const& value : values) {
         U32 mask = 0;
         for (std::size_t m = 0; m < matcherCount; ++m) {
            mask |= matchedBy(value, m) ? U32{1} << m : 0;
         }
         matched |= mask;
         everyValue = everyValue && mask != 0;
      }
      return matched == (U32{1} << matcherCount) - 1 &&
             (mode == CommunitySetMode::all || everyValue);
   }

   std::size_t perMatcher_ = 1;
   std::vector<U32> mask_, low_, span_;
   std::vector<Placeholder> placeholders_;
};

} // namespace Routing::Bgp::detail
