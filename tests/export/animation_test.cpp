// What stands in the file for the tracks of an object, as they are or baked, and of its morphs. Scenes are in centimetres and files in metres, so that 100 becomes 1; Z is
// mirrored. The document goes from 0 to 3 seconds.

#include <algorithm>

#include "tests/export/savedcase.h"

namespace q7z::test
{
namespace
{

constexpr const char* kQuarterTurn = "0=0.0 3=1.5707963267948966";

/// A triangle with tracks. @param members  more of its own. @param document  members of the document, with a comma behind them.
std::string Moving(const std::string& tracks, const std::string& members = "", const std::string& document = "")
{
  return document + Objects(R"({"id": 1, "name": "T", )" + kTriangle + R"(, "tracks": [)" + tracks + "]" + members + "}");
}

// The accessors of the mesh are 0 and 1; those of the first sampler follow.
const SavedCase kTrackCases[] = {
  {"OneAxis",
   Moving(Track(kX, "0=0.0 3=300.0")),
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
   Moving(Track(kX, "0=0.0 3=300.0")),
   {{"accessor 3", "0 0 0 3 0 0"},
    {"bufferViews/2", R"({"buffer":0,"byteOffset":44,"byteLength":32})"},
    {"buffers/0/byteLength", "76"},
    {"buffers/1", "-"}},
   {{kFileFormatParameter, kGlbFormat}}},
  {"ScaleIsFilledWithOne",
   Moving(Track(kScaleY, "0=1.0 3=2.0")),
   {{"animations/0/channels/0/target/path", "\"scale\""}, {"accessor 3", "1 1 1 1 2 1"}}},
  {"KeysMeetAtTheTimesOfAll",
   Moving(Track(kX, "0=0.0 3=300.0") + ", " + Track(kY, "1=100.0")),
   {{"accessor 2", "0 1 3"}, {"accessor 3", "0 1 0 1 1 0 3 1 0"}, {"animations/0/samplers/0/interpolation", "\"LINEAR\""}}},
  {"KeyBehindTheEnd", Moving(Track(kX, "0=0.0 5=500.0")), {{"accessor 2", "0 3"}, {"accessor 3", "0 0 0 3 0 0"}}},
  {"NotWanted",
   Moving(Track(kX, "0=0.0 3=300.0")),
   {{"animations", "-"}, {"nodes/0/translation", "[0.0,0.0,-0.0]"}},
   {{kExportTransformAnimationParameter, false}}},
  {"LateStart",
   Moving(Track(kX, "0=0.0 3=300.0"), "", R"("parameters": {"1002": {"time": [2, 1]}}, )"),
   {{"accessor 2", "0 1"}, {"accessor 3", "2 0 0 3 0 0"}}},
  {"OneMoment",
   Moving(Track(kX, "0=0.0 3=300.0"), "", R"("parameters": {"1003": {"time": [0, 1]}}, )"),
   {{"animations", "-"}, {"buffers/1", "-"}, {"accessors/2", "-"}}},
  {"Tangents",
   Moving(Track(kX, "0=0.0>1,30.0 3=300.0<-1,-20.0", 1)),
   {{"animations/0/samplers/0/interpolation", "\"CUBICSPLINE\""},
    {"accessor 3", "0 0 0 0 0 0 0.3 0 0 -0.2 0 0 3 0 0 0 0 0"},
    {"accessors/3/count", "6"}}},
  {"TangentsOfZero",
   Moving(Track(kX, "0=0.0>1,0.0 3=300.0", 1)),
   {{"animations/0/samplers/0/interpolation", "\"LINEAR\""}, {"accessor 3", "0 0 0 3 0 0"}}},
  {"Steps",
   Moving(Track(kX, "0=0.0 1=100.0 3=0.0", 3)),
   {{"animations/0/samplers/0/interpolation", "\"STEP\""}, {"accessor 2", "0 1 3"}, {"accessor 3", "0 0 0 1 0 0 0 0 0"}}},
  {"FixedTransform",
   Moving(Track(kX, "0=0.0 3=100.0") + ", " + Track(kScaleY, "0=1.0 3=2.0"),
          R"(, "base": {"offset": [0,100,0], "axisX": [2,0,0], "axisY": [0,1,0], "axisZ": [0,0,1]}, "baseScale": [3,1,1])"),
   {{"accessor 3", "0 1 0 2 1 0"}, {"accessor 5", "3 1 1 3 2 1"}}},
  // Half of the heading about Y, mirrored, and w negative.
  {"QuarterTurn",
   Moving(Track(kHeading, kQuarterTurn)),
   {{"accessor 2", "0 3"}, {"accessor 3", "0 0 0 -1 0 -0.70710678 0 -0.70710678"}, {"accessors/3/type", "\"VEC4\""}}},
  // The nearest way to 4 radians is -2.2831853.
  {"TheShorterWayRound",
   Moving(Track(kHeading, "0=0.0 3=4.0")),
   {{"accessor 2", "0 3"}, {"accessor 3", "0 0 0 -1 0 0.90929743 0 -0.41614684"}}},
  {"HalfATurnGetsAKeyInTheMiddle",
   Moving(Track(kHeading, "0=0.0 3=3.141592653589793")),
   {{"accessor 2", "0 1.5 3"}, {"accessor 3", "0 0 0 -1 0 0.70710678 0 -0.70710678 0 1 0 0"}}},
  // A file's pitch is about -X in the mirror; the order of the object's angles puts the pitch first.
  {"OrderOfTheObject",
   Moving(Track(kHeading, kQuarterTurn), R"(, "rotationOrder": 0)"),
   {{"accessor 3", "0 0 0 -1 -0.70710678 0 0 -0.70710678"}}},
  {"TangentsOfRotationsAreDropped",
   Moving(Track(kHeading, "0=0.0>1,3.0 3=1.5707963267948966", 1)),
   {{"animations/0/samplers/0/interpolation", "\"LINEAR\""}, {"accessors/3/count", "2"}}},
};

INSTANTIATE_TEST_SUITE_P(Tracks, SavedScene, testing::ValuesIn(kTrackCases), RowName());

// Joints move whatever is asked for; the set of another object stands behind in the order of the nodes.
TEST(SavedTracksOfJoints, AreWrittenWithoutTheOption)
{
  const std::string tracks = R"("tracks": [)" + Track(kX, "0=0.0 3=300.0") + "]";
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
  const std::string scene =
    SceneText(Objects(R"({"id": 1, "type": 5103, "name": "C", "parameters": {"1001": 0, "1008": 1.0, "4600": 0.5}, "tracks": [)" +
                      Track(kHeading, kQuarterTurn) + "]}"));
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

// Baking: what moves is sampled at every frame, what does not loses its tracks.

/// Four frames from 0 seconds to 1, and a triangle.
std::string Frames(const std::string& tracks, const std::string& members = "",
                   const std::string& times = R"("1001": 4, "1003": {"time": [1,1]})")
{
  return Moving(tracks, members, R"("parameters": {)" + times + "}, ");
}

const Parameters kBake = {{kBakeAnimationParameter, true}};

const SavedCase kBakeCases[] = {
  // A vector moves as a whole; the rotation and the scale have none.
  {"VectorsThatMove",
   Frames(Track(kX, "0=0.0 1=400.0"), R"(, "position": [0,700,0])"),
   {{"animations/0/samplers", R"([{"input":2,"interpolation":"LINEAR","output":3}])"},
    {"accessor 2", "0 0.25 0.5 0.75 1"},
    {"accessor 3", "0 7 0 1 7 0 2 7 0 3 7 0 4 7 0"}},
   kBake},
  {"OverABaseTransform",
   Frames(Track(kX, "0=0.0 1=400.0"),
          R"(, "base": {"offset": [1000,0,0], "axisX": [0,1,0], "axisY": [-1,0,0], "axisZ": [0,0,1]})"),
   {{"animations/0/channels/1", "-"}, {"accessor 3", "10 0 0 10 1 0 10 2 0 10 3 0 10 4 0"}},
   kBake},
  {"UnderAParentThatMoves",
   Frames(Track(kX, "0=0.0 1=400.0"),
          R"(, "children": [{"id": 2, "name": "C", )" + kTriangle + R"(, "tracks": [)" + Track(kY, "0=0.0 1=800.0") + "]}]"),
   {{"animations/0/channels/0/target/node", "0"},
    {"accessor 3", "0 0 0 1 0 0 2 0 0 3 0 0 4 0 0"},
    {"animations/0/channels/1/target/node", "1"},
    {"accessor 7", "0 0 0 0 2 0 0 4 0 0 6 0 0 8 0"}},
   kBake},
  {"ScaleIsTheLengthOfTheAxes",
   Frames(Track(kScaleX, "0=-1.0 1=-5.0"), R"(, "scale": [-1,2,3])"),
   {{"accessor 3", "1 2 3 2 2 3 3 2 3 4 2 3 5 2 3"}},
   kBake},
  {"SkinnedMeshesLoseTheirTracks",
   Frames(Track(kX, "0=0.0 1=400.0"), R"(, "tags": [{"id": 2, "type": 1019365, "joints": [3], "weights": [[[0,1.0]]]}]},
      {"id": 3, "type": 1019362, "name": "J", "tracks": [)" +
                                        Track(kY, "0=0.0 1=400.0") + "]"),
   {{"nodes/0/name", "\"J\""}, {"animations/0/channels", R"([{"sampler":0,"target":{"node":0,"path":"translation"}}])"}},
   {{kBakeAnimationParameter, true}, {kExportSkinsParameter, true}}},
  {"TheDocumentStandsWhereItStood",
   R"("time": [1,2], )" + Frames(Track(kX, "0=0.0 1=800.0")),
   {{"nodes/0/translation", "[4.0,0.0,-0.0]"}},
   kBake},
  // 130 / 100 is frame 1, 370 / 100 frame 3. The file starts between the first two frames, and ends behind the last.
  {"FramesThatTheTimesLieIn",
   Frames(Track(kX, "0=0.0 1=1000.0"), "", R"("1001": 10, "1002": {"time": [13,100]}, "1003": {"time": [37,100]})"),
   {{"accessor 2", "0 0.07 0.17 0.24"}, {"accessor 3", "1.3 0 0 2 0 0 3 0 0 3 0 0"}},
   kBake},
};
INSTANTIATE_TEST_SUITE_P(Baking, SavedScene, testing::ValuesIn(kBakeCases), RowName());

// Slow motion is lost, however far it goes in the end.
TEST(Baking, DropsWhatHardlyMoves)
{
  const std::pair<double, bool> rows[] = {{0, false}, {0.000099, false}, {0.000101, true}, {-0.000101, true}};
  for (const auto& [step, isKept] : rows)
  {
    const SavedFile file(SceneText(Frames(Track(kHeading, "0=0.5 1=0.5") + ", " +
                                          Track(kScaleX, "0=1.0 1=" + std::to_string(1 + 4 * step)))),
                         kBake);
    EXPECT_EQ(file.Count("animations/0/channels"), isKept ? 1 : 0) << step;
  }
}

/// What stands in the file, in the notation of accessors.
std::string Save(const std::string& scene, const Parameters& parameters, const std::string& path)
{
  std::string text = SavedFile(SceneText(scene), parameters).At(path);
  std::replace(text.begin(), text.end(), ',', ' ');
  return text;
}

// In any order of angles a frame holds what the object would have had if it had stood still there.
TEST(Baking, KeepsTheOrderOfTheAngles)
{
  for (int order = 0; order <= 6; ++order)
  {
    const std::string members = R"(, "rotationOrder": )" + std::to_string(order) + R"(, "rotation": [)";
    std::string expected;
    for (const char* const heading : {"0.1", "0.2", "0.3", "0.4", "0.5"})
    {
      const std::string rotation = Save(Frames("", members + heading + ",0.2,0.3]"), {}, "nodes/0/rotation");
      expected += (expected.empty() ? "" : " ") + rotation.substr(1, rotation.size() - 2);
    }
    const std::string baked = Save(Frames(Track(kHeading, "0=0.1 1=0.5"), members + "0.1,0.2,0.3]"), kBake, "accessor 3");
    EXPECT_PRED2(IsNear, baked, expected) << order;
  }
}

TEST(Baking, NeedsFramesAndSomethingToWrite)
{
  const struct
  {
    bool transforms;
    bool morphs;
    const char* times;
    bool isBaked;
  } rows[] = {{true, false, R"("1001": 4, "1003": {"time": [1,1]})", true},
              {true, true, R"("1001": 4, "1002": {"time": [1,1]}, "1003": {"time": [1,1]})", false},
              {true, true, R"("1001": 4, "1003": {"time": [1,5]})", false},
              {true, true, R"("1001": 0, "1003": {"time": [1,1]})", false},
              {true, true, R"("1001": -4, "1003": {"time": [1,1]})", false}};
  for (const auto& row : rows)
  {
    const SavedFile file(SceneText(Frames(Track(kX, "0=0.0 1=400.0"), "", row.times)),
                         {{kBakeAnimationParameter, true},
                          {kExportTransformAnimationParameter, row.transforms},
                          {kExportMorphsParameter, row.morphs}});
    EXPECT_EQ(file.At("accessors/2/count") == "5", row.isBaked) << row.times;
  }
}

// A time range is a number in a file: it must not make the program ask for all the memory there is.
TEST(Baking, OfAnEndlessTimeRangeIsOutOfMemory)
{
  const SavedFile file(SceneText(Frames(Track(kX, "0=0.0 1=400.0"), "", R"("1001": 1000000, "1003": {"time": [1000000,1]})")),
                       kBake);
  EXPECT_EQ(file.Report().returnValue, -7);
}

// The animation of morph weights: from the strengths of poses, or from the keys of a point track.

const char* const kOverall = "[[1031,19,0]]";
const char* const kFirst = "[[4000,5,0],[1101,19,0]]";
const char* const kSecond = "[[4000,5,0],[1201,19,0]]";

/// A triangle with two poses. @param strengths  of the poses, with the overall strength in front.
std::string Posed(const std::vector<std::string>& strengths, const std::string& tracks, const std::string& lastPoints = "",
                  const std::string& members = "")
{
  const std::string points = "[0,0,0, 100,0,0, 0,100,0";
  return R"({"id": 1, "name": "T", )" + kTriangle + members + R"(, "tags": [{"id": 2, "type": 1024237, "parameters": {"1031": )" +
         strengths[0] + R"(}, "morphs": [{"name": "Default", "points": )" + points + R"(]}, {"name": "A", "strength": )" +
         strengths[1] + R"(, "points": )" + points + R"(]}, {"name": "B", "strength": )" + strengths[2] + R"(, "points": )" +
         points + lastPoints + R"(]}], "tracks": [)" + tracks + "]}]}";
}

constexpr const char* kRising = "0=0.0 3=1.0";
// Two frames a second, from 0 to 1.
const std::string kShort = R"("parameters": {"1001": 2, "1003": {"time": [1,1]}}, )";

const SavedCase kWeightsCases[] = {
  {"TrackOfTheSecondAlone",
   Objects(Posed({"1.0", "0.25", "0.0"}, Track(kSecond, kRising))),
   {{"animations/0/channels", R"([{"sampler":0,"target":{"node":0,"path":"weights"}}])"},
    {"animations/0/samplers", R"([{"input":4,"interpolation":"LINEAR","output":5}])"},
    {"accessors/5/type", "\"SCALAR\""},
    {"accessor 4", "0 3"},
    {"accessor 5", "0.25 0 0.25 1"}}},
  {"OverallStrengthMultiplies",
   Objects(Posed({"0.5", "0.8", "0.0"}, Track(kFirst, "0=0.8 3=0.8"))),
   {{"accessor 5", "0.4 0 0.4 0"}}},
  {"OverallStrengthMoves",
   Objects(Posed({"0.0", "0.5", "0.25"}, Track(kOverall, kRising))),
   {{"accessor 4", "0 3"}, {"accessor 5", "0 0 0.5 0.25"}}},
  {"Tangents",
   Objects(Posed(
     {"0.5", "0.0", "0.25"},
     Track(
       kFirst, "0=0.0 1=1.0<-1/3,-0.5>1/3,0.75 3=0.0",
       1))),  // For each key what leads to it, what it is, what leads away; two targets each. Strength multiplies what it is alone.
   {{"animations/0/samplers/0/interpolation", "\"CUBICSPLINE\""},
    {"accessor 4", "0 1 3"},
    {"accessor 5", "0 0 0 0.125 0 0 -0.5 0 0.5 0.125 0.75 0 0 0 0 0.125 0 0"}}},
  {"Steps",
   Objects(Posed({"1.0", "0.0", "0.25"}, Track(kFirst, "0=0.0 1=1.0", 3))),
   {{"animations/0/samplers/0/interpolation", "\"STEP\""}, {"accessor 4", "0 1 3"}, {"accessor 5", "0 0.25 1 0.25 1 0.25"}}},
  {"Baked",
   kShort + Objects(Posed({"1.0", "0.0", "0.25"}, Track(kFirst, "0=0.0 1=1.0"))),
   {{"animations/0/samplers/0/interpolation", "\"LINEAR\""}, {"accessor 4", "0 1"}, {"accessor 5", "0 0.25 1 0.25"}},
   {{kBakeAnimationParameter, true}}},
  {"PointTrack",
   Objects(R"({"id": 1, "name": "T", )" + kTriangle + ", " + PointTrack({kStill, kStill, kStill, kStill}) + "}"),
   {{"animations/0/samplers", R"([{"input":6,"interpolation":"LINEAR","output":7}])"},
    {"animations/0/channels/0/target", R"({"node":0,"path":"weights"})"},
    {"accessor 6", "0 1 2 3"},
    {"accessor 7", "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1"}}},
  {"LeftOut",
   Objects(Posed({"1.0", "0.0", "0.25"}, Track(kFirst, kRising))),
   {{"animations", "-"}},
   {{kExportMorphsParameter, false}}},
  // A mesh without targets has no weights to move.
  {"LostPoses",
   Objects(Posed({"1.0", "0.0", "0.25"}, Track(kFirst, kRising), ", 0,0,0")),
   {{"meshes/0/weights", "-"}, {"animations", "-"}}},
  {"LostKeyTargets",
   Objects(R"({"id": 1, "name": "T", )" + kTriangle + ", " + PointTrack({kStill, "0,0,0"}) + "}"),
   {{"meshes/0/weights", "-"}, {"animations", "-"}}},
};

INSTANTIATE_TEST_SUITE_P(Weights, SavedScene, testing::ValuesIn(kWeightsCases), RowName());

}  // namespace
}  // namespace q7z::test
