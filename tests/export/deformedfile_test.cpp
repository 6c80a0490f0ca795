// Skins and targets as a viewer would show them against what the host itself makes of the scene: vertex by vertex, at rest and bent.

#include <cmath>
#include <cstdio>

#include <gtest/gtest.h>

#include "host/modeling/currentstate.h"
#include "host/scene/conversion.h"
#include "host/scene/headlesscontainer.h"
#include "host/scene/headlessweighttag.h"
#include "tests/export/gltfevaluator.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

std::string Format(const Vector& v)
{
  char text[96];
  std::snprintf(text, sizeof(text), "%.17g,%.17g,%.17g", v.x, v.y, v.z);
  return text;
}

std::string Join(const std::vector<Vector>& points)
{
  std::string text;
  for (const Vector& point : points)
    text += (text.empty() ? "" : ",") + Format(point);
  return text;
}

/// A mesh as a scene document describes it.
struct Shape
{
  std::vector<Vector> points;
  std::string polygons;
  std::string tags;  ///< with those of the skin, each with a comma in front
};

std::string WeightTag(const std::string& joints, const std::string& weights)
{
  return R"(, {"id": 31, "type": 1019365, "joints": [)" + joints + R"(], "weights": [)" + weights + "]}";
}

// Five pairs of points along X. Each pair hangs on one of three joints, or halfway on two.
Shape MakeStrip()
{
  Shape strip;
  for (int i = 0; i < 5; ++i)
  {
    strip.points.push_back({100.0 * i, 0, 0});
    strip.points.push_back({100.0 * i, 50, 10.0 * i});
  }
  strip.polygons = "0,2,3,1, 2,4,5,3, 4,6,7,5, 6,8,9,7";
  strip.tags = WeightTag("21, 22, 23", "[[0,1.0],[1,1.0],[2,0.5],[3,0.5]], [[2,0.5],[3,0.5],[4,1.0],[5,1.0],[6,0.5],[7,0.5]],"
                                       "[[6,0.5],[7,0.5],[8,1.0],[9,1.0]]");
  return strip;
}

// Three squares one above the other, and the walls between them.
std::vector<Vector> MakeBoxPoints(double turnPerLevel, double height)
{
  std::vector<Vector> points;
  for (int level = 0; level < 3; ++level)
  {
    for (int corner = 0; corner < 4; ++corner)
    {
      const double angle = 1.5707963267948966 * corner + turnPerLevel * level;
      points.push_back({100 * std::cos(angle), height * level, 80 * std::sin(angle)});
    }
  }
  return points;
}

Shape MakeBox(bool isSkinned)
{
  Shape box;
  box.points = MakeBoxPoints(0, 150);
  box.polygons = "0,1,5,4, 1,2,6,5, 2,3,7,6, 3,0,4,7, 4,5,9,8, 5,6,10,9, 6,7,11,10, 7,4,8,11, 0,3,2,1, 8,9,10,10";
  box.tags = R"(, {"id": 30, "type": 1024237, "parameters": {"1031": 0.5}, "morphs": [)"
             R"({"name": "Default", "points": [)" +
             Join(box.points) + R"(]}, {"name": "Twist", "strength": 0.75, "points": [)" + Join(MakeBoxPoints(0.6, 150)) +
             R"(]}, {"name": "Stretch", "strength": 0.3, "points": [)" + Join(MakeBoxPoints(0, 200)) + "]}]}";
  if (isSkinned)
    box.tags += WeightTag("21, 22", "[[0,1.0],[1,1.0],[2,1.0],[3,1.0],[4,0.5],[5,0.25],[6,0.75],[7,0.5]],"
                                    "[[4,0.5],[5,0.75],[6,0.25],[7,0.5],[8,1.0],[9,1.0],[10,1.0],[11,1.0]]");
  return box;
}

// The mesh and the joints stand under groups of their own, moved, turned and one of them scaled.
std::string MakeScene(const Shape& shape)
{
  const std::string noTags = R"({"id": 40, "type": 5612, "on": true})";
  return SceneText(
    R"("objects": [{"id": 1, "type": 5140, "name": "G", "position": [10,20,30], "rotation": [0.3,0.2,-0.5], "scale": [2,2,2],
       "children": [{"id": 2, "type": 5100, "name": "M", "position": [5,0,-7], "rotation": [0.1,0,0.4], "points": [)" +
    Join(shape.points) + R"(], "polygons": [)" + shape.polygons + R"(], "tags": [)" + noTags + shape.tags +
    R"(], "children": [{"id": 3, "type": 1019363, "name": "D"}]}]},
      {"id": 20, "type": 5140, "name": "R", "position": [-40,10,0], "rotation": [0,0.7,0], "children": [
      {"id": 21, "type": 1019362, "name": "J0", "rotation": [0.2,0.1,0], "children": [
      {"id": 22, "type": 1019362, "name": "J1", "position": [150,0,0], "children": [
      {"id": 23, "type": 1019362, "name": "J2", "position": [150,10,0]}]}]}]}])");
}

HeadlessObject& Find(HeadlessDocument& document, const std::string& name)
{
  for (HeadlessObject* top = document.GetFirstObject(); top; top = top->GetNext())
  {
    for (HeadlessObject* object = top; object; object = object->GetNextInTree(top))
    {
      if (object->GetName().GetView() == name)
        return *object;
    }
  }
  throw std::runtime_error("no object " + name);
}

std::string TakeBindPose(const std::string& scene)
{
  const HeadlessOwner<HeadlessDocument> document = ReadScene(scene);
  if (HeadlessTag* const tag = Find(*document, "M").FindTag(kWeightTagType))
    static_cast<HeadlessWeightTag*>(tag)->TakeBindPose();
  return WriteScene(*document);
}

std::string Bend(const std::string& scene)
{
  const HeadlessOwner<HeadlessDocument> document = ReadScene(scene);
  Find(*document, "G").SetVectors({{-30, 25, 60}, {0.1, -0.6, 0.2}, {2, 2, 2}});
  Find(*document, "J0").SetVectors({{0, 30, -5}, {0.5, 0.1, 0.3}, {1, 1, 1}});
  Find(*document, "J1").SetVectors({{150, 0, 0}, {0.4, 0.8, -0.3}, {1, 1, 1}});
  Find(*document, "J2").SetVectors({{150, 10, 0}, {-0.5, 0.2, 1}, {1.5, 1, 0.75}});
  return WriteScene(*document);
}

/// The corners of the mesh's triangles in the world of the file, in the order of a mirrored file.
std::vector<Vector> GetHostCorners(const std::string& scene)
{
  const HeadlessOwner<HeadlessDocument> document = ReadScene(scene);
  HeadlessContainer settings;
  EXPECT_TRUE(settings.Set(kKeepHierarchySetting, true));
  const HeadlessOwner<HeadlessObject> root(MakeCurrentStateCopy(document.get(), &Find(*document, "G"), ToHost(&settings)));
  const HeadlessPolygonObject& mesh = *root->GetDown()->AsPolygonObject();
  const HostMatrix global = mesh.GetGlobalMatrix();
  std::vector<Vector> corners;
  for (Int i = 0; i < mesh.GetPolygonCount(); ++i)
  {
    const HostPolygon& polygon = mesh.GetPolygons().GetR()[i];
    for (const Int32 point : {polygon.a, polygon.b, polygon.c, polygon.a, polygon.c, polygon.d})
      corners.push_back(global * mesh.GetPoints().GetR()[point]);
    if (polygon.c == polygon.d)
      corners.resize(corners.size() - 3);
  }
  for (Vector& corner : corners)
    corner = Vector{corner.x, corner.y, -corner.z} * 0.01;
  return {corners.rbegin(), corners.rend()};
}

struct DeformedCase
{
  const char* name;
  Shape shape;
  Int32 format;
};

void PrintTo(const DeformedCase& row, std::ostream* stream)
{
  *stream << row.name;
}

class DeformedFile : public testing::TestWithParam<DeformedCase>
{
protected:
  static void ExpectNear(const std::vector<Vector>& actual, const std::vector<Vector>& expected, const char* what)
  {
    ASSERT_EQ(actual.size(), expected.size()) << what;
    for (size_t i = 0; i < actual.size(); ++i)
      EXPECT_LT((actual[i] - expected[i]).GetLength(), 1e-5) << what << ", corner " << i;
  }

  /// @return the file, read; what failed is a failure of the test.
  static GltfEvaluator Save(const std::string& scene)
  {
    const SavedFile file(scene, {{kExportSkinsParameter, true}, {kFileFormatParameter, GetParam().format}});
    EXPECT_EQ(file.Report().error, "");
    return GltfEvaluator(file);
  }

  const std::string _rest = TakeBindPose(MakeScene(GetParam().shape));
  const std::string _bent = Bend(_rest);
};

TEST_P(DeformedFile, LooksAsTheSceneDoes)
{
  GltfEvaluator file = Save(_rest);
  ExpectNear(file.GetCorners("M"), GetHostCorners(_rest), "at rest");
  file.TakePose(Save(_bent));
  ExpectNear(file.GetCorners("M"), GetHostCorners(_bent), "bent by its joints");
}

const DeformedCase kDeformedCases[] = {
  {"BentStrip", MakeStrip(), kGltfFormat},
  {"BentStripInOneBuffer", MakeStrip(), kGlbFormat},
  {"TwistedBoxOnJoints", MakeBox(true), kGltfFormat},
  {"TwistedBoxOnJointsInOneBuffer", MakeBox(true), kGlbFormat},
  {"TwistedBox", MakeBox(false), kGltfFormat},
};

INSTANTIATE_TEST_SUITE_P(Rows, DeformedFile, testing::ValuesIn(kDeformedCases), RowName());

class BentFile : public DeformedFile
{};

TEST_P(BentFile, StartsFromWhereItStands)
{
  ExpectNear(Save(_bent).GetCorners("M"), GetHostCorners(_bent), "saved while it was bent");
}

// The skinned box is not among them: its base pose is what is written, however the joints stand.
const DeformedCase kBentCases[] = {
  {"BentStrip", MakeStrip(), kGltfFormat},
  {"BentStripInOneBuffer", MakeStrip(), kGlbFormat},
  {"TwistedBox", MakeBox(false), kGltfFormat},
};

INSTANTIATE_TEST_SUITE_P(Rows, BentFile, testing::ValuesIn(kBentCases), RowName());

}  // namespace
}  // namespace q7z::test
