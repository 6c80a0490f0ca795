// Fault sweeps over one load that has something of everything: each allocation fails once, and each call of the file system.
// Whatever fails, the load ends with a known status, nothing is left over, and the next load is as good as the first.

#include <set>

#include "tests/import/importfixture.h"
#include "tests/support/failingmemory.h"
#include "tests/support/faultyfiles.h"
#include "tests/support/testfolder.h"

namespace q7z::test
{
namespace
{

// Two scenes; groups, meshes of one and two primitives, an instance, a skin with a joint chain, a joint with a mesh, two nodes on
// one skin, weights and morph targets, a broken node and a missing child.
Bytes SomethingOfEverything()
{
  GltfJson file = SomeMeshes();
  const int matrices =
    file.Floats({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, -2, 0, 1, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, -3, 0, 1}, "MAT4");
  file.Member("scenes", R"([{"name":"S","nodes":[0,5,8]},{"nodes":[1,6,7]}])");
  file.Member("nodes", R"([{"name":"A","mesh":0,"skin":0,"children":[1,2,99],"translation":[1,2,3]},{"mesh":0},
                           {"children":[3,4]},{"name":"a rather long name of a node","mesh":1},{"name":"broken","mesh":2},
                           {"name":"J","children":[6]},{"name":"K","mesh":3},{"name":"B","mesh":1,"skin":0},{"name":"C","mesh":4,"skin":1}])");
  file.Member("skins", R"([{"joints":[5,6],"inverseBindMatrices":)" + std::to_string(matrices) + R"(},{"joints":[6]}])");
  file.Member("extensionsUsed", R"(["X_y","Z_w"])");
  return file.Glb();
}

const std::set<std::string> kStatusWords = {"none", "io_error", "out_of_memory", "unexpected_error", "unknown_error"};

class ImportSweep : public ImportTest
{
protected:
  ImportSweep() : _bytes(SomethingOfEverything()), _path(_folder.Write("file.glb", _bytes))
  {
    Host().Host().ReplaceService(HostUsageReport::kId, static_cast<HostUsageReport*>(&_event));
    _good = LoadOnce([] {});
    for (const char* type : {"5100 'A'", "5126 'Mesh'", "1019362 'J'", "1019363 ''", "5140 'Node_2'", "5100 'Target 1'",
                             "tag 1024237", "tag 1019365"})
      EXPECT_THAT(_good, testing::HasSubstr(type));
  }

  /// One load into a document of its own, with a failure armed just before. @return the dump.
  template <typename Arm>
  std::string LoadOnce(Arm arm)
  {
    const HeadlessOwner<HeadlessDocument> document = Host().Host().NewDocument();
    HeadlessJob job;
    DirectLoad load;
    EXPECT_TRUE(load.Identify(_path, _bytes));
    _event.status[0] = 0;
    arm();
    const Int32 result = load.Load(_path, ToHost(document.get()), &job);
    _fired = StopFailingAllocations();
    EXPECT_EQ(result, _event.status == std::string("io_error") ? -3 : 0);
    return WriteDump(ToHost(document.get()));
  }

  void ExpectTheNextLoadToBeGood(Int failAt)
  {
    ASSERT_EQ(LoadOnce([] {}), _good) << "after failure " << failAt;
    ASSERT_STREQ(_event.status, "none") << "after failure " << failAt;
  }

  Bytes _bytes;
  TestFolder _folder;
  std::string _path;
  LastEvent _event;
  std::string _good;
  Int _fired = 0;
};

class ImportMemorySweep : public ImportSweep, public testing::WithParamInterface<Int>
{};

TEST_P(ImportMemorySweep, EndsCleanly)
{
  std::set<std::string> seen;
  for (Int failAt = 1;; ++failAt)
  {
    const SceneCounts before;
    LoadOnce([&] { FailAllocation(failAt, GetParam()); });
    if (!_fired)
      break;
    seen.insert(_event.status);
    ASSERT_EQ(SceneCounts(), before) << failAt;
    if (failAt % 16 == 1)
      ExpectTheNextLoadToBeGood(failAt);
    ASSERT_FALSE(HasFatalFailure());
  }
  // Where memory has run out for the event, too, it has no entries.
  EXPECT_THAT(seen, testing::Contains(GetParam() == 1 ? "out_of_memory" : ""));
  seen.erase("");
  EXPECT_THAT(seen, testing::Each(testing::AnyOfArray(kStatusWords)));
  ExpectTheNextLoadToBeGood(0);
}

INSTANTIATE_TEST_SUITE_P(OneAndAllFollowing, ImportMemorySweep, testing::Values(Int(1), Int(1) << 40),
                         [](const auto& row) { return row.param == 1 ? "One" : "AllFollowing"; });

TEST_F(ImportSweep, EveryFileCallFailsOnce)
{
  FaultyFiles files(Host().Host().GetTables().file);
  Host().Host().GetTables().file = &files;
  Int failAt = 0;
  for (;; ++failAt)
  {
    files.calls = 0;
    files.wasClosing = false;
    files.failAt = failAt;
    const std::string dump = LoadOnce([] {});
    if (files.calls <= failAt)
      break;
    const std::string expected = failAt == 0 ? "out_of_memory" : files.wasClosing ? "none" : "unknown_error";
    EXPECT_EQ(_event.status, expected) << failAt;
    EXPECT_EQ(dump, expected == "none" ? _good : "") << failAt;
    files.failAt = -1;
    ExpectTheNextLoadToBeGood(failAt);
  }
  EXPECT_GT(failAt, 6);  // alloc, open, seek, two lengths and types, two reads
}

// Two materials of one name and one image. The first cannot open the file, so that it becomes a plain one; the second writes it.
TEST_F(ImportTest, ImageThatWasNotWrittenIsTriedAgain)
{
  const TestFolder folder;
  FaultyFiles files(Host().Host().GetTables().file);
  Host().Host().GetTables().file = &files;
  Host().Request().texFolder = folder.GetPath();
  files.failAt = 1;
  const std::string wood = R"({"name":"Wood","pbrMetallicRoughness":{"baseColorTexture":{"index":0}}})";
  EXPECT_EQ(Load(R"("materials":[)" + wood + "," + wood +
                 R"(],"textures":[{"source":0}],"images":[{"uri":"data:image/png;base64,AQID"}])"),
            "none");
  EXPECT_EQ(Host().WarningCount(), 1);
  EXPECT_EQ(folder.Read("tex/Wood_baseColorTexture.png"), "\x01\x02\x03");
}

}  // namespace
}  // namespace q7z::test
