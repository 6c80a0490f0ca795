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

// A textured, animated triangle with normals and UVs, one metre to the right, and an instance of it.
inline constexpr const char* kScene = R"({"format": "q7z scene", "version": 1, "parameters": {"2002": "by hand"},
  "materials": [{"id": 9, "type": 5703, "name": "Red", "channels": {}}],
  "objects": [{"id": 1, "type": 5100, "name": "Tri", "position": [100,0,100], "points": [0,0,0, 100,0,0, 0,100,0],
    "polygons": [0,1,2,2], "tags": [{"id": 2, "type": 5711, "normals": [0,0,1, 0,0,1, 0,0,1, 0,0,1]},
      {"id": 3, "type": 5671, "uvws": [0,0,0, 1,0,0, 0,1,0, 0,0,0]}]},
    {"id": 4, "type": 5126, "name": "Again", "position": [0,100,0], "reference": 1},
    {"id": 5, "type": 5103, "name": "Eye", "parameters": {"1001": 0, "1008": 1.0, "4600": 0.5}}]})";

/// A folder with inputs.
class ExportStage : public Stage
{
public:
  ExportStage()
  {
    Write("in.json", kScene);
    Write("in.gltf", kGoodFile);
    Write("warned.gltf", kWarnedFile);
  }
  /// The names beside the inputs.
  std::vector<std::string> ListNew() const
  {
    std::vector<std::string> names = List();
    std::erase_if(names, [](const std::string& name) { return name == "in.json" || name == "in.gltf" || name == "warned.gltf"; });
    return names;
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
