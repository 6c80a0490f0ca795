// Tracks, curves and keys: order, evaluation, keys that fit into a curve.

#include <algorithm>
#include <cmath>

#include "host/scene/headlesstrack.h"
#include "tests/host/scenefixture.h"

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
  HostTrack* const removed = HostTrack::Find(object, HostDescId(903, 1001));
  removed->Remove();
  EXPECT_EQ(HostTrack::Find(object, HostDescId(903, 1001)), nullptr);
  HostNode::Free(removed);
}

TEST_F(SceneTrack, KeysStandInTimeOrderOneAtOneTime)
{
  HostCurve* const curve = MakeCurve();
  EXPECT_EQ(HostCurveAddKeyAdapted(curve, Seconds(1))->GetValue(), 0);
  Int32 index = -1;
  for (const Float time : {2.0, 0.0, 3.0, -1.0, 1.0})
    curve->AddKey(Seconds(time), &index)->SetValue(curve, 10 * time);
  EXPECT_EQ(index, 2) << "the key at 1 behind those at -1 and 0";
  curve->GetKey(2)->SetLeftTangent(curve, Seconds(-1, 10), 4);
  EXPECT_EQ(curve->AddKey(Seconds(30, 30), &index), curve->GetKey(2));
  EXPECT_EQ(HostCurveAddKeyAdapted(curve, Seconds(2, 2)), curve->GetKey(2));
  EXPECT_EQ(index, 2);
  EXPECT_EQ(curve->GetTangents(2).leftValue, 4) << "tangents stay";
  EXPECT_EQ(curve->AddKey(Seconds(std::nan(""))), nullptr);
  EXPECT_EQ(curve->AddKey(Seconds(INFINITY)), nullptr);
  EXPECT_EQ(HostCurveAddKeyAdapted(curve, Seconds(std::nan(""))), nullptr);
  EXPECT_EQ(curve->AddKey(Seconds(5, 0)), curve->GetKey(1)) << "no denominator is time 0";
  ASSERT_EQ(curve->GetKeyCount(), 5);
  for (Int32 i = 0; i < 5; ++i)
    EXPECT_EQ(curve->GetKey(i)->GetValue(), 10 * (i - 1)) << i;
  EXPECT_EQ(curve->GetKey(5), nullptr);
  EXPECT_EQ(curve->GetKey(-1), nullptr);
}

TEST_F(SceneTrack, RunOfKeysGoesBehindTheLast)
{
  struct Case
  {
    const char* what;
    std::vector<HostTime> times;
    Int expectedCount;
  };
  std::vector<HostTime> many;
  for (int i = 0; i < 100; ++i)
    many.push_back(Seconds(10 + i, 2));
  const Case cases[] = {
    {"none", {}, 0},
    {"one", {Seconds(3)}, 1},
    {"not behind the last", {Seconds(2), Seconds(3)}, 0},
    {"one time twice", {Seconds(3), Seconds(4), Seconds(8, 2), Seconds(5)}, 2},
    {"back in time", {Seconds(3), Seconds(5), Seconds(4)}, 2},
    {"not finite", {Seconds(3), Seconds(INFINITY), Seconds(4)}, 1},
    {"fractions that a short time does not hold", {Seconds(2.5), Seconds(5, 1.5)}, 2},
    {"more than one piece of room", many, 100},
  };
  for (const Case& test : cases)
  {
    SCOPED_TRACE(test.what);
    HostCurve* const curve = MakeCurve();
    AddKey(curve, Seconds(1), 4, InterpolationMode::Linear);
    HostKey* const like = AddKey(curve, Seconds(2), 5, InterpolationMode::Step);
    like->SetLeftTangent(curve, Seconds(-1), 6);
    HostKeySetRotationMode(like, curve, 2, true, false);
    std::vector<Vector> values;
    for (size_t i = 0; i < test.times.size(); ++i)
      values.emplace_back(-1, static_cast<Float>(i), -1);
    const HostKeyRun run{test.times.data(), values.data(), 1, static_cast<Int>(values.size())};
    ASSERT_EQ(curve->AddKeysBehind(like, run), test.expectedCount);
    ASSERT_EQ(curve->GetKeyCount(), 2 + test.expectedCount);
    for (Int32 i = 0; i < test.expectedCount; ++i)
    {
      const HeadlessKey& key = *ToHeadless(curve->GetKey(2 + i));
      EXPECT_EQ(key.GetTime().GetSeconds(), test.times[static_cast<size_t>(i)].GetSeconds());
      EXPECT_EQ(key.GetValue(), i);
      EXPECT_EQ(key.GetInterpolation(), InterpolationMode::Step);
      EXPECT_EQ(key.GetRotationMode(), (KeyRotationMode{2, true, false}));
      EXPECT_FALSE(key.GetLeftTangent().isSet);
    }
    Int32 index = -1;
    for (int i = 0; i < 6; ++i)
      curve->AddKey(Seconds(-i), &index);
    EXPECT_EQ(index, 0);
    curve->AddKey(Seconds(1000), &index);
    EXPECT_EQ(index, 8 + test.expectedCount);
  }
}

// Every pair of times, so that every question follows on every other.
TEST_F(SceneTrack, ValueDoesNotDependOnWhatWasAskedBefore)
{
  HostCurve* const curve = MakeCurve();
  for (int i = 0; i < 40; ++i)
    AddKey(curve, Seconds(i), i * i, InterpolationMode::Linear);
  const auto expected = [](Float time)
  {
    const Float start = std::clamp(std::floor(time), 0.0, 38.0);
    const Float value = start * start + (2 * start + 1) * (time - start);
    return std::clamp(value, 0.0, 39.0 * 39.0);
  };
  for (Float before = -1; before <= 41; before += 0.5)
  {
    for (Float time = -1; time <= 41; time += 0.5)
    {
      curve->GetValue(Seconds(before));
      EXPECT_EQ(curve->GetValue(Seconds(time)), expected(time)) << before << " " << time;
    }
  }
}

TEST_F(SceneTrack, KeysAreCopiedByTheirPlaces)
{
  HostCurve* const curve = MakeCurve();
  for (const Float time : {3.0, 1.0, 2.0})
    AddKey(curve, Seconds(time), 10 * time, time == 2.0 ? InterpolationMode::Step : InterpolationMode::Spline);
  struct Case
  {
    Int32 first;
    Int32 count;
    std::vector<Float> expectedTimes;
  };
  const Case cases[] = {{0, 3, {1, 2, 3}}, {0, 2, {1, 2}}, {1, 9, {2, 3}}, {3, 9, {}}, {4, 1, {}}, {-1, 9, {}}, {0, 0, {}}};
  for (const Case& test : cases)
  {
    SCOPED_TRACE(std::to_string(test.first) + " " + std::to_string(test.count));
    HostKeyCopy copies[9];
    ASSERT_EQ(curve->CopyKeys(test.first, test.count, copies), static_cast<Int32>(test.expectedTimes.size()));
    for (size_t i = 0; i < test.expectedTimes.size(); ++i)
    {
      const Float time = test.expectedTimes[i];
      EXPECT_EQ(copies[i].GetTime(), Seconds(time));
      EXPECT_EQ(copies[i].GetValue(), 10 * time);
      EXPECT_EQ(copies[i].GetInterpolation(), time == 2.0 ? InterpolationMode::Step : InterpolationMode::Spline);
    }
  }
}

TEST_F(SceneTrack, RunsOfKeysFollowOneAnother)
{
  HostCurve* const curve = MakeCurve();
  HostKey* const like = AddKey(curve, Seconds(0), 0, InterpolationMode::Linear);
  Int count = 1;
  for (const Int length : {20, 3, 17, 1, 200, 30, 16})
  {
    std::vector<HostTime> times;
    std::vector<Vector> values;
    for (Int i = 0; i < length; ++i)
    {
      times.push_back(Seconds(static_cast<Float>(count + i)));
      values.emplace_back(0, 0, static_cast<Float>(count + i));
    }
    ASSERT_EQ(curve->AddKeysBehind(like, {times.data(), values.data(), 2, length}), length);
    count += length;
  }
  for (Int32 i = 0; i < count; ++i)
    ASSERT_EQ(curve->GetKey(i)->GetValue(), i);
}

TEST_F(SceneTrack, RunOfKeysIsLeftToOthersForRareSettings)
{
  HostCurve* const curve = MakeCurve();
  HostKey* const like = AddKey(curve, Seconds(1), 4, InterpolationMode::Linear);
  like->SetParameter(curve, HostDescId(916), Int32(3), 0);
  const HostTime time = Seconds(2);
  const Vector value;
  EXPECT_EQ(curve->AddKeysBehind(like, {&time, &value, 0, 1}), 0);
  EXPECT_EQ(curve->GetKeyCount(), 1);
}

// Copies share their keys until one is changed.
TEST_F(SceneTrack, CopiesChangeAlone)
{
  HostObject* const object = Add("a");
  HostCurve* const curve = MakeCurve(object);
  for (const Float time : {0.0, 1.0, 2.0})
    AddKey(curve, Seconds(time), 10 * time, InterpolationMode::Linear);
  const auto copyTo = [&](HostObject* target)
  {
    HostTrack* const copy = HostTrack::Find(object, HostDescId(kPositionParameter, kComponentX))->Clone(target);
    copy->InsertInto(target);
    return copy->GetCurve(false);
  };
  HostCurve* const changed = copyTo(Add("b"));
  HostCurve* const grown = copyTo(Add("c"));
  HostKey* const key = changed->GetKey(1);
  key->SetValue(changed, 50);
  key->SetInterpolation(changed, InterpolationMode::Spline);
  key->SetRightTangent(changed, Seconds(1, 3), 4);
  changed->GetKey(2)->SetValue(changed, 60);
  AddKey(grown, Seconds(5), 70, InterpolationMode::Step);
  const auto values = [](HostCurve* of)
  {
    std::string text;
    for (Int32 i = 0; i < of->GetKeyCount(); ++i)
      text += std::to_string(Int(of->GetKey(i)->GetValue())) + " " + std::to_string(Int(of->GetKey(i)->GetInterpolation())) +
              " " + std::to_string(Int(of->GetTangents(i).rightValue)) + ", ";
    return text;
  };
  EXPECT_EQ(values(curve), "0 2 0, 10 2 0, 20 2 0, ");
  EXPECT_EQ(values(changed), "0 2 0, 50 1 4, 60 2 0, ");
  EXPECT_EQ(values(grown), "0 2 0, 10 2 0, 20 2 0, 70 3 0, ");
}

TEST_F(SceneTrack, TangentTimesAreHeldInsideTheSegment)
{
  // Handles that reach past the other key, and backwards: held at the ends they give times 0, 1, 1, 1 and 0, 0, 0, 1.
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

class SceneAdaptedKey : public SceneTrack
{
protected:
  HostCurve* Wave(const char* name, InterpolationMode mode)
  {
    HostCurve* const curve = MakeCurve(Add(name));
    HostKey* const a = AddKey(curve, Seconds(1), 3, mode);
    HostKey* const b = AddKey(curve, Seconds(2), -4, mode);
    HostKey* const c = AddKey(curve, Seconds(5), 8, mode);
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

TEST_F(SceneAdaptedKey, LeavesTheShape)
{
  for (const InterpolationMode mode : {InterpolationMode::Spline, InterpolationMode::Linear, InterpolationMode::Step})
  {
    SCOPED_TRACE(static_cast<int>(mode));
    HostCurve* const plain = Wave("plain", mode);
    HostCurve* const fitted = Wave("fitted", mode);
    const HostTime added[] = {{7, 5}, {19, 10}, {3, 1}, {4, 1}, {7, 2}, {0, 1}, {6, 1}, {-3, 1}, {1001, 1000}};
    for (const HostTime& time : added)
    {
      HostKey* const key = HostCurveAddKeyAdapted(fitted, time);
      ASSERT_NE(key, nullptr);
      EXPECT_EQ(key->GetTime(), time);
      EXPECT_EQ(key->GetInterpolation(), mode);
    }
    EXPECT_EQ(fitted->GetKeyCount(), 12);
    for (Int32 i = -400; i <= 700; ++i)
      EXPECT_NEAR(fitted->GetValue(Seconds(i, 100)), plain->GetValue(Seconds(i, 100)), 1e-9) << i;
  }
}

}  // namespace
}  // namespace q7z::test
