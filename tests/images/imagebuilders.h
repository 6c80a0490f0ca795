#pragma once

// Small PNG and JPEG files by other code than the host's own: PNG files are put together chunk by chunk with nothing packed, and the
// pixels of a JPEG file are flat blocks whose values can be read in the test.

#include <string>
#include <string_view>

#include "host/images/headlessimage.h"
#include "tests/support/gltfbuilders.h"

namespace q7z::test
{

struct PngHeader
{
  std::uint32_t width = 1;
  std::uint32_t height = 1;
  std::uint8_t depth = 8;
  std::uint8_t colorType = 2;  // 0 gray, 2 RGB, 3 palette, 4 gray with alpha, 6 RGB with alpha
  std::uint8_t interlace = 0;
};

class PngBuilder
{
public:
  explicit PngBuilder(const PngHeader& header);
  PngBuilder& Chunk(std::string_view type, const Bytes& content);
  /// Rows as a file has them, each with the number of its filter in front.
  PngBuilder& Rows(const Bytes& rows);
  /// The whole file, with its end.
  Bytes Build() const;

private:
  Bytes _bytes;
};

/// A zlib stream, without its checksum, that unpacks to about byteCount equal bytes.
Bytes LongRun(std::size_t byteCount);

/// A JPEG file of flat blocks of 8 × 8 pixels.
/// @param values  of each component, the same in all blocks.
/// @param transform  how the components stand for colours: 0 as they are, 1 as brightness and two colours, 2 the same with black;
///   -1 says nothing of it.
/// @param scanCount  how often the last scan of a progressive file comes; 0 for a file that is not progressive.
Bytes MakeJpeg(int width, int height, const Bytes& values, int transform = -1, int scanCount = 0);

/// The pixels as text, rows parted by " / ": "1,2,3 4,5,6 / ...".
std::string PixelText(const PixelImage& image);
/// The way back.
std::shared_ptr<PixelImage> ImageOf(const std::string& text);
/// An image of its own.
class PlainImage final : public HeadlessImage
{
public:
  explicit PlainImage(const std::string& text) : _pixels(ImageOf(text)) {}
  explicit PlainImage(std::shared_ptr<const PixelImage> pixels) : _pixels(std::move(pixels)) {}
  Result<std::shared_ptr<const PixelImage>> GetPixels() noexcept override { return _pixels; }
  UInt GetHash() const noexcept override { return HashPixels(*_pixels); }
  Int GetByteCount() const noexcept override { return _pixels->GetByteCount(); }
  const PixelImage& Pixels() const { return *_pixels; }

private:
  std::shared_ptr<const PixelImage> _pixels;
};

/// The same pixels in each run, as different as they come.
std::shared_ptr<PixelImage> NoiseImage(Int32 width, Int32 height, Int32 channels);

}  // namespace q7z::test
