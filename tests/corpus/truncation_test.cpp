// Small files cut at every byte and with every byte changed: always a status, never a leftover.

#include <gtest/gtest.h>

#include "tests/corpus/loader.h"
#include "tests/support/gltfbuilders.h"

namespace q7z::test
{
namespace
{

GltfJson MakeScene()
{
  GltfJson json;
  const int positions = json.Floats({0, 0, 0, 1, 0, 0, 0, 1, 0}, "VEC3");
  const int indices = json.Indices({0, 1, 2});
  json.Add("meshes", R"({"primitives":[{"attributes":{"POSITION":)" + std::to_string(positions) + R"(},"indices":)" +
                       std::to_string(indices) + "}]}");
  json.Add("nodes", R"({"mesh":0,"children":[1]})");
  json.Add("nodes", R"({"mesh":0,"translation":[1,2,3]})");
  json.Add("scenes", R"({"nodes":[0]})");
  return json;
}

std::string MakeGlb()
{
  const Bytes bytes = MakeScene().Glb();
  return std::string(bytes.begin(), bytes.end());
}

TEST(Truncation, OfAGlbIsToldByItsPlace)
{
  Loader loader;
  const std::string file = MakeGlb();
  // 36 bytes of points, 6 of indices and the header of their chunk.
  const size_t jsonEnd = file.size() - 8 - 42;
  for (size_t length = 0; length <= file.size(); ++length)
  {
    const LoadResult result = loader.LoadBytes("cut.glb", file.substr(0, length));
    const bool isWhole = length == jsonEnd || length == file.size();
    EXPECT_EQ(result.status, length < 12 ? "not_recognised"
                             : isWhole   ? "none"
                                         : "unknown_error")
      << length << "\n"
      << result.text;
    // Without the binary chunk the mesh has no points, so that its node is missing and the one below it, too.
    EXPECT_EQ(result.nodeWarnings, length == jsonEnd ? 1 : 0) << length;
    EXPECT_EQ(result.objects, length == file.size() ? 3 : length == jsonEnd ? 1 : 0) << length;
    EXPECT_EQ(result.leftover, 0) << length;
    EXPECT_EQ(result.mistakes, 0) << length;
  }
}

TEST(Truncation, OfATextNeverLoads)
{
  Loader loader;
  const std::string file = MakeScene().Text();
  for (size_t length = 0; length < file.size(); ++length)
  {
    const LoadResult result = loader.LoadBytes("cut.gltf", file.substr(0, length));
    EXPECT_EQ(result.status, "unexpected_error") << length;
    EXPECT_EQ(result.objects, 0) << length;
    EXPECT_EQ(result.leftover, 0) << length;
  }
  EXPECT_EQ(loader.LoadBytes("cut.gltf", file).status, "none");
}

TEST(Mutation, OfOneByteLeavesNothingBehind)
{
  Loader loader;
  const std::string file = MakeGlb();
  for (size_t i = 0; i < file.size(); ++i)
  {
    for (const char byte : {'\0', '\xFF', '0', '9', '-', static_cast<char>(file[i] ^ 1)})
    {
      std::string changed = file;
      changed[i] = byte;
      const LoadResult result = loader.LoadBytes("changed.glb", changed);
      EXPECT_TRUE(IsStatusWord(result.status) || (i < 12 && result.status == "not_recognised")) << i << " " << result.status;
      EXPECT_EQ(result.leftover, 0) << i;
      EXPECT_EQ(result.mistakes, 0) << i;
    }
  }
}

}  // namespace
}  // namespace q7z::test
