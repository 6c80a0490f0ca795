#pragma once

// SaveFolder: a folder for what saves write, looked at and emptied after each. It goes with its owner.

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace q7z::test
{

class SaveFolder
{
public:
  SaveFolder() : _path("/tmp/q7z-save-XXXXXX")
  {
    if (!mkdtemp(_path.data()))
      throw std::runtime_error("no temporary folder");
  }
  ~SaveFolder()
  {
    std::error_code error;
    std::filesystem::remove_all(_path, error);
  }
  SaveFolder(const SaveFolder&) = delete;
  SaveFolder& operator=(const SaveFolder&) = delete;

  /// The one file that is saved into it.
  std::string File() const { return _path + "/saved"; }

  /// Whether there is that file, and whether there is anything else, such as a temporary file.
  bool HasFile() const { return std::filesystem::exists(File()); }
  bool HasAnythingElse() const
  {
    const auto count = std::distance(std::filesystem::directory_iterator(_path), std::filesystem::directory_iterator());
    return count > (HasFile() ? 1 : 0);
  }

  /// The file's bytes, empty without one. It is removed.
  std::string TakeBytes() const
  {
    std::ifstream stream(File(), std::ios::binary);
    std::string bytes(std::istreambuf_iterator<char>(stream), {});
    std::filesystem::remove(File());
    return bytes;
  }

private:
  std::string _path;
};

}  // namespace q7z::test
