// The plug-in as it is found, or not, and what is set in it.

#include <filesystem>

#include <gtest/gtest.h>

#include "tests/app/expectations.h"
#include "tests/support/rowname.h"

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

  TempFolder folder;
};

TEST(AppPlugin, CopyWithItsTextsLoads)
{
  const RunResult result = PluginCopy().Run();
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.err, "");
}

TEST(AppPlugin, InTheCurrentFolderLoadsByItsName)
{
  const PluginCopy copy;
  const RunResult result =
    RunTool({"import", "-", "--plugin", "io_gltf.so"}, {.input = kGoodFile, .folder = copy.folder.GetPath()});
  EXPECT_EQ(result.status, 0) << result.err;
}

TEST(AppPlugin, MissingIsNamed)
{
  const TempFolder folder;
  ExpectFailure(RunTool({"import", "-", "--plugin", folder / "none.so"}, {kGoodFile}), 3, "\"" + folder / "none.so" + "\"");
}

TEST(AppPlugin, ThatIsNoLibraryIsNamed)
{
  const TempFolder folder;
  const std::string path = folder.Write("text.so", "no library\n");
  ExpectFailure(RunTool({"import", "-", "--plugin", path}, {kGoodFile}), 3, "\"" + path + "\"");
}

TEST(AppPlugin, ThatIsAnotherLibraryIsRefused)
{
  ExpectFailure(RunTool({"import", "-", "--plugin", "/lib/x86_64-linux-gnu/libm.so.6"}, {kGoodFile}), 3,
                "does not export q7z_main, g_tarno and g_CpuYieldDelegate");
}

TEST(AppPlugin, WithoutItsFolderOfTextsSaysSo)
{
  const PluginCopy copy;
  fs::remove_all(copy.folder / "resources");
  ExpectFailure(copy.Run(), 3, "Cannot read \"" + copy.folder / "resources/strings_en.txt" + "\": No such file or directory");
}

TEST(AppPlugin, WithBrokenTextsSaysSo)
{
  for (const char* const text : {"", "10000 = one text alone\n", "no number = text\n"})
  {
    const PluginCopy copy;
    copy.folder.Write("resources/strings_en.txt", text);
    ExpectFailure(copy.Run(), 3, "could not load its texts");
  }
}

TEST(AppPlugin, WithoutItsDescriptionSaysSo)
{
  const PluginCopy copy;
  fs::remove(copy.folder / "resources/fgltfimporter.txt");
  ExpectFailure(copy.Run(), 3, "Cannot read \"" + copy.folder / "resources/fgltfimporter.txt" + "\": No such file or directory");
}

/// Configuration variables of the module.
struct ConfigRow
{
  std::string name;
  std::string value;
  int status;
  std::string said;
};

class AppConfig : public testing::TestWithParam<ConfigRow>
{};

TEST_P(AppConfig, IsSetOrRefused)
{
  const RunResult result = RunTool({"import", "-", "--config", GetParam().value}, {kGoodFile});
  if (GetParam().status != 0)
    ExpectFailure(result, GetParam().status, GetParam().said);
  EXPECT_EQ(result.status, GetParam().status) << result.err;
}

const std::vector<ConfigRow> kConfigRows = {
  {"NoSkin", "g_gltfImporterNoSkin=true", 0, ""},
  {"NoSkinOff", "g_gltfImporterNoSkin=false", 0, ""},
  {"Bake", "g_gltfImporterBakeSplineInterpolatedAnimation=true", 0, ""},
  {"WrongValue", "g_gltfImporterNoSkin=1", 2, "\"g_gltfImporterNoSkin\" wants true or false, not \"1\""},
  {"Unknown", "g_other=true", 2, "there is no configuration variable \"g_other\"; there are g_gltfImporterNoSkin, "},
};

INSTANTIATE_TEST_SUITE_P(Rows, AppConfig, testing::ValuesIn(kConfigRows), RowName());

}  // namespace
}  // namespace q7z::test
