#include "plugin/document/gltfimage.h"

#include "framework/check.h"
#include "plugin/document/gltfdata.h"
#include "plugin/document/gltfkeys.h"
#include "plugin/document/gltfutilities.h"
#include "plugin/module/hostconsole.h"
#include "plugin/module/hostfile.h"
#include "plugin/module/hostservices.h"

namespace q7z
{

namespace
{

/// A number that 32 bits do not hold counts as absent.
Int32 ReadInt32(const DataDictionary& element, const DataKey& key, Int32 defaultValue) noexcept
{
  const Int value = ReadInt(element, key, defaultValue);
  return value < INT32_MIN || value > INT32_MAX ? defaultValue : static_cast<Int32>(value);
}

Result<String> DecodeUri(const String& uri) noexcept
{
  HostUrlPathDecoder* const decoder = FindService<HostUrlPathDecoder>();
  if (!decoder)
    return MAKE_ERROR(ErrorClass::kNullPtr, "The host offers no decoder of percent codes."_s);
  return decoder->Decode(uri);
}

/// The text behind the last dot of the last component.
String GetUriSuffix(const String& uri) noexcept
{
  const String name = uri.GetPart(uri.FindLast('/') + 1, uri.GetByteCount());
  const Int dot = name.FindLast('.');
  return dot < 0 ? String() : name.GetPart(dot + 1, name.GetByteCount());
}

}  // namespace

Result<void> GltfSampler::ReadFromJson(const DataDictionary& element) noexcept
{
  name = ReadString(element, keys::kName, String());
  magFilter = ReadInt32(element, keys::kMagFilter, magFilter);
  minFilter = ReadInt32(element, keys::kMinFilter, minFilter);
  wrapS = ReadInt32(element, keys::kWrapS, wrapS);
  wrapT = ReadInt32(element, keys::kWrapT, wrapT);
  return {};
}

Result<void> GltfImage::ReadFromJson(const DataDictionary& element) noexcept
{
  _name = ReadString(element, keys::kName, String());
  _uri = ReadString(element, keys::kUri, String());
  if (_uri.IsPopulated() && !IsBase64())
  {
    ASSIGN_OR_RETURN(_uri, DecodeUri(_uri));
  }
  _mimeType = ReadString(element, keys::kMimeType, String());
  _bufferViewIndex = ReadInt(element, keys::kBufferView, -1);
  return {};
}

Result<void> GltfImage::Resolve(GltfData& gltfData) noexcept
{
  if (_bufferViewIndex == -1)
  {
    CHECK_STATE(IsBase64() && _data.IsPopulated() || GetURIString().IsPopulated());
    return {};
  }
  _bufferView = gltfData.bufferViews.Find(_bufferViewIndex);
  CHECK_STATE(_bufferView);
  const GltfBuffer* const buff = gltfData.buffers.Find(_bufferView->GetBufferIndex());
  CHECK_STATE(buff);
  _bufferView->SetBuffer(buff);
  return {};
}

Result<void> GltfImage::LoadImageData(const Url& assetFolderUrl) noexcept
{
  if (_uri.IsPopulated())
    return IsBase64() ? DecodeDataUri() : ReadSideFile(assetFolderUrl);
  // The check quotes the operation, whose result is unwrapped first.
  ASSIGN_OR_RETURN(const String extension, this->GetImageExtension());
  const auto GetImageExtension = [&extension]() noexcept -> const String& { return extension; };
  CHECK_STATE(_data.IsEmpty() || GetImageExtension().IsPopulated());
  return {};
}

Result<void> GltfImage::DecodeDataUri() noexcept
{
  _data.Reset();
  HostBase64Decoder* const decoder = FindService<HostBase64Decoder>();
  if (!decoder)
    return MAKE_ERROR(ErrorClass::kNullPtr, "The host offers no base64 decoder."_s);
  ASSIGN_OR_RETURN(_data, decoder->Decode(_uri.GetPart(IsBase64(), _uri.GetByteCount())));
  return {};
}

Result<void> GltfImage::ReadSideFile(const Url& assetFolderUrl) noexcept
{
  ASSIGN_OR_RETURN(Url assetUrl, Url::FromDecodedReference(_uri));
  if (assetUrl.GetScheme() == URLSCHEME_HTTP)
    return MAKE_ERROR(ErrorClass::kUnsupportedOperation, HostLoadString(10010));
  if (assetUrl.GetScheme() == URLSCHEME_RELATIVE)
  {
    ASSIGN_OR_RETURN(assetUrl, assetFolderUrl.AppendPath(assetUrl));
  }
  CHECK_STATE(assetUrl.GetScheme() == URLSCHEME_FILESYSTEM);
  const HostFilename fileName = TarnoConvert(assetUrl);
  CHECK_STATE(GeFExist(fileName));
  const HostFileOwner file(HostFileAlloc());
  if (!file)
    return Error::OutOfMemory();
  CHECK_STATE(file->Open(fileName));
  BaseArray<Byte> bytes;
  RETURN_IF_ERROR(bytes.ResizeForOverwrite(file->GetLength()));
  const Int bytesRead = file->ReadBytes(bytes.GetFirst(), bytes.GetCount());
  CHECK_STATE(file->Close());
  CHECK_STATE(bytesRead == bytes.GetCount());
  _data = std::move(bytes);
  return {};
}

Result<void> GltfImage::CopyFromBufferView() noexcept
{
  CHECK_STATE(_bufferView);
  _data.Reset();
  const Int byteLength = _bufferView->GetByteLength();
  if (byteLength == 0)
    return {};
  // The whole view as one element: all of it or nothing, and no memory for bytes that are not there.
  Int stride = 0;
  const Byte* const bytes = _bufferView->FindElements(1, 0, byteLength, stride);
  if (!bytes)
    return MAKE_ERROR(ErrorClass::kIllegalState, "The bytes of the image are not all there."_s);
  return _data.AppendCopies(bytes, byteLength);
}

void GltfImage::DropLoadedSource() noexcept
{
  if (const Int prefixLength = IsBase64())
    _uri = prefixLength == kPngDataPrefix.GetByteCount() ? kPngDataPrefix : kJpegDataPrefix;
  else if (_uri.IsPopulated())
    _data.Reset();
}

Result<void> GltfImage::SaveImageData(const Url& url) const noexcept
{
  CHECK_STATE(_data.IsPopulated() || (_uri.IsPopulated() && IsBase64()));
  if (_data.IsEmpty())
    return {};
  const HostFileOwner bfOut(HostFileAlloc());
  if (!bfOut)
    return Error::OutOfMemory();
  CHECK_STATE(bfOut->Open(TarnoConvert(url), FILEOPEN::WRITE, FILEDIALOG::NONE));
  CHECK_STATE(bfOut->WriteBytes(_data.GetFirst(), _data.GetCount()));
  CHECK_STATE(bfOut->Close());
  return {};
}

Result<String> GltfImage::GetImageExtension() const noexcept
{
  if (const Int prefixLength = IsBase64())
    return prefixLength == kPngDataPrefix.GetByteCount() ? "png"_s : "jpg"_s;
  if (_uri.IsPopulated())
    return GetUriSuffix(_uri);
  if (_mimeType == "image/png"_s)
    return "png"_s;
  return _mimeType == "image/jpeg"_s ? "jpg"_s : String();
}

Result<void> GltfImage::SetImageData(const BaseArray<Byte>& bytes, Int32 imageType, Bool keepRaw) noexcept
{
  BaseArray<Byte> copy;
  RETURN_IF_ERROR(copy.CopyFrom(bytes));
  return SetImageData(std::move(copy), imageType, keepRaw);
}

Result<void> GltfImage::SetImageData(BaseArray<Byte>&& bytes, Int32 imageType, Bool keepRaw) noexcept
{
  _data = std::move(bytes);
  _imageType = imageType;
  _mimeType = imageType == kPngImageType ? "image/png"_s : "image/jpeg"_s;
  if (keepRaw)
    return {};
  HostBase64Encoder* const encoder = FindService<HostBase64Encoder>();
  if (!encoder)
    return MAKE_ERROR(ErrorClass::kNullPtr, "The host offers no base64 encoder."_s);
  // JPEG is asked for here and PNG above: a type that is neither has the one's MIME type and the other's URI.
  const String& prefix = imageType == kJpegImageType ? kJpegDataPrefix : kPngDataPrefix;
  ASSIGN_OR_RETURN(_uri, encoder->Encode(prefix, _data.GetFirst(), _data.GetCount()));
  return {};
}

}  // namespace q7z
