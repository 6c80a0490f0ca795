#include <cstdio>
#include <cstring>

#include <jpeglib.h>

#include "host/images/decode.h"
#include "host/images/jpegerrors.h"

namespace q7z
{

namespace
{

// Whole images are sent in about ten scans; each costs a pass over all coefficients, however few bytes it has.
constexpr int kMaxScans = 64;
// Each block of 8 × 8 pixels takes a bit at least.
constexpr Int kMaxPixelsPerByte = 512;
constexpr long kMaxWorkBytes = long(1) << 30;

/// Two parts of 255, one of the other.
Byte Multiply(Int a, Int b) noexcept
{
  return static_cast<Byte>((a * b + 127) / 255);
}

/// One decoding. Its operations answer false when the library gave up; GetError tells why. They hold no object with a destructor,
/// since the library leaves them by a jump.
class JpegReader
{
public:
  JpegReader() noexcept
  {
    std::memset(&_decoder, 0, sizeof(_decoder));
    std::memset(&_progress, 0, sizeof(_progress));
    _errors.Connect(reinterpret_cast<j_common_ptr>(&_decoder), &_manager);
  }
  JpegReader(const JpegReader&) = delete;
  JpegReader& operator=(const JpegReader&) = delete;
  ~JpegReader() { jpeg_destroy_decompress(&_decoder); }

  Bool ReadHeader(const Byte* bytes, Int byteCount) noexcept
  {
    if (setjmp(_errors.jump))
      return false;
    jpeg_create_decompress(&_decoder);
    _decoder.mem->max_memory_to_use = kMaxWorkBytes;
    jpeg_mem_src(&_decoder, bytes, static_cast<unsigned long>(byteCount));
    jpeg_read_header(&_decoder, TRUE);
    return true;
  }

  Bool ReadPixels(PixelImage& image) noexcept
  {
    if (setjmp(_errors.jump))
      return false;
    const bool isInk = _decoder.jpeg_color_space == JCS_CMYK || _decoder.jpeg_color_space == JCS_YCCK;
    _decoder.out_color_space = isInk ? JCS_CMYK : JCS_RGB;
    _progress.progress_monitor = &OnProgress;
    _decoder.progress = &_progress;
    jpeg_start_decompress(&_decoder);
    if (isInk)
      ReadInkRows(image);
    else
      ReadRows(image);
    jpeg_finish_decompress(&_decoder);
    return true;
  }

  Int GetWidth() const noexcept { return _decoder.image_width; }
  Int GetHeight() const noexcept { return _decoder.image_height; }
  Error GetError() const noexcept { return _errors.MakeError(); }

private:
  static void OnProgress(j_common_ptr object)
  {
    if (reinterpret_cast<j_decompress_ptr>(object)->input_scan_number > kMaxScans)
      JpegErrors::Fail(object, "it has more than 64 scans");
  }

  void ReadRows(PixelImage& image) noexcept
  {
    while (_decoder.output_scanline < _decoder.output_height)
    {
      JSAMPROW row = image.GetRow(_decoder.output_scanline);
      jpeg_read_scanlines(&_decoder, &row, 1);
    }
  }

  /// Files with an Adobe marker hold the inks inverted.
  void ReadInkRows(PixelImage& image) noexcept
  {
    const JSAMPARRAY rows =
      _decoder.mem->alloc_sarray(reinterpret_cast<j_common_ptr>(&_decoder), JPOOL_IMAGE, 4 * _decoder.output_width, 1);
    const Int flip = _decoder.saw_Adobe_marker ? 0 : 255;
    while (_decoder.output_scanline < _decoder.output_height)
    {
      Byte* target = image.GetRow(_decoder.output_scanline);
      jpeg_read_scanlines(&_decoder, rows, 1);
      const JSAMPLE* source = rows[0];
      for (JDIMENSION x = 0; x < _decoder.output_width; ++x, source += 4, target += 3)
      {
        for (int i = 0; i < 3; ++i)
          target[i] = Multiply(source[i] ^ flip, source[3] ^ flip);
      }
    }
  }

  jpeg_decompress_struct _decoder;
  jpeg_progress_mgr _progress;
  jpeg_error_mgr _manager;
  JpegErrors _errors;
};

Result<void> ReadHeader(JpegReader& reader, const Byte* bytes, Int byteCount, Int fileByteCount) noexcept
{
  if (!reader.ReadHeader(bytes, byteCount))
    return reader.GetError();
  const Int width = reader.GetWidth();
  const Int height = reader.GetHeight();
  // One side of a JPEG file has 16 bits, so that nothing wraps.
  return CheckImageSize(static_cast<UInt32>(width), static_cast<UInt32>(height), width * height, fileByteCount,
                        kMaxPixelsPerByte);
}

}  // namespace

Result<ImageInfo> ReadJpegInfo(const Byte* bytes, Int byteCount, Int fileByteCount) noexcept
{
  JpegReader reader;
  RETURN_IF_ERROR(ReadHeader(reader, bytes, byteCount, fileByteCount));
  return ImageInfo{ImageFormat::kJpeg, static_cast<Int32>(reader.GetWidth()), static_cast<Int32>(reader.GetHeight())};
}

Result<std::shared_ptr<PixelImage>> DecodeJpeg(const Byte* bytes, Int byteCount) noexcept
{
  JpegReader reader;
  RETURN_IF_ERROR(ReadHeader(reader, bytes, byteCount, byteCount));
  std::shared_ptr<PixelImage> image =
    PixelImage::Create(static_cast<Int32>(reader.GetWidth()), static_cast<Int32>(reader.GetHeight()), 3);
  if (!image)
    return Error::OutOfMemory();
  if (!reader.ReadPixels(*image))
    return reader.GetError();
  return image;
}

}  // namespace q7z
