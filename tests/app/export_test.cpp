// Saving from the command line: forms and options, what is refused, what survives a failure, and what the run tells.

#include <sys/stat.h>

#include <filesystem>

#include <gtest/gtest.h>

#include "tests/app/expectations.h"
#include "tests/support/gltfbuilders.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

struct FormCase
{
  std::string name;
  std::string out;
  std::vector<std::string> options;
  std::string begin;  // of the bytes
};

class AppForm : public testing::TestWithParam<FormCase>
{};

TEST_P(AppForm, FollowsOptionThenSuffix)
{
  for (const auto& [verb, in] : {std::pair("export", "in.json"), std::pair("convert", "in.gltf")})
  {
    SCOPED_TRACE(verb);
    const ExportStage stage;
    const RunResult result = stage.Run(Join({verb, in, GetParam().out}, GetParam().options));
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
    const bool isStdout = GetParam().out == "-";
    EXPECT_EQ(result.out == "", !isStdout);
    const std::string bytes = isStdout ? result.out : stage.Read(GetParam().out);
    EXPECT_EQ(bytes.substr(0, GetParam().begin.size()), GetParam().begin);
    EXPECT_EQ(stage.ListNew(), isStdout ? std::vector<std::string>{} : std::vector<std::string>{GetParam().out});
  }
}

const FormCase kFormCases[] = {
  {"Text", "out.gltf", {}, "{\n"},
  {"Binary", "out.glb", {}, "glTF"},
  {"BinaryUnderTheOtherName", "out.gltf", {"--export", "fileFormat=glb"}, "glTF"},
  {"TextUnderTheOtherName", "out.glb", {"--export", "fileFormat=gltf"}, "{\n"},
  {"TheLastOptionCounts", "out.bin", {"--export", "fileFormat=glb", "--export", "fileFormat=gltf"}, "{\n"},
  {"Stdout", "-", {}, "{\n"},
};
INSTANTIATE_TEST_SUITE_P(Rows, AppForm, testing::ValuesIn(kFormCases), RowName());

TEST(AppExportOption, ReachesTheSaver)
{
  // A text that the option takes out of the file, and one that it puts in.
  const char* const rows[][3] = {{"exportNormals=false", "\"NORMAL\"", "\"POSITION\""},
                                 {"exportScale=50cm", "1.0,\n        0.0,\n        -1.0", "2.0,\n        0.0,\n        -2.0"},
                                 {"shareMeshes=0", "no such text", "\"mesh\": 1"}};
  const ExportStage stage;
  const std::string plain = stage.Run({"export", "in.json", "-"}).out;
  for (const auto& [option, taken, put] : rows)
  {
    const RunResult chosen = stage.Run({"export", "in.json", "-", "--export", option});
    EXPECT_EQ(chosen.status, 0) << chosen.err;
    EXPECT_NE(chosen.out, plain) << option;
    EXPECT_EQ(chosen.out.find(taken), std::string::npos) << chosen.out;
    EXPECT_NE(chosen.out.find(put), std::string::npos) << chosen.out;
  }
}

/// A run that saves nothing. An older out.glb stays as it is.
struct FailCase
{
  std::string name;
  std::vector<std::string> arguments;
  int status;
  std::string said;
};

class AppExportFails : public testing::TestWithParam<FailCase>
{};

TEST_P(AppExportFails, AndLeavesAllAsItWas)
{
  const ExportStage stage;
  stage.Write("out.glb", "precious");
  stage.Write("refused.gltf", R"({"extensionsUsed":["EXT_one"],"extensionsRequired":["EXT_one"],"nodes":[{}]})");
  std::filesystem::create_directory(stage / "folder.glb");
  std::filesystem::create_hard_link(stage / "in.json", stage / "link.glb");
  const std::vector<std::string> before = stage.List();
  ExpectFailure(stage.Run(Join(GetParam().arguments, {"--quiet"})), GetParam().status, GetParam().said);
  EXPECT_EQ(stage.Read("out.glb"), "precious");
  EXPECT_EQ(stage.Read("in.json"), kScene);
  EXPECT_EQ(stage.List(), before);
}

const FailCase kFailCases[] = {
  {"UnknownSuffix",
   {"export", "in.json", "out.obj"},
   2,
   "\"out.obj\" ends in neither .gltf nor .glb; choose with --export fileFormat=gltf or glb"},
  {"NoOutput", {"export", "in.json"}, 2, "OUT is required"},
  {"UnknownField", {"export", "in.json", "out.glb", "--export", "exportNormal=true"}, 2, "exportNormal"},
  {"UnknownForm", {"export", "in.json", "out.glb", "--export", "fileFormat=obj"}, 2, "gltf or glb"},
  {"OutputIsTheInput", {"convert", "in.gltf", "./in.gltf"}, 2, "is the input itself; give another name"},
  {"ReportIsTheOutput", {"export", "in.json", "out.glb", "--report", "out.glb"}, 2, "the report would replace \"out.glb\""},
  {"RefusedFile", {"convert", "refused.gltf", "out.glb"}, 1, "EXT_one"},
  {"MissingFolder", {"export", "in.json", "none/out.glb"}, 3, "cannot write \"none/out.glb\": No such file or directory"},
  {"FullDevice", {"export", "in.json", "/dev/full", "--export", "fileFormat=glb"}, 3, "No space left on device"},
};
INSTANTIATE_TEST_SUITE_P(Rows, AppExportFails, testing::ValuesIn(kFailCases), RowName());

TEST(AppExportStdout, OnAFullDeviceFails)
{
  const ExportStage stage;
  for (const char* const form : {"fileFormat=gltf", "fileFormat=glb"})
    ExpectFailure(stage.Run({"export", "in.json", "-", "--export", form}, {.input = "", .outPath = "/dev/full"}), 3,
                  "cannot write to stdout: No space left on device");
}

/// A disk that is full in the middle of the file: no file may grow beyond 512 bytes.
class AppFullDisk : public testing::TestWithParam<std::string>
{};

TEST_P(AppFullDisk, LeavesTheOlderFile)
{
  const ExportStage stage;
  const std::string name = "out." + GetParam();
  stage.Write(name, "precious");
  const std::string line = "trap '' XFSZ; ulimit -f 1; exec " Q7Z_TEST_BIN_DIR "/q7z export in.json " + name + " --report -";
  RunSettings settings{.input = "", .environment = {{"LLVM_PROFILE_FILE", "/dev/null"}}};  // its file would be cut, too
  settings.folder = stage.GetPath();
  const RunResult result = Process("/bin/sh", {"-c", line}, settings).Finish();
  ExpectFailure(result, 3, "q7z: error: cannot write \"" + name + "\": File too large\n");
  EXPECT_NE(result.out.find(R"("status": "io_error")"), std::string::npos) << result.out;
  EXPECT_EQ(stage.Read(name), "precious");
  EXPECT_EQ(stage.ListNew(), std::vector<std::string>{name});
}

INSTANTIATE_TEST_SUITE_P(Forms, AppFullDisk, testing::Values("gltf", "glb"), [](const auto& row) { return row.param; });

TEST(AppExport, ReplacesAnOlderFileAndKeepsItsRights)
{
  for (const char* const name : {"out.gltf", "out.glb"})
  {
    const ExportStage stage;
    const std::string out = stage.Write(name, std::string(1 << 20, 'x'));
    ASSERT_EQ(chmod(out.c_str(), 0640), 0);
    EXPECT_EQ(stage.Run({"export", "in.json", name}).status, 0);
    EXPECT_EQ(stage.Read(name), stage.Run({"export", "in.json", "-", "--export", std::string("fileFormat=") + (name + 4)}).out);
    struct stat status = {};
    ASSERT_EQ(stat(out.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
    EXPECT_EQ(stage.ListNew(), std::vector<std::string>{name});
  }
}

TEST(AppExport, ReadsAndWritesStreams)
{
  const ExportStage stage;
  const TestFolder temporary;
  const std::vector<std::pair<std::string, std::string>> environment = {{"TMPDIR", temporary.GetPath()}};
  const RunResult exported = stage.Run({"export", "-", "-"}, {.input = kScene, .environment = environment});
  EXPECT_EQ(exported.status, 0) << exported.err;
  EXPECT_EQ(exported.out, stage.Run({"export", "in.json", "-"}).out);
  const RunResult converted = stage.Run({"convert", "-", "-"}, {.input = exported.out, .environment = environment});
  EXPECT_EQ(converted.status, 0) << converted.err;
  EXPECT_NE(converted.out.find("\"Tri\""), std::string::npos) << converted.out;
  EXPECT_EQ(temporary.List(), std::vector<std::string>{});
}

TEST(AppExport, WithoutAFolderForStdoutFails)
{
  const ExportStage stage;
  ExpectFailure(stage.Run({"export", "in.json", "-"}, {.input = "", .environment = {{"TMPDIR", stage / "none"}}}), 3,
                "cannot make a temporary folder: No such file or directory");
}

TEST(AppConvert, IsAnImportAndAnExport)
{
  const ExportStage stage;
  ASSERT_EQ(stage.Run({"export", "in.json", "a.glb"}).status, 0);
  ASSERT_EQ(stage.Run({"convert", "a.glb", "b.gltf", "--progress", "always"}).status, 0);  // a thread of its own
  ASSERT_EQ(stage.Run({"import", "a.glb", "scene.json"}).status, 0);
  ASSERT_EQ(stage.Run({"export", "scene.json", "c.gltf"}).status, 0);
  EXPECT_NE(stage.Read("b.gltf"), "");
  EXPECT_EQ(stage.Read("b.gltf"), stage.Read("c.gltf"));
}

TEST(AppConvert, WritesInSpiteOfWarnings)
{
  const ExportStage stage;
  const RunResult warned = stage.Run({"convert", "warned.gltf", "a.gltf"});
  EXPECT_EQ(warned.status, 0);
  EXPECT_EQ(warned.err, kWarning);
  const RunResult strict = stage.Run({"convert", "warned.gltf", "b.gltf", "--strict", "--quiet"});
  EXPECT_EQ(strict.status, 5);
  EXPECT_EQ(strict.err, "");
  EXPECT_NE(stage.Read("a.gltf"), "");
  EXPECT_EQ(stage.Read("a.gltf"), stage.Read("b.gltf"));
}

/// What the plug-in answers, and what becomes of it.
struct AnswerCase
{
  std::string name;
  std::string answer;
  std::string out;
  std::string scene;
  int status;
  std::string said;  // empty when nothing is
};

class AppSaverAnswer : public testing::TestWithParam<AnswerCase>
{};

TEST_P(AppSaverAnswer, BecomesAnExitCode)
{
  const ExportStage stage;
  stage.Write("plain.json", R"({"format": "q7z scene", "version": 1})");
  stage.Write(GetParam().out, "precious");
  const RunResult result = stage.Run({"export", GetParam().scene, GetParam().out, "--plugin", Q7Z_TEST_FAKE_SAVER},
                                     {.input = "", .environment = {{"Q7Z_FAKE_SAVE", GetParam().answer}}});
  EXPECT_EQ(result.status, GetParam().status);
  EXPECT_EQ(result.err, GetParam().said.empty() ? "" : "q7z: error: " + GetParam().said + "\n");
  EXPECT_EQ(stage.Read(GetParam().out) == "precious", GetParam().status != 0);
  EXPECT_EQ(stage.ListNew(), (std::vector<std::string>{GetParam().out, "plain.json"}));
}

const AnswerCase kAnswerCases[] = {
  {"State", "-6", "out.gltf", "in.json", 1, "\"out.gltf\" could not be saved: the plug-in answered -6"},
  {"Memory", "-7", "out.gltf", "in.json", 4, "\"out.gltf\" needs more memory to be saved than there is"},
  {"Cancelled", "-8", "out.gltf", "in.json", 130, "interrupted"},
  {"TooLarge", "large", "out.glb", "in.json", 4,
   "\"out.glb\" would be larger than a GLB file can be, 4 GiB; save it as .gltf, or split the scene"},
  {"LargeIsNoMatterForText", "large", "out.gltf", "in.json", 0, ""},
  {"SmallScenesAreNotLookedAt", "large", "out.glb", "plain.json", 0, ""},
};
INSTANTIATE_TEST_SUITE_P(Rows, AppSaverAnswer, testing::ValuesIn(kAnswerCases), RowName());

TEST(AppSaverAnswerToStdout, IsLookedAtBeforeItIsWritten)
{
  const ExportStage stage;
  const RunResult result = stage.Run({"export", "in.json", "-", "--export", "fileFormat=glb", "--plugin", Q7Z_TEST_FAKE_SAVER},
                                     {.input = "", .environment = {{"Q7Z_FAKE_SAVE", "large"}}});
  ExpectFailure(result, 4, "the file would be larger than a GLB file can be, 4 GiB");
  EXPECT_EQ(result.out, "");
}

}  // namespace
}  // namespace q7z::test
