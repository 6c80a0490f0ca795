// Files that ask for more than they hold. Each runs in a process of its own, whose peak memory is measured.

#include <algorithm>
#include <fstream>
#include <functional>

#include <gtest/gtest.h>

#include "tests/app/process.h"
#include "tests/support/gltfbuilders.h"
#include "tests/support/rowname.h"
#include "tests/support/testfolder.h"

namespace q7z::test
{
namespace
{

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kMeasures = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool kMeasures = false;
#else
constexpr bool kMeasures = true;
#endif
#else
constexpr bool kMeasures = true;
#endif

/// What a run may take whatever it loads: the program, its libraries, and the list of nodes that grows until it is too long.
constexpr int64_t kProgramKilobytes = 128 * 1024;

/// A list of count equal elements.
std::string Repeat(const std::string& element, int count)
{
  std::string text = element;
  for (int i = 1; i < count; ++i)
    text += "," + element;
  return text;
}

/// A triangle whose accessor of points is as given.
std::string MakeTriangle(const std::string& pointAccessor, const std::string& indexAccessor = "")
{
  const std::string uri = DataUri(Bytes(36));
  return R"({"buffers":[{"byteLength":36,"uri":")" + uri + R"("}],"bufferViews":[{"buffer":0,"byteLength":36}],"accessors":[)" +
         pointAccessor + (indexAccessor.empty() ? "" : "," + indexAccessor) +
         R"(],"meshes":[{"primitives":[{"attributes":{"POSITION":0})" + (indexAccessor.empty() ? "" : R"(,"indices":1)") +
         R"(}]}],"nodes":[{"mesh":0}]})";
}

constexpr const char* kThreePoints = R"({"bufferView":0,"componentType":5126,"type":"VEC3","count":3})";
constexpr const char* kNodeWarning = "The node with the index 0 could not be built.";

/// Nodes of which each but the last lists the next `times` times.
std::string MakeDoublingNodes(int count, int times)
{
  std::string text = R"({"nodes":[)";
  for (int i = 1; i < count; ++i)
    text += R"({"children":[)" + Repeat(std::to_string(i), times) + "]},";
  return text + "{}]}";
}

std::string MakeCycle(int count)
{
  std::string text = R"({"scenes":[{"nodes":[0]}],"nodes":[)";
  for (int i = 0; i < count; ++i)
    text += (i ? "," : "") + (R"({"children":[)" + std::to_string((i + 1) % count)) + "]}";
  return text + "]}";
}

/// Meshes of one triangle each, all on one skin that lists one joint over and over. @param matrices  an accessor, or none.
std::string MakeSharedSkin(int meshCount, int jointCount, const std::string& matrices = "")
{
  GltfJson file;
  file.Floats({0, 0, 0, 1, 0, 0, 0, 1, 0}, "VEC3");
  file.Values(std::vector<uint8_t>(12), 5121, "VEC4");
  file.Floats(std::vector<float>(12, 1), "VEC4");
  if (!matrices.empty())
    file.Add("accessors", matrices);
  file.Add("skins", R"({"joints":[)" + Repeat("0", jointCount) + (matrices.empty() ? "]}" : R"(],"inverseBindMatrices":3})"));
  file.Add("nodes", "{}");
  for (int i = 0; i < meshCount; ++i)
  {
    file.Add("meshes", R"({"primitives":[{"attributes":{"POSITION":0,"JOINTS_0":1,"WEIGHTS_0":2}}]})");
    file.Add("nodes", R"({"skin":0,"mesh":)" + std::to_string(i) + "}");
  }
  return file.Text();
}

/// A mesh with targets that all read the same numbers, or none.
std::string MakeSharedTargets(size_t vertexCount, int targetCount, const std::string& target)
{
  GltfJson file;
  file.Floats(std::vector<float>(3 * vertexCount), "VEC3");
  file.Add("meshes",
           R"({"primitives":[{"attributes":{"POSITION":0,"NORMAL":0},"targets":[)" + Repeat(target, targetCount) + "]}]}");
  file.Add("nodes", R"({"mesh":0})");
  return file.Text();
}

/// A skinned mesh whose sets of weights all read the same numbers.
std::string MakeSharedWeights(size_t vertexCount, int setCount)
{
  GltfJson file;
  file.Floats(std::vector<float>(3 * vertexCount), "VEC3");
  file.Values(std::vector<uint8_t>(4 * vertexCount), 5121, "VEC4");
  file.Floats(std::vector<float>(4 * vertexCount, 1), "VEC4");
  std::string attributes = R"("POSITION":0)";
  for (int i = 0; i < setCount; ++i)
    attributes += ",\"JOINTS_" + std::to_string(i) + "\":1,\"WEIGHTS_" + std::to_string(i) + "\":2";
  file.Add("meshes", R"({"primitives":[{"attributes":{)" + attributes + "}}]}");
  file.Add("skins", R"({"joints":[1]})");
  file.Add("nodes", R"({"skin":0,"mesh":0})");
  file.Add("nodes", "{}");
  return file.Text();
}

/// peakPerByte: bytes of memory that a byte of the file may take, over what the program takes anyway.
struct HostileRow
{
  std::string name;
  std::function<std::string()> make;
  int status;
  std::string said;
  int64_t peakPerByte;
};

class Hostile : public testing::TestWithParam<HostileRow>
{};

TEST_P(Hostile, TakesMemoryByItsSizeAlone)
{
  const HostileRow& row = GetParam();
  const TestFolder folder;
  int64_t bytes = 0;
  {
    const std::string text = row.make();
    bytes = static_cast<int64_t>(text.size());
    folder.Write("in.gltf", text);
  }
  const RunResult result = RunTool({"import", folder / "in.gltf"});
  EXPECT_EQ(result.status, row.status) << result.err;
  EXPECT_NE(result.err.find(row.said), std::string::npos) << result.err;
  const int64_t bound = kProgramKilobytes + bytes * row.peakPerByte / 1024;
  EXPECT_TRUE(!kMeasures || result.peakKilobytes < bound)
    << result.peakKilobytes << " KiB instead of " << bound << " for " << bytes << " bytes of file";
}

const std::vector<HostileRow> kHostileRows = {
  {"PointsThatAreNotThere",
   [] { return MakeTriangle(R"({"bufferView":0,"componentType":5126,"type":"VEC3","count":2147483647})"); }, 0, kNodeWarning, 64},
  {"IndicesThatAreNotThere",
   [] { return MakeTriangle(kThreePoints, R"({"bufferView":0,"componentType":5121,"type":"SCALAR","count":2147483646})"); }, 0,
   kNodeWarning, 64},
  {"BufferThatIsNotThere",
   [] { return std::string(R"({"buffers":[{"byteLength":9223372036854775807,"uri":")") + DataUri(Bytes(8)) + "\"}]}"; }, 0,
   "This data of the file could not be decoded: ", 64},
  {"NodesThatDouble64Times", [] { return MakeDoublingNodes(64, 2); }, 4, "memory", 64},
  {"CycleOfAThousand", [] { return MakeCycle(1000); }, 0, kNodeWarning, 64},
  {"ChainOfAMillion", [] { return MakeDoublingNodes(1000000, 1); }, 0, "", 64},
  {"JointsOfOneSkinOnManyMeshes", [] { return MakeSharedSkin(2000, 20000); }, 0, "The node with the index", 256},
  {"MatricesThatAreNotThere",
   [] { return MakeSharedSkin(1, 3, R"({"bufferView":2,"componentType":5126,"type":"MAT4","count":2147483647})"); }, 1,
   "could not be loaded: Illegal state: Condition (idx >= 0 && idx < _byteLength - byteCount + 1)", 64},
  {"WeightSetsThatShareTheirNumbers", [] { return MakeSharedWeights(5000, 2000); }, 0, kNodeWarning, 64},
  {"TargetsThatShareTheirNumbers", [] { return MakeSharedTargets(100000, 10000, R"({"POSITION":0,"NORMAL":0})"); }, 0,
   kNodeWarning, 64},
  {"TargetsOfNothing", [] { return MakeSharedTargets(3, 300000, "{}"); }, 0, kNodeWarning, 512},
  {"BracketsInAnUnknownMember", [] { return R"({"extras":)" + std::string(100000, '[') + std::string(100000, ']') + "}"; }, 1,
   "JSON file couldn't", 64},
};

INSTANTIATE_TEST_SUITE_P(Rows, Hostile, testing::ValuesIn(kHostileRows), RowName());

}  // namespace
}  // namespace q7z::test
