// The plug-in as it is found, or not, what is set in it, and its hashes.

#include <filesystem>

#include <gtest/gtest.h>

#include "tests/app/expectations.h"

namespace q7z::test
{
namespace
{

namespace fs = std::filesystem;

/// A copy of the library with its texts, to break.
class PluginCopy
{
public:
  PluginCopy()
  {
    fs::copy_file(Q7Z_TEST_BIN_DIR "/io_gltf.so", folder / "io_gltf.so");
    fs::copy(Q7Z_TEST_BIN_DIR "/resources", folder / "resources", fs::copy_options::recursive);
  }
  RunResult Run() const { return RunTool({"import", "-", "--plugin", folder / "io_gltf.so"}, {kGoodFile}); }

  Stage folder;
};

TEST(AppPlugin, LoadsByItsPathOrItsName)
{
  const PluginCopy copy;
  EXPECT_EQ(copy.Run().status, 0);
  EXPECT_EQ(copy.Run().err, "");
  EXPECT_EQ(copy.folder.Run({"import", "-", "--plugin", "io_gltf.so"}, {kGoodFile}).status, 0);
}

TEST(AppPlugin, ThatIsNoneIsRefused)
{
  const Stage stage;
  stage.Write("text.so", "no library\n");
  const std::pair<std::string, const char*> rows[] = {{"none.so", "none.so\""},
                                                      {"text.so", "text.so\""},
                                                      {"/lib/x86_64-linux-gnu/libm.so.6",
                                                       "does not export q7z_main, g_tarno and g_CpuYieldDelegate"}};
  for (const auto& [path, said] : rows)
    ExpectFailure(stage.Run({"import", "-", "--plugin", path}, {kGoodFile}), 3, said);
}

TEST(AppPlugin, WithoutItsTextsSaysSo)
{
  for (const char* const name : {"resources/strings_en.txt", "resources/fgltfimporter.txt"})
  {
    const PluginCopy copy;
    fs::remove(copy.folder / name);
    ExpectFailure(copy.Run(), 3, "Cannot read \"" + copy.folder / name + "\": No such file or directory");
  }
  for (const char* const text : {"", "10000 = one text alone\n", "no number = text\n"})
  {
    const PluginCopy copy;
    copy.folder.Write("resources/strings_en.txt", text);
    ExpectFailure(copy.Run(), 3, "could not load its texts");
  }
}

TEST(AppConfig, IsSetOrRefused)
{
  for (const char* const value : {"g_gltfImporterNoSkin=true", "g_gltfImporterBakeSplineInterpolatedAnimation=false"})
    EXPECT_EQ(RunTool({"import", "-", "--config", value}, {kGoodFile}).status, 0) << value;
  ExpectFailure(RunTool({"import", "-", "--config", "g_gltfImporterNoSkin=1"}, {kGoodFile}), 2,
                "\"g_gltfImporterNoSkin\" wants true or false, not \"1\"");
  ExpectFailure(RunTool({"import", "-", "--config", "g_other=true"}, {kGoodFile}), 2,
                "there is no configuration variable \"g_other\"; there are g_gltfImporterNoSkin, ");
}

// The verb hash: the plug-in's hasher on a terminal.

/// What a load reports of the extensions of a file.
std::string GetReportedHash(const std::string& extension)
{
  const TestFolder folder;
  const std::string in =
    folder.Write("in.gltf", R"({"asset":{"version":"2.0"},"extensionsUsed":[")" + extension + R"("],"nodes":[{}]})");
  EXPECT_EQ(RunTool({"import", in, "--report", folder / "report.json"}).status, 0);
  const std::string report = folder.Read("report.json");
  const size_t start = report.find("\"id\"", report.find("xtensions"));
  const size_t first = report.find('"', report.find(':', start)) + 1;
  return start == std::string::npos ? "none" : report.substr(first, report.find('"', first) - first);
}

TEST(AppHash, IsTheOneOfTheReport)
{
  const std::string hash = GetReportedHash("KHR_lights_punctual");
  EXPECT_EQ(hash.size(), 32u) << hash;
  const RunResult result = RunTool({"hash", "KHR_lights_punctual"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, "KHR_lights_punctual\t" + hash + "\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(RunTool({"hash", "KHR_lights_punctual", "--only-hashes"}).out, hash + "\n");
}

// Stdin is hashed piece by piece. Lines without a name stand around the ends of the pieces, and after them.
TEST(AppHash, TakesLongInputs)
{
  std::string input;
  std::string expected;
  const std::string ofNothing = RunTool({"hash", "a", "", "b"}).out.substr(35, 34);
  const std::string ofName = RunTool({"hash", "a"}).out;
  for (int i = 0; i < 2500000; ++i)
  {
    const bool isEmpty = i % 7 || i > 2000000;
    input += isEmpty ? (i % 2 ? "\r\n" : "\n") : "a\n";
    expected += isEmpty ? ofNothing : ofName;
  }
  const std::string hashed = RunTool({"hash"}, {input}).out;
  EXPECT_TRUE(hashed == expected) << hashed.size() << " bytes for " << expected.size();
}

TEST(AppHash, TakesLinesOfStdin)
{
  const std::string both = RunTool({"hash", "a", "b"}).out;
  EXPECT_EQ(RunTool({"hash"}, {"a\nb"}).out, both);
  EXPECT_EQ(RunTool({"hash"}, {"a\r\nb\r\n"}).out, both);
  EXPECT_EQ(RunTool({"hash"}, {"a\n\nb\n"}).out, RunTool({"hash", "a", "", "b"}).out);
  const RunResult nothing = RunTool({"hash"});
  EXPECT_EQ(nothing.status, 0) << nothing.err;
  EXPECT_EQ(nothing.out, "");
}

}  // namespace
}  // namespace q7z::test
