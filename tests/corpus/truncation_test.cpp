// A small text cut at every byte, a small file with every byte changed: always a status, never a leftover.

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
