// Large scenes, and many threads: a save of a hundred times as many objects asks a hundred times as much, however they are arranged,
// and writes the same bytes whoever did the work.

#include <atomic>
#include <string>

#include <gtest/gtest.h>

#include "plugin/module/hostmaterial.h"
#include "plugin/module/hostobject.h"
#include "plugin/module/hosttag.h"
#include "tests/support/failingmemory.h"
#include "tests/support/rowname.h"
#include "tests/support/savedfile.h"

namespace q7z::test
{
namespace
{

// Forwards all, and counts what is asked. Places in the world take a walk up to the root each, so that too many of them would not end.
class CountingHierarchy final : public HostHierarchyTable
{
public:
  explicit CountingHierarchy(HostHierarchyTable* base) noexcept : _base(base) {}
  Int GetCount() const noexcept { return _count; }

  HostObject* GetNext(const HostObject* object) noexcept override { return Count()->GetNext(object); }
  HostObject* GetPrevious(const HostObject* object) noexcept override { return Count()->GetPrevious(object); }
  HostObject* GetUp(const HostObject* object) noexcept override { return Count()->GetUp(object); }
  HostObject* GetDown(const HostObject* object) noexcept override { return Count()->GetDown(object); }
  void InsertBefore(HostObject* object, HostObject* other) noexcept override { Count()->InsertBefore(object, other); }
  void InsertAfter(HostObject* object, HostObject* other) noexcept override { Count()->InsertAfter(object, other); }
  void InsertUnder(HostObject* object, HostObject* parent) noexcept override { Count()->InsertUnder(object, parent); }
  void InsertUnderLast(HostObject* object, HostObject* parent) noexcept override { Count()->InsertUnderLast(object, parent); }
  void Remove(HostObject* object) noexcept override { Count()->Remove(object); }

private:
  HostHierarchyTable* Count() noexcept
  {
    _count.fetch_add(1, std::memory_order_relaxed);
    return _base;
  }
  HostHierarchyTable* _base;
  std::atomic<Int> _count{0};
};

HostPolygonObject* MakeTriangle()
{
  HostPolygonObject* const op = HostPolygonObject::Alloc(3, 1);
  op->GetPointsW()[1] = {100, 0, 0};
  op->GetPointsW()[2] = {0, 100, 0};
  op->GetPolygonsW()[0] = {0, 1, 2, 2};
  return op;
}

/// Groups, each in the one before, and a mesh in the last of them.
void MakeChain(TestHost& host, Int groups)
{
  HostObject* parent = HostObject::Alloc(kNullObjectType);
  host.Scene().InsertObjectLast(ToHeadless(parent));
  for (Int i = 1; i < groups; ++i)
  {
    HostObject* const child = HostObject::Alloc(kNullObjectType);
    child->InsertUnder(parent);
    parent = child;
  }
  MakeTriangle()->InsertUnder(parent);
}

/// The same with nothing at its end.
void MakeEmptyChain(TestHost& host, Int groups)
{
  MakeChain(host, groups);
  HostObject* last = ToHost(host.Scene().GetFirstObject());
  while (last->GetDown())
    last = last->GetDown();
  last->Remove();
  HostNode::Free(last);
}

/// A mesh with selections, and a texture for each.
void MakeTags(TestHost& host, Int count)
{
  HostObject* const op = MakeTriangle();
  host.Scene().InsertObjectLast(ToHeadless(op));
  HostMaterial* const material = HostMaterial::Alloc(kMaterialType);
  ToHost(&host.Scene())->InsertMaterial(material);
  for (Int i = 0; i < count; ++i)
    op->MakeTag(kPolygonSelectionTagType)->SetName(String::FromInt(i).GetValue());
  for (Int i = 0; i < count; ++i)
  {
    auto* const tag = static_cast<HostTextureTag*>(op->MakeTag(kTextureTagType));
    tag->SetMaterial(material);
    tag->SetParameter(1006, String::FromInt(i).GetValue());
  }
}

/// Two meshes, and instances that show the one and the other, all at the top.
void MakeSiblings(TestHost& host, Int instances)
{
  HostObject* const shown[] = {MakeTriangle(), MakeTriangle()};
  for (HostObject* const op : shown)
    host.Scene().InsertObjectLast(ToHeadless(op));
  for (Int i = 0; i < instances; ++i)
  {
    HostObject* const instance = HostObject::Alloc(kInstanceObjectType);
    instance->SetReference(shown[i % 2]);
    host.Scene().InsertObjectLast(ToHeadless(instance));
  }
}

/// What one save takes, and how often some members stand in its file.
struct Cost
{
  Int hierarchyCalls = 0;
  Int allocations = 0;
  Int nodesWithMesh = 0;
  Int nodesWithChildren = 0;
  Int meshes = 0;
};

Int CountText(const std::string& bytes, const std::string& text)
{
  Int count = 0;
  for (size_t at = bytes.find(text); at != std::string::npos; at = bytes.find(text, at + text.size()))
    ++count;
  return count;
}

struct LargeCase
{
  const char* name;
  void (*make)(TestHost& host, Int count);
  Int count;
  Cost file;  // what stands in it
};

Cost MeasureSave(const LargeCase& row, Int count)
{
  TestHost host;
  row.make(host, count);
  HostTables& tables = host.Host().GetTables();
  CountingHierarchy hierarchy(tables.hierarchy);
  tables.hierarchy = &hierarchy;
  const SaveFolder folder;
  StopFailingAllocations();
  EXPECT_EQ(folder.Save(host, host.Scene(), {{kFileFormatParameter, kGlbFormat}}).error, "");
  Cost cost;
  cost.allocations = CountAllocations();
  cost.hierarchyCalls = hierarchy.GetCount();
  const std::string bytes = folder.TakeBytes();
  cost.nodesWithMesh = CountText(bytes, R"("mesh":)");
  cost.nodesWithChildren = CountText(bytes, R"("children":)");
  cost.meshes = CountText(bytes, R"("primitives":)");
  return cost;
}

class LargeSave : public testing::TestWithParam<LargeCase>
{};

TEST_P(LargeSave, TakesAsManyTimesTheWorkAsItHasObjects)
{
  const LargeCase& row = GetParam();
  constexpr Int kTimes = 100;
  const Cost small = MeasureSave(row, row.count / kTimes);
  const Cost large = MeasureSave(row, row.count);
  EXPECT_LE(large.hierarchyCalls, small.hierarchyCalls * kTimes);
  EXPECT_LE(large.allocations, small.allocations * kTimes);
  EXPECT_EQ(large.nodesWithMesh, row.file.nodesWithMesh);
  EXPECT_EQ(large.nodesWithChildren, row.file.nodesWithChildren);
  EXPECT_EQ(large.meshes, row.file.meshes);
}

const LargeCase kLargeCases[] = {
  {"Chain", &MakeChain, 100000, {.nodesWithMesh = 1, .nodesWithChildren = 100000, .meshes = 1}},
  {"EmptyChain", &MakeEmptyChain, 100000, {}},
  {"Tags", &MakeTags, 20000, {.nodesWithMesh = 1, .nodesWithChildren = 0, .meshes = 1}},
  {"Siblings", &MakeSiblings, 200000, {.nodesWithMesh = 200002, .nodesWithChildren = 0, .meshes = 2}},
};
INSTANTIATE_TEST_SUITE_P(Rows, LargeSave, testing::ValuesIn(kLargeCases), RowName());

/// Some hundred objects at one level: animated, split by selections, shown again, and groups of them.
std::string MakeMixedScene()
{
  const std::string one = R"({"id": #0, "type": 5100, "name": "Cut #", "points": [0,0,#, 100,0,0, 0,100,0, 100,100,0, 0,200,0],
     "polygons": [0,1,3,2, 2,3,4,4], "tags": [{"id": #1, "type": 5673, "name": "a", "polygons": [[0,0]]},
       {"id": #2, "type": 5616, "name": "t", "material": 10, "parameters": {"1006": "a"}},
       {"id": #3, "type": 5612, "on": true, "limit": false, "angle": 0.7}],
     "tracks": [{"id": [[903,23,0],[1000,19,0]], "keys": [{"time": [0,1], "value": 0.0, "interpolation": 2},
       {"time": [1,1], "value": #.0, "interpolation": 2}]}]},
    {"id": #4, "type": 5126, "name": "Again #", "position": [0,0,#], "reference": #0},
    {"id": #5, "type": 5140, "name": "Group", "children": [
       {"id": #6, "type": 5100, "name": "Plain", "points": [0,0,0, 1,0,0, 0,1,0], "polygons": [0,1,2,2]},
       {"id": #7, "type": 5126, "name": "Shown", "reference": #6}]})";
  std::string objects;
  for (int i = 100; i < 220; ++i)
  {
    objects += i > 100 ? ", " : "";
    for (const char c : one)
      objects += c == '#' ? std::to_string(i) : std::string(1, c);
  }
  return SceneText(R"("parameters": {"1001": 4, "1002": {"time": [0,1]}, "1003": {"time": [1,1]}},
    "materials": [{"id": 10, "type": 5703, "name": "Red", "channels": {}}], "objects": [)" +
                   objects + "]");
}

std::string SaveWithThreads(int threads, Int32 format, const std::string& scene)
{
  TestHost host(threads);
  const HeadlessOwner<HeadlessDocument> document = ReadScene(scene);
  const SaveFolder folder;
  EXPECT_EQ(folder.Save(host, *document, {{kFileFormatParameter, format}, {kBakeAnimationParameter, true}}).error, "");
  return folder.TakeBytes();
}

class SaveThreads : public testing::TestWithParam<Int32>
{};

TEST_P(SaveThreads, DoNotShowInTheBytes)
{
  const std::string scene = MakeMixedScene();
  const std::string one = SaveWithThreads(1, GetParam(), scene);
  EXPECT_EQ(CountText(one, R"("Cut 219-Red")"), 3) << "two nodes and the mesh that they share";
  for (const int threads : {2, 8, 8})
    EXPECT_TRUE(SaveWithThreads(threads, GetParam(), scene) == one) << threads << " threads";
}

INSTANTIATE_TEST_SUITE_P(Forms, SaveThreads, testing::Values(kGltfFormat, kGlbFormat),
                         [](const auto& row) { return row.param == kGlbFormat ? "Binary" : "Text"; });

}  // namespace
}  // namespace q7z::test
