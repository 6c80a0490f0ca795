// What stands in the file for a scene: nodes, transforms, meshes, what is left out. Scenes are in centimetres and files in metres, so
// that 100 becomes 1; Z is mirrored. Of top-level objects the last comes first.

#include "tests/export/savedcase.h"

namespace q7z::test
{
namespace
{

// One triangle in the plane z = 1 m at its first point.
#define TRIANGLE R"("type": 5100, "points": [0,0,100, 100,0,0, 0,100,0], "polygons": [0,1,2,2])"

const SavedCase kSceneCases[] = {
  {"Empty", R"("name": "nothing")", {{"", R"({"asset":{"version":"2.0"}})"}}},
  {"TextsOfTheDocument",
   R"("parameters": {"2000": "from an import", "2002": "somebody", "2007": "© nobody"})",
   {{"asset", R"({"version":"2.0","generator":"somebody","copyright":"© nobody"})"}}},
  {"NumbersForTexts", R"("parameters": {"2002": 5, "2007": 1.5})", {{"asset", R"({"version":"2.0"})"}}},
  {"Triangle",
   R"("objects": [{"id": 1, "name": "Dreieck ä", )" TRIANGLE "}]",
   {{"nodes", R"([{"name":"Dreieck ä","mesh":0}])"},
    {"scenes", R"([{"nodes":[0]}])"},
    {"mesh 0 POSITION", "0 0 -1 1 0 0 0 1 0"},
    {"mesh 0 indices", "2 1 0"},
    {"meshes/0/name", "\"Dreieck ä\""},
    {"meshes/0/primitives/0/attributes", R"({"POSITION":1})"},
    {"accessors/0/componentType", "5123"},
    {"accessors/0/min", "[0]"},
    {"accessors/0/max", "[2]"},
    {"accessors/1/min", "[0.0,0.0,-1.0]"},
    {"accessors/1/max", "[1.0,1.0,-0.0]"},
    {"bufferViews/0", R"({"buffer":0,"byteOffset":0,"byteLength":6,"target":34963})"},
    {"bufferViews/1", R"({"buffer":0,"byteOffset":8,"byteLength":36,"target":34962})"},
    {"buffers/0/byteLength", "44"},
    {"materials", "-"},
    {"scene", "-"}}},
  {"TriangleWithoutMirror",
   R"("objects": [{"id": 1, "name": "T", )" TRIANGLE "}]",
   {{"mesh 0 POSITION", "0 0 2 2 0 0 0 2 0"}, {"mesh 0 indices", "0 1 2"}},
   {{kExportFlipZParameter, false}, {kExportScaleParameter, HostUnitScale{50, 3}}}},
  {"Quad",
   R"("objects": [{"id": 1, "type": 5100, "name": "Q", "points": [0,0,0, 100,0,0, 100,100,0, 0,100,0], "polygons": [0,1,2,3]}])",
   {{"mesh 0 indices", "3 2 0 2 1 0"}}},
  {"NormalsAndUvs",
   R"("objects": [{"id": 1, "name": "T", )" TRIANGLE R"(, "tags": [
      {"id": 2, "type": 5711, "normals": [0,0,5, 1,0,0, 0,2,0, 0,0,1]},
      {"id": 3, "type": 5671, "uvws": [0,0,0, 0.5,0.25,9, 1,1,0, 0,0,0]}]}])",
   {{"mesh 0 NORMAL", "0 0 -1 1 0 0 0 1 0"},
    {"mesh 0 TEXCOORD_0", "0 0 0.5 0.25 1 1"},
    {"bufferViews/1/byteStride", "32"},
    {"accessors/2/byteOffset", "12"},
    {"accessors/3/byteOffset", "24"}}},
  {"WithoutNormalsAndUvs",
   R"("objects": [{"id": 1, "name": "T", )" TRIANGLE R"(, "tags": [
      {"id": 2, "type": 5711, "normals": [0,0,5, 1,0,0, 0,2,0, 0,0,1]},
      {"id": 3, "type": 5671, "uvws": [0,0,0, 0.5,0.25,9, 1,1,0, 0,0,0]}]}])",
   {{"meshes/0/primitives/0/attributes", R"({"POSITION":1})"}, {"bufferViews/1/byteStride", "-"}},
   {{kExportNormalsParameter, false}, {kExportUvsParameter, false}}},
  {"ColorsOfPoints",
   R"("objects": [{"id": 1, "name": "T", )" TRIANGLE R"(, "tags": [
      {"id": 2, "type": 431000045, "perPoint": true, "colors": [1,0,0,1, 0,1,0,0.5, 0,0,1,0]}]}])",
   {{"mesh 0 COLOR_0", "1 0 0 1 0 1 0 0.5 0 0 1 0"}, {"bufferViews/2/byteLength", "48"}, {"bufferViews/2/byteStride", "-"}}},
  {"Transform",
   R"("objects": [{"id": 1, "type": 5140, "name": "N", "position": [100,200,300], "rotation": [1.5707963267948966,0,0],
      "scale": [2,3,4], "children": [{"id": 2, "name": "T", )" TRIANGLE
   "}]}]",  // A heading of a quarter turn, mirrored: half of it is -45 degrees about Y, and w is negative.
   {{"nodes/0/translation", "[1.0,2.0,-3.0]"},
    {"nodes/0/rotation", "[0.0,-0.70710677,0.0,-0.70710677]"},
    {"nodes/0/scale", "[2.0,3.0,4.0]"},
    {"nodes/0/children", "[1]"},
    {"nodes/1", R"({"name":"T","mesh":0})"}}},
  {"MirroredScale",
   R"("objects": [{"id": 1, "name": "T", "scale": [-1,1,1], )" TRIANGLE "}]",
   {{"nodes/0/scale", "[-1.0,1.0,1.0]"}, {"nodes/0/rotation", "[0.0,0.0,0.0,-1.0]"}}},
  {"TransformBelowTheLimit",
   R"("objects": [{"id": 1, "name": "T", "position": [0.00005,0,0.00005], "scale": [1,1,1.00005], )" TRIANGLE "}]",
   {{"nodes/0", R"({"name":"T","mesh":0})"}}},
  {"LastObjectFirst",
   R"("objects": [{"id": 1, "name": "A", )" TRIANGLE R"(}, {"id": 2, "name": "B", )" TRIANGLE R"(, "children": [
      {"id": 3, "name": "C", )" TRIANGLE R"(}, {"id": 4, "name": "D", )" TRIANGLE "}]}]",
   {{"scenes/0/nodes", "[0,1]"},
    {"nodes/0/name", "\"B\""},
    {"nodes/1/name", "\"A\""},
    {"nodes/0/children", "[2,3]"},
    {"nodes/2/name", "\"C\""},
    {"nodes/3/name", "\"D\""},
    {"meshes/3/name", "\"D\""},
    {"buffers/3/byteLength", "44"}}},
  {"DontExport",
   R"("objects": [{"id": 1, "type": 5140, "name": "dontexport", "editor": 1, "render": 1, "children": [{"id": 2, "name": "C", )" TRIANGLE
   R"(}]}, {"id": 3, "type": 5140, "name": "dontexport", "children": [{"id": 4, "name": "V", )" TRIANGLE "}]}]",
   {{"nodes", R"([{"name":"dontexport","children":[1]},{"name":"V","mesh":0}])"}}},
  {"Instances",
   R"("objects": [{"id": 1, "name": "A", )" TRIANGLE
   R"(}, {"id": 2, "type": 5126, "name": "I", "position": [100,0,0], "reference": 1},
      {"id": 3, "type": 1018957, "name": "J", "reference": 2}])",
   {{"nodes/0/name", "\"J\""},
    {"nodes/1/name", "\"I\""},
    {"nodes/1/translation", "[1.0,0.0,0.0]"},
    {"nodes/2/name", "\"A\""},
    {"nodes/0/mesh", "0"},
    {"nodes/1/mesh", "0"},
    {"nodes/2/mesh", "0"},
    {"meshes/1", "-"}}},
  {"InstancesWithoutSharing",
   R"("objects": [{"id": 1, "name": "A", )" TRIANGLE R"(}, {"id": 2, "type": 5126, "name": "I", "reference": 1}])",
   {{"nodes/0/mesh", "0"}, {"nodes/1/mesh", "1"}},
   {{kShareMeshesParameter, false}}},
  {"NoPolygons",
   R"("objects": [{"id": 1, "type": 5100, "name": "P", "points": [0,0,0], "polygons": [], "children": [{"id": 2, "name": "C", )" TRIANGLE
   "}]}]",
   {{"nodes/0", R"({"name":"P","children":[1]})"}}},
  {"PhongWithoutNormals",
   R"("objects": [{"id": 1, "name": "T", "type": 5100, "points": [0,0,0, 100,0,0, 0,100,0], "polygons": [0,1,2,2],
      "tags": [{"id": 2, "type": 5612, "on": true, "limit": true, "angle": 0.7}]}])",
   {{"mesh 0 NORMAL", "0 0 -1 0 0 -1 0 0 -1"}}},
  {"ChosenFrame",
   R"("objects": [{"id": 1, "name": "T", "tracks": [{"id": [[903,23,0],[1000,19,0]], "keys": [
      {"time": [0,1], "value": 0.0, "interpolation": 2}, {"time": [1,1], "value": 100.0, "interpolation": 2}]}], )" TRIANGLE "}]",
   {{"nodes/0/translation", "[0.5,0.0,-0.0]"}},
   {{kUseCurrentFrameParameter, false}, {kExportFrameParameter, 15}}},
  {"InstanceOfAGroup",
   R"("objects": [{"id": 1, "type": 5140, "name": "G", "position": [100,0,0], "children": [{"id": 2, "name": "A", )" TRIANGLE
   R"(}]},
      {"id": 3, "type": 5126, "name": "I", "position": [0,100,0], "reference": 1}])",
   {{"nodes/0/name", "\"I\""},
    {"nodes/0/translation", "[0.0,1.0,-0.0]"},
    {"nodes/0/children", "[2]"},
    {"nodes/1/translation", "[1.0,0.0,-0.0]"},
    {"nodes/2/mesh", "0"},
    {"nodes/3/mesh", "0"}}},
  {"PerspectiveCamera",
   R"("objects": [{"id": 1, "type": 5103, "name": "C", "parameters": {"1001": 0, "1008": 1.0, "4600": 0.5}}])",
   {{"nodes", R"([{"name":"C","camera":0}])"},
    {"cameras",
     R"([{"type":"perspective","perspective":{"znear":0.01,"zfar":10000000000.0,"aspectRatio":2.139494,"yfov":0.5}}])"}}},
  {"OrthographicCamera",  // 1280 by 720 pixels: 512 / 2 and 512 / 1280 * 720 / 2, in centimetres.
   R"("objects": [{"id": 1, "type": 1057516, "name": "C", "parameters": {"1001": 1, "1000": 2.0, "1123": true, "1122": 50.0,
      "1129": true, "1128": 1000.0}}])",
   {{"cameras", R"([{"type":"orthographic","orthographic":{"znear":0.5,"zfar":10.0,"xmag":2.56,"ymag":1.44}}])"}}},
  {"CameraThatNobodySet",  // As wide as it is far: the tangent of half the height's angle is 720 / 1280 / 2.
   R"("objects": [{"id": 1, "type": 5103, "name": "C"}])",
   {{"cameras",
     R"([{"type":"perspective","perspective":{"znear":0.01,"zfar":10000000000.0,"aspectRatio":1.777778,"yfov":0.548335}}])"}}},
  {"CameraWithOneAngle",
   R"("objects": [{"id": 1, "type": 1057516, "name": "C", "parameters": {"4600": 0.5, "1129": true}}], "render": {"5008": 500, "5009": 400})",
   {{"cameras", R"([{"type":"perspective","perspective":{"znear":0.01,"zfar":1000.0,"aspectRatio":1.25,"yfov":0.5}}])"}}},
  {"OrthographicCameraThatNobodySet",
   R"("objects": [{"id": 1, "type": 5103, "name": "C", "parameters": {"1001": 1}}])",
   {{"cameras", R"([{"type":"orthographic","orthographic":{"znear":0.0,"zfar":10000000000.0,"xmag":5.12,"ymag":2.88}}])"}}},
  {"OtherProjection",
   R"("objects": [{"id": 1, "type": 5103, "name": "C", "parameters": {"1001": 3}}])",
   {{"nodes", R"([{"name":"C"}])"}, {"cameras", "-"}}},
  {"CameraKeepsItsGroup",
   R"("objects": [{"id": 1, "type": 5140, "name": "N", "children": [{"id": 2, "type": 5103, "name": "C", "position": [0,0,100],
      "parameters": {"1001": 0, "1008": 1.0, "4600": 1.0}}]}])",  // Without the mirror a camera is turned around its own Y axis.
   {{"nodes/0", R"({"name":"N","children":[1]})"},
    {"nodes/1/translation", "[0.0,0.0,1.0]"},
    {"nodes/1/rotation", "[0.0,1.0,0.0,0.0]"}},
   {{kExportFlipZParameter, false}}},
};

INSTANTIATE_TEST_SUITE_P(Scenes, SavedScene, testing::ValuesIn(kSceneCases), RowName());

class SceneRotation : public testing::TestWithParam<int>
{};

// Whatever order an object keeps its angles in, it stands in the file as its matrix does: back from there it has the same axes.
TEST_P(SceneRotation, ComesBack)
{
  const std::string rotated = R"("rotation": [0.3,-0.7,2.5], "scale": [1,2,0.5], "rotationOrder": )" + std::to_string(GetParam());
  const std::string members = R"("objects": [{"id": 1, "name": "T", "position": [5,6,7], )" + rotated + ", " TRIANGLE + "}]";
  SavedFile file(SceneText(members), {});
  ASSERT_EQ(file.Report().error, "");
  const HostMatrix before = ReadScene(SceneText(members))->GetFirstObject()->GetLocalMatrix();
  ASSERT_EQ(file.Host().LoadText(file.Bytes()), "none");
  const HeadlessObject* object = file.Host().Scene().GetFirstObject();
  while (object && !object->IsPolygonObject())
    object = object->GetNextInTree(nullptr);
  ASSERT_NE(object, nullptr);
  const HostMatrix after = object->GetLocalMatrix();
  const Vector* const pairs[][2] = {{&before.offset, &after.offset},
                                    {&before.axisX, &after.axisX},
                                    {&before.axisY, &after.axisY},
                                    {&before.axisZ, &after.axisZ}};
  for (const auto& pair : pairs)
    EXPECT_LT((*pair[0] - *pair[1]).GetLength(), 1e-5);
}

INSTANTIATE_TEST_SUITE_P(Orders, SceneRotation, testing::Range(0, 7));

}  // namespace
}  // namespace q7z::test
