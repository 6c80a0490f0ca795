// Baking: what moves is sampled at every frame, what does not loses its tracks.

#include <cmath>

#include "tests/export/preprocessorfixture.h"

namespace q7z::test
{
namespace
{

constexpr HostDescId kX{kPositionParameter, kComponentX};
constexpr HostDescId kY{kPositionParameter, kComponentY};
constexpr HostDescId kZ{kPositionParameter, kComponentZ};
constexpr HostDescId kHeading{kRotationParameter, kComponentX};
constexpr HostDescId kScaleX{kScaleParameter, kComponentX};

class PreprocessorBake : public PreprocessorTest
{
protected:
  PreprocessorBake()
  {
    _options.bakeAnimation = true;
    SetTimes(4, {0, 1}, {1, 1});  // frames 0 to 4
  }
};

TEST_F(PreprocessorBake, SamplesTheVectorsThatMove)
{
  HostObject* const op = AddStrip("mover", 1);
  op->SetParameter(kPositionParameter, Vector{0, 7, 0});
  Animate(op, kX, {{0, 0}, {0.5, 1}, {1, 3}});
  EXPECT_EQ(Run(), "");
  for (const HostObject* const checked : {FindOriginal("mover"), Find("mover")})
  {
    EXPECT_EQ(Values(checked, kX), "0, 0.5, 1, 2, 3");
    EXPECT_EQ(Values(checked, kY), "7, 7, 7, 7, 7");
    EXPECT_EQ(Values(checked, kZ), "0, 0, 0, 0, 0");
    EXPECT_EQ(Values(checked, kHeading), "none");
    EXPECT_EQ(Values(checked, kScaleX), "none");
  }
  HostCurve* const curve = HostTrack::Find(Find("mover"), kX)->GetCurve(false);
  EXPECT_EQ(curve->GetKey(3)->GetTime(), (HostTime{3, 4}));
  EXPECT_EQ(curve->GetKey(3)->GetInterpolation(), InterpolationMode::Linear);
}

struct StepRow
{
  const char* name;
  Float step;  // from each frame to the next
  bool isKept;
};

const StepRow kSteps[] = {
  {"Still", 0, false},
  {"BelowTheLimit", 0.000099, false},
  {"AboveTheLimit", 0.000101, true},
  {"Backwards", -0.000101, true},
};

class PreprocessorBakeSteps : public PreprocessorBake, public testing::WithParamInterface<StepRow>
{};

// Slow motion is lost, however far it goes in the end.
TEST_P(PreprocessorBakeSteps, DropsWhatHardlyMoves)
{
  HostObject* const op = AddStrip("mover", 1);
  Animate(op, kScaleX, {{0, 1}, {1, 1 + 4 * GetParam().step}});
  Animate(op, kHeading, {{0, 0.5}, {1, 0.5}});
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(Values(Find("mover"), kScaleX) != "none", GetParam().isKept);
  EXPECT_EQ(Values(Find("mover"), kHeading), "none");
  EXPECT_EQ(Values(FindOriginal("mover"), kHeading), "none");
}

INSTANTIATE_TEST_SUITE_P(Rows, PreprocessorBakeSteps, testing::ValuesIn(kSteps), RowName());

TEST_F(PreprocessorBake, ValuesAreRelativeToTheBaseTransform)
{
  HostObject* const op = AddStrip("mover", 1);
  ToHeadless(op)->SetBase({HostMatrix{{100, 0, 0}, {0, 1, 0}, {-1, 0, 0}, {0, 0, 1}}, {1, 1, 1}});
  Animate(op, kX, {{0, 0}, {1, 8}});
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(Values(Find("mover"), kX), "0, 2, 4, 6, 8");
  EXPECT_EQ(Values(Find("mover"), kHeading), "none");
}

TEST_F(PreprocessorBake, ValuesAreLocal)
{
  HostObject* const parent = Add("parent");
  Animate(parent, kX, {{0, 0}, {1, 4}});
  HostObject* const child = AddStrip("child", 1, parent);
  Animate(child, kY, {{0, 0}, {1, 8}});
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(Values(Find("parent"), kX), "0, 1, 2, 3, 4");
  EXPECT_EQ(Values(Find("child"), kX), "0, 0, 0, 0, 0");
  EXPECT_EQ(Values(Find("child"), kY), "0, 2, 4, 6, 8");
}

// Quarter turns about an axis are plain to see in any order; what matters is that the sampled angles mean what the object's do.
TEST_F(PreprocessorBake, AnglesAreInTheObjectsOrder)
{
  for (RotationOrder order = 0; order <= 6; ++order)
  {
    HostObject* const op = AddStrip("mover" + std::to_string(order), 1);
    ToHeadless(op)->SetRotationOrder(order);
    op->SetParameter(kRotationParameter, Vector{0.1, 0.2, 0.3});
    Animate(op, kHeading, {{0, 0.1}, {1, 0.5}});
  }
  EXPECT_EQ(Run(), "");
  for (RotationOrder order = 0; order <= 6; ++order)
  {
    const HostObject* const op = Find("mover" + std::to_string(order));
    for (int frame = 0; frame <= 4; ++frame)
    {
      Vector angles;
      for (Int32 i = 0; i < 3; ++i)
        angles[i] = HostTrack::Find(op, {kRotationParameter, kComponentX + i})->GetCurve(false)->GetKey(frame)->GetValue();
      const HostMatrix baked = AnglesToMatrix(angles, order);
      const HostMatrix expected = AnglesToMatrix({0.1 + 0.1 * frame, 0.2, 0.3}, order);
      EXPECT_NEAR((baked.axisX - expected.axisX).GetLength(), 0, 1e-9) << "order " << order << " frame " << frame;
      EXPECT_NEAR((baked.axisY - expected.axisY).GetLength(), 0, 1e-9) << "order " << order << " frame " << frame;
    }
  }
}

TEST_F(PreprocessorBake, ScaleIsTheLengthOfTheAxes)
{
  HostObject* const op = AddStrip("mover", 1);
  op->SetParameter(kScaleParameter, Vector{-1, 2, 3});
  Animate(op, kScaleX, {{0, -1}, {1, -5}});
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(Values(Find("mover"), kScaleX), "1, 2, 3, 4, 5");
}

TEST_F(PreprocessorBake, SkinnedMeshesLoseTheirTracks)
{
  HostObject* const joint = Add("joint", nullptr, kJointObjectType);
  HostObject* const skin = AddStrip("skin", 1);
  Bind(skin, {joint});
  Animate(skin, kX, {{0, 0}, {1, 4}});
  Animate(joint, kY, {{0, 0}, {1, 4}});
  _options.exportSkins = true;
  EXPECT_EQ(Run(), "");
  EXPECT_FALSE(HasTransformTracks(Find("skin")));
  EXPECT_FALSE(HasTransformTracks(FindOriginal("skin")));
  EXPECT_EQ(Values(Find("joint"), kY), "0, 1, 2, 3, 4");
}

TEST_F(PreprocessorBake, ReturnsToTheFrameThatTheDocumentStoodAt)
{
  Animate(AddStrip("mover", 1), kX, {{0, 0}, {1, 8}});
  Document()->SetTime({1, 2});
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(Document()->GetTime(), (HostTime{1, 2}));
  EXPECT_DOUBLE_EQ(Find("mover")->GetLocalMatrix().offset.x, 4);
}

TEST_F(PreprocessorBake, FramesAreThoseThatTheTimesLieIn)
{
  SetTimes(10, {13, 100}, {37, 100});  // frames 130 / 100 = 1 to 370 / 100 = 3
  Animate(AddStrip("mover", 1), kX, {{0, 0}, {1, 10}});
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(Values(Find("mover"), kX), "1, 2, 3");
}

struct UnbakedRow
{
  const char* name;
  bool bakes;
  bool transforms;
  bool morphs;
  Int32 rate;
  HostTime first;
  HostTime last;
  bool isBaked;
};

const UnbakedRow kUnbaked[] = {
  {"Baked", true, true, true, 4, {0, 1}, {1, 1}, true},
  {"TransformsAlone", true, true, false, 4, {0, 1}, {1, 1}, true},
  {"MorphsAlone", true, false, true, 4, {0, 1}, {1, 1}, true},
  {"NotAsked", false, true, true, 4, {0, 1}, {1, 1}, false},
  {"NothingToWrite", true, false, false, 4, {0, 1}, {1, 1}, false},
  {"OneFrame", true, true, true, 4, {1, 1}, {1, 1}, false},
  {"LessThanAFrame", true, true, true, 4, {0, 1}, {1, 5}, false},
  {"Backwards", true, true, true, 4, {1, 1}, {0, 1}, false},
  {"NoRate", true, true, true, 0, {0, 1}, {1, 1}, false},
  {"NegativeRate", true, true, true, -4, {1, 1}, {0, 1}, false},
};

class PreprocessorBakeConditions : public PreprocessorBake, public testing::WithParamInterface<UnbakedRow>
{};

TEST_P(PreprocessorBakeConditions, BakeOnlyThen)
{
  const UnbakedRow& row = GetParam();
  _options.bakeAnimation = row.bakes;
  _options.exportTransformAnimation = row.transforms;
  _options.exportMorphs = row.morphs;
  SetTimes(row.rate, row.first, row.last);
  Animate(AddStrip("mover", 1), kX, {{0, 0}, {1, 4}});
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(Values(Find("mover"), kX), row.isBaked ? "0, 1, 2, 3, 4" : "0, 4");
}

INSTANTIATE_TEST_SUITE_P(Rows, PreprocessorBakeConditions, testing::ValuesIn(kUnbaked), RowName());

// A time range is a number in a file: it must not make the program ask for all the memory there is.
TEST_F(PreprocessorBake, AnEndlessTimeRangeIsOutOfMemory)
{
  SetTimes(1000000, {0, 1}, {1000000, 1});
  Animate(AddStrip("mover", 1), kX, {{0, 0}, {1, 4}});
  EXPECT_THAT(Run(), testing::StartsWith("net.tarno.error.outofmemory"));
}

}  // namespace
}  // namespace q7z::test
