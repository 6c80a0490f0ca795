#pragma once

// StdinCopy: all of stdin as a file in a folder of its own, in which no side file lies. Both go with the object.

#include <string>

namespace q7z::app
{

class StdinCopy
{
public:
  StdinCopy() = default;
  StdinCopy(const StdinCopy&) = delete;
  StdinCopy& operator=(const StdinCopy&) = delete;
  ~StdinCopy();

  /// Reads until the end, or until a signal.
  /// @param name  of the file. @return an empty text, or what went wrong.
  std::string Read(const std::string& name);
  const std::string& GetPath() const { return _path; }

private:
  std::string _folder;
  std::string _path;
};

}  // namespace q7z::app
