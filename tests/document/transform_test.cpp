// The conversion of transforms into the host's space.

#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "plugin/document/gltfnode.h"
#include "tests/support/rowname.h"

namespace q7z::test
{

namespace
{

constexpr Float kRoot = 0.7071067811865476;  // of one half

void ExpectNear(const Vector& actual, const Vector& expected, Float tolerance, const char* what)
{
  EXPECT_NEAR(actual.x, expected.x, tolerance) << what << ".x";
  EXPECT_NEAR(actual.y, expected.y, tolerance) << what << ".y";
  EXPECT_NEAR(actual.z, expected.z, tolerance) << what << ".z";
}

void ExpectNear(const HostMatrix& actual, const HostMatrix& expected, Float tolerance = 1e-14)
{
  ExpectNear(actual.offset, expected.offset, tolerance, "offset");
  ExpectNear(actual.axisX, expected.axisX, tolerance, "axisX");
  ExpectNear(actual.axisY, expected.axisY, tolerance, "axisY");
  ExpectNear(actual.axisZ, expected.axisZ, tolerance, "axisZ");
}

HostMatrix Axes(const Vector& x, const Vector& y, const Vector& z)
{
  return {.offset = {}, .axisX = x, .axisY = y, .axisZ = z};
}

/// With the third row and the third column negated.
HostMatrix Mirrored(const HostMatrix& m)
{
  return Axes({m.axisX.x, m.axisX.y, -m.axisX.z}, {m.axisY.x, m.axisY.y, -m.axisY.z}, {-m.axisZ.x, -m.axisZ.y, m.axisZ.z});
}

/// The rotation by an angle around an axis of length 1, by what it does to each base vector.
HostMatrix RotationAround(const Vector& axis, Float angle)
{
  const auto turn = [&](const Vector& v)
  { return v * std::cos(angle) + axis.Cross(v) * std::sin(angle) + axis * (axis.Dot(v) * (1 - std::cos(angle))); };
  return Axes(turn({1, 0, 0}), turn({0, 1, 0}), turn({0, 0, 1}));
}

}  // namespace

/// A node of translation, rotation and scale.
struct TrsRow
{
  const char* name;
  Vector translation;
  Vector4 rotation;
  Vector nodeScale;
  Float scale;
  Bool flipZ;
  HostMatrix expected;
};

class NodeTransform : public testing::TestWithParam<TrsRow>
{};

TEST_P(NodeTransform, IsConverted)
{
  const TrsRow& row = GetParam();
  GltfNode node;
  node.translation = row.translation;
  node.rotation = row.rotation;
  node.scale = row.nodeScale;
  ExpectNear(ConvertNodeTransform(node, row.scale, row.flipZ), row.expected);
}

constexpr Vector4 kNoTurn{0, 0, 0, 1};
constexpr Vector4 kQuarterX{kRoot, 0, 0, kRoot};
constexpr Vector4 kQuarterY{0, kRoot, 0, kRoot};
constexpr Vector4 kQuarterZ{0, 0, kRoot, kRoot};

const TrsRow kTransforms[] = {
  {"Offset", {1, 2, 5}, kNoTurn, {1, 1, 1}, 1, false, {{1, 2, 5}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}},
  // The option multiplies lengths, the node's scale multiplies axes.
  {"ScaleOption", {1, 0, 0}, kNoTurn, {3, 3, 3}, 2, true, {{2, 0, 0}, {3, 0, 0}, {0, 3, 0}, {0, 0, 3}}},
  {"TurnXMirrored", {0, 0, 0}, kQuarterX, {1, 1, 1}, 1, true, {{}, {1, 0, 0}, {0, 0, -1}, {0, 1, 0}}},
  // Without the mirror the rotation is inverted: about Z the two differ.
  {"TurnZ", {0, 0, 0}, kQuarterZ, {1, 1, 1}, 1, false, {{}, {0, -1, 0}, {1, 0, 0}, {0, 0, 1}}},
  {"TurnZMirrored", {0, 0, 0}, kQuarterZ, {1, 1, 1}, 1, true, {{}, {0, 1, 0}, {-1, 0, 0}, {0, 0, 1}}},
  {"TurnAndScaleMirrored", {0, 0, 0}, kQuarterZ, {2, 3, 4}, 1, true, {{}, {0, 2, 0}, {-3, 0, 0}, {0, 0, 4}}},
  {"NoScaleAtAll", {0, 0, 0}, kQuarterX, {0, 0, 0}, 1, true, {{}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}}},
  {"LongQuaternion", {0, 0, 0}, {0, 0, 2, 0}, {1, 1, 1}, 1, true, {{}, {-7, 0, 0}, {0, -7, 0}, {0, 0, 1}}},
};
INSTANTIATE_TEST_SUITE_P(Rows, NodeTransform, testing::ValuesIn(kTransforms), RowName());

TEST(NodeTransform, MirrorsNoZeroIntoANegativeOne)
{
  const HostMatrix matrix = ConvertNodeTransform(GltfNode(), 1, true);
  EXPECT_FALSE(std::signbit(matrix.offset.z));
  EXPECT_FALSE(std::signbit(matrix.axisX.z));
  EXPECT_FALSE(std::signbit(matrix.axisZ.x));
}

/// A node with a matrix, mirrored. expected has been worked out from the rotation's quaternion.
struct MatrixRow
{
  const char* name;
  HostMatrix matrix;
  HostMatrix expected;
};

class MirroredMatrix : public testing::TestWithParam<MatrixRow>
{};

TEST_P(MirroredMatrix, IsConverted)
{
  GltfNode node;
  node.hasMatrix = true;
  node.matrix = GetParam().matrix;
  node.translation = {100, 100, 100};  // the matrix wins
  ExpectNear(ConvertNodeTransform(node, 1, true), GetParam().expected);
  ExpectNear(ConvertMatrix(GetParam().matrix, 1, true), GetParam().expected);
}

const MatrixRow kMatrices[] = {
  {"Identity", HostMatrix(), HostMatrix()},
  {"OffsetAndScale", {{1, 2, 3}, {2, 0, 0}, {0, 3, 0}, {0, 0, 4}}, {{1, 2, -3}, {2, 0, 0}, {0, 3, 0}, {0, 0, 4}}},
  // Half turns: no difference of opposite elements tells a sign.
  {"HalfTurnZ", {{}, {-1, 0, 0}, {0, -1, 0}, {0, 0, 1}}, {{}, {-1, 0, 0}, {0, -1, 0}, {0, 0, 1}}},
  {"HalfTurnXY", {{}, {0, 1, 0}, {1, 0, 0}, {0, 0, -1}}, {{}, {0, 1, 0}, {1, 0, 0}, {0, 0, -1}}},
  {"HalfTurnYZ", {{}, {-1, 0, 0}, {0, 0, 1}, {0, 1, 0}}, {{}, {-1, 0, 0}, {0, 0, -1}, {0, -1, 0}}},
  // A mirror and shears do not come out as the mirrored matrix.
  {"MirrorZ",
   {{}, {1, 0, 0}, {0, 1, 0}, {0, 0, -1}},
   {{}, {1 / 9.0, 8 / 9.0, -4 / 9.0}, {8 / 9.0, 1 / 9.0, 4 / 9.0}, {-4 / 9.0, 4 / 9.0, 7 / 9.0}}},
  {"ShearXY",
   {{}, {1, 0, 0}, {1, 1, 0}, {0, 0, 1}},
   {{},
    {0.9627601049258239, -0.13248641183997653, -0.23566996211011917},
    {0.8302736930858473, 0.39617366393978515, -1.0741005644585218},
    {0.23566996211011917, 0.8384306023484023, 0.49142018070558546}}},
  {"ShearYZ",
   {{}, {1, 0, 0}, {0, 1, 0}, {0, 1, 1}},
   {{},
    {0.5286600757797617, -0.47133992422023835, 0.7059441905084257},
    {-0.47133992422023835, 0.5286600757797617, 0.7059441905084257},
    {-1.1772841147286643, -0.1772841147286643, 0.7632643420679491}}},
  {"EmptyAxis",
   {{}, {1, 0, 0}, {0, 0, 0}, {0, 0, 1}},
   {{}, {0.68, 0.5542562584220406, 0.48}, {0, 0, 0}, {-0.48, 0.831384387633061, -0.28}}},
  {"Nothing", {{1, 1, 1}, {}, {}, {}}, {{1, 1, -1}, {}, {}, {}}},
};
INSTANTIATE_TEST_SUITE_P(Rows, MirroredMatrix, testing::ValuesIn(kMatrices), RowName());

TEST(ConvertMatrix, ScalesTheOffsetAloneWithoutTheMirror)
{
  const HostMatrix sheared{{1, 2, 3}, {1, 0, 0}, {4, 5, 0}, {0, 7, -8}};
  const HostMatrix expected{{10, 20, 30}, {1, 0, 0}, {4, 5, 0}, {0, 7, -8}};
  EXPECT_EQ(ConvertMatrix(sheared, 10, false), expected);
  EXPECT_EQ(ConvertMatrix(sheared, 10, true).offset, (Vector{10, 20, -30}));
}

TEST(ConvertMatrix, BringsBackEveryPureRotation)
{
  constexpr unsigned kSeed = 20250918;
  SCOPED_TRACE("seed " + std::to_string(kSeed));
  std::mt19937 random(kSeed);
  std::normal_distribution<Float> normal;
  for (int i = 0; i < 300; ++i)
  {
    Vector axis{normal(random), normal(random), normal(random)};
    if (i % 3 == 0)
      axis[i / 3 % 3] = 0;  // in a plane of two axes
    axis = axis * (1 / axis.GetLength());
    // From a tiny turn up, from a half turn down, and a half turn as near as 64 bits come.
    for (const Float angle : {1e-7, 0.1, 2.0, M_PI - 1e-3, M_PI - 1e-5, M_PI - 1e-6, M_PI - 1e-9, M_PI, M_PI + 1e-6, 6.0})
    {
      SCOPED_TRACE("rotation " + std::to_string(i) + " by " + std::to_string(angle));
      const HostMatrix rotation = RotationAround(axis, angle);
      ExpectNear(ConvertMatrix(rotation, 1, true), Mirrored(rotation), 1e-7);
      if (testing::Test::HasFailure())
        return;
    }
  }
}

}  // namespace q7z::test
