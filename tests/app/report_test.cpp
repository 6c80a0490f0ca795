// What a run says: the report, warnings under the options that hush or raise them, and what reaches the terminal.

#include <csignal>
#include <simdjson.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>

#include "tests/app/expectations.h"
#include "tests/support/gltfbuilders.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

constexpr const char* kRequiringFile =
  R"({"extensionsUsed":["EXT_one","EXT_two"],"extensionsRequired":["EXT_two"],"nodes":[{}]})";

std::string MakeTriangle()
{
  GltfJson json;
  const int positions = json.Floats({0, 0, 0, 1, 0, 0, 0, 1, 0}, "VEC3");
  json.Add("meshes", R"({"primitives":[{"attributes":{"POSITION":)" + std::to_string(positions) + "}}]}");
  json.Add("nodes", R"({"mesh":0,"name":"Tri"})");
  json.Add("nodes", R"({"mesh":0,"name":"Again"})");
  return json.Text();
}

/// What stands in the report of a run in a folder with in.gltf, whose text is given, and a scene, in.json.
struct ReportRow
{
  std::string name;
  std::string file;
  std::vector<std::string> arguments;
  int status;
  std::vector<std::string> texts;
};

class AppReport : public testing::TestWithParam<ReportRow>
{};

TEST_P(AppReport, TellsTheRun)
{
  const ReportRow& row = GetParam();
  const ExportStage stage;
  stage.Write("in.gltf", row.file);
  const std::vector<std::string> arguments = Join(row.arguments, {"--report", "report.json", "--quiet"});
  EXPECT_EQ(stage.Run(arguments).status, row.status);
  const std::string report = stage.Read("report.json");
  simdjson::dom::parser parser;
  EXPECT_EQ(parser.parse(report).error(), simdjson::SUCCESS) << report;
  size_t place = report.find(R"("verb": ")" + row.arguments[0] + "\"");
  for (const std::string& text : row.texts)
  {
    place = report.find(text, place);
    EXPECT_NE(place, std::string::npos) << report << "lacks, in this order: " << text;
  }
  EXPECT_NE(report.find("\"exitCode\": " + std::to_string(row.status) + ","), std::string::npos) << report;
  EXPECT_EQ(report.find("timings"), std::string::npos);
  EXPECT_EQ(report.find(stage.GetPath()), std::string::npos) << "an absolute path: " << report;
  EXPECT_EQ(stage.Run(arguments).status, row.status);
  EXPECT_EQ(stage.Read("report.json"), report) << "two runs differ";
}

const std::vector<ReportRow> kReportRows = {
  {"Good",
   kGoodFile,
   {"import", "in.gltf"},
   0,
   {R"("uri": "in.gltf")", R"("status": "none")", R"("numErrors": 0)", R"("numWarnings": 0)", R"("numInfos": 0)",
    R"("messages": [])", R"("generator": "by hand")"}},
  // The second node on the mesh is an instance, without points of its own.
  {"Counts", MakeTriangle(), {"import", "in.gltf"}, 0, {R"("objects": 2)", R"("points": 3)", R"("polygons": 1)"}},
  {"Warned", kWarnedFile, {"import", "in.gltf"}, 0, {R"("status": "none")", R"("numErrors": 0)", R"("numWarnings": 1)"}},
  {"WarnedStrictly", kWarnedFile, {"import", "in.gltf", "--strict"}, 5, {R"("status": "none")", R"("numWarnings": 1)"}},
  {"InformationIsNoWarning",
   R"({"extensionsUsed":["EXT_one"],"nodes":[{}]})",
   {"import", "in.gltf", "--strict"},
   0,
   {R"("numWarnings": 0)", R"("numInfos": 1)"}},
  {"Refused",
   kRequiringFile,
   {"import", "in.gltf", "--strict"},
   1,
   {R"("status": "unexpected_error")", R"("numErrors": 1)", R"("numWarnings": 1)", R"("numInfos": 1)",
    R"("severity": 2, "message": "The file uses these extensions, which are ignored: EXT_one, EXT_two")",
    R"("severity": 1, "message": "The file cannot be loaded, because it requires these extensions: EXT_two")",
    R"("code": "ERROR", "severity": 0, "message": ")"}},
  {"Broken",
   R"({"nodes":[1]})",
   {"import", "in.gltf"},
   1,
   {R"("status": "unknown_error")", R"("numErrors": 1)", R"("numInfos": 0)"}},
  {"Missing", kGoodFile, {"import", "no-such-file.gltf"}, 3, {R"("numErrors": 1)"}},
  {"Export",
   kGoodFile,
   {"export", "in.json", "out.glb"},
   0,
   {R"("uri": "in.json")", R"("status": "none")", R"("numErrors": 0)", R"("objects": 3)", R"("points": 3)", R"("polygons": 1)"}},
  {"Convert",
   kWarnedFile,
   {"convert", "in.gltf", "out.gltf"},
   0,
   {R"("uri": "in.gltf")", R"("status": "none")", R"("numWarnings": 1)", R"("objects": )"}},
  {"NoScene",
   kGoodFile,
   {"export", "in.gltf", "out.glb"},
   1,
   {R"("status": "not_recognised")", R"("numErrors": 1)", "is no scene document"}},
};
INSTANTIATE_TEST_SUITE_P(Rows, AppReport, testing::ValuesIn(kReportRows), RowName());

TEST(AppReportTimings, AreToldOnRequest)
{
  const RunResult result = RunTool({"import", "-", "--report", "-", "--timings"}, {kGoodFile});
  EXPECT_NE(result.out.find(R"("uri": "-")"), std::string::npos) << result.out;
  EXPECT_NE(result.out.find("\"load\":", result.out.find("\"timings\"")), std::string::npos) << result.out;
}

TEST(AppStderr, IsExactly)
{
  const struct
  {
    const char* file;
    std::vector<std::string> options;
    const char* err;
  } rows[] =
    {{kGoodFile, {}, ""},
     {kWarnedFile, {"--quiet"}, ""},
     {R"({"extensionsUsed":["EXT_one"],"nodes":[{}]})", {}, ""},
     {kWarnedFile,
      {"--color", "always"},
      "q7z: \x1b[33mwarning:\x1b[0m The node with the index 0 could not be built. It and the nodes below it are missing.\n"}};
  for (const auto& row : rows)
    EXPECT_EQ(RunTool(Join({"import", "-"}, row.options), {row.file}).err, row.err);
}

TEST(AppTexts, OfAFileAreShownEscaped)
{
  const std::string name = "\\u001b[31mred\\n\\u009b\\u007f\\u00e9";
  const std::string used = R"({"nodes":[{"name":")" + name + R"("}],"extensionsUsed":[")" + name + "\"]";
  const std::string escaped = "\\x1B[31mred\\x0A\\xC2\\x9B\\x7F\xC3\xA9";
  const RunResult note = RunTool({"import", "-", "--verbose"}, {used + "}"});
  EXPECT_NE(note.err.find("q7z: note: The file uses these extensions, which are ignored: " + escaped + "\n"), std::string::npos)
    << note.err;
  ExpectFailure(RunTool({"import", "-", "--quiet"}, {used + R"(,"extensionsRequired":[")" + name + "\"]}"}), 1, escaped);
  const std::string tree = RunTool({"inspect", "-"}, {used + "}"}).out;
  EXPECT_NE(tree.find("red"), std::string::npos) << tree;
  for (const char* const control : {"\x1b", "\xC2\x9B", "\x7F"})
    EXPECT_EQ((note.err + tree).find(control), std::string::npos) << note.err << tree;
}

TEST(AppVerbose, ShowsTheChainOfAnError)
{
  const RunResult hushed = RunTool({"import", "-"}, {R"({"nodes":[1]})"});
  EXPECT_EQ(hushed.err.find("q7z: diagnostic: "), std::string::npos) << hushed.err;
  const RunResult result = RunTool({"import", "-", "--verbose"}, {R"({"nodes":[1]})"});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.err.find("q7z: diagnostic: "), std::string::npos) << result.err;
  EXPECT_EQ(result.err.find("--verbose tells more"), std::string::npos) << result.err;
}

/// Colours and the bar on a terminal.
struct TerminalRow
{
  std::string name;
  std::vector<std::pair<std::string, std::string>> environment;
  std::vector<std::string> options;
  bool isTerminal;
  bool colors;
  bool bar;
};

class AppTerminal : public testing::TestWithParam<TerminalRow>
{};

TEST_P(AppTerminal, IsUsedAsFarAsItIsWanted)
{
  const TerminalRow& row = GetParam();
  std::vector<std::string> arguments = {"import", "-"};
  arguments.insert(arguments.end(), row.options.begin(), row.options.end());
  RunSettings settings{.input = kWarnedFile, .environment = row.environment};
  settings.errIsTerminal = row.isTerminal;
  const RunResult result = RunTool(arguments, settings);
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.err.find("\x1b[33mwarning:") != std::string::npos, row.colors) << result.err;
  EXPECT_EQ(result.err.find("Reading the file") != std::string::npos, row.bar) << result.err;
  if (row.bar)
  {
    const std::string kCleared = "\r\x1b[K";
    const size_t lastBar = result.err.rfind("[#");
    EXPECT_GT(result.err.rfind(kCleared), lastBar == std::string::npos ? 0 : lastBar) << "the bar stays: " << result.err;
  }
}

const std::vector<TerminalRow> kTerminalRows = {
  {"Pipe", {{"TERM", "xterm"}}, {}, false, false, false},
  {"PipeForced", {}, {"--color", "always", "--progress", "always"}, false, true, true},
  {"Terminal", {{"TERM", "xterm"}}, {}, true, true, true},
  {"NoColor", {{"TERM", "xterm"}, {"NO_COLOR", "1"}}, {}, true, false, true},
  {"EmptyNoColor", {{"TERM", "xterm"}, {"NO_COLOR", ""}}, {}, true, true, true},
  {"OptionBeatsNoColor", {{"NO_COLOR", "1"}}, {"--color", "always"}, false, true, false},
  {"DumbTerminal", {{"TERM", "dumb"}}, {}, true, false, true},
  {"Never", {{"TERM", "xterm"}}, {"--color", "never", "--progress", "never"}, true, false, false},
  {"QuietShowsNoBar", {{"TERM", "xterm"}}, {"--quiet", "--progress", "always"}, true, false, false},
};

INSTANTIATE_TEST_SUITE_P(Rows, AppTerminal, testing::ValuesIn(kTerminalRows), RowName());

struct SignalRow
{
  std::string name;
  int signal;
  int exitCode;
};

class AppInterrupt : public testing::TestWithParam<SignalRow>
{};

// The signal comes while stdin is being kept, so the load finds its job cancelled, however fast it is.
TEST_P(AppInterrupt, EndsTheRunAndLeavesNothing)
{
  const TestFolder temporary;
  const TestFolder folder;
  const std::string out = folder.Write("out.json", "precious");
  const std::string file = kGoodFile;
  Process process(Q7Z_TEST_BIN_DIR "/q7z", {"import", "-", out}, {.input = "", .environment = {{"TMPDIR", temporary.GetPath()}}});
  ASSERT_TRUE(process.Write(file.substr(0, 20)));
  for (int wait = 0; temporary.List().empty() && wait < 30000; ++wait)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  ASSERT_FALSE(temporary.List().empty()) << "it does not read";
  process.Signal(GetParam().signal);
  const RunResult result = process.Finish(file.substr(20));
  ExpectFailure(result, GetParam().exitCode, "interrupted");
  EXPECT_EQ(folder.Read("out.json"), "precious");
  EXPECT_EQ(folder.List(), std::vector<std::string>{"out.json"});
  EXPECT_EQ(temporary.List(), std::vector<std::string>{});
}

// Nobody reads what comes, which is more than a pipe holds, so the signal finds the run while it writes.
TEST_P(AppInterrupt, EndsTheWritingToStdout)
{
  const TestFolder folder;
  std::string nodes = R"({"cameras":[{"type":"perspective","perspective":{"yfov":1,"znear":1}}],"nodes":[{})";
  for (int i = 0; i < 5000; ++i)
    nodes += R"(,{"camera":0})";
  const std::string in = folder.Write("in.gltf", nodes + "]}");
  for (const char* const command : {"import", "convert", "inspect"})
  {
    SCOPED_TRACE(command);
    std::vector<std::string> arguments = {command, in};
    if (arguments[0] != "inspect")
      arguments.emplace_back("-");
    Process process(Q7Z_TEST_BIN_DIR "/q7z", arguments, {});
    ASSERT_TRUE(process.WaitForFullOutput());
    process.Signal(GetParam().signal);
    ExpectFailure(process.Finish(), GetParam().exitCode, "interrupted");
  }
}

INSTANTIATE_TEST_SUITE_P(Rows, AppInterrupt, testing::Values(SignalRow{"Int", SIGINT, 130}, SignalRow{"Term", SIGTERM, 143}),
                         RowName());

}  // namespace
}  // namespace q7z::test
