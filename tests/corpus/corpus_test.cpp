// Real files, in the folder that GLTF_ASSETS names: what each of them loads as, that nothing of it is left, and that the program
// writes the same bytes twice.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <vector>

#include <gtest/gtest.h>

#include "tests/app/process.h"
#include "tests/corpus/loader.h"

namespace q7z::test
{
namespace
{

namespace fs = std::filesystem;

/// Every parameter that adds materials, cameras or animation.
const std::map<int, bool> kGeometryAlone = {{1003, false}, {1013, false}, {1014, false}, {1017, false}};

/// The columns of expected.tsv behind the file's name.
struct Expected
{
  std::string status;
  std::vector<std::string> numbers;
};

std::map<std::string, Expected> ReadExpected()
{
  std::map<std::string, Expected> rows;
  std::ifstream file(Q7Z_TEST_SOURCE_DIR "/tests/corpus/expected.tsv");
  for (std::string line; std::getline(file, line);)
  {
    if (line.starts_with('#'))
      continue;
    std::istringstream columns(line);
    std::string name;
    Expected row;
    std::getline(columns, name, '\t');
    std::getline(columns, row.status, '\t');
    for (std::string number; std::getline(columns, number, '\t');)
      row.numbers.push_back(number);
    rows[name] = row;
  }
  return rows;
}

class Corpus : public testing::Test
{
protected:
  void SetUp() override
  {
    const char* const folder = std::getenv("GLTF_ASSETS");
    if (!folder || !*folder)
      GTEST_SKIP() << "GLTF_ASSETS names no folder";
    _root = folder;
    for (const auto& entry : fs::recursive_directory_iterator(_root))
    {
      if (entry.is_regular_file() && (entry.path().extension() == ".gltf" || entry.path().extension() == ".glb"))
        _files.push_back(fs::relative(entry.path(), _root).string());
    }
    std::sort(_files.begin(), _files.end());
    ASSERT_FALSE(_files.empty()) << _root << " holds no file";
  }

  std::string GetPath(const std::string& file) const { return _root + "/" + file; }

  std::string _root;
  std::vector<std::string> _files;
};

TEST_F(Corpus, LoadsAsWorkedOut)
{
  const std::map<std::string, Expected> expected = ReadExpected();
  ASSERT_EQ(expected.size(), 200u);
  Loader loader;
  size_t compared = 0;
  for (const std::string& file : _files)
  {
    SCOPED_TRACE(file);
    const LoadResult result = loader.Load(GetPath(file), kGeometryAlone);
    EXPECT_EQ(result.leftover, 0);
    EXPECT_EQ(result.mistakes, 0);
    // Materials, cameras and animation add warnings at most; they change no status of these files.
    const LoadResult everything = loader.Load(GetPath(file));
    EXPECT_EQ(everything.leftover, 0);
    EXPECT_EQ(everything.mistakes, 0);
    EXPECT_EQ(everything.status, result.status) << everything.text;
    const auto row = expected.find(file);
    if (row == expected.end())
      continue;  // a file of the user's own
    ++compared;
    EXPECT_EQ(result.status, row->second.status) << result.text;
    const std::vector<Int> numbers = {result.assetWarnings, result.dataWarnings, result.nodeWarnings,
                                      result.objects,       result.points,       result.polygons};
    static constexpr const char* kNames[] = {"assets", "data", "nodes", "objects", "points", "polygons"};
    ASSERT_EQ(row->second.numbers.size(), numbers.size());
    for (size_t i = 0; i < numbers.size(); ++i)
      EXPECT_TRUE(row->second.numbers[i] == "-" || row->second.numbers[i] == std::to_string(numbers[i]))
        << kNames[i] << ": " << numbers[i] << " instead of " << row->second.numbers[i] << "\n"
        << result.text;
  }
  EXPECT_GT(compared, 0u) << "none of the files is known";
}

TEST_F(Corpus, IsWrittenTheSameTwice)
{
  int written = 0;
  for (const std::string& file : _files)
  {
    SCOPED_TRACE(file);
    const std::vector<std::string> arguments = {"inspect", GetPath(file), "--json"};
    const RunResult first = RunTool(arguments);
    EXPECT_TRUE(first.status == 0 || first.status == 1) << first.err;
    if (first.status != 0)
      continue;
    ++written;
    EXPECT_FALSE(first.out.empty());
    const RunResult second = RunTool(arguments);
    EXPECT_EQ(second.status, 0);
    EXPECT_TRUE(second.out == first.out) << "the bytes differ";
    EXPECT_EQ(second.err, first.err);
  }
  EXPECT_GT(written, 0);
}

}  // namespace
}  // namespace q7z::test
