#pragma once

// MaterialExportTest: scenes of triangles, each with a material, are saved, and members of the file are asked for
// by path. The host's bitmaps have files that are made up; encoders write images as texts; each can be told to fail.

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugin/module/hostmaterial.h"
#include "plugin/module/hostservices.h"
#include "tests/images/imagebuilders.h"
#include "tests/support/savedfile.h"

namespace q7z::test
{

class FaultyBitmaps final : public HostBitmapTable
{
public:
  explicit FaultyBitmaps(HostBitmapTable* base) noexcept : _base(base) {}

  std::map<std::string, std::shared_ptr<PixelImage>> files;
  std::map<std::string, int> loadCounts;  // by name, failed ones too
  int liveCount = 0;
  /// The call that fails, counted from 1 over all that can; 0 for none.
  int failAt = 0;
  int callCount = 0;

  HostBitmap* Alloc() noexcept override;
  void Free(HostBitmap* bitmap) noexcept override;
  Bool Init(HostBitmap* bitmap, Int32 width, Int32 height, Int32 bitsPerPixel) noexcept override
  {
    return !IsCallFailing() && _base->Init(bitmap, width, height, bitsPerPixel);
  }
  Bool Load(HostBitmap* bitmap, const HostFilename& name) noexcept override;
  Int32 GetWidth(const HostBitmap* bitmap) noexcept override { return _base->GetWidth(bitmap); }
  Int32 GetHeight(const HostBitmap* bitmap) noexcept override { return _base->GetHeight(bitmap); }
  Bool ScaleInto(const HostBitmap* bitmap, HostBitmap* target) noexcept override
  {
    return !IsCallFailing() && _base->ScaleInto(bitmap, target);
  }
  Bool HasAlpha(const HostBitmap* bitmap) noexcept override { return _base->HasAlpha(bitmap); }
  Bool AddAlpha(HostBitmap* bitmap) noexcept override { return !IsCallFailing() && _base->AddAlpha(bitmap); }
  void RemoveAlpha(HostBitmap* bitmap) noexcept override { _base->RemoveAlpha(bitmap); }
  Bool ReadRow(const HostBitmap* bitmap, Int32 row, Byte* target, Bool withAlpha) noexcept override
  {
    return !IsCallFailing() && _base->ReadRow(bitmap, row, target, withAlpha);
  }
  Bool WriteRow(HostBitmap* bitmap, Int32 row, const Byte* source, Bool withAlpha) noexcept override
  {
    return !IsCallFailing() && _base->WriteRow(bitmap, row, source, withAlpha);
  }
  HostImage* GetImage(HostBitmap* bitmap) noexcept override { return IsCallFailing() ? nullptr : _base->GetImage(bitmap); }

private:
  bool IsCallFailing();
  HostBitmapTable* _base;
  std::mutex _mutex;
};

/// Encodes an image as "png " or "jpg ", its size, and its pixels: "png 2x1 255,0,0 0,0,0", or "png 9x9 all 1,2,3" where they are
/// equal; of a converted one with " linear" behind it.
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
  Int GetByteCount(const HostImage* image) noexcept override { return ToHeadless(image)->GetByteCount(); }

private:
  std::mutex _mutex;
  std::map<HostImage*, std::unique_ptr<PlainImage>> _converted;
};

/// What a node material hands over.
struct ExchangeRecord
{
  std::string materialTypeId = "net.tarno.material.portbundle.gltf";
  std::vector<std::pair<std::string, Data>> parameters;
  std::vector<std::pair<std::string, PlainImage*>> textures;  // null: a texture without pixels
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

class MaterialExportTest : public testing::Test
{
protected:
  MaterialExportTest();
  ~MaterialExportTest() override;

  /// Saves a scene of as many triangles as there are materials, "M0", "M1", ..., given by their members such as "\"channels\": {}".
  /// @return what failed, or nothing.
  std::string Save(const std::vector<std::string>& materials);
  /// Saves a document.
  std::string Save(HeadlessDocument& document);

  std::string At(const std::string& path) const { return _content.At(path); }
  /// "png 1x1 255,0,0": the bytes of an image in the file, wherever they are.
  std::string Image(int index) const;
  int Count(const std::string& path) const { return _content.Count(path); }

  TestHost _host;
  FaultyBitmaps _bitmaps{_host.Host().GetTables().bitmap};
  FakeSessions _sessions;
  FakeExchange _exchange;
  Parameters _parameters;  // of the saver
  Int32 _status = 0;

private:
  SaveFolder _folder;
  SavedContent _content;
};

/// A scene document of triangles with these materials.
std::string TrianglesWith(const std::vector<std::string>& materials);

/// A channel that is on: "\"0\": {"on": true}", with the shader of a file when one is given.
std::string Channel(int number, std::string_view file = "");

}  // namespace q7z::test
