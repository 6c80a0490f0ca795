#include "host/images/pixelimage.h"

#include <cstring>
#include <new>

#include "framework/memory.h"

namespace q7z
{

std::shared_ptr<PixelImage> PixelImage::Create(Int32 width, Int32 height, Int32 channels) noexcept
{
  if (!IsImageSize(width, height))
    return nullptr;
  Byte* const pixels = static_cast<Byte*>(AllocateMemory(Int(width) * height * channels));
  if (!pixels)
    return nullptr;
  PixelImage* const image = new (std::nothrow) PixelImage(width, height, channels, pixels);
  if (!image)
  {
    FreeMemory(pixels, Int(width) * height * channels);
    return nullptr;
  }
  try
  {
    return std::shared_ptr<PixelImage>(image);  // deletes the image when it fails
  }
  catch (...)
  {
    return nullptr;
  }
}

PixelImage::PixelImage(Int32 width, Int32 height, Int32 channels, Byte* pixels) noexcept
    : _width(width), _height(height), _channels(channels), _capacity(GetByteCount()), _pixels(pixels)
{}

PixelImage::~PixelImage()
{
  FreeMemory(_pixels, _capacity);
}

void PixelImage::DropAlpha() noexcept
{
  if (!HasAlpha())
    return;
  // To the left, where nothing is unread.
  ConvertPixels(_pixels, 4, _pixels, 3, Int(_width) * _height);
  _channels = 3;
}

void ConvertPixels(const Byte* source, Int32 sourceChannels, Byte* target, Int32 targetChannels, Int count) noexcept
{
  if (sourceChannels == targetChannels)
  {
    std::memcpy(target, source, static_cast<size_t>(count * sourceChannels));
    return;
  }
  for (Int i = 0; i < count; ++i, source += sourceChannels, target += targetChannels)
  {
    target[0] = source[0];
    target[1] = source[1];
    target[2] = source[2];
    if (targetChannels == 4)
      target[3] = 255;
  }
}

}  // namespace q7z
