// How corners of polygons share the vertices of a mesh.

#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "plugin/geometry/gltfvertexdata.h"
#include "tests/framework/text.h"
#include "tests/support/failingmemory.h"
#include "tests/support/rowname.h"

namespace q7z::test
{

namespace
{

const Vector kPoints[] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}};
const Vector32 kUp = {0, 0, 1};
const Float32 kNaN = std::numeric_limits<Float32>::quiet_NaN();

/// What a corner has.
struct Corner
{
  Int32 point = 0;
  Vector32 normal = kUp;
  Vector32 uv;
  VertexColor color;
};

std::vector<Int32> AddAll(VertexData& data, const std::vector<Corner>& corners, Bool skipLookup = false)
{
  std::vector<Int32> vertices;
  for (const Corner& corner : corners)
  {
    const Result<Int32> vertex = data.AddVertexData(corner.point, corner.normal, corner.uv, corner.color, skipLookup);
    vertices.push_back(vertex.HasError() ? -1 : vertex.GetValue());
  }
  return vertices;
}

/// A point of many corners, all different.
Corner NumberedCorner(int number)
{
  return {1, kUp, {static_cast<Float32>(number), 0, 0}, {}};
}

class VertexDataTest : public testing::Test
{
protected:
  VertexDataTest() { EXPECT_EQ(ErrorText(_data.Init(kPoints, 4)), "no error"); }
  VertexData _data;
};

struct SharingRow
{
  const char* name;
  std::vector<Corner> corners;
  Bool skipLookup;
  std::vector<Int32> vertices;
  Int count;
};

class VertexSharing : public testing::TestWithParam<SharingRow>
{};

TEST_P(VertexSharing, GivesEachCornerItsVertex)
{
  VertexData data;
  ASSERT_EQ(ErrorText(data.Init(kPoints, 4)), "no error");
  EXPECT_EQ(AddAll(data, GetParam().corners, GetParam().skipLookup), GetParam().vertices);
  EXPECT_EQ(data.GetVertexCount(), GetParam().count);
}

const SharingRow kSharing[] = {
  {"EqualCornersShare", {{0}, {1}, {2}, {2}, {1}, {3}}, false, {0, 1, 2, 2, 1, 3}, 4},
  {"AnotherUv", {{0}, {1}, {2}, {2}, {1, kUp, {1, 0, 0}}, {3}}, false, {0, 1, 2, 2, 4, 3}, 5},
  {"ThirdUvComponentCounts", {{1}, {1, kUp, {0, 0, 1}}}, false, {1, 4}, 5},
  {"AnotherAlpha", {{1}, {1, kUp, {}, {0, 0, 0, 0.5f}}}, false, {1, 4}, 5},
  {"CopiesAreShared", {{1}, {1, {1, 0, 0}}, {1, {0, 1, 0}}, {1, {1, 0, 0}}, {1}}, false, {1, 4, 5, 4, 1}, 6},
  {"EqualValuesOfOtherPoints", {{0}, {1}, {0, {1, 0, 0}}, {1, {1, 0, 0}}}, false, {0, 1, 4, 5}, 6},
  {"WithoutLookup", {{0}, {1}, {2}, {2}, {1}, {3}}, true, {0, 1, 2, 4, 5, 3}, 6},
  {"NaNEqualsNothing", {{1, {kNaN, 0, 0}}, {1, {kNaN, 0, 0}}, {1, {kNaN, 0, 0}}}, false, {1, 4, 5}, 6},
  {"NegativeZeroIsZero", {{1, {0, 0, 1}}, {1, {-0.0f, -0.0f, 1}}}, false, {1, 1}, 4},
  {"OutsidePoints", {{4}, {-1}, {INT32_MAX}, {INT32_MIN}}, false, {-1, -1, -1, -1}, 4},
};
INSTANTIATE_TEST_SUITE_P(Rows, VertexSharing, testing::ValuesIn(kSharing), RowName());

TEST_F(VertexDataTest, UnusedPointKeepsItsStartValues)
{
  AddAll(_data, {{0}, {1}, {2}});
  EXPECT_EQ(_data.GetPosition(3).GetValue(), (Vector{1, 1, 0}));
  EXPECT_EQ(_data.GetNormal(3).GetValue(), (Vector32{0, 0, 0}));
  EXPECT_EQ(_data.GetUV(3).GetValue(), (Vector32{0, 0, 0}));
  EXPECT_EQ(_data.GetPolygonColor(3).GetValue(), (VertexColor{0, 0, 0, 1}));
}

TEST_F(VertexDataTest, CopyHasThePositionOfItsPointAndItsOwnValues)
{
  AddAll(_data, {{1, kUp, {7, 8, 9}, {1, 2, 3, 4}}, {1, {1, 0, 0}, {4, 5, 6}, {5, 6, 7, 8}}});
  EXPECT_EQ(_data.GetUV(1).GetValue(), (Vector32{7, 8, 9}));
  EXPECT_EQ(_data.GetPosition(4).GetValue(), (Vector{1, 0, 0}));
  EXPECT_EQ(_data.GetNormal(4).GetValue(), (Vector32{1, 0, 0}));
  EXPECT_EQ(_data.GetUV(4).GetValue(), (Vector32{4, 5, 6}));
  EXPECT_EQ(_data.GetPolygonColor(4).GetValue(), (VertexColor{5, 6, 7, 8}));
  EXPECT_EQ(_data.TakeHostPoints()[4], 1);
}

TEST_F(VertexDataTest, AddedVertexBelongsToNoPoint)
{
  EXPECT_EQ(_data.AddVertex({5, 6, 7}, kUp, {}, {}).GetValue(), 4);
  EXPECT_EQ(_data.GetPosition(4).GetValue(), (Vector{5, 6, 7}));
  EXPECT_EQ(AddAll(_data, {{4}}), std::vector<Int32>{-1});
  EXPECT_EQ(_data.TakeHostPoints()[4], -1);
}

TEST_F(VertexDataTest, LaterOfEqualVerticesIsFound)
{
  EXPECT_EQ(AddAll(_data, {{1}, {1}, {1}}, true), (std::vector<Int32>{1, 4, 5}));
  EXPECT_EQ(AddAll(_data, {{1}}), std::vector<Int32>{5});
}

TEST_F(VertexDataTest, LaterOfEqualVerticesIsFoundAmongMany)
{
  std::vector<Corner> corners = {{1}};
  for (int i = 0; i < 2; ++i)
  {
    for (int number = 0; number < 40; ++number)
      corners.push_back(NumberedCorner(number + 1));
  }
  AddAll(_data, corners, true);
  EXPECT_EQ(_data.GetVertexCount(), 84);
  // The second run of numbers stands behind the four points and the first run.
  EXPECT_EQ(AddAll(_data, {NumberedCorner(1), NumberedCorner(40), {1}}), (std::vector<Int32>{44, 83, 1}));
}

TEST_F(VertexDataTest, ManyCopiesOfOnePointAreFound)
{
  constexpr int kCount = 200000;  // looking through all of them for each would not end in time
  for (int number = 0; number < kCount; ++number)
    ASSERT_EQ(AddAll(_data, {NumberedCorner(number)})[0], number == 0 ? 1 : number + 3);
  for (int number = 0; number < kCount; ++number)
    ASSERT_EQ(AddAll(_data, {NumberedCorner(number)})[0], number == 0 ? 1 : number + 3);
  EXPECT_EQ(AddAll(_data, {{1, {-0.0f, -0.0f, 1}, {5, -0.0f, -0.0f}, {-0.0f, 0, 0, 1}}}), std::vector<Int32>{8});
}

TEST_F(VertexDataTest, ManyNaNsOfOnePointMakeAVertexEach)
{
  constexpr Int32 kCount = 200000;
  std::vector<Corner> corners(kCount, Corner{1, kUp, {0, kNaN, 0}, {}});
  EXPECT_EQ(AddAll(_data, corners).back(), kCount + 2);
  EXPECT_EQ(_data.GetVertexCount(), kCount + 3);
}

TEST_F(VertexDataTest, ManyCopiesOfTwoPointsStayApart)
{
  for (int number = 0; number < 50; ++number)
    AddAll(_data, {NumberedCorner(number), {2, kUp, {static_cast<Float32>(number), 0, 0}, {}}});
  // Two points of the four hold the first number each; the copies take turns.
  EXPECT_EQ(AddAll(_data, {NumberedCorner(30), {2, kUp, {30, 0, 0}, {}}}), (std::vector<Int32>{62, 63}));
}

using Operation = std::string (*)(VertexData&);
enum class When
{
  kBeforeInit,
  kAfterInit,
};
struct RefusedRow
{
  const char* name;
  When when;
  Operation operation;
  const char* message;
};

class RefusedVertexData : public testing::TestWithParam<RefusedRow>
{};

TEST_P(RefusedVertexData, TellsWhy)
{
  VertexData data;
  if (GetParam().when == When::kAfterInit)
  {
    ASSERT_FALSE(data.Init(kPoints, 4).HasError());
  }
  EXPECT_EQ(GetParam().operation(data), GetParam().message);
}

std::string Outside(const char* member)
{
  return std::string("Illegal argument: Condition (vertex_index >= 0 && vertex_index < ") + member +
         ".GetCount()) not fulfilled. ";
}

const std::string kOutside[] = {Outside("_positions"), Outside("_normals"), Outside("_uvs"), Outside("_polygonColors"),
                                Outside("_isProcessed")};
constexpr const char* kEarly = "Illegal state: Condition _isInitialized not fulfilled. ";

const RefusedRow kRefused[] = {
  {"InitWithoutPoints", When::kBeforeInit, [](VertexData& data) { return ErrorText(data.Init(kPoints, 0)); },
   "Illegal state: Condition vertices_count > 0 not fulfilled. "},
  {"InitWithNegativeCount", When::kBeforeInit, [](VertexData& data) { return ErrorText(data.Init(kPoints, -1)); },
   "Illegal state: Condition vertices_count > 0 not fulfilled. "},
  {"InitWithoutPositions", When::kBeforeInit, [](VertexData& data) { return ErrorText(data.Init(nullptr, 4)); },
   "Illegal state: Condition positions not fulfilled. "},
  {"Position", When::kBeforeInit, [](VertexData& data) { return ErrorText(data.GetPosition(0)); }, kEarly},
  {"Normal", When::kBeforeInit, [](VertexData& data) { return ErrorText(data.GetNormal(0)); }, kEarly},
  {"Uv", When::kBeforeInit, [](VertexData& data) { return ErrorText(data.GetUV(0)); }, kEarly},
  {"Color", When::kBeforeInit, [](VertexData& data) { return ErrorText(data.GetPolygonColor(0)); }, kEarly},
  {"VertexData", When::kBeforeInit, [](VertexData& data) { return ErrorText(data.AddVertexData(0, {}, {}, {}, false)); }, kEarly},
  {"Vertex", When::kBeforeInit, [](VertexData& data) { return ErrorText(data.AddVertex({}, {}, {}, {})); }, kEarly},
  {"PositionBehindTheLast", When::kAfterInit, [](VertexData& data) { return ErrorText(data.GetPosition(4)); },
   kOutside[0].c_str()},
  {"NormalBehindTheLast", When::kAfterInit, [](VertexData& data) { return ErrorText(data.GetNormal(4)); }, kOutside[1].c_str()},
  {"UvBehindTheLast", When::kAfterInit, [](VertexData& data) { return ErrorText(data.GetUV(4)); }, kOutside[2].c_str()},
  {"ColorBehindTheLast", When::kAfterInit, [](VertexData& data) { return ErrorText(data.GetPolygonColor(4)); },
   kOutside[3].c_str()},
  {"NegativePosition", When::kAfterInit, [](VertexData& data) { return ErrorText(data.GetPosition(-1)); }, kOutside[0].c_str()},
  {"CornerBehindTheLastPoint", When::kAfterInit,
   [](VertexData& data) { return ErrorText(data.AddVertexData(4, {}, {}, {}, true)); }, kOutside[4].c_str()},
  {"NegativeCorner", When::kAfterInit, [](VertexData& data) { return ErrorText(data.AddVertexData(-1, {}, {}, {}, false)); },
   kOutside[4].c_str()},
};
INSTANTIATE_TEST_SUITE_P(Rows, RefusedVertexData, testing::ValuesIn(kRefused), RowName());

TEST(VertexDataMemory, FailedInitLeavesItWithoutVertices)
{
  Int failAt = 1;
  for (;; ++failAt)
  {
    VertexData data;
    FailAllocation(failAt);
    const Result<void> result = data.Init(kPoints, 4);
    if (!StopFailingAllocations())
      break;
    EXPECT_TRUE(IsOutOfMemory(result)) << failAt;
    EXPECT_EQ(ErrorText(data.GetPosition(0)), kEarly) << failAt;
  }
  EXPECT_GT(failAt, 5);
}

TEST(VertexDataMemory, FailedGrowthKeepsWhatWasThere)
{
  constexpr int kCorners = 60;  // so many that copies are found by their hash
  Int failAt = 1;
  for (Bool failed = true; failed; ++failAt)
  {
    VertexData data;
    ASSERT_EQ(ErrorText(data.Init(kPoints, 4)), "no error");
    FailAllocation(failAt);
    int number = 0;
    Result<Int32> result = Int32(0);
    while (number < kCorners && !result.HasError())
    {
      const Corner corner = NumberedCorner(number++);
      result = data.AddVertexData(corner.point, corner.normal, corner.uv, corner.color, false);
    }
    failed = StopFailingAllocations() > 0;
    EXPECT_EQ(IsOutOfMemory(result), failed) << failAt;
    EXPECT_EQ(data.GetVertexCount(), number + (failed ? 2 : 3)) << failAt;
    EXPECT_EQ(data.GetUVs().GetCount(), data.GetVertexCount()) << failAt;
    EXPECT_EQ(data.GetPolygonColors().GetCount(), data.GetVertexCount()) << failAt;
  }
  EXPECT_GT(failAt, 8);
}

}  // namespace
}  // namespace q7z::test
