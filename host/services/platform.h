#pragma once

// What the host asks of the operating system: files at a position, paths, what whole files are made of, loadable libraries.
// One source for each system stands behind it (platformposix.cpp). Values that belong to one thread; the functions may be called
// from any.

#include <cstdio>
#include <string>
#include <utility>

#include "plugin/module/hostservices.h"

namespace q7z
{

enum class PlatformOpen
{
  kRead,
  kReplace,   ///< makes the file or empties it
  kContinue,  ///< makes the file or leaves what it holds
};

/// An open regular file; anything else is not opened. Closed with its object.
class PlatformFile
{
public:
  PlatformFile() noexcept = default;
  PlatformFile(const PlatformFile&) = delete;
  PlatformFile& operator=(const PlatformFile&) = delete;
  ~PlatformFile() { Close(); }

  /// @return false when it cannot be opened, is no regular file, or this object has a file open; errno tells why.
  Bool Open(const char* path, PlatformOpen mode) noexcept;
  Bool IsOpen() const noexcept { return _handle >= 0; }
  /// The length when it was opened, or what was written since if that reaches further.
  Int GetLength() const noexcept { return _length; }
  /// @return the bytes read, fewer than byteCount only at the end of the file; -1 if the device failed.
  Int ReadAt(Int position, void* target, Int byteCount) noexcept;
  /// A gap in front of the position reads as zeros. @return whether all bytes were written.
  Bool WriteAt(Int position, const void* source, Int byteCount) noexcept;
  /// @return false when what was written could not be kept. True without an open file.
  Bool Close() noexcept;

private:
  int _handle = -1;
  Int _length = 0;
};

/// Why the last call of this thread failed, such as "No such file or directory".
std::string GetSystemReason();

HostFileSystemType GetFileSystemType(const std::string& path);

/// Absolute, without links, "." and ".."; empty when the path leads nowhere.
std::string ResolvePath(const std::string& path);

/// Everything in front of the last component; "." for a bare name.
std::string GetFolderOf(const std::string& path);

/// A new file in folder, under a name of its own that `name` receives, with the usual rights. @return null when none can be made.
std::FILE* OpenTemporaryStream(const std::string& folder, std::string& name);

/// Hands everything to the device that was written to a stream. @return false when some of it could not be kept.
bool SyncStream(std::FILE* stream) noexcept;

/// Puts a file in the place of another on the same file system, at once, with the rights of the one that goes.
bool ReplaceFile(const std::string& source, const std::string& target) noexcept;

void RemoveFile(const std::string& path) noexcept;

/// A new folder for this process alone; empty when none can be made (GetSystemReason tells why).
std::string MakeTemporaryFolder();

/// A loaded library; unloaded with its object.
class PlatformLibrary
{
public:
  PlatformLibrary() noexcept = default;
  PlatformLibrary(PlatformLibrary&& other) noexcept : _library(other._library) { other._library = nullptr; }
  PlatformLibrary& operator=(PlatformLibrary&& other) noexcept
  {
    std::swap(_library, other._library);
    return *this;
  }
  ~PlatformLibrary();

  /// Loads exactly the file at path; no search path is looked at. @return an empty text, or why it could not be loaded.
  std::string Load(const std::string& path);
  /// @return the address of an exported name, or null.
  void* Find(const char* name) const noexcept;

private:
  void* _library = nullptr;
};

}  // namespace q7z
