#pragma once

// EvaluationTest: SceneTest with short ways to animate. CurrentStateTest: copies of the current state, and what they look like in one
// line.

#include <string>
#include <vector>

#include "host/modeling/currentstate.h"
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

class CurrentStateTest : public EvaluationTest
{
protected:
  using Owner = HeadlessOwner<HeadlessObject>;

  CurrentStateTest();

  /// With the hierarchy and tracks kept, unless a test changes _settings.
  Owner MakeCopy(const HeadlessObject& root, const UnfoldingLimits& limits = UnfoldingLimits());
  HeadlessObject& AddInstance(const char* name, HeadlessObject* parent, HeadlessObject* shown);
  /// Objects at top level as Describe writes them, and "name=shown" for an instance: "mesh* root(a(b=mesh c=) d:5103)".
  void Build(const std::string& outline);
  void Clear();
  /// The first object of a name.
  HeadlessObject& Find(const std::string& name);
  /// A polygon object of one point.
  HeadlessObject& AddMeshObject(const char* name, HeadlessObject* parent = nullptr);

  /// "a(b* c(d))": names, a mesh with "*", an object that is neither mesh nor null with ":type".
  static std::string Describe(const HeadlessObject& root);

  HeadlessContainer _settings;
};

}  // namespace q7z::test
