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

/// A triangle whose accessor of points is as given.
std::string MakeTriangle(const std::string& pointAccessor, const std::string& indexAccessor = "", const std::string& view = "")
{
  const std::string uri = DataUri(Bytes(36));
  return R"({"buffers":[{"byteLength":36,"uri":")" + uri + R"("}],"bufferViews":[)" +
         (view.empty() ? R"({"buffer":0,"byteLength":36})" : view) + R"(],"accessors":[)" + pointAccessor +
         (indexAccessor.empty() ? "" : "," + indexAccessor) + R"(],"meshes":[{"primitives":[{"attributes":{"POSITION":0})" +
         (indexAccessor.empty() ? "" : R"(,"indices":1)") + R"(}]}],"nodes":[{"mesh":0}]})";
}

constexpr const char* kThreePoints = R"({"bufferView":0,"componentType":5126,"type":"VEC3","count":3})";
constexpr const char* kNodeWarning = "The node with the index 0 could not be built.";

/// Nodes of which each but the last lists the next `times` times.
std::string MakeDoublingNodes(int count, int times)
{
  std::string text = R"({"nodes":[)";
  for (int i = 0; i < count; ++i)
  {
    text += i ? "," : "";
    text += R"({"children":[)";
    for (int k = 0; i + 1 < count && k < times; ++k)
      text += (k ? "," : "") + std::to_string(i + 1);
    text += "]}";
  }
  return text + "]}";
}

std::string MakeCycle(int count)
{
  std::string text = R"({"scenes":[{"nodes":[0]}],"nodes":[)";
  for (int i = 0; i < count; ++i)
    text += (i ? "," : "") + (R"({"children":[)" + std::to_string((i + 1) % count)) + "]}";
  return text + "]}";
}

std::string MakeBrackets(const std::string& before, int count, const std::string& behind)
{
  return before + std::string(static_cast<size_t>(count), '[') + std::string(static_cast<size_t>(count), ']') + behind;
}

/// A list of count equal elements.
std::string Repeat(const std::string& element, int count)
{
  std::string text = element;
  for (int i = 1; i < count; ++i)
    text += "," + element;
  return text;
}

/// Meshes of one triangle each, all on one skin that lists one joint over and over.
std::string MakeSharedSkin(int meshCount, int jointCount)
{
  GltfJson file;
  file.Floats({0, 0, 0, 1, 0, 0, 0, 1, 0}, "VEC3");
  file.Values(std::vector<uint8_t>(12), 5121, "VEC4");
  file.Floats(std::vector<float>(12, 1), "VEC4");
  file.Add("skins", R"({"joints":[)" + Repeat("0", jointCount) + "]}");
  file.Add("nodes", "{}");
  for (int i = 0; i < meshCount; ++i)
  {
    file.Add("meshes", R"({"primitives":[{"attributes":{"POSITION":0,"JOINTS_0":1,"WEIGHTS_0":2}}]})");
    file.Add("nodes", R"({"skin":0,"mesh":)" + std::to_string(i) + "}");
  }
  return file.Text();
}

/// A triangle on a chain of joints whose inverse bind matrices are the bytes of an accessor.
std::string MakeMatrices(int jointCount, const std::string& accessor)
{
  GltfJson file;
  file.Floats({0, 0, 0, 1, 0, 0, 0, 1, 0}, "VEC3");
  file.Values(std::vector<uint8_t>(12), 5121, "VEC4");
  file.Floats(std::vector<float>(12, 1), "VEC4");
  file.Add("accessors", accessor);
  file.Add("meshes", R"({"primitives":[{"attributes":{"POSITION":0,"JOINTS_0":1,"WEIGHTS_0":2}}]})");
  file.Add("nodes", R"({"skin":0,"mesh":0})");
  std::string joints;
  for (int i = 1; i <= jointCount; ++i)
  {
    joints += (i > 1 ? "," : "") + std::to_string(i);
    file.Add("nodes", i < jointCount ? R"({"children":[)" + std::to_string(i + 1) + "]}" : "{}");
  }
  file.Member("scenes", R"([{"nodes":[0,1]}])");
  file.Add("skins", R"({"inverseBindMatrices":3,"joints":[)" + joints + "]}");
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
  std::string fileName;
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
    folder.Write(row.fileName, text);
  }
  const RunResult result = RunTool({"import", folder / row.fileName});
  EXPECT_EQ(result.status, row.status) << result.err;
  EXPECT_NE(result.err.find(row.said), std::string::npos) << result.err;
  const int64_t bound = kProgramKilobytes + bytes * row.peakPerByte / 1024;
  EXPECT_TRUE(!kMeasures || result.peakKilobytes < bound)
    << result.peakKilobytes << " KiB instead of " << bound << " for " << bytes << " bytes of file";
}

const std::vector<HostileRow> kHostileRows = {
  {"PointsThatAreNotThere", "in.gltf",
   [] { return MakeTriangle(R"({"bufferView":0,"componentType":5126,"type":"VEC3","count":2147483647})"); }, 0, kNodeWarning, 64},
  {"PointsBeyond32Bits", "in.gltf",
   [] { return MakeTriangle(R"({"bufferView":0,"componentType":5126,"type":"VEC3","count":4611686018427387904})"); }, 0,
   kNodeWarning, 64},
  {"PointsInAViewThatIsNotThere", "in.gltf",
   []
   {
     return MakeTriangle(R"({"bufferView":0,"componentType":5126,"type":"VEC3","count":715827882})", "",
                         R"({"buffer":0,"byteLength":9223372036854775807})");
   },
   0, kNodeWarning, 64},
  {"IndicesThatAreNotThere", "in.gltf",
   [] { return MakeTriangle(kThreePoints, R"({"bufferView":0,"componentType":5121,"type":"SCALAR","count":2147483646})"); }, 0,
   kNodeWarning, 64},
  {"OffsetAtTheEndOfAllNumbers", "in.gltf",
   []
   {
     return MakeTriangle(R"({"bufferView":0,"byteOffset":9223372036854775807,"componentType":5126,"type":"VEC3","count":3})", "",
                         R"({"buffer":0,"byteOffset":9223372036854775807,"byteLength":36})");
   },
   0, kNodeWarning, 64},
  {"BufferThatIsNotThere", "in.gltf",
   [] { return std::string(R"({"buffers":[{"byteLength":9223372036854775807,"uri":")") + DataUri(Bytes(8)) + "\"}]}"; }, 0,
   "This data of the file could not be decoded: ", 64},
  {"JsonChunkOf4Gigabytes", "in.glb",
   [] { return ToText(GlbBuilder().ChunkOfLength(GlbBuilder::kJson, 0xFFFFFFFF, ToBytes("{}")).File()); }, 1,
   "glbFile->ReadBytes(", 64},
  {"BinaryChunkOf4Gigabytes", "in.glb", []
   { return ToText(GlbBuilder().PaddedJson(R"({"nodes":[{}]})").ChunkOfLength(GlbBuilder::kBin, 0xFFFFFFFC, Bytes(16)).File()); },
   1, "glbFile->ReadBytes(", 64},
  {"OtherChunkOf4GigabytesIsSteppedOver", "in.glb",
   [] { return ToText(GlbBuilder().PaddedJson(R"({"nodes":[{}]})").ChunkOfLength(0x12345678, 0xFFFFFFFC, Bytes(16)).File()); }, 0,
   "", 64},
  {"NodesThatDouble64Times", "in.gltf", [] { return MakeDoublingNodes(64, 2); }, 4, "memory", 64},
  {"NodesThatDouble20Times", "in.gltf", [] { return MakeDoublingNodes(21, 2); }, 4, "memory", 64},
  {"NodesThatMultiplyBy1000", "in.gltf", [] { return MakeDoublingNodes(4, 1000); }, 4, "memory", 64},
  {"CycleOfTwo", "in.gltf", [] { return MakeCycle(2); }, 0, kNodeWarning, 64},
  {"CycleOfOne", "in.gltf", [] { return MakeCycle(1); }, 0, kNodeWarning, 64},
  {"CycleOfAThousand", "in.gltf", [] { return MakeCycle(1000); }, 0, kNodeWarning, 64},
  {"ChainOfAMillion", "in.gltf", [] { return MakeDoublingNodes(1000000, 1); }, 0, "", 64},
  {"JointsOfOneSkinOnManyMeshes", "in.gltf", [] { return MakeSharedSkin(2000, 20000); }, 0, "The node with the index", 256},
  {"MillionJoints", "in.gltf", [] { return MakeSharedSkin(1, 1000000); }, 0, "", 256},
  {"MatricesThatAreNotThere", "in.gltf",
   [] { return MakeMatrices(3, R"({"bufferView":2,"componentType":5126,"type":"MAT4","count":2147483647})"); }, 1,
   "could not be loaded: Illegal state: Condition (idx >= 0 && idx < _byteLength - byteCount + 1)", 64},
  {"MatricesOfNothingForManyJoints", "in.gltf",
   [] { return MakeMatrices(20000, R"({"bufferView":2,"componentType":5126,"type":"MAT4","count":0})"); }, 1,
   "could not be loaded: Illegal state: Condition (idx >= 0 && idx < _count)", 256},
  {"WeightSetsThatShareTheirNumbers", "in.gltf", [] { return MakeSharedWeights(5000, 2000); }, 0, kNodeWarning, 64},
  {"TargetsThatShareTheirNumbers", "in.gltf", [] { return MakeSharedTargets(100000, 10000, R"({"POSITION":0,"NORMAL":0})"); }, 0,
   kNodeWarning, 64},
  {"TargetsOfNothing", "in.gltf", [] { return MakeSharedTargets(3, 300000, "{}"); }, 0, kNodeWarning, 512},
  {"BracketsInAnUnknownMember", "in.gltf", [] { return MakeBrackets(R"({"extras":)", 100000, "}"); }, 1, "JSON file couldn't",
   64},
  {"BracketsAlone", "in.gltf", [] { return MakeBrackets("", 100000, ""); }, 1, "JSON file couldn't be read", 64},
  {"BracketsThatDoNotClose", "in.gltf", [] { return std::string(1000000, '['); }, 1, "JSON file couldn't be read", 64},
};

INSTANTIATE_TEST_SUITE_P(Rows, Hostile, testing::ValuesIn(kHostileRows), RowName());

}  // namespace
}  // namespace q7z::test
