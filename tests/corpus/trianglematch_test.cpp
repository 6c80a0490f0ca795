// The comparison of scenes by their triangles tells what differs, and only that.

#include <algorithm>
#include <functional>
#include <ostream>
#include <utility>

#include <gtest/gtest.h>

#include "tests/corpus/worldtriangles.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

/// Two triangles of a scene of size 5, whose tolerance is 0.00005.
std::vector<Triangle> MakeScene()
{
  Triangle triangle;
  triangle.name = "roof";
  triangle.hasUvs = true;
  triangle.hasColors = true;
  const Vector positions[] = {{0, 0, 0}, {3, 0, 0}, {0, 4, 0}};
  for (size_t i = 0; i < 3; ++i)
    triangle.corners[i] = {positions[i], {0, 0, 1}, {static_cast<Float>(i), 0, 0}, {0, 0, 0, 1}};
  Triangle half = triangle;
  for (Corner& corner : half.corners)
    corner.position = corner.position * 0.5;
  return {triangle, half};
}

using Scene = std::vector<Triangle>;

struct Comparison
{
  const char* name;
  std::function<void(Scene& first, Scene& other)> change;
  const char* difference;  ///< a part of the answer; empty where nothing differs
};

const Comparison kComparisons[] = {
  {"Same", [](Scene&, Scene&) {}, ""},
  {"OtherOrder", [](Scene&, Scene& other) { std::swap(other[0], other[1]); }, ""},
  {"FromTheSecondCorner",
   [](Scene&, Scene& other) { std::rotate(other[0].corners.begin(), other[0].corners.begin() + 1, other[0].corners.end()); }, ""},
  {"NearPosition", [](Scene&, Scene& other) { other[0].corners[1].position.x += 0.00004; }, ""},
  {"NoNormalAtFirst", [](Scene& first, Scene&) { first[0].corners[2].normal = Vector(); }, ""},
  {"OtherWinding", [](Scene&, Scene& other) { std::swap(other[0].corners[1], other[0].corners[2]); },
   "is not there\n1 triangles"},
  {"OtherPosition", [](Scene&, Scene& other) { other[1].corners[1].position.z += 0.0001; }, "is not there\n1 triangles"},
  {"OtherNormal", [](Scene&, Scene& other) { other[0].corners[2].normal = {0, 0.01, 1}; }, "has other normals\n"},
  {"NormalLost", [](Scene&, Scene& other) { other[0].corners[2].normal = Vector(); }, "has other normals\n"},
  {"OtherUv", [](Scene&, Scene& other) { other[0].corners[0].uv.y = 0.001; }, "has other UVs\n"},
  {"UvsLost", [](Scene&, Scene& other) { other[0].hasUvs = false; }, "has other UVs\n"},
  {"OtherAlpha", [](Scene&, Scene& other) { other[0].corners[0].color[3] = 0.5; }, "has other colours\n"},
  {"ColorsAdded", [](Scene& first, Scene&) { first[0].hasColors = false; }, "has other colours\n"},
  {"OneLost", [](Scene&, Scene& other) { other.pop_back(); }, "1 triangles instead of 2\n"},
  {"OneTwice", [](Scene&, Scene& other) { other.push_back(other[0]); }, "3 triangles instead of 2\n"},
  {"OneInPlaceOfAnother", [](Scene&, Scene& other) { other[1] = other[0]; }, "is not there\n1 triangles"},
  {"AllLost", [](Scene&, Scene& other) { other.clear(); }, "0 triangles instead of 2\n"},
};

void PrintTo(const Comparison& row, std::ostream* out)
{
  *out << row.name;
}

class TriangleComparison : public testing::TestWithParam<Comparison>
{};

TEST_P(TriangleComparison, TellsWhatDiffers)
{
  Scene first = MakeScene();
  Scene other = MakeScene();
  GetParam().change(first, other);
  const std::string difference = CompareTriangles(first, other);
  if (*GetParam().difference)
    EXPECT_NE(difference.find(GetParam().difference), std::string::npos) << difference;
  else
    EXPECT_EQ(difference, "");
}

INSTANTIATE_TEST_SUITE_P(Rows, TriangleComparison, testing::ValuesIn(kComparisons), RowName());

}  // namespace
}  // namespace q7z::test
