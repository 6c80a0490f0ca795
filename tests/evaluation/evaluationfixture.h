#pragma once

// EvaluationTest: SceneTest with short ways to animate. CurrentStateTest: copies of the current state, and what they look like in one
// line.

#include <algorithm>
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
                                 InterpolationMode mode = InterpolationMode::Linear)
  {
    HeadlessTrack* const track = HeadlessTrack::Create(id);
    track->InsertInto(&node);
    HeadlessCurve& curve = *track->FindOrMakeCurve();
    for (const TimedValue& key : keys)
    {
      HeadlessKey* const added = curve.AddKey({key.seconds, 1}, nullptr);
      added->SetValue(key.value);
      added->SetInterpolation(mode);
    }
    return curve;
  }
  HeadlessObject& AddObject(const char* name, HeadlessObject* parent = nullptr, Int32 type = kNullObjectType)
  {
    return *ToHeadless(Add(name, ToHost(parent), type));
  }
  /// At top level, with these points and no polygons.
  HeadlessPolygonObject& AddPoints(std::initializer_list<Vector> points) { return *ToHeadless(AddMesh(points, {})); }
  static HostArray<Vector> MakeArray(std::initializer_list<Vector> points)
  {
    HostArray<Vector> array;
    EXPECT_TRUE(array.Create(static_cast<Int>(points.size())));
    std::copy(points.begin(), points.end(), array.GetW());
    return array;
  }
  static std::vector<Vector> PointsOf(const HeadlessObject& object)
  {
    const HostArray<Vector>& points = object.AsPolygonObject()->GetPoints();
    return {points.GetR(), points.GetR() + points.GetCount()};
  }
  static HostMatrix Offset(const Vector& offset)
  {
    HostMatrix matrix;
    matrix.offset = offset;
    return matrix;
  }

  void GoTo(Float seconds) { Scene().SetTime({seconds, 1}); }
};

class CurrentStateTest : public EvaluationTest
{
protected:
  using Owner = HeadlessOwner<HeadlessObject>;

  CurrentStateTest() { EXPECT_TRUE(_settings.Set(kKeepHierarchySetting, true) && _settings.Set(kKeepTracksSetting, true)); }

  /// With the hierarchy and tracks kept, unless a test changes _settings.
  Owner MakeCopy(const HeadlessObject& root, const UnfoldingLimits& limits = UnfoldingLimits())
  {
    return Owner(MakeCurrentStateCopy(&Scene(), &root, ToHost(&_settings), limits));
  }
  HeadlessObject& AddInstance(const char* name, HeadlessObject* parent, HeadlessObject* shown)
  {
    HeadlessObject& instance = AddObject(name, parent, kInstanceObjectType);
    EXPECT_TRUE(instance.SetReference(shown));
    return instance;
  }
  /// Objects at top level as Describe writes them, and "name=shown" for an instance: "mesh* root(a(b=mesh c=) d:5103)".
  void Build(const std::string& outline)
  {
    std::vector<std::pair<HeadlessObject*, std::string>> links;
    HeadlessObject* parent = nullptr;
    HeadlessObject* last = nullptr;
    for (size_t start = 0; start < outline.size();)
    {
      const size_t end = std::min(std::max(outline.find_first_of("() ", start), start + 1), outline.size());
      const std::string word = outline.substr(start, end - start);
      const size_t type = word.find(':');
      const size_t shown = word.find('=');
      const std::string name = word.substr(0, word.find_first_of("*=:"));
      start = end;
      if (word == "(")
        parent = last;
      else if (word == ")")
        parent = parent->GetUp();
      else if (word.ends_with('*'))
        last = &AddMeshObject(name.c_str(), parent);
      else if (type != std::string::npos)
        last = &AddObject(name.c_str(), parent, std::stoi(word.substr(type + 1)));
      else if (word != " ")
        last = &AddObject(name.c_str(), parent, shown == std::string::npos ? kNullObjectType : kInstanceObjectType);
      if (shown != std::string::npos)
        links.emplace_back(last, word.substr(shown + 1));
    }
    for (const auto& [instance, shown] : links)
      EXPECT_TRUE(shown.empty() || instance->SetReference(&Find(shown)));
  }
  void Clear()
  {
    while (HeadlessObject* const object = Scene().GetFirstObject())
    {
      object->Remove();
      HeadlessNode::Free(object);
    }
  }
  /// The first object of a name.
  HeadlessObject& Find(const std::string& name)
  {
    HeadlessObject* object = Scene().GetFirstObject();
    while (Text(object->GetName()) != name)
      object = HeadlessDocument::GetNextInDocument(object);
    return *object;
  }
  /// A polygon object of one point.
  HeadlessObject& AddMeshObject(const char* name, HeadlessObject* parent = nullptr)
  {
    HeadlessObject& object = AddObject(name, parent, kPolygonObjectType);
    object.AsPolygonObject()->SetGeometry(MakeArray({{1, 2, 3}}), {});
    return object;
  }

  /// "a(b* c(d))": names, a mesh with "*", an object that is neither mesh nor null with ":type".
  static std::string Describe(const HeadlessObject& root)
  {
    std::string text = Text(root.GetName());
    if (root.IsPolygonObject())
      text += "*";
    else if (root.GetType() != kNullObjectType)
      text += ":" + std::to_string(root.GetType());
    std::string children;
    for (const HeadlessObject* child = root.GetDown(); child; child = child->GetNext())
      children += (children.empty() ? "" : " ") + Describe(*child);
    return children.empty() ? text : text + "(" + children + ")";
  }

  HeadlessContainer _settings;
};

}  // namespace q7z::test
