#pragma once

// PixelImage: decoded pixels. Bitmaps and the images of the interface hold them; they go with their last holder. Different rows may be written by different threads; all else needs the image for itself.

#include <memory>

#include "framework/types.h"

namespace q7z
{

/// The longest side of an image: the longest that JPEG has.
inline constexpr Int32 kMaxImageSide = 65500;
/// The most bytes of pixels, counted at four to a pixel: 16384 × 8192 pixels.
inline constexpr Int kMaxImageBytes = Int(1) << 29;

/// Whether an image of this size is within the limits.
constexpr Bool IsImageSize(Int width, Int height) noexcept
{
  return width >= 1 && height >= 1 && width <= kMaxImageSide && height <= kMaxImageSide && 4 * width * height <= kMaxImageBytes;
}

class PixelImage
{
public:
  /// @param channels  3 for red, green, blue; 4 with alpha behind them. 8 bits each; the pixels are undefined until written.
  /// @return null without memory or for a size beyond the limits.
  static std::shared_ptr<PixelImage> Create(Int32 width, Int32 height, Int32 channels) noexcept;
  PixelImage(const PixelImage&) = delete;
  PixelImage& operator=(const PixelImage&) = delete;
  ~PixelImage();

  Int32 GetWidth() const noexcept { return _width; }
  Int32 GetHeight() const noexcept { return _height; }
  Int32 GetChannels() const noexcept { return _channels; }
  Bool HasAlpha() const noexcept { return _channels == 4; }
  Int GetRowBytes() const noexcept { return Int(_width) * _channels; }
  Int GetByteCount() const noexcept { return GetRowBytes() * _height; }

  /// Rows follow each other without gaps, the top one first. row is in range.
  Byte* GetRow(Int row) noexcept { return _pixels + row * GetRowBytes(); }
  const Byte* GetRow(Int row) const noexcept { return _pixels + row * GetRowBytes(); }

  /// Drops the alpha channel, if there is one, in place.
  void DropAlpha() noexcept;

private:
  PixelImage(Int32 width, Int32 height, Int32 channels, Byte* pixels) noexcept;

  Int32 _width;
  Int32 _height;
  Int32 _channels;
  Int _capacity;  // bytes of _pixels
  Byte* _pixels;
};

/// Copies count pixels from row to row, between any two numbers of channels; a new alpha is 255.
void ConvertPixels(const Byte* source, Int32 sourceChannels, Byte* target, Int32 targetChannels, Int count) noexcept;

}  // namespace q7z
