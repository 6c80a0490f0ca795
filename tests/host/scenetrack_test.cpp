// Tracks, curves and keys: order, evaluation, keys that fit into a curve.

#include "host/scene/headlesstrack.h"
#include "tests/host/scenefixture.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

HostTime Seconds(Float numerator, Float denominator = 1)
{
  return {numerator, denominator};
}

class SceneTrack : public SceneTest
{
protected:
  HostCurve* MakeCurve(HostObject* object, const HostDescId& id = HostDescId(kPositionParameter, kComponentX))
  {
    HostTrack* const track = HostTrack::Alloc(object, id);
    track->InsertInto(object);
    return track->GetCurve(true);
  }
  HostCurve* MakeCurve() { return MakeCurve(Add("a")); }

  static HostKey* AddKey(HostCurve* curve, const HostTime& time, Float value, InterpolationMode mode)
  {
    HostKey* const key = curve->AddKey(time);
    key->SetValue(curve, value);
    key->SetInterpolation(curve, mode);
    return key;
  }
};

TEST_F(SceneTrack, ListIsSortedById)
{
  HostObject* const object = Add("a");
  const HostDescId ids[] = {{905, 1000}, {903, 1001}, {100004812}, {903, 1000}, {903}, {904, 1002}};
  for (const HostDescId& id : ids)
    HostTrack::Alloc(object, id)->InsertInto(object);
  std::vector<std::pair<Int32, Int32>> found;
  for (const HeadlessTrack* track = ToHeadless(object)->GetTracks()->GetFirst(); track; track = track->GetNext())
    found.emplace_back(track->GetId()[0].id, track->GetId()[1].id);
  const std::vector<std::pair<Int32, Int32>> sorted = {{903, 0},    {903, 1000}, {903, 1001},
                                                       {904, 1002}, {905, 1000}, {100004812, 0}};
  EXPECT_EQ(found, sorted);
  for (const HostDescId& id : ids)
    EXPECT_EQ(HostTrack::Find(object, id)->GetDescId(), id);
  EXPECT_EQ(HostTrack::Find(object, HostDescId(903, 1002)), nullptr);
  EXPECT_EQ(HostTrack::Find(object, HostDescId(1)), nullptr);

  HostTrack* const removed = HostTrack::Find(object, HostDescId(903, 1001));
  removed->Remove();
  EXPECT_EQ(HostTrack::Find(object, HostDescId(903, 1001)), nullptr);
  EXPECT_NE(HostTrack::Find(object, HostDescId(904, 1002)), nullptr);
  EXPECT_EQ(removed->GetDocument(), nullptr);
  HostNode::Free(removed);
}

TEST_F(SceneTrack, IdKeepsItsDataTypes)
{
  HostObject* const object = Add("a");
  HostTrack::Alloc(object, HostDescId({903, 23, 0}, {1000, 19, 0}))->InsertInto(object);
  const HostDescId id = HostTrack::Find(object, HostDescId(903, 1000))->GetDescId();
  EXPECT_EQ(id[0].dataType, 23);
  EXPECT_EQ(id[1].dataType, 19);
}

TEST_F(SceneTrack, NodesWithoutTracksGetNone)
{
  HostCurve* const curve = MakeCurve();
  HostKey* const key = curve->AddKey(Seconds(0));
  EXPECT_EQ(HostTrack::Alloc(key, HostDescId(1)), nullptr);
  EXPECT_EQ(HostTrack::Find(key, HostDescId(1)), nullptr);
  EXPECT_EQ(HostTrack::Alloc(Add("b"), HostDescId()), nullptr);
}

TEST_F(SceneTrack, KeysStandInTimeOrder)
{
  HostCurve* const curve = MakeCurve();
  Int32 index = -1;
  for (const Float time : {2.0, 0.0, 3.0, -1.0, 1.0})
    curve->AddKey(Seconds(time), &index)->SetValue(curve, 10 * time);
  EXPECT_EQ(index, 2) << "the key at 1 behind those at -1 and 0";
  ASSERT_EQ(curve->GetKeyCount(), 5);
  for (Int32 i = 0; i < 5; ++i)
    EXPECT_EQ(curve->GetKey(i)->GetValue(), 10 * (i - 1)) << i;
  EXPECT_EQ(curve->GetKey(5), nullptr);
  EXPECT_EQ(curve->GetKey(-1), nullptr);
}

TEST_F(SceneTrack, OneKeyAtOneTime)
{
  HostCurve* const curve = MakeCurve();
  HostKey* const key = curve->AddKey(Seconds(1, 2));
  key->SetLeftTangent(curve, Seconds(-1, 10), 4);
  curve->AddKey(Seconds(0));
  Int32 index = -1;
  EXPECT_EQ(curve->AddKey(Seconds(15, 30), &index), key);
  EXPECT_EQ(index, 1);
  EXPECT_EQ(curve->GetKeyCount(), 2);
  EXPECT_EQ(curve->GetTangents(1).leftValue, 4) << "tangents stay";
}

TEST_F(SceneTrack, KeysStayWhereTheyAreInMemory)
{
  HostCurve* const curve = MakeCurve();
  std::vector<HostKey*> keys;
  for (Int32 i = 1000; i-- > 0;)
    keys.push_back(curve->AddKey(Seconds(i)));
  for (Int32 i = 0; i < 1000; ++i)
    EXPECT_EQ(curve->GetKey(i), keys[999 - i]);
}

TEST_F(SceneTrack, TimesThatAreNotFiniteAreRefused)
{
  HostCurve* const curve = MakeCurve();
  EXPECT_EQ(curve->AddKey(Seconds(std::nan(""))), nullptr);
  EXPECT_EQ(curve->AddKey(Seconds(INFINITY)), nullptr);
  EXPECT_EQ(HostCurveAddKeyAdapted(curve, Seconds(std::nan(""))), nullptr);
  EXPECT_NE(curve->AddKey(Seconds(5, 0)), nullptr) << "no denominator is time 0";
  EXPECT_EQ(curve->GetKeyCount(), 1);
}

TEST_F(SceneTrack, KeysKeepWhatIsSetOnThem)
{
  HostCurve* const curve = MakeCurve();
  HostKey* const key = AddKey(curve, Seconds(1), 5, InterpolationMode::Spline);
  EXPECT_EQ(curve->GetTangents(0).rightValue, 0);
  key->SetLeftTangent(curve, Seconds(-1, 3), -2);
  key->SetRightTangent(curve, Seconds(1, 4), 3);
  HostKeySetRotationMode(key, curve, 3, true, false);
  HostKeySetAuxiliaryMode(key, curve, 4);
  ASSERT_TRUE(key->SetParameter(HostDescId(915), HostValue(Int32(1)), 128));
  key->SetInterpolation(curve, static_cast<InterpolationMode>(9));

  HostOwner<HostTrack> copy(HostTrack::Find(Document()->GetFirstObject(), HostDescId(903, 1000))->Clone(Document()));
  key->SetValue(curve, 0);
  const HeadlessKey& kept = *ToHeadless(copy->GetCurve(false)->GetKey(0));
  EXPECT_EQ(kept.GetTime(), Seconds(1));
  EXPECT_EQ(kept.GetValue(), 5);
  EXPECT_EQ(kept.GetInterpolation(), InterpolationMode::Spline);
  EXPECT_EQ(kept.GetLeftTangent().time.GetSeconds(), -1.0 / 3);
  EXPECT_EQ(kept.GetLeftTangent().value, -2);
  EXPECT_EQ(kept.GetRightTangent().time.GetSeconds(), 0.25);
  EXPECT_EQ(kept.GetRightTangent().value, 3);
  EXPECT_EQ(kept.GetRotationMode(), (KeyRotationMode{3, true, false}));
  EXPECT_EQ(kept.GetAuxiliaryMode(), 4);
  HostValue value;
  EXPECT_TRUE(kept.GetParameter(HostDescId(915), value));
  EXPECT_EQ(value.GetInt32(), 1);
}

TEST_F(SceneTrack, CurveIsMadeOnRequest)
{
  HostOwner<HostTrack> track(HostTrack::Alloc(Add("a"), HostDescId(903, 1000)));
  EXPECT_EQ(track->GetCurve(false), nullptr);
  HostCurve* const curve = track->GetCurve(true);
  EXPECT_EQ(track->GetCurve(false), curve);
  EXPECT_EQ(curve->GetValue(Seconds(1)), 0);
}

// Keys at 1, 2 and 4 seconds with the values 10, 20 and 0.
struct ValueRow
{
  const char* name;
  InterpolationMode mode;
  HostTime time;
  Float value;
};

class SceneCurveValue : public SceneTrack, public testing::WithParamInterface<ValueRow>
{};

TEST_P(SceneCurveValue, IsThis)
{
  HostCurve* const curve = MakeCurve();
  const Float values[] = {10, 20, 0};
  const Float times[] = {1, 2, 4};
  for (int i = 0; i < 3; ++i)
    AddKey(curve, Seconds(times[i]), values[i], GetParam().mode);
  EXPECT_NEAR(curve->GetValue(GetParam().time), GetParam().value, 1e-12);
}

const ValueRow kValues[] = {
  {"BeforeTheFirst", InterpolationMode::Linear, {-5, 1}, 10},
  {"AtTheFirst", InterpolationMode::Linear, {30, 30}, 10},
  {"LinearBetween", InterpolationMode::Linear, {3, 2}, 15},
  {"LinearInTheLongerSegment", InterpolationMode::Linear, {5, 2}, 15},
  {"BehindTheLast", InterpolationMode::Linear, {5, 1}, 0},
  {"StepHolds", InterpolationMode::Step, {199, 100}, 10},
  {"StepAtTheKey", InterpolationMode::Step, {2, 1}, 20},
  {"StepBehindTheLast", InterpolationMode::Step, {9, 1}, 0},
  // Handles of no length lie in the key's point, so the segment is straight.
  {"SplineWithoutTangents", InterpolationMode::Spline, {5, 2}, 15},
};
INSTANTIATE_TEST_SUITE_P(Rows, SceneCurveValue, testing::ValuesIn(kValues), RowName());

TEST_F(SceneTrack, SplineFollowsItsTangents)
{
  // Handles at a third of the segment make the place along it the time itself: the value at the middle of 0, 6, 6, 0 is
  // 3 / 8 * 6 + 3 / 8 * 6 = 4.5; at a quarter 27 / 64 * 6 + 9 / 64 * 6 = 3.375.
  HostCurve* const curve = MakeCurve();
  AddKey(curve, Seconds(0), 0, InterpolationMode::Spline)->SetRightTangent(curve, Seconds(1), 6);
  AddKey(curve, Seconds(3), 0, InterpolationMode::Spline)->SetLeftTangent(curve, Seconds(-1), 6);
  EXPECT_NEAR(curve->GetValue(Seconds(3, 2)), 4.5, 1e-12);
  EXPECT_NEAR(curve->GetValue(Seconds(3, 4)), 3.375, 1e-12);
}

TEST_F(SceneTrack, SplineIsSolvedForTime)
{
  // Inner times at 0 and 0: the time at place s is s cubed, so time 1 / 8 lies at the place 1 / 2. The inner values are 0 and 8
  // above the last: value = 3 / 8 * 0 + 3 / 8 * 8 + 0 = 3.
  HostCurve* const curve = MakeCurve();
  AddKey(curve, Seconds(0), 0, InterpolationMode::Spline);
  AddKey(curve, Seconds(1), 0, InterpolationMode::Spline)->SetLeftTangent(curve, Seconds(-1), 8);
  EXPECT_NEAR(curve->GetValue(Seconds(1, 8)), 3, 1e-12);
}

TEST_F(SceneTrack, TangentTimesAreHeldInsideTheSegment)
{
  // Handles that reach past the other key, and backwards: held at the ends they give times 0, 1, 1, 1 and 0, 0, ... .
  HostCurve* const far = MakeCurve(Add("far"));
  AddKey(far, Seconds(0), 0, InterpolationMode::Spline)->SetRightTangent(far, Seconds(5), 1);
  AddKey(far, Seconds(1), 0, InterpolationMode::Spline)->SetLeftTangent(far, Seconds(1), 0);
  // Time at place s is 1 - (1 - s) cubed: 7 / 8 lies at 1 / 2, where the value is 3 / 8.
  EXPECT_NEAR(far->GetValue(Seconds(7, 8)), 0.375, 1e-12);

  HostCurve* const back = MakeCurve(Add("back"));
  AddKey(back, Seconds(0), 0, InterpolationMode::Spline)->SetRightTangent(back, Seconds(-5), 0);
  AddKey(back, Seconds(1), 0, InterpolationMode::Spline)->SetLeftTangent(back, Seconds(-7), 1);
  EXPECT_NEAR(back->GetValue(Seconds(1, 8)), 0.375, 1e-12);
}

// A key that fits into the curve.

class SceneAdaptedKey : public SceneTrack, public testing::WithParamInterface<InterpolationMode>
{
protected:
  HostCurve* Wave(HostObject* object)
  {
    HostCurve* const curve = MakeCurve(object);
    HostKey* const a = AddKey(curve, Seconds(1), 3, GetParam());
    HostKey* const b = AddKey(curve, Seconds(2), -4, GetParam());
    HostKey* const c = AddKey(curve, Seconds(5), 8, GetParam());
    a->SetRightTangent(curve, Seconds(1, 5), 9);
    b->SetLeftTangent(curve, Seconds(-9, 10), 2);
    b->SetRightTangent(curve, Seconds(9), 5);
    c->SetLeftTangent(curve, Seconds(-1, 3), -6);
    // Handles to the outside have no effect.
    a->SetLeftTangent(curve, Seconds(-1), 50);
    c->SetRightTangent(curve, Seconds(1), 50);
    return curve;
  }
};

TEST_P(SceneAdaptedKey, LeavesTheShape)
{
  HostCurve* const plain = Wave(Add("plain"));
  HostCurve* const fitted = Wave(Add("fitted"));
  const HostTime added[] = {{7, 5}, {19, 10}, {3, 1}, {4, 1}, {7, 2}, {0, 1}, {6, 1}, {-3, 1}, {1001, 1000}};
  for (const HostTime& time : added)
  {
    HostKey* const key = HostCurveAddKeyAdapted(fitted, time);
    ASSERT_NE(key, nullptr);
    EXPECT_EQ(key->GetTime(), time);
    EXPECT_EQ(key->GetInterpolation(), GetParam());
    EXPECT_NEAR(key->GetValue(), plain->GetValue(time), 1e-9);
  }
  EXPECT_EQ(fitted->GetKeyCount(), 12);
  for (Int32 i = -400; i <= 700; ++i)
    EXPECT_NEAR(fitted->GetValue(Seconds(i, 100)), plain->GetValue(Seconds(i, 100)), 1e-9) << i;
}

INSTANTIATE_TEST_SUITE_P(Modes, SceneAdaptedKey,
                         testing::Values(InterpolationMode::Spline, InterpolationMode::Linear, InterpolationMode::Step),
                         [](const auto& row)
                         {
                           return row.param == InterpolationMode::Spline   ? "Spline"
                                  : row.param == InterpolationMode::Linear ? "Linear"
                                                                           : "Step";
                         });

TEST_F(SceneTrack, AdaptedKeyIsTheOneThatStands)
{
  HostCurve* const curve = MakeCurve();
  HostKey* const key = AddKey(curve, Seconds(1), 7, InterpolationMode::Linear);
  EXPECT_EQ(HostCurveAddKeyAdapted(curve, Seconds(2, 2)), key);
  EXPECT_EQ(key->GetValue(), 7);
}

TEST_F(SceneTrack, AdaptedKeyOnALineHasNoTangents)
{
  HostCurve* const curve = MakeCurve();
  AddKey(curve, Seconds(0), 0, InterpolationMode::Linear);
  AddKey(curve, Seconds(2), 2, InterpolationMode::Linear);
  HostCurveAddKeyAdapted(curve, Seconds(1));
  const HostTangents tangents = curve->GetTangents(1);
  EXPECT_EQ(tangents.leftValue, 0);
  EXPECT_EQ(tangents.rightValue, 0);
  EXPECT_EQ(tangents.leftTime.GetSeconds(), 0);
  EXPECT_EQ(tangents.rightTime.GetSeconds(), 0);
}

TEST_F(SceneTrack, AdaptedKeyOnAnEmptyCurveIsZero)
{
  HostCurve* const curve = MakeCurve();
  EXPECT_EQ(HostCurveAddKeyAdapted(curve, Seconds(1))->GetValue(), 0);
}

TEST_F(SceneTrack, SplitSplineHasTheHandlesOfBothParts)
{
  // 0, 6, 6, 0 over three seconds, cut in the middle: values 0, 3, 4.5, 4.5 and 4.5, 4.5, 3, 0; each part's handles lie half a
  // second from its keys.
  HostCurve* const curve = MakeCurve();
  AddKey(curve, Seconds(0), 0, InterpolationMode::Spline)->SetRightTangent(curve, Seconds(1), 6);
  AddKey(curve, Seconds(3), 0, InterpolationMode::Spline)->SetLeftTangent(curve, Seconds(-1), 6);
  HostCurveAddKeyAdapted(curve, Seconds(3, 2));
  EXPECT_NEAR(curve->GetTangents(0).rightValue, 3, 1e-12);
  EXPECT_NEAR(curve->GetTangents(0).rightTime.GetSeconds(), 0.5, 1e-12);
  EXPECT_NEAR(curve->GetKey(1)->GetValue(), 4.5, 1e-12);
  EXPECT_NEAR(curve->GetTangents(1).leftValue, 0, 1e-12);
  EXPECT_NEAR(curve->GetTangents(1).leftTime.GetSeconds(), -0.5, 1e-12);
  EXPECT_NEAR(curve->GetTangents(1).rightValue, 0, 1e-12);
  EXPECT_NEAR(curve->GetTangents(2).leftValue, 3, 1e-12);
}

TEST_F(SceneTrack, PointKeysShowTheirPoints)
{
  HostCurve* const curve = MakeCurve(Add("a"), HostDescId(kPointTrackParameter));
  HostKey* const key = curve->AddKey(Seconds(0));
  const Vector* points = nullptr;
  EXPECT_EQ(_tables.key->GetPoints(key, &points), 0);
  HostArray<Vector> kept;
  ASSERT_TRUE(kept.Create(2));
  kept.GetW()[1] = {1, 2, 3};
  ToHeadless(key)->SetPoints(kept);
  ASSERT_EQ(_tables.key->GetPoints(key, &points), 2);
  EXPECT_EQ(points[1], (Vector{1, 2, 3}));
}

}  // namespace
}  // namespace q7z::test
