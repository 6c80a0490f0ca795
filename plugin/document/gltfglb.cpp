// The GLB container: its header as the loader identifies it, and the walk over its chunks.

#include <algorithm>

#include "framework/check.h"
#include "plugin/document/gltfparse.h"
#include "plugin/document/gltfutilities.h"
#include "plugin/module/hostfile.h"

namespace q7z
{

namespace
{

constexpr Int kHeaderBytes = 12;
constexpr UInt32 kGlbMagic = 0x46546C67;     // "glTF"
constexpr UInt32 kJsonChunk = 0x4E4F534A;    // "JSON"
constexpr UInt32 kBinaryChunk = 0x004E4942;  // "BIN" and a zero byte
constexpr UInt32 kMinimumLength = 13;

/// The file of a chunk walk. A length that reaches beyond the end reads short at once, so that no room has to be made for what a
/// chunk merely claims.
class ChunkFile
{
public:
  explicit ChunkFile(HostFile& file) noexcept : _file(file) {}
  Bool Holds(Int byteCount) const noexcept { return byteCount <= _file.GetLength() - _file.GetPosition(); }
  Int ReadBytes(void* target, Int byteCount) noexcept { return Holds(byteCount) ? _file.ReadBytes(target, byteCount) : 0; }

private:
  HostFile& _file;
};

/// The bytes of a JSON chunk.
Result<BaseArray<Byte>> ReadJsonChunk(HostFile& file, UInt32 chunkLength) noexcept
{
  ChunkFile chunkFile(file);
  ChunkFile* const glbFile = &chunkFile;
  BaseArray<Byte> gltfChunkBytes;
  if (glbFile->Holds(chunkLength))
    RETURN_IF_ERROR(gltfChunkBytes.ResizeForOverwrite(chunkLength));
  CHECK_STATE(glbFile->ReadBytes(gltfChunkBytes.GetFirst(), chunkLength) == chunkLength);
  return gltfChunkBytes;
}

/// The root dictionary of a JSON chunk.
Result<DataDictionary> ParseJsonChunk(HostFile& file, UInt32 chunkLength) noexcept
{
  ASSIGN_OR_RETURN(BaseArray<Byte> bytes, ReadJsonChunk(file, chunkLength));
  HostJson* const json = FindService<HostJson>();
  if (!json)
    return MAKE_ERROR(ErrorClass::kNullPtr, "The host offers no JSON parser."_s);
  ASSIGN_OR_RETURN(const BaseArray<Data> jsonArray, json->ParseBytes(std::move(bytes)));
  return GetRootDictionary(jsonArray);
}

/// Room for byteCount more bytes at the end: exactly that for the first, and by half again for those that follow, within what the
/// file can still bring.
Result<void> MakeRoom(BaseArray<Byte>& bytes, Int byteCount, Int remaining) noexcept
{
  const Int needed = bytes.GetCount() + byteCount;
  if (bytes.IsPopulated() && needed > bytes.GetCapacity())
    RETURN_IF_ERROR(bytes.Reserve(std::min(needed + needed / 2, bytes.GetCount() + remaining)));
  return bytes.ResizeForOverwrite(needed);
}

/// The place of a chunk behind the bytes of earlier ones.
struct ChunkBytes
{
  Byte* first = nullptr;
  Byte* GetFirst() const noexcept { return first; }
};

}  // namespace

Bool IsGlbHeader(const Byte* probe, Int32 probeSize) noexcept
{
  if (probeSize < kHeaderBytes)
    return false;
  UInt32 words[3];
  std::memcpy(words, probe, sizeof(words));
  return words[0] == kGlbMagic && words[1] == 2 && words[2] >= kMinimumLength;
}

/// Reads a BIN chunk straight into its place behind the earlier ones. Nothing is appended when that fails.
Result<void> GltfParser::AppendGlbBytes(HostFile& file, UInt32 chunkLength) noexcept
{
  ChunkFile chunkFile(file);
  ChunkFile* const glbFile = &chunkFile;
  const Int oldCount = _glbBytes.GetCount();
  ChunkBytes gltfChunkBytes;
  if (chunkLength && glbFile->Holds(chunkLength))
  {
    RETURN_IF_ERROR(MakeRoom(_glbBytes, chunkLength, file.GetLength() - file.GetPosition()));
    gltfChunkBytes.first = &_glbBytes[oldCount];
  }
  CHECK_STATE(glbFile->ReadBytes(gltfChunkBytes.GetFirst(), chunkLength) == chunkLength);
  return {};
}

Result<DataDictionary> GltfParser::ReadGlbFile() noexcept
{
  const HostFileOwner glbFile(HostFileAlloc());
  if (!glbFile)
    return Error::OutOfMemory();
  const HostFilename glbFilename = TarnoConvert(_fileUrl);
  CHECK_STATE(glbFile->Open(glbFilename, FILEOPEN::READ, FILEDIALOG::IGNOREOPEN, BYTEORDER::V_INTEL));
  const Int length = glbFile->GetLength();
  // The header was looked at when the file was identified; the length it tells is never compared with the file's.
  CHECK_STATE(glbFile->Seek(12));
  DataDictionary jsonGLTF;
  Bool firstChunk = true;
  while (glbFile->GetPosition() < length)
  {
    UInt32 chunkLength = 0;
    UInt32 chunkType = 0;
    CHECK_STATE(glbFile->ReadUInt32(&chunkLength));
    CHECK_STATE(glbFile->ReadUInt32(&chunkType));
    const Bool isGltfChunk = chunkType == kJsonChunk;
    CHECK_STATE((firstChunk && isGltfChunk) || (!firstChunk && !isGltfChunk));
    firstChunk = false;
    if (isGltfChunk)
    {
      ASSIGN_OR_RETURN(jsonGLTF, ParseJsonChunk(*glbFile, chunkLength));
    }
    else if (chunkType == kBinaryChunk)
      RETURN_IF_ERROR(AppendGlbBytes(*glbFile, chunkLength));
    else
      CHECK_STATE(glbFile->Seek(chunkLength));
    // Deliberately the remainder, not the distance to the next multiple of four; a writer that pads leaves 0 either way.
    if (chunkLength % 4)
      CHECK_STATE(glbFile->Seek(chunkLength % 4));
  }
  static_cast<void>(glbFile->Close());  // nothing was written that could be lost
  return jsonGLTF;
}

}  // namespace q7z
