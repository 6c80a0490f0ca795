#pragma once

// EvaluationTest: SceneTest with short ways to animate, and the state that a command leaves.

#include <vector>

#include "host/scene/headlessposemorphtag.h"
#include "host/scene/headlesstag.h"
#include "host/scene/headlesstrack.h"
#include "host/scene/headlessweighttag.h"
#include "tests/host/scenefixture.h"

namespace q7z::test
{

constexpr HostDescId kPositionX(kPositionParameter, kComponentX);
constexpr HostDescId kPositionY(kPositionParameter, kComponentY);

/// A key's time in seconds and its value.
struct TimedValue
{
  Float seconds;
  Float value;
};

class EvaluationTest : public SceneTest
{
protected:
  static HeadlessCurve& AddTrack(HeadlessNode& node, const HostDescId& id, std::initializer_list<TimedValue> keys,
                                 InterpolationMode mode = InterpolationMode::Linear);
  HeadlessObject& AddObject(const char* name, HeadlessObject* parent = nullptr, Int32 type = kNullObjectType);
  /// At top level, with these points and no polygons.
  HeadlessPolygonObject& AddPoints(std::initializer_list<Vector> points);
  static HostArray<Vector> MakeArray(std::initializer_list<Vector> points);
  static std::vector<Vector> PointsOf(const HeadlessObject& object);
  static HostMatrix Offset(const Vector& offset);

  void GoTo(Float seconds) { Scene().SetTime({seconds, 1}); }
};

}  // namespace q7z::test
