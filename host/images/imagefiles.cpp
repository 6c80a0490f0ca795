#include "host/images/imagefiles.h"

#include <algorithm>

#include "framework/check.h"
#include "host/images/decode.h"

namespace q7z
{

namespace
{

constexpr Int kMaxFileBytes = Int(1) << 30;
// Enough for the header of most files; profiles and previews may stand before that of a JPEG file.
constexpr Int kStartBytes = Int(1) << 16;

Result<BaseArray<Byte>> ReadStart(PlatformFile& file, Int byteCount) noexcept
{
  BaseArray<Byte> bytes;
  RETURN_IF_ERROR(bytes.ResizeForOverwrite(byteCount));
  if (file.ReadAt(0, bytes.begin(), byteCount) != byteCount)
    return MakeImageError("it cannot be read to its end");
  return bytes;
}

const char* GetFormatName(ImageFormat format) noexcept
{
  return format == ImageFormat::kPng ? "PNG" : "JPEG";
}

Result<ImageInfo> ReadFileInfo(PlatformFile& file, Int byteCount) noexcept
{
  ASSIGN_OR_RETURN(const BaseArray<Byte> start, ReadStart(file, byteCount));
  return ReadImageInfo(start.begin(), byteCount, file.GetLength());
}

}  // namespace

Error ImageFiles::MakeReadError(const std::string& path)
{
  return MakeIoError(ResolvePath(path).empty() ? "there is no such file" : "it cannot be read: " + GetSystemReason());
}

Result<BaseArray<Byte>> ImageFiles::Read(const std::string& path) noexcept
{
  try
  {
    const std::string readable = _policy.FindReadable(path);
    PlatformFile file;
    if (readable.empty() || !file.Open(readable.c_str(), PlatformOpen::kRead))
    {
      const Error error = MakeReadError(path);
      if (!readable.empty() || ResolvePath(path).empty())
        Warn(path, error);  // what may not be read has been told already
      return error;
    }
    Result<BaseArray<Byte>> bytes = file.GetLength() > kMaxFileBytes
                                      ? Result<BaseArray<Byte>>(MakeImageError("it is larger than 1 GiB"))
                                      : ReadStart(file, file.GetLength());
    if (bytes.HasError())
      Warn(path, bytes.GetError());
    return bytes;
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
}

Result<std::shared_ptr<PixelImage>> ImageFiles::Load(const std::string& path) noexcept
{
  ASSIGN_OR_RETURN(const BaseArray<Byte> bytes, Read(path));
  return Decode(path, bytes);
}

Result<std::shared_ptr<PixelImage>> ImageFiles::Decode(const std::string& path, const BaseArray<Byte>& bytes) noexcept
{
  Result<std::shared_ptr<PixelImage>> image = DecodeImage(bytes.begin(), bytes.GetCount());
  if (image.HasError())
    Warn(path, image.GetError());
  return image;
}

void ImageFiles::Warn(const std::string& path, const Error& error) noexcept
{
  if (!_warnings || error.GetClass() == ErrorClass::kOutOfMemory)
    return;
  try
  {
    _warnings->AddWarning("the image \"" + _policy.GetShortName(path) + "\" is left out: " + ToStd(error.GetMessage()));
  }
  catch (...)
  {
    return;  // a warning is lost; nobody can be told
  }
}

std::string GetTexturePath(const Url& url, std::string_view folder)
{
  std::string path = ToStd(url.GetPath());
  if (url.GetScheme() == URLSCHEME_FILESYSTEM)
    return path;
  if (url.GetScheme() != URLSCHEME_RELATIVE)
    return "";
  if (folder.empty() || folder == ".")
    return path;
  return std::string(folder) + (folder.ends_with('/') ? "" : "/") + path;
}

std::string DescribeImageFile(const std::string& path)
{
  PlatformFile file;
  if (path.empty() || !file.Open(path.c_str(), PlatformOpen::kRead))
    return "missing";
  const Int startBytes = std::min(file.GetLength(), kStartBytes);
  Result<ImageInfo> info = ReadFileInfo(file, startBytes);
  if (info.HasError() && startBytes < file.GetLength())
    info = ReadFileInfo(file, std::min(file.GetLength(), kMaxFileBytes));
  if (info.HasError())
    return "no image";
  const ImageInfo& found = info.GetValue();
  return std::string(GetFormatName(found.format)) + ", " + std::to_string(found.width) + " x " + std::to_string(found.height);
}

}  // namespace q7z
