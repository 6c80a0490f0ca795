// Animations as they arrive in the scene: keys of each kind of channel and interpolation, rest keys, takes, and what fails.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "host/scene/headlessdocument.h"
#include "host/scene/headlessposemorphtag.h"
#include "host/scene/headlesstake.h"
#include "host/scene/headlesstrack.h"
#include "plugin/import/gltfimportparameters.h"
#include "plugin/module/configvariables.h"
#include "tests/import/importfixture.h"

namespace q7z::test
{
namespace
{

using testing::ElementsAre;

// Tracks as text: the track's name, a letter for the interpolation of its keys (S spline, L linear, H holding), and its keys, as
// "time=value", with "<time,value" and ">time,value" for tangents. Tracks of one vector with equal keys share a line.

std::string WriteNumber(Float value)
{
  char text[32];
  std::snprintf(text, sizeof(text), "%.6g", std::fabs(value) < 1e-6 ? 0 : value);
  return text;
}

std::string WriteTime(const HostTime& time)
{
  return WriteNumber(time.numerator) + (time.denominator == 1 ? "" : "/" + WriteNumber(time.denominator));
}

std::string WriteTangent(char side, const KeyTangent& tangent)
{
  return tangent.isSet ? side + WriteTime(tangent.time) + "," + WriteNumber(tangent.value) : "";
}

std::string WriteKeys(const HeadlessTrack& track)
{
  const HeadlessCurve* const curve = track.GetCurve();
  if (!curve)
    return " -";
  std::string text;
  for (Int i = 0; i < curve->GetKeyCount(); ++i)
  {
    const HeadlessKey& key = *curve->GetKey(i);
    const InterpolationMode mode = key.GetInterpolation();
    if (i == 0)
      text = mode == InterpolationMode::Spline ? " S" : mode == InterpolationMode::Linear ? " L" : " H";
    EXPECT_EQ(mode, curve->GetKey(0)->GetInterpolation());
    text += " " + WriteTime(key.GetTime()) + "=" + WriteNumber(key.GetValue()) + WriteTangent('<', key.GetLeftTangent()) +
            WriteTangent('>', key.GetRightTangent());
    // The settings that every key gets.
    HostValue value;
    EXPECT_TRUE(key.GetParameter(915, value) && value == HostValue(Int32(1)));
    EXPECT_EQ(key.GetAuxiliaryMode(), 4);
    const Bool isRotation = track.GetId()[0].id == kRotationParameter;
    EXPECT_EQ(key.HasRotationMode(), isRotation);
    EXPECT_TRUE(!isRotation || key.GetRotationMode() == (KeyRotationMode{mode == InterpolationMode::Spline ? 3 : 2, true, true}));
  }
  return text;
}

std::string WriteTracks(HeadlessNode* node)
{
  std::string text;
  Int32 parameter = 0;
  std::string letters;
  std::string keys;
  const auto finish = [&]
  {
    const char* const name = parameter == kPositionParameter   ? "pos"
                             : parameter == kRotationParameter ? "rot"
                             : parameter == kScaleParameter    ? "scale"
                                                               : "weight";
    text += letters.empty() ? "" : std::string(name) + (letters == "xyz" ? "" : "." + letters) + keys + "\n";
    letters.clear();
  };
  for (const HeadlessTrack* track = node->GetTracks()->GetFirst(); track; track = track->GetNext())
  {
    const HostDescId& id = track->GetId();
    const bool isTransform = std::ranges::find(kTransformTrackIds, id) != std::end(kTransformTrackIds);
    EXPECT_TRUE(isTransform || id == HeadlessPoseMorphTag::GetStrengthId((id[1].id - 1001) / 100));
    if (id[0].id != parameter || WriteKeys(*track) != keys)
      finish();
    parameter = id[0].id;
    keys = WriteKeys(*track);
    letters += isTransform ? std::string(1, "xyz"[id[1].id - 1000]) : std::to_string((id[1].id - 1001) / 100);
  }
  finish();
  return text;
}

/// Those of the object, then those of its morphs.
std::string WriteTracks(HeadlessDocument& document, const std::string& name = "N")
{
  HeadlessTag* const tag = FindObject(document, name)->FindTag(kPoseMorphTagType);
  return WriteTracks(FindObject(document, name)) + (tag ? WriteTracks(tag) : "");
}

struct Channel
{
  const char* path;
  const char* interpolation;
  std::vector<float> times;
  std::vector<float> values;
  int node = 0;
};

/// A file with nodes and animations. Each channel has a sampler of its own, whose times have their bounds.
class AnimationFile : public GltfJson
{
public:
  explicit AnimationFile(const std::string& members = "") { Node("N", members); }

  AnimationFile& Node(const std::string& name, const std::string& members = "")
  {
    Add("nodes", R"({"name":")" + name + "\"" + members + "}");
    return *this;
  }
  AnimationFile& Animation(const std::string& name, const std::vector<Channel>& channels)
  {
    std::string channelTexts;
    std::string samplers;
    for (const Channel& channel : channels)
    {
      const std::string path = channel.path;
      const std::string comma = samplers.empty() ? "" : ",";
      const std::string index = std::to_string(std::count(samplers.begin(), samplers.end(), '{'));
      channelTexts += comma + R"({"sampler":)" + index + R"(,"target":{"node":)" + std::to_string(channel.node) + R"(,"path":")" +
                      path + R"("}})";
      const std::string bounds = R"("min":[)" + Bound(channel.times, -1) + R"(],"max":[)" + Bound(channel.times, 1) + "]";
      const int input = Values(channel.times, 5126, "SCALAR", bounds);
      const int output = Floats(channel.values, path == "rotation" ? "VEC4" : path == "weights" ? "SCALAR" : "VEC3");
      samplers += comma + R"({"input":)" + std::to_string(input) + R"(,"output":)" + std::to_string(output) +
                  R"(,"interpolation":")" + channel.interpolation + R"("})";
    }
    return RawAnimation((name.empty() ? "" : R"("name":")" + name + R"(",)") + R"("channels":[)" + channelTexts +
                        R"(],"samplers":[)" + samplers + "]");
  }
  /// One whose members are given as they stand.
  AnimationFile& RawAnimation(const std::string& members)
  {
    Add("animations", "{" + members + "}");
    return *this;
  }

private:
  /// The greatest of the finite numbers, or the least for a sign of -1.
  static std::string Bound(const std::vector<float>& numbers, float sign)
  {
    float bound = numbers.empty() ? 0 : numbers[0];
    for (const float number : numbers)
      bound = std::isfinite(number) && sign * number > sign * bound ? number : bound;
    return std::to_string(bound);
  }
};

/// The node has a triangle with targets of no values, whose default weights are 0.25, 0.5 ...
AnimationFile MorphFile(int targetCount)
{
  AnimationFile file(R"(,"mesh":0)");
  std::string weights;
  std::string targets;
  for (int i = 0; i < targetCount; ++i)
  {
    weights += (i ? "," : "") + std::to_string(0.25 * (i + 1));
    targets += i ? ",{}" : "{}";
  }
  file.Add("meshes", R"({"weights":[)" + weights + R"(],"primitives":[{"attributes":{"POSITION":)" +
                       std::to_string(file.Floats({0, 0, 0, 1, 0, 0, 0, 1, 0}, "VEC3")) + R"(},"targets":[)" + targets + "]}]}");
  return file;
}

/// A metre of the file is 100 in the document, Z is mirrored and there are 30 frames a second.
class AnimationImport : public ImportTest
{
protected:
  void TearDown() override
  {
    g_gltfImporterBakeSplineInterpolatedAnimation = false;
    ImportTest::TearDown();
  }

  std::string LoadFile(const AnimationFile& file) { return Host().LoadText(file.Text()); }

  HeadlessObject* Object() { return FindObject(Host().Scene(), "N"); }
  std::string Tracks(const std::string& name = "N") { return WriteTracks(Host().Scene(), name); }
  std::string TakeTracks(Int take, HeadlessNode* node)
  {
    HeadlessOverride* const over = Host().Scene().GetTakeData().GetTake(take)->FindOverride(node);
    return over ? WriteTracks(over) : "no override";
  }

  HostTime TimeParameter(Int32 parameter)
  {
    HostValue value;
    Host().Document()->GetParameter(parameter, value);
    return value.GetTime();
  }

  std::vector<std::string> TakeNames()
  {
    HeadlessTakeData& takes = Host().Scene().GetTakeData();
    std::vector<std::string> names;
    for (Int i = 0; i < takes.GetTakeCount(); ++i)
      names.emplace_back(takes.GetTake(i)->GetName().GetView());
    return names;
  }

  std::vector<std::string> Warnings()
  {
    std::vector<std::string> texts;
    for (const JobMessage& message : Host().Messages())
    {
      if (message.messageClass == HostMessageClass::kWarning)
        texts.push_back(message.text);
    }
    return texts;
  }

  static std::string AnimationWarning(int index)
  {
    std::string text(HostLoadString(10020).GetView());
    return text.replace(text.find('@'), 1, std::to_string(index));
  }
};

// One channel on one node, in the only animation of the file.

struct ChannelRow
{
  const char* name;
  Channel channel;
  const char* expected;
  const char* node = "";  // further members
  int targetCount = 0;
};

constexpr float kHalf = 0.70710678F;  // of a quarter turn
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

const ChannelRow kChannelRows[] = {
  {"Translation",
   {"translation", "LINEAR", {0, 1}, {1, 0, 0, 0, 2, 4}},
   "pos.x L -33/1000=100 0=100 1=0\npos.y L -33/1000=200 0=0 1=200\npos.z L -33/1000=-300 0=0 1=-400\n",
   R"(,"translation":[1,2,3])"},
  {"ScaleIsNeitherMirroredNorScaled",
   {"scale", "LINEAR", {0, 0.5F}, {1, 1, 3, 4, 4, -6}},
   "scale.xy L -33/1000=2 0=1 1/2=4\nscale.z L -33/1000=4 0=3 1/2=-6\n",
   R"(,"scale":[2,2,4])"},
  // Not normalised in the file, turned about Y by the node itself.
  {"RotationOfAnyLength",
   {"rotation", "LINEAR", {0, 1}, {0, 0, 0, 2, 0, kHalf, 0, kHalf}},
   "rot.x L -33/1000=1.5708 0=0 1=1.5708\nrot.yz L -33/1000=0 0=0 1=0\n",
   R"(,"rotation":[0,0.70710678,0,0.70710678])"},
  {"UnknownInterpolationIsLinear", {"scale", "step", {0}, {2, 2, 2}}, "scale L -33/1000=1 0=2\n"},
  {"StepHolds", {"scale", "STEP", {0, 1}, {2, 2, 2, 3, 3, 3}}, "scale H -33/1000=1 0=2 1=3\n"},
  // From one frame before each key on the value goes to it in a line; one frame before 0 the document has not begun.
  {"StepOfARotationIsBaked",
   {"rotation", "STEP", {0, 1}, {0, kHalf, 0, kHalf, 0, 0, 0, 1}},
   "rot.x L -33/1000=0 0=1.5708 967/1000=1.5708 1=0\nrot.yz L -33/1000=0 0=0 967/1000=0 1=0\n"},
  {"StepOfARotationIsZeroBeforeItsFirstKey",
   {"rotation", "STEP", {0.5F, 1}, {0, kHalf, 0, kHalf, 0, 0, 0, 1}},
   "rot.x L -33/1000=0 0=0 467/1000=0 1/2=1.5708 967/1000=1.5708 1=0\nrot.yz L -33/1000=0 0=0 467/1000=0 1/2=0 967/1000=0 1=0\n"},
  // Keys closer than a frame: 31/32 - 1/30 comes between the keys.
  {"StepOfARotationWithKeysWithinAFrame",
   {"rotation", "STEP", {0.96875F, 1}, {0, kHalf, 0, kHalf, 0, 0, 0, 1}},
   "rot.x L -33/1000=0 0=0 187/200=0 967/1000=0 969/1000=1.5708 1=0\n"
   "rot.yz L -33/1000=0 0=0 187/200=0 967/1000=0 969/1000=0 1=0\n"},
  // The slopes 3, 0 and 1 leave the first key, 6, 1 and -2 reach the second, in 3 seconds.
  {"SplineHasTangentsAtAThird",
   {"translation", "CUBICSPLINE", {0, 3}, {9, 9, 9, 1, 2, 3, 3, 0, 1, 6, 1, -2, 4, 5, 6, 9, 9, 9}},
   "pos.x S -33/1000=0 0=100>1,300 3=400<-1,-600\npos.y S -33/1000=0 0=200>1,0 3=500<-1,-100\n"
   "pos.z S -33/1000=0 0=-300>1,-100 3=-600<-1,-200\n"},
  {"SplineOfAScale",
   {"scale", "CUBICSPLINE", {0, 1.5F}, {0, 0, 0, 1, 1, 1, 2, 2, 0, 0, 0, 4, 1, 1, 1, 0, 0, 0}},
   "scale.xy S -33/1000=1 0=1>1/2,1 3/2=1<-1/2,0\nscale.z S -33/1000=1 0=1>1/2,0 3/2=1<-1/2,-2\n"},
  // Slopes are read as if they were rotations: none gives 0, a quarter turn about Y gives 1.5708 a second.
  {"SplineOfARotation",
   {"rotation", "CUBICSPLINE", {0, 3}, {0, 0, 0, 0, 0, 0, 0, 1, 0, kHalf, 0, kHalf, 0, 0, 0, 0, 0, kHalf, 0, kHalf, 0, 0, 0, 0}},
   "rot.x S -33/1000=0 0=0>1,1.5708 3=1.5708<-1,0\nrot.yz S -33/1000=0 0=0>1,0 3=0<-1,0\n"},
  {"LateStartHoldsFromZero", {"scale", "LINEAR", {2}, {2, 2, 2}}, "scale L -33/1000=5 0=2 2=2\n", R"(,"scale":[5,5,5])"},
  {"EarlyStartHasAKeyAtZeroToo", {"scale", "LINEAR", {-1, 1}, {1, 1, 1, 3, 3, 3}}, "scale L -1=1 -33/1000=1 0=1 1=3\n"},
  {"UnsortedKeys", {"scale", "LINEAR", {2, 0, 1}, {3, 3, 3, 1, 1, 1, 2, 2, 2}}, "scale L -33/1000=1 0=1 1=2 2=3\n"},
  {"KeysWithinAMillisecondAreOne",
   {"scale", "LINEAR", {0, 1, 1.0004F}, {1, 1, 1, 2, 2, 2, 3, 3, 3}},
   "scale L -33/1000=1 0=1 1=3\n"},
  // The earlier of two keys at the earliest time gives the key at 0.
  {"EqualEarliestTimes", {"scale", "LINEAR", {1, 1}, {7, 7, 7, 8, 8, 8}}, "scale L -33/1000=1 0=7 1=8\n"},
  {"NoKeys", {"scale", "LINEAR", {}, {1, 1, 1}}, "scale -\n"},
  {"TimeWithoutEnd", {"scale", "LINEAR", {0, kInfinity}, {1, 1, 1, 2, 2, 2}}, "scale L -33/1000=1 0=1 1e+15=2\n"},
  {"TimeThatIsNoNumberIsZero", {"scale", "LINEAR", {0, kNaN}, {1, 1, 1, 2, 2, 2}}, "scale L -33/1000=1 0=2\n"},
  {"OtherPath", {"pointer", "LINEAR", {0}, {1, 1, 1}}, ""},
  {"NodeThatIsNotThere", {"scale", "LINEAR", {0}, {1, 1, 1}, 7}, ""},
  // A frame before 0 stands what the mesh has by default.
  {"Weights",
   {"weights", "LINEAR", {0, 1}, {1, 2, 3, 4, 5, 6}},
   "weight.1 L -33/1000=0.25 0=1 1=4\nweight.2 L -33/1000=0.5 0=2 1=5\nweight.3 L -33/1000=0.75 0=3 1=6\n",
   "",
   3},
  {"WeightsThatHold", {"weights", "STEP", {1}, {3}}, "weight.1 H -33/1000=0.25 0=3 1=3\n", "", 1},
  // Of each key the in-tangents of all targets, then the values, then the out-tangents.
  {"SplineOfWeights",
   {"weights", "CUBICSPLINE", {0, 3}, {9, 9, 0.5, 1, 3, 6, -1.5, -3, 2, 4, 9, 9}},
   "weight.1 S -33/1000=0.25 0=0.5>1,3 3=2<-1,1.5\nweight.2 S -33/1000=0.5 0=1>1,6 3=4<-1,3\n",
   "",
   2},
  {"MoreNumbersThanTargets", {"weights", "LINEAR", {0, 1}, {1, 2, 3, 4}}, "weight.1 L -33/1000=0.25 0=1 1=2\n", "", 1},
};

class AnimationChannel : public AnimationImport, public testing::WithParamInterface<ChannelRow>
{};

TEST_P(AnimationChannel, BecomesKeys)
{
  AnimationFile file = GetParam().targetCount > 0 ? MorphFile(GetParam().targetCount) : AnimationFile(GetParam().node);
  EXPECT_EQ(LoadFile(file.Animation("", {GetParam().channel})), "none");
  EXPECT_EQ(Tracks(), GetParam().expected);
  EXPECT_THAT(Warnings(), ElementsAre());
}

INSTANTIATE_TEST_SUITE_P(Rows, AnimationChannel, testing::ValuesIn(kChannelRows), RowName());

// Channels together.

const Channel kScaleToTwo = {"scale", "LINEAR", {0, 1}, {1, 1, 1, 2, 2, 2}};

TEST_F(AnimationImport, NodesAndPathsDoNotMixAndTheLastOfEachCounts)
{
  AnimationFile file(R"(,"children":[1])");
  file.Node("Below").Animation("", {{"scale", "STEP", {0, 5}, {7, 7, 7, 8, 8, 8}, 1},
                                    {"translation", "LINEAR", {0}, {1, 1, 0}},
                                    {"scale", "LINEAR", {0}, {3, 3, 3}, 1},
                                    {"rotation", "LINEAR", {0}, {0, 0, 0, 1}}});
  EXPECT_EQ(LoadFile(file), "none");
  EXPECT_EQ(Tracks("N"), "pos.xy L -33/1000=0 0=100\npos.z L -33/1000=0 0=0\nrot L -33/1000=0 0=0\n");
  EXPECT_EQ(Tracks("Below"), "scale L -33/1000=1 0=3\n");
}

// Options and the variable.

TEST(CleanTracks, LeaveConstantSamplersOut)
{
  const struct
  {
    Channel channel;
    const char* tracks;
  } rows[] = {
    {{"scale", "LINEAR", {0, 1}, {2, 2, 2, 2, 2, 2}}, ""},
    {{"scale", "LINEAR", {0}, {2, 2, 2}}, ""},
    {{"scale", "LINEAR", {0, 1}, {2, 2, -0.0F, 2, 2, 0}}, ""},
    {{"scale", "LINEAR", {0, 1, 2}, {2, 2, 2, 2, 2, 2, 2, 2, 2.0000002F}}, "scale"},
    {{"scale", "LINEAR", {0, 1}, {kNaN, 2, 2, kNaN, 2, 2}}, "scale"},
    {{"rotation", "LINEAR", {0, 1}, {0, 0, 0, 1, 0, 0, 0, 2}}, "rot"},
    {{"scale", "CUBICSPLINE", {0, 1}, {1, 1, 1, 2, 2, 2, 3, 3, 3, 1, 1, 1, 2, 2, 2, 3, 3, 3}}, ""},
    {{"scale", "CUBICSPLINE", {0, 1}, {1, 1, 1, 2, 2, 2, 3, 3, 3, 0, 1, 1, 2, 2, 2, 3, 3, 3}}, "scale"},
    {{"scale", "CUBICSPLINE", {0, 1}, {1, 1, 1, 2, 2, 2, 3, 3, 3, 1, 1, 1, 2, 2, 2, 3, 3, 0}}, "scale"},
    {{"weights", "LINEAR", {0, 1}, {1, 2, 1, 3}}, "weight.2 L -33/1000=0.5 0=2 1=3\n"},
  };
  for (size_t i = 0; i < std::size(rows); ++i)
  {
    TestHost host;
    host.Set(kCleanTracksParameter, true);
    EXPECT_EQ(host.LoadText(MorphFile(2).Animation("", {rows[i].channel}).Text()), "none");
    const std::string tracks = WriteTracks(host.Scene());
    EXPECT_TRUE(tracks.starts_with(rows[i].tracks) && tracks.empty() == !*rows[i].tracks) << i << ": " << tracks;
  }
}

TEST(AnimationGate, DecidesWhatIsAnimated)
{
  const struct
  {
    std::vector<Int32> off;
    const char* tracks;
    HostTime end;
  } rows[] = {{{kAnimationTrsParameter}, "weight.1 L -33/1000=0.25 0=1\n", {1, 1}},
              {{kAnimationMorphParameter}, "scale L -33/1000=1 0=1 1=2\n", {1, 1}},
              {{kAnimationTrsParameter, kAnimationMorphParameter}, "", {7, 1}},
              {{kAnimationTrsParameter, kGeometryParameter}, "", {7, 1}}};
  for (const auto& row : rows)
  {
    TestHost host;
    host.Document()->SetParameter(1003, HostTime{7, 1});
    for (const Int32 parameter : row.off)
      host.Set(parameter, false);
    EXPECT_EQ(host.LoadText(MorphFile(1).Animation("", {kScaleToTwo, {"weights", "LINEAR", {0}, {1}}}).Text()), "none");
    EXPECT_EQ(WriteTracks(host.Scene()), row.tracks);
    HostValue end;
    host.Document()->GetParameter(1003, end);
    EXPECT_EQ(end.GetTime(), row.end);
  }
}

TEST_F(AnimationImport, VariableBakesSplinesAtEveryFrame)
{
  g_gltfImporterBakeSplineInterpolatedAnimation = true;
  AnimationFile file = MorphFile(1);
  // Without slopes a quarter of the way gives 5/32 of the value, a third 7/27.
  file.Animation("", {{"scale", "CUBICSPLINE", {0, 1}, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 32, 32, 32, 0, 0, 0}},
                      {"translation", "STEP", {0, 1}, {1, 1, -1, 2, 2, -2}},
                      {"weights", "CUBICSPLINE", {0, 0.1F}, {0, 0, 0, 0, 27, 0}}});
  EXPECT_EQ(LoadFile(file), "none");
  const std::string tracks = Tracks();
  EXPECT_TRUE(tracks.starts_with("pos H -33/1000=0 0=100 1=200\nscale L -33/1000=1 0=0 33/1000=0.104")) << tracks;
  EXPECT_NE(tracks.find(" 1/2=16 "), std::string::npos) << tracks;
  EXPECT_TRUE(tracks.ends_with(" 1=32\nweight.1 L -33/1000=0.25 0=0 33/1000=7 67/1000=20 1/10=27\n")) << tracks;
}

TEST_F(AnimationImport, BakingBackwardRangesMakesNoKeys)
{
  g_gltfImporterBakeSplineInterpolatedAnimation = true;
  AnimationFile file;
  file.Values<float>({0}, 5126, "SCALAR", R"("min":[2],"max":[1])");
  file.Floats({0, 0, 0, 1, 1, 1, 0, 0, 0}, "VEC3");
  file.RawAnimation(R"("channels":[{"sampler":0,"target":{"node":0,"path":"scale"}}],
                       "samplers":[{"input":0,"output":1,"interpolation":"CUBICSPLINE"}])");
  EXPECT_EQ(LoadFile(file), "none");
  EXPECT_EQ(Tracks(), "scale -\n");
}

// Ranges of the document.

TEST_F(AnimationImport, LastKeyIsTheDocumentsEnd)
{
  const struct
  {
    float lastTime;
    Int32 framesPerSecond;
    HostTime end;  // at least a frame, or a hundredth of a second; thirty frames without a rate
  } rows[] = {{2.5F, 30, {5, 2}}, {0, 30, {33, 1000}}, {0, 240, {1, 100}}, {0, 0, {33, 1000}}};
  for (const auto& row : rows)
  {
    Host().Document()->SetParameter(1001, row.framesPerSecond);
    Host().Document()->SetParameter(1002, HostTime{7, 1});
    // What no channel uses does not count.
    AnimationFile file;
    const std::string unused = R"(],"samplers":[{"input":)" + std::to_string(file.Floats({99}, "SCALAR")) + R"(,"output":0}])";
    file.Animation("", {{"scale", "LINEAR", {row.lastTime}, {1, 1, 1}}}).RawAnimation(R"("channels":[)" + unused);
    EXPECT_EQ(LoadFile(file), "none");
    EXPECT_EQ(TimeParameter(1002), (HostTime{0, 1}));
    EXPECT_EQ(TimeParameter(1003), row.end);
    EXPECT_EQ(TimeParameter(1004), (HostTime{0, 1}));
    EXPECT_EQ(TimeParameter(1005), row.end);
  }
}

// Takes.

TEST_F(AnimationImport, OnlyAnimationNamesTheMainTakeIfItHasAName)
{
  EXPECT_EQ(LoadFile(AnimationFile().Animation("", {kScaleToTwo})), "none");
  EXPECT_THAT(TakeNames(), ElementsAre("Main"));
  EXPECT_EQ(LoadFile(AnimationFile().Animation("Walk", {kScaleToTwo})), "none");
  EXPECT_THAT(TakeNames(), ElementsAre("Walk"));
}

TEST_F(AnimationImport, SeveralAnimationsGetATakeEachAndNoRestKeys)
{
  AnimationFile file = MorphFile(1);
  file.Animation("Walk", {kScaleToTwo});
  file.Animation("", {{"scale", "LINEAR", {2}, {5, 5, 5}}, {"weights", "LINEAR", {2}, {5}}});
  file.RawAnimation(R"("name":"Nothing")");
  EXPECT_EQ(LoadFile(file), "none");
  EXPECT_THAT(TakeNames(), ElementsAre("Main", "Walk", "Animation #1", "Nothing"));
  EXPECT_EQ(Tracks(), "");
  EXPECT_EQ(TakeTracks(1, Object()), "scale L 0=1 1=2\n");
  EXPECT_EQ(TakeTracks(2, Object()), "scale L 2=5\n");
  EXPECT_EQ(TakeTracks(2, Object()->FindTag(kPoseMorphTagType)), "weight.1 L 2=5\n");
  EXPECT_EQ(TakeTracks(3, Object()), "no override");
  const HeadlessTakeData& takes = Host().Scene().GetTakeData();
  EXPECT_TRUE(takes.GetCurrentTake()->IsMain());
  // The overridden values are those of the node.
  const HostValue* const value = takes.GetTake(1)->FindOverride(Object())->GetParameters().Find(kTransformTrackIds[7]);
  EXPECT_TRUE(value && *value == HostValue(1.0));
  EXPECT_EQ(TimeParameter(1003), (HostTime{2, 1}));
}

// Failures.

TEST_F(AnimationImport, FailedAnimationIsAWarningAndTheNextFollows)
{
  AnimationFile file;
  file.Animation("Walk", {kScaleToTwo})
    .RawAnimation(R"("channels":[{"sampler":0,"target":{"node":0,"path":"scale"}}],"samplers":[{"input":0,"output":99}])");
  file.Animation("Run", {kScaleToTwo});
  EXPECT_EQ(LoadFile(file), "none");
  EXPECT_THAT(Warnings(), ElementsAre(std::string(HostLoadString(10014).GetView()), AnimationWarning(1)));
  EXPECT_THAT(TakeNames(), ElementsAre("Main", "Walk", "Animation #1", "Run"));
  EXPECT_EQ(TakeTracks(3, Object()), "scale L 0=1 1=2\n");
}

TEST_F(AnimationImport, MissingValuesAreAWarning)
{
  AnimationFile keys = MorphFile(1);
  keys.Animation("", {{"translation", "LINEAR", {0}, {1, 1, -1}}, {"scale", "LINEAR", {0, 1}, {1, 1, 1}}});
  EXPECT_EQ(LoadFile(keys), "none");
  EXPECT_THAT(Warnings(), ElementsAre(AnimationWarning(0)));
  EXPECT_EQ(Tracks(), "pos L -33/1000=0 0=100\nscale -\n");
}

TEST_F(AnimationImport, MissingWeightsAreAWarning)
{
  EXPECT_EQ(LoadFile(MorphFile(2).Animation("", {{"weights", "LINEAR", {0, 1}, {1, 2, 3}}})), "none");
  EXPECT_THAT(Warnings(), ElementsAre(AnimationWarning(0)));
  EXPECT_EQ(Tracks(), "weight.1 L -33/1000=0.25 0=1 1=3\nweight.2 -\n");
}

TEST_F(AnimationImport, SamplerWithoutBoundsFailsTheWholeStage)
{
  AnimationFile file;
  file.Animation("Walk", {kScaleToTwo});
  const std::string input = std::to_string(file.Floats({0, 1}, "SCALAR"));
  file.RawAnimation(R"("channels":[{"sampler":0,"target":{"path":"scale"}}],"samplers":[{"input":)" + input + R"(,"output":1}])");
  EXPECT_EQ(LoadFile(file), "none");
  EXPECT_THAT(Warnings(), ElementsAre("Couldn't load animations!"));
  EXPECT_EQ(Tracks(), "");
  EXPECT_THAT(TakeNames(), ElementsAre("Main"));
}

// Limits.

TEST_F(AnimationImport, RangeOfTooManyFramesIsOverTheLimit)
{
  g_gltfImporterBakeSplineInterpolatedAnimation = true;
  AnimationFile file;
  file.Values<float>({0, 1}, 5126, "SCALAR", R"("min":[0],"max":[1e30])");
  file.Floats(std::vector<float>(18), "VEC3");
  file.RawAnimation(R"("channels":[{"sampler":0,"target":{"node":0,"path":"scale"}}],
                       "samplers":[{"input":0,"output":1,"interpolation":"CUBICSPLINE"}])");
  EXPECT_EQ(LoadFile(file), "out_of_memory");
}

TEST_F(AnimationImport, SharedKeysOfTooManyNodesAreOverTheLimit)
{
  constexpr size_t kKeys = 10000;
  constexpr int kNodes = 200;  // six million keys, from 160 kB
  AnimationFile file;
  file.Values(std::vector<float>(kKeys), 5126, "SCALAR", R"("min":[0],"max":[1])");
  file.Floats(std::vector<float>(kKeys * 3), "VEC3");
  std::string channels = R"({"sampler":0,"target":{"path":"scale","node":0}})";
  for (int i = 1; i < kNodes; ++i)
  {
    file.Node("N");
    channels += R"(,{"sampler":0,"target":{"path":"scale","node":)" + std::to_string(i) + "}}";
  }
  file.RawAnimation(R"("channels":[)" + channels + R"(],"samplers":[{"input":0,"output":1}])");
  EXPECT_EQ(LoadFile(file), "out_of_memory");
}

// A key out of order makes the keys behind it move, whether it comes in front of the one before it or not.
TEST_F(AnimationImport, KeysMayStandInAnyOrderUnlessTheyAreManyIndeed)
{
  struct Case
  {
    const char* what;
    int rowCount;   // each rises from place to place
    int rowLength;  // a row's keys stand a row apart
    int direction;
    const char* expected;
  };
  const Case cases[] = {
    {"falling", 1, 20000, -1, "none"},
    {"two rows, each between the keys of the other", 2, 10000, 1, "none"},
    {"many such rows", 300, 350, 1, "out_of_memory"},
  };
  for (const Case& test : cases)
  {
    SCOPED_TRACE(test.what);
    std::vector<float> times;
    for (int row = 0; row < test.rowCount; ++row)
    {
      for (int i = 0; i < test.rowLength; ++i)
        times.push_back(static_cast<float>(test.direction * (i * test.rowCount + row)) / 8);
    }
    const std::vector<float> values(times.size() * 3);
    EXPECT_EQ(LoadFile(AnimationFile().Animation("", {{"scale", "LINEAR", times, values}})), test.expected);
  }
}

class UnbackedCount : public AnimationImport, public testing::WithParamInterface<Bool>
{};

TEST_P(UnbackedCount, IsAWarning)
{
  g_gltfImporterBakeSplineInterpolatedAnimation = GetParam();
  AnimationFile file;
  file.Floats({0, 1, 2, 3}, "SCALAR");
  file.Add("accessors", R"({"bufferView":0,"componentType":5126,"type":"SCALAR","count":1000000000000000,"min":[0],"max":[1]})");
  file.Add("accessors", R"({"bufferView":0,"componentType":5126,"type":"VEC3","count":9223372036854775807})");
  std::vector<std::string> expected;
  for (const char* interpolation : {"LINEAR", "CUBICSPLINE", "STEP"})
  {
    for (const char* path : {"scale", "rotation"})
    {
      file.RawAnimation(R"("channels":[{"sampler":0,"target":{"node":0,"path":")" + std::string(path) +
                        R"("}}],"samplers":[{"input":1,"output":2,"interpolation":")" + interpolation + R"("}])");
      expected.push_back(AnimationWarning(static_cast<int>(expected.size())));
    }
  }
  EXPECT_EQ(LoadFile(file), "none");
  EXPECT_EQ(Warnings(), expected);
}

INSTANTIATE_TEST_SUITE_P(BakedOrNot, UnbackedCount, testing::Bool());

// The mirror of the first import stays for the whole process, so each case has a process of its own.

void LoadTwice(Bool first)
{
  AnimationFile file;
  file.Animation("", {{"translation", "LINEAR", {0}, {1, 2, 3}}});
  std::string text;
  for (const Bool flip : {first, !first})
  {
    TestHost host;
    host.Set(kFlipZParameter, flip);
    host.LoadText(file.Text());
    text = WriteTracks(ToHeadless(host.Document()->GetFirstObject()));
  }
  std::fputs(text.c_str(), stderr);
  std::exit(0);
}

TEST(AnimationMirrorDeathTest, IsThatOfTheFirstLoad)
{
  testing::FLAGS_gtest_death_test_style = "threadsafe";  // which starts afresh
  EXPECT_EXIT(LoadTwice(true), testing::ExitedWithCode(0), "pos.z L -33/1000=0 0=-300");
  EXPECT_EXIT(LoadTwice(false), testing::ExitedWithCode(0), "pos.z L -33/1000=0 0=300");
}

}  // namespace
}  // namespace q7z::test
