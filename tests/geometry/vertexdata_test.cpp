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
const Vector32 kUpward = {0, 0, 1};
const Float32 kNaN = std::numeric_limits<Float32>::quiet_NaN();

/// What a corner has.
struct Corner
{
  Int32 point = 0;
  Vector32 normal = kUpward;
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
  return {1, kUpward, {static_cast<Float32>(number), 0, 0}, {}};
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
  {"ThirdUvComponentCounts", {{1}, {1, kUpward, {0, 0, 1}}}, false, {1, 4}, 5},
  {"UvDepthsDifferOnceMostAreEqual",
   {{1, kUpward, {0, 0, 1}},
    {2, kUpward, {0, 0, 1}},
    {1, kUpward, {0, 0, 2}},
    {1, kUpward, {0, 0, 1}},
    {2, kUpward, {0, 0, 1}},
    {3, kUpward, {0, 0, 0}},
    {3, kUpward, {0, 0, -0.0f}},
    {2, kUpward, {0, 0, kNaN}},
    {1, kUpward, {0, 0, 2}}},
   false,
   {1, 2, 4, 1, 2, 3, 3, 5, 4},
   6},
  {"AnotherAlpha", {{1}, {1, kUpward, {}, {0, 0, 0, 0.5f}}}, false, {1, 4}, 5},
  {"CopiesAreShared", {{1}, {1, {1, 0, 0}}, {1, {0, 1, 0}}, {1, {1, 0, 0}}, {1}}, false, {1, 4, 5, 4, 1}, 6},
  {"EqualValuesOfOtherPoints", {{0}, {1}, {0, {1, 0, 0}}, {1, {1, 0, 0}}}, false, {0, 1, 4, 5}, 6},
  {"WithoutLookup", {{0}, {1}, {2}, {2}, {1}, {3}}, true, {0, 1, 2, 4, 5, 3}, 6},
  {"NaNEqualsNothing", {{1, {kNaN, 0, 0}}, {1, {kNaN, 0, 0}}, {1, {kNaN, 0, 0}}}, false, {1, 4, 5}, 6},
  {"CopiesOfAPointWithANaN", {{1, {kNaN, 0, 0}}, {1}, {1, {kNaN, 0, 0}}, {1}}, false, {1, 4, 5, 4}, 6},
  {"NegativeZeroIsZero", {{1, {0, 0, 1}}, {1, {-0.0f, -0.0f, 1}}}, false, {1, 1}, 4},
  {"OutsidePoints", {{4}, {-1}, {INT32_MAX}, {INT32_MIN}}, false, {-1, -1, -1, -1}, 4},
};
INSTANTIATE_TEST_SUITE_P(Rows, VertexSharing, testing::ValuesIn(kSharing), RowName());

TEST(VertexData, ColorsCountForNothingWhereNoneAreKept)
{
  VertexData data;
  ASSERT_EQ(ErrorText(data.Init(kPoints, 4, false)), "no error");
  const std::vector<Corner> corners = {{1, kUpward, {}, {1, 0, 0, 1}},
                                       {1, kUpward, {}, {kNaN, 0, 0, 1}},
                                       {1, kUpward, {0, 0, 1}}};
  EXPECT_EQ(AddAll(data, corners), (std::vector<Int32>{1, 1, 4}));
  EXPECT_EQ(data.GetPolygonColors().GetCount(), 0);
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
  for (int i = 0; i < 2 * kCount; ++i)
    ASSERT_EQ(AddAll(_data, {NumberedCorner(i % kCount)})[0], i % kCount == 0 ? 1 : i % kCount + 3);
  EXPECT_EQ(AddAll(_data, {{1, {-0.0f, -0.0f, 1}, {5, -0.0f, -0.0f}, {-0.0f, 0, 0, 1}}}), std::vector<Int32>{8});
}

constexpr const char* kEarly = "Illegal state: Condition _isInitialized not fulfilled. ";

TEST(VertexData, RefusesWhatIsOutsideOrTooEarly)
{
  VertexData data;
  EXPECT_EQ(ErrorText(data.Init(kPoints, -1)), "Illegal state: Condition vertices_count > 0 not fulfilled. ");
  EXPECT_EQ(ErrorText(data.GetPosition(0)), kEarly);
  EXPECT_EQ(ErrorText(data.AddVertexData(0, {}, {}, {}, false)), kEarly);
  EXPECT_EQ(ErrorText(data.AddVertex({}, {}, {}, {})), kEarly);
  ASSERT_EQ(ErrorText(data.Init(kPoints, 4)), "no error");
  const auto outside = [](const char* member)
  {
    return std::string("Illegal argument: Condition (vertex_index >= 0 && vertex_index < ") + member +
           ".GetCount()) not fulfilled. ";
  };
  for (const Int32 index : {-1, 4})
  {
    EXPECT_EQ(ErrorText(data.GetPosition(index)), outside("_positions"));
    EXPECT_EQ(ErrorText(data.GetNormal(index)), outside("_normals"));
    EXPECT_EQ(ErrorText(data.GetUV(index)), outside("_uvs"));
    EXPECT_EQ(ErrorText(data.GetPolygonColor(index)), outside("_polygonColors"));
    EXPECT_EQ(ErrorText(data.AddVertexData(index, {}, {}, {}, true)), outside("_isProcessed"));
  }
}

TEST(VertexDataMemory, FailedGrowthKeepsWhatWasThere)
{
  constexpr int kCorners = 60;  // so many that copies are found by their hash
  Int failAt = 1;
  for (Bool failed = true; failed; ++failAt)
  {
    VertexData data;
    FailAllocation(failAt);
    if (data.Init(kPoints, 4).HasError())
    {
      EXPECT_EQ(StopFailingAllocations(), 1);
      EXPECT_EQ(ErrorText(data.GetPosition(0)), kEarly) << failAt;
      continue;
    }
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
    EXPECT_EQ(data.GetPolygonColors().GetCount(), data.GetVertexCount()) << failAt;
  }
  EXPECT_GT(failAt, 15);
}

}  // namespace
}  // namespace q7z::test
