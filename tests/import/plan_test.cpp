// The order in which nodes are visited, on bare records: levels, siblings, shared nodes, circles and limits.

#include "plugin/import/gltfimportplan.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace q7z::test
{
namespace
{

using Children = std::vector<std::vector<Int>>;

BaseArray<Int> ToArray(const std::vector<Int>& values)
{
  BaseArray<Int> array;
  EXPECT_FALSE(array.AppendCopies(values.data(), std::ssize(values)).HasError());
  return array;
}

HashMap<Int, GltfNode> ToNodes(const Children& children)
{
  HashMap<Int, GltfNode> nodes;
  for (size_t i = 0; i < children.size(); ++i)
  {
    GltfNode node;
    node.children = ToArray(children[i]);
    EXPECT_FALSE(nodes.Insert(static_cast<Int>(i), std::move(node)).HasError());
  }
  return nodes;
}

// Visits in order: the node, "!" when there is nothing to build, "<" and the node that it stands under.
std::string WriteVisits(HierarchyPlan& plan)
{
  std::string text;
  for (Int32 visit = plan.GetFirst(); visit >= 0; visit = plan.GetNext(visit))
  {
    text += (text.empty() ? "" : " ") + std::to_string(plan[visit].nodeIndex) + (plan[visit].node ? "" : "!");
    if (plan[visit].parent >= 0)
      text += "<" + std::to_string(plan[plan[visit].parent].nodeIndex);
  }
  return text;
}

struct PlanCase
{
  const char* name;
  Children children;  // by node
  std::vector<Int> top;
  const char* visits;
  Bool hasCycle = false;
};

void PrintTo(const PlanCase& row, std::ostream* stream)
{
  *stream << row.name;
}

const PlanCase kPlanCases[] = {
  {"Nothing", {{}}, {}, ""},
  {"OneNode", {{}}, {0}, "0"},
  {"TopFromTheLast", {{}, {}, {}}, {0, 1, 2}, "2 1 0"},
  {"LevelByLevel", {{1, 2}, {3}, {4}, {}, {}}, {0}, "0 2<0 1<0 4<2 3<1"},
  {"UnevenDepths", {{1}, {2}, {}, {4}, {}}, {0, 3}, "3 0 4<3 1<0 2<1"},
  {"SharedNode", {{1, 2}, {3}, {3}, {}}, {0}, "0 2<0 1<0 3<2 3<1"},
  {"SharedNodeWithChildren", {{1, 1}, {2}, {}}, {0}, "0 1<0 1<0 2<1 2<1"},
  {"ListedTwiceAtTheTop", {{}}, {0, 0}, "0 0"},
  {"MissingChild", {{7, 1}, {}}, {0}, "0 1<0 7!<0"},
  {"NegativeChild", {{-1}}, {0}, "0 -1!<0"},
  {"MissingTop", {{}}, {5, 0}, "0 5!"},
  {"OwnChild", {{0}}, {0}, "0 0!<0", true},
  {"Ring", {{1}, {2}, {0}}, {0}, "0 1<0 2<1 0!<2", true},
  {"RingEnteredTwice", {{1}, {0}}, {0, 1}, "1 0 0<1 1<0 1!<0 0!<1", true},
  {"RingBesideATree", {{1, 2}, {1}, {3}, {}}, {0}, "0 2<0 1<0 3<2 1!<1", true},
  {"SameNodeOnTwoWaysIsNoCycle", {{1, 2}, {2}, {}}, {0}, "0 2<0 1<0 2<1"},
};

class HierarchyPlanOrder : public testing::TestWithParam<PlanCase>
{};

TEST_P(HierarchyPlanOrder, IsBreadthFirstFromTheLastChild)
{
  const PlanCase& row = GetParam();
  const HashMap<Int, GltfNode> nodes = ToNodes(row.children);
  HierarchyPlan plan;
  ASSERT_FALSE(plan.Unfold(nodes, ToArray(row.top), 100).HasError());
  EXPECT_FALSE(plan.IsOverLimit());
  EXPECT_EQ(WriteVisits(plan), row.visits);
  EXPECT_EQ(plan.HasCycle(), row.hasCycle);
}

INSTANTIATE_TEST_SUITE_P(Rows, HierarchyPlanOrder, testing::ValuesIn(kPlanCases), [](const auto& row) { return row.param.name; });

TEST(HierarchyPlanLimit, HoldsExactly)
{
  const HashMap<Int, GltfNode> nodes = ToNodes({{1, 1}, {2, 2, 2}, {}});  // 1 + 2 + 6 visits
  for (const Int limit : {Int(0), Int(1), Int(8), Int(9), Int(10)})
  {
    HierarchyPlan plan;
    const BaseArray<Int> top = ToArray({0});
    ASSERT_FALSE(plan.Unfold(nodes, top, limit).HasError());
    EXPECT_EQ(plan.IsOverLimit(), limit < 9) << limit;
    EXPECT_LE(plan.GetCount(), limit);
  }
}

TEST(HierarchyPlanLimit, StopsNodesThatListTheNextOneTwice)
{
  Children children(64);
  for (Int i = 0; i + 1 < 64; ++i)
    children[i] = {i + 1, i + 1};
  const HashMap<Int, GltfNode> nodes = ToNodes(children);
  HierarchyPlan plan;
  ASSERT_FALSE(plan.Unfold(nodes, ToArray({0}), 1'000'064).HasError());
  EXPECT_TRUE(plan.IsOverLimit());
}

// A chain through all nodes that closes to a ring at its end, where its last node lists many others that lead back to the first:
// every visit there asks for an ancestor that is far away. Quadratic work would not end within the suite's time.
TEST(HierarchyPlanLimit, LongRingsCostLinearTime)
{
  constexpr Int kChain = 300'000;
  constexpr Int kFan = 300'000;
  Children children(kChain + kFan);
  for (Int i = 0; i + 1 < kChain; ++i)
    children[i] = {i + 1};
  for (Int i = 0; i < kFan; ++i)
  {
    children[kChain - 1].push_back(kChain + i);
    children[kChain + i] = {0};
  }
  const HashMap<Int, GltfNode> nodes = ToNodes(children);
  HierarchyPlan plan;
  ASSERT_FALSE(plan.Unfold(nodes, ToArray({0}), kChain + 2 * kFan).HasError());
  EXPECT_FALSE(plan.IsOverLimit());
  EXPECT_TRUE(plan.HasCycle());
  EXPECT_EQ(plan.GetCount(), kChain + 2 * kFan);
}

}  // namespace
}  // namespace q7z::test
