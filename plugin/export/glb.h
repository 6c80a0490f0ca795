#pragma once

// The binary container as it is written: a header of twelve bytes, a chunk of JSON and, when there is binary data, a second chunk.
// The records here are the file's own words, little-endian, written straight from memory.

#include <cstddef>

#include "framework/basearray.h"
#include "framework/result.h"
#include "plugin/module/hostvalue.h"

namespace q7z
{

/// A chunk's bytes, owned by somebody else.
class GlbChunkData
{
public:
  explicit GlbChunkData(const BaseArray<Byte>& bytes) noexcept : _first(bytes.GetFirst()), _count(bytes.GetCount()) {}
  class Block
  {
  public:
    explicit Block(const Byte* first) noexcept : _first(first) {}
    const Byte* GetFirst() const noexcept { return _first; }

  private:
    const Byte* _first;
  };
  Block ToBlock() const noexcept { return Block(_first); }
  Int GetCount() const noexcept { return _count; }

private:
  const Byte* _first;
  Int _count;
};

/// The first twelve bytes of the file.
struct GlbFileHeader
{
  UInt32 magic = 0x46546C67;  // "glTF"
  UInt32 version = 2;
  UInt32 length = 0;

  Result<void> WriteHeader(const HostFilename& filename) const noexcept;
};

/// The eight bytes in front of a chunk's data.
struct GlbChunkHeader
{
  UInt32 _chunkLength = 0;
  UInt32 _chunkType = 0;

  /// Appends these bytes and _chunkLength bytes of the data.
  Result<void> WriteChunk(const HostFilename& filename, const GlbChunkData& chunkData) const noexcept;
};

struct GlbHeader
{
  GlbFileHeader file;
  GlbChunkHeader json{0, 0x4E4F534A};  // "JSON"
  GlbChunkHeader bin{0, 5130562};      // "BIN" and a zero byte

  /// Writes the whole file; a failure leaves what was written. The lengths are taken modulo 2 to the 32, and `length` counts the
  /// header of a second chunk that is not there, too: readers go by the chunks.
  Result<void> Write(const BaseArray<Byte>& jsonBytes, const BaseArray<Byte>& binBytes, const HostFilename& filename) noexcept;
};
static_assert(sizeof(GlbHeader) == 7 * sizeof(UInt32) && offsetof(GlbHeader, bin) == 5 * sizeof(UInt32));

}  // namespace q7z
