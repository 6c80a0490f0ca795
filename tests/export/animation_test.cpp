// What stands in the file for the tracks of an object. Scenes are in centimetres and files in metres, so that 100 becomes 1; Z is
// mirrored. The document goes from 0 to 3 seconds.

#include "tests/export/savedcase.h"

namespace q7z::test
{
namespace
{

/// A scene of a triangle. @param members  beside its own. @param document  members of the document, with a comma behind them.
std::string Tracks(const std::string& members, const std::string& document = "")
{
  return document + Objects(R"({"id": 1, "name": "T", )" + kTriangle + ", " + members + "}");
}

// Ids of tracks.
#define X_TRACK R"("id": [[903, 23, 0], [1000, 19, 0]])"
#define Y_TRACK R"("id": [[903, 23, 0], [1001, 19, 0]])"
#define HEADING_TRACK R"("id": [[904, 23, 0], [1000, 19, 0]])"
#define PITCH_TRACK R"("id": [[904, 23, 0], [1001, 19, 0]])"
#define SCALE_Y_TRACK R"("id": [[905, 23, 0], [1001, 19, 0]])"

// Keys that are linear.
#define KEY(seconds, value) R"({"time": [)" #seconds R"(, 1], "value": )" #value R"(, "interpolation": 2})"
#define STEP_KEY(seconds, value) R"({"time": [)" #seconds R"(, 1], "value": )" #value R"(, "interpolation": 3})"

// The accessors of the mesh are 0 and 1; those of the first sampler follow.
const SavedCase kTrackCases[] = {
  {"OneAxis",
   Tracks(R"("tracks": [{)" X_TRACK R"(, "keys": [)" KEY(0, 0.0) "," KEY(3, 300.0) "]}]"),
   {},
   {{"animations",
     R"([{"samplers":[{"input":2,"interpolation":"LINEAR","output":3}],"channels":[{"sampler":0,"target":{"node":0,"path":"translation"}}]}])"},
    {"accessor 2", "0 3"},
    {"accessor 3", "0 0 0 3 0 0"},
    {"accessors/2", R"({"bufferView":2,"type":"SCALAR","componentType":5126,"count":2,"byteOffset":0,"min":[0.0],"max":[3.0]})"},
    {"accessors/3/byteOffset", "8"},
    {"accessors/3/type", "\"VEC3\""},
    {"bufferViews/2", R"({"buffer":1,"byteOffset":0,"byteLength":32})"},
    {"buffers/1/byteLength", "32"},
    {"nodes/0/translation", "[0.0,0.0,-0.0]"}}},
  {"InTheBinaryForm",
   Tracks(R"("tracks": [{)" X_TRACK R"(, "keys": [)" KEY(0, 0.0) "," KEY(3, 300.0) "]}]"),
   {{kFileFormatParameter, kGlbFormat}},
   {{"accessor 3", "0 0 0 3 0 0"},
    {"bufferViews/2", R"({"buffer":0,"byteOffset":44,"byteLength":32})"},
    {"buffers/0/byteLength", "76"},
    {"buffers/1", "-"}}},
  {"ScaleIsFilledWithOne",
   Tracks(R"("tracks": [{)" SCALE_Y_TRACK R"(, "keys": [)" KEY(0, 1.0) "," KEY(3, 2.0) "]}]"),
   {},
   {{"animations/0/channels/0/target/path", "\"scale\""}, {"accessor 3", "1 1 1 1 2 1"}}},
  {"KeysMeetAtTheTimesOfAll",
   Tracks(R"("tracks": [{)" X_TRACK R"(, "keys": [)" KEY(0, 0.0) "," KEY(3, 300.0) R"(]}, {)" Y_TRACK
                                                                                   R"(, "keys": [)" KEY(1, 100.0) "]}]"),
   {},
   {{"accessor 2", "0 1 3"}, {"accessor 3", "0 1 0 1 1 0 3 1 0"}, {"animations/0/samplers/0/interpolation", "\"LINEAR\""}}},
  {"LateStart",
   Tracks(R"("tracks": [{)" X_TRACK R"(, "keys": [)" KEY(0, 0.0) "," KEY(3, 300.0) "]}]",
          R"("parameters": {"1002": {"time": [2, 1]}},)"),
   {},
   {{"accessor 2", "0 1"}, {"accessor 3", "2 0 0 3 0 0"}}},
  {"OneMoment",
   Tracks(R"("tracks": [{)" X_TRACK R"(, "keys": [)" KEY(0, 0.0) "," KEY(3, 300.0) "]}]",
          R"("parameters": {"1003": {"time": [0, 1]}},)"),
   {},
   {{"animations", "-"}, {"buffers/1", "-"}, {"accessors/2", "-"}}},
  {"Tangents",
   Tracks(R"("tracks": [{)" X_TRACK R"(, "keys": [
      {"time": [0, 1], "value": 0.0, "interpolation": 1, "right": {"time": [1, 1], "value": 30.0}},
      {"time": [3, 1], "value": 300.0, "interpolation": 1, "left": {"time": [-1, 1], "value": -20.0}}]}])"),
   {},
   {{"animations/0/samplers/0/interpolation", "\"CUBICSPLINE\""},
    {"accessor 3", "0 0 0 0 0 0 0.3 0 0 -0.2 0 0 3 0 0 0 0 0"},
    {"accessors/3/count", "6"}}},
  {"TangentsOfZero",
   Tracks(R"("tracks": [{)" X_TRACK R"(, "keys": [
      {"time": [0, 1], "value": 0.0, "interpolation": 1, "right": {"time": [1, 1], "value": 0.0}},
      {"time": [3, 1], "value": 300.0, "interpolation": 1}]}])"),
   {},
   {{"animations/0/samplers/0/interpolation", "\"LINEAR\""}, {"accessor 3", "0 0 0 3 0 0"}}},
  {"Steps",
   Tracks(R"("tracks": [{)" X_TRACK R"(, "keys": [)" STEP_KEY(0, 0.0) "," STEP_KEY(1, 100.0) "," STEP_KEY(3, 0.0) "]}]"),
   {},
   {{"animations/0/samplers/0/interpolation", "\"STEP\""}, {"accessor 2", "0 1 3"}, {"accessor 3", "0 0 0 1 0 0 0 0 0"}}},
  {"FixedTransform",
   Tracks(R"("base": {"offset": [0,100,0], "axisX": [2,0,0], "axisY": [0,1,0], "axisZ": [0,0,1]}, "baseScale": [3,1,1],
      "tracks": [{)" X_TRACK R"(, "keys": [)" KEY(0, 0.0) "," KEY(3, 100.0) R"(]},
                 {)" SCALE_Y_TRACK R"(, "keys": [)" KEY(0, 1.0) "," KEY(3, 2.0) "]}]"),
   {},
   {{"accessor 3", "0 1 0 2 1 0"}, {"accessor 5", "3 1 1 3 2 1"}}},
  // Half of the heading about Y, mirrored, and w negative.
  {"QuarterTurn",
   Tracks(R"("tracks": [{)" HEADING_TRACK R"(, "keys": [)" KEY(0, 0.0) "," KEY(3, 1.5707963267948966) "]}]"),
   {},
   {{"accessor 2", "0 3"}, {"accessor 3", "0 0 0 -1 0 -0.70710678 0 -0.70710678"}, {"accessors/3/type", "\"VEC4\""}}},
  // The nearest way to 4 radians is -2.2831853.
  {"TheShorterWayRound",
   Tracks(R"("tracks": [{)" HEADING_TRACK R"(, "keys": [)" KEY(0, 0.0) "," KEY(3, 4.0) "]}]"),
   {},
   {{"accessor 2", "0 3"}, {"accessor 3", "0 0 0 -1 0 0.90929743 0 -0.41614684"}}},
  {"HalfATurnGetsAKeyInTheMiddle",
   Tracks(R"("tracks": [{)" HEADING_TRACK R"(, "keys": [)" KEY(0, 0.0) "," KEY(3, 3.141592653589793) "]}]"),
   {},
   {{"accessor 2", "0 1.5 3"}, {"accessor 3", "0 0 0 -1 0 0.70710678 0 -0.70710678 0 1 0 0"}}},
  // A file's pitch is about -X in the mirror; the order of the object's angles puts the pitch first.
  {"OrderOfTheObject",
   Tracks(R"("rotationOrder": 0, "tracks": [{)" HEADING_TRACK R"(, "keys": [)" KEY(0, 0.0) "," KEY(3, 1.5707963267948966) "]}]"),
   {},
   {{"accessor 3", "0 0 0 -1 -0.70710678 0 0 -0.70710678"}}},
  {"TangentsOfRotationsAreDropped",
   Tracks(R"("tracks": [{)" HEADING_TRACK R"(, "keys": [
      {"time": [0, 1], "value": 0.0, "interpolation": 1, "right": {"time": [1, 1], "value": 3.0}},
      {"time": [3, 1], "value": 1.5707963267948966, "interpolation": 1}]}])"),
   {},
   {{"animations/0/samplers/0/interpolation", "\"LINEAR\""}, {"accessors/3/count", "2"}}},
};

INSTANTIATE_TEST_SUITE_P(Tracks, SavedScene, testing::ValuesIn(kTrackCases), RowName());

// Joints move whatever is asked for; the set of another object stands behind in the order of the nodes.
TEST(SavedTracksOfJoints, AreWrittenWithoutTheOption)
{
  const std::string tracks = R"("tracks": [{)" X_TRACK R"(, "keys": [)" KEY(0, 0.0) "," KEY(3, 300.0) "]}]";
  const std::string child = std::string(R"("children": [{"id": 3, "name": "T", )") + kTriangle + "}]";
  const SavedFile file(SceneText(R"("objects": [{"id": 1, "type": 1019362, "name": "J", )" + tracks + ", " + child + "}]"),
                       {{kExportTransformAnimationParameter, false}});
  ASSERT_TRUE(file.Report().Succeeded()) << file.Report().error;
  EXPECT_EQ(file.At("animations/0/channels"), R"([{"sampler":0,"target":{"node":0,"path":"translation"}}])");
  EXPECT_EQ(file.At("nodes/0/name"), "\"J\"");
}

// Without the mirror a camera looks the other way: each key turns by half a turn about the camera's own Y.
TEST(SavedTracksOfCameras, TurnWithoutTheMirror)
{
  const std::string scene = SceneText(
    R"("objects": [{"id": 1, "type": 5103, "name": "C", "parameters": {"1001": 0, "1008": 1.0, "4600": 0.5}, "tracks": [{)" HEADING_TRACK
    R"(, "keys": [)" KEY(0, 0.0) "," KEY(3, 1.5707963267948966) "]}]}]");
  // A heading of pi, and of 3 pi / 2.
  const std::pair<bool, const char*> rows[] = {{true, "0 0 0 -1 0 -0.70710678 0 -0.70710678"},
                                               {false, "0 1 0 0 0 0.70710678 0 0.70710678"}};
  for (const auto& [flipZ, expected] : rows)
  {
    const SavedFile file(scene, {{kExportFlipZParameter, flipZ}});
    ASSERT_TRUE(file.Report().Succeeded()) << file.Report().error;
    EXPECT_TRUE(IsNear(file.At("accessor 1"), expected)) << file.At("accessor 1");
  }
}

}  // namespace
}  // namespace q7z::test
