#pragma once

// Whole files: read into blocks that texts can share, and written at once.

#include <string>
#include <utility>

#include "framework/result.h"
#include "framework/string.h"
#include "host/platform/platform.h"

namespace q7z
{

/// One reference to a StringBlock.
class BlockOwner
{
public:
  explicit BlockOwner(StringBlock* block = nullptr) noexcept : _block(block) {}
  BlockOwner(BlockOwner&& other) noexcept : _block(std::exchange(other._block, nullptr)) {}
  BlockOwner& operator=(BlockOwner&& other) noexcept
  {
    std::swap(_block, other._block);
    return *this;
  }
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

/// Writes a whole file, as WholeFile does.
/// @param reason  receives the reason alone of a failure; may be null. @return an empty text, or what went wrong.
std::string WriteFileWhole(const std::string& path, const void* bytes, size_t byteCount, std::string* reason = nullptr);

/// An error of the class io.
Error MakeIoError(const std::string& text) noexcept;

inline std::string ToStd(const String& text)
{
  return std::string(text.GetView());
}

}  // namespace q7z
