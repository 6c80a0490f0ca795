#pragma once

// What the benchmarks of whole loads and saves share: one host around the plug-in as it is linked in, and a folder for files.

#include "host/headlesshost.h"

#include <string>

namespace q7z::bench
{

/// Made with its first use, and kept.
HeadlessHost& GetHost();

/// A folder of its own, removed with all that is in it. Throws when it, or a file in it, cannot be made.
class TemporaryFolder
{
public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  std::string operator/(const std::string& name) const { return _path + "/" + name; }
  /// @return the path of the new file.
  std::string Write(const std::string& name, const std::string& bytes) const;

private:
  std::string _path;
};

}  // namespace q7z::bench
