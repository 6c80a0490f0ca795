// Fault sweeps over one load that has something of everything: each allocation fails once, and each call of the file system.
// Whatever fails, the load ends with a known status, nothing is left over, and the next load is as good as the first.

#include <set>

#include "plugin/module/hostfile.h"
#include "tests/import/directload.h"
#include "tests/import/importfixture.h"
#include "tests/support/failingmemory.h"

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
  const std::string positions = std::to_string(file.Floats({0, 0, 0, 1, 0, 0, 0, 1, 0}, "VEC3"));
  const std::string joints = std::to_string(file.Values(std::vector<uint8_t>(12), 5121, "VEC4"));
  const std::string weights = std::to_string(file.Floats(std::vector<float>(12, 1), "VEC4"));
  const std::string target = R"({"POSITION":)" + positions + R"(,"NORMAL":)" + positions + "}";
  file.Add("meshes", R"({"weights":[0.5,1],"primitives":[{"attributes":{"POSITION":)" + positions + R"(,"NORMAL":)" + positions +
                       R"(,"JOINTS_0":)" + joints + R"(,"WEIGHTS_0":)" + weights + R"(},"targets":[)" + target + "," + target +
                       "]}]}");
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
  ImportSweep() : _bytes(SomethingOfEverything()), _file("glb", _bytes)
  {
    Host().Host().ReplaceService(HostUsageReport::kId, static_cast<HostUsageReport*>(&_event));
    _good = LoadOnce([] {});
  }

  /// One load into a document of its own, with a failure armed just before. @return the dump.
  template <typename Arm>
  std::string LoadOnce(Arm arm)
  {
    const HeadlessOwner<HeadlessDocument> document = Host().Host().NewDocument();
    HeadlessJob job;
    DirectLoad load;
    EXPECT_TRUE(load.Identify(_file.Path(), _bytes));
    const std::string path = _file.Path();
    _event.status[0] = 0;
    arm();
    const Int32 result = load.Load(path, ToHost(document.get()), &job);
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
  TestFile _file;
  LastEvent _event;
  std::string _good;
  Int _fired = 0;
};

TEST_F(ImportSweep, TheLoadHasSomethingOfEverything)
{
  EXPECT_STREQ(_event.status, "none");
  for (const char* type :
       {"5100 'A'", "5126 'Mesh'", "1019362 'J'", "1019363 ''", "5140 'Node_2'", "5100 'Target 1'", "tag 1024237", "tag 1019365"})
    EXPECT_THAT(_good, testing::HasSubstr(type));
}

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
    const SceneCounts after;
    ASSERT_EQ(after.liveNodes, before.liveNodes) << "left over after failure " << failAt;
    ASSERT_EQ(after.freedWhileInserted, before.freedWhileInserted) << failAt;
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

// Fails its n-th call, whatever that is.
class FaultyFiles final : public HostFileTable
{
public:
  explicit FaultyFiles(HostFileTable* base) noexcept : _base(base) {}
  Int failAt = -1;  // counted from 0
  Int calls = 0;
  Bool wasClosing = false;  // the call that failed

  HostFile* Alloc() noexcept override { return Fails() ? nullptr : _base->Alloc(); }
  void Free(HostFile* file) noexcept override { _base->Free(file); }
  Bool Open(HostFile* file, const HostFilename& name, FILEOPEN mode, FILEDIALOG dialog, BYTEORDER order, UInt32 type,
            UInt32 creator) noexcept override
  {
    return !Fails() && _base->Open(file, name, mode, dialog, order, type, creator);
  }
  Bool Close(HostFile* file) noexcept override
  {
    wasClosing = calls == failAt;
    return _base->Close(file) && !Fails();
  }
  Bool Seek(HostFile* file, Int distance) noexcept override { return !Fails() && _base->Seek(file, distance); }
  Int GetPosition(const HostFile* file) noexcept override { return _base->GetPosition(file); }
  Int GetLength(const HostFile* file) noexcept override { return _base->GetLength(file); }
  Int ReadBytes(HostFile* file, void* target, Int byteCount) noexcept override
  {
    return Fails() ? -1 : _base->ReadBytes(file, target, byteCount);
  }
  Bool WriteBytes(HostFile* file, const void* source, Int byteCount) noexcept override
  {
    return !Fails() && _base->WriteBytes(file, source, byteCount);
  }
  Bool ReadUInt32(HostFile* file, UInt32* value) noexcept override { return !Fails() && _base->ReadUInt32(file, value); }
  Bool Exists(const HostFilename& name) noexcept override { return !Fails() && _base->Exists(name); }

private:
  Bool Fails() noexcept { return calls++ == failAt; }
  HostFileTable* _base;
};

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

}  // namespace
}  // namespace q7z::test
