// Skins in the file: which joints, with which matrices, on which nodes. Scenes are in centimetres and files in metres; Z is mirrored.
// Of top-level objects the last comes first.

#include "tests/export/savedcase.h"

namespace q7z::test
{
namespace
{

const Parameters kSkins = {{kExportSkinsParameter, true}};

/// An object in a scene document. @param members  beside its id, type and name, such as "\"position\": [0,0,1]".
std::string Object(int id, int type, const std::string& name, const std::string& members = "")
{
  return "{\"id\": " + std::to_string(id) + ", \"type\": " + std::to_string(type) + ", \"name\": \"" + name + '"' +
         (members.empty() ? "" : ", " + members) + "}";
}

std::string Joint(int id, const std::string& name, const std::string& members = "")
{
  return Object(id, 1019362, name, members);
}

/// A triangle with a weight tag. @param joints, weights  as the tag's members have them, without the outer brackets.
std::string Skinned(int id, const std::string& name, const std::string& joints, const std::string& weights,
                    const std::string& members = "")
{
  return "{\"id\": " + std::to_string(id) + ", \"name\": \"" + name + "\", " + kTriangle +
         (members.empty() ? "" : ", " + members) + ", \"tags\": [{\"id\": " + std::to_string(id + 50) +
         R"(, "type": 1019365, "joints": [)" + joints + R"(], "weights": [)" + weights + "]}]}";
}

// All of a triangle on one joint.
const char* const kWhole = "[[0,1.0],[1,1.0],[2,1.0]]";

// Two joints, one under the other, and a triangle behind them.
const std::string kTwoJoints =
  Joint(1, "J", R"("position": [100,0,0], "children": [)" + Joint(2, "K", R"("position": [0,100,0])") + "]") + ", " +
  Skinned(3, "T", "1, 2", "[[0,1.0],[1,0.25]], [[1,0.75],[2,1.0]]", R"("position": [0,0,200])");

/// A triangle that a skin deforms, whose joint stood elsewhere when it was bound. @param tags  with a comma behind them.
std::string Bound(const std::string& tags)
{
  return Objects(Joint(1, "J", R"("position": [100,0,0])") + R"(, {"id": 2, "name": "T", )" + kTriangle + R"(, "children": [)" +
                 Object(3, 1019363, "D") + R"(], "tags": [)" + tags +
                 R"({"id": 4, "type": 1019365, "joints": [1], "weights": [)" + kWhole +
                 R"(], "bind": {"object": {"offset": [0,0,0], "axisX": [1,0,0], "axisY": [0,1,0], "axisZ": [0,0,1]},
      "joints": [{"offset": [0,0,0], "axisX": [1,0,0], "axisY": [0,1,0], "axisZ": [0,0,1]}]}}]})");
}

const SavedCase kSkinCases[] = {
  {"TwoJoints",
   Objects(kTwoJoints),
   {{"nodes/0", R"({"name":"T","mesh":0,"skin":0})"},
    {"nodes/1/name", "\"J\""},
    {"nodes/1/translation", "[1.0,0.0,-0.0]"},
    {"nodes/1/children", "[2]"},
    {"nodes/2/name", "\"K\""},
    {"skins", R"([{"inverseBindMatrices":4,"joints":[1,2]}])"},
    // From the triangle's space, which stands at z = -2 in the file.
    {"accessor 4", "1 0 0 0 0 1 0 0 0 0 1 0 -1 0 -2 1 1 0 0 0 0 1 0 0 0 0 1 0 -1 -1 -2 1"},
    {"accessors/4/type", "\"MAT4\""},
    {"accessors/4/min", "[1.0,0.0,0.0,0.0,0.0,1.0,0.0,0.0,0.0,0.0,1.0,0.0,-1.0,-1.0,-2.0,1.0]"},
    {"accessors/4/max", "[1.0,0.0,0.0,0.0,0.0,1.0,0.0,0.0,0.0,0.0,1.0,0.0,-1.0,0.0,-2.0,1.0]"},
    {"bufferViews/4", R"({"buffer":1,"byteOffset":0,"byteLength":128})"},
    {"buffers/1/byteLength", "128"},
    {"mesh 0 POSITION", "0 0 0 1 0 0 0 1 0"},
    {"mesh 0 JOINTS_0", "0 1 0 0 1 0 0 0 1 0 0 0"},
    {"mesh 0 WEIGHTS_0", "1 0 0 0 0.75 0.25 0 0 1 0 0 0"}},
   kSkins},
  {"TwoJointsInOneBuffer",
   Objects(kTwoJoints),  // Behind indices, padding, vertices, joints and weights.
   {{"bufferViews/4", R"({"buffer":0,"byteOffset":116,"byteLength":128})"},
    {"buffers", R"([{"byteLength":244}])"},
    {"accessor 4", "1 0 0 0 0 1 0 0 0 0 1 0 -1 0 -2 1 1 0 0 0 0 1 0 0 0 0 1 0 -1 -1 -2 1"}},
   {{kExportSkinsParameter, true}, {kFileFormatParameter, kGlbFormat}}},
  {"TurnedAndScaledJoint",
   Objects(Joint(1, "J", R"("position": [100,0,0], "rotation": [1.5707963267948966,0,0], "scale": [1,1,2])") + ", " +
           Skinned(2, "T", "1", kWhole)),  // A quarter turn about Y takes X to -Z; back from there, and Z halved.
   {{"accessor 4", "0 0 0.5 0 0 1 0 0 -1 0 0 0 0 0 -0.5 1"}},
   kSkins},
  {"TurnedJointWithoutMirror",
   Objects(Joint(1, "J", R"("position": [100,0,0], "rotation": [1.5707963267948966,0,0])") + ", " + Skinned(2, "T", "1", kWhole)),
   {{"accessor 4", "0 0 -1 0 0 1 0 0 1 0 0 0 0 0 2 1"}},
   {{kExportSkinsParameter, true}, {kExportFlipZParameter, false}, {kExportScaleParameter, HostUnitScale{50, 3}}}},
  {"TurnedMesh",
   Objects(
     Joint(1, "J", R"("position": [100,0,0])") + ", " +
     Skinned(2, "T", "1", kWhole,
             R"("rotation": [1.5707963267948966,0,0])")),  // The mesh's own turn, X to -Z, and from there the way to the joint.
   {{"accessor 4", "0 0 -1 0 0 1 0 0 1 0 0 0 -1 0 0 1"}},
   kSkins},
  {"FlatJoint",
   Objects(Joint(1, "J", R"("position": [100,0,0], "scale": [1,0,1])") + ", " +
           Skinned(2, "T", "1", kWhole)),  // What cannot be inverted becomes the identity.
   {{"accessor 4", "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1"}},
   kSkins},
  {"GroupsAreNoJoints",
   Objects(Object(1, 5140, "N", R"("children": [)" + Joint(2, "J") + "]") + ", " +
           Skinned(3, "T", "1, 2", "[[0,1.0]], [[0,0.5]]")),
   {{"nodes/2/name", "\"J\""},
    {"skins", R"([{"inverseBindMatrices":4,"joints":[2]}])"},
    {"mesh 0 WEIGHTS_0", "0.5 0 0 0 0 0 0 0 0 0 0 0"}},
   kSkins},
  {"GroupsAlone",
   Objects(Object(1, 5140, "N", R"("children": [)" + Joint(2, "J") + "]") + ", " +
           Skinned(3, "T", "1", "[[0,1.0]]", R"("position": [100,0,0])")),
   {{"nodes/0", R"({"name":"T","mesh":0})"}, {"skins", "-"}, {"mesh 0 WEIGHTS_0", "0 0 0 0 0 0 0 0 0 0 0 0"}},
   kSkins},
  {"NoJoints",
   Objects(Skinned(1, "T", "", "", R"("position": [100,0,0])")),  // A weight tag is enough to go without a transform.
   {{"nodes", R"([{"name":"T","mesh":0}])"}, {"skins", "-"}, {"mesh 0 WEIGHTS_0", "-"}},
   kSkins},
  {"SharedJoint",
   Objects(Joint(1, "J") + ", " + Skinned(2, "T", "1", kWhole, R"("position": [100,0,0])") + ", " +
           Skinned(3, "U", "1", kWhole, R"("position": [0,100,0])")),
   {{"nodes/0", R"({"name":"U","mesh":0,"skin":0})"},
    {"nodes/1", R"({"name":"T","mesh":1,"skin":1})"},
    {"nodes/2", R"({"name":"J"})"},
    {"skins", R"([{"inverseBindMatrices":8,"joints":[2]},{"inverseBindMatrices":9,"joints":[2]}])"},
    {"accessor 8", "1 0 0 0 0 1 0 0 0 0 1 0 0 1 0 1"},
    {"accessor 9", "1 0 0 0 0 1 0 0 0 0 1 0 1 0 0 1"},
    {"bufferViews/9/buffer", "3"}},
   kSkins},
  {"InstanceSharesTheMeshAndHasASkin",
   Objects(Joint(1, "J") + ", " + Skinned(2, "T", "1", kWhole) + ", " + Object(3, 5126, "I", R"("reference": 2)")),
   {{"nodes/0", R"({"name":"I","mesh":0,"skin":0})"},
    {"nodes/1", R"({"name":"T","mesh":0,"skin":1})"},
    {"skins", R"([{"inverseBindMatrices":4,"joints":[2]},{"inverseBindMatrices":5,"joints":[2]}])"}},
   kSkins},
  {"SkinsLeftOut",
   Objects(kTwoJoints),
   {{"nodes", R"([{"name":"T","mesh":0,"translation":[0.0,0.0,-2.0],"rotation":[0.0,0.0,0.0,-1.0],"scale":[1.0,1.0,1.0]}])"},
    {"skins", "-"},
    {"mesh 0 JOINTS_0", "-"}},
   {{kExportSkinsParameter, false}}},
  {"HiddenAboveAJoint",
   Objects("{\"id\": 1, \"name\": \"P\", \"editor\": 1, \"render\": 1, \"position\": [100,0,0], " + kTriangle +
           ", \"children\": [" + "{\"id\": 2, \"name\": \"C\", " + kTriangle + "}, " + Joint(3, "J") + "]}, " +
           Skinned(4, "T", "3", kWhole)),  // A place for the joint, without the mesh; what hangs beside the joint is gone.
   {{"nodes/1/name", "\"P\""},
    {"nodes/1/mesh", "-"},
    {"nodes/1/translation", "[1.0,0.0,-0.0]"},
    {"nodes/1/children", "[2]"},
    {"nodes/2", R"({"name":"J"})"},
    {"nodes/3", "-"},
    {"skins/0/joints", "[2]"},
    {"meshes/1", "-"}},
   kSkins},
  // The joint went by 1 since the bind pose and took the points along: the file is bound to what is there by now.
  {"WhereItStandsNow",
   Bound(""),
   {{"mesh 0 POSITION", "1 0 0 2 0 0 1 1 0"}, {"accessor 4", "1 0 0 0 0 1 0 0 0 0 1 0 -1 0 0 1"}},
   kSkins},
  // Of a mesh with poses it is the base pose, wherever the joint went.
  {"BasePoseWhereTheJointsStand",
   Bound(R"({"id": 5, "type": 1024237, "morphs": [{"name": "Default", "points": [0,0,0, 100,0,0, 0,100,0]},
      {"name": "P", "points": [0,0,0, 300,0,0, 0,100,0]}]}, )"),
   {{"mesh 0 POSITION", "0 0 0 1 0 0 0 1 0"}, {"accessor 4", "0 0 0 2 0 0 0 0 0"}},
   kSkins},
};

INSTANTIATE_TEST_SUITE_P(Skins, SavedScene, testing::ValuesIn(kSkinCases), RowName());

TEST(SkinOfASplitObject, HangsOnEachPart)
{
  // Polygon 0 goes to the rest with the points 0 to 2, polygon 1 to the part with the points 1 to 3.
  const std::string members =
    R"("materials": [{"id": 10, "type": 5703, "name": "Red", "channels": {}}],
       "objects": [)" +
    Joint(1, "J") + ", " + Joint(2, "K") +
    R"(, {"id": 3, "type": 5100, "name": "A", "points": [0,0,0, 100,0,0, 0,100,0, 100,100,0], "polygons": [0,1,2,2, 1,3,2,2],
       "tags": [{"id": 4, "type": 5673, "name": "s", "polygons": [[1,1]]},
       {"id": 5, "type": 5616, "name": "u", "material": 10, "parameters": {"1006": "s"}},
       {"id": 6, "type": 1019365, "joints": [1, 2], "weights": [[[0,1.0],[1,0.75]], [[1,0.25],[2,1.0],[3,1.0]]]}]}])";
  const SavedFile file(SceneText(members), kSkins);
  ASSERT_EQ(file.Report().error, "");
  EXPECT_EQ(file.At("nodes/0/name"), "\"A\"");
  EXPECT_EQ(file.At("nodes/1/name"), "\"K\"");
  EXPECT_EQ(file.At("nodes/2/name"), "\"J\"");
  EXPECT_EQ(file.At("mesh 0 WEIGHTS_0"), "1 0 0 0 0.75 0.25 0 0 1 0 0 0");
  EXPECT_EQ(file.At("mesh 0 JOINTS_0"), "0 1 0 0 0 1 0 0 1 0 0 0");
  EXPECT_EQ(file.At("mesh 1 WEIGHTS_0"), "0.75 0.25 0 0 1 0 0 0 1 0 0 0");
  EXPECT_EQ(file.At("mesh 1 JOINTS_0"), "0 1 0 0 1 0 0 0 1 0 0 0");
  EXPECT_EQ(file.At("nodes/3/skin"), "0");
  EXPECT_EQ(file.At("nodes/4/skin"), "1");
  EXPECT_EQ(file.At("skins/1/joints"), "[2,1]");
}

// What ends a save.

struct LostJointCase
{
  const char* name;
  std::string objects;
  const char* error;
};

const LostJointCase kLostJointCases[] = {
  {"OutsideOfWhatIsExported",
   Object(1, 5140, "dontexport", R"("editor": 1, "render": 1, "children": [)" + Joint(2, "J ä") + "]") + ", " +
     Skinned(3, "T", "2", kWhole),
   "Illegal state: No source object found for 'J ä'"},
  {"NoJointObject", "{\"id\": 1, \"name\": \"P\", " + kTriangle + "}, " + Skinned(2, "T", "1", kWhole),
   "Illegal state: No source object found for 'P'"},
  {"OneOfTwo",
   Joint(1, "J") + ", {\"id\": 2, \"name\": \"Q\", " + kTriangle + "}, " + Skinned(3, "T", "1, 2", std::string(kWhole) + ", []"),
   "Illegal state: No source object found for 'Q'"},
};

class LostJoint : public testing::TestWithParam<LostJointCase>
{};

TEST_P(LostJoint, EndsTheSave)
{
  const SavedFile file(SceneText(Objects(GetParam().objects)), kSkins);
  EXPECT_EQ(file.Report().error, std::string("The file could not be saved: ") + GetParam().error);
  EXPECT_FALSE(file.HasFile());
}

std::string Repeat(const std::string& text, int count)
{
  std::string repeated = text;
  for (int i = 1; i < count; ++i)
    repeated += "," + text;
  return repeated;
}

/// A mesh with one joint many times over, the last of which alone holds it.
std::string WithJoints(int count)
{
  const std::string weights = Repeat("[]", count - 1) + "," + kWhole;
  return SceneText(Objects(Joint(1, "J") + ", " + Skinned(2, "T", Repeat("1", count), weights)));
}

TEST(JointsOfAMesh, MayBeAsManyAsAnIndexTellsApart)
{
  const SavedFile file(WithJoints(65536), kSkins);
  EXPECT_EQ(file.Report().error, "");
  EXPECT_EQ(file.At("mesh 0 JOINTS_0").substr(0, 6), "65535 ");
}

TEST(JointsOfAMesh, MayNotBeMore)
{
  const SavedFile file(WithJoints(65537), kSkins);
  EXPECT_EQ(file.Report().error, "The file could not be saved: 'T' has more joints than the 65536 that a file can tell apart.");
  EXPECT_FALSE(file.HasFile());
}

INSTANTIATE_TEST_SUITE_P(Rows, LostJoint, testing::ValuesIn(kLostJointCases), RowName());

}  // namespace
}  // namespace q7z::test
