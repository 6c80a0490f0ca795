// Points and normals as skins and pose morphs leave them in a copy of the current state.

#include "tests/evaluation/evaluationfixture.h"

namespace q7z::test
{
namespace
{

using Points = std::vector<Vector>;

void ExpectNear(const Points& found, const Points& expected)
{
  ASSERT_EQ(found.size(), expected.size());
  for (size_t i = 0; i < found.size(); ++i)
  {
    EXPECT_NEAR(found[i].x, expected[i].x, 1e-12) << "point " << i;
    EXPECT_NEAR(found[i].y, expected[i].y, 1e-12) << "point " << i;
    EXPECT_NEAR(found[i].z, expected[i].z, 1e-12) << "point " << i;
  }
}

/// A quarter turn about Z, from X towards Y.
HostMatrix QuarterTurn(const Vector& offset)
{
  return {offset, {0, 1, 0}, {-1, 0, 0}, {0, 0, 1}};
}

// An arm along X in a mesh that stands at 10: the upper joint at the mesh's origin, the lower one under it, 2 further. Point 0 hangs
// on the upper joint, 1 on both alike, 2 on the lower one, 3 on none, 4 on both with weights that add up to 4.
class Skin : public CurrentStateTest
{
protected:
  Skin()
  {
    _mesh.SetLocalMatrix(Offset({10, 0, 0}));
    _upper.SetLocalMatrix(Offset({10, 0, 0}));
    _lower.SetLocalMatrix(Offset({2, 0, 0}));
    _tag.InsertInto(&_mesh);
    EXPECT_EQ(_tag.AddJoint(&_upper), 0);
    EXPECT_EQ(_tag.AddJoint(&_lower), 1);
    SetWeights(0, {{0, 1}, {1, 0.5}, {4, 1}});
    SetWeights(1, {{1, 0.5}, {2, 1}, {3, 0}, {4, 3}});
    EXPECT_TRUE(_tag.TakeBindPose());
  }

  void SetWeights(Int32 joint, std::initializer_list<PointWeight> weights)
  {
    for (const PointWeight& weight : weights)
      EXPECT_TRUE(_tag.SetWeight(joint, weight.point, weight.weight));
  }
  HeadlessCornerTag& AddNormals(std::initializer_list<HostPolygon> polygons)
  {
    HostArray<HostPolygon> array;
    EXPECT_TRUE(array.Create(static_cast<Int>(polygons.size())));
    std::copy(polygons.begin(), polygons.end(), array.GetW());
    _mesh.SetGeometry(_mesh.GetPoints(), array);
    HeadlessTag* const tag = HeadlessTag::Create(kNormalTagType, static_cast<Int32>(polygons.size()));
    tag->InsertInto(&_mesh);
    return static_cast<HeadlessCornerTag&>(*tag);
  }
  HeadlessObject& AddDeformer(HeadlessObject* parent) { return AddObject("deformer", parent, kSkinDeformerType); }
  /// The points of the copy of the mesh.
  Points Deform() { return PointsOf(*MakeCopy(_mesh)); }

  HeadlessPolygonObject& _mesh = AddPoints({{0, 0, 0}, {3, 0, 0}, {4, 0, 0}, {4, 0, 0}, {3, 0, 0}});
  HeadlessObject& _upper = AddObject("upper", nullptr, kJointObjectType);
  HeadlessObject& _lower = AddObject("lower", &_upper, kJointObjectType);
  HeadlessWeightTag& _tag = static_cast<HeadlessWeightTag&>(*HeadlessTag::Create(kWeightTagType));
  const Points _bound = PointsOf(_mesh);
  const Points _bent = {{0, 0, 0}, {2.5, 0.5, 0}, {2, 2, 0}, {4, 0, 0}, {2.25, 0.75, 0}};
};

TEST_F(Skin, BendsByWeight)
{
  AddDeformer(&_mesh);
  _lower.SetLocalMatrix(QuarterTurn({2, 0, 0}));
  const Owner copy = MakeCopy(_mesh);
  ExpectNear(PointsOf(*copy), _bent);
  EXPECT_EQ(PointsOf(_mesh), _bound) << "the original stays";
  EXPECT_EQ(copy->GetLocalMatrix(), _mesh.GetLocalMatrix());
  EXPECT_TRUE(copy->FindTag(kWeightTagType)) << "weights stay";
}

TEST_F(Skin, ScaledObjectIsWorkedOutInItsOwnSpace)
{
  AddDeformer(&_mesh);
  _upper.SetLocalMatrix(Offset({10, 8, 0}));
  _mesh.SetLocalMatrix({{10, 0, 0}, {2, 0, 0}, {0, 2, 0}, {0, 0, 2}});
  // The joints are worth half as much in the mesh's space by now, and all went up by 8.
  ExpectNear(Deform(), {{0, 4, 0}, {1.5, 4, 0}, {2, 4, 0}, {4, 0, 0}, {1.5, 4, 0}});
}

TEST_F(Skin, WhatMovesTogetherSharesItsPoints)
{
  HeadlessObject& group = AddObject("group");
  _mesh.InsertUnder(&group);
  _upper.InsertUnder(&group);
  AddDeformer(&_mesh);
  group.SetVectors({{1e5 / 3, 7.1, 0}, {0.3, 0.4, 0.5}, {3, 3, 3}});
  const Owner copy = MakeCopy(group);
  EXPECT_EQ(copy->GetLastChild()->AsPolygonObject()->GetPoints().GetR(), _mesh.GetPoints().GetR());
}

TEST_F(Skin, TurnsNormals)
{
  HeadlessCornerTag& normals = AddNormals({{0, 1, 2, 3}, {2, 2, 99, -1}});
  const Vector x{1, 0, 0};
  normals.GetHandleW(false).Set(0, {x, x, x, x});
  normals.GetHandleW(false).Set(1, {{0, 0, 2}, {0, 3, 0}, x, x});
  AddDeformer(&_mesh);
  _lower.SetLocalMatrix(QuarterTurn({2, 0, 0}));
  const Owner copy = MakeCopy(_mesh);
  const HostCornerHandle turned = static_cast<HeadlessCornerTag*>(copy->FindTag(kNormalTagType))->GetHandleR();
  constexpr Float kDiagonal = Float32(0.70710678118654752);
  const HostCorners first = turned.Get(0);
  ExpectNear({first.a, first.c, first.d}, {x, {0, 1, 0}, x});
  EXPECT_NEAR(first.b.x, kDiagonal, 1e-6);
  EXPECT_NEAR(first.b.y, kDiagonal, 1e-6);
  const HostCorners second = turned.Get(1);
  ExpectNear({second.a, second.b, second.c, second.d}, {{0, 0, 2}, {-3, 0, 0}, x, x});
  EXPECT_EQ(normals.GetHandleR().Get(0).c, x) << "the original stays";
}

// Flattened to a half along X, a plane of slope 1 gets slope 2: its normal tilts towards X.
TEST_F(Skin, NormalsStayUprightUnderScale)
{
  AddNormals({{2, 2, 2, 2}}).GetHandleW(true).Set(0, {{1, 1, 0}, {}, {}, {}});
  AddDeformer(&_mesh);
  _lower.SetLocalMatrix({{2, 0, 0}, {0.5, 0, 0}, {0, 1, 0}, {0, 0, 1}});
  const Owner copy = MakeCopy(_mesh);
  const Vector turned = static_cast<HeadlessCornerTag*>(copy->FindTag(kNormalTagType))->GetHandleR().Get(0).a;
  EXPECT_NEAR(turned.x, 2 * turned.y, 1e-12);
  EXPECT_NEAR(turned.GetLength(), std::sqrt(2.0), 1e-12);
}

// Where the deformer stands.

TEST_F(Skin, DeformersActFromTheMeshAndTheGroupsAroundIt)
{
  HeadlessObject& far = AddObject("far");
  HeadlessObject& beside = AddObject("beside", &far);
  HeadlessObject& near = AddObject("near", &far);
  HeadlessPolygonObject& other = AddPoints({{0, 0, 0}});
  other.InsertUnderLast(&near);
  _mesh.InsertUnder(&other);
  _lower.SetLocalMatrix(QuarterTurn({2, 0, 0}));
  AddDeformer(&beside);
  AddDeformer(&other);
  ExpectNear(Deform(), _bound);
  for (HeadlessObject* const parent : std::initializer_list<HeadlessObject*>{&_mesh, &near, &far})
  {
    HeadlessObject& deformer = AddDeformer(parent);
    ExpectNear(Deform(), _bent);
    deformer.Remove();
    HeadlessNode::Free(&deformer);
  }
  AddDeformer(&near);
  AddDeformer(&far);
  ExpectNear(Deform(), _bent);  // once
}

TEST_F(Skin, WithoutABindPoseNothingMoves)
{
  HeadlessPolygonObject& mesh = AddPoints({{1, 2, 3}});
  auto& tag = static_cast<HeadlessWeightTag&>(*HeadlessTag::Create(kWeightTagType));
  tag.InsertInto(&mesh);
  ASSERT_EQ(tag.AddJoint(&_upper), 0);
  ASSERT_TRUE(tag.SetWeight(0, 0, 1));
  AddDeformer(&mesh);
  EXPECT_EQ(PointsOf(*MakeCopy(mesh)), (Points{{1, 2, 3}}));
}

// Pose morphs.

class Morphs : public CurrentStateTest
{
protected:
  Morphs() { _tag.InsertInto(&_mesh); }
  HeadlessMorph& AddMorph(Float strength)
  {
    HeadlessMorph& morph = *_tag.AddMorph();
    morph.SetStrength(strength);
    return morph;
  }
  HeadlessMorph& AddMorph(Float strength, std::initializer_list<Vector> points)
  {
    HeadlessMorph& morph = AddMorph(strength);
    morph.SetPoints(MakeArray(points));
    return morph;
  }
  Points Deform() { return PointsOf(*MakeCopy(_mesh)); }

  HeadlessPolygonObject& _mesh = AddPoints({{0, 0, 0}, {1, 0, 0}});
  HeadlessPoseMorphTag& _tag = static_cast<HeadlessPoseMorphTag&>(*HeadlessTag::Create(kPoseMorphTagType));
};

TEST_F(Morphs, MovePointsByBothStrengths)
{
  AddMorph(1, {{0, 0, 0}, {1, 0, 0}});
  AddMorph(0.5, {{0, 8, 0}, {1, 0, 4}});
  HeadlessPolygonObject& target = AddPoints({{4, 0, 0}, {1, 0, 0}});
  ASSERT_TRUE(AddMorph(-1).SetObject(&target));
  EXPECT_EQ(Deform(), (Points{{-4, 4, 0}, {1, 0, 2}}));
  ASSERT_TRUE(_tag.SetParameter(HostDescId(1031), 0.5));
  const Owner copy = MakeCopy(_mesh);
  EXPECT_EQ(PointsOf(*copy), (Points{{-2, 2, 0}, {1, 0, 1}}));
  EXPECT_EQ(copy->FindTag(kPoseMorphTagType), nullptr);
  EXPECT_EQ(PointsOf(_mesh), (Points{{0, 0, 0}, {1, 0, 0}}));
  EXPECT_EQ(_tag.GetMorphCount(), 3);
}

TEST_F(Morphs, MoveFromTheBaseThatMorph0Keeps)
{
  AddMorph(0, {{0, 1, 0}, {1, 1, 0}});
  AddMorph(1, {{0, 3, 0}, {1, 1, 0}});
  EXPECT_EQ(Deform(), (Points{{0, 2, 0}, {1, 0, 0}}));
}

TEST_F(Morphs, MoveFromTheObjectWithoutABaseThatFits)
{
  AddMorph(0, {{9, 9, 9}});
  AddMorph(1, {{0, 3, 0}, {1, 0, 0}});
  EXPECT_EQ(Deform(), (Points{{0, 3, 0}, {1, 0, 0}}));
}

TEST_F(Morphs, ThatDoNotFitLeaveThePointsShared)
{
  AddMorph(0, {{0, 0, 0}, {1, 0, 0}});
  AddMorph(1, {{9, 9, 9}});
  AddMorph(0, {{9, 9, 9}, {9, 9, 9}});
  ASSERT_TRUE(AddMorph(1).SetObject(&AddObject("no mesh")));
  AddMorph(1);
  const Owner copy = MakeCopy(_mesh);
  EXPECT_EQ(copy->AsPolygonObject()->GetPoints().GetR(), _mesh.GetPoints().GetR());
  EXPECT_EQ(copy->FindTag(kPoseMorphTagType), nullptr);
}

TEST_F(Morphs, ComeBeforeTheSkinAndFollowTheirTracks)
{
  AddMorph(0, {{0, 0, 0}, {1, 0, 0}});
  AddMorph(0, {{2, 0, 0}, {1, 0, 0}});
  AddTrack(_tag, HeadlessPoseMorphTag::GetStrengthId(1), {{0, 0}, {2, 1}});
  auto& weights = static_cast<HeadlessWeightTag&>(*HeadlessTag::Create(kWeightTagType));
  weights.InsertInto(&_mesh);
  HeadlessObject& joint = AddObject("joint", nullptr, kJointObjectType);
  ASSERT_EQ(weights.AddJoint(&joint), 0);
  ASSERT_TRUE(weights.SetWeight(0, 0, 1) && weights.SetWeight(0, 1, 1) && weights.TakeBindPose());
  AddObject("deformer", &_mesh, kSkinDeformerType);
  joint.SetLocalMatrix(QuarterTurn({}));
  GoTo(1);
  ExpectNear(Deform(), {{0, 1, 0}, {0, 1, 0}});
}

}  // namespace
}  // namespace q7z::test
