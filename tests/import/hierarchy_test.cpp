// What stands under what after an import: scenes, roots, nodes, meshes and instances, and what is left out.

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
  std::vector<int> failedNodes = {};
};

void PrintTo(const HierarchyCase& row, std::ostream* stream)
{
  *stream << row.members;
}

const HierarchyCase kHierarchyCases[] = {
  {"NothingAtAll", "", ""},
  {"OneNode", R"("scenes":[{"name":"S","nodes":[0]}],"nodes":[{"name":"A"}])", "S[A]"},
  {"NamesAreMadeUp", R"("scenes":[{"nodes":[1]}],"nodes":[{},{}])", "Scene 0[Node_1]"},
  {"EmptyScene", R"("scenes":[{}],"nodes":[{"name":"A"}])", "Scene 0"},
  {"SceneNodesKeepTheirOrder", R"("scenes":[{"nodes":[0,1,2]}],"nodes":[{"name":"A"},{"name":"B"},{"name":"C"}])",
   "Scene 0[A, B, C]"},
  {"ChildrenKeepTheirOrder",
   R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A","children":[3,1,2]},{"name":"B"},{"name":"C"},{"name":"D"}])",
   "Scene 0[A[D, B, C]]"},
  {"ScenesStandInReverseOrder", R"("scene":1,"scenes":[{"nodes":[0]},{"nodes":[1]}],"nodes":[{"name":"A"},{"name":"B"}])",
   "Scene 1[B], Scene 0![A]"},
  {"FirstSceneIsTheDefault", R"("scenes":[{},{}])", "Scene 1!, Scene 0"},
  {"DefaultSceneMissing", R"("scene":7,"scenes":[{"name":"S"},{"name":"T"}])", "T!, S!"},
  {"RootsWithoutScene", R"("nodes":[{"name":"A","children":[2]},{"name":"B"},{"name":"C"}])", "B, A[C]"},
  {"RingWithoutScene", R"("nodes":[{"name":"A","children":[1]},{"name":"B","children":[0]}])", ""},
  {"MissingChild",
   R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A","children":[1,9,2]},{"name":"B"},{"name":"C"}])",
   "Scene 0[A[B, C]]",
   {9}},
  {"BrokenNode",
   R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A","children":[1]},{"name":"B","scale":[1],"children":[2]},{"name":"C"}])",
   "Scene 0[A]",
   {1}},
  {"OwnChild", R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A","children":[0]}])", "Scene 0[A]", {0}},
  {"Ring", R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A","children":[1]},{"name":"B","children":[0]}])", "Scene 0[A[B]]", {0}},
  {"SharedNodeIsBuiltTwice",
   R"("scenes":[{"nodes":[0,1]}],"nodes":[{"name":"A","children":[2]},{"name":"B","children":[2]},{"name":"C"}])",
   "Scene 0[A[C], B[C]]"},
  {"NodeListedTwice", R"("scenes":[{"nodes":[0,0]}],"nodes":[{"name":"A"}])", "Scene 0[A, A]"},
  {"NodeInTwoScenes", R"("scenes":[{"nodes":[0]},{"nodes":[0]}],"nodes":[{"name":"A"}])", "Scene 1![A], Scene 0[A]"},

  {"MeshTakesTheNodesName", R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A","mesh":0,"children":[1]},{"name":"B"}])",
   "Scene 0[A#[B]]"},
  {"MeshOfAnUnnamedNode", R"("scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}])", "Scene 0[Mesh#]"},
  {"PrimitivesAreMerged", R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A","mesh":1}])", "Scene 0[A#]"},
  {"InstanceBelowItsMesh", R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A","mesh":0,"children":[1]},{"name":"B","mesh":0}])",
   "Scene 0[A#[B=A]]"},
  // Siblings are built from the last to the first, so the last one gets the mesh.
  {"InstanceBeforeItsMesh", R"("scenes":[{"nodes":[0,1]}],"nodes":[{"name":"A","mesh":0},{"name":"B","mesh":0}])",
   "Scene 0[A=B, B#]"},
  {"InstanceInALaterScene", R"("scenes":[{"nodes":[0]},{"nodes":[1]}],"nodes":[{"name":"A","mesh":0},{"mesh":0}])",
   "Scene 1![Mesh=A], Scene 0[A#]"},
  {"EqualMeshesAreNoInstances", R"("scenes":[{"nodes":[0,1]}],"nodes":[{"name":"A","mesh":0},{"name":"B","mesh":3}])",
   "Scene 0[A#, B#]"},
  {"BrokenMesh", R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A","mesh":2,"children":[1]},{"name":"B"}])", "Scene 0", {0}},
  {"MissingMesh", R"("scenes":[{"nodes":[0,1]}],"nodes":[{"name":"A","mesh":9},{"name":"B"}])", "Scene 0[B]", {0}},
  {"CameraAlone",
   R"("scenes":[{"nodes":[0,1]}],"cameras":[{"type":"perspective"}],"nodes":[{"name":"A","camera":0},{"camera":0}])",
   "Scene 0[A*, Camera*]"},
  {"MeshAndCamera", R"("scenes":[{"nodes":[0]}],"cameras":[{"type":"any"}],"nodes":[{"camera":0,"mesh":0}])",
   "Scene 0[Node_0[Node_0 Camera*, Node_0 Mesh#]]"},
  {"MissingCamera", R"("scenes":[{"nodes":[0,1]}],"nodes":[{"name":"A","camera":3},{"name":"B"}])", "Scene 0[B]", {0}},
};

class ImportHierarchy : public ImportTest, public testing::WithParamInterface<HierarchyCase>
{};

TEST_P(ImportHierarchy, FollowsTheFile)
{
  const HierarchyCase& row = GetParam();
  EXPECT_EQ(Load(row.members, SomeMeshes()), "none");
  EXPECT_EQ(Outline(), row.outline);
  EXPECT_EQ(FailedNodes(), row.failedNodes);
}

INSTANTIATE_TEST_SUITE_P(Rows, ImportHierarchy, testing::ValuesIn(kHierarchyCases), RowName());

using ImportSplit = ImportTest;

TEST_F(ImportSplit, PrimitivesStandInReverseOrder)
{
  Host().Set(1018, true);
  EXPECT_EQ(Load(R"("scenes":[{"nodes":[0,1]}],"nodes":[{"name":"A","mesh":1},{"name":"B","mesh":1}])", SomeMeshes()), "none");
  EXPECT_EQ(Outline(), "Scene 0[A=B, B[Prim 1#, Prim 0#]]");
}

TEST_F(ImportSplit, OnePrimitiveNeedsNoGroup)
{
  Host().Set(1018, true);
  EXPECT_EQ(Load(R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A","mesh":0}])", SomeMeshes()), "none");
  EXPECT_EQ(Outline(), "Scene 0[A#]");
}

using ImportLimits = ImportTest;

TEST_F(ImportLimits, NodesThatListTheNextOneTwiceEndAsOutOfMemory)
{
  std::string nodes;
  for (int i = 0; i < 63; ++i)
    nodes += R"({"children":[)" + std::to_string(i + 1) + "," + std::to_string(i + 1) + "]},";
  EXPECT_EQ(Load(R"("scenes":[{"nodes":[0]}],"nodes":[)" + nodes + "{}]"), "out_of_memory");
  EXPECT_EQ(Outline(), "");
}

// One node may become 1,000,001 objects. Each scene alone would stay below that.
TEST_F(ImportLimits, VisitsOfAllScenesCount)
{
  std::string many = "0";
  for (int i = 1; i < 999'995; ++i)
    many += ",0";
  EXPECT_EQ(Load(R"("scenes":[{"nodes":[0,0,0,0,0,0,0]},{"nodes":[)" + many + R"(]}],"nodes":[{"name":"A"}])"), "out_of_memory");
  EXPECT_EQ(Outline(), "Scene 0[A, A, A, A, A, A, A]");
}

TEST_F(ImportLimits, DeepChainsLoad)
{
  constexpr int kDepth = 100'000;
  std::string nodes;
  for (int i = 1; i < kDepth; ++i)
    nodes += R"({"children":[)" + std::to_string(i) + "]},";
  EXPECT_EQ(Load(R"("scenes":[{"nodes":[0]}],"nodes":[)" + nodes + "{}]"), "none");
  int depth = 0;
  for (HostObject* op = Host().Document()->GetFirstObject()->GetDown(); op; op = op->GetDown())
    ++depth;
  EXPECT_EQ(depth, kDepth);
}

}  // namespace
}  // namespace q7z::test
