// What stands under what after an import: scenes, roots, nodes, meshes, instances and joints, and what is left out.

#include "plugin/import/gltfimportplan.h"
#include "tests/import/importfixture.h"

namespace q7z::test
{
namespace
{

struct HierarchyCase
{
  const char* name;
  const char* members;
  const char* outline;
  const char* failedNodes = "";
  std::pair<Int32, Bool> option = {1018, false};  // of the loader, by default not to split meshes
};

class ImportHierarchy : public ImportTest, public testing::WithParamInterface<HierarchyCase>
{};

TEST_P(ImportHierarchy, FollowsTheFile)
{
  const HierarchyCase& row = GetParam();
  Host().Set(row.option.first, row.option.second);
  EXPECT_EQ(Load(row.members, SomeMeshes()), "none");
  EXPECT_EQ(Outline(), row.outline);
  std::string failed;
  for (const int node : FailedNodes())
    failed += (failed.empty() ? "" : " ") + std::to_string(node);
  EXPECT_EQ(failed, row.failedNodes);
}

const HierarchyCase kHierarchyCases[] = {
  {"NamesAreMadeUp", R"("scenes":[{"nodes":[1]}],"nodes":[{},{}])", "Scene 0[Node_1]"},
  {"EmptyScene", R"("scenes":[{}],"nodes":[{"name":"A"}])", "Scene 0"},
  {"ChildrenKeepTheirOrder",
   R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A","children":[3,1,2]},{"name":"B"},{"name":"C"},{"name":"D"}])",
   "Scene 0[A[D, B, C]]"},
  {"ScenesStandInReverseOrder", R"("scene":1,"scenes":[{"nodes":[0]},{"nodes":[1]}],"nodes":[{"name":"A"},{"name":"B"}])",
   "Scene 1[B], Scene 0![A]"},
  {"DefaultSceneMissing", R"("scene":7,"scenes":[{"name":"S"},{"name":"T"}])", "T!, S!"},
  {"RootsWithoutScene", R"("nodes":[{"name":"A","children":[2]},{"name":"B"},{"name":"C"}])", "B, A[C]"},
  {"RingWithoutScene", R"("nodes":[{"name":"A","children":[1]},{"name":"B","children":[0]}])", ""},
  {"MissingChild", R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A","children":[1,9,2]},{"name":"B"},{"name":"C"}])",
   "Scene 0[A[B, C]]", "9"},
  {"BrokenNode",
   R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A","children":[1]},{"name":"B","scale":[1],"children":[2]},{"name":"C"}])",
   "Scene 0[A]", "1"},
  {"OwnChild", R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A","children":[0]}])", "Scene 0[A]", "0"},
  {"Ring", R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A","children":[1]},{"name":"B","children":[0]}])", "Scene 0[A[B]]", "0"},
  {"SharedNodeIsBuiltTwice",
   R"("scenes":[{"nodes":[0,1]}],"nodes":[{"name":"A","children":[2]},{"name":"B","children":[2]},{"name":"C"}])",
   "Scene 0[A[C], B[C]]"},
  {"NodeInTwoScenes", R"("scenes":[{"nodes":[0]},{"nodes":[0]}],"nodes":[{"name":"A"}])", "Scene 1![A], Scene 0[A]"},

  {"MeshOfAnUnnamedNode", R"("scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}])", "Scene 0[Mesh#]"},
  {"PrimitivesAreMerged", R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A","mesh":1}])", "Scene 0[A#]"},
  {"InstanceBelowItsMesh", R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A","mesh":0,"children":[1]},{"name":"B","mesh":0}])",
   "Scene 0[A#[B=A]]"},
  {"PosesMoveToAJoint", R"("scenes":[{"nodes":[0]}],"skins":[{"joints":[0]}],"nodes":[{"name":"J","mesh":4}])",
   "Scene 0[J^[Poses[Target 0#!, Target 1#!]]]"},
  // Siblings are built from the last to the first, so the last one gets the mesh.
  {"InstanceBeforeItsMesh", R"("scenes":[{"nodes":[0,1]}],"nodes":[{"name":"A","mesh":0},{"name":"B","mesh":0}])",
   "Scene 0[A=B, B#]"},
  {"EqualMeshesAreNoInstances", R"("scenes":[{"nodes":[0,1]}],"nodes":[{"name":"A","mesh":0},{"name":"B","mesh":3}])",
   "Scene 0[A#, B#]"},
  {"BrokenMesh", R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A","mesh":2,"children":[1]},{"name":"B"}])", "Scene 0", "0"},
  {"MeshAndCamera", R"("scenes":[{"nodes":[0]}],"cameras":[{"type":"any"}],"nodes":[{"camera":0,"mesh":0}])",
   "Scene 0[Node_0[Node_0 Camera*, Node_0 Mesh#]]"},
  {"MissingCamera", R"("scenes":[{"nodes":[0,1]}],"nodes":[{"name":"A","camera":3},{"name":"B"}])", "Scene 0[B]", "0"},
  {"SplitOfOnePrimitive", R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A","mesh":0}])", "Scene 0[A#]", "", {1018, true}},
  // Primitives stand in reverse order; one alone needs no group.
  {"SplitPrimitives",
   R"("scenes":[{"nodes":[0,1]}],"nodes":[{"name":"A","mesh":1},{"name":"B","mesh":1}])",
   "Scene 0[A=B, B[Prim 1#, Prim 0#]]",
   "",
   {1018, true}},
};
INSTANTIATE_TEST_SUITE_P(Nodes, ImportHierarchy, testing::ValuesIn(kHierarchyCases), RowName());

const HierarchyCase kJointCases[] = {
  {"JointsTakePlaceAndName",
   R"("scenes":[{"nodes":[0]}],"skins":[{"joints":[0,2]}],
      "nodes":[{"name":"J","children":[1,2]},{"name":"A"},{"children":[3]},{"name":"B"}])",
   "Scene 0[J^[A, Node_2^[B]]]"},
  {"SkinnedMeshGetsADeformer",
   R"("scenes":[{"nodes":[0,1]}],"skins":[{"joints":[1]}],"nodes":[{"name":"A","mesh":0,"skin":0},{"name":"J"}])",
   "Scene 0[A#[~], J^]"},
  {"SkinsLeftOut",
   R"("scenes":[{"nodes":[0,1]}],"skins":[{"joints":[1]}],"nodes":[{"name":"A","mesh":0,"skin":0},{"name":"J"}])",
   "Scene 0[A#, J]",
   "",
   {1014, false}},
  {"JointsWithoutGeometryStillStand",
   R"("scenes":[{"nodes":[0,1]}],"skins":[{"joints":[1]}],"nodes":[{"name":"A","mesh":0,"skin":0},{"name":"J"}])",
   "Scene 0[A, J^]",
   "",
   {1004, false}},
  {"InstanceHasNoPolygonObjectToDeform",
   R"("scenes":[{"nodes":[0,1,2]}],"skins":[{"joints":[2]}],
      "nodes":[{"name":"A","mesh":0,"skin":0},{"name":"B","mesh":0,"skin":0},{"name":"J"}])",
   "Scene 0[A=B, B#[~], J^]"},
  {"SkinWithoutRecordIsNotBound",
   R"("scenes":[{"nodes":[0]}],"skins":[{"joints":[1]}],"nodes":[{"name":"A","mesh":0,"skin":9},{"name":"J"}])", "Scene 0[A#]"},
  {"EveryHierarchyAddsADeformer",
   R"("scenes":[{"nodes":[0,1]},{"nodes":[2]},{}],"skins":[{"joints":[1]}],
      "nodes":[{"name":"A","mesh":0,"skin":0},{"name":"J"},{"name":"B"}])",
   "Scene 2!, Scene 1![B], Scene 0[A#[~, ~], J^]"},
  {"GroupHasNothingToDeform",
   R"("scenes":[{"nodes":[0,1]}],"skins":[{"joints":[1]}],"nodes":[{"name":"A","skin":0},{"name":"J"}])", "Scene 0[A, J^]"},
  {"UnreachableJointLeavesNothing",
   R"("scenes":[{"nodes":[0]}],"skins":[{"joints":[1,1,7,-3]}],"nodes":[{"name":"A"},{"name":"J"}])", "Scene 0[A]"},

  // A mesh on a joint is taken out of the hierarchy; what shows it shows nothing once the load is over.
  {"MeshOnAJointIsLeftOut",
   R"("scenes":[{"nodes":[0,1]}],"skins":[{"joints":[1]}],"nodes":[{"name":"A","mesh":0},{"name":"J","mesh":0}])",
   "Scene 0[A=, J^]"},
  {"SkinnedMeshOnAJointIsLeftOut",
   R"("scenes":[{"nodes":[0]}],"skins":[{"joints":[0]}],"nodes":[{"name":"J","mesh":0,"skin":0}])", "Scene 0[J^]"},
  // Of a group of primitives the first child alone moves to the joint; a later node with the mesh builds it anew.
  {"FirstPrimitiveMovesToTheJoint",
   R"("scenes":[{"nodes":[0,1]}],"skins":[{"joints":[1]}],"nodes":[{"name":"A","mesh":1},{"name":"J","mesh":1}])",
   "Scene 0[A[Prim 1#, Prim 0#], J^[Prim 1#]]",
   "",
   {1018, true}},

  {"JointVisitedTwiceStandsWhereItWasLast",
   R"("scenes":[{"nodes":[0,1]}],"skins":[{"joints":[2]}],
      "nodes":[{"name":"A","children":[2]},{"name":"B","children":[2]},{"name":"J","children":[3]},{"name":"C"}])",
   "Scene 0[A[J^[C, C]], B]"},
  {"JointInTwoScenesStandsInTheLast", R"("scenes":[{"nodes":[0]},{"nodes":[0]}],"skins":[{"joints":[0]}],"nodes":[{"name":"J"}])",
   "Scene 1![J^], Scene 0"},
  // The group of the first visit is gone, so the second builds one of its own, and of that, too, one child moves.
  {"SecondVisitMovesOneMoreChild",
   R"("scenes":[{"nodes":[0]},{"nodes":[0]}],"skins":[{"joints":[0]}],"nodes":[{"name":"J","mesh":1}])",
   "Scene 1![J^[Prim 1#, Prim 1#]], Scene 0",
   "",
   {1018, true}},
  // Both nodes stand at the top and below each other; a joint is one object, so it may not come below itself that way either.
  {"JointsInARing",
   R"("scenes":[{"nodes":[0,1]}],"skins":[{"joints":[0,1]}],
      "nodes":[{"name":"J","children":[1]},{"name":"K","children":[0]}])",
   "Scene 0[K^[J^]]", "1 1"},
};
INSTANTIATE_TEST_SUITE_P(Joints, ImportHierarchy, testing::ValuesIn(kJointCases), RowName());

using ImportLimits = ImportTest;

// One node may become 1,000,001 objects. Each scene alone would stay below that.
TEST_F(ImportLimits, VisitsOfAllScenesCount)
{
  std::string many = "0";
  for (int i = 1; i < 999'995; ++i)
    many += ",0";
  EXPECT_EQ(Load(R"("scenes":[{"nodes":[0,0,0,0,0,0,0]},{"nodes":[)" + many + R"(]}],"nodes":[{"name":"A"}])"), "out_of_memory");
  EXPECT_EQ(Outline(), "Scene 0[A, A, A, A, A, A, A]");
}

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
