// The time of a document: what its tracks set.

#include <cmath>

#include "host/scenefile/scenefile.h"
#include "host/services/headlessjobs.h"
#include "tests/evaluation/evaluationfixture.h"
#include "tests/support/failingmemory.h"

namespace q7z::test
{
namespace
{

using Points = std::vector<Vector>;

class Tracks : public EvaluationTest
{};

// Values over time.

const std::tuple<const char*, InterpolationMode, Float, Float> kCurveRows[] = {
  {"LinearBetween", InterpolationMode::Linear, 0.25, 12.5},
  {"LinearBehind", InterpolationMode::Linear, 5, 0},
  {"StepBefore", InterpolationMode::Step, -1, 10},
  {"StepHolds", InterpolationMode::Step, 0.999, 10},
  {"StepAtAKey", InterpolationMode::Step, 1, 20},
  {"SplineAtAQuarter", InterpolationMode::Spline, 0.25, 10 + 10 * 0.15625},
  {"SplineFalling", InterpolationMode::Spline, 1.5, 20 - 20 * 0.15625},
};

// Keys: 10 at 0 s, 20 at 1 s, 0 at 3 s. Splines have tangents a third of the way to the neighbour without a value, so that
// between two keys a fraction s of the time gives the fraction 3 s^2 - 2 s^3 of the way.
TEST_F(Tracks, GiveTheValueOfTheTime)
{
  for (const auto& [name, mode, seconds, expected] : kCurveRows)
  {
    HeadlessObject& object = AddObject(name);
    HeadlessCurve& curve = AddTrack(object, kPositionX, {{0, 10}, {1, 20}, {3, 0}}, mode);
    ASSERT_TRUE(curve.GetKey(0)->SetRightTangent({1, 3}, 0));
    ASSERT_TRUE(curve.GetKey(1)->SetLeftTangent({-1, 3}, 0));
    ASSERT_TRUE(curve.GetKey(1)->SetRightTangent({2, 3}, 0));
    ASSERT_TRUE(curve.GetKey(2)->SetLeftTangent({-2, 3}, 0));
    GoTo(seconds);
    EXPECT_NEAR(object.GetLocalMatrix().offset.x, expected, 1e-12) << name;
  }
}

// Rotations.

constexpr Float kDegree = 3.141592653589793 / 180;
const Vector kAt300{0.5, 0, -std::sqrt(0.75)};
const Vector kAt330{std::sqrt(0.75), 0, -0.5};
const Vector kAt210{-std::sqrt(0.75), 0, -0.5};

const std::tuple<const char*, Int32, InterpolationMode, Float, Vector, Vector> kTurnRows[] = {
  {"ShorterWayRound", 2, InterpolationMode::Linear, 0.5, {0, 0, 0}, kAt330},
  {"SplinesToo", 3, InterpolationMode::Spline, 0.25, {60, 0, 0}, kAt330},
  {"BehindTheLast", 2, InterpolationMode::Linear, 2, {-30, 0, 0}, kAt330},
  {"HeldKeys", 2, InterpolationMode::Step, 0.5, {0, 0, 0}, kAt300},
  {"AnglesWithoutAMode", -1, InterpolationMode::Linear, 0.5, {120, 0, 0}, kAt210},
};

// From a heading of 300 degrees at 0 s.
TEST_F(Tracks, TurnAsTheirKeysSay)
{
  for (const auto& [name, rotationMode, mode, seconds, to, axisX] : kTurnRows)
  {
    HeadlessObject& object = AddObject(name);
    const Vector from{300, 0, 0};
    for (int i = 0; i < 3; ++i)
    {
      HeadlessCurve& curve =
        AddTrack(object, HostDescId(kRotationParameter, kComponentX + i), {{0, from[i] * kDegree}, {1, to[i] * kDegree}}, mode);
      for (Int k = 0; k < 2 && rotationMode >= 0; ++k)
        curve.GetKey(k)->SetRotationMode({rotationMode, true, true});
    }
    GoTo(seconds);
    EXPECT_LT((object.GetLocalMatrix().axisX - axisX).GetLength(), 1e-7) << name;
  }
}

// Quarter turns about Y and about X have their middle at the quaternion (-1, -1, 0, 2), divided by the root of 6, whatever the order of
// the angles is.
TEST_F(Tracks, TurnsAboutTwoAxesAtOnce)
{
  for (const RotationOrder order : {0, 3, 6})
  {
    HeadlessObject& object = AddObject("a");
    object.SetRotationOrder(order);
    const int slotOfY = order == 6 ? 0 : 1;
    for (int i = 0; i < 3; ++i)
    {
      HeadlessCurve& curve = AddTrack(object, HostDescId(kRotationParameter, kComponentX + i),
                                      {{0, i == slotOfY ? 90 * kDegree : 0}, {1, i == 1 - slotOfY ? 90 * kDegree : 0}});
      curve.GetKey(0)->SetRotationMode({2, true, true});
    }
    GoTo(0.5);
    EXPECT_LT((object.GetLocalMatrix().axisX - Vector{2.0 / 3, 1.0 / 3, 2.0 / 3}).GetLength(), 1e-7) << order;
    EXPECT_LT((object.GetLocalMatrix().axisY - Vector{1.0 / 3, 2.0 / 3, -2.0 / 3}).GetLength(), 1e-7) << order;
  }
}

TEST_F(Tracks, RotationsWithKeysAtDifferentTimesAreReadByAngle)
{
  HeadlessObject& object = AddObject("a");
  for (int i = 0; i < 3; ++i)
  {
    HeadlessCurve& curve = AddTrack(object, HostDescId(kRotationParameter, kComponentX + i),
                                    {{0, i == 0 ? 300 * kDegree : 0}, {i == 1 ? 2.0 : 1.0, 0}});
    curve.GetKey(0)->SetRotationMode({2, true, true});
  }
  GoTo(0.3);
  EXPECT_LT((object.GetLocalMatrix().axisX - kAt210).GetLength(), 1e-7);
}

// What is set.

TEST_F(Tracks, TransformComponentsBuildTheMatrixAnew)
{
  HeadlessObject& object = AddObject("a");
  HostMatrix sheared = Offset({1, 2, 3});
  sheared.axisY = {1, 1, 0};
  object.SetLocalMatrix(sheared);
  object.SetVectorsAndMatrix({{1, 2, 3}, {0, 0, 0}, {1, 1, 1}}, sheared);
  AddObject("still").SetLocalMatrix(sheared);
  AddTrack(object, kPositionY, {{0, 5}});
  AddTrack(object, HostDescId(kScaleParameter, kComponentZ), {{0, 1}, {2, 5}});
  AddTrack(object, HostDescId(kRotationParameter, kComponentX), {{0, 0}});
  GoTo(1);
  EXPECT_EQ(object.GetLocalMatrix(), (HostMatrix{{1, 5, 3}, {1, 0, 0}, {0, 1, 0}, {0, 0, 3}}))
    << "components without a track stay, shear goes";
  EXPECT_EQ(object.GetNext()->GetLocalMatrix(), sheared) << "without tracks a matrix stays as it was given";
}

TEST_F(Tracks, OtherParametersAreSetAsNumbers)
{
  HeadlessObject& object = AddObject("a");
  auto& tag = static_cast<HeadlessPoseMorphTag&>(*HeadlessTag::Create(kPoseMorphTagType));
  tag.InsertInto(&object);
  ASSERT_TRUE(tag.AddMorph() && tag.AddMorph());
  object.SetParameter(700, Vector{1, 2, 3});
  AddTrack(tag, HeadlessPoseMorphTag::GetStrengthId(1), {{0, 0}, {2, 1}});
  AddTrack(tag, HostDescId(1031), {{0, 0.5}});
  AddTrack(object, HostDescId(800), {{0, 0}, {1, 8}});
  AddTrack(object, HostDescId(700, kComponentY), {{0, 20}});
  AddTrack(object, HostDescId(900), {});
  AddTrack(object, HostDescId(kPositionParameter), {{0, 20}});
  GoTo(0.5);
  EXPECT_EQ(tag.GetMorph(1)->GetStrength(), 0.25);
  EXPECT_EQ(tag.GetMorph(0)->GetStrength(), 0);
  EXPECT_EQ(tag.GetParameters().Find(1031)->GetFloat(), 0.5);
  EXPECT_EQ(object.GetParameters().Find(800)->GetFloat(), 4);
  EXPECT_EQ(object.GetParameters().Find(700)->GetVector(), (Vector{1, 20, 3}));
  EXPECT_EQ(object.GetParameters().Find(900), nullptr) << "a track without keys says nothing";
  EXPECT_EQ(object.GetVectors().position, Vector()) << "a number is no vector";
}

// Point tracks.

class PointTracks : public EvaluationTest
{
protected:
  /// A key of the object's point track.
  static HeadlessKey& AddPointKey(HeadlessObject& object, Float seconds, std::initializer_list<Vector> points)
  {
    HeadlessTrack* const track = object.GetTracks()->Find(HostDescId(kPointTrackParameter));
    HeadlessCurve& curve = track ? *track->GetCurve() : AddTrack(object, HostDescId(kPointTrackParameter), {});
    HeadlessKey& key = *curve.AddKey({seconds, 1}, nullptr);
    key.SetPoints(MakeArray(points));
    return key;
  }
};

TEST_F(PointTracks, MoveBetweenTheKeys)
{
  HeadlessPolygonObject& object = AddPoints({{9, 9, 9}, {9, 9, 9}});
  const HeadlessKey& first = AddPointKey(object, 1, {{0, 0, 0}, {0, 4, 0}});
  AddPointKey(object, 3, {{2, 0, 0}, {0, 4, 8}});
  AddPointKey(object, 4, {{2, 2, 2}, {0, 0, 0}});
  const std::pair<Float, Points> rows[] = {{0, {{0, 0, 0}, {0, 4, 0}}},
                                           {1.5, {{0.5, 0, 0}, {0, 4, 2}}},
                                           {3, {{2, 0, 0}, {0, 4, 8}}},
                                           {9, {{2, 2, 2}, {0, 0, 0}}}};
  for (const auto& [seconds, points] : rows)
  {
    GoTo(seconds);
    EXPECT_EQ(PointsOf(object), points) << seconds;
  }
  EXPECT_EQ(first.GetPoints().GetR()[1], (Vector{0, 4, 0})) << "the keys keep their points";
}

TEST_F(PointTracks, HoldAtStepsAndOtherCounts)
{
  HeadlessPolygonObject& object = AddPoints({{9, 9, 9}});
  AddPointKey(object, 0, {{1, 1, 1}}).SetInterpolation(InterpolationMode::Step);
  AddPointKey(object, 1, {{2, 2, 2}});
  AddPointKey(object, 2, {{3, 3, 3}, {4, 4, 4}});
  AddPointKey(object, 3, {});
  AddPointKey(object, 4, {{5, 5, 5}});
  const std::tuple<Float, Vector, const char*> rows[] = {{0.5, {1, 1, 1}, "a step holds"},
                                                         {1.5, {2, 2, 2}, "no way to two points"},
                                                         {2.5, {2, 2, 2}, "two points are not the object's"},
                                                         {3.5, {2, 2, 2}, "nor are none"},
                                                         {4, {5, 5, 5}, "a key"}};
  for (const auto& [seconds, point, why] : rows)
  {
    GoTo(seconds);
    EXPECT_EQ(PointsOf(object), Points{point}) << why;
  }
}

TEST_F(PointTracks, WithoutMemoryThePointsStay)
{
  HeadlessPolygonObject& object = AddPoints({{9, 9, 9}});
  AddPointKey(object, 0, {{1, 1, 1}});
  AddPointKey(object, 2, {{3, 3, 3}});
  AddTrack(AddObject("behind"), kPositionX, {{0, 0}, {2, 2}});
  GoTo(0);
  FailAllocation(1);
  GoTo(1);
  EXPECT_EQ(StopFailingAllocations(), 1);
  EXPECT_EQ(PointsOf(object), (Points{{1, 1, 1}}));
  EXPECT_EQ(object.GetNext()->GetVectors().position.x, 1) << "the others go on";
}

// Takes.

class TakeTracks : public EvaluationTest
{
protected:
  HeadlessOverride& Override(HeadlessNode& node) { return *_take.FindOrAddOverride(&node); }

  HeadlessObject& _object = AddObject("a");
  HeadlessTake& _take = *Scene().GetTakeData().AddTake("t"_s);
};

const std::tuple<const char*, HostDescId, HostValue, Bool, Float> kPrecedenceRows[] = {
  {"ValueOverTrack", kPositionX, HostValue(20.0), false, 20},
  {"VectorOverTrack", HostDescId(kPositionParameter), HostValue(Vector{25, 0, 0}), false, 25},
  {"TrackOverValue", kPositionX, HostValue(20.0), true, 30},
  {"ValueOfAnotherComponent", kPositionY, HostValue(20.0), false, 10},
  {"ValueOfAnotherKind", HostDescId(kRotationParameter), HostValue(Vector{0, 0, 0}), true, 30},
};

TEST_F(TakeTracks, SettlePositionX)
{
  Scene().GetTakeData().SetCurrentTake(&_take);
  for (const auto& [name, valueId, value, hasTrack, expected] : kPrecedenceRows)
  {
    HeadlessObject& object = AddObject(name);
    AddTrack(object, kPositionX, {{0, 10}});
    HeadlessOverride& over = Override(object);
    ASSERT_TRUE(over.GetParameters().Set(valueId, value));
    if (hasTrack)
      AddTrack(over, kPositionX, {{0, 30}});
    GoTo(0);
    EXPECT_EQ(object.GetLocalMatrix().offset.x, expected) << name;
  }
  Scene().GetTakeData().SetCurrentTake(Scene().GetTakeData().GetMainTake());
  GoTo(0);
  for (const HeadlessObject* object = _object.GetNext(); object; object = object->GetNext())
    EXPECT_EQ(object->GetLocalMatrix().offset.x, 10) << "in the main take";
}

TEST_F(TakeTracks, ReachTagsMaterialsAndNothingThatIsGone)
{
  HeadlessTag& tag = *HeadlessTag::Create(kTextureTagType);
  tag.InsertInto(&_object);
  HeadlessMaterial* const material = HeadlessMaterial::Create();
  Scene().InsertMaterial(material);
  HeadlessOwner<HeadlessObject> gone(HeadlessObject::Create(kNullObjectType));
  ASSERT_TRUE(Override(*gone).GetParameters().Set(5, 1.5));
  ASSERT_TRUE(Override(tag).GetParameters().Set(5, 2.5));
  AddTrack(Override(*material), HostDescId(5), {{0, 3.5}});
  gone.reset();
  Scene().GetTakeData().SetCurrentTake(&_take);
  GoTo(0);
  EXPECT_EQ(tag.GetParameters().Find(5)->GetFloat(), 2.5);
  EXPECT_EQ(material->GetParameters().Find(5)->GetFloat(), 3.5);
}

// Threads.

/// A pool that runs nothing.
class FailingJobs final : public HostJobs
{
public:
  Result<void> ParallelFor(Int, Int, RangeFunction, void*) noexcept override { return Error::OutOfMemory(); }
};

// Every second object moves, by its number within the first second, and back within the next.
TEST_F(Tracks, ManyObjectsMoveOnAnyNumberOfThreads)
{
  std::vector<HeadlessObject*> objects;
  for (int i = 0; i < 300; ++i)
  {
    objects.push_back(&AddObject(std::to_string(i).c_str(), i % 3 ? objects.back() : nullptr));
    if (i % 2)
      AddTrack(*objects.back(), kPositionX, {{0, 0}, {1, static_cast<Float>(i)}, {2, 0}});
  }
  HeadlessJobs jobs(3);
  FailingJobs failing;
  const std::pair<const char*, HostJobs*> pools[] = {{"three threads", &jobs}, {"none to be had", &failing}, {"one", nullptr}};
  for (const auto& [name, pool] : pools)
  {
    for (const auto& [seconds, factor] : {std::pair(0.5, 0.5), std::pair(1.0, 1.0), std::pair(1.75, 0.25), std::pair(0.25, 0.25)})
    {
      Scene().SetTime({seconds, 1}, pool);
      for (size_t i = 0; i < objects.size(); ++i)
        ASSERT_EQ(objects[i]->GetVectors().position.x, i % 2 ? factor * static_cast<Float>(i) : 0) << name << seconds << i;
    }
  }
}

// Scene documents.

// The object stands where it was put by hand, away from its track: a document is read as it was written.
TEST_F(Tracks, ReadingADocumentEvaluatesNothing)
{
  HeadlessObject& object = AddObject("a");
  AddTrack(object, kPositionX, {{0, 0}, {2, 2}});
  GoTo(1);
  object.SetVectors({{50, 0, 0}, {}, {1, 1, 1}});
  StringSink written;
  ASSERT_FALSE(WriteSceneDocument(Scene(), "", written).HasError());
  HeadlessOwner<HeadlessDocument> read = ReadSceneDocument(written.GetText(), "").GetValue();
  EXPECT_EQ(read->GetFirstObject()->GetVectors().position.x, 50);
  EXPECT_EQ(read->GetTime(), (HostTime{1, 1}));
  read->ExecutePasses();
  EXPECT_EQ(read->GetFirstObject()->GetVectors().position.x, 1);
}

}  // namespace
}  // namespace q7z::test
