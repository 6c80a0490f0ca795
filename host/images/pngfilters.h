#pragma once

// The filters that turn rows of pixels into differences, which pack better.

#include "framework/types.h"
#include "host/images/pixelimage.h"

namespace q7z
{

/// The bytes of all filtered rows.
inline Int GetFilteredBytes(const PixelImage& image) noexcept
{
  return (image.GetRowBytes() + 1) * image.GetHeight();
}

/// Writes each row as the number of a filter and what that makes of the row: the filter with the smallest differences.
/// @param target   room for GetFilteredBytes.
/// @param scratch  room for two rows.
/// @return the sum of all differences, as distances from 0.
Int FilterRows(const PixelImage& image, Byte* target, Byte* scratch) noexcept;

}  // namespace q7z
