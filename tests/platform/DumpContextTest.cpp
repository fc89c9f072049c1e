#include "QorBgpCommunity/platform/DumpContext.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace Kiv {
namespace {

struct Node {
   std::string_view name;
   Node const* left = nullptr;
   Node const* right = nullptr;

   std::string_view fwkType() const { return "Test::Node"; }
   void dumpState(DumpContext& ctx, unsigned indent) const {
      ctx.printf(indent, "Node %.*s:\n", static_cast<int>(name.size()), name.data());
      ctx.child(left, indent + 2);
      ctx.child(right, indent + 2);
   }
};

TEST(DumpContext, IndentsOnlyByTheGivenWidthAndCountsLines) {
   DumpContext ctx;
   ctx.write(0, "DedupTable");
   EXPECT_EQ(ctx.lineNumber(), 1u);
   ctx.line(0, "");
   ctx.line(2, "a\nb");
   ctx.printf(4, "#%u:\n", 7u);
   EXPECT_EQ(ctx.text(), "DedupTable\n  a\nb\n    #7:\n");
   EXPECT_EQ(ctx.lineNumber(), 5u);
   std::string const longText(1000, 'x'); // longer than printf's first buffer
   ctx.printf(1, "%s|", longText.c_str());
   EXPECT_EQ(ctx.str().substr(ctx.str().size() - 1002), " " + longText + "|");
   std::ostringstream os;
   os << ctx;
   EXPECT_EQ(os.str(), ctx.str());
}

TEST(DumpContext, ChildIsPrintedOnceThenReferredToByItsFirstLine) {
   Node leaf{"leaf"};
   Node shared{"shared", &leaf};
   Node root{"root", &shared, &shared};
   leaf.left = &root; // a cycle
   DumpContext ctx;
   ctx.child(&root, 0);
   EXPECT_EQ(ctx.text(), "Node root:\n"
                         "  Node shared:\n"
                         "    Node leaf:\n"
                         "      Test::Node dumped at line 1\n"
                         "      NULL\n"
                         "    NULL\n"
                         "  Test::Node dumped at line 2\n");
}

struct Named {
   virtual ~Named() = default;
   std::string_view fwkType() const { return "Test::Named"; }
   void dumpState(DumpContext& ctx, unsigned indent) const { ctx.line(indent, "named"); }
};
struct Counted {
   virtual ~Counted() = default;
   std::string_view fwkType() const { return "Test::Counted"; }
   void dumpState(DumpContext& ctx, unsigned indent) const { ctx.line(indent, "counted"); }
};
struct Both : Named, Counted {};

TEST(DumpContext, ObjectReachedThroughAnotherBaseIsTheSameObject) {
   Both both;
   Named const* named = &both;
   Counted const* counted = &both;
   ASSERT_NE(static_cast<void const*>(named), static_cast<void const*>(counted));
   DumpContext ctx;
   ctx.child(named, 0);
   ctx.child(counted, 2);
   EXPECT_EQ(ctx.text(), "named\n  Test::Counted dumped at line 1\n");
}

} // namespace
} // namespace Kiv
