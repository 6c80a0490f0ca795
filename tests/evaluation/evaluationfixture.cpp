#include "tests/evaluation/evaluationfixture.h"

#include <algorithm>

namespace q7z::test
{

HeadlessCurve& EvaluationTest::AddTrack(HeadlessNode& node, const HostDescId& id, std::initializer_list<TimedValue> keys,
                                        InterpolationMode mode)
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

HeadlessObject& EvaluationTest::AddObject(const char* name, HeadlessObject* parent, Int32 type)
{
  return *ToHeadless(Add(name, ToHost(parent), type));
}

HeadlessPolygonObject& EvaluationTest::AddPoints(std::initializer_list<Vector> points)
{
  return *ToHeadless(AddMesh(points, {}));
}

HostArray<Vector> EvaluationTest::MakeArray(std::initializer_list<Vector> points)
{
  HostArray<Vector> array;
  EXPECT_TRUE(array.Create(static_cast<Int>(points.size())));
  std::copy(points.begin(), points.end(), array.GetW());
  return array;
}

std::vector<Vector> EvaluationTest::PointsOf(const HeadlessObject& object)
{
  const HostArray<Vector>& points = object.AsPolygonObject()->GetPoints();
  return {points.GetR(), points.GetR() + points.GetCount()};
}

HostMatrix EvaluationTest::Offset(const Vector& offset)
{
  HostMatrix matrix;
  matrix.offset = offset;
  return matrix;
}

CurrentStateTest::CurrentStateTest()
{
  EXPECT_TRUE(_settings.Set(kKeepHierarchySetting, true) && _settings.Set(kKeepTracksSetting, true));
}

CurrentStateTest::Owner CurrentStateTest::MakeCopy(const HeadlessObject& root, const UnfoldingLimits& limits)
{
  return Owner(MakeCurrentStateCopy(&Scene(), &root, ToHost(&_settings), limits));
}

HeadlessObject& CurrentStateTest::AddInstance(const char* name, HeadlessObject* parent, HeadlessObject* shown)
{
  HeadlessObject& instance = AddObject(name, parent, kInstanceObjectType);
  EXPECT_TRUE(instance.SetReference(shown));
  return instance;
}

void CurrentStateTest::Clear()
{
  while (HeadlessObject* const object = Scene().GetFirstObject())
  {
    object->Remove();
    HeadlessNode::Free(object);
  }
}

HeadlessObject& CurrentStateTest::Find(const std::string& name)
{
  HeadlessObject* object = Scene().GetFirstObject();
  while (Text(object->GetName()) != name)
    object = HeadlessDocument::GetNextInDocument(object);
  return *object;
}

void CurrentStateTest::Build(const std::string& outline)
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

HeadlessObject& CurrentStateTest::AddMeshObject(const char* name, HeadlessObject* parent)
{
  HeadlessObject& object = AddObject(name, parent, kPolygonObjectType);
  object.AsPolygonObject()->SetGeometry(MakeArray({{1, 2, 3}}), {});
  return object;
}

std::string CurrentStateTest::Describe(const HeadlessObject& root)
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

}  // namespace q7z::test
