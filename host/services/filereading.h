#pragma once

// Reading whole files, and the part of the file system that depends on the platform.

#include <string>

#include "framework/result.h"
#include "framework/string.h"
#include "plugin/module/hostservices.h"

namespace q7z
{

/// One reference to a StringBlock.
class BlockOwner
{
public:
  explicit BlockOwner(StringBlock* block = nullptr) noexcept : _block(block) {}
  BlockOwner(BlockOwner&& other) noexcept : _block(other._block) { other._block = nullptr; }
  BlockOwner& operator=(const BlockOwner&) = delete;
  ~BlockOwner()
  {
    if (_block)
      _block->Release();
  }
  StringBlock* Get() const noexcept { return _block; }
  explicit operator Bool() const noexcept { return _block != nullptr; }

private:
  StringBlock* _block;
};

/// The whole file followed by padding bytes of 0. An I/O error names the path and the reason.
Result<BlockOwner> ReadFileIntoBlock(const String& path, Int padding) noexcept;

HostFileSystemType GetFileSystemType(const std::string& path);

/// Absolute, without links, "." and ".."; empty when the path leads nowhere.
std::string ResolvePath(const std::string& path);

/// Writes a whole file: beside its target under a temporary name, flushed, synced and renamed. An existing target survives every
/// failure. @return an empty text, or what went wrong.
std::string WriteFileWhole(const std::string& path, const void* bytes, size_t byteCount);

inline std::string ToStd(const String& text)
{
  return std::string(text.GetView());
}

}  // namespace q7z
