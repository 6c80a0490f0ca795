// What a scene shows, worked out from its objects: places, instances, morphs, skins, and what is hidden.

#include <cmath>
#include <ostream>
#include <sstream>

#include <gtest/gtest.h>

#include "host/scenefile/scenefile.h"
#include "tests/corpus/worldtriangles.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

struct Shown
{
  const char* name;
  const char* objects;    ///< of a scene document
  const char* triangles;  ///< corners as "x y z", of each triangle; normals in brackets
};

const Shown kShown[] = {
  {"QuadAsTwoTriangles",
   R"({"id": 1, "type": 5100, "points": [0, 0, 0,  2, 0, 0,  2, 2, 0,  0, 2, 0], "polygons": [0, 1, 2, 3]})",
   "0 0 0, 2 0 0, 2 2 0; 0 0 0, 2 2 0, 0 2 0"},
  {"UnderItsParents", R"({"id": 1, "type": 5140, "position": [10, 0, 0], "scale": [2, 1, 1], "children": [
     {"id": 2, "type": 5100, "position": [1, 0, 5], "points": [0, 0, 0,  1, 0, 0,  0, 1, 0], "polygons": [0, 1, 2, 2]}]})",
   "12 0 5, 14 0 5, 12 1 5"},
  {"NormalUprightUnderScale", R"({"id": 1, "type": 5100, "scale": [1, 2, 1], "points": [0, 0, 0,  1, 0, 0,  0, 1, 0],
     "polygons": [0, 1, 2, 2], "tags": [{"id": 2, "type": 5711, "normals": [3, 4, 0,  0, 0, 1,  0, 0, -2,  0, 0, 0]}]})",
   "0 0 0 (0.832 0.555 0), 1 0 0 (0 0 1), 0 2 0 (0 0 -1)"},
  {"HiddenWithItsChildren", R"({"id": 1, "type": 5140, "editor": 1, "render": 1, "children": [
     {"id": 2, "type": 5100, "points": [0, 0, 0,  1, 0, 0,  0, 1, 0], "polygons": [0, 1, 2, 2]}]})",
   ""},
  {"HiddenInOneView",
   R"({"id": 1, "type": 5100, "editor": 1, "points": [0, 0, 0,  1, 0, 0,  0, 1, 0], "polygons": [0, 1, 2, 2]})",
   "0 0 0, 1 0 0, 0 1 0"},
  {"InstanceWithTheChildrenOfWhatItShows", R"({"id": 1, "type": 5140, "editor": 1, "render": 1, "children": [
     {"id": 2, "type": 5140, "position": [7, 7, 7], "children": [
       {"id": 3, "type": 5100, "position": [1, 0, 0], "points": [0, 0, 0,  1, 0, 0,  0, 1, 0], "polygons": [0, 1, 2, 2]}]}]},
     {"id": 4, "type": 5126, "position": [0, 0, 5], "reference": 2})",
   "1 0 5, 2 0 5, 1 1 5"},
  {"InstanceOfAMesh", R"({"id": 1, "type": 5140, "editor": 1, "render": 1, "children": [
     {"id": 2, "type": 5100, "position": [7, 7, 7], "points": [0, 0, 0,  1, 0, 0,  0, 1, 0], "polygons": [0, 1, 2, 2]}]},
     {"id": 3, "type": 5126, "position": [0, 0, 5], "reference": 2})",
   "0 0 5, 1 0 5, 0 1 5"},
  // Half the tag's strength times half the morph's moves the second point by a quarter of 8.
  {"MorphByBothStrengths", R"({"id": 1, "type": 5100, "points": [0, 0, 0,  1, 0, 0,  0, 1, 0], "polygons": [0, 1, 2, 2],
     "tags": [{"id": 2, "type": 1024237, "parameters": {"1031": 0.5}, "morphs": [
       {"name": "Default", "strength": 0.0, "points": [0, 0, 0,  1, 0, 0,  0, 1, 0]},
       {"name": "Target 0", "strength": 0.5, "points": [0, 0, 0,  1, 0, 8,  0, 1, 0]}]}]})",
   "0 0 0, 1 0 2, 0 1 0"},
  // The second joint rose by 2 since the bind pose, the first stands still; the last point has no weights.
  {"SkinByTheWeightsOfItsJoints", R"({"id": 1, "type": 5140, "position": [5, 0, 0], "children": [
     {"id": 2, "type": 1019362}, {"id": 3, "type": 1019362, "position": [0, 2, 0]},
     {"id": 4, "type": 5100, "points": [0, 0, 0,  1, 0, 0,  0, 1, 0], "polygons": [0, 1, 2, 2],
      "tags": [{"id": 5, "type": 1019365, "joints": [2, 3], "weights": [[[0, 0.25]], [[0, 0.25], [1, 3.0]]],
                "bind": {"object": {"offset": [5, 0, 0], "axisX": [1, 0, 0], "axisY": [0, 1, 0], "axisZ": [0, 0, 1]}, "joints": [
                  {"offset": [5, 0, 0], "axisX": [1, 0, 0], "axisY": [0, 1, 0], "axisZ": [0, 0, 1]},
                  {"offset": [5, 0, 0], "axisX": [1, 0, 0], "axisY": [0, 1, 0], "axisZ": [0, 0, 1]}]}}],
      "children": [{"id": 6, "type": 1019363}]}]})",
   "5 1 0, 6 2 0, 5 1 0"},
};

void PrintTo(const Shown& row, std::ostream* out)
{
  *out << row.name;
}

std::string ToText(const Vector& v)
{
  const auto rounded = [](Float value) { return std::round(value * 1000) / 1000 + 0.0; };
  std::ostringstream text;
  text << rounded(v.x) << " " << rounded(v.y) << " " << rounded(v.z);
  return text.str();
}

std::string ToText(const std::vector<Triangle>& triangles)
{
  std::string text;
  for (const Triangle& triangle : triangles)
  {
    const char* separator = text.empty() ? "" : "; ";
    for (const Corner& corner : triangle.corners)
    {
      text += separator + ToText(corner.position) + (corner.normal == Vector() ? "" : " (" + ToText(corner.normal) + ")");
      separator = ", ";
    }
  }
  return text;
}

class WorldTriangles : public testing::TestWithParam<Shown>
{};

TEST_P(WorldTriangles, AreWhatIsShown)
{
  const std::string text = R"({"format": "q7z scene", "version": 1, "objects": [)" + std::string(GetParam().objects) + "]}";
  const Result<HeadlessOwner<HeadlessDocument>> scene = ReadSceneDocument(text, "");
  ASSERT_FALSE(scene.HasError()) << scene.GetError().GetMessage().GetView();
  EXPECT_EQ(ToText(CollectTriangles(*scene.GetValue())), GetParam().triangles);
}

INSTANTIATE_TEST_SUITE_P(Rows, WorldTriangles, testing::ValuesIn(kShown), RowName());

}  // namespace
}  // namespace q7z::test
