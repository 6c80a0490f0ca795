// The joints and weights of a mesh's vertices.

#include "tests/geometry/meshexportfixture.h"

namespace q7z::test
{

namespace
{

using testing::ElementsAre;

/// A joint of a tag, as the tag names it.
enum class Kind
{
  kJoint,
  kGroup,
  kGone,
};

struct InfluenceRow
{
  const char* name;
  std::vector<std::pair<Kind, Float>> joints;  ///< with the weight at point 0
  std::vector<Float> numbers;
  std::vector<Float> weights;
};

constexpr Kind kJoint = Kind::kJoint;

class SkinExport : public MeshExport
{
protected:
  HostWeightTag* Bind(HostPolygonObject* op, const std::vector<std::pair<Kind, Float>>& joints)
  {
    auto* const tag = static_cast<HostWeightTag*>(op->MakeTag(kWeightTagType));
    for (const auto& [kind, weight] : joints)
    {
      HostObject* const joint = AddJoint(kind == Kind::kGroup ? kNullObjectType : kJointObjectType);
      tag->SetWeight(tag->AddJoint(joint), 0, weight);
      if (kind != Kind::kGone)
        continue;
      joint->Remove();
      HostNode::Free(joint);
    }
    return tag;
  }
};

class Influences : public SkinExport, public testing::WithParamInterface<InfluenceRow>
{};

TEST_P(Influences, KeepTheStrongest)
{
  HostPolygonObject* const op = MakeQuad();
  Bind(op, GetParam().joints);
  const CollectedMesh mesh = Collect(op);
  ASSERT_EQ(mesh.error, "no error");
  EXPECT_TRUE(mesh.record.joints.isUsed);
  EXPECT_TRUE(mesh.record.weights.isUsed);
  std::vector<Float> joints = mesh.Joints();
  std::vector<Float> weights = mesh.Weights();
  ASSERT_EQ(joints.size(), 16u);
  ASSERT_EQ(weights.size(), 16u);
  joints.resize(4);
  weights.resize(4);
  EXPECT_EQ(joints, GetParam().numbers);
  EXPECT_EQ(weights, GetParam().weights);
}

const InfluenceRow kInfluences[] = {
  {"One", {{kJoint, 0.5}}, {0, 0, 0, 0}, {0.5, 0, 0, 0}},
  {"Sorted", {{kJoint, 0.25}, {kJoint, 1}, {kJoint, 0.5}}, {1, 2, 0, 0}, {1, 0.5, 0.25, 0}},
  {"LargestFourOfFive",
   {{kJoint, 0.5}, {kJoint, 0.125}, {kJoint, 2}, {kJoint, 0.25}, {kJoint, 1}},
   {2, 4, 0, 3},
   {2, 1, 0.5, 0.25}},
  {"SmallestLastIsDropped",
   {{kJoint, 1}, {kJoint, 0.5}, {kJoint, 0.5}, {kJoint, 0.25}, {kJoint, 0.125}},
   {0, 1, 2, 3},
   {1, 0.5, 0.5, 0.25}},
  {"EqualToTheFirstGoesInFront", {{kJoint, 1}, {kJoint, 0.5}, {kJoint, 1}}, {2, 0, 1, 0}, {1, 1, 0.5, 0}},
  {"EqualToTheLastGoesBehind", {{kJoint, 1}, {kJoint, 0.5}, {kJoint, 0.5}}, {0, 1, 2, 0}, {1, 0.5, 0.5, 0}},
  {"EqualInTheMiddleGoesBeforeTheFirstOfItsKind",
   {{kJoint, 1}, {kJoint, 0.5}, {kJoint, 0.25}, {kJoint, 0.5}},
   {0, 3, 1, 2},
   {1, 0.5, 0.5, 0.25}},
  {"ZerosCount", {{kJoint, 0}, {kJoint, 0}, {kJoint, 0}, {kJoint, 0}, {kJoint, 0}}, {4, 3, 2, 1}, {0, 0, 0, 0}},
  {"GroupsAndLostJointsHaveNoNumber",
   {{Kind::kGroup, 4}, {kJoint, 0.5}, {Kind::kGone, 2}, {kJoint, 1}},
   {1, 0, 0, 0},
   {1, 0.5, 0, 0}},
  {"OnlyAGroup", {{Kind::kGroup, 4}}, {0, 0, 0, 0}, {0, 0, 0, 0}},
};
INSTANTIATE_TEST_SUITE_P(Rows, Influences, testing::ValuesIn(kInfluences), RowName());

TEST_F(SkinExport, CopiesHaveTheWeightsOfTheirPoint)
{
  HostPolygonObject* const op = MakeQuad();
  AddUvs(op, {{}, {{}, {1, 0, 0}, {}, {}}});  // point 1 becomes two vertices
  HostWeightTag* const tag = Bind(op, {{kJoint, 0}, {kJoint, 0}});
  tag->SetWeight(1, 1, 0.75);
  const CollectedMesh mesh = Collect(op);
  EXPECT_THAT(mesh.Joints(), ElementsAre(1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0));
  EXPECT_THAT(mesh.Weights(), ElementsAre(0, 0, 0, 0, 0.75, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0.75, 0, 0, 0));
  EXPECT_EQ(mesh.record.jointView.GetByteLength(), 5 * 8);
  EXPECT_EQ(mesh.record.weightView.GetByteLength(), 5 * 16);
}

TEST_F(SkinExport, EveryPointOfALargeObjectHasItsOwn)
{
  constexpr Int32 kCount = 1000;
  HostPolygonObject* const op = Make(std::vector<Vector>(kCount), {{0, 1, 2, 2}});
  HostWeightTag* const tag = Bind(op, {{kJoint, 0}, {kJoint, 0}});
  for (Int32 i = 0; i < kCount; ++i)
    tag->SetWeight(i % 2, i, 1 + i);
  const CollectedMesh mesh = Collect(op);
  const std::vector<Float> joints = mesh.Joints();
  const std::vector<Float> weights = mesh.Weights();
  ASSERT_EQ(joints.size(), 4u * kCount);
  ASSERT_EQ(weights.size(), 4u * kCount);
  for (Int32 i = 0; i < kCount; ++i)
  {
    ASSERT_EQ(joints[4 * i], i % 2) << i;
    ASSERT_EQ(weights[4 * i], 1 + i) << i;
    ASSERT_EQ(weights[4 * i + 1], 0) << i;
  }
}

TEST_F(SkinExport, TagWithoutJointsIsNoSkin)
{
  HostPolygonObject* const op = MakeQuad();
  Bind(op, {});
  const CollectedMesh mesh = Collect(op);
  EXPECT_FALSE(mesh.record.joints.isUsed);
  EXPECT_FALSE(mesh.record.weights.isUsed);
  EXPECT_EQ(mesh.record.jointView.GetByteLength(), 0);
}

}  // namespace
}  // namespace q7z::test
