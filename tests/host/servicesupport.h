#pragma once

// What the tests of the host's services share: folders that go with their test, files as texts, texts as the framework has them.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "framework/result.h"
#include "framework/string.h"
#include "framework/url.h"

namespace q7z::test
{

inline std::string Text(const String& text)
{
  return std::string(text.GetView());
}

/// A text of the framework with bytes of its own.
inline String MakeString(std::string_view bytes)
{
  Result<String> text = String::Create(bytes);
  EXPECT_FALSE(text.HasError());
  return text.HasError() ? String() : text.GetValue();
}

inline Url MakeUrl(const std::filesystem::path& path)
{
  Result<Url> url = Url::FromPath(MakeString(path.string()));
  EXPECT_FALSE(url.HasError());
  return url.HasError() ? Url() : url.GetValue();
}

template <typename T>
std::string MessageOf(const Result<T>& result)
{
  return result.HasError() ? Text(result.GetError().GetMessage()) : "no error";
}

/// An empty folder below the tests' temporary one, removed with all that is in it.
class TestFolder
{
public:
  TestFolder()
  {
    const testing::TestInfo* const test = testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string(test->test_suite_name()) + "." + test->name();
    for (char& byte : name)
      byte = byte == '/' ? '-' : byte;
    _path = std::filesystem::canonical(Q7Z_TEST_TEMP_DIR) / name;
    std::filesystem::remove_all(_path);
    std::filesystem::create_directories(_path);
  }
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;
  ~TestFolder()
  {
    std::error_code error;
    std::filesystem::remove_all(_path, error);
  }

  std::filesystem::path operator/(const std::string& name) const { return _path / name; }
  const std::filesystem::path& Path() const { return _path; }

  /// Writes a file, with the folders it lies in. @return its path.
  std::string Write(const std::string& name, std::string_view content) const
  {
    const std::filesystem::path path = _path / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary).write(content.data(), static_cast<std::streamsize>(content.size()));
    return path.string();
  }

  /// How many entries the folder has.
  int CountEntries() const
  {
    return static_cast<int>(std::distance(std::filesystem::directory_iterator(_path), std::filesystem::directory_iterator()));
  }

private:
  std::filesystem::path _path;
};

inline std::string ReadText(const std::filesystem::path& path)
{
  std::ifstream file(path, std::ios::binary);
  return file ? std::string(std::istreambuf_iterator<char>(file), {}) : "(no file)";
}

}  // namespace q7z::test
