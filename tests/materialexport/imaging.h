#pragma once

// Bitmaps, encoders and a material exchange that are made for tests: files are made up, images are encoded as texts that show their
// pixels, and each can be told to fail.

#include <array>
#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "plugin/module/hostmaterial.h"
#include "plugin/module/hostservices.h"

namespace q7z::test
{

/// r, g, b and, where there is an alpha channel, a.
using Pixel = std::array<uint8_t, 4>;

/// A bitmap, and the image of it.
struct Picture
{
  int width = 0;
  int height = 0;
  bool hasAlpha = false;
  std::vector<Pixel> pixels;
  bool isLinear = false;  // of an image of an exchange: its profile was converted

  Picture() = default;
  /// @param colors  row by row; of one colour all pixels are. @param alpha  the same; empty for no channel.
  Picture(int width, int height, std::vector<std::array<uint8_t, 3>> colors, std::vector<uint8_t> alpha = {});

  HostBitmap* AsBitmap() { return reinterpret_cast<HostBitmap*>(this); }
  HostImage* AsImage() { return reinterpret_cast<HostImage*>(this); }
  /// "2x1 255,0,0 0,0,0,255", or "64x32 all 255,255,255" when that is what all pixels are.
  std::string Text() const;
};

inline Picture& ToPicture(const void* handle)
{
  return *static_cast<Picture*>(const_cast<void*>(handle));
}

class FakeBitmaps final : public HostBitmapTable
{
public:
  ~FakeBitmaps();

  std::map<std::string, Picture> files;
  std::map<std::string, int> loadCounts;  // by name, failed ones too
  int liveCount = 0;
  /// The call that fails, counted from 1 over all that can; 0 for none.
  int failAt = 0;
  int callCount = 0;

  HostBitmap* Alloc() noexcept override;
  void Free(HostBitmap* bitmap) noexcept override;
  Bool Init(HostBitmap* bitmap, Int32 width, Int32 height, Int32 bitsPerPixel) noexcept override;
  Bool Load(HostBitmap* bitmap, const HostFilename& name) noexcept override;
  Int32 GetWidth(const HostBitmap* bitmap) noexcept override { return ToPicture(bitmap).width; }
  Int32 GetHeight(const HostBitmap* bitmap) noexcept override { return ToPicture(bitmap).height; }
  /// Each pixel of the target shows the one of the source that it lies in.
  Bool ScaleInto(const HostBitmap* bitmap, HostBitmap* target) noexcept override;
  Bool HasAlpha(const HostBitmap* bitmap) noexcept override { return ToPicture(bitmap).hasAlpha; }
  Bool AddAlpha(HostBitmap* bitmap) noexcept override;
  void RemoveAlpha(HostBitmap* bitmap) noexcept override { ToPicture(bitmap).hasAlpha = false; }
  Bool ReadRow(const HostBitmap* bitmap, Int32 row, Byte* target, Bool withAlpha) noexcept override;
  Bool WriteRow(HostBitmap* bitmap, Int32 row, const Byte* source, Bool withAlpha) noexcept override;
  HostImage* GetImage(HostBitmap* bitmap) noexcept override;

private:
  bool IsCallFailing();
  std::mutex _mutex;
};

/// Encodes a picture as the text "png " or "jpg " and what Picture::Text says; of a converted one with " linear" behind it.
class FakeSessions final : public HostMediaSessions
{
public:
  /// Texts whose making fails.
  std::set<std::string> failing;
  /// What was encoded so far, in any order.
  std::multiset<std::string> encoded;
  bool conversionFails = false;

  Result<BaseArray<Byte>> Encode(const Char* sessionId, HostImage* image) noexcept override;
  Result<HostImage*> ConvertColorProfile(HostImage* image, const Char* profileId) noexcept override;
  UInt GetHash(const HostImage* image) noexcept override;
  Int GetByteCount(const HostImage* image) noexcept override;

private:
  std::mutex _mutex;
  std::vector<std::unique_ptr<Picture>> _converted;
};

/// What a node material hands over.
struct ExchangeRecord
{
  std::string materialTypeId = "net.tarno.material.portbundle.gltf";
  std::vector<std::pair<std::string, Data>> parameters;
  std::vector<std::pair<std::string, Picture*>> textures;  // null: a texture without pixels
};

class FakeExchange final : public HostMaterialExport
{
public:
  std::map<std::string, ExchangeRecord> records;  // by the material's name; others cannot be saved
  DataDictionary settings;                        // of the last call
  int callCount = 0;

  Result<HostMaterialExchangeData> Save(HostMaterial* material, const DataDictionary& exchangeSettings) noexcept override;
};

/// The numbers as an array.
Data Numbers(std::vector<double> numbers);

}  // namespace q7z::test
