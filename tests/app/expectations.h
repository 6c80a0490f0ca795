#pragma once

// What the tests of the program share: small input files and what every error has in common.

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "tests/app/process.h"

namespace q7z::test
{

inline constexpr const char* kGoodFile = R"({"asset":{"version":"2.0","generator":"by hand"},)"
                                         R"("scenes":[{"name":"Stage","nodes":[0]}],"nodes":[{"name":"Prop"}]})";
/// Its node wants a mesh that is not there.
inline constexpr const char* kWarnedFile = R"({"scenes":[{"nodes":[0]}],"nodes":[{"mesh":5}]})";
inline constexpr const char* kWarning =
  "q7z: warning: The node with the index 0 could not be built. It and the nodes below it are missing.\n";

/// A folder in which the program is run.
class Stage : public TestFolder
{
public:
  RunResult Run(const std::vector<std::string>& arguments, RunSettings settings = {}) const
  {
    settings.folder = GetPath();
    return RunTool(arguments, settings);
  }
};

inline std::vector<std::string> Join(std::vector<std::string> arguments, const std::vector<std::string>& more)
{
  arguments.insert(arguments.end(), more.begin(), more.end());
  return arguments;
}

/// A run that failed: the exit code, and one line on stderr that begins as all of them do and holds `text`.
inline void ExpectFailure(const RunResult& result, int status, const std::string& text)
{
  EXPECT_EQ(result.status, status) << result.err;
  EXPECT_TRUE(result.err.starts_with("q7z: ")) << result.err;
  EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
  EXPECT_TRUE(result.err.ends_with('\n')) << result.err;
  EXPECT_NE(result.err.find(text), std::string::npos) << result.err << "lacks: " << text;
}

}  // namespace q7z::test
