// Joints, skins and poses: what is bound, what is left outside the hierarchy, and what is hidden.

#include "host/scene/conversion.h"
#include "host/scene/headlessweighttag.h"
#include "plugin/module/configvariables.h"
#include "tests/import/importfixture.h"

namespace q7z::test
{
namespace
{

TEST_F(ImportTest, LastPolygonObjectOnASkinWins)
{
  EXPECT_EQ(Load(R"("scenes":[{"nodes":[0,1,2]}],"skins":[{"joints":[2]}],
                    "nodes":[{"name":"A","mesh":0,"skin":0},{"name":"B","mesh":3,"skin":0},{"name":"J"}])",
                 SomeMeshes()),
            "none");
  EXPECT_EQ(Outline(), "Scene 0[A#[~], B#, J^]");
  EXPECT_THAT(Host().Diagnostics(), testing::Contains(testing::HasSubstr("More than one node addresses same skin #0!")).Times(1));
}

TEST_F(ImportTest, VariableForbidsSkins)
{
  g_gltfImporterNoSkin = true;
  EXPECT_EQ(Load(R"("scenes":[{"nodes":[0]}],"skins":[{"joints":[0]}],"nodes":[{"name":"J"}])"), "none");
  g_gltfImporterNoSkin = false;
  EXPECT_EQ(Outline(), "Scene 0[J]");
}

// Refuses the mark of joints until told otherwise.
class RefusingParameters final : public HostParameterTable
{
public:
  explicit RefusingParameters(HostParameterTable* base) noexcept : _base(base) {}
  Int refusals = 0;  // how many are left
  Bool Get(const HostNode* node, const HostDescId& id, HostValue& value, Int32 flags) noexcept override
  {
    return _base->Get(node, id, value, flags);
  }
  Bool Set(HostNode* node, const HostDescId& id, const HostValue& value, Int32 flags) noexcept override
  {
    if (node->GetType() == kJointObjectType && id == HostDescId(929) && refusals-- > 0)
      return false;
    return _base->Set(node, id, value, flags);
  }

private:
  HostParameterTable* _base;
};

TEST_F(ImportTest, JointThatFailedServesTheNextVisit)
{
  RefusingParameters parameters(Host().Host().GetTables().parameter);
  parameters.refusals = 1;
  Host().Host().GetTables().parameter = &parameters;
  EXPECT_EQ(Load(R"("scenes":[{"nodes":[0,1]},{"nodes":[0]}],"skins":[{"joints":[0]}],"nodes":[{"name":"J"},{"name":"A"}])"),
            "none");
  EXPECT_EQ(Outline(), "Scene 1![J^], Scene 0[A]");
  EXPECT_EQ(FailedNodes(), std::vector<int>{0});
}

// Refuses the bind pose.
class RefusingWeights final : public HostWeightTable
{
public:
  explicit RefusingWeights(HostWeightTable* base) noexcept : _base(base) {}
  Int32 AddJoint(HostWeightTag* tag, HostObject* joint) noexcept override { return _base->AddJoint(tag, joint); }
  Int32 GetJointCount(const HostWeightTag* tag) noexcept override { return _base->GetJointCount(tag); }
  HostObject* GetJoint(const HostWeightTag* tag, Int32 joint, HostDocument* document) noexcept override
  {
    return _base->GetJoint(tag, joint, document);
  }
  Float GetWeight(const HostWeightTag* tag, Int32 joint, Int32 point) noexcept override
  {
    return _base->GetWeight(tag, joint, point);
  }
  Bool SetWeight(HostWeightTag* tag, Int32 joint, Int32 point, Float weight) noexcept override
  {
    return _base->SetWeight(tag, joint, point, weight);
  }
  Bool SetBindPose(HostWeightTag*, HostDocument*) noexcept override { return false; }

private:
  HostWeightTable* _base;
};

class ImportBinding : public ImportTest
{
protected:
  ImportBinding() { Host().Set(1002, HostUnitScale{1.0, 3}); }  // lengths stay

  // A at (1, 0, 0), turned by a quarter about Z, wears the skin of J at (5, 5, 5) and its child K at (0, 1, 0).
  std::string LoadSkin(const std::vector<float>& inverseBindMatrices, const std::string& joints = "1,2")
  {
    GltfJson file = SomeMeshes();
    const std::string matrices =
      inverseBindMatrices.empty() ? "" : R"(,"inverseBindMatrices":)" + std::to_string(file.Floats(inverseBindMatrices, "MAT4"));
    return Load(R"("scenes":[{"nodes":[0,1]}],"nodes":[{"name":"A","mesh":4,"skin":0,"translation":[1,0,0],
                   "rotation":[0,0,0.7071067811865476,0.7071067811865476]},{"name":"J","translation":[5,5,5],"children":[2]},
                   {"name":"K","translation":[0,1,0]}],"skins":[{"joints":[)" +
                  joints + "]" + matrices + "}]",
                file);
  }

  static void ExpectNear(const Vector& actual, const Vector& expected)
  {
    EXPECT_LT((actual - expected).GetLength(), 1e-12) << actual.x << " " << actual.y << " " << actual.z;
  }

  HostObject* Joint() { return Host().Document()->GetFirstObject()->GetDown()->GetNext(); }
  /// Where a joint of the skin was in the world when it was bound.
  HostMatrix BindMatrix(Int32 joint)
  {
    HostTag* const tag = Host().Document()->GetFirstObject()->GetDown()->GetTag(kWeightTagType);
    return static_cast<HeadlessWeightTag*>(ToHeadless(tag))->GetJointBindMatrix(joint);
  }
  void ExpectThePlacesOfTheFile()
  {
    EXPECT_EQ(Joint()->GetLocalMatrix().offset, (Vector{5, 5, -5}));
    EXPECT_EQ(Joint()->GetDown()->GetLocalMatrix().offset, (Vector{0, 1, 0}));
  }
};

// Column-major, translations by (0, -2, -1) and (0, -3, 0).
const std::vector<float> kTwoMatrices = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, -2, -1, 1,
                                         1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, -3, 0,  1};

TEST_F(ImportBinding, JointsAreBoundWhereTheirMatricesPutThem)
{
  EXPECT_EQ(LoadSkin(kTwoMatrices), "none");
  // Z is mirrored and the matrices are inverted: (0, 2, -1) and (0, 3, 0) as A sees them.
  ExpectNear(BindMatrix(0).offset, {-1, 0, -1});
  ExpectNear(BindMatrix(0).axisX, {0, 1, 0});
  ExpectNear(BindMatrix(1).offset, {-2, 0, 0});
  ExpectThePlacesOfTheFile();
}

TEST_F(ImportBinding, JointListedTwiceComesBack)
{
  EXPECT_EQ(LoadSkin(kTwoMatrices, "1,1"), "none");
  ExpectNear(BindMatrix(0).offset, {-2, 0, 0});  // the later position wins
  ExpectThePlacesOfTheFile();
}

TEST_F(ImportBinding, TooFewMatricesEndTheLoad)
{
  EXPECT_EQ(LoadSkin(std::vector<float>(kTwoMatrices.begin(), kTwoMatrices.begin() + 16)), "unknown_error");
  EXPECT_EQ(Outline(), "");
}

TEST_F(ImportBinding, FailedBindPoseEndsTheLoad)
{
  RefusingWeights weights(Host().Host().GetTables().weight);
  Host().Host().GetTables().weight = &weights;
  EXPECT_EQ(LoadSkin(kTwoMatrices), "unknown_error");
  EXPECT_EQ(Outline(), "");
}

// Poses of morph targets: they are hidden and put on a layer.

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

}  // namespace
}  // namespace q7z::test
