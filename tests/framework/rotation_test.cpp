// Rotations: matrices, angles and quaternions by hand, and the ways there and back.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "framework/rotation.h"

namespace q7z::test
{
namespace
{

constexpr Float kPi = 3.14159265358979323846;
constexpr Float kHalf = kPi / 2;
constexpr Float kRoot = 0.70710678118654752440;  // sqrt(1/2)

void ExpectNear(const Vector& actual, const Vector& expected, Float tolerance, const std::string& where)
{
  for (int i = 0; i < 3; ++i)
    EXPECT_NEAR(actual[i], expected[i], tolerance) << where << ", component " << i;
}

void ExpectNear(const HostMatrix& actual, const HostMatrix& expected, Float tolerance, const std::string& where)
{
  for (const Vector& axis : {Vector{1, 0, 0}, Vector{0, 1, 0}, Vector{0, 0, 1}})
    ExpectNear(actual * axis, expected * axis, tolerance, where);
}

std::string Shown(const Vector& v)
{
  return "(" + std::to_string(v.x) + ", " + std::to_string(v.y) + ", " + std::to_string(v.z) + ")";
}

// A quarter, a half and a quarter back: about x (x, y, z) goes to (x, z, -y), about y by a half to (-x, y, -z), about z by a
// quarter back to (-y, x, z).
TEST(Rotation, OrderSettlesWhichAngleTurnsWhenAboutWhat)
{
  const std::pair<RotationOrder, Vector> rows[] = {
    {0, {3, -1, -2}}, {1, {-2, -3, 1}}, {2, {2, -3, -1}}, {3, {2, 3, 1}},    {4, {3, 1, 2}},
    {5, {-3, -1, 2}}, {6, {3, -1, -2}}, {7, {3, -1, -2}}, {-1, {3, -1, -2}},
  };
  for (const auto& [order, target] : rows)
    ExpectNear(AnglesToMatrix({kHalf, kPi, -kHalf}, order) * Vector{1, 2, 3}, target, 1e-14, "order " + std::to_string(order));
}

const std::tuple<const char*, HostMatrix, Vector> kAnglesCases[] = {
  {"Heading315", {{}, {kRoot, 0, -kRoot}, {0, 1, 0}, {kRoot, 0, kRoot}}, {7 * kPi / 4, 0, 0}},
  {"PoleUp", {{}, {1, 0, 0}, {0, 0, -1}, {0, 1, 0}}, {0, kHalf, 0}},
  {"PoleUpBank90", {{}, {0, 0, 1}, {1, 0, 0}, {0, 1, 0}}, {0, kHalf, kHalf}},
  {"PoleDownBank90", {{}, {0, 0, -1}, {1, 0, 0}, {0, -1, 0}}, {0, -kHalf, kHalf}},
  {"JustInsideThePole", {{}, {1, 0, 0}, {0, 0, -1}, {9e-6, 1, 0}}, {0, kHalf, 0}},
  {"JustOutsideThePole", {{}, {1, 0, 0}, {0, 0, -1}, {-2e-5, 1, 0}}, {kHalf, std::atan(1 / 2e-5), kHalf}},
  {"AxesOfAnyLength", {{}, {0, -3, 0}, {0.5, 0, 0}, {0, 0, 7}}, {0, 0, kHalf}},
  {"MirroredZ", {{}, {1, 0, 0}, {0, 1, 0}, {0, 0, -1}}, {kPi, 0, kPi}},
  {"AllZero", {{}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}}, {0, -kHalf, kHalf}},
};

TEST(Rotation, AnglesOfAMatrix)
{
  for (const auto& [name, matrix, angles] : kAnglesCases)
    ExpectNear(MatrixToAngles(matrix, 6, false), angles, 1e-9, name);
}

TEST(Rotation, NormalizedMatrixIsTakenAsItStands)
{
  const HostMatrix half{{}, {0.25, -0.43301270189221932, 0}, {0, 1, 0}, {0, 0, 1}};
  ExpectNear(MatrixToAngles(half, 6, false), {0, 0, kPi / 3}, 1e-12, "lengths taken off");
  ExpectNear(MatrixToAngles(half, 6, true), {0, 0, 1.318116071652818}, 1e-12, "acos(0.25)");
}

const std::tuple<const char*, Vector4, Vector, Vector> kQuaternionCases[] = {
  {"X90IsAPole", {kRoot, 0, 0, kRoot}, {0, kHalf, 0}, {0, kHalf, 0}},
  {"Z90", {0, 0, kRoot, kRoot}, {0, 0, 3 * kHalf}, {0, 0, kHalf}},
  {"Zero", {0, 0, 0, 0}, {0, 0, 0}, {0, 0, 0}},
  // Not normalised first: axisX (-1, 0, 2), axisZ (-2, 0, -1), so the heading is pi - atan(2) and not pi / 2.
  {"TooLongY90", {0, 1, 0, 1}, {2.0344439357957027, 0, 0}, {2.0344439357957027, 0, 0}},
};

TEST(Rotation, AnglesOfAQuaternion)
{
  for (const auto& [name, quaternion, mirrored, plain] : kQuaternionCases)
  {
    ExpectNear(QuaternionToAngles(quaternion, true), mirrored, 1e-7, name);
    ExpectNear(QuaternionToAngles(quaternion, false), plain, 1e-7, name);
  }
}

TEST(Rotation, ManyQuaternionsAtOnceAreAsEachAlone)
{
  // About x, by a little more each time: now and then a pole. One of them is no rotation.
  std::vector<Vector4> quaternions;
  for (int i = 0; i < 99; ++i)
    quaternions.emplace_back(std::sin(i * kPi / 16), 0, 0, std::cos(i * kPi / 16));
  quaternions[40] = {NAN, 0, 0, 1};
  std::vector<Vector> angles(quaternions.size());
  QuaternionsToAngles(quaternions.data(), static_cast<Int>(quaternions.size()), true, angles.data());
  for (size_t i = 0; i < quaternions.size(); ++i)
  {
    const Vector alone = QuaternionToAngles(quaternions[i], true);
    for (int k = 0; k < 3; ++k)
      EXPECT_TRUE(angles[i][k] == alone[k] || (std::isnan(angles[i][k]) && std::isnan(alone[k]))) << i << " " << k;
  }
  EXPECT_EQ(angles[4], (Vector{0, kHalf, 0}));
  EXPECT_TRUE(std::isnan(angles[40].y));
}

TEST(Rotation, QuaternionOfOneAngle)
{
  const std::tuple<Vector, Bool, Vector4> rows[] = {
    {{0, 0, 0}, true, {0, 0, 0, -1}},
    {{kHalf, 0, 0}, true, {0, -kRoot, 0, -kRoot}},
    {{0, kHalf, 0}, false, {kRoot, 0, 0, -kRoot}},
    {{0, kHalf, 0}, true, {-kRoot, 0, 0, -kRoot}},
    {{0, 0, kHalf}, true, {0, 0, kRoot, -kRoot}},
    // Two quarters: W = 1/2 of each product, with the signs of the two mixed terms.
    {{kHalf, kHalf, 0}, false, {0.5, 0.5, 0.5, -0.5}},
    {{kHalf, 0, kHalf}, false, {-0.5, 0.5, 0.5, -0.5}},
    {{0, kHalf, kHalf}, false, {0.5, 0.5, 0.5, -0.5}},
  };
  for (const auto& [angles, flipZ, expected] : rows)
  {
    const Vector4 found = AnglesToQuaternion(angles, flipZ);
    ExpectNear(Vector{found.x, found.y, found.z}, {expected.x, expected.y, expected.z}, 1e-15, Shown(angles));
    EXPECT_NEAR(found.w, expected.w, 1e-15) << Shown(angles);
  }
}

/// Calls test with triples of angles from a grid.
template <typename Test>
void ForAngles(std::initializer_list<Float> middle, const Test& test)
{
  for (const Float a : {-3.0, -kHalf, -0.4, 0.0, 0.7, kHalf, 2.5})
    for (const Float b : middle)
      for (const Float c : {-2.2, -kHalf, 0.0, 1.1, kPi})
        test(a, b, c);
}

TEST(Rotation, AnglesInEveryOrderGiveTheMatrixBack)
{
  const HostMatrix stretch{{}, {2, 0, 0}, {0, 0.5, 0}, {0, 0, 3}};
  ForAngles({-kHalf, -kHalf + 1e-8, -1.2, 0.0, 0.9, kHalf - 1e-12, kHalf, 2.0},
            [&](Float a, Float b, Float c)
            {
              for (RotationOrder order = 0; order < 6; ++order)
              {
                // Which slot holds the middle angle depends on the order; each of the three is tried as one.
                for (const Vector& angles : {Vector{a, b, c}, Vector{b, c, a}, Vector{c, a, b}})
                {
                  const HostMatrix matrix = AnglesToMatrix(angles, order);
                  const Vector found = MatrixToAnglesInOrder(matrix * stretch, order);
                  ExpectNear(AnglesToMatrix(found, order), matrix, 1e-12, "order " + std::to_string(order) + " " + Shown(angles));
                }
              }
            });
}

const std::tuple<const char*, Vector, Vector, RotationOrder, Vector> kOptimalCases[] = {
  {"EachAngleByItsOwnTurns", {0, -2 * kPi, 6 * kPi}, {2 * kPi - 0.1, 0.2, 0.3}, 6, {-0.1, 0.2 - 2 * kPi, 0.3 + 6 * kPi}},
  {"HalfATurnGoesBack", {0, 0, 0}, {kPi, 0, 0}, 6, {-kPi, 0, 0}},
  {"OtherFormOfOrder0", {kPi, kPi, kPi}, {0.1, 0.2, 0.3}, 0, {kPi - 0.1, kPi + 0.2, kPi + 0.3}},
  {"OtherFormOfOrder1", {kPi, kPi, kPi}, {0.1, 0.2, 0.3}, 1, {kPi + 0.1, kPi + 0.2, kPi - 0.3}},
  {"OtherFormOfOrder2", {kPi, kPi, kPi}, {0.1, 0.2, 0.3}, 2, {kPi + 0.1, kPi - 0.2, kPi + 0.3}},
  {"OtherFormOfOrder3", {kPi, kPi, kPi}, {0.1, 0.2, 0.3}, 3, {kPi - 0.1, kPi + 0.2, kPi + 0.3}},
  {"OtherFormOfOrder5", {kPi, kPi, kPi}, {0.1, 0.2, 0.3}, 5, {kPi + 0.1, kPi - 0.2, kPi + 0.3}},
  {"OtherFormOfOrder6", {kPi, kPi, kPi}, {0.1, 0.2, 0.3}, 6, {kPi + 0.1, kPi - 0.2, kPi + 0.3}},
  // The distances of the two forms are 3 * pi / 2 both.
  {"TieStaysAsItIs", {0, 0, 0}, {kHalf, kHalf, kHalf}, 6, {kHalf, kHalf, kHalf}},
};

TEST(Rotation, OptimalAnglesAreTheNearestForm)
{
  for (const auto& [name, previous, current, order, angles] : kOptimalCases)
    ExpectNear(OptimalAngles(previous, current, order), angles, 1e-14, name);
}

}  // namespace
}  // namespace q7z::test
