#pragma once

// TestFolder: a folder of its own for a test, which goes with all that is in it.

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace q7z::test
{

class TestFolder
{
public:
  TestFolder() : _path("/tmp/q7z-test-XXXXXX")
  {
    if (!mkdtemp(_path.data()))
      throw std::runtime_error("no temporary folder");
  }
  ~TestFolder()
  {
    std::error_code error;
    std::filesystem::remove_all(_path, error);
  }
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;

  /// The path of a name in the folder.
  std::string operator/(const std::string& name) const { return _path + "/" + name; }
  const std::string& GetPath() const { return _path; }

  /// Writes a file, of a text or of bytes. @return its path.
  template <typename Bytes>
  std::string Write(const std::string& name, const Bytes& bytes) const
  {
    std::ofstream stream(*this / name, std::ios::binary);
    if (!stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size())).flush())
      throw std::runtime_error("cannot write " + *this / name);
    return *this / name;
  }
  /// Empty without the file.
  std::string Read(const std::string& name) const
  {
    std::ifstream stream(*this / name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
  }

private:
  std::string _path;
};

}  // namespace q7z::test
