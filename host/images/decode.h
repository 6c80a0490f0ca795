#pragma once

// Decoding of PNG and JPEG images, told apart by their first bytes, never by a name. Whatever the header claims, nothing is
// allocated that the file's own bytes could not fill. Errors say what is wrong with the image; they do not name its file. May be
// called from any thread.

#include "framework/result.h"
#include "host/images/pixelimage.h"

namespace q7z
{

enum class ImageFormat
{
  kUnknown,
  kPng,
  kJpeg,
};

struct ImageInfo
{
  ImageFormat format = ImageFormat::kUnknown;
  Int32 width = 0;
  Int32 height = 0;
};

/// By the first bytes alone.
ImageFormat GetImageFormat(const Byte* bytes, Int byteCount) noexcept;

/// What the header says, once it is within the limits. The bytes may be the start of a file alone.
/// @param fileByteCount  how long the whole file is.
Result<ImageInfo> ReadImageInfo(const Byte* bytes, Int byteCount, Int fileByteCount) noexcept;

/// The image at 8 bits a channel, with an alpha channel where the file has transparency of any kind. Code values stay as they are,
/// whatever profile the file names; CMYK becomes RGB.
Result<std::shared_ptr<PixelImage>> DecodeImage(const Byte* bytes, Int byteCount) noexcept;

/// An error of the class unexpected.
Error MakeImageError(const char* text) noexcept;

// One for each format; the bytes begin as the format does.
Result<ImageInfo> ReadPngInfo(const Byte* bytes, Int byteCount, Int fileByteCount) noexcept;
Result<std::shared_ptr<PixelImage>> DecodePng(const Byte* bytes, Int byteCount) noexcept;
Result<ImageInfo> ReadJpegInfo(const Byte* bytes, Int byteCount, Int fileByteCount) noexcept;
Result<std::shared_ptr<PixelImage>> DecodeJpeg(const Byte* bytes, Int byteCount) noexcept;

/// Refuses a size that is beyond the limits, or that byteCount bytes cannot fill.
/// @param maxExpansion  the most bytes of filled that the format makes from one byte of a file.
Result<void> CheckImageSize(UInt32 width, UInt32 height, Int filled, Int byteCount, Int maxExpansion) noexcept;

}  // namespace q7z
