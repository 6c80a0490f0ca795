#pragma once

// GltfBuffer holds the bytes of one entry of `buffers`, GltfBufferView is a slice of one. Both serve reading and writing.

#include "framework/basearray.h"
#include "framework/data.h"
#include "framework/url.h"

namespace q7z
{

/// What a data URI of an image begins with.
inline constexpr String kImageDataPrefixes[] = {"data:image/png;base64,"_s, "data:image/jpeg;base64,"_s};
inline constexpr const String& kPngDataPrefix = kImageDataPrefixes[0];
inline constexpr const String& kJpegDataPrefix = kImageDataPrefixes[1];

/// The length of the prefix when uri is a data URI of the family, else 0. Case-sensitive.
Int GetBufferDataPrefixLength(const String& uri) noexcept;
Int GetImageDataPrefixLength(const String& uri) noexcept;

/// Targets of views.
inline constexpr UInt32 kVertexTarget = 34962;
inline constexpr UInt32 kIndexTarget = 34963;

class GltfBuffer
{
public:
  Result<void> ReadFromJson(const DataDictionary& element) noexcept;

  /// Fills the bytes from the URI: decoded, or from a file below documentUrl's folder. An empty URI does nothing. What was had
  /// before a failure stays.
  Result<void> Load(const Url& documentUrl) noexcept;

  /// Takes the bytes of a GLB's binary chunks over.
  void TakeBytes(BaseArray<Byte> bytes) noexcept { _buffer = std::move(bytes); }

  /// Copies byteCount bytes from offset into target.
  Result<void> ReadBytes(Int offset, Int byteCount, void* target) const noexcept;

  /// @return the first of byteCount readable bytes at offset, or null where ReadBytes would fail.
  const Byte* FindBytes(Int offset, Int byteCount) const noexcept;

  /// The URI as in the file; of a data URI whose bytes were decoded and whose text was dropped, the prefix alone.
  const String& GetUri() const noexcept { return _uri; }
  /// Lets go of the encoded text of a data URI, which may be most of the file. Load cannot be asked again after that.
  void DropEncodedText() noexcept;
  Int GetByteLength() const noexcept { return _byteLength; }
  const BaseArray<Byte>& GetBytes() const noexcept { return _buffer; }

  // Writing. What is appended counts in the declared length, which starts at 0.

  /// Memory for byteCount more bytes, so that appending them copies nothing.
  Result<void> Reserve(Int byteCount) noexcept;
  /// Room for byteCount bytes at the end, of undefined content until they are written. Valid until the buffer grows again.
  Result<Byte*> AppendRoom(Int byteCount) noexcept;
  /// The room that begins at offset. Valid until the buffer grows again.
  Byte* GetRoom(Int offset) noexcept { return _buffer.begin() + offset; }
  /// Takes back the room from offset on; nothing where the buffer ends before.
  void DropFrom(Int offset) noexcept;
  Result<void> AppendBytes(const void* bytes, Int byteCount) noexcept;
  /// Fills up to a multiple of 4 with blanks.
  Result<void> Align() noexcept;
  /// The same without a change of the declared length.
  Result<void> PadToWords() noexcept;
  void SetUri(String uri) noexcept { _uri = std::move(uri); }

private:
  Result<void> DecodeDataUri(Int prefixLength) noexcept;
  Result<void> ReadSideFile(const Url& documentUrl) noexcept;

  String _uri;
  Int _byteLength = 0;  // as declared; every length below 0 is kept as -1
  BaseArray<Byte> _buffer;
};

class GltfBufferView
{
public:
  GltfBufferView() noexcept = default;
  /// A view to be written; all but the target is 0.
  explicit GltfBufferView(UInt32 target) noexcept : _target(target) {}

  Result<void> ReadFromJson(const DataDictionary& element) noexcept;

  /// Copies element idx of an accessor at accessorByteOffset whose elements have byteCount bytes.
  Result<void> ReadElement(Int idx, Int accessorByteOffset, Int byteCount, void* target) const noexcept;

  /// @return the first byte of element 0 when elements 0 to count - 1 can all be read, and their distance; else null. Null, too,
  /// when there are none.
  const Byte* FindElements(Int count, Int accessorByteOffset, Int byteCount, Int& stride) const noexcept;

  Int GetBufferIndex() const noexcept { return _bufferIndex; }
  Int GetByteOffset() const noexcept { return _byteOffset; }
  Int GetByteLength() const noexcept { return _byteLength; }
  UInt32 GetByteStride() const noexcept { return _byteStride; }
  UInt32 GetTarget() const noexcept { return _target; }
  void SetBuffer(const GltfBuffer* buffer) noexcept { _buffer = buffer; }

  // Writing.
  void AddByteOffset(Int byteCount) noexcept { _byteOffset += byteCount; }
  void AddByteLength(Int byteCount) noexcept { _byteLength += byteCount; }
  void SetByteStride(UInt32 byteStride) noexcept { _byteStride = byteStride; }

private:
  Int GetStride(Int byteCount) const noexcept;
  Int GetElementOffset(Int idx, Int accessorByteOffset, Int byteCount) const noexcept;

  Int _bufferIndex = -1;  // into buffers
  Int _byteOffset = 0;
  Int _byteLength = 0;  // every length below 0 is kept as -1
  UInt32 _byteStride = 0;
  UInt32 _target = 34962;
  const GltfBuffer* _buffer = nullptr;  // set on demand; not owned
};

}  // namespace q7z
