#pragma once

// MaterialDescriptor: the factors and textures of one material as a file holds them, taken from the material of an exported object.
// A classic material is read channel by channel, its bitmaps merged and encoded; a node material hands over a record of the
// format's own kind. A descriptor lives from the filling of a mesh to the writing of its members.

#include "framework/data.h"
#include "plugin/material/gltfmaterialbitmaps.h"
#include "plugin/module/hostservices.h"
#include "plugin/module/hosttag.h"

namespace q7z
{

/// The bitmaps that textures are made from. The first two belong to the base colour, the next two to metallic and roughness.
enum Bitmaps : Int32
{
  kBaseColorBitmap = 0,
  kAlphaBitmap = 1,
  kRoughnessBitmap = 2,
  kMetallicBitmap = 3,
  kNormalBitmap = 4,
  kOcclusionBitmap = 5,
  kEmissiveBitmap = 6,
  BCOUNT = 7,
};

/// The textures of a material, in the order in which they are written.
enum TextureKind : Int32
{
  kBaseColorKind = 0,
  kMetallicRoughnessKind = 1,
  kNormalKind = 2,
  kOcclusionKind = 3,
  kEmissiveKind = 4,
  kTextureKindCount = 5,
};

/// The materials of a file, by the host's.
using MaterialIndexMap = HashMap<HostMaterial*, Int32>;

struct MaterialFactors
{
  Vector4 baseColor{1, 1, 1, 1};
  Float metallic = 1;
  Float roughness = 1;
  Vector emissive;
  String alphaMode = "OPAQUE"_s;
  Float alphaCutoff = 0.5;
};

/// The first texture tag of op or, where it has none, of the nearest object above that has one; null without any.
HostTextureTag* FindTextureTag(const HostObject* op) noexcept;

class MaterialDescriptor
{
public:
  /// Reads the material of a tag. Without a tag, and for a material of another kind than the host's own, there is none.
  /// @param materialIndexMap  a material that is in it is not read again.
  /// @param dupdetect  that of the whole export; must outlive the descriptor.
  /// @param keepRaw  images stay bytes; else they become data URIs.
  /// @param settings  of the material exchange.
  Result<void> Export(const HostTextureTag* textureTag, Bool exportTextures, const MaterialIndexMap& materialIndexMap,
                      DupDetect* dupdetect, Bool keepRaw, const DataDictionary& settings) noexcept;

  /// The index that the material has in the file already, or -1.
  Int32 GetIndex() const noexcept { return _index; }
  /// Whether the material is to be written and gets an index then.
  Bool IsWanted() const noexcept { return _isDone && _material && _index < 0; }
  HostMaterial* GetMaterial() const noexcept { return _material; }
  const String& GetName() const noexcept { return _name; }
  const MaterialFactors& GetFactors() const noexcept { return _factors; }

  /// The name that a bitmap is known by; empty when there is none.
  Result<String> GetBitmapFilename(Int32 index) const noexcept;
  Result<const ExportTexture*> GetTexture(Int32 kind) const noexcept;
  /// What the image of a texture is known by.
  ImageKey GetImageKey(TextureKind kind) const noexcept;

private:
  struct Source;
  struct Encoding;

  // gltfmaterialexportbase.cpp: classic materials.
  Result<void> BaseMaterialExport(Bool exportTextures, Bool keepRaw) noexcept;
  Result<void> FindReflectionLayer() noexcept;
  Result<void> FindFileNames(BaseArray<Source>& sources) const noexcept;
  Result<void> LoadBitmaps(const BaseArray<Source>& sources) noexcept;
  void TakeBitmaps(const BaseArray<Source>& sources) noexcept;
  Result<void> SettleDuplicates() noexcept;
  Result<void> SettleDuplicate(TextureKind kind) noexcept;
  void ReadTransparency() noexcept;
  void ReadEmissive() noexcept;
  void ReadBaseColor() noexcept;
  Float ReadNormalScale() const noexcept;
  void ReadOcclusion() noexcept;
  Result<void> RunEncoders(Bool keepRaw) noexcept;
  Result<void> Encode(TextureKind kind, Bool keepRaw) noexcept;
  Bool ReadsBitmapOf(TextureKind kind) const noexcept;
  Bool IsOn(Int32 channel) const noexcept { return _material->GetChannelState(channel); }
  HostValue GetValue(Int32 parameter) const noexcept;
  Int32 LayerParameter(Int32 offset) const noexcept { return _reflectionLayer + offset; }

  // gltfmaterialexportexchange.cpp: node materials.
  Result<void> ExchangeMaterialExport(const DataDictionary& settings, Bool exportTextures, Bool keepRaw) noexcept;
  Result<void> EncodeTextures(const HostMaterialExchangeData& record, Bool keepRaw) noexcept;
  Result<void> TakeTexture(Encoding& encoding, HostMediaSessions& sessions, Bool keepRaw) noexcept;
  Result<void> ReadParameters(const HostMaterialExchangeData& record) noexcept;

  String _name;
  MaterialFactors _factors;
  ExportTexture _textures[kTextureKindCount];
  HostMaterial* _material = nullptr;  // not owned; null when there is nothing to write
  Int32 _index = -1;                  // into materials
  Bool _isDone = false;
  HostBitmap* _bitmaps[BCOUNT] = {};  // owned by _dupdetect
  String _fileNames[BCOUNT];
  Int32 _colorSource = -1;   // the channel that bitmap 0 came from
  Int32 _normalSource = -1;  // the channel that bitmap 4 came from
  DupDetect* _dupdetect = nullptr;
  Int32 _reflectionLayer = 0;  // first parameter of the first layer, 0 when reflectance is off
  Bool _wantsEncoder[kTextureKindCount] = {};
  Bool _isShared[kTextureKindCount] = {};  // the image is written, or will be made, for another texture
};

}  // namespace q7z
