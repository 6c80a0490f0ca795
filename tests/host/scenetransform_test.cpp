// Matrices and vectors of objects, worked out by hand.

#include "host/scene/headlessobject.h"
#include "tests/host/scenefixture.h"

namespace q7z::test
{
namespace
{

constexpr Float kPi = 3.141592653589793;

void ExpectNear(const Vector& actual, const Vector& expected, const char* what)
{
  for (int i = 0; i < 3; ++i)
    EXPECT_NEAR(actual[i], expected[i], 1e-12) << what << " " << i;
}

void ExpectNear(const HostMatrix& actual, const HostMatrix& expected)
{
  ExpectNear(actual.offset, expected.offset, "offset");
  ExpectNear(actual.axisX, expected.axisX, "axisX");
  ExpectNear(actual.axisY, expected.axisY, "axisY");
  ExpectNear(actual.axisZ, expected.axisZ, "axisZ");
}

// A quarter turn of heading takes X to Z and Z to -X; one about X takes Y to -Z and Z to Y.
const std::tuple<const char*, RotationOrder, TransformVectors, HostMatrix> kTransforms[] = {
  {"Heading", 6, {{1, 2, 3}, {kPi / 2, 0, 0}, {2, 3, 4}}, {{1, 2, 3}, {0, 0, 2}, {0, 3, 0}, {-4, 0, 0}}},
  {"FirstAngleOfOrder2IsAboutX", 2, {{}, {kPi / 2, 0, 0}, {1, 1, 1}}, {{}, {1, 0, 0}, {0, 0, -1}, {0, 1, 0}}},
  // What is left of a mirrored Z after X was negated is half a turn of heading.
  {"MirroredZ", 6, {{}, {kPi, 0, 0}, {-1, 1, 1}}, {{}, {1, 0, 0}, {0, 1, 0}, {0, 0, -1}}},
};

class SceneTransform : public SceneTest
{};

TEST_F(SceneTransform, VectorsBuildTheMatrixAndTheMatrixGivesTheVectors)
{
  for (const auto& [name, order, vectors, matrix] : kTransforms)
  {
    SCOPED_TRACE(name);
    HostObject* const object = Add(name);
    ToHeadless(object)->SetRotationOrder(order);
    EXPECT_TRUE(object->SetParameter(kPositionParameter, vectors.position));
    EXPECT_TRUE(object->SetParameter(kRotationParameter, vectors.rotation));
    EXPECT_TRUE(object->SetParameter(kScaleParameter, vectors.scale));
    ExpectNear(object->GetLocalMatrix(), matrix);
    HostObject* const other = Add(name);
    ToHeadless(other)->SetRotationOrder(order);
    other->SetLocalMatrix(matrix);
    ExpectNear(other->GetRelativePosition(), vectors.position, "position");
    ExpectNear(other->GetRelativeScale(), vectors.scale, "scale");
    ExpectNear(other->GetRelativeRotation(), vectors.rotation, "rotation");
  }
}

TEST_F(SceneTransform, VectorsHaveComponentsAndOneKind)
{
  HostObject* const object = Add("a");
  object->SetLocalMatrix({{1, 2, 3}, {2, 0, 0}, {0, 3, 0}, {0, 0, 4}});
  HostValue value;
  ASSERT_TRUE(object->GetParameter({kScaleParameter, kComponentZ}, value));
  EXPECT_EQ(value, HostValue(4.0));
  EXPECT_FALSE(object->GetParameter({kScaleParameter, 1003}, value));
  EXPECT_FALSE(object->GetParameter(906, value));
  EXPECT_EQ(value, HostValue(4.0)) << "untouched";
  EXPECT_FALSE(object->SetParameter(kPositionParameter, HostValue(1.0)));
  EXPECT_FALSE(object->SetParameter({kPositionParameter, kComponentX}, HostValue(Vector{1, 1, 1})));
  EXPECT_FALSE(object->SetParameter({kPositionParameter, kComponentX}, HostValue("1"_s)));
  EXPECT_TRUE(object->SetParameter({kPositionParameter, kComponentX}, HostValue(Int(7))));
  EXPECT_EQ(object->GetRelativePosition(), (Vector{7, 2, 3}));
}

TEST_F(SceneTransform, BaseLiesUnderTheVectors)
{
  HostObject* const object = Add("a");
  const HostMatrix base{{5, 0, 0}, {0, 0, 1}, {0, 1, 0}, {-1, 0, 0}};
  ASSERT_TRUE(ToHeadless(object)->SetBase({base, {2, 2, 2}}));
  ASSERT_TRUE(object->SetParameter(kPositionParameter, HostValue(Vector{1, 0, 0})));
  ExpectNear(object->GetLocalMatrix(), {{5, 0, 1}, {0, 0, 2}, {0, 2, 0}, {-2, 0, 0}});

  object->SetLocalMatrix({});
  ExpectNear(object->GetRelativePosition(), {0, 0, 5}, "position");
  ExpectNear(object->GetRelativeRotation(), {3 * kPi / 2, 0, 0}, "rotation");
  ExpectNear(object->GetRelativeScale(), {0.5, 0.5, 0.5}, "scale");
}

}  // namespace
}  // namespace q7z::test
