// Randomised properties of the interning tables (the text forms and wire
// codecs get theirs from the fuzz targets, which the test build runs). Case i
// draws from a generator seeded seed + i, so a failure names its seed and case
// and replays alone; QORBGP_PROPERTY_SEED picks another seed.
#include "QorBgp/QorBgpCommunityDecode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <random>
#include <set>

namespace Routing::Bgp {
namespace {

using Random = std::mt19937_64;

U64 const seed = [] {
   char const* text = std::getenv("QORBGP_PROPERTY_SEED");
   return text != nullptr && *text != '\0' ? std::strtoull(text, nullptr, 0) : U64{20240611};
}();

int failureCount() {
   return testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count();
}

template <class Case>
void forCases(char const* property, int count, Case&& oneCase) {
   int const before = failureCount();
   for (int i = 0; i < count && failureCount() == before; ++i) {
      Random random(seed + static_cast<U64>(i));
      oneCase(random);
      if (failureCount() != before) {
         ADD_FAILURE() << property << ": failed at seed " << seed << ", case " << i;
      }
   }
}

bool isRouteTarget(U64 word) { return (word >> 56) <= 2 && (word >> 48 & 0xff) == 2; }

// ---- Generators ----

struct WireKind {
   U8 typeCode;
   std::size_t elementSize;
} const wireKinds[] = {
   {community, 4}, {largeCommunity, 12}, {extCommunity, 8}, {extCommunityIp6, 20}};

// One element's wire bytes; extended ones mostly with a type and subtype pair
// that some recognition rule knows.
std::string randomElement(Random& random, WireKind const& kind) {
   static constexpr U8 pairs[][2] = {{0x00, 0x02}, {0x01, 0x02}, {0x02, 0x02}, {0x00, 0x03},
                                     {0x40, 0x04}, {0x03, 0x0b}, {0x03, 0x0c}, {0x03, 0x0d},
                                     {0x43, 0x00}, {0x06, 0x00}, {0x42, 0x02}};
   std::string element(kind.elementSize, '\0');
   std::generate(element.begin(), element.end(), [&] { return static_cast<char>(random()); });
   if (kind.elementSize >= 8 && random() % 4 != 0) {
      U8 const* pair = pairs[random() % std::size(pairs)];
      element[0] = static_cast<char>(pair[0]);
      element[1] = static_cast<char>(pair[1]);
   }
   return element;
}

std::span<U8 const> bytesOf(std::string const& s) {
   return {reinterpret_cast<U8 const*>(s.data()), s.size()};
}

void const* identity(AnyCommList const& any) {
   return std::visit(
      [](auto const& list) -> void const* {
         if constexpr (std::is_same_v<std::decay_t<decltype(list)>, std::monostate>) {
            return nullptr;
         } else {
            return list.get();
         }
      },
      any);
}

// ---- Interning ----

// A published list the test holds, with the distinct elements it was built from.
struct Held {
   U8 typeCode;
   std::set<std::string> elements;
   AnyCommList list;
};

U64 wordOf(std::string const& element) {
   U64 word = 0;
   for (char c : element) {
      word = word << 8 | static_cast<U8>(c);
   }
   return word;
}

// Equal contents are one object, among the lists and among the extended
// lists' classification lists, and each table holds exactly the distinct
// live contents.
void expectOneObjectPerLiveContent(CommunityTables const& tables, std::vector<Held> const& held) {
   std::map<std::pair<U8, std::set<std::string>>, void const*> lists;
   std::map<std::pair<ExtCommClassification, std::vector<U64>>, void const*> classLists;
   std::set<U64> extValues;
   std::set<std::string> ip6Values;
   std::size_t rtClassLists = 0;
   for (Held const& h : held) {
      auto const known = lists.emplace(std::pair(h.typeCode, h.elements), identity(h.list)).first;
      EXPECT_EQ(known->second, identity(h.list)) << "two lists of one content";
      if (auto const* ext = std::get_if<ExtCommList::PtrConst>(&h.list)) {
         for (ExtCommClassificationList::PtrConst const& c : (*ext)->classificationLists()) {
            if (!c) {
               continue;
            }
            std::vector<U64> words;
            for (ExtComm::PtrConst const& v : *c->commVectorRawPtr()) {
               words.push_back(v->community());
            }
            auto const [at, fresh] =
               classLists.emplace(std::pair(c->classification(), words), c.get());
            EXPECT_EQ(at->second, c.get()) << "two lists of one content: " << c->toStrep();
            rtClassLists += fresh && c->classification() == extCommClassificationRouteTarget;
         }
         for (std::string const& e : h.elements) {
            extValues.insert(wordOf(e));
         }
      } else if (h.typeCode == extCommunityIp6) {
         ip6Values.insert(h.elements.begin(), h.elements.end());
      }
   }
   auto const live = [&](U8 typeCode) {
      return std::count_if(lists.begin(), lists.end(),
                           [&](auto const& l) { return l.first.first == typeCode; });
   };
   ExtCommListDedupTable const& extLists = *tables.extCommListDedupTable();
   EXPECT_EQ(tables.commListDedupTable()->dedupTable()->size(), live(community));
   EXPECT_EQ(tables.largeCommListDedupTable()->dedupTable()->size(), live(largeCommunity));
   EXPECT_EQ(extLists.dedupTable()->size(), live(extCommunity));
   EXPECT_EQ(tables.extCommIp6ListDedupTable()->dedupTable()->size(), live(extCommunityIp6));
   EXPECT_EQ(tables.extCommDedupTable()->dedupTable()->size(), extValues.size());
   EXPECT_EQ(tables.extCommIp6DedupTable()->dedupTable()->size(), ip6Values.size());
   EXPECT_EQ(extLists.rtExtCommClassificationListDedupTable()->size(), rtClassLists);
   EXPECT_EQ(extLists.notifyingRtExtCommListCollection()->rtExtCommLists().size(), rtClassLists);
   EXPECT_EQ(extLists.extCommClassificationListDedupTable()->size(),
             classLists.size() - rtClassLists);
   EXPECT_EQ(tables.extCommDedupTable()->routeTargetList()->rtCount(),
             std::count_if(extValues.begin(), extValues.end(), isRouteTarget));
}

TEST(InterningProperty, EqualContentIsOneLiveObjectAndTablesHoldOnlyLiveContents) {
   forCases("interning", 8, [](Random& random) {
      CommunityTables::Ptr tables = communityTablesFactory();
      // Six elements per kind, so that equal sets recur in other orders.
      std::vector<std::vector<std::string>> universe;
      for (WireKind const& kind : wireKinds) {
         universe.emplace_back(6);
         std::generate(universe.back().begin(), universe.back().end(),
                       [&] { return randomElement(random, kind); });
      }
      std::vector<Held> held;
      for (int step = 0; step < 250 && !testing::Test::HasFailure(); ++step) {
         if (held.empty() || random() % 8 < 5) {
            std::size_t const k = random() % std::size(wireKinds);
            Held h{wireKinds[k].typeCode, {}, {}};
            std::string value;
            for (std::size_t n = 1 + random() % 8; n > 0; --n) {
               value += *h.elements.insert(universe[k][random() % universe[k].size()]).first;
            }
            h.list = decodeAttribute(*tables, h.typeCode, bytesOf(value)).list;
            held.push_back(std::move(h));
         } else {
            std::swap(held[random() % held.size()], held.back());
            held.pop_back();
         }
         expectOneObjectPerLiveContent(*tables, held);
      }
      held.clear();
      expectOneObjectPerLiveContent(*tables, held);
   });
}

struct RouteTargetReports : NotifyingRouteTargetList::Notifiee {
   void onRt(RouteTarget const&) override { ++count; }
   int count = 0;
};

TEST(InterningProperty, RouteTargetListIsTheSetOfLiveRouteTargetValues) {
   forCases("route-target list", 30, [](Random& random) {
      CommunityTables::Ptr tables = communityTablesFactory();
      ExtCommDedupTable const* table = tables->extCommDedupTable().get();
      NotifyingRouteTargetList const& rts = *table->routeTargetList();
      RouteTargetReports reports;
      reports.notifierIs(&rts);
      // Route targets of each layout, and look-alikes of other types or subtypes.
      static constexpr U8 types[] = {0x00, 0x01, 0x02, 0x40, 0x42, 0x03};
      static constexpr U8 subtypes[] = {0x02, 0x02, 0x02, 0x03, 0x04, 0x0b, 0x00};
      std::set<U64> pool;
      while (pool.size() < 16) {
         pool.insert(U64{types[random() % std::size(types)]} << 56 |
                     U64{subtypes[random() % std::size(subtypes)]} << 48 | random() >> 60);
      }
      std::vector<ExtComm::PtrConst> held;
      std::map<U64, int> holders;
      int changes = 0;
      for (int step = 0; step < 300 && !testing::Test::HasFailure(); ++step) {
         if (held.empty() || random() % 2 == 0) {
            U64 const word = *std::next(pool.begin(), random() % pool.size());
            held.push_back(ExtComm::dedupContent(table, ExtCommContent(word)));
            changes += holders[word]++ == 0 && isRouteTarget(word);
         } else {
            std::swap(held[random() % held.size()], held.back());
            changes +=
               --holders[held.back()->community()] == 0 && isRouteTarget(held.back()->community());
            held.pop_back();
         }
         std::size_t live = 0;
         for (U64 word : pool) {
            bool const expected = holders[word] > 0 && isRouteTarget(word);
            live += expected;
            EXPECT_EQ(rts.rtHas(RouteTarget(word)), expected)
               << RouteTarget(word) << ", step " << step;
         }
         EXPECT_EQ(rts.rtCount(), live);
         EXPECT_EQ(reports.count, changes) << "reports at step " << step;
      }
   });
}

} // namespace
} // namespace Routing::Bgp
