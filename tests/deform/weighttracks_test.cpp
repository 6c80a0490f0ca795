// Animated strengths of morphs: which track gets which numbers of a sampler, with which keys, and what ends an animation.

#include <algorithm>
#include <functional>

#include "host/scene/headlessposemorphtag.h"
#include "host/scene/headlesstake.h"
#include "host/scene/headlesstrack.h"
#include "plugin/module/configvariables.h"
#include "tests/deform/deformfixture.h"

namespace q7z::test
{
namespace
{

std::string WriteTangent(const KeyTangent& tangent, const char* side)
{
  if (!tangent.isSet)
    return "";
  return std::string(" ") + side + WriteNumber(tangent.time.GetSeconds()) + ":" + WriteNumber(tangent.value);
}

/// Keys in time order: "0:0.5 linear, 1:1 linear"; tangents that were set as "<time:value" and ">time:value".
std::string WriteKeys(const HeadlessTrack& track)
{
  std::string text;
  const HeadlessCurve* const curve = track.GetCurve();
  for (Int i = 0; curve && i < curve->GetKeyCount(); ++i)
  {
    const HeadlessKey& key = *curve->GetKey(i);
    const InterpolationMode mode = key.GetInterpolation();
    text += (i ? ", " : "") + WriteNumber(key.GetTime().GetSeconds()) + ":" + WriteNumber(key.GetValue());
    text += mode == InterpolationMode::Linear ? " linear" : mode == InterpolationMode::Step ? " step" : " spline";
    text += WriteTangent(key.GetLeftTangent(), "<") + WriteTangent(key.GetRightTangent(), ">");
    EXPECT_EQ(key.GetAuxiliaryMode(), 4);
    EXPECT_FALSE(key.HasRotationMode());
  }
  return text;
}

/// The tracks of morphs, by the morph's number: "1[...] 3[...]".
std::string WriteTracks(HeadlessTrackList* tracks)
{
  std::string text;
  for (const HeadlessTrack* track = tracks ? tracks->GetFirst() : nullptr; track; track = track->GetNext())
  {
    const HostDescId& id = track->GetId();
    EXPECT_EQ(id, HeadlessPoseMorphTag::GetStrengthId((id[1].id - 1001) / 100));
    text += (text.empty() ? "" : " ") + std::to_string((id[1].id - 1001) / 100) + "[" + WriteKeys(*track) + "]";
  }
  return text;
}

struct Sampler
{
  Numbers times;
  Numbers values;
  std::string interpolation;  // empty for none
};

/// A triangle with targets of no values, whose default weights are 0.25, 0.5, 0.75 as far as there are targets.
std::string MakeMesh(GltfJson& file, int targetCount)
{
  static const char* const kWeights[] = {"", R"("weights":[0.25],)", R"("weights":[0.25,0.5],)", R"("weights":[0.25,0.5,0.75],)"};
  std::string targets;
  for (int i = 0; i < targetCount; ++i)
    targets += i ? ",{}" : "{}";
  return std::string("{") + kWeights[targetCount] + R"("primitives":[{"attributes":{"POSITION":)" +
         AddValues(file, {0, 0, 0, 1, 0, 0, 0, 1, 0}, 5126, "VEC3") + R"(},"targets":[)" + targets + "]}]}";
}

/// An animation of the weights of node 0.
std::string MakeAnimation(GltfJson& file, const Sampler& sampler, const std::string& name = "")
{
  const std::string bounds = sampler.times.empty() ? ""
                                                   : R"("min":[)" + std::to_string(sampler.times.front()) + R"(],"max":[)" +
                                                       std::to_string(sampler.times.back()) + "]";
  const int input = file.Values(sampler.times, 5126, "SCALAR", bounds);
  const int output = file.Floats(sampler.values, "SCALAR");
  return R"({"name":")" + name + R"(","samplers":[{"input":)" + std::to_string(input) + R"(,"output":)" + std::to_string(output) +
         (sampler.interpolation.empty() ? "" : R"(,"interpolation":")" + sampler.interpolation + "\"") +
         R"(}],"channels":[{"sampler":0,"target":{"node":0,"path":"weights"}}]})";
}

const std::string kMembers = R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A","mesh":0}])";

class WeightTracks : public DeformTest
{
protected:
  std::string LoadAnimated(int targetCount, const std::vector<Sampler>& samplers)
  {
    GltfJson file;
    file.Add("meshes", MakeMesh(file, targetCount));
    for (size_t i = 0; i < samplers.size(); ++i)
      file.Add("animations", MakeAnimation(file, samplers[i], "take " + std::to_string(i)));
    return Load(kMembers, file);
  }

  HeadlessTag* Tag() { return Find("A") ? Find("A")->FindTag(kPoseMorphTagType) : nullptr; }
  std::string Tracks() { return Tag() ? WriteTracks(Tag()->GetTracks()) : "no tag"; }

  /// Whether the animation of an index was warned about.
  bool WasLeftOut(int index)
  {
    const std::string text = "The animation with the index " + std::to_string(index) + " could not be loaded.";
    return std::ranges::any_of(Host().Messages(), [&](const JobMessage& message) { return message.text == text; });
  }
};

struct TrackCase
{
  const char* name;
  int targetCount;
  Sampler sampler;
  const char* tracks;
};

void PrintTo(const TrackCase& row, std::ostream* stream)
{
  *stream << row.tracks;
}

// A frame before 0 stands what the mesh has by default. A thirtieth of a second is 33 whole milliseconds.
const TrackCase kTrackCases[] = {
  {"Linear",
   3,
   {{0, 1}, {1, 2, 3, 4, 5, 6}, "LINEAR"},
   "1[-0.033:0.25 linear, 0:1 linear, 1:4 linear] 2[-0.033:0.5 linear, 0:2 linear, 1:5 linear] "
   "3[-0.033:0.75 linear, 0:3 linear, 1:6 linear]"},
  {"LinearIsTheDefault", 1, {{0, 1}, {1, 2}, ""}, "1[-0.033:0.25 linear, 0:1 linear, 1:2 linear]"},
  {"Step",
   2,
   {{0, 0.5}, {1, 0, 0.25, 1}, "STEP"},
   "1[-0.033:0.25 step, 0:1 step, 0.5:0.25 step] 2[-0.033:0.5 step, 0:0 step, 0.5:1 step]"},
  // Of each key the in-tangents of all targets, then the values, then the out-tangents. A tangent reaches a third of two seconds.
  {"CubicSpline",
   2,
   {{0, 2}, {9, 9, 0.5, 1, 3, 6, -1.5, -3, 2, 4, 9, 9}, "CUBICSPLINE"},
   "1[-0.033:0.25 spline, 0:0.5 spline >0.667:2, 2:2 spline <-0.667:1] "
   "2[-0.033:0.5 spline, 0:1 spline >0.667:4, 2:4 spline <-0.667:2]"},
  // The first value holds from 0 on.
  {"LateStart", 1, {{1, 2}, {3, 4}, "LINEAR"}, "1[-0.033:0.25 linear, 0:3 linear, 1:3 linear, 2:4 linear]"},
  {"MoreNumbersThanTargets", 1, {{0, 1}, {1, 2, 3, 4}, "LINEAR"}, "1[-0.033:0.25 linear, 0:1 linear, 1:2 linear]"},
};

class WeightTrackRows : public WeightTracks, public testing::WithParamInterface<TrackCase>
{};

TEST_P(WeightTrackRows, HaveTheNumbersOfTheirTarget)
{
  EXPECT_EQ(LoadAnimated(GetParam().targetCount, {GetParam().sampler}), "none");
  EXPECT_EQ(Tracks(), GetParam().tracks);
  EXPECT_EQ(Host().WarningCount(), 0);
}

INSTANTIATE_TEST_SUITE_P(Rows, WeightTrackRows, testing::ValuesIn(kTrackCases), RowName());

const Sampler kTwoTargets = {{0, 1}, {1, 2, 3, 2}, "LINEAR"};

TEST_F(WeightTracks, StandInTheTakesOfTheirAnimations)
{
  EXPECT_EQ(LoadAnimated(2, {kTwoTargets, {{0, 1}, {5, 6, 7, 8}, "STEP"}}), "none");
  EXPECT_EQ(Tracks(), "");
  const HeadlessTakeData& takes = Host().Scene().GetTakeData();
  ASSERT_EQ(takes.GetTakeCount(), 3);
  const char* const kExpected[] = {"1[0:1 linear, 1:3 linear] 2[0:2 linear, 1:2 linear]",
                                   "1[0:5 step, 1:7 step] 2[0:6 step, 1:8 step]"};
  for (Int i = 0; i < 2; ++i)
  {
    HeadlessOverride* const over = takes.GetTake(i + 1)->FindOverride(Tag());
    ASSERT_TRUE(over);
    EXPECT_EQ(WriteTracks(over->GetTracks()), kExpected[i]);
  }
}

TEST_F(WeightTracks, CleaningLooksAtEachTarget)
{
  Host().Set(1019, true);
  EXPECT_EQ(LoadAnimated(2, {kTwoTargets}), "none");
  EXPECT_EQ(Tracks(), "1[-0.033:0.25 linear, 0:1 linear, 1:3 linear]");
}

// Frames 0 to 3 of a spline from 0 to 1 without slope at its ends: 3s^2 - 2s^3 is 7/27 and 20/27 at the thirds.
TEST_F(WeightTracks, BakedSplineHasAKeyAtEachFrame)
{
  g_gltfImporterBakeSplineInterpolatedAnimation = true;
  EXPECT_EQ(LoadAnimated(1, {{{0, 0.1f}, {0, 0, 0, 0, 1, 0}, "CUBICSPLINE"}}), "none");
  g_gltfImporterBakeSplineInterpolatedAnimation = false;
  EXPECT_EQ(Tracks(), "1[-0.033:0.25 linear, 0:0 linear, 0.033:0.259259 linear, 0.067:0.740741 linear, 0.1:1 linear]");
}

TEST_F(WeightTracks, DoNotNeedTransformAnimation)
{
  Host().Set(1014, false);
  EXPECT_EQ(LoadAnimated(1, {{{0, 1}, {1, 2}, "LINEAR"}}), "none");
  EXPECT_EQ(Tracks(), "1[-0.033:0.25 linear, 0:1 linear, 1:2 linear]");
}

TEST_F(WeightTracks, AreLeftOutWithoutAWordWithoutMorphs)
{
  Host().Set(1017, false);
  EXPECT_EQ(LoadAnimated(1, {{{0, 1}, {1, 2}, "LINEAR"}}), "none");
  EXPECT_EQ(Host().WarningCount(), 0);
}

// Without geometry no accessor is read either, which is told of; the animation itself has nothing to do.
TEST_F(WeightTracks, AreLeftOutWithoutGeometry)
{
  Host().Set(1004, false);
  EXPECT_EQ(LoadAnimated(1, {{{0, 1}, {1, 2}, "LINEAR"}}), "none");
  EXPECT_FALSE(WasLeftOut(0));
  EXPECT_FALSE(WasSaid("tagPoseMorph"));
}

TEST_F(WeightTracks, NodeWithoutTargetsFailsTheAnimation)
{
  EXPECT_EQ(LoadAnimated(0, {{{0, 1}, {1, 2}, "LINEAR"}}), "none");
  EXPECT_TRUE(WasLeftOut(0));
  EXPECT_TRUE(WasSaid(Condition("tagPoseMorph")));
}

// The second target's last number is not there; the first target has its track by then.
TEST_F(WeightTracks, TooFewNumbersFailTheAnimation)
{
  EXPECT_EQ(LoadAnimated(2, {{{0, 1}, {1, 2, 3}, "LINEAR"}}), "none");
  EXPECT_TRUE(WasLeftOut(0));
  EXPECT_TRUE(WasSaid(Condition("(idx >= 0 && idx < _count)")));
  EXPECT_TRUE(Tracks().starts_with("1[-0.033:0.25 linear, 0:1 linear, 1:3 linear]")) << Tracks();
}

}  // namespace
}  // namespace q7z::test
