#include "tests/export/savedcase.h"

#include <regex>

namespace q7z::test
{

namespace
{

std::string WriteTime(const std::string& text)
{
  const size_t slash = text.find('/');
  return "[" + text.substr(0, slash) + "," + (slash == std::string::npos ? "1" : text.substr(slash + 1)) + "]";
}

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

std::string Track(const std::string& id, const std::string& keys, int interpolation)
{
  const std::regex pattern("([^ =]+)=([^ <>]+)(?:<([^ ,]+),([^ >]+))?(?:>([^ ,]+),([^ ]+))?");
  std::string text;
  for (std::sregex_iterator key(keys.begin(), keys.end(), pattern), end; key != end; ++key)
  {
    const auto write = [&](size_t time)
    { return R"("time": )" + WriteTime((*key)[time].str()) + R"(, "value": )" + (*key)[time + 1].str(); };
    text += (text.empty() ? "{" : ", {") + write(1) + R"(, "interpolation": )" + std::to_string(interpolation);
    text += (*key)[3].matched ? R"(, "left": {)" + write(3) + "}" : "";
    text += (*key)[5].matched ? R"(, "right": {)" + write(5) + "}" : "";
    text += "}";
  }
  return R"({"id": )" + id + R"(, "keys": [)" + text + "]}";
}

std::string PointTrack(const std::vector<std::string>& keys)
{
  std::string text;
  for (size_t i = 0; i < keys.size(); ++i)
  {
    text += (i == 0 ? "" : ", ") + std::string("{\"time\": [") + std::to_string(i) + R"(,1], "value": 0.0, "interpolation": 2)" +
            (keys[i].empty() ? "" : ", \"points\": [" + keys[i] + "]") + "}";
  }
  return R"("tracks": [{"id": [[100004812,0,0]], "keys": [)" + text + "]}]";
}

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
