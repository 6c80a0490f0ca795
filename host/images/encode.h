#pragma once

// Encoding of images in memory. The same pixels give the same bytes, on every thread. May be called from any thread.

#include "framework/basearray.h"
#include "host/images/pixelimage.h"

namespace q7z
{

/// A PNG file of 8 bits a channel, with an alpha channel when the image has one.
Result<BaseArray<Byte>> EncodePng(const PixelImage& image) noexcept;

/// A JPEG file of quality 90; an alpha channel is left out.
Result<BaseArray<Byte>> EncodeJpeg(const PixelImage& image) noexcept;

}  // namespace q7z
