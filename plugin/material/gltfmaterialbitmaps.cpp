#include "plugin/material/gltfmaterialbitmaps.h"

#include <algorithm>

#include "framework/check.h"
#include "plugin/material/gltfmaterialexportjobs.h"
#include "plugin/module/hostcontainer.h"

namespace q7z
{

namespace
{

constexpr Int32 kBitsPerPixel = 24;
constexpr Int kRowsPerJob = 64;
constexpr Byte kFull = 255;

// The host's choice of a filter for sizes below an image's own.
constexpr Int32 kFilterSetting = 1025;
constexpr Int32 kFilterNone = 0;
constexpr Int32 kFilterMipmaps = 2;
constexpr Int32 kNearest = 9728;
constexpr Int32 kLinear = 9729;
constexpr Int32 kLinearMipmapLinear = 9987;

HostBitmapTable& Bitmap() noexcept
{
  return *g_hostTables->bitmap;
}

struct Size
{
  Int32 width = 0;
  Int32 height = 0;
};

/// Width and height of the first bitmap; where one of them is no length, that of the second.
Size GetSize(const HostBitmap* first, const HostBitmap* second) noexcept
{
  Size size;
  for (const HostBitmap* const bitmap : {first, second})
  {
    if (bitmap && size.width < 1)
      size.width = Bitmap().GetWidth(bitmap);
    if (bitmap && size.height < 1)
      size.height = Bitmap().GetHeight(bitmap);
  }
  return size;
}

Result<BitmapOwner> MakeBitmap(const Size& size, const String& initFailure) noexcept
{
  BitmapOwner bitmap(Bitmap().Alloc());
  if (!bitmap)
    return MAKE_ERROR(ErrorClass::kOutOfMemory, "Could not Alloc Bitmap."_s);
  if (!Bitmap().Init(bitmap.get(), size.width, size.height, kBitsPerPixel))
    return MAKE_ERROR(ErrorClass::kIllegalState, initFailure);
  return bitmap;
}

/// A copy of the colours in another size.
Result<BitmapOwner> MakeScaled(const HostBitmap* bitmap, const Size& size) noexcept
{
  ASSIGN_OR_RETURN(BitmapOwner scaled, MakeBitmap(size, "Could not Init Bitmap."_s));
  CHECK_STATE(Bitmap().ScaleInto(bitmap, scaled.get()));
  return scaled;
}

/// Runs body(row, buffer) over all rows. Each worker has a buffer of byteCount bytes; the first row that fails stops the others.
template <typename Body>
Result<void> ForEachRow(Int32 height, Int byteCount, const Body& body) noexcept
{
  return RunJobs(height, kRowsPerJob,
                 [&](Int first, Int end) -> Result<void>
                 {
                   BaseArray<Byte> buffer;
                   RETURN_IF_ERROR(buffer.Resize(byteCount));
                   for (Int row = first; row < end; ++row)
                     RETURN_IF_ERROR(body(static_cast<Int32>(row), buffer.begin()));
                   return {};
                 });
}

/// The value of a pixel as hue, saturation and value tell it: among whole numbers to 255 that is always the largest component.
Byte GetValue(const Byte* pixel) noexcept
{
  return std::max({pixel[0], pixel[1], pixel[2]});
}

/// How bright a colour looks, in 256ths; a grey gives its own value.
Byte GetBrightness(const Byte* pixel) noexcept
{
  return static_cast<Byte>((77 * pixel[0] + 151 * pixel[1] + 28 * pixel[2]) >> 8);
}

/// The alpha channel of a bitmap as grey, so that it scales as colours do.
Result<BitmapOwner> MakeAlphaAsColor(const HostBitmap* alphaBitmap) noexcept
{
  const Size size = GetSize(alphaBitmap, nullptr);
  ASSIGN_OR_RETURN(BitmapOwner gray, MakeBitmap(size, "Could not Init Alpha Bitmap."_s));
  const auto copyRow = [&](Int32 row, Byte* pixels) -> Result<void>
  {
    CHECK_STATE(Bitmap().ReadRow(alphaBitmap, row, pixels, true));
    for (Int x = 0; x < size.width; ++x)
      std::fill_n(pixels + 3 * x, 3, pixels[4 * x + 3]);  // to the left, where nothing is unread
    CHECK_STATE(Bitmap().WriteRow(gray.get(), row, pixels, false));
    return {};
  };
  RETURN_IF_ERROR(ForEachRow(size.height, Int(4) * size.width, copyRow));
  return gray;
}

/// Fills the alpha channel of merged from alphaBitmap, whatever its size.
Result<void> CopyAlpha(HostBitmap* merged, const Size& size, const HostBitmap* alphaBitmap) noexcept
{
  BitmapOwner ownAlpha;
  if (Bitmap().HasAlpha(alphaBitmap))
  {
    ASSIGN_OR_RETURN(ownAlpha, MakeAlphaAsColor(alphaBitmap));
  }
  ASSIGN_OR_RETURN(const BitmapOwner alpha, MakeScaled(ownAlpha ? ownAlpha.get() : alphaBitmap, size));
  const auto copyRow = [&](Int32 row, Byte* pixels) -> Result<void>
  {
    Byte* const alphaPixels = pixels + Int(4) * size.width;
    CHECK_STATE(Bitmap().ReadRow(merged, row, pixels, true));
    CHECK_STATE(Bitmap().ReadRow(alpha.get(), row, alphaPixels, false));
    for (Int x = 0; x < size.width; ++x)
      pixels[4 * x + 3] = GetBrightness(alphaPixels + 3 * x);
    CHECK_STATE(Bitmap().WriteRow(merged, row, pixels, true));
    return {};
  };
  return ForEachRow(size.height, Int(7) * size.width, copyRow);
}

/// White all over; with the alpha channel, too, unless the image becomes a JPEG file.
Result<void> FillWhite(HostBitmap* bitmap, const Size& size, Bool asJpeg) noexcept
{
  const auto fillRow = [&](Int32 row, Byte* pixels) -> Result<void>
  {
    std::fill_n(pixels, Int(4) * size.width, kFull);
    CHECK_STATE(Bitmap().WriteRow(bitmap, row, pixels, !asJpeg));
    return {};
  };
  return ForEachRow(size.height, Int(4) * size.width, fillRow);
}

/// Red stays 255: occlusion has a texture of its own.
Result<void> PackMetallicRoughness(HostBitmap* target, const Size& size, const HostBitmap* roughness,
                                   const HostBitmap* metallic) noexcept
{
  const Int rowBytes = Int(3) * size.width;
  const auto packRow = [&](Int32 row, Byte* packed) -> Result<void>
  {
    Byte* const pixels = packed + rowBytes;
    std::fill_n(packed, rowBytes, kFull);
    if (roughness)
    {
      CHECK_STATE(Bitmap().ReadRow(roughness, row, pixels, false));
      for (Int i = 0; i < rowBytes; i += 3)
        packed[i + 1] = GetValue(pixels + i);
    }
    if (metallic)
    {
      CHECK_STATE(Bitmap().ReadRow(metallic, row, pixels, false));
      for (Int i = 0; i < rowBytes; i += 3)
        packed[i + 2] = GetValue(pixels + i);
    }
    CHECK_STATE(Bitmap().WriteRow(target, row, packed, false));
    return {};
  };
  return ForEachRow(size.height, 2 * rowBytes, packRow);
}

}  // namespace

HostBitmap* DupDetect::FindBitmap(const String& fileName) const noexcept
{
  const BitmapOwner* const bitmap = _bitmaps.Find(fileName);
  return bitmap ? bitmap->get() : nullptr;
}

Result<void> DupDetect::AddBitmap(const String& fileName, BitmapOwner bitmap) noexcept
{
  RETURN_IF_ERROR(_bitmaps.Set(fileName, std::move(bitmap)));
  return {};
}

Result<void> DupDetect::SetImage(const ImageKey& key, Int32 index) noexcept
{
  RETURN_IF_ERROR(_images.Set(key, index));
  return {};
}

ExportTexture::ExportTexture() noexcept
{
  const Int32 filter = g_hostTables->material->GetGlobalSettings()->GetInt32(kFilterSetting, kFilterNone + 1);
  sampler.magFilter = kLinear;
  sampler.minFilter = filter == kFilterNone ? kNearest : filter == kFilterMipmaps ? kLinearMipmapLinear : kLinear;
}

Result<BitmapOwner> LoadBitmap(const HostFilename& file) noexcept
{
  BitmapOwner bitmap(Bitmap().Alloc());
  if (!bitmap)
    return Error::OutOfMemory();
  if (Bitmap().Load(bitmap.get(), file))
    return bitmap;
  ASSIGN_OR_RETURN(const String message, String::Format("The image '@' could not be loaded"_s, {file.GetPath()}));
  return MAKE_ERROR(ErrorClass::kIo, message);
}

Bool IsJpegName(const String& fileName) noexcept
{
  const Int dot = fileName.FindLast('.');
  const String suffix = dot < 0 ? String() : fileName.GetPart(dot + 1, fileName.GetByteCount());
  return suffix == "jpg"_s || suffix == "jpeg"_s;
}

Result<void> MergeBaseColor(ExportTexture& texture, const HostBitmap* colorBitmap, Bool isJpeg, const HostBitmap* alphaBitmap,
                            Bool keepRaw) noexcept
{
  if (!colorBitmap && !alphaBitmap)
    return {};
  const Size size = GetSize(colorBitmap, alphaBitmap);
  const Bool asJpeg = !alphaBitmap && isJpeg;
  ASSIGN_OR_RETURN(const BitmapOwner merged, MakeBitmap(size, "Could not Init Merge Bitmap."_s));
  if (colorBitmap)
    CHECK_STATE(Bitmap().ScaleInto(colorBitmap, merged.get()));
  if (alphaBitmap)
  {
    Bitmap().RemoveAlpha(merged.get());
    if (!Bitmap().AddAlpha(merged.get()))
      return MAKE_ERROR(ErrorClass::kIllegalState, "Could not Init Alpha Bitmap."_s);
  }
  // Before the alpha is copied: white rows have an alpha of their own.
  if (!colorBitmap)
    RETURN_IF_ERROR(FillWhite(merged.get(), size, asJpeg));
  if (alphaBitmap)
    RETURN_IF_ERROR(CopyAlpha(merged.get(), size, alphaBitmap));
  return EncodeBitmap(merged.get(), texture, keepRaw, asJpeg);
}

Result<void> MergeMetallicRoughness(ExportTexture& texture, const HostBitmap* roughnessBitmap, const HostBitmap* metallicBitmap,
                                    Bool keepRaw) noexcept
{
  if (!roughnessBitmap && !metallicBitmap)
    return {};
  const Size size = GetSize(roughnessBitmap, metallicBitmap);
  ASSIGN_OR_RETURN(const BitmapOwner target, MakeBitmap(size, "Could not Init Bitmap."_s));
  BitmapOwner metallic;
  if (metallicBitmap)
  {
    ASSIGN_OR_RETURN(metallic, MakeScaled(metallicBitmap, size));
  }
  RETURN_IF_ERROR(PackMetallicRoughness(target.get(), size, roughnessBitmap, metallic.get()));
  metallic.reset();  // the encoder needs memory, too
  Bitmap().RemoveAlpha(target.get());
  return EncodeBitmap(target.get(), texture, keepRaw, false);
}

Result<void> EncodeSingle(HostBitmap* bitmap, const String& fileName, ExportTexture& texture, Bool keepRaw) noexcept
{
  if (!bitmap)
    return {};
  Bitmap().RemoveAlpha(bitmap);
  return EncodeBitmap(bitmap, texture, keepRaw, IsJpegName(fileName));
}

Result<void> EncodeBitmap(HostBitmap* bitmap, ExportTexture& texture, Bool keepRaw, Bool asJpeg) noexcept
{
  if (!bitmap)
    return {};
  HostMediaSessions* const sessions = FindService<HostMediaSessions>();
  if (!sessions)
    return MAKE_ERROR(ErrorClass::kNullPtr, "The host offers no encoders of images."_s);
  HostImage* const image = Bitmap().GetImage(bitmap);
  CHECK_STATE(image);
  const Char* const session = asJpeg ? HostMediaSessions::kJpegExport : HostMediaSessions::kPngExport;
  ASSIGN_OR_RETURN(BaseArray<Byte> bytes, sessions->Encode(session, image));
  RETURN_IF_ERROR(texture.image.SetImageData(std::move(bytes), asJpeg ? kJpegImageType : kPngImageType, keepRaw));
  texture.hasImage = true;
  return {};
}

}  // namespace q7z
