#include "tests/export/savedcase.h"

namespace q7z::test
{

namespace
{

std::string WriteNodes(const SavedContent& file, const std::string& list)
{
  std::string text;
  for (int i = 0; i < file.Count(list); ++i)
  {
    const std::string node = "nodes/" + file.At(list + "/" + std::to_string(i));
    text += (i ? ", " : "") + file.TextAt(node + "/name");
    if (const Int mesh = file.IntAt(node + "/mesh", -1); mesh >= 0)
    {
      const std::string indices = file.At("meshes/" + std::to_string(mesh) + "/primitives/0/indices");
      text += "#" + std::to_string(file.IntAt("accessors/" + indices + "/count", 0) / 3);
    }
    text += file.At(node + "/camera") == "-" ? "" : "*";
    if (file.Count(node + "/children"))
      text += "[" + WriteNodes(file, node + "/children") + "]";
  }
  return text;
}

}  // namespace

std::string WriteOutline(const SavedContent& file)
{
  return WriteNodes(file, "scenes/0/nodes");
}

TEST_P(SavedScene, HoldsWhatItShall)
{
  const SavedFile file(SceneText(GetParam().members), GetParam().parameters);
  ASSERT_EQ(file.Report().error, "");
  for (const auto& [path, expected] : GetParam().expected)
    EXPECT_PRED2(IsNear, path == std::string("outline") ? WriteOutline(file) : file.At(path), expected) << path;
}

}  // namespace q7z::test
