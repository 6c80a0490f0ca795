// The plug-in as it is found, or not, and what is set in it.

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

}  // namespace
}  // namespace q7z::test
