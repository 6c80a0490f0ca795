// Every kind of data that belongs to points or polygons follows them through each command.

#include "tests/modeling/modelingfixture.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

/// The part of the split has the old points 0 1 2 4 5 6 and the old polygons 0 and 2, the rest the points 1 2 3 5 and polygon 1.
struct DataRow
{
  const char* name;
  void (*add)(HeadlessPolygonObject& mesh, HeadlessPolygonObject& other);
  const char* before;
  const char* part;
  const char* rest;
  const char* triangulated;
  const char* withoutUnused;
};

class ModelingData : public ModelingTest, public testing::WithParamInterface<DataRow>
{
protected:
  HeadlessPolygonObject& AddMesh()
  {
    HeadlessPolygonObject& other = AddGrid(7, {});
    other.SetName("other"_s);
    HeadlessPolygonObject& mesh = AddSample();
    GetParam().add(mesh, other);
    EXPECT_EQ(DumpData(mesh), GetParam().before);
    return mesh;
  }
};

TEST_P(ModelingData, FollowsASplit)
{
  HeadlessPolygonObject& mesh = AddMesh();
  const HeadlessPolygonObject* const part = Split(mesh);
  ASSERT_TRUE(part);
  EXPECT_EQ(DumpData(*part), GetParam().part);
  EXPECT_EQ(DumpData(mesh), GetParam().rest);
}

TEST_P(ModelingData, FollowsTriangles)
{
  HeadlessPolygonObject& mesh = AddMesh();
  ASSERT_TRUE(Send(kTriangulateCommand, &mesh));
  EXPECT_EQ(DumpData(mesh), GetParam().triangulated);
  EXPECT_EQ(DumpSelection(mesh.GetPolygonSelection()), "0-1 3-4");
}

TEST_P(ModelingData, FollowsPoints)
{
  HeadlessPolygonObject& mesh = AddMesh();
  ASSERT_TRUE(Send(kRemoveUnusedPointsCommand, &mesh));
  EXPECT_EQ(DumpData(mesh), GetParam().withoutUnused);
  EXPECT_EQ(DumpSelection(mesh.GetPolygonSelection()), "0-0 2-2");
}

constexpr const char* kCorners = "0 1 2 3 | 10 11 12 13 | 20 21 22 23";
constexpr const char* kPartCorners = "0 1 2 3 | 20 21 22 23";
constexpr const char* kRestCorners = "10 11 12 13";
constexpr const char* kTriangleCorners = "0 1 2 2 | 0 2 3 3 | 10 11 12 13 | 20 21 22 22 | 20 22 23 23";
constexpr const char* kWeights = "other: 0=1 2=3 3=4 6=7; other: 5=6";

#define Q7Z_ADD [](HeadlessPolygonObject & mesh, [[maybe_unused]] HeadlessPolygonObject & other)
const DataRow kData[] = {{"Normals", Q7Z_ADD{AddCorners(mesh, kNormalTagType, 3, false);
}  // namespace
, kCorners, kPartCorners, kRestCorners, kTriangleCorners, kCorners
}  // namespace q7z::test
, {"UvwsOf64Bits", Q7Z_ADD{AddCorners(mesh, kUvwTagType, 3, true);
}
, kCorners, kPartCorners, kRestCorners, kTriangleCorners, kCorners
}
, {"ColorsOfCorners", Q7Z_ADD{AddColors(mesh, false, 3);
}
, kCorners, kPartCorners, kRestCorners, kTriangleCorners, kCorners
}
, {"ColorsOfPoints", Q7Z_ADD{AddColors(mesh, true, 7);
}
, "0 | 1 | 2 | 3 | 4 | 5 | 6", "0 | 1 | 2 | 4 | 5 | 6", "1 | 2 | 3 | 5", "0 | 1 | 2 | 3 | 4 | 5 | 6", "0 | 1 | 2 | 4 | 5 | 6"
}
, {"TooFewNormals", Q7Z_ADD{AddCorners(mesh, kNormalTagType, 2, false);
}
, "0 1 2 3 | 10 11 12 13", "0 1 2 3", "10 11 12 13", "0 1 2 2 | 0 2 3 3 | 10 11 12 13", "0 1 2 3 | 10 11 12 13"
}
, {"TooManyUvws", Q7Z_ADD{AddCorners(mesh, kUvwTagType, 4, false);
}
, "0 1 2 3 | 10 11 12 13 | 20 21 22 23 | 30 31 32 33", kPartCorners, kRestCorners, kTriangleCorners,
  "0 1 2 3 | 10 11 12 13 | 20 21 22 23 | 30 31 32 33"
}
, {"TooFewColors", Q7Z_ADD{AddColors(mesh, true, 4);
}
, "0 | 1 | 2 | 3", "0 | 1 | 2", "1 | 2 | 3", "0 | 1 | 2 | 3", "0 | 1 | 2"
}
, {"Selection", Q7Z_ADD{AddSelection(mesh, {{1, 2}});
}
, "1-2", "1-1", "0-0", "2-4", "1-2"
}
, {"SelectionWithGap", Q7Z_ADD{AddSelection(mesh, {{0, 0}, {2, 2}});
}
, "0-0 2-2", "0-1", "", "0-1 3-4", "0-0 2-2"
}
, {"SelectionBeyond", Q7Z_ADD{AddSelection(mesh, {{2, INT32_MAX}});
}
, "2-2147483647", "1-1", "", "3-4", "2-2147483647"
}
, {"Weights", Q7Z_ADD{AddWeights(mesh, &other, &other);
}
, kWeights, "other: 0=1 2=3 5=7; other: 4=6", "other: 1=3 2=4; other: 3=6", kWeights, "other: 0=1 2=3 5=7; other: 4=6"
}
, {"Morphs", Q7Z_ADD{AddMorphs(mesh, 7, other);
}
, "100 101 102 103 104 105 106; -> other", "100 101 102 104 105 106; 0 1 2 4 5 6", "101 102 103 105; 1 2 3 5",
  "100 101 102 103 104 105 106; -> other", "100 101 102 104 105 106; 0 1 2 4 5 6"
}
, {"MorphsThatDoNotFit", Q7Z_ADD{HostArray<Vector> fewer;
EXPECT_TRUE(fewer.Create(6));
other.SetGeometry(fewer, {});
AddMorphs(mesh, 4, other);
}
, "100 101 102 103; -> other", "100 101 102; -> other", "101 102 103; -> other", "100 101 102 103; -> other",
  "100 101 102; -> other"
}
, {"PointTrack", Q7Z_ADD{AddPointTrack(mesh);
}
, "300 301 302 303 304 305 306", "300 301 302 304 305 306", "301 302 303 305", "300 301 302 303 304 305 306",
  "300 301 302 304 305 306"
}
,
}
;
#undef Q7Z_ADD
INSTANTIATE_TEST_SUITE_P(Rows, ModelingData, testing::ValuesIn(kData), RowName());

class ModelingMorphs : public ModelingTest
{};

TEST_F(ModelingMorphs, PartWithAllPointsOwnsItsShapes)
{
  HeadlessPolygonObject& other = AddGrid(3, {});
  HeadlessPolygonObject& mesh = AddGrid(3, {{0, 1, 2, 2}, {2, 1, 0, 0}});
  AddMorphs(mesh, 3, other);
  mesh.GetPolygonSelection().SelectRange(0, 0);
  const HeadlessPolygonObject* const part = Split(mesh);
  ASSERT_TRUE(part);
  EXPECT_EQ(DumpData(*part), "100 101 102; 0 1 2");
}

}  // namespace
}  // namespace q7z::test
