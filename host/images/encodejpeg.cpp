#include <algorithm>
#include <cstdio>
#include <cstring>

#include <jpeglib.h>

#include <jerror.h>

#include "host/images/encode.h"
#include "host/images/jpegerrors.h"

namespace q7z
{

namespace
{

constexpr int kQuality = 90;
constexpr Int kFirstBytes = Int(1) << 14;

/// One encoding, into an array that grows. As in the reader, no object with a destructor lives where the library may jump.
class JpegWriter
{
public:
  explicit JpegWriter(BaseArray<Byte>& file) noexcept : _file(file)
  {
    std::memset(&_encoder, 0, sizeof(_encoder));
    _errors.Connect(reinterpret_cast<j_common_ptr>(&_encoder), &_manager);
    _destination.writer = this;
    _destination.manager.init_destination = &OnStart;
    _destination.manager.empty_output_buffer = &OnFull;
    _destination.manager.term_destination = &OnEnd;
  }
  JpegWriter(const JpegWriter&) = delete;
  JpegWriter& operator=(const JpegWriter&) = delete;
  ~JpegWriter() { jpeg_destroy_compress(&_encoder); }

  /// @return false when the library gave up.
  Bool Write(const PixelImage& image) noexcept
  {
    if (setjmp(_errors.jump))
      return false;
    jpeg_create_compress(&_encoder);
    _encoder.dest = &_destination.manager;
    Configure(image);
    jpeg_start_compress(&_encoder, TRUE);
    while (_encoder.next_scanline < _encoder.image_height)
    {
      JSAMPROW row = const_cast<Byte*>(image.GetRow(_encoder.next_scanline));  // only read
      jpeg_write_scanlines(&_encoder, &row, 1);
    }
    jpeg_finish_compress(&_encoder);
    return true;
  }
  Error GetError() const noexcept { return _errors.MakeError(); }

private:
  void Configure(const PixelImage& image) noexcept
  {
    _encoder.image_width = static_cast<JDIMENSION>(image.GetWidth());
    _encoder.image_height = static_cast<JDIMENSION>(image.GetHeight());
    _encoder.input_components = image.GetChannels();
    _encoder.in_color_space = image.HasAlpha() ? JCS_EXT_RGBX : JCS_RGB;
    jpeg_set_defaults(&_encoder);
    jpeg_set_quality(&_encoder, kQuality, TRUE);
    // Colour as fine as brightness: in textures, such as normals, it is no less a value.
    _encoder.comp_info[0].h_samp_factor = 1;
    _encoder.comp_info[0].v_samp_factor = 1;
  }

  /// Where the library writes to, and whose that is.
  struct Destination
  {
    jpeg_destination_mgr manager;  // first: the library knows this part alone
    JpegWriter* writer;
  };

  static JpegWriter& Of(j_compress_ptr encoder) noexcept { return *reinterpret_cast<Destination*>(encoder->dest)->writer; }

  /// Doubles the file behind its first `used` bytes.
  static void Grow(j_compress_ptr encoder, Int used) noexcept
  {
    JpegWriter& writer = Of(encoder);
    if (writer._file.ResizeForOverwrite(std::max(kFirstBytes, 2 * used)).HasError())
      ERREXIT1(encoder, JERR_OUT_OF_MEMORY, 0);
    writer._destination.manager.next_output_byte = writer._file.begin() + used;
    writer._destination.manager.free_in_buffer = static_cast<size_t>(writer._file.GetCount() - used);
  }
  static void OnStart(j_compress_ptr encoder) { Grow(encoder, 0); }
  static boolean OnFull(j_compress_ptr encoder)
  {
    Grow(encoder, Of(encoder)._file.GetCount());  // full to the end, whatever the counters say
    return TRUE;
  }
  static void OnEnd(j_compress_ptr encoder)
  {
    JpegWriter& writer = Of(encoder);
    writer._file.Truncate(writer._file.GetCount() - static_cast<Int>(writer._destination.manager.free_in_buffer));
  }

  BaseArray<Byte>& _file;
  jpeg_compress_struct _encoder;
  Destination _destination;
  jpeg_error_mgr _manager;
  JpegErrors _errors;
};

}  // namespace

Result<BaseArray<Byte>> EncodeJpeg(const PixelImage& image) noexcept
{
  BaseArray<Byte> file;
  JpegWriter writer(file);
  if (!writer.Write(image))
    return writer.GetError();
  return file;
}

}  // namespace q7z
