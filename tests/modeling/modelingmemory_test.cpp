// Memory that runs out: every request of each command fails once, and each time the object is as it was.

#include "tests/modeling/modelingfixture.h"
#include "tests/support/failingmemory.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

struct CommandRow
{
  const char* name;
  Int32 command;
};

class ModelingMemory : public ModelingTest, public testing::WithParamInterface<CommandRow>
{
protected:
  /// The sample with data of every kind.
  HeadlessPolygonObject& AddFullSample()
  {
    HeadlessPolygonObject& other = AddGrid(7, {});
    HeadlessPolygonObject& mesh = AddSample();
    mesh.SetName("mesh"_s);
    AddCorners(mesh, kNormalTagType, 3, false);
    AddCorners(mesh, kUvwTagType, 3, true);
    AddColors(mesh, true, 7);
    AddColors(mesh, false, 3);
    AddSelection(mesh, {{0, 0}, {2, 2}});
    AddWeights(mesh, &other, &other);
    AddMorphs(mesh, 7, other);
    AddPointTrack(mesh);
    return mesh;
  }
  static std::string Dump(const HeadlessPolygonObject& mesh)
  {
    return DumpGeometry(mesh) + DumpSelection(mesh.GetPolygonSelection()) + DumpData(mesh);
  }
};

TEST_P(ModelingMemory, FailureLeavesTheObjectAsItWas)
{
  constexpr Int kMostRequests = 1000;
  HeadlessPolygonObject& mesh = AddFullSample();
  const std::string before = Dump(mesh);
  Bool failed = true;
  Int failAt = 1;
  for (; failed && failAt < kMostRequests; ++failAt)
  {
    FailAllocation(failAt);
    const Bool succeeded = Send(GetParam().command, &mesh);
    failed = StopFailingAllocations() > 0;
    EXPECT_EQ(succeeded, !failed) << "request " << failAt;
    if (failed)
    {
      EXPECT_EQ(Dump(mesh), before) << "request " << failAt;
    }
  }
  EXPECT_FALSE(failed);
  EXPECT_GT(failAt, 5) << "arrays that must be new asked for no memory";
  EXPECT_NE(Dump(mesh), before);
  if (_data.resultCount == 1)
    HostNode::Free(_data.results[0]);
}

const CommandRow kCommands[] = {
  {"Split", kSplitPolygonsCommand},
  {"Triangulate", kTriangulateCommand},
  {"RemoveUnusedPoints", kRemoveUnusedPointsCommand},
};
INSTANTIATE_TEST_SUITE_P(Rows, ModelingMemory, testing::ValuesIn(kCommands), RowName());

}  // namespace
}  // namespace q7z::test
