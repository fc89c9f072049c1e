#include "PolicyBench.h"

#include "Measure.h"

#include "QorBgpCommunity/QorBgp/CommunityListEditMemo.h"
#include "QorBgpCommunity/QorBgp/CommunityPolicyParser.h"
#include "QorBgpCommunity/QorBgp/CommunityRulesMatchMemo.h"
#include "QorBgpCommunity/QorBgp/CommunitySetMatchMemo.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityDecode.h"

#include <benchmark/benchmark.h>

#include <bit>

namespace bench {

namespace {

using namespace Routing::Bgp;

Workload const* policyWorkload = nullptr;
CommunityMatchContext const context{.peerAs = 3356, .localAs = 65000};

// A million paths over the workload's standard lists, in workload order.
struct Paths {
   CommunityTables::Ptr tables = communityTablesFactory();
   std::vector<CommList::PtrConst> paths;

   Paths() {
      std::vector<CommList::PtrConst> lists;
      for (Occurrence const& o : *policyWorkload) {
         if (o.type == community) {
            auto result = decodeCommunities(*tables, o.value);
            if (result.list)
               lists.push_back(result.list);
         }
      }
      paths.reserve(1000000);
      for (std::size_t i = 0; i < 1000000 && !lists.empty(); ++i) {
         paths.push_back(lists[i % lists.size()]);
      }
   }
};

// One set matcher afresh on every path, against a hand-written loop over the
// sorted values doing the same test ("any *:666 65535:65281 peer-as:*").
void BM_MatcherAfresh(benchmark::State& state) {
   Paths const p;
   auto const set = parseStandardCommunitySet("any *:666 no-export peer-as:*");
   for (auto _ : state) {
      compare(
         5,
         [&] {
            std::size_t hits = 0;
            double const ns = nsPer(p.paths.size(), [&] {
               for (auto const& list : p.paths)
                  hits += set->matches(*list, context);
            });
            benchmark::DoNotOptimize(hits);
            return ns;
         },
         [&] {
            std::size_t hits = 0;
            double const ns = nsPer(p.paths.size(), [&] {
               for (auto const& list : p.paths) {
                  bool found = false;
                  for (U32 v : *list->commVectorRawPtr()) {
                     if ((v & 0xFFFF) == 666 || v == 0xFFFFFF01 || v >> 16 == context.peerAs) {
                        found = true;
                        break;
                     }
                  }
                  hits += found;
               }
            });
            benchmark::DoNotOptimize(hits);
            return ns;
         })
         .report(state);
   }
}

// Ten rules over a million paths: each path judged by every rule, afresh,
// through one memo per rule, and through one memo of all ten.
void BM_PolicyOfTenRules(benchmark::State& state) {
   Paths const p;
   char const* const texts[] = {"any *:666",
                                "any no-export no-advertise",
                                "all peer-as:* 174:21000-21999",
                                "not any 3356:*",
                                "any peer-as:100-199",
                                "exact 1299:35000",
                                "any regex \"^6939:\"",
                                "any local-as:*",
                                "not all 2914:410 2914:1405",
                                "any 64496-64511:*"};
   StandardCommunityRulesMatchMemo::Rules rules;
   std::vector<std::unique_ptr<StandardCommunitySetMatchMemo>> memos;
   for (char const* text : texts) {
      rules.push_back(parseStandardCommunitySet(text));
      memos.push_back(std::make_unique<StandardCommunitySetMatchMemo>(rules.back(), context));
   }
   StandardCommunityRulesMatchMemo together(rules, context);
   double afresh = 0, memoPerRule = 0, memoTogether = 0;
   for (auto _ : state) {
      std::size_t hits = 0;
      afresh = nsPer(p.paths.size(), [&] {
         for (auto const& list : p.paths)
            for (auto const& rule : rules)
               hits += rule->matches(*list, context);
      });
      for (int warm = 0; warm < 2; ++warm) {
         memoPerRule = nsPer(p.paths.size(), [&] {
            for (auto const& list : p.paths)
               for (auto const& memo : memos)
                  hits += memo->matches(*list);
         });
         memoTogether = nsPer(p.paths.size(), [&] {
            for (auto const& list : p.paths)
               hits += static_cast<std::size_t>(std::popcount(together.answers(*list)));
         });
      }
      benchmark::DoNotOptimize(hits);
   }
   state.counters["ns_per_path_afresh"] = afresh;
   state.counters["ns_per_path_memo_per_rule"] = memoPerRule;
   state.counters["ns_per_path_rules_memo"] = memoTogether;
   state.counters["memo_speedup"] = memoTogether > 0 ? afresh / memoTogether : 0;
}

// An edit ("delete peer-as:*") applied to every path through its memo, once
// the memo has seen every list.
void BM_EditFromMemo(benchmark::State& state) {
   Paths const p;
   auto const edit = parseStandardCommunityEdit("delete peer-as:*");
   StandardCommunityListEditMemo memo(edit, p.tables, context);
   double afresh = 0, memoized = 0;
   for (auto _ : state) {
      std::vector<CommList::PtrConst> out;
      out.reserve(p.paths.size());
      afresh = nsPer(p.paths.size(), [&] {
         for (auto const& list : p.paths)
            out.push_back(edit->apply(list.get(), *p.tables, context));
      });
      for (int warm = 0; warm < 2; ++warm) {
         out.clear();
         memoized = nsPer(p.paths.size(), [&] {
            for (auto const& list : p.paths)
               out.push_back(memo.apply(list.get()));
         });
      }
   }
   state.counters["ns_per_edit_afresh"] = afresh;
   state.counters["ns_per_edit_memo"] = memoized;
}

} // namespace

void registerPolicyBenchmarks(Workload const& workload) {
   policyWorkload = &workload;
   for (auto* b : {benchmark::RegisterBenchmark("Policy/matcherAfresh", BM_MatcherAfresh),
                   benchmark::RegisterBenchmark("Policy/tenRules", BM_PolicyOfTenRules),
                   benchmark::RegisterBenchmark("Policy/editFromMemo", BM_EditFromMemo)}) {
      b->Iterations(1)->Unit(benchmark::kMillisecond);
   }
}

} // namespace bench
