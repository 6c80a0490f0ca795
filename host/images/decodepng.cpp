#include <spng.h>

#include <cstdio>
#include <memory>

#include "host/images/decode.h"

namespace q7z
{

namespace
{

constexpr Int kHeaderEnd = 33;  // signature, and the first chunk with its length, type and checksum
// What texts and profiles may take, packed or unpacked, one and all.
constexpr size_t kMaxChunkBytes = size_t(4) << 20;
constexpr size_t kMaxCachedBytes = size_t(8) << 20;
constexpr Int kMaxInflation = 1032;  // bytes that one byte of a deflate stream becomes

struct PngHeader
{
  UInt32 width;
  UInt32 height;
  Int bitsPerPixel;
};

UInt32 ReadBigEndian(const Byte* bytes) noexcept
{
  return UInt32(bytes[0]) << 24 | UInt32(bytes[1]) << 16 | UInt32(bytes[2]) << 8 | bytes[3];
}

/// 0 for a kind of colour that there is not.
Int GetSamplesPerPixel(Byte colorType) noexcept
{
  switch (colorType)
  {
    case SPNG_COLOR_TYPE_GRAYSCALE:
    case SPNG_COLOR_TYPE_INDEXED: return 1;
    case SPNG_COLOR_TYPE_GRAYSCALE_ALPHA: return 2;
    case SPNG_COLOR_TYPE_TRUECOLOR: return 3;
    case SPNG_COLOR_TYPE_TRUECOLOR_ALPHA: return 4;
    default: return 0;
  }
}

/// Before the library sees the file, so that a claim costs nothing. What else a header can have wrong the library finds.
Result<PngHeader> ReadHeader(const Byte* bytes, Int byteCount, Int fileByteCount) noexcept
{
  if (byteCount < kHeaderEnd)
    return MakeImageError("the PNG file ends in its header");
  const PngHeader header = {ReadBigEndian(bytes + 16), ReadBigEndian(bytes + 20), GetSamplesPerPixel(bytes[25]) * bytes[24]};
  if (ReadBigEndian(bytes + 8) != 13 || ReadBigEndian(bytes + 12) != 0x49484452 || header.bitsPerPixel == 0)
    return MakeImageError("the PNG header is broken");
  RETURN_IF_ERROR(CheckImageSize(header.width, header.height, 0, fileByteCount, 1));
  const Int packed = (header.bitsPerPixel * header.width + 7) / 8 * header.height;
  RETURN_IF_ERROR(CheckImageSize(header.width, header.height, packed, fileByteCount, kMaxInflation));
  return header;
}

struct ContextDeleter
{
  void operator()(spng_ctx* context) const noexcept { spng_ctx_free(context); }
};
using Context = std::unique_ptr<spng_ctx, ContextDeleter>;

Error MakePngError(int code) noexcept
{
  if (code == SPNG_EMEM)
    return Error::OutOfMemory();
  char text[120];
  std::snprintf(text, sizeof(text), "the PNG file is broken: %s", spng_strerror(code));
  return MakeImageError(text);
}

Result<void> Check(int code) noexcept
{
  return code ? Result<void>(MakePngError(code)) : Result<void>();
}

Result<Context> Open(const Byte* bytes, Int byteCount, const PngHeader& header) noexcept
{
  Context context(spng_ctx_new(0));
  if (!context)
    return Error::OutOfMemory();
  RETURN_IF_ERROR(Check(spng_set_image_limits(context.get(), header.width, header.height)));
  RETURN_IF_ERROR(Check(spng_set_chunk_limits(context.get(), kMaxChunkBytes, kMaxCachedBytes)));
  RETURN_IF_ERROR(Check(spng_set_png_buffer(context.get(), bytes, static_cast<size_t>(byteCount))));
  return context;
}

/// Whether any pixel can be transparent: by an alpha channel, a colour that stands for nothing, or entries of the palette.
Result<Bool> HasTransparency(spng_ctx* context) noexcept
{
  spng_ihdr header;
  RETURN_IF_ERROR(Check(spng_get_ihdr(context, &header)));
  spng_trns transparency;
  const int code = spng_get_trns(context, &transparency);
  if (code && code != SPNG_ECHUNKAVAIL)
    return MakePngError(code);
  return !code || header.color_type == SPNG_COLOR_TYPE_GRAYSCALE_ALPHA || header.color_type == SPNG_COLOR_TYPE_TRUECOLOR_ALPHA;
}

}  // namespace

Result<ImageInfo> ReadPngInfo(const Byte* bytes, Int byteCount, Int fileByteCount) noexcept
{
  ASSIGN_OR_RETURN(const PngHeader header, ReadHeader(bytes, byteCount, fileByteCount));
  return ImageInfo{ImageFormat::kPng, static_cast<Int32>(header.width), static_cast<Int32>(header.height)};
}

Result<std::shared_ptr<PixelImage>> DecodePng(const Byte* bytes, Int byteCount) noexcept
{
  ASSIGN_OR_RETURN(const PngHeader header, ReadHeader(bytes, byteCount, byteCount));
  ASSIGN_OR_RETURN(const Context context, Open(bytes, byteCount, header));
  ASSIGN_OR_RETURN(const Bool hasAlpha, HasTransparency(context.get()));
  std::shared_ptr<PixelImage> image =
    PixelImage::Create(static_cast<Int32>(header.width), static_cast<Int32>(header.height), hasAlpha ? 4 : 3);
  if (!image)
    return Error::OutOfMemory();
  const int format = hasAlpha ? SPNG_FMT_RGBA8 : SPNG_FMT_RGB8;
  const int flags = hasAlpha ? SPNG_DECODE_TRNS : 0;
  RETURN_IF_ERROR(Check(spng_decode_image(context.get(), image->GetRow(0), static_cast<size_t>(image->GetByteCount()), format,
                                          flags)));
  return image;  // whatever stands behind the pixels, or is missing there, shows in none
}

}  // namespace q7z
