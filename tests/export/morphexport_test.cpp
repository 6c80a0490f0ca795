// Morph targets in the file: from the poses of a tag, or from the keys of a point track. Scenes are in centimetres and files in
// metres; Z is mirrored.

#include <algorithm>

#include "tests/export/savedcase.h"

namespace q7z::test
{
namespace
{

const std::string kBase = R"({"name": "Default", "points": [0,0,0, 100,0,0, 0,100,0]})";
const std::string kLift = R"({"name": "Lift", "strength": 0.5, "points": [0,0,100, 100,0,0, 0,100,0]})";
const std::string kSlide = R"({"name": "Slide", "points": [0,0,0, 300,0,0, 0,100,50]})";

/// A scene of one object.
std::string Mesh(const std::string& members, const std::string& name = "T")
{
  return Objects(R"({"id": 1, "name": ")" + name + "\", " + members + "}");
}

std::string PoseTag(const std::string& morphs, const std::string& members = "")
{
  return R"({"id": 90, "type": 1024237, "morphs": [)" + morphs + "]" + (members.empty() ? "" : ", " + members) + "}";
}

std::string Posed(const std::string& morphs, const std::string& members = "")
{
  return kTriangle + ", \"tags\": [" + PoseTag(morphs, members) + "]";
}

const char* const kLifted = "0,0,100, 100,0,0, 0,100,0";

const SavedCase kMorphCases[] = {
  {"TwoPoses",
   Mesh(Posed(kBase + ", " + kLift + ", " + kSlide, R"("parameters": {"1031": 0.5})")),
   {{"mesh 0 POSITION", "0 0 0 1 0 0 0 1 0"},
    {"meshes/0/extras", R"({"targetNames":["Lift","Slide"]})"},
    {"meshes/0/weights", "[0.25,0.0]"},
    {"meshes/0/primitives/0/targets", R"([{"POSITION":2},{"POSITION":3}])"},
    {"accessor 2", "0 0 -1 0 0 0 0 0 0"},
    {"accessor 3", "0 0 0 2 0 0 0 0 -0.5"},
    {"accessors/2/min", "[0.0,0.0,-1.0]"},
    {"accessors/2/max", "[0.0,0.0,0.0]"},
    {"bufferViews/2", R"({"buffer":0,"byteOffset":44,"byteLength":36,"target":34962})"},
    {"bufferViews/3/byteOffset", "80"},
    {"buffers/0/byteLength", "116"}}},
  {"WithoutMirror",
   Mesh(Posed(kBase + ", " + kLift)),
   {{"accessor 2", "0 0 2 0 0 0 0 0 0"}},
   {{kExportFlipZParameter, false}, {kExportScaleParameter, HostUnitScale{50, 3}}}},
  {"LeftOut",
   Mesh(Posed(kBase + ", " + kLift)),  // The points as they look now: half lifted.
   {{"mesh 0 POSITION", "0 0 -0.5 1 0 0 0 1 0"}, {"meshes/0/primitives/0/targets", "-"}, {"meshes/0/weights", "-"}},
   {{kExportMorphsParameter, false}}},
  {"BaseAlone",
   Mesh(Posed(kBase)),
   {{"meshes/0/primitives/0/targets", "-"}, {"meshes/0/extras", "-"}, {"meshes/0/weights", "-"}}},
  {"BaseWithoutPoints",
   Mesh(Posed(R"({"name": "Default"}, )" + kLift)),  // Targets count from what the mesh looks like now.
   {{"mesh 0 POSITION", "0 0 -0.5 1 0 0 0 1 0"}, {"accessor 2", "0 0 -0.5 0 0 0 0 0 0"}}},
  {"BaseOfFewerPoints",
   Mesh(Posed(R"({"name": "Default", "points": [7,7,7, 7,7,7]}, )" + kSlide)),
   {{"mesh 0 POSITION", "0 0 0 1 0 0 0 1 0"}, {"accessor 2", "0 0 0 2 0 0 0 0 -0.5"}}},
  {"BaseOfMorePoints",
   Mesh(Posed(R"({"name": "Default", "points": [0,0,0, 100,0,0, 0,200,0, 7,7,7]}, )" + kSlide)),
   {{"mesh 0 POSITION", "0 0 0 1 0 0 0 2 0"}, {"accessor 2", "0 0 0 2 0 0 0 -1 -0.5"}}},
  {"LinkedPose",
   Mesh(Posed(kBase + R"(, {"name": "Linked", "strength": 1.0, "object": 5})") +
        R"(, "children": [{"id": 5, "name": "L", "editor": 1, "render": 1, "type": 5100, "points": [0,0,0, 100,0,0, 0,300,0],
        "polygons": []}])"),
   {{"nodes", R"([{"name":"T","mesh":0}])"},
    {"mesh 0 POSITION", "0 0 0 1 0 0 0 1 0"},
    {"meshes/0/extras", R"({"targetNames":["Linked"]})"},
    {"accessor 2", "0 0 0 0 0 0 0 2 0"}}},
  {"EveryCornerItsOwnVertex",
   Mesh(
     R"("type": 5100, "points": [0,0,0, 100,0,0, 0,100,0, 100,100,0], "polygons": [0,1,2,2, 2,1,3,3], "tags": [)" +
     PoseTag(R"({"name": "Default", "points": [0,0,0, 100,0,0, 0,100,0, 100,100,0]},
                {"name": "Lift", "points": [0,0,0, 100,0,100, 0,100,0, 100,100,0]})") +
     R"(, {"id": 91, "type": 5671, "uvws": [0,0,0, 0,0,0, 0,0,0, 0,0,0, 0,0,0, 0,0,0, 0,0,0, 0,0,0]}])"),  // The second triangle has copies of the points 2 and 1 of its own.
   {{"mesh 0 indices", "3 5 4 2 1 0"},
    {"mesh 0 POSITION", "0 0 0 1 0 0 0 1 0 1 1 0 0 1 0 1 0 0"},
    {"meshes/0/primitives/0/targets", R"([{"POSITION":3}])"},
    {"accessor 3", "0 0 0 0 0 -1 0 0 0 0 0 0 0 0 0 0 0 -1"}}},
  {"PointTrack",
   Mesh(kTriangle + ", " + PointTrack({kStill, kLifted, "0,0,0, 100,0,0, 0,100,-100"})),
   {{"mesh 0 POSITION", "0 0 0 1 0 0 0 1 0"},
    {"meshes/0/extras", R"({"targetNames":["curve0","curve1","curve2"]})"},
    {"meshes/0/weights", "[0.0,0.0,0.0]"},
    {"accessor 2", "0 0 0 0 0 0 0 0 0"},
    {"accessor 3", "0 0 -1 0 0 0 0 0 0"},
    {"accessor 4", "0 0 0 0 0 0 0 0 1"}}},
  {"PointTrackKeyThatStoresNothing",
   Mesh(kTriangle + ", " + PointTrack({kStill, "", kLifted})),
   {{"meshes/0/extras", R"({"targetNames":["curve0","curve1","curve2"]})"},
    {"meshes/0/primitives/0/targets", R"([{"POSITION":2},{},{"POSITION":3}])"},
    {"bufferViews/4/buffer", "1"}}},
  {"PosesComeBeforeThePointTrack",
   Mesh(Posed(kBase + ", " + kLift) + ", " + PointTrack({kStill, kLifted})),
   {{"meshes/0/extras", R"({"targetNames":["Lift"]})"}}},
  // of the animation: the target without positions has no view
  {"PointTrackBesideABasePose",
   Mesh(Posed(kBase) + ", " + PointTrack({kStill, kLifted})),
   {{"meshes/0/extras", R"({"targetNames":["curve0","curve1"]})"}}},
};

INSTANTIATE_TEST_SUITE_P(Morphs, SavedScene, testing::ValuesIn(kMorphCases), RowName());

// Targets that fail: the mesh stays, the output tells.

struct DroppedCase
{
  const char* name;
  std::string members;
  const char* message;
};

constexpr char kOtherCount[] = "Illegal state: Condition positions.GetCount() == ToPoly(op)->GetPointCount() not fulfilled.";
constexpr char kTooFew[] = "Illegal state: Condition positions.GetCount() >= op->GetPointCount() not fulfilled.";

const DroppedCase kDroppedCases[] = {
  {"FewerPoints", Posed(kBase + R"(, {"name": "P", "points": [0,0,0]})"), kOtherCount},
  {"MorePoints", Posed(kBase + R"(, {"name": "P", "points": [0,0,0, 0,0,0, 0,0,0, 0,0,0]})"), kOtherCount},
  {"LinkToAGroup", Posed(kBase + R"(, {"name": "P", "object": 5})") + R"(, "children": [{"id": 5, "type": 5140, "name": "G"}])",
   kOtherCount},
  {"NeitherPointsNorLink", Posed(kBase + R"(, {"name": "P"})"), "Illegal state: Condition morphNode not fulfilled."},
  {"KeyOfFewerPoints", kTriangle + ", " + PointTrack({kStill, "0,0,0, 100,0,0"}), kTooFew},
};

class DroppedTargets : public testing::TestWithParam<DroppedCase>
{};

TEST_P(DroppedTargets, LeaveTheMesh)
{
  SavedFile file(SceneText(Mesh(GetParam().members, "T ä")), {});
  ASSERT_EQ(file.Report().error, "");
  EXPECT_EQ(file.At("meshes/0/primitives/0/targets"), "-");
  EXPECT_EQ(file.At("meshes/0/extras"), "-");
  EXPECT_EQ(file.At("meshes/0/weights"), "-");
  EXPECT_EQ(file.At("mesh 0 POSITION"), "0 0 0 1 0 0 0 1 0");
  EXPECT_EQ(file.At("mesh 0 indices"), "2 1 0");
  const std::string line = std::string("Couldn't export morph targets for 'T ä': ") + GetParam().message;
  const std::vector<std::string>& lines = file.Host().Diagnostics();
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(), [&](const std::string& text) { return text.find(line) != text.npos; }), 1)
    << line;
}

INSTANTIATE_TEST_SUITE_P(Rows, DroppedTargets, testing::ValuesIn(kDroppedCases), RowName());

TEST(MorphsOfASplitObject, AreCutAsItsPointsAre)
{
  // The polygons 0 and 2 stay with the points 0, 1, 2 and 4; polygon 1 goes with the points 1 to 3.
  const std::string members = R"("materials": [{"id": 10, "type": 5703, "name": "Red", "channels": {}}],
    "objects": [{"id": 1, "type": 5100, "name": "A", "points": [0,0,0, 100,0,0, 0,100,0, 100,100,0, 0,200,0],
    "polygons": [0,1,2,2, 1,3,2,2, 0,2,4,4], "tags": [
    {"id": 2, "type": 5673, "name": "s", "polygons": [[1,1]]},
    {"id": 4, "type": 5616, "name": "u", "material": 10, "parameters": {"1006": "s"}},
    {"id": 5, "type": 1024237, "morphs": [{"name": "Default", "points": [0,0,0, 100,0,0, 0,100,0, 100,100,0, 0,200,0]},
      {"name": "Own", "strength": 1.0, "points": [0,0,0, 100,0,0, 0,100,100, 100,100,200, 0,200,300]},
      {"name": "Linked", "object": 6}]}]},
    {"id": 6, "name": "L", "type": 5100, "editor": 1, "render": 1, "polygons": [],
      "points": [100,0,0, 300,0,0, 300,100,0, 500,100,0, 500,200,0]}])";
  const SavedFile file(SceneText(members), {});
  ASSERT_EQ(file.Report().error, "");
  const auto target = [&](const std::string& mesh, const std::string& index)
  { return file.At("accessor " + file.At("meshes/" + mesh + "/primitives/0/targets/" + index + "/POSITION")); };
  EXPECT_EQ(file.At("meshes/0/name"), "\"A\"");
  EXPECT_EQ(file.At("mesh 0 POSITION"), "0 0 0 1 0 0 0 1 0 0 2 0");
  EXPECT_EQ(target("0", "0"), "0 0 0 0 0 0 0 0 -1 0 0 -3");
  EXPECT_EQ(target("0", "1"), "1 0 0 2 0 0 3 0 0 5 0 0");
  EXPECT_EQ(file.At("meshes/1/name"), "\"A-Red\"");
  EXPECT_EQ(file.At("mesh 1 POSITION"), "1 0 0 0 1 0 1 1 0");
  EXPECT_EQ(target("1", "0"), "0 0 0 0 0 -1 0 0 -2");
  EXPECT_EQ(target("1", "1"), "2 0 0 3 0 0 4 0 0");
  EXPECT_EQ(file.At("meshes/1/extras"), R"({"targetNames":["Own","Linked"]})");
  EXPECT_EQ(file.At("meshes/1/weights"), "[1.0,0.0]");
}

}  // namespace
}  // namespace q7z::test
