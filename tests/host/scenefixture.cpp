#include "tests/host/scenefixture.h"

#include "framework/result.h"

namespace q7z
{

const HostTables* g_hostTables = nullptr;

}  // namespace q7z

namespace q7z::test
{

SceneTest::Counts SceneTest::Count()
{
  const SceneDiagnostics& now = GetSceneDiagnostics();
  return {now.liveNodes, now.liveTracks, now.insertedTwice, now.freedWhileInserted, now.refusedCycles};
}

SceneTest::SceneTest() : _before(Count()), _document(HeadlessDocument::Create())
{
  FillSceneTables(_tables, _state);
  g_hostTables = &_tables;
  _state.activeDocument = _document.get();
}

SceneTest::~SceneTest()
{
  _document.reset();
  const auto [nodes, tracks, twice, whileInserted, cycles] = _before;
  EXPECT_EQ(Count(),
            (Counts{nodes, tracks, twice + _insertedTwice, whileInserted + _freedWhileInserted, cycles + _refusedCycles}))
    << "nodes and tracks left over; inserted twice, freed while inserted, refused cycles";
  g_hostTables = nullptr;
}

HostObject* SceneTest::Make(const char* name, Int32 type)
{
  HostObject* const object = HostAllocObject(type);
  object->SetName(MakeString(name));
  return object;
}

HostObject* SceneTest::Add(const char* name, HostObject* parent, Int32 type)
{
  HostObject* const object = Make(name, type);
  if (parent)
    object->InsertUnderLast(parent);
  else
    Scene().InsertObjectLast(ToHeadless(object));
  return object;
}

HostPolygonObject* SceneTest::AddMesh(std::initializer_list<Vector> points, std::initializer_list<HostPolygon> polygons)
{
  HostPolygonObject* const mesh =
    HostPolygonObject::Alloc(static_cast<Int32>(points.size()), static_cast<Int32>(polygons.size()));
  std::copy(points.begin(), points.end(), mesh->GetPointsW());
  std::copy(polygons.begin(), polygons.end(), mesh->GetPolygonsW());
  Scene().InsertObjectLast(ToHeadless(mesh));
  return mesh;
}

namespace
{

std::string Describe(const HostObject* first)
{
  std::string text;
  const HostObject* previous = nullptr;
  for (const HostObject* object = first; object; object = object->GetNext())
  {
    EXPECT_EQ(object->GetPrevious(), previous);
    previous = object;
    text += (text.empty() ? "" : " ") + Text(object->GetName());
    if (object->GetDown())
      text += "(" + Describe(object->GetDown()) + ")";
  }
  return text;
}

}  // namespace

std::string SceneTest::Tree()
{
  return Describe(Document()->GetFirstObject());
}

}  // namespace q7z::test
