// What becomes of the targets of a mesh: their poses are hidden and put on a layer.

#include "tests/import/importfixture.h"

namespace q7z::test
{
namespace
{

class NoLayers final : public HostLayerTable
{
public:
  HostLayer* GetRoot(HostDocument*) noexcept override { return nullptr; }
  HostLayer* Add(HostLayer*) noexcept override { return nullptr; }
  Bool SetOnObject(HostObject*, HostLayer*) noexcept override { return false; }
};

class ImportMorphLayer : public ImportTest
{
protected:
  std::string LoadTwoMeshes()
  {
    GltfJson file = SomeMeshes();
    file.Add("meshes", R"({"primitives":[{"attributes":{"POSITION":0},"targets":[{"POSITION":0}]}]})");
    return Load(R"("scenes":[{"nodes":[0,1]}],"nodes":[{"name":"A","mesh":4},{"name":"B","mesh":5}])", file);
  }
  Int LayerCount() { return Host().Scene().GetLayerRoot().GetLayerCount(); }

  // The names of all objects that are on the document's only layer, in the order of the walk.
  std::string ObjectsOnTheLayer()
  {
    std::string names;
    for (HeadlessObject* op = Host().Scene().GetFirstObject(); op; op = HeadlessDocument::GetNextInDocument(op))
    {
      if (op->GetLayer())
      {
        EXPECT_EQ(op->GetLayer(), Host().Scene().GetLayerRoot().GetLayer(0));
        names += std::string(op->GetName().GetView()) + ", ";
      }
    }
    return names;
  }
};

const char* const kTwoPosedMeshes = "Scene 0[A#[Poses[Target 0#!, Target 1#!]], B#[Poses[Target 0#!]]]";

TEST_F(ImportMorphLayer, OneLayerHoldsThePosesOfAllMeshes)
{
  EXPECT_EQ(LoadTwoMeshes(), "none");
  EXPECT_EQ(Outline(), kTwoPosedMeshes);
  ASSERT_EQ(LayerCount(), 1);
  EXPECT_EQ(std::string(Host().Scene().GetLayerRoot().GetLayer(0)->GetName().GetView()), "Pose Morph Targets");
  EXPECT_EQ(ObjectsOnTheLayer(), "Poses, Target 0, Target 1, Poses, Target 0, ");
  EXPECT_EQ(LoadTwoMeshes(), "none");
  EXPECT_EQ(LayerCount(), 2) << "every load makes one";
}

TEST_F(ImportMorphLayer, PosesAreHiddenWithoutALayer)
{
  Host().Set(1020, false);
  EXPECT_EQ(LoadTwoMeshes(), "none");
  EXPECT_EQ(Outline(), kTwoPosedMeshes);
  EXPECT_EQ(LayerCount(), 0);
}

TEST_F(ImportMorphLayer, DocumentWithoutLayersFailsTheNode)
{
  NoLayers layers;
  Host().Host().GetTables().layer = &layers;
  EXPECT_EQ(LoadTwoMeshes(), "none");
  EXPECT_EQ(Outline(), "Scene 0");
  EXPECT_EQ(FailedNodes(), (std::vector<int>{1, 0}));
  EXPECT_THAT(Host().Diagnostics(), testing::Contains(testing::HasSubstr("Illegal state: Condition rootLayer not fulfilled.")));
}

TEST_F(ImportMorphLayer, PosesMoveToAJoint)
{
  EXPECT_EQ(Load(R"("scenes":[{"nodes":[0]}],"skins":[{"joints":[0]}],"nodes":[{"name":"J","mesh":4}])", SomeMeshes()), "none");
  EXPECT_EQ(Outline(), "Scene 0[J^[Poses[Target 0#!, Target 1#!]]]");
}

}  // namespace
}  // namespace q7z::test
