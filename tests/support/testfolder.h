#pragma once

// TestFolder: a folder of its own for a test, which goes with all that is in it.

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/platform/platform.h"

namespace q7z::test
{

class TestFolder
{
public:
  TestFolder() : _path(MakeTemporaryFolder())
  {
    if (_path.empty())
      throw std::runtime_error("no temporary folder");
  }
  ~TestFolder() { RemoveTree(_path); }
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;

  /// The path of a name in the folder.
  std::string operator/(const std::string& name) const { return _path + "/" + name; }
  const std::string& GetPath() const { return _path; }

  /// Writes a file, with the folders it lies in. @return its path.
  std::string Write(const std::string& name, std::string_view bytes) const
  {
    std::filesystem::create_directories(std::filesystem::path(*this / name).parent_path());
    std::ofstream stream(*this / name, std::ios::binary);
    if (!stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush())
      throw std::runtime_error("cannot write " + *this / name);
    return *this / name;
  }
  std::string Write(const std::string& name, const std::vector<uint8_t>& bytes) const
  {
    return Write(name, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
  }
  /// Empty without the file.
  std::string Read(const std::string& name) const
  {
    std::ifstream stream(*this / name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
  }

  /// The names in it, in order.
  std::vector<std::string> List() const
  {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(_path))
      names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }

private:
  std::string _path;
};

}  // namespace q7z::test
