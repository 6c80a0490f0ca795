#include "host/images/decode.h"

#include <cstdio>
#include <cstring>

#include "framework/check.h"

namespace q7z
{

namespace
{

constexpr Byte kPngStart[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr Byte kJpegStart[] = {0xFF, 0xD8, 0xFF};

template <size_t size>
Bool StartsWith(const Byte* bytes, Int byteCount, const Byte (&start)[size]) noexcept
{
  return byteCount >= static_cast<Int>(size) && std::memcmp(bytes, start, size) == 0;
}

constexpr const char* kUnknownText = "it is neither a PNG nor a JPEG image";

}  // namespace

ImageFormat GetImageFormat(const Byte* bytes, Int byteCount) noexcept
{
  if (StartsWith(bytes, byteCount, kPngStart))
    return ImageFormat::kPng;
  return StartsWith(bytes, byteCount, kJpegStart) ? ImageFormat::kJpeg : ImageFormat::kUnknown;
}

Result<ImageInfo> ReadImageInfo(const Byte* bytes, Int byteCount, Int fileByteCount) noexcept
{
  switch (GetImageFormat(bytes, byteCount))
  {
    case ImageFormat::kPng: return ReadPngInfo(bytes, byteCount, fileByteCount);
    case ImageFormat::kJpeg: return ReadJpegInfo(bytes, byteCount, fileByteCount);
    case ImageFormat::kUnknown: break;
  }
  return MakeImageError(kUnknownText);
}

Result<std::shared_ptr<PixelImage>> DecodeImage(const Byte* bytes, Int byteCount) noexcept
{
  switch (GetImageFormat(bytes, byteCount))
  {
    case ImageFormat::kPng: return DecodePng(bytes, byteCount);
    case ImageFormat::kJpeg: return DecodeJpeg(bytes, byteCount);
    case ImageFormat::kUnknown: break;
  }
  return MakeImageError(kUnknownText);
}

Error MakeImageError(const char* text) noexcept
{
  const Result<String> message = String::Create(text);
  return message.HasError() ? message.GetError() : MAKE_ERROR(ErrorClass::kUnexpected, message.GetValue());
}

Result<void> CheckImageSize(UInt32 width, UInt32 height, Int filled, Int byteCount, Int maxExpansion) noexcept
{
  char text[120];
  if (!IsImageSize(width, height))
  {
    std::snprintf(text, sizeof(text), "its header claims %u x %u pixels, more than the limit", width, height);
    return MakeImageError(text);
  }
  if (filled / maxExpansion > byteCount)
  {
    std::snprintf(text, sizeof(text), "its header claims %u x %u pixels, more than %lld bytes can hold", width, height,
                  static_cast<long long>(byteCount));
    return MakeImageError(text);
  }
  return {};
}

}  // namespace q7z
