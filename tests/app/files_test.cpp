// Files in and out: what cannot be read or written, what is refused, and what survives a failure.

#include <sys/stat.h>

#include <filesystem>

#include <gtest/gtest.h>

#include "tests/app/expectations.h"
#include "tests/support/gltfbuilders.h"

namespace q7z::test
{
namespace
{

std::string MakeGlb()
{
  return ToText(GlbBuilder().PaddedJson(kGoodFile).File());
}

TEST(AppInput, ThatDoesNotLoadLeavesNoOutput)
{
  const std::string cut = MakeGlb().substr(0, 40);
  const std::string rows[][3] = {
    {"in.obj", "v 1 2 3\n", "is neither a GLB file (version 2) nor named .gltf"},
    {"in.gltf", R"({"nodes":[)", "JSON file couldn't be read"},
    {"in.glb", cut, "Condition glbFile->ReadBytes(gltfChunkBytes.GetFirst(), chunkLength) == chunkLength not fulfilled."},
  };
  for (const auto& [name, bytes, said] : rows)
  {
    const TestFolder folder;
    const std::string in = folder.Write(name, bytes);
    const std::string out = folder.Write("out.json", "precious");
    const RunResult result = RunTool({"import", in, out});
    ExpectFailure(result, 1, said);
    EXPECT_NE(result.err.find(in), std::string::npos) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(folder.Read("out.json"), "precious");
    EXPECT_EQ(folder.List().size(), 2u) << "a file was left behind";
  }
}

TEST(AppInput, IsAPlainFileThatIsThere)
{
  const Stage stage;
  ASSERT_EQ(mkfifo((stage / "pipe.gltf").c_str(), 0600), 0);  // not waited for
  ExpectFailure(stage.Run({"inspect", "none.gltf"}), 3, "cannot read \"none.gltf\": No such file or directory");
  ExpectFailure(stage.Run({"inspect", "."}), 3, "is a folder");
  ExpectFailure(stage.Run({"inspect", "pipe.gltf"}), 3, "is no plain file; use - to read from stdin");
}

// Of either form, and nothing of it is left behind.
TEST(AppStdin, IsReadAsAFile)
{
  const std::pair<std::string, int> rows[] = {{kGoodFile, 0}, {MakeGlb(), 0}, {"", 1}, {std::string(100000, '\xFF'), 1}};
  for (const auto& [input, status] : rows)
  {
    const TestFolder temporary;
    const RunResult result = RunTool({"import", "-"}, {.input = input, .environment = {{"TMPDIR", temporary.GetPath()}}});
    EXPECT_EQ(result.status, status) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(temporary.List(), std::vector<std::string>{});
  }
}

TEST(AppStdin, WithoutAFolderToKeepItFails)
{
  const TestFolder folder;
  ExpectFailure(RunTool({"import", "-"}, {.input = kGoodFile, .environment = {{"TMPDIR", folder / "none"}}}), 3,
                "cannot keep stdin in a temporary file: No such file or directory");
}

// A side file beside the temporary copy is none of the user's.
TEST(AppStdin, ReachesNoSideFileOfTheTemporaryFolder)
{
  const TestFolder temporary;
  temporary.Write("secret.bin", std::string(36, '\0'));
  const RunResult result = RunTool({"import", "-"}, {.input = R"({"buffers":[{"uri":"secret.bin","byteLength":36}]})",
                                                     .environment = {{"TMPDIR", temporary.GetPath()}}});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_NE(result.err.find("q7z: warning: "), std::string::npos) << result.err;
}

TEST(AppOutput, IsTheSameOnStdoutAndInAFile)
{
  const TestFolder folder;
  const std::string in = folder.Write("in.gltf", kGoodFile);
  const RunResult toFile = RunTool({"import", in, folder / "out.json"});
  EXPECT_EQ(toFile.status, 0) << toFile.err;
  EXPECT_EQ(toFile.out, "");
  const RunResult toStdout = RunTool({"import", in, "-"});
  EXPECT_EQ(toStdout.status, 0) << toStdout.err;
  EXPECT_EQ(RunTool({"inspect", in, "--json"}).out, toStdout.out);
  EXPECT_NE(toStdout.out.find("\"Prop\""), std::string::npos);
  EXPECT_EQ(folder.Read("out.json"), toStdout.out);
  EXPECT_EQ(toStdout.err, "");
  EXPECT_EQ(folder.List(), (std::vector<std::string>{"in.gltf", "out.json"}));
}

TEST(AppOutput, IsNeverTheInput)
{
  const TestFolder folder;
  const std::string in = folder.Write("in.gltf", kGoodFile);
  std::filesystem::create_symlink("in.gltf", folder / "link.gltf");
  std::filesystem::create_hard_link(in, folder / "hard.gltf");
  for (const std::string& out : {in, folder.GetPath() + "/./in.gltf", folder / "link.gltf", folder / "hard.gltf"})
  {
    ExpectFailure(RunTool({"import", in, out}), 2, "is the input itself; give another name");
    EXPECT_EQ(folder.Read("in.gltf"), kGoodFile) << out;
  }
  EXPECT_EQ(folder.List().size(), 3u);
}

TEST(AppOutput, IsNeverTheReport)
{
  const TestFolder folder;
  const std::string in = folder.Write("in.gltf", kGoodFile);
  std::filesystem::create_symlink("in.gltf", folder / "link.gltf");
  for (const std::string& report : {in, folder / "link.gltf", folder / "out.json"})
    ExpectFailure(RunTool({"import", in, folder / "out.json", "--report", report}), 2,
                  "the report would replace \"" + report + "\"");
  EXPECT_EQ(folder.Read("in.gltf"), kGoodFile);
  EXPECT_EQ(folder.List(), (std::vector<std::string>{"in.gltf", "link.gltf"}));
}

TEST(AppOutput, ThatCannotBeMadeFails)
{
  const Stage stage;
  stage.Write("in.gltf", kGoodFile);
  std::filesystem::create_directory(stage / "out");
  ExpectFailure(stage.Run({"import", "in.gltf", "none/out.json"}), 3, "none");
  ExpectFailure(stage.Run({"import", "in.gltf", "--report", "none/report.json"}), 3, "none");
  ExpectFailure(stage.Run({"import", "in.gltf", "out"}), 3, "\"out\"");
  EXPECT_EQ(stage.List(), (std::vector<std::string>{"in.gltf", "out"}));
}

TEST(AppOutput, OnAFullDeviceFails)
{
  const TestFolder folder;
  const std::string in = folder.Write("in.gltf", kGoodFile);
  const std::vector<std::vector<std::string>> runs = {{"import", in, "-"},
                                                      {"inspect", in},
                                                      {"inspect", in, "--json"},
                                                      {"import", in, "--report", "-"},
                                                      {"options"}};
  for (const std::vector<std::string>& arguments : runs)
  {
    SCOPED_TRACE(arguments.front() + " " + arguments.back());
    ExpectFailure(RunTool(arguments, {.input = "", .outPath = "/dev/full"}), 3, "No space left on device");
  }
}

}  // namespace
}  // namespace q7z::test
