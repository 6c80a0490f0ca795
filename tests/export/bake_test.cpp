// Baking: what moves is sampled at every frame, what does not loses its tracks.

#include "tests/export/savedcase.h"

namespace q7z::test
{
namespace
{

constexpr const char* kX = "[[903,23,0],[1000,19,0]]";
constexpr const char* kY = "[[903,23,0],[1001,19,0]]";
constexpr const char* kHeading = "[[904,23,0],[1000,19,0]]";
constexpr const char* kScaleX = "[[905,23,0],[1000,19,0]]";

/// A linear track from 0 seconds to 1.
std::string Track(const std::string& id, double first, double last)
{
  return R"({"id": )" + id + R"(, "keys": [{"time": [0,1], "value": )" + std::to_string(first) +
         R"(, "interpolation": 2}, {"time": [1,1], "value": )" + std::to_string(last) + R"(, "interpolation": 2}]})";
}

/// Four frames from 0 seconds to 1, and a triangle.
std::string Moving(const std::string& tracks, const std::string& members = "",
                   const std::string& times = R"("1001": 4, "1003": {"time": [1,1]})")
{
  return R"("parameters": {)" + times + "}, " +
         Objects(R"({"id": 1, "name": "T", )" + kTriangle + R"(, "tracks": [)" + tracks + "]" + members + "}");
}

const Parameters kBake = {{kBakeAnimationParameter, true}};

const SavedCase kBakeCases[] = {
  // A vector moves as a whole; the rotation and the scale have none.
  {"VectorsThatMove",
   Moving(Track(kX, 0, 400), R"(, "position": [0,700,0])"),
   kBake,
   {{"animations/0/samplers", R"([{"input":2,"interpolation":"LINEAR","output":3}])"},
    {"accessor 2", "0 0.25 0.5 0.75 1"},
    {"accessor 3", "0 7 0 1 7 0 2 7 0 3 7 0 4 7 0"}}},
  {"OverABaseTransform",
   Moving(Track(kX, 0, 400), R"(, "base": {"offset": [1000,0,0], "axisX": [0,1,0], "axisY": [-1,0,0], "axisZ": [0,0,1]})"),
   kBake,
   {{"animations/0/channels/1", "-"}, {"accessor 3", "10 0 0 10 1 0 10 2 0 10 3 0 10 4 0"}}},
  {"UnderAParentThatMoves",
   Moving(Track(kX, 0, 400),
          R"(, "children": [{"id": 2, "name": "C", )" + kTriangle + R"(, "tracks": [)" + Track(kY, 0, 800) + "]}]"),
   kBake,
   {{"animations/0/channels/0/target/node", "0"},
    {"accessor 3", "0 0 0 1 0 0 2 0 0 3 0 0 4 0 0"},
    {"animations/0/channels/1/target/node", "1"},
    {"accessor 7", "0 0 0 0 2 0 0 4 0 0 6 0 0 8 0"}}},
  {"ScaleIsTheLengthOfTheAxes",
   Moving(Track(kScaleX, -1, -5), R"(, "scale": [-1,2,3])"),
   kBake,
   {{"accessor 3", "1 2 3 2 2 3 3 2 3 4 2 3 5 2 3"}}},
  {"SkinnedMeshesLoseTheirTracks",
   Moving(Track(kX, 0, 400), R"(, "tags": [{"id": 2, "type": 1019365, "joints": [3], "weights": [[[0,1.0]]]}]},
      {"id": 3, "type": 1019362, "name": "J", "tracks": [)" +
                               Track(kY, 0, 400) + "]"),
   {{kBakeAnimationParameter, true}, {kExportSkinsParameter, true}},
   {{"nodes/0/name", "\"J\""}, {"animations/0/channels", R"([{"sampler":0,"target":{"node":0,"path":"translation"}}])"}}},
  {"TheDocumentStandsWhereItStood",
   R"("time": [1,2], )" + Moving(Track(kX, 0, 800)),
   kBake,
   {{"nodes/0/translation", "[4.0,0.0,-0.0]"}}},
  // 130 / 100 is frame 1, 370 / 100 frame 3. The file starts between the first two frames, and ends behind the last.
  {"FramesThatTheTimesLieIn",
   Moving(Track(kX, 0, 1000), "", R"("1001": 10, "1002": {"time": [13,100]}, "1003": {"time": [37,100]})"),
   kBake,
   {{"accessor 2", "0 0.07 0.17 0.24"}, {"accessor 3", "1.3 0 0 2 0 0 3 0 0 3 0 0"}}},
};
INSTANTIATE_TEST_SUITE_P(Baking, SavedScene, testing::ValuesIn(kBakeCases), RowName());

// Slow motion is lost, however far it goes in the end.
TEST(Baking, DropsWhatHardlyMoves)
{
  const std::pair<double, bool> rows[] = {{0, false}, {0.000099, false}, {0.000101, true}, {-0.000101, true}};
  for (const auto& [step, isKept] : rows)
  {
    const SavedFile file(SceneText(Moving(Track(kHeading, 0.5, 0.5) + ", " + Track(kScaleX, 1, 1 + 4 * step))), kBake);
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
      const std::string rotation = Save(Moving("", members + heading + ",0.2,0.3]"), {}, "nodes/0/rotation");
      expected += (expected.empty() ? "" : " ") + rotation.substr(1, rotation.size() - 2);
    }
    const std::string baked = Save(Moving(Track(kHeading, 0.1, 0.5), members + "0.1,0.2,0.3]"), kBake, "accessor 3");
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
    const SavedFile file(SceneText(Moving(Track(kX, 0, 400), "", row.times)),
                         {{kBakeAnimationParameter, true},
                          {kExportTransformAnimationParameter, row.transforms},
                          {kExportMorphsParameter, row.morphs}});
    EXPECT_EQ(file.At("accessors/2/count") == "5", row.isBaked) << row.times;
  }
}

// A time range is a number in a file: it must not make the program ask for all the memory there is.
TEST(Baking, OfAnEndlessTimeRangeIsOutOfMemory)
{
  const SavedFile file(SceneText(Moving(Track(kX, 0, 400), "", R"("1001": 1000000, "1003": {"time": [1000000,1]})")), kBake);
  EXPECT_EQ(file.Report().returnValue, -7);
}

}  // namespace
}  // namespace q7z::test
