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

/// A parsed report, with plain access by pointer.
class Report
{
public:
  explicit Report(const std::string& text) { EXPECT_FALSE(_parser.parse(text).get(_root)) << "no JSON: " << text; }
  std::string Text(const std::string& pointer)
  {
    std::string_view value;
    EXPECT_FALSE(_root.at_pointer(pointer).get(value)) << pointer;
    return std::string(value);
  }
  int64_t Number(const std::string& pointer)
  {
    int64_t value = -1;
    EXPECT_FALSE(_root.at_pointer(pointer).get(value)) << pointer;
    return value;
  }
  bool Has(const std::string& pointer) { return _root.at_pointer(pointer).error() == simdjson::SUCCESS; }

private:
  simdjson::dom::parser _parser;
  simdjson::dom::element _root;
};

/// The exit code, the status and how many issues of each kind a file leads to.
struct ReportRow
{
  std::string name;
  std::string file;
  std::vector<std::string> options;
  int exitCode;
  std::string status;
  int errors;
  int warnings;
  int infos;
};

class AppReport : public testing::TestWithParam<ReportRow>
{};

TEST_P(AppReport, TellsTheRun)
{
  const ReportRow& row = GetParam();
  const TestFolder folder;
  folder.Write("in.gltf", row.file);
  std::vector<std::string> arguments = {"import", "in.gltf", "--report", "report.json"};
  arguments.insert(arguments.end(), row.options.begin(), row.options.end());
  const RunResult result = RunTool(arguments, {.input = "", .folder = folder.GetPath()});
  EXPECT_EQ(result.status, row.exitCode) << result.err;
  const std::string text = folder.Read("report.json");
  Report report(text);
  EXPECT_EQ(report.Text("/tool"), "q7z");
  EXPECT_EQ(report.Text("/verb"), "import");
  EXPECT_EQ(report.Text("/uri"), "in.gltf");
  EXPECT_EQ(report.Text("/status"), row.status);
  EXPECT_EQ(report.Number("/exitCode"), row.exitCode);
  EXPECT_EQ(report.Number("/issues/numErrors"), row.errors);
  EXPECT_EQ(report.Number("/issues/numWarnings"), row.warnings);
  EXPECT_EQ(report.Number("/issues/numInfos"), row.infos);
  const int messages = row.errors + row.warnings + row.infos;
  EXPECT_EQ(report.Has("/issues/messages/" + std::to_string(messages)), false) << text;
  for (int i = 0; i < messages; ++i)
    EXPECT_NE(report.Text("/issues/messages/" + std::to_string(i) + "/message"), "");
  EXPECT_FALSE(report.Has("/timings"));
  EXPECT_EQ(text.find(folder.GetPath()), std::string::npos) << "an absolute path";

  EXPECT_EQ(RunTool(arguments, {.input = "", .folder = folder.GetPath()}).status, row.exitCode);
  EXPECT_EQ(folder.Read("report.json"), text) << "two runs differ";
}

const std::vector<ReportRow> kReportRows = {
  {"Good", kGoodFile, {}, 0, "none", 0, 0, 0},
  {"Warned", kWarnedFile, {}, 0, "none", 0, 1, 0},
  {"WarnedStrictly", kWarnedFile, {"--strict"}, 5, "none", 0, 1, 0},
  {"InformationIsNoWarning", R"({"extensionsUsed":["EXT_one"],"nodes":[{}]})", {"--strict"}, 0, "none", 0, 0, 1},
  {"Refused", kRequiringFile, {"--strict"}, 1, "unexpected_error", 1, 1, 1},
  {"Broken", R"({"nodes":[1]})", {}, 1, "unknown_error", 1, 0, 0},
};

INSTANTIATE_TEST_SUITE_P(Rows, AppReport, testing::ValuesIn(kReportRows), RowName());

TEST(AppReportCounts, AreOfTheDocument)
{
  const RunResult result = RunTool({"import", "-", "--report", "-", "--timings"}, {MakeTriangle()});
  ASSERT_EQ(result.status, 0) << result.err;
  Report report(result.out);
  // The second node on the mesh is an instance, without points of its own.
  EXPECT_EQ(report.Number("/info/objects"), 2);
  EXPECT_EQ(report.Number("/info/points"), 3);
  EXPECT_EQ(report.Number("/info/polygons"), 1);
  EXPECT_EQ(report.Text("/uri"), "-");
  EXPECT_TRUE(report.Has("/timings/load"));
  const std::string tree = RunTool({"inspect", "-"}, {MakeTriangle()}).out;
  EXPECT_NE(tree.find("Tri"), std::string::npos) << tree;
  EXPECT_NE(tree.find("Again"), std::string::npos) << tree;
}

TEST(AppReportCounts, NameTheGenerator)
{
  Report report(RunTool({"import", "-", "--report", "-"}, {kGoodFile}).out);
  EXPECT_EQ(report.Text("/info/generator"), "by hand");
}

TEST(AppReportMessages, KeepTheirOrderAndTheirSeverity)
{
  const RunResult result = RunTool({"import", "-", "--report", "-"}, {kRequiringFile});
  EXPECT_EQ(result.status, 1);
  Report report(result.out);
  EXPECT_EQ(report.Number("/issues/messages/0/severity"), 2);
  EXPECT_EQ(report.Text("/issues/messages/0/message"), "The file uses these extensions, which are ignored: EXT_one, EXT_two");
  EXPECT_EQ(report.Number("/issues/messages/1/severity"), 1);
  EXPECT_EQ(report.Text("/issues/messages/1/message"),
            "The file cannot be loaded, because it requires these extensions: EXT_two");
  EXPECT_EQ(report.Number("/issues/messages/2/severity"), 0);
  EXPECT_EQ(report.Text("/issues/messages/2/code"), "ERROR");
}

TEST(AppReportOfABrokenRun, IsWrittenToo)
{
  const RunResult result = RunTool({"import", "no-such-file.gltf", "--report", "-"});
  EXPECT_EQ(result.status, 3);
  Report report(result.out);
  EXPECT_EQ(report.Number("/exitCode"), 3);
  EXPECT_EQ(report.Number("/issues/numErrors"), 1);
}

TEST(AppStrict, StillWritesTheDocument)
{
  const TestFolder folder;
  const std::string in = folder.Write("in.gltf", kWarnedFile);
  EXPECT_EQ(RunTool({"import", in, folder / "out.json", "--strict"}).status, 5);
  EXPECT_EQ(folder.Read("out.json"), RunTool({"import", in, "-"}).out);
  EXPECT_NE(folder.Read("out.json"), "");
}

/// What stands on stderr, word for word.
struct StderrRow
{
  std::string name;
  std::string file;
  std::vector<std::string> options;
  std::string err;
};

class AppStderr : public testing::TestWithParam<StderrRow>
{};

TEST_P(AppStderr, IsExactly)
{
  std::vector<std::string> arguments = {"import", "-"};
  arguments.insert(arguments.end(), GetParam().options.begin(), GetParam().options.end());
  EXPECT_EQ(RunTool(arguments, {GetParam().file}).err, GetParam().err);
}

const std::vector<StderrRow> kStderrRows = {
  {"GoodSaysNothing", kGoodFile, {}, ""},
  {"Warning", kWarnedFile, {}, kWarning},
  {"QuietHidesWarnings", kWarnedFile, {"--quiet"}, ""},
  {"InformationWaitsForVerbose", R"({"extensionsUsed":["EXT_one"],"nodes":[{}]})", {}, ""},
  {"Colored",
   kWarnedFile,
   {"--color", "always"},
   "q7z: \x1b[33mwarning:\x1b[0m The node with the index 0 could not be built. It and the nodes below it are missing.\n"},
};

INSTANTIATE_TEST_SUITE_P(Rows, AppStderr, testing::ValuesIn(kStderrRows), RowName());

TEST(AppVerbose, ShowsNotesEscaped)
{
  const RunResult result =
    RunTool({"import", "-", "--verbose"}, {R"({"extensionsUsed":["\u001b[31mred\n\u009b\u007f\u00e9"],"nodes":[{}]})"});
  EXPECT_EQ(result.status, 0);
  EXPECT_NE(result.err.find("q7z: note: The file uses these extensions, which are ignored: "
                            "\\x1B[31mred\\x0A\\xC2\\x9B\\x7F\xC3\xA9\n"),
            std::string::npos)
    << result.err;
  EXPECT_EQ(result.err.find('\x1b'), std::string::npos);
}

TEST(AppError, ShowsTextsOfTheFileEscaped)
{
  const RunResult result = RunTool({"import", "-", "--quiet"}, {R"({"extensionsUsed":["\u001b[31mred\n\u009b\u007f"],)"
                                                                R"("extensionsRequired":["\u001b[31mred\n\u009b\u007f"]})"});
  ExpectFailure(result, 1, "\\x1B[31mred\\x0A\\xC2\\x9B\\x7F");
  EXPECT_EQ(result.err.find('\x1b'), std::string::npos);
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

TEST(AppTree, ShowsNoControlCharacterOfTheFile)
{
  const RunResult result = RunTool({"inspect", "-"}, {R"({"nodes":[{"name":"a\u001b[2Jb\rc\u009bd"}]})"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out.find('\x1b'), std::string::npos) << result.out;
  EXPECT_EQ(result.out.find('\r'), std::string::npos) << result.out;
  EXPECT_EQ(result.out.find("\xC2\x9B"), std::string::npos) << result.out;
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

// Nobody reads the document, which is larger than a pipe holds, so the signal finds the run while it writes.
TEST_P(AppInterrupt, EndsTheWritingOfADocument)
{
  const TestFolder folder;
  std::string nodes = R"({"nodes":[{})";
  for (int i = 0; i < 5000; ++i)
    nodes += ",{}";
  const std::string in = folder.Write("in.gltf", nodes + "]}");
  Process process(Q7Z_TEST_BIN_DIR "/q7z", {"import", in, "-"}, {});
  ASSERT_TRUE(process.WaitForOutput());
  process.Signal(GetParam().signal);
  ExpectFailure(process.Finish(), GetParam().exitCode, "interrupted");
}

INSTANTIATE_TEST_SUITE_P(Rows, AppInterrupt, testing::Values(SignalRow{"Int", SIGINT, 130}, SignalRow{"Term", SIGTERM, 143}),
                         RowName());

}  // namespace
}  // namespace q7z::test
