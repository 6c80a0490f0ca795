#pragma once

// The bitmap work of the material export: what is loaded and written once for a whole export, the merging of colour and alpha, the
// packing of roughness and metallic into one image, and encoding in memory. Pixels that are made here go with the operation that
// makes them; loaded bitmaps belong to DupDetect and live as long as the export.

#include <memory>

#include "framework/hashmap.h"
#include "plugin/document/gltfimage.h"
#include "plugin/module/hostmaterial.h"

namespace q7z
{

struct HostBitmapDeleter
{
  void operator()(HostBitmap* bitmap) const noexcept { g_hostTables->bitmap->Free(bitmap); }
};
using BitmapOwner = std::unique_ptr<HostBitmap, HostBitmapDeleter>;

/// What an image is made from: the names of two bitmaps, or one and an empty text.
struct ImageKey
{
  String first;
  String second;
  friend Bool operator==(const ImageKey&, const ImageKey&) noexcept = default;
};

inline UInt HashOf(const ImageKey& key) noexcept
{
  return MixBits(key.first.GetHash() + 3 * key.second.GetHash());
}

/// What an export has loaded and written already, so that two materials share it. Belongs to one thread.
class DupDetect
{
public:
  /// An image that has a key, but is no element of the file yet.
  static constexpr Int32 kReserved = -1;

  /// @return the bitmap that was loaded from a file of this name, or null. Owned here.
  HostBitmap* FindBitmap(const String& fileName) const noexcept;
  Result<void> AddBitmap(const String& fileName, BitmapOwner bitmap) noexcept;

  /// @return the place of the image among `images`, kReserved, or null for a key that nobody has entered.
  const Int32* FindImage(const ImageKey& key) const noexcept { return _images.Find(key); }
  Result<void> SetImage(const ImageKey& key, Int32 index) noexcept;

private:
  HashMap<String, BitmapOwner> _bitmaps;
  HashMap<ImageKey, Int32> _images;
};

/// One texture of a material that is being written.
struct ExportTexture
{
  /// Takes the filter for small sizes from the host's global settings.
  ExportTexture() noexcept;

  GltfImage image;
  GltfSampler sampler;
  Bool hasImage = false;
  Float factor = 1.0;  ///< the scale of a normal texture, the strength of an occlusion texture
};

/// Loads a bitmap from a file.
Result<BitmapOwner> LoadBitmap(const HostFilename& file) noexcept;

/// Whether images made from a file of this name are to be JPEG files. Case counts.
Bool IsJpegName(const String& fileName) noexcept;

// Each of these makes the image of a texture and sets its flag; without a bitmap it does nothing. Source bitmaps are only read, but
// for EncodeSingle's. They may run at the same time, each with a texture of its own.

/// The colours with the brightness of alphaBitmap, or its own alpha channel, as their alpha; white where there is no colourBitmap.
/// Of the size of the colours. @param isJpeg  without an alpha bitmap the image is a JPEG file; all others are PNG files.
Result<void> MergeBaseColor(ExportTexture& texture, const HostBitmap* colorBitmap, Bool isJpeg, const HostBitmap* alphaBitmap,
                            Bool keepRaw) noexcept;

/// Roughness as green, metallic as blue, and 255 for what there is none of, as for red. Of the size of the roughness bitmap. A PNG
/// file.
Result<void> MergeMetallicRoughness(ExportTexture& texture, const HostBitmap* roughnessBitmap, const HostBitmap* metallicBitmap,
                                    Bool keepRaw) noexcept;

/// The bitmap alone, in the form of the file that it came from. The bitmap loses its alpha channel.
Result<void> EncodeSingle(HostBitmap* bitmap, const String& fileName, ExportTexture& texture, Bool keepRaw) noexcept;

/// @param keepRaw  as for GltfImage::SetImageData.
Result<void> EncodeBitmap(HostBitmap* bitmap, ExportTexture& texture, Bool keepRaw, Bool asJpeg) noexcept;

}  // namespace q7z
