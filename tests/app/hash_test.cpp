// The verb hash: the plug-in's hasher on a terminal.

#include <gtest/gtest.h>

#include "tests/app/expectations.h"

namespace q7z::test
{
namespace
{

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
