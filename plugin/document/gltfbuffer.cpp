#include "plugin/document/gltfbuffer.h"

#include <algorithm>
#include <cstring>

#include "framework/arithmetic.h"
#include "plugin/document/gltfkeys.h"
#include "plugin/document/gltfutilities.h"
#include "plugin/module/hostconsole.h"
#include "plugin/module/hostfile.h"
#include "plugin/module/hostservices.h"

namespace q7z
{

namespace
{

constexpr String kBufferDataPrefixes[] = {"data:application/octet-stream;base64,"_s, "data:application/gltf-buffer;base64,"_s};

/// The prefix that uri begins with, or null.
template <size_t count>
const String* FindPrefix(const String& uri, const String (&prefixes)[count]) noexcept
{
  const String* const found =
    std::find_if(prefixes, prefixes + count, [&](const String& prefix) { return uri.StartsWith(prefix); });
  return found == prefixes + count ? nullptr : found;
}

/// A declared length. All lengths below 0 fail the same checks, so one number stands for them, from which nothing can wrap; at the
/// other end the largest gives way by one for the same reason.
Result<Int> ReadByteLength(const DataDictionary& element) noexcept
{
  ASSIGN_OR_RETURN(const Int byteLength, ReadRequiredInt(element, keys::kByteLength));
  return std::clamp(byteLength, Int(-1), INT64_MAX - 1);
}

}  // namespace

Int GetBufferDataPrefixLength(const String& uri) noexcept
{
  const String* const prefix = FindPrefix(uri, kBufferDataPrefixes);
  return prefix ? prefix->GetByteCount() : 0;
}

Int GetImageDataPrefixLength(const String& uri) noexcept
{
  const String* const prefix = FindPrefix(uri, kImageDataPrefixes);
  return prefix ? prefix->GetByteCount() : 0;
}

Result<void> GltfBuffer::ReadFromJson(const DataDictionary& element) noexcept
{
  _uri = ReadString(element, keys::kUri, String());
  ASSIGN_OR_RETURN(_byteLength, ReadByteLength(element));
  return {};
}

Result<void> GltfBuffer::Load(const Url& documentUrl) noexcept
{
  if (_uri.IsEmpty())
    return {};
  if (const Int prefixLength = GetBufferDataPrefixLength(_uri))
    RETURN_IF_ERROR(DecodeDataUri(prefixLength));
  else
    RETURN_IF_ERROR(ReadSideFile(documentUrl));
  CHECK_STATE(_buffer.GetCount() >= (Int)_byteLength);
  return {};
}

Result<void> GltfBuffer::DecodeDataUri(Int prefixLength) noexcept
{
  _buffer.Reset();
  HostBase64Decoder* const decoder = FindService<HostBase64Decoder>();
  if (!decoder)
    return MAKE_ERROR(ErrorClass::kNullPtr, "The host offers no base64 decoder."_s);
  ASSIGN_OR_RETURN(_buffer, decoder->Decode(_uri.GetPart(prefixLength, _uri.GetByteCount())));
  return {};
}

Result<void> GltfBuffer::ReadSideFile(const Url& documentUrl) noexcept
{
  ASSIGN_OR_RETURN(Url assetUrl, Url::FromReference(_uri));
  if (assetUrl.GetScheme() == URLSCHEME_HTTP)
    return MAKE_ERROR(ErrorClass::kUnsupportedOperation, HostLoadString(10010));
  CHECK_STATE(assetUrl.GetScheme() == URLSCHEME_FILESYSTEM || assetUrl.GetScheme() == URLSCHEME_RELATIVE);
  if (assetUrl.GetScheme() == URLSCHEME_RELATIVE)
  {
    ASSIGN_OR_RETURN(const Url folder, documentUrl.GetDirectory());
    ASSIGN_OR_RETURN(assetUrl, folder.AppendPath(assetUrl));
  }
  const HostFilename fileName = TarnoConvert(assetUrl);
  CHECK_STATE(GeFExist(fileName));
  const HostFileOwner file(HostFileAlloc());
  if (!file)
    return Error::OutOfMemory();
  CHECK_STATE(file->Open(fileName));
  RETURN_IF_ERROR(_buffer.ResizeForOverwrite(file->GetLength()));
  const Int bytesRead = file->ReadBytes(_buffer.GetFirst(), _buffer.GetCount());
  // What a short read left open is zero: the buffer stays in the document with what it has.
  for (Int i = std::max(bytesRead, Int(0)); i < _buffer.GetCount(); ++i)
    _buffer[i] = 0;
  CHECK_STATE(file->Close());
  CHECK_STATE(bytesRead == _buffer.GetCount());
  return {};
}

void GltfBuffer::DropEncodedText() noexcept
{
  // A prefix of static text, since a part of the URI would hold on to all of it.
  if (const String* const prefix = FindPrefix(_uri, kBufferDataPrefixes))
    _uri = *prefix;
}

Result<void> GltfBuffer::ReadBytes(Int offset, Int byteCount, void* target) const noexcept
{
  CHECK_ARGUMENT(byteCount >= 0);
  CHECK_STATE((offset >= 0 && offset < _byteLength - byteCount + 1));
  // The bytes may be fewer than declared, after a load that failed or never was.
  CHECK_STATE((static_cast<Int>(offset) >= 0 && static_cast<Int>(offset) < _buffer.GetCount() - byteCount + 1));
  if (byteCount > 0)
    std::memcpy(target, _buffer.GetFirst() + offset, static_cast<size_t>(byteCount));
  return {};
}

const Byte* GltfBuffer::FindBytes(Int offset, Int byteCount) const noexcept
{
  const Int readable = std::min(_byteLength, _buffer.GetCount());
  if (byteCount < 0 || offset < 0 || offset >= readable - byteCount + 1)
    return nullptr;
  return _buffer.GetFirst() + offset;
}

Result<void> GltfBufferView::ReadFromJson(const DataDictionary& element) noexcept
{
  ASSIGN_OR_RETURN(_bufferIndex, ReadRequiredInt(element, keys::kBuffer));
  _byteOffset = ReadInt(element, keys::kByteOffset, 0);
  ASSIGN_OR_RETURN(_byteLength, ReadByteLength(element));
  // A number that 32 bits do not hold counts as absent.
  const Int byteStride = ReadInt(element, keys::kByteStride, 0);
  _byteStride = byteStride >= 0 && byteStride <= UINT32_MAX ? static_cast<UInt32>(byteStride) : 0;
  const Int target = ReadInt(element, keys::kTarget, _target);
  _target = target >= 0 && target <= UINT32_MAX ? static_cast<UInt32>(target) : _target;
  return {};
}

Int GltfBufferView::GetStride(Int byteCount) const noexcept
{
  return _byteStride >= 4 ? _byteStride : byteCount;  // 1, 2 and 3 count as absent
}

/// The position in the buffer. One that does not fit 64 bits becomes the last there is, which no buffer reaches.
Int GltfBufferView::GetElementOffset(Int idx, Int accessorByteOffset, Int byteCount) const noexcept
{
  Int base = 0;
  Int offset = 0;
  if (!CheckedAdd(_byteOffset, accessorByteOffset, base) || !CheckedPosition(base, GetStride(byteCount), idx, offset))
    return INT64_MAX;
  return offset;
}

Result<void> GltfBufferView::ReadElement(Int idx, Int accessorByteOffset, Int byteCount, void* target) const noexcept
{
  CHECK_ARGUMENT(byteCount >= 0);
  // The index, not the position, against the view's bytes. Deliberately loose: the accessor's count and the buffer's own checks
  // are the real bounds.
  CHECK_STATE((idx >= 0 && idx < _byteLength - byteCount + 1));
  CHECK_STATE(_buffer);
  const Int offset = GetElementOffset(idx, accessorByteOffset, byteCount);
  return _buffer->ReadBytes(offset, byteCount, target);
}

const Byte* GltfBufferView::FindElements(Int count, Int accessorByteOffset, Int byteCount, Int& stride) const noexcept
{
  const Int last = count - 1;
  if (count <= 0 || byteCount <= 0 || !_buffer || last >= _byteLength - byteCount + 1)
    return nullptr;
  // Positions rise with the index, so that all elements are readable when the first and the last are.
  if (!_buffer->FindBytes(GetElementOffset(last, accessorByteOffset, byteCount), byteCount))
    return nullptr;
  stride = GetStride(byteCount);
  return _buffer->FindBytes(GetElementOffset(0, accessorByteOffset, byteCount), byteCount);
}

}  // namespace q7z
