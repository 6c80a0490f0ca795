// The animation of morph weights in the file: from the strengths of poses, or from the keys of a point track. Z is mirrored, which is
// nothing to weights. Documents last from 0 to 3 seconds.

#include "tests/export/savedcase.h"

namespace q7z::test
{
namespace
{

const char* const kOverall = "[[1031,19,0]]";
const char* const kFirst = "[[4000,5,0],[1101,19,0]]";
const char* const kSecond = "[[4000,5,0],[1201,19,0]]";

/// @param keys  each as "second, value, interpolation" and perhaps more members behind.
std::string Track(const std::string& id, const std::vector<std::string>& keys)
{
  std::string text;
  for (const std::string& key : keys)
    text += (text.empty() ? "" : ", ") + ("{\"time\": " + key + "}");
  return R"({"id": )" + id + R"(, "keys": [)" + text + "]}";
}

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

/// A track of the triangle's points with a key at each second.
std::string PointTrack(int keyCount, const std::string& lastPoints = "0,0,0, 100,0,0, 0,100,0")
{
  std::vector<std::string> keys;
  keys.reserve(static_cast<size_t>(keyCount));
  for (int i = 0; i < keyCount; ++i)
    keys.push_back("[" + std::to_string(i) + R"(,1], "value": 0.0, "interpolation": 2, "points": [)" +
                   (i + 1 < keyCount ? "0,0,0, 100,0,0, 0,100,0" : lastPoints) + "]");
  return ", \"tracks\": [" + Track("[[100004812,0,0]]", keys) + "]";
}

const std::string kRising = R"([0,1], "value": 0.0, "interpolation": 2)";
const std::string kRisen = R"([3,1], "value": 1.0, "interpolation": 2)";
// Two frames a second, from 0 to 1.
const std::string kShort = R"("parameters": {"1001": 2, "1003": {"time": [1,1]}}, )";

const SavedCase kWeightsCases[] = {
  {"TrackOfTheSecondAlone",
   Objects(Posed({"1.0", "0.25", "0.0"}, Track(kSecond, {kRising, kRisen}))),
   {},
   {{"animations/0/channels", R"([{"sampler":0,"target":{"node":0,"path":"weights"}}])"},
    {"animations/0/samplers", R"([{"input":4,"interpolation":"LINEAR","output":5}])"},
    {"accessors/5/type", "\"SCALAR\""},
    {"accessor 4", "0 3"},
    {"accessor 5", "0.25 0 0.25 1"}}},
  {"OverallStrengthMultiplies",
   Objects(Posed({"0.5", "0.8", "0.0"},
                 Track(kFirst, {R"([0,1], "value": 0.8, "interpolation": 2)", R"([3,1], "value": 0.8, "interpolation": 2)"}))),
   {},
   {{"accessor 5", "0.4 0 0.4 0"}}},
  {"OverallStrengthMoves",
   Objects(Posed({"0.0", "0.5", "0.25"}, Track(kOverall, {kRising, kRisen}))),
   {},
   {{"accessor 4", "0 3"}, {"accessor 5", "0 0 0.5 0.25"}}},
  {"Tangents",
   Objects(Posed({"0.5", "0.0", "0.25"},
                 Track(kFirst, {R"([0,1], "value": 0.0, "interpolation": 1)",
                                R"([1,1], "value": 1.0, "interpolation": 1, "left": {"time": [-1,3], "value": -0.5},
                                   "right": {"time": [1,3], "value": 0.75})",
                                R"([3,1], "value": 0.0, "interpolation": 1)"}))),
   {},
   // For each key what leads to it, what it is, what leads away; two targets each. Strength multiplies what it is alone.
   {{"animations/0/samplers/0/interpolation", "\"CUBICSPLINE\""},
    {"accessor 4", "0 1 3"},
    {"accessor 5", "0 0 0 0.125 0 0 -0.5 0 0.5 0.125 0.75 0 0 0 0 0.125 0 0"}}},
  {"Steps",
   Objects(Posed({"1.0", "0.0", "0.25"},
                 Track(kFirst, {R"([0,1], "value": 0.0, "interpolation": 3)", R"([1,1], "value": 1.0, "interpolation": 3)"}))),
   {},
   {{"animations/0/samplers/0/interpolation", "\"STEP\""}, {"accessor 4", "0 1 3"}, {"accessor 5", "0 0.25 1 0.25 1 0.25"}}},
  {"Baked",
   kShort + Objects(Posed({"1.0", "0.0", "0.25"}, Track(kFirst, {kRising, R"([1,1], "value": 1.0, "interpolation": 2)"}))),
   {{kBakeAnimationParameter, true}},
   {{"animations/0/samplers/0/interpolation", "\"LINEAR\""}, {"accessor 4", "0 1"}, {"accessor 5", "0 0.25 1 0.25"}}},
  {"PointTrack",
   Objects(R"({"id": 1, "name": "T", )" + kTriangle + PointTrack(4) + "}"),
   {},
   {{"animations/0/samplers", R"([{"input":6,"interpolation":"LINEAR","output":7}])"},
    {"animations/0/channels/0/target", R"({"node":0,"path":"weights"})"},
    {"accessor 6", "0 1 2 3"},
    {"accessor 7", "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1"}}},
  // A mesh without targets has no weights to move.
  {"LostPoses",
   Objects(Posed({"1.0", "0.0", "0.25"}, Track(kFirst, {kRising, kRisen}), ", 0,0,0")),
   {},
   {{"meshes/0/weights", "-"}, {"animations", "-"}}},
  {"LostKeyTargets",
   Objects(R"({"id": 1, "name": "T", )" + kTriangle + PointTrack(2, "0,0,0") + "}"),
   {},
   {{"meshes/0/weights", "-"}, {"animations", "-"}}},
};

INSTANTIATE_TEST_SUITE_P(Weights, SavedScene, testing::ValuesIn(kWeightsCases), RowName());

}  // namespace
}  // namespace q7z::test
