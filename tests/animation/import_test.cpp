// Animations as they arrive in the scene: keys of each kind of channel and interpolation, rest keys, takes, and what fails.

#include <cstdio>
#include <cstdlib>
#include <limits>

#include "host/scene/headlessdocument.h"
#include "host/scene/headlesstake.h"
#include "host/scene/headlesstrack.h"
#include "plugin/import/gltfimportparameters.h"
#include "plugin/module/configvariables.h"
#include "tests/animation/tracktext.h"
#include "tests/import/importfixture.h"

namespace q7z::test
{
namespace
{

using testing::ElementsAre;

constexpr float kHalf = 0.70710678F;  // of a quarter turn

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

  HostObject* Object(const std::string& name) { return FindObject(Host().Document(), name); }
  std::string Tracks(const std::string& name = "N") { return WriteTracks(Object(name)); }
  std::string TakeTracks(Int take, const std::string& name = "N")
  {
    return WriteTakeTracks(Host().Document(), take, Object(name));
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

  static std::string AnimationWarning(const std::string& index)
  {
    std::string text(HostLoadString(10020).GetView());
    return text.replace(text.find('@'), 1, index);
  }
};

// One channel on one node, in the only animation of the file.

struct ChannelRow
{
  const char* name;
  const char* node;  // further members of the node N
  ChannelText channel;
  const char* expected;
};

const ChannelRow kChannelRows[] = {
  {"Translation",
   R"(,"translation":[1,2,3])",
   {0, "translation", "LINEAR", {0, 1}, {1, 0, 0, 0, 2, 4}},
   "pos.x L -33/1000=100 0=100 1=0\n"
   "pos.y L -33/1000=200 0=0 1=200\n"
   "pos.z L -33/1000=-300 0=0 1=-400\n"},
  {"ScaleIsNeitherMirroredNorScaled",
   R"(,"scale":[2,3,4])",
   {0, "scale", "LINEAR", {0, 0.5F}, {1, 2, 3, 4, 5, -6}},
   "scale.x L -33/1000=2 0=1 1/2=4\n"
   "scale.y L -33/1000=3 0=2 1/2=5\n"
   "scale.z L -33/1000=4 0=3 1/2=-6\n"},
  {"Rotation",
   "",
   {0, "rotation", "LINEAR", {0, 1}, {0, 0, 0, 1, 0, kHalf, 0, kHalf}},
   "rot.x L -33/1000=0 0=0 1=1.5708\n"
   "rot.y L -33/1000=0 0=0 1=0\n"
   "rot.z L -33/1000=0 0=0 1=0\n"},
  // Not normalised in the file, turned about Y by the node itself.
  {"RotationOfAnyLength",
   R"(,"rotation":[0,0.70710678,0,0.70710678])",
   {0, "rotation", "LINEAR", {0}, {0, 0, 0, 2}},
   "rot.x L -33/1000=1.5708 0=0\n"
   "rot.y L -33/1000=0 0=0\n"
   "rot.z L -33/1000=0 0=0\n"},
  {"UnknownInterpolationIsLinear",
   "",
   {0, "scale", "step", {0}, {1, 2, 3}},
   "scale.x L -33/1000=1 0=1\nscale.y L -33/1000=1 0=2\nscale.z L -33/1000=1 0=3\n"},
  {"StepHolds",
   "",
   {0, "translation", "STEP", {0, 1}, {1, 0, 0, 2, 0, 0}},
   "pos.x H -33/1000=0 0=100 1=200\npos.y H -33/1000=0 0=0 1=0\npos.z H -33/1000=0 0=0 1=0\n"},
  // From one frame before each key on the value goes to it in a line; one frame before 0 the document has not begun.
  {"StepOfARotationIsBaked",
   "",
   {0, "rotation", "STEP", {0, 1}, {0, kHalf, 0, kHalf, 0, 0, 0, 1}},
   "rot.x L -33/1000=0 0=1.5708 967/1000=1.5708 1=0\n"
   "rot.y L -33/1000=0 0=0 967/1000=0 1=0\n"
   "rot.z L -33/1000=0 0=0 967/1000=0 1=0\n"},
  {"StepOfARotationIsZeroBeforeItsFirstKey",
   "",
   {0, "rotation", "STEP", {0.5F, 1}, {0, kHalf, 0, kHalf, 0, 0, 0, 1}},
   "rot.x L -33/1000=0 0=0 467/1000=0 1/2=1.5708 967/1000=1.5708 1=0\n"
   "rot.y L -33/1000=0 0=0 467/1000=0 1/2=0 967/1000=0 1=0\n"
   "rot.z L -33/1000=0 0=0 467/1000=0 1/2=0 967/1000=0 1=0\n"},
  // Keys closer than a frame: 31/32 - 1/30 comes between the keys.
  {"StepOfARotationWithKeysWithinAFrame",
   "",
   {0, "rotation", "STEP", {0.96875F, 1}, {0, kHalf, 0, kHalf, 0, 0, 0, 1}},
   "rot.x L -33/1000=0 0=0 187/200=0 967/1000=0 969/1000=1.5708 1=0\n"
   "rot.y L -33/1000=0 0=0 187/200=0 967/1000=0 969/1000=0 1=0\n"
   "rot.z L -33/1000=0 0=0 187/200=0 967/1000=0 969/1000=0 1=0\n"},
  // The slopes 3, 0 and 1 leave the first key, 6, 1 and -2 reach the second, in 3 seconds.
  {"SplineHasTangentsAtAThird",
   "",
   {0, "translation", "CUBICSPLINE", {0, 3}, {9, 9, 9, 1, 2, 3, 3, 0, 1, 6, 1, -2, 4, 5, 6, 9, 9, 9}},
   "pos.x S -33/1000=0 0=100>1,300 3=400<-1,-600\n"
   "pos.y S -33/1000=0 0=200>1,0 3=500<-1,-100\n"
   "pos.z S -33/1000=0 0=-300>1,-100 3=-600<-1,-200\n"},
  {"SplineOfAScale",
   "",
   {0, "scale", "CUBICSPLINE", {0, 1.5F}, {0, 0, 0, 1, 1, 1, 2, 0, 0, 0, 0, 4, 1, 1, 1, 0, 0, 0}},
   "scale.x S -33/1000=1 0=1>1/2,1 3/2=1<-1/2,0\n"
   "scale.y S -33/1000=1 0=1>1/2,0 3/2=1<-1/2,0\n"
   "scale.z S -33/1000=1 0=1>1/2,0 3/2=1<-1/2,-2\n"},
  // Slopes are read as if they were rotations: none gives 0, a quarter turn about Y gives 1.5708 a second.
  {"SplineOfARotation",
   "",
   {0, "rotation", "CUBICSPLINE", {0, 3}, {0, 0, 0, 0, 0, 0,     0, 1,     0, kHalf, 0, kHalf,
                                           0, 0, 0, 0, 0, kHalf, 0, kHalf, 0, 0,     0, 0}},
   "rot.x S -33/1000=0 0=0>1,1.5708 3=1.5708<-1,0\n"
   "rot.y S -33/1000=0 0=0>1,0 3=0<-1,0\n"
   "rot.z S -33/1000=0 0=0>1,0 3=0<-1,0\n"},
  {"LateStartHoldsFromZero",
   R"(,"scale":[5,5,5])",
   {0, "scale", "LINEAR", {2}, {1, 2, 3}},
   "scale.x L -33/1000=5 0=1 2=1\nscale.y L -33/1000=5 0=2 2=2\nscale.z L -33/1000=5 0=3 2=3\n"},
  {"EarlyStartHasAKeyAtZeroToo",
   "",
   {0, "scale", "LINEAR", {-1, 1}, {1, 1, 1, 3, 3, 3}},
   "scale.x L -1=1 -33/1000=1 0=1 1=3\nscale.y L -1=1 -33/1000=1 0=1 1=3\nscale.z L -1=1 -33/1000=1 0=1 1=3\n"},
  {"UnsortedKeys",
   "",
   {0, "scale", "LINEAR", {2, 0, 1}, {3, 3, 3, 1, 1, 1, 2, 2, 2}},
   "scale.x L -33/1000=1 0=1 1=2 2=3\nscale.y L -33/1000=1 0=1 1=2 2=3\nscale.z L -33/1000=1 0=1 1=2 2=3\n"},
  {"KeysWithinAMillisecondAreOne",
   "",
   {0, "scale", "LINEAR", {0, 1, 1.0004F}, {1, 1, 1, 2, 2, 2, 3, 3, 3}},
   "scale.x L -33/1000=1 0=1 1=3\nscale.y L -33/1000=1 0=1 1=3\nscale.z L -33/1000=1 0=1 1=3\n"},
  // The earlier of two keys at the earliest time gives the key at 0.
  {"EqualEarliestTimes",
   "",
   {0, "scale", "LINEAR", {1, 1}, {7, 7, 7, 8, 8, 8}},
   "scale.x L -33/1000=1 0=7 1=8\nscale.y L -33/1000=1 0=7 1=8\nscale.z L -33/1000=1 0=7 1=8\n"},
  {"NoKeys", "", {0, "scale", "LINEAR", {}, {1, 1, 1}}, "scale.x -\nscale.y -\nscale.z -\n"},
  {"TimeWithoutEnd",
   "",
   {0, "scale", "LINEAR", {0, std::numeric_limits<float>::infinity()}, {1, 1, 1, 2, 2, 2}},
   "scale.x L -33/1000=1 0=1 1e+15=2\nscale.y L -33/1000=1 0=1 1e+15=2\nscale.z L -33/1000=1 0=1 1e+15=2\n"},
  {"TimeThatIsNoNumberIsZero",
   "",
   {0, "scale", "LINEAR", {0, std::numeric_limits<float>::quiet_NaN()}, {1, 1, 1, 2, 2, 2}},
   "scale.x L -33/1000=1 0=2\nscale.y L -33/1000=1 0=2\nscale.z L -33/1000=1 0=2\n"},
  {"OtherPath", "", {0, "pointer", "LINEAR", {0}, {1, 1, 1}}, ""},
  {"NodeThatIsNotThere", "", {7, "scale", "LINEAR", {0}, {1, 1, 1}}, ""},
};

class AnimationChannel : public AnimationImport, public testing::WithParamInterface<ChannelRow>
{};

TEST_P(AnimationChannel, BecomesKeys)
{
  const ChannelRow& row = GetParam();
  EXPECT_EQ(LoadFile(AnimationFile().Node(std::string(R"("name":"N")") + row.node).Animation("", {row.channel})), "none");
  EXPECT_EQ(Tracks(), row.expected);
  EXPECT_THAT(Warnings(), ElementsAre());
}

INSTANTIATE_TEST_SUITE_P(Rows, AnimationChannel, testing::ValuesIn(kChannelRows), RowName());

// Channels together.

const ChannelText kScaleToTwo = {0, "scale", "LINEAR", {0, 1}, {1, 1, 1, 2, 2, 2}};
constexpr const char* kScaleToTwoTracks = "scale.x L 0=1 1=2\nscale.y L 0=1 1=2\nscale.z L 0=1 1=2\n";
constexpr const char* kScaleToTwoWithRest =
  "scale.x L -33/1000=1 0=1 1=2\nscale.y L -33/1000=1 0=1 1=2\nscale.z L -33/1000=1 0=1 1=2\n";

TEST_F(AnimationImport, LastOfSeveralChannelsCounts)
{
  AnimationFile file;
  file.Node(R"("name":"N")").Animation("", {{0, "scale", "STEP", {0, 5}, {7, 7, 7, 8, 8, 8}}, kScaleToTwo});
  EXPECT_EQ(LoadFile(file), "none");
  EXPECT_EQ(Tracks(), kScaleToTwoWithRest);
}

TEST_F(AnimationImport, NodesAndPathsDoNotMix)
{
  AnimationFile file;
  file.Node(R"("name":"N","children":[1])").Node(R"("name":"Below")");
  file.Animation("", {{1, "scale", "LINEAR", {0}, {3, 3, 3}},
                      {0, "translation", "LINEAR", {0}, {1, 0, 0}},
                      {0, "rotation", "LINEAR", {0}, {0, 0, 0, 1}},
                      {1, "translation", "LINEAR", {0}, {0, 0, 1}}});
  EXPECT_EQ(LoadFile(file), "none");
  EXPECT_EQ(Tracks("N"), "pos.x L -33/1000=0 0=100\npos.y L -33/1000=0 0=0\npos.z L -33/1000=0 0=0\n"
                         "rot.x L -33/1000=0 0=0\nrot.y L -33/1000=0 0=0\nrot.z L -33/1000=0 0=0\n");
  EXPECT_EQ(Tracks("Below"), "pos.x L -33/1000=0 0=0\npos.y L -33/1000=0 0=0\npos.z L -33/1000=0 0=-100\n"
                             "scale.x L -33/1000=1 0=3\nscale.y L -33/1000=1 0=3\nscale.z L -33/1000=1 0=3\n");
}

TEST_F(AnimationImport, KeysHaveTheirSettings)
{
  AnimationFile file;
  file.Node(R"("name":"N")");
  file.Animation("", {{0, "rotation", "CUBICSPLINE", {0}, std::vector<float>(12)}, {0, "scale", "STEP", {0}, {1, 1, 1}}});
  EXPECT_EQ(LoadFile(file), "none");
  const auto getKey = [&](Int track)
  { return ToHeadless(HostTrack::Find(Object("N"), kTransformTrackIds[track])->GetCurve(false)->GetKey(0)); };
  for (const Int track : {3, 4, 5, 6, 7, 8})
  {
    HostValue value;
    ASSERT_TRUE(getKey(track)->GetParameter(915, value)) << track;
    EXPECT_EQ(value, HostValue(Int32(1))) << track;
    EXPECT_EQ(getKey(track)->GetAuxiliaryMode(), 4) << track;
    EXPECT_EQ(getKey(track)->HasRotationMode(), track < 6) << track;
  }
  EXPECT_EQ(getKey(3)->GetRotationMode(), (KeyRotationMode{3, true, true}));
}

TEST_F(AnimationImport, LinearRotationsHaveTheOtherRotationMode)
{
  EXPECT_EQ(LoadFile(AnimationFile().Node(R"("name":"N")").Animation("", {{0, "rotation", "STEP", {0}, {0, 0, 0, 1}}})), "none");
  HostCurve* const curve = HostTrack::Find(Object("N"), kTransformTrackIds[5])->GetCurve(false);
  EXPECT_EQ(ToHeadless(curve->GetKey(0))->GetRotationMode(), (KeyRotationMode{2, true, true}));
}

// Options and the variable.

TEST_F(AnimationImport, CleanTracksLeaveConstantSamplersOut)
{
  Host().Set(kCleanTracksParameter, true);
  AnimationFile file;
  file.Node(R"("name":"N","scale":[9,9,9])");
  file.Animation("",
                 {{0, "scale", "LINEAR", {0, 1}, {2, 2, 2, 2, 2, 2}}, {0, "translation", "LINEAR", {0, 1}, {0, 0, 0, 0, 0, 1}}});
  EXPECT_EQ(LoadFile(file), "none");
  EXPECT_EQ(Tracks(), "pos.x L -33/1000=0 0=0 1=0\npos.y L -33/1000=0 0=0 1=0\npos.z L -33/1000=0 0=0 1=-100\n");
  EXPECT_EQ(Object("N")->GetRelativeScale(), (Vector{9, 9, 9}));
}

TEST_F(AnimationImport, WithoutTransformsTheRangeAloneIsSet)
{
  Host().Set(kAnimationTrsParameter, false);
  EXPECT_EQ(LoadFile(AnimationFile().Node(R"("name":"N")").Animation("Walk", {kScaleToTwo})), "none");
  EXPECT_EQ(Tracks(), "");
  EXPECT_EQ(TimeParameter(1003), (HostTime{1, 1}));
}

TEST_F(AnimationImport, VariableBakesSplinesAtEveryFrame)
{
  g_gltfImporterBakeSplineInterpolatedAnimation = true;
  AnimationFile file;
  file.Node(R"("name":"N")");
  // Without slopes a quarter of the way gives 5/32 of the value.
  file.Animation("", {{0, "scale", "CUBICSPLINE", {0, 1}, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 32, 32, 32, 0, 0, 0}},
                      {0, "translation", "STEP", {0, 1}, {1, 0, 0, 2, 0, 0}}});
  EXPECT_EQ(LoadFile(file), "none");
  HostCurve* const curve = HostTrack::Find(Object("N"), kTransformTrackIds[6])->GetCurve(false);
  ASSERT_EQ(curve->GetKeyCount(), 32);  // and one before 0
  EXPECT_EQ(curve->GetKey(1)->GetTime(), (HostTime{0, 1}));
  EXPECT_EQ(curve->GetKey(2)->GetTime(), (HostTime{33, 1000}));
  EXPECT_EQ(curve->GetKey(31)->GetTime(), (HostTime{1, 1}));
  EXPECT_EQ(curve->GetKey(31)->GetValue(), 32);
  EXPECT_DOUBLE_EQ(curve->GetKey(16)->GetValue(), 16);  // frame 15
  EXPECT_EQ(curve->GetKey(16)->GetInterpolation(), InterpolationMode::Linear);
  EXPECT_EQ(curve->GetTangents(16).rightTime, (HostTime{0, 1}));
  HostCurve* const held = HostTrack::Find(Object("N"), kTransformTrackIds[0])->GetCurve(false);
  EXPECT_EQ(held->GetKeyCount(), 3);
  EXPECT_EQ(held->GetKey(1)->GetInterpolation(), InterpolationMode::Step);
}

TEST_F(AnimationImport, BakingBackwardRangesMakesNoKeys)
{
  g_gltfImporterBakeSplineInterpolatedAnimation = true;
  AnimationFile file;
  file.File().Values<float>({0}, 5126, "SCALAR", R"("min":[2],"max":[1])");
  file.File().Floats({0, 0, 0, 1, 1, 1, 0, 0, 0}, "VEC3");
  file.Node(R"("name":"N")")
    .RawAnimation(
      R"("channels":[{"sampler":0,"target":{"node":0,"path":"scale"}}],
       "samplers":[{"input":0,"output":1,"interpolation":"CUBICSPLINE"}])");
  EXPECT_EQ(LoadFile(file), "none");
  EXPECT_EQ(Tracks(), "scale.x -\nscale.y -\nscale.z -\n");
}

// Ranges of the document.

struct EndRow
{
  const char* name;
  float lastTime;
  Int32 framesPerSecond;
  HostTime end;
};

const EndRow kEndRows[] = {
  {"LastKey", 2.5F, 30, {5, 2}},
  {"AtLeastAFrame", 0, 30, {33, 1000}},
  {"AtLeastAHundredthOfASecond", 0, 240, {1, 100}},
};

class AnimationEnd : public AnimationImport, public testing::WithParamInterface<EndRow>
{};

TEST_P(AnimationEnd, IsTheDocumentsEnd)
{
  Host().Document()->SetParameter(1001, GetParam().framesPerSecond);
  Host().Document()->SetParameter(1002, HostTime{7, 1});
  AnimationFile file;
  file.Node(R"("name":"N")").Animation("", {{0, "scale", "LINEAR", {GetParam().lastTime}, {1, 1, 1}}});
  EXPECT_EQ(LoadFile(file), "none");
  EXPECT_EQ(TimeParameter(1002), (HostTime{0, 1}));
  EXPECT_EQ(TimeParameter(1003), GetParam().end);
  EXPECT_EQ(TimeParameter(1004), (HostTime{0, 1}));
  EXPECT_EQ(TimeParameter(1005), GetParam().end);
}

INSTANTIATE_TEST_SUITE_P(Rows, AnimationEnd, testing::ValuesIn(kEndRows), RowName());

TEST_F(AnimationImport, ADocumentWithoutARateHasThirtyFrames)
{
  Host().Document()->SetParameter(1001, Int32(0));
  EXPECT_EQ(LoadFile(AnimationFile().Node(R"("name":"N")").Animation("", {kScaleToTwo})), "none");
  EXPECT_EQ(Tracks(), kScaleToTwoWithRest);
}

// Takes.

TEST_F(AnimationImport, OnlyAnimationNamesTheMainTake)
{
  EXPECT_EQ(LoadFile(AnimationFile().Node(R"("name":"N")").Animation("Walk", {kScaleToTwo})), "none");
  EXPECT_THAT(TakeNames(), ElementsAre("Walk"));
  EXPECT_EQ(Tracks(), kScaleToTwoWithRest);
}

TEST_F(AnimationImport, NamelessOnlyAnimationLeavesTheMainTakesName)
{
  EXPECT_EQ(LoadFile(AnimationFile().Node(R"("name":"N")").Animation("", {kScaleToTwo})), "none");
  EXPECT_THAT(TakeNames(), ElementsAre("Main"));
}

TEST_F(AnimationImport, SeveralAnimationsGetATakeEachAndNoRestKeys)
{
  AnimationFile file;
  file.Node(R"("name":"N","scale":[3,3,3])");
  file.Animation("Walk", {kScaleToTwo});
  file.Animation("", {{0, "scale", "LINEAR", {2}, {5, 5, 5}}});
  file.RawAnimation(R"("name":"Nothing")");
  EXPECT_EQ(LoadFile(file), "none");
  EXPECT_THAT(TakeNames(), ElementsAre("Main", "Walk", "Animation #1", "Nothing"));
  EXPECT_EQ(Tracks(), "");
  EXPECT_EQ(TakeTracks(1), kScaleToTwoTracks);
  EXPECT_EQ(TakeTracks(2), "scale.x L 2=5\nscale.y L 2=5\nscale.z L 2=5\n");
  EXPECT_EQ(TakeTracks(3), "no override");
  EXPECT_TRUE(Host().Scene().GetTakeData().GetCurrentTake()->IsMain());
  // The overridden values are those of the node.
  HostValue value;
  const HeadlessTake* const walk = Host().Scene().GetTakeData().GetTake(1);
  ASSERT_TRUE(walk->FindOverride(ToHeadless(Object("N")))->GetParameters().Find(kTransformTrackIds[7]));
  EXPECT_EQ(*walk->FindOverride(ToHeadless(Object("N")))->GetParameters().Find(kTransformTrackIds[7]), HostValue(3.0));
  // Animations are found by their place in the file.
  EXPECT_EQ(TimeParameter(1003), (HostTime{2, 1}));
}

// Failures.

const char* const kBrokenAnimation =
  R"("channels":[{"sampler":0,"target":{"node":0,"path":"scale"}}],"samplers":[{"input":0,"output":99}])";

TEST_F(AnimationImport, FailedAnimationIsAWarningAndTheNextFollows)
{
  AnimationFile file;
  file.Node(R"("name":"N")").Animation("Walk", {kScaleToTwo}).RawAnimation(kBrokenAnimation).Animation("Run", {kScaleToTwo});
  EXPECT_EQ(LoadFile(file), "none");
  EXPECT_THAT(Warnings(), ElementsAre(std::string(HostLoadString(10014).GetView()), AnimationWarning("1")));
  EXPECT_THAT(TakeNames(), ElementsAre("Main", "Walk", "Animation #1", "Run"));
  EXPECT_EQ(TakeTracks(3), kScaleToTwoTracks);
}

TEST_F(AnimationImport, OnlyAnimationThatFailsIsAWarning)
{
  EXPECT_EQ(LoadFile(AnimationFile().Node(R"("name":"N")").RawAnimation(kBrokenAnimation)), "none");
  EXPECT_THAT(Warnings(), ElementsAre(std::string(HostLoadString(10014).GetView()), AnimationWarning("0")));
}

TEST_F(AnimationImport, KeysWithoutValuesFailBehindTheTracks)
{
  AnimationFile file;
  file.Node(R"("name":"N")");
  file.Animation("", {{0, "translation", "LINEAR", {0}, {1, 1, 1}}, {0, "scale", "LINEAR", {0, 1}, {1, 1, 1}}});
  EXPECT_EQ(LoadFile(file), "none");
  EXPECT_THAT(Warnings(), ElementsAre(AnimationWarning("0")));
  EXPECT_EQ(Tracks(), "pos.x L -33/1000=0 0=100\npos.y L -33/1000=0 0=100\npos.z L -33/1000=0 0=-100\n"
                      "scale.x -\nscale.y -\nscale.z -\n");
}

TEST_F(AnimationImport, SamplerWithoutBoundsFailsTheWholeStage)
{
  AnimationFile file;
  file.Node(R"("name":"N")").Animation("Walk", {kScaleToTwo});
  const int input = file.File().Floats({0, 1}, "SCALAR");
  file.RawAnimation(R"("channels":[{"sampler":0,"target":{"path":"scale"}}],"samplers":[{"input":)" + std::to_string(input) +
                    R"(,"output":1}])");
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
  file.File().Values<float>({0, 1}, 5126, "SCALAR", R"("min":[0],"max":[1e30])");
  file.File().Floats(std::vector<float>(18), "VEC3");
  file.Node(R"("name":"N")")
    .RawAnimation(
      R"("channels":[{"sampler":0,"target":{"node":0,"path":"scale"}}],
       "samplers":[{"input":0,"output":1,"interpolation":"CUBICSPLINE"}])");
  EXPECT_EQ(LoadFile(file), "out_of_memory");
}

TEST_F(AnimationImport, SharedKeysOfTooManyNodesAreOverTheLimit)
{
  constexpr int kKeys = 10000;
  constexpr int kNodes = 200;  // six million keys, from 160 kB
  AnimationFile file;
  std::vector<float> times(kKeys);
  for (int i = 0; i < kKeys; ++i)
    times[static_cast<size_t>(i)] = static_cast<float>(i);
  file.File().Values(times, 5126, "SCALAR", R"("min":[0],"max":[1])");
  file.File().Floats(std::vector<float>(kKeys * 3), "VEC3");
  std::string channels;
  for (int i = 0; i < kNodes; ++i)
  {
    file.Node(R"("name":"N")");
    channels += (i ? "," : "") + (R"({"sampler":0,"target":{"path":"scale","node":)" + std::to_string(i)) + "}}";
  }
  file.RawAnimation(R"("channels":[)" + channels + R"(],"samplers":[{"input":0,"output":1}])");
  EXPECT_EQ(LoadFile(file), "out_of_memory");
}

TEST_F(AnimationImport, ManyKeysInFallingOrderAreOverTheLimit)
{
  std::vector<float> times;
  for (int i = 20000; i > 0; --i)
    times.push_back(static_cast<float>(i));
  const std::vector<float> values(times.size() * 3);
  EXPECT_EQ(LoadFile(AnimationFile().Node(R"("name":"N")").Animation("", {{0, "scale", "LINEAR", times, values}})),
            "out_of_memory");
}

class UnbackedCount : public AnimationImport, public testing::WithParamInterface<Bool>
{};

TEST_P(UnbackedCount, IsAWarning)
{
  g_gltfImporterBakeSplineInterpolatedAnimation = GetParam();
  AnimationFile file;
  file.File().Floats({0, 1, 2, 3}, "SCALAR");
  file.File().Add("accessors",
                  R"({"bufferView":0,"componentType":5126,"type":"SCALAR","count":1000000000000000,"min":[0],"max":[1]})");
  file.File().Add("accessors", R"({"bufferView":0,"componentType":5126,"type":"VEC3","count":9223372036854775807})");
  for (const char* interpolation : {"LINEAR", "CUBICSPLINE", "STEP"})
  {
    for (const char* path : {"scale", "rotation"})
      file.RawAnimation(R"("channels":[{"sampler":0,"target":{"node":0,"path":")" + std::string(path) +
                        R"("}}],"samplers":[{"input":1,"output":2,"interpolation":")" + interpolation + R"("}])");
  }
  file.Node(R"("name":"N")");
  EXPECT_EQ(LoadFile(file), "none");
  EXPECT_THAT(Warnings(), ElementsAre(AnimationWarning("0"), AnimationWarning("1"), AnimationWarning("2"), AnimationWarning("3"),
                                      AnimationWarning("4"), AnimationWarning("5")));
}

INSTANTIATE_TEST_SUITE_P(BakedOrNot, UnbackedCount, testing::Bool());

// The mirror of the first import stays for the whole process, so each case has a process of its own.

struct MirrorRow
{
  const char* name;
  Bool first;
  Bool second;
  const char* position;  // of the second load
};

void LoadTwice(const MirrorRow& row)
{
  AnimationFile file;
  file.Node(R"("name":"N")").Animation("", {{0, "translation", "LINEAR", {0}, {1, 2, 3}}});
  std::string text;
  for (const Bool flip : {row.first, row.second})
  {
    TestHost host;
    host.Set(kFlipZParameter, flip);
    host.LoadText(file.Text());
    text = WriteTracks(FindObject(host.Document(), "N"));
  }
  std::fputs(text.c_str(), stderr);
  std::exit(0);
}

TEST(AnimationMirrorDeathTest, IsThatOfTheFirstLoad)
{
  testing::FLAGS_gtest_death_test_style = "threadsafe";  // which starts afresh
  const MirrorRow kRows[] = {{"OnFirst", true, false, "pos.z L -33/1000=0 0=-300"},
                             {"OffFirst", false, true, "pos.z L -33/1000=0 0=300"}};
  for (const MirrorRow& row : kRows)
    EXPECT_EXIT(LoadTwice(row), testing::ExitedWithCode(0), row.position) << row.name;
}

}  // namespace
}  // namespace q7z::test
