#include "tests/evaluation/currentstatefixture.h"

namespace q7z::test
{

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
