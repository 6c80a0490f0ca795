#include "host/images/headlessbitmaps.h"

#include <cstring>
#include <new>

#include "host/images/headlessimage.h"
#include "host/images/resample.h"

namespace q7z
{

namespace
{

constexpr Int32 kBitsPerPixel = 24;

/// A bitmap and its image in one.
class Bitmap final : public HeadlessImage
{
public:
  std::shared_ptr<PixelImage> pixels;  // null for an empty one

  Result<std::shared_ptr<const PixelImage>> GetPixels() noexcept override { return std::shared_ptr<const PixelImage>(pixels); }
  UInt GetHash() const noexcept override { return HashPixels(*pixels); }
  Int GetByteCount() const noexcept override { return pixels->GetByteCount(); }
};

Bitmap& ToBitmap(HostBitmap* bitmap) noexcept
{
  return *reinterpret_cast<Bitmap*>(bitmap);
}
PixelImage* PixelsOf(const HostBitmap* bitmap) noexcept
{
  return reinterpret_cast<const Bitmap*>(bitmap)->pixels.get();
}

/// Whether a bitmap has a row, with alpha where that is wanted.
Bool HasRow(const PixelImage* pixels, Int32 row, Bool withAlpha) noexcept
{
  return pixels && row >= 0 && row < pixels->GetHeight() && (!withAlpha || pixels->HasAlpha());
}

/// Colours into pixels whose alpha stays.
void WriteColors(const Byte* source, Byte* target, Int count) noexcept
{
  for (; count > 0; --count, source += 3, target += 4)
    std::memcpy(target, source, 3);
}

}  // namespace

HostBitmap* HeadlessBitmaps::Alloc() noexcept
{
  return reinterpret_cast<HostBitmap*>(new (std::nothrow) Bitmap);
}

void HeadlessBitmaps::Free(HostBitmap* bitmap) noexcept
{
  delete reinterpret_cast<Bitmap*>(bitmap);
}

Bool HeadlessBitmaps::Init(HostBitmap* bitmap, Int32 width, Int32 height, Int32 bitsPerPixel) noexcept
{
  std::shared_ptr<PixelImage> pixels = bitsPerPixel == kBitsPerPixel ? PixelImage::Create(width, height, 3) : nullptr;
  if (!pixels)
    return false;
  std::memset(pixels->GetRow(0), 0, static_cast<size_t>(pixels->GetByteCount()));
  ToBitmap(bitmap).pixels = std::move(pixels);
  return true;
}

Bool HeadlessBitmaps::Load(HostBitmap* bitmap, const HostFilename& name) noexcept
{
  try
  {
    Result<std::shared_ptr<PixelImage>> pixels = _files.Load(ToStd(name.GetPath()));
    if (pixels.HasError())
      return false;
    ToBitmap(bitmap).pixels = std::move(pixels).GetValue();
    return true;
  }
  catch (...)
  {
    return false;
  }
}

Int32 HeadlessBitmaps::GetWidth(const HostBitmap* bitmap) noexcept
{
  const PixelImage* const pixels = PixelsOf(bitmap);
  return pixels ? pixels->GetWidth() : 0;
}

Int32 HeadlessBitmaps::GetHeight(const HostBitmap* bitmap) noexcept
{
  const PixelImage* const pixels = PixelsOf(bitmap);
  return pixels ? pixels->GetHeight() : 0;
}

Bool HeadlessBitmaps::ScaleInto(const HostBitmap* bitmap, HostBitmap* target) noexcept
{
  const PixelImage* const from = PixelsOf(bitmap);
  PixelImage* const to = PixelsOf(target);
  return from && to && !Resample(*from, *to, &_jobs).HasError();
}

Bool HeadlessBitmaps::HasAlpha(const HostBitmap* bitmap) noexcept
{
  const PixelImage* const pixels = PixelsOf(bitmap);
  return pixels && pixels->HasAlpha();
}

Bool HeadlessBitmaps::AddAlpha(HostBitmap* bitmap) noexcept
{
  std::shared_ptr<PixelImage>& pixels = ToBitmap(bitmap).pixels;
  if (!pixels || pixels->HasAlpha())
    return false;
  std::shared_ptr<PixelImage> wider = PixelImage::Create(pixels->GetWidth(), pixels->GetHeight(), 4);
  if (!wider)
    return false;
  ConvertPixels(pixels->GetRow(0), 3, wider->GetRow(0), 4, Int(pixels->GetWidth()) * pixels->GetHeight());
  pixels = std::move(wider);
  return true;
}

void HeadlessBitmaps::RemoveAlpha(HostBitmap* bitmap) noexcept
{
  if (PixelImage* const pixels = PixelsOf(bitmap))
    pixels->DropAlpha();
}

Bool HeadlessBitmaps::ReadRow(const HostBitmap* bitmap, Int32 row, Byte* target, Bool withAlpha) noexcept
{
  const PixelImage* const pixels = PixelsOf(bitmap);
  if (!HasRow(pixels, row, withAlpha))
    return false;
  ConvertPixels(pixels->GetRow(row), pixels->GetChannels(), target, withAlpha ? 4 : 3, pixels->GetWidth());
  return true;
}

Bool HeadlessBitmaps::WriteRow(HostBitmap* bitmap, Int32 row, const Byte* source, Bool withAlpha) noexcept
{
  PixelImage* const pixels = PixelsOf(bitmap);
  if (!HasRow(pixels, row, withAlpha))
    return false;
  if (pixels->HasAlpha() && !withAlpha)
    WriteColors(source, pixels->GetRow(row), pixels->GetWidth());
  else
    std::memcpy(pixels->GetRow(row), source, static_cast<size_t>(pixels->GetRowBytes()));
  return true;
}

HostImage* HeadlessBitmaps::GetImage(HostBitmap* bitmap) noexcept
{
  return PixelsOf(bitmap) ? ToHost(static_cast<HeadlessImage*>(&ToBitmap(bitmap))) : nullptr;
}

}  // namespace q7z
