// Matrices and vectors of objects, worked out by hand.

#include "host/scene/headlessobject.h"
#include "tests/host/scenefixture.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

constexpr Float kPi = 3.141592653589793;
constexpr Float kNear = 1e-12;

void ExpectNear(const Vector& actual, const Vector& expected, const char* what)
{
  EXPECT_NEAR(actual.x, expected.x, kNear) << what;
  EXPECT_NEAR(actual.y, expected.y, kNear) << what;
  EXPECT_NEAR(actual.z, expected.z, kNear) << what;
}

void ExpectNear(const HostMatrix& actual, const HostMatrix& expected)
{
  ExpectNear(actual.offset, expected.offset, "offset");
  ExpectNear(actual.axisX, expected.axisX, "axisX");
  ExpectNear(actual.axisY, expected.axisY, "axisY");
  ExpectNear(actual.axisZ, expected.axisZ, "axisZ");
}

struct TransformRow
{
  const char* name;
  RotationOrder order;
  TransformVectors vectors;
  HostMatrix matrix;
};

// A quarter turn of heading takes X to Z and Z to -X; one of pitch takes Y to -Z and Z to Y; one of bank takes X to -Y and Y to X.
const TransformRow kTransforms[] = {
  {"Identity", 6, {}, {}},
  {"PositionAndScale", 6, {{1, 2, 3}, {}, {2, 3, 4}}, {{1, 2, 3}, {2, 0, 0}, {0, 3, 0}, {0, 0, 4}}},
  {"Heading", 6, {{1, 2, 3}, {kPi / 2, 0, 0}, {2, 3, 4}}, {{1, 2, 3}, {0, 0, 2}, {0, 3, 0}, {-4, 0, 0}}},
  {"HeadingThenBank", 6, {{}, {kPi / 2, 0, kPi / 2}, {1, 1, 1}}, {{}, {0, -1, 0}, {0, 0, 1}, {-1, 0, 0}}},
  {"FirstAngleOfOrder2IsAboutX", 2, {{}, {kPi / 2, 0, 0}, {1, 1, 1}}, {{}, {1, 0, 0}, {0, 0, -1}, {0, 1, 0}}},
  {"SecondAngleOfOrder2IsAboutY",
   2,
   {{}, {0, kPi / 4, 0}, {1, 1, 1}},
   {{}, {std::sqrt(0.5), 0, std::sqrt(0.5)}, {0, 1, 0}, {-std::sqrt(0.5), 0, std::sqrt(0.5)}}},
  {"MirroredX", 6, {{}, {}, {-2, 3, 4}}, {{}, {-2, 0, 0}, {0, 3, 0}, {0, 0, 4}}},
  // What is left of a mirrored Z after X was negated is half a turn of heading.
  {"MirroredZ", 6, {{}, {kPi, 0, 0}, {-1, 1, 1}}, {{}, {1, 0, 0}, {0, 1, 0}, {0, 0, -1}}},
};

class SceneTransformRows : public SceneTest, public testing::WithParamInterface<TransformRow>
{
protected:
  HostObject* Object()
  {
    HostObject* const object = Add("a");
    ToHeadless(object)->SetRotationOrder(GetParam().order);
    return object;
  }
};

TEST_P(SceneTransformRows, VectorsBuildTheMatrix)
{
  HostObject* const object = Object();
  EXPECT_TRUE(object->SetParameter(kPositionParameter, GetParam().vectors.position));
  EXPECT_TRUE(object->SetParameter(kRotationParameter, GetParam().vectors.rotation));
  EXPECT_TRUE(object->SetParameter(kScaleParameter, GetParam().vectors.scale));
  ExpectNear(object->GetLocalMatrix(), GetParam().matrix);
}

TEST_P(SceneTransformRows, MatrixGivesTheVectors)
{
  HostObject* const object = Object();
  object->SetLocalMatrix(GetParam().matrix);
  EXPECT_EQ(object->GetRotationOrder(), GetParam().order);
  ExpectNear(object->GetRelativePosition(), GetParam().vectors.position, "position");
  ExpectNear(object->GetRelativeScale(), GetParam().vectors.scale, "scale");
  ExpectNear(object->GetRelativeRotation(), GetParam().vectors.rotation, "rotation");
  // Built anew from these vectors the matrix is the same.
  EXPECT_TRUE(object->SetParameter(kPositionParameter, object->GetRelativePosition()));
  ExpectNear(object->GetLocalMatrix(), GetParam().matrix);
}

INSTANTIATE_TEST_SUITE_P(Rows, SceneTransformRows, testing::ValuesIn(kTransforms), RowName());

class SceneTransform : public SceneTest
{};

TEST_F(SceneTransform, MatrixIsKeptAsGivenUntilAVectorIsSet)
{
  const HostMatrix sheared{{0.1, 0.2, 0.3}, {1, 0, 0}, {1, 1, 0}, {0, 0, 1}};
  HostObject* const object = Add("a");
  object->SetLocalMatrix(sheared);
  EXPECT_EQ(object->GetLocalMatrix(), sheared);
  ASSERT_TRUE(object->SetParameter({kPositionParameter, kComponentY}, HostValue(7.0)));
  // Lengths and angles survive, the shear does not.
  ExpectNear(object->GetLocalMatrix(), {{0.1, 7, 0.3}, {1, 0, 0}, {0, std::sqrt(2.0), 0}, {0, 0, 1}});
}

TEST_F(SceneTransform, VectorsAreReadByComponent)
{
  HostObject* const object = Add("a");
  object->SetLocalMatrix({{1, 2, 3}, {2, 0, 0}, {0, 3, 0}, {0, 0, 4}});
  HostValue value;
  ASSERT_TRUE(object->GetParameter({kScaleParameter, kComponentZ}, value));
  EXPECT_EQ(value, HostValue(4.0));
  ASSERT_TRUE(object->GetParameter(kPositionParameter, value));
  EXPECT_EQ(value, HostValue(Vector{1, 2, 3}));
  EXPECT_FALSE(object->GetParameter({kScaleParameter, 1003}, value));
  EXPECT_FALSE(object->GetParameter(906, value));
  EXPECT_EQ(value, HostValue(Vector{1, 2, 3})) << "untouched";
}

TEST_F(SceneTransform, ValuesOfAnotherKindAreRefused)
{
  HostObject* const object = Add("a");
  EXPECT_FALSE(object->SetParameter(kPositionParameter, HostValue(1.0)));
  EXPECT_FALSE(object->SetParameter({kPositionParameter, kComponentX}, HostValue(Vector{1, 1, 1})));
  EXPECT_FALSE(object->SetParameter({kPositionParameter, kComponentX}, HostValue("1"_s)));
  EXPECT_EQ(object->GetLocalMatrix(), HostMatrix());
  EXPECT_TRUE(object->SetParameter({kPositionParameter, kComponentX}, HostValue(Int(3))));
  EXPECT_EQ(object->GetRelativePosition(), (Vector{3, 0, 0}));
}

TEST_F(SceneTransform, GlobalMatrixUnderAScaledParent)
{
  HostObject* const top = Add("top");
  HostObject* const parent = Add("parent", top);
  HostObject* const child = Add("child", parent);
  top->SetLocalMatrix({{100, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
  parent->SetLocalMatrix({{10, 0, 0}, {2, 0, 0}, {0, 2, 0}, {0, 0, 2}});
  const HostMatrix wanted{{112, 4, 6}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  child->SetGlobalMatrix(wanted);
  EXPECT_EQ(child->GetLocalMatrix(), (HostMatrix{{1, 2, 3}, {0.5, 0, 0}, {0, 0.5, 0}, {0, 0, 0.5}}));
  EXPECT_EQ(child->GetGlobalMatrix(), wanted);
  EXPECT_EQ(child->GetRelativeScale(), (Vector{0.5, 0.5, 0.5}));
}

TEST_F(SceneTransform, GlobalMatrixFollowsAllParents)
{
  HostObject* const top = Add("top");
  HostObject* const middle = Add("middle", top);
  HostObject* const low = Add("low", middle);
  top->SetLocalMatrix({{100, 0, 0}, {0, 0, 1}, {0, 1, 0}, {-1, 0, 0}});
  middle->SetLocalMatrix({{0, 10, 0}, {3, 0, 0}, {0, 3, 0}, {0, 0, 3}});
  low->SetLocalMatrix({{1, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
  // 1 along the low X is 3 along the middle X, which the top turns to Z.
  EXPECT_EQ(low->GetGlobalMatrix(), (HostMatrix{{100, 10, 3}, {0, 0, 3}, {0, 3, 0}, {-3, 0, 0}}));
  top->SetLocalMatrix({});
  EXPECT_EQ(low->GetGlobalMatrix().offset, (Vector{3, 10, 0}));
}

TEST_F(SceneTransform, BaseLiesUnderTheVectors)
{
  HostObject* const object = Add("a");
  const HostMatrix base{{5, 0, 0}, {0, 0, 1}, {0, 1, 0}, {-1, 0, 0}};
  ASSERT_TRUE(ToHeadless(object)->SetBase({base, {2, 2, 2}}));
  EXPECT_EQ(HostObjectGetBaseMatrix(object), base);
  EXPECT_EQ(HostObjectGetBaseScale(object), (Vector{2, 2, 2}));

  ASSERT_TRUE(object->SetParameter(kPositionParameter, HostValue(Vector{1, 0, 0})));
  ExpectNear(object->GetLocalMatrix(), {{5, 0, 1}, {0, 0, 2}, {0, 2, 0}, {-2, 0, 0}});

  object->SetLocalMatrix({});
  ExpectNear(object->GetRelativePosition(), {0, 0, 5}, "position");
  ExpectNear(object->GetRelativeRotation(), {3 * kPi / 2, 0, 0}, "rotation");
  ExpectNear(object->GetRelativeScale(), {0.5, 0.5, 0.5}, "scale");
}

TEST_F(SceneTransform, MatrixAndVectorsOfADocumentAreKeptAsTheyAre)
{
  HeadlessObject& object = *ToHeadless(Add("a"));
  const TransformVectors vectors{{1, 2, 3}, {7, 8, 9}, {0, 0, 0}};
  const HostMatrix matrix{{4, 5, 6}, {1, 1, 1}, {0, 0, 0}, {2, 2, 2}};
  object.SetVectorsAndMatrix(vectors, matrix);
  EXPECT_EQ(object.GetVectors(), vectors);
  EXPECT_EQ(object.GetLocalMatrix(), matrix);
}

}  // namespace
}  // namespace q7z::test
