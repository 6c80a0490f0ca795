// What becomes of the objects below a mesh: the first child of a polygon object holds its poses, which are hidden and put on a
// layer. The meshes here have no targets, so the poses come from a table that puts some under every polygon object.

#include "tests/import/importfixture.h"

namespace q7z::test
{
namespace
{

class PosedObjects final : public HostObjectTable
{
public:
  explicit PosedObjects(HostObjectTable* base) noexcept : _base(base) {}
  HostObject* Alloc(Int32 type) noexcept override { return _base->Alloc(type); }
  HostPolygonObject* AllocPolygonObject(Int32 pointCount, Int32 polygonCount) noexcept override
  {
    HostPolygonObject* const op = _base->AllocPolygonObject(pointCount, polygonCount);
    AddChild(op, "second child"_s);
    HostObject* const poses = AddChild(op, "P"_s);
    AddChild(poses, "b"_s);
    AddChild(AddChild(poses, "a"_s), "below"_s);
    return op;
  }
  HostObject* Clone(const HostObject* object, HostAliasTrans* trans) noexcept override { return _base->Clone(object, trans); }

private:
  HostObject* AddChild(HostObject* parent, const String& name) noexcept
  {
    HostObject* const child = _base->Alloc(kNullObjectType);
    EXPECT_TRUE(child->SetName(name));
    child->InsertUnder(parent);
    return child;
  }
  HostObjectTable* _base;
};

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
  ImportMorphLayer() : _objects(Host().Host().GetTables().object) { Host().Host().GetTables().object = &_objects; }

  std::string LoadTwoMeshes()
  {
    return Load(R"("scenes":[{"nodes":[0,1]}],"nodes":[{"name":"A","mesh":0},{"name":"B","mesh":3}])", SomeMeshes());
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
        names += std::string(op->GetName().GetView()) + " ";
      }
    }
    return names;
  }

  PosedObjects _objects;
};

const char* const kTwoPosedMeshes = "Scene 0[A#[P[a![below], b!], second child], B#[P[a![below], b!], second child]]";

TEST_F(ImportMorphLayer, OneLayerHoldsThePosesOfAllMeshes)
{
  EXPECT_EQ(LoadTwoMeshes(), "none");
  EXPECT_EQ(Outline(), kTwoPosedMeshes);
  ASSERT_EQ(LayerCount(), 1);
  EXPECT_EQ(std::string(Host().Scene().GetLayerRoot().GetLayer(0)->GetName().GetView()), "Pose Morph Targets");
  EXPECT_EQ(ObjectsOnTheLayer(), "P a b P a b ");
}

TEST_F(ImportMorphLayer, PosesAreHiddenWithoutALayer)
{
  Host().Set(1020, false);
  EXPECT_EQ(LoadTwoMeshes(), "none");
  EXPECT_EQ(Outline(), kTwoPosedMeshes);
  EXPECT_EQ(LayerCount(), 0);
}

TEST_F(ImportMorphLayer, EveryLoadMakesALayer)
{
  EXPECT_EQ(LoadTwoMeshes(), "none");
  EXPECT_EQ(LoadTwoMeshes(), "none");
  EXPECT_EQ(LayerCount(), 2);
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
  EXPECT_EQ(Load(R"("scenes":[{"nodes":[0]}],"skins":[{"joints":[0]}],"nodes":[{"name":"J","mesh":0}])", SomeMeshes()), "none");
  EXPECT_EQ(Outline(), "Scene 0[J^[P[a![below], b!]]]");
}

}  // namespace
}  // namespace q7z::test
