// The verb hash: the plug-in's hasher on a terminal.

#include <gtest/gtest.h>

#include "tests/app/expectations.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

/// What a load reports of the extensions of a file.
std::string GetReportedHash(const std::string& extension)
{
  const TempFolder folder;
  const std::string in =
    folder.Write("in.gltf", R"({"asset":{"version":"2.0"},"extensionsUsed":[")" + extension + R"("],"nodes":[{}]})");
  EXPECT_EQ(RunTool({"import", in, "--report", folder / "report.json"}).status, 0);
  const std::string report = ReadWhole(folder / "report.json");
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

struct LinesCase
{
  const char* name;
  const char* input;
  std::vector<std::string> names;  // that give the same
};

class AppHashLines : public testing::TestWithParam<LinesCase>
{};

TEST_P(AppHashLines, AreNames)
{
  std::vector<std::string> arguments = GetParam().names;
  arguments.insert(arguments.begin(), "hash");
  RunSettings settings;
  settings.input = GetParam().input;
  const RunResult lines = RunTool({"hash"}, settings);
  EXPECT_EQ(lines.status, 0) << lines.err;
  EXPECT_EQ(lines.out, RunTool(arguments).out);
}

const LinesCase kLinesCases[] = {
  {"One", "a\n", {"a"}},
  {"WithoutItsEnd", "a\nb", {"a", "b"}},
  {"OfAnotherSystem", "a\r\nb\r\n", {"a", "b"}},
  {"Empty", "a\n\nb\n", {"a", "", "b"}},
};

INSTANTIATE_TEST_SUITE_P(Rows, AppHashLines, testing::ValuesIn(kLinesCases), RowName());

TEST(AppHash, OfNothingIsNothing)
{
  const RunResult result = RunTool({"hash"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, "");
}

}  // namespace
}  // namespace q7z::test
