#include "plugin/export/glb.h"

#include "framework/check.h"
#include "plugin/module/hostfile.h"

namespace q7z
{

namespace
{

constexpr Int kFixedBytes = 28;  // the header and those of both chunks

Result<void> CreateEmptyFile(const HostFilename& filename) noexcept
{
  const HostFileOwner bf(HostFileAlloc());
  if (!bf)
    return Error::OutOfMemory();
  CHECK_STATE(bf->Open(filename, FILEOPEN::WRITE, FILEDIALOG::ANY, BYTEORDER::V_MOTOROLA, 'Q7ZC', 'Q7Z1'));
  CHECK_STATE(bf->Close());
  return {};
}

}  // namespace

Result<void> GlbFileHeader::WriteHeader(const HostFilename& filename) const noexcept
{
  const HostFileOwner bf(HostFileAlloc());
  if (!bf)
    return Error::OutOfMemory();
  CHECK_STATE(bf->Open(filename, FILEOPEN::APPEND, FILEDIALOG::ANY, BYTEORDER::V_MOTOROLA, 'Q7ZC', 'Q7Z1'));
  CHECK_STATE(bf->WriteBytes(this, sizeof(UInt32) * 3));
  CHECK_STATE(bf->Close());
  return {};
}

Result<void> GlbChunkHeader::WriteChunk(const HostFilename& filename, const GlbChunkData& chunkData) const noexcept
{
  const HostFileOwner bf(HostFileAlloc());
  if (!bf)
    return Error::OutOfMemory();
  CHECK_STATE(bf->Open(filename, FILEOPEN::APPEND, FILEDIALOG::ANY, BYTEORDER::V_MOTOROLA, 'Q7ZC', 'Q7Z1'));
  CHECK_STATE(bf->WriteBytes(this, sizeof(UInt32) * 2));
  CHECK_STATE(bf->WriteBytes(chunkData.ToBlock().GetFirst(), sizeof(Char) * _chunkLength));
  CHECK_STATE(bf->Close());
  return {};
}

Result<void> GlbHeader::Write(const BaseArray<Byte>& jsonBytes, const BaseArray<Byte>& binBytes,
                              const HostFilename& filename) noexcept
{
  json._chunkLength += static_cast<UInt32>(jsonBytes.GetCount());
  bin._chunkLength += static_cast<UInt32>(binBytes.GetCount());
  file.length += static_cast<UInt32>(jsonBytes.GetCount() + binBytes.GetCount() + kFixedBytes);

  RETURN_IF_ERROR(CreateEmptyFile(filename));
  RETURN_IF_ERROR(file.WriteHeader(filename));
  RETURN_IF_ERROR(json.WriteChunk(filename, GlbChunkData(jsonBytes)));
  if (binBytes.GetCount() < 1)
    return {};
  return bin.WriteChunk(filename, GlbChunkData(binBytes));
}

}  // namespace q7z
