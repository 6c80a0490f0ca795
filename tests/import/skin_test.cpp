// Joints and skins: which objects joints replace, what is bound, and what is left outside the hierarchy.

#include "host/scene/conversion.h"
#include "host/scene/headlessweighttag.h"
#include "tests/import/importfixture.h"

namespace q7z::test
{
namespace
{

const char* const kSkinnedTriangle =
  R"("scenes":[{"nodes":[0,1]}],"skins":[{"joints":[1]}],"nodes":[{"name":"A","mesh":0,"skin":0},{"name":"J"}])";

TEST_F(ImportTest, SkinsCanBeLeftOut)
{
  Host().Set(1014, false);
  EXPECT_EQ(Load(kSkinnedTriangle, SomeMeshes()), "none");
  EXPECT_EQ(Outline(), "Scene 0[A#, J]");
}

TEST_F(ImportTest, JointsWithoutGeometryStillStand)
{
  Host().Set(1004, false);
  EXPECT_EQ(Load(kSkinnedTriangle, SomeMeshes()), "none");
  EXPECT_EQ(Outline(), "Scene 0[A, J^]");
}

class ImportSharedSkin : public ImportTest
{
protected:
  int CountLines(const std::string& text)
  {
    const auto& lines = Host().Diagnostics();
    return static_cast<int>(std::ranges::count_if(lines,
                                                  [&](const std::string& line) { return line.find(text) != std::string::npos; }));
  }
};

TEST_F(ImportSharedSkin, LastPolygonObjectWins)
{
  EXPECT_EQ(Load(R"("scenes":[{"nodes":[0,1,2]}],"skins":[{"joints":[2]}],
                    "nodes":[{"name":"A","mesh":0,"skin":0},{"name":"B","mesh":3,"skin":0},{"name":"J"}])",
                 SomeMeshes()),
            "none");
  EXPECT_EQ(Outline(), "Scene 0[A#[~], B#, J^]");
  EXPECT_EQ(CountLines("More than one node addresses same skin #0!"), 1);
}

TEST_F(ImportSharedSkin, InstanceHasNoPolygonObject)
{
  EXPECT_EQ(Load(R"("scenes":[{"nodes":[0,1,2]}],"skins":[{"joints":[2]}],
                    "nodes":[{"name":"A","mesh":0,"skin":0},{"name":"B","mesh":0,"skin":0},{"name":"J"}])",
                 SomeMeshes()),
            "none");
  EXPECT_EQ(Outline(), "Scene 0[A=B, B#[~], J^]");
  EXPECT_EQ(CountLines("More than one node addresses same skin #0!"), 1);
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

TEST_F(ImportSharedSkin, JointThatFailedServesTheNextVisit)
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

TEST_F(ImportBinding, WithoutMatricesTheNodesOwnPlacesAreBound)
{
  EXPECT_EQ(LoadSkin({}), "none");
  EXPECT_EQ(BindMatrix(0).offset, (Vector{5, 5, -5}));
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

}  // namespace
}  // namespace q7z::test
