#pragma once

// What the host asks of the operating system's files: files at a position, paths, what whole files are made of, folders, loadable
// libraries. Paths are UTF-8 with "/" between components, on every system. One source for each system stands behind this header
// (posixfiles.cpp, windowsfiles.cpp). Values that belong to one thread; the functions may be called from any.

#include <cstdint>
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
  Bool IsOpen() const noexcept { return _handle != kNoHandle; }
  /// The length when it was opened, or what was written since if that reaches further.
  Int GetLength() const noexcept { return _length; }
  /// @return the bytes read, fewer than byteCount only at the end of the file; -1 if the device failed.
  Int ReadAt(Int position, void* target, Int byteCount) noexcept;
  /// A gap in front of the position reads as zeros. @return whether all bytes were written.
  Bool WriteAt(Int position, const void* source, Int byteCount) noexcept;
  /// @return false when what was written could not be kept. True without an open file.
  Bool Close() noexcept;

private:
  static constexpr std::intptr_t kNoHandle = -1;

  std::intptr_t _handle = kNoHandle;  // what the system calls the file by
  Int _length = 0;
};

/// Why the last call of this thread failed, such as "No such file or directory". Every failure here leaves its reason in errno.
std::string GetSystemReason();

/// A path as its user writes it, in the form that all others here take: with "/" for what separates its components.
std::string TakePath(const std::string& text);

HostFileSystemType GetFileSystemType(const std::string& path);

/// Whether the file may be read, as far as its rights tell.
bool IsReadable(const std::string& path);

/// Whether two paths lead to one file that exists.
bool IsSameFile(const std::string& a, const std::string& b);

/// Absolute, without links, "." and ".."; empty when the path leads nowhere.
std::string ResolvePath(const std::string& path);

/// Everything in front of the last component; "." for a bare name.
std::string GetFolderOf(const std::string& path);

/// A new file in folder, under a name of its own that `name` receives, with the usual rights. @return null when none can be made.
std::FILE* OpenTemporaryStream(const std::string& folder, std::string& name);

/// A stream that writes to something that is there already, such as a device. @return null when it cannot be written to.
std::FILE* OpenDeviceStream(const std::string& path);

/// Hands everything to the device that was written to a stream. @return false when some of it could not be kept.
bool SyncStream(std::FILE* stream) noexcept;

/// The same for a file that is not open here.
bool SyncFile(const std::string& path) noexcept;

/// Puts a file in the place of another on the same file system, at once, with the rights of the one that goes.
bool PutInPlace(const std::string& source, const std::string& target) noexcept;

void RemoveFile(const std::string& path) noexcept;

/// A new folder for this process alone; empty when none can be made (GetSystemReason tells why).
std::string MakeTemporaryFolder();

/// Makes a folder and those above it that are missing. @return false when one of them cannot be made (GetSystemReason tells why).
bool MakeFolders(const std::string& path);

/// Whether a folder is there and has nothing in it.
bool IsEmptyFolder(const std::string& path);

/// Removes a folder that has nothing in it; any other stays.
void RemoveEmptyFolder(const std::string& path) noexcept;

/// Removes a folder with all that is in it, as far as it can be removed; links go, what they lead to stays.
void RemoveTree(const std::string& path) noexcept;

/// What the names of libraries end in, with its dot.
extern const char* const kLibrarySuffix;

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

/// Fresh zeros for big arrays, in large pages where the system has them. Null without memory.
void* MapZeros(Int byteCount) noexcept;
/// Gives back what MapZeros gave for the same byteCount.
void UnmapZeros(void* memory, Int byteCount) noexcept;

}  // namespace q7z
