// Classic materials: channels and the first reflectance layer become factors, their bitmaps become images.

#include <algorithm>

#include "framework/check.h"
#include "plugin/material/gltfmaterialexport.h"
#include "plugin/material/gltfmaterialexportcolor.h"
#include "plugin/material/gltfmaterialexportjobs.h"
#include "plugin/module/diagnostics.h"

namespace q7z
{

namespace
{

// Channels. Reflectance has two numbers.
constexpr Int32 kColorChannel = 0;
constexpr Int32 kEmissiveChannel = 1;
constexpr Int32 kTransparencyChannel = 2;
constexpr Int32 kReflectanceChannel = 3;
constexpr Int32 kBumpChannel = 6;
constexpr Int32 kAlphaChannel = 7;
constexpr Int32 kSecondReflectanceChannel = 8;
constexpr Int32 kOcclusionChannel = 12;
constexpr Int32 kNormalChannel = 13;

// Parameters of a material.
constexpr Int32 kColor = 2100;
constexpr Int32 kColorBrightness = 2101;
constexpr Int32 kColorMix = 2102;
constexpr Int32 kColorMixMode = 2103;
constexpr Int32 kOcclusionStrength = 2201;
constexpr Int32 kEmissiveColor = 2300;
constexpr Int32 kEmissiveBrightness = 2301;
constexpr Int32 kTransparencyColor = 2400;
constexpr Int32 kTransparencyBrightness = 2401;
constexpr Int32 kNormalStrength = 3300;
constexpr Int32 kBumpStrength = 1009;

// Parameters of a reflectance layer, from its first one on.
constexpr Int32 kLayerRoughness = 32;
constexpr Int32 kLayerMetallic = 36;
constexpr Int32 kLayerRoughnessShader = 40;
constexpr Int32 kLayerMetallicShader = 44;
constexpr Int32 kLayerBump = 48;
constexpr Int32 kLayerBumpStrength = 52;
constexpr Int32 kLayerNormalShader = 59;
constexpr Int32 kLayerColor = 65;
constexpr Int32 kLayerBrightness = 66;
constexpr Int32 kLayerColorShader = 67;
constexpr Int32 kLayerMixMode = 68;
constexpr Int32 kLayerMix = 69;

constexpr Int32 kMultiply = 3;  // the one way to mix colour and texture that the file format knows
constexpr Vector kWhite{1, 1, 1};

/// Where a bitmap comes from: a channel's shader, or one of the reflectance layer's.
struct SourcePlace
{
  Int32 id;
  Bitmaps bitmap;
};

// Of several for one bitmap the last that names a file counts.
constexpr SourcePlace kChannelSources[] = {
  {kColorChannel, kBaseColorBitmap}, {kAlphaChannel, kAlphaBitmap},         {kNormalChannel, kNormalBitmap},
  {kBumpChannel, kNormalBitmap},     {kOcclusionChannel, kOcclusionBitmap}, {kEmissiveChannel, kEmissiveBitmap},
};
constexpr SourcePlace kLayerSources[] = {
  {kLayerColorShader, kBaseColorBitmap},
  {kLayerRoughnessShader, kRoughnessBitmap},
  {kLayerMetallicShader, kMetallicBitmap},
  {kLayerNormalShader, kNormalBitmap},
};

HostFilename FindFile(const HostShader* shader, const HostDocument* document) noexcept
{
  return shader ? g_hostTables->material->ResolveShaderFile(shader, document) : HostFilename();
}

/// A file that is loaded for the first time.
struct BitmapLoad
{
  HostFilename file;
  Result<BitmapOwner> bitmap = BitmapOwner();
};

}  // namespace

/// A bitmap that the material asks for.
struct MaterialDescriptor::Source
{
  Int32 channel = 0;
  Bitmaps bitmap = kBaseColorBitmap;
  HostFilename file;
};

Result<void> MaterialDescriptor::BaseMaterialExport(Bool exportTextures, Bool keepRaw) noexcept
{
  RETURN_IF_ERROR(FindReflectionLayer());
  if (exportTextures)
  {
    BaseArray<Source> sources;
    RETURN_IF_ERROR(FindFileNames(sources));
    RETURN_IF_ERROR(LoadBitmaps(sources));
    TakeBitmaps(sources);
    RETURN_IF_ERROR(SettleDuplicates());
  }
  ReadTransparency();
  ReadEmissive();
  ReadBaseColor();
  ReadOcclusion();
  return RunEncoders(keepRaw);
}

Result<void> MaterialDescriptor::FindReflectionLayer() noexcept
{
  if (!IsOn(kReflectanceChannel) && !IsOn(kSecondReflectanceChannel))
    return {};
  const Int32 reflection_layer = g_hostTables->material->GetReflectanceLayerId(_material, 0);
  CHECK_STATE(reflection_layer);
  // All of a layer's parameters have an id; what else a document may call a layer has no numbers to read.
  if (reflection_layer > 0 && reflection_layer <= INT32_MAX - kLayerMix)
    _reflectionLayer = reflection_layer;
  return {};
}

Result<void> MaterialDescriptor::FindFileNames(BaseArray<Source>& sources) const noexcept
{
  const HostDocument* const document = _material->GetDocument();
  for (const SourcePlace& place : kChannelSources)
  {
    if (!IsOn(place.id))
      continue;
    HostFilename file = FindFile(g_hostTables->material->GetChannelShader(_material, place.id), document);
    if (file.IsPopulated())
      RETURN_IF_ERROR(sources.Append({place.id, place.bitmap, std::move(file)}));
  }
  if (_reflectionLayer == 0)
    return {};
  for (const SourcePlace& place : kLayerSources)
  {
    HostFilename file = FindFile(g_hostTables->material->GetLayerShader(_material, LayerParameter(place.id)), document);
    if (file.IsPopulated())
      RETURN_IF_ERROR(sources.Append({kReflectanceChannel, place.bitmap, std::move(file)}));
  }
  return {};
}

/// Loads each file that nobody has loaded yet, once. Of several failures the first source's is told, whichever came first.
Result<void> MaterialDescriptor::LoadBitmaps(const BaseArray<Source>& sources) noexcept
{
  const HostMaterial* const material = _material;
  DupDetect* const dupdetect = _dupdetect;
  CHECK_STATE(material);
  CHECK_STATE(dupdetect);
  BaseArray<BitmapLoad> loads;
  for (const Source& source : sources)
  {
    const String& name = source.file.GetPath();
    const auto isTheSame = [&](const BitmapLoad& load) { return load.file.GetPath() == name; };
    if (!dupdetect->FindBitmap(name) && std::none_of(loads.begin(), loads.end(), isTheSame))
      RETURN_IF_ERROR(loads.Append({source.file}));
  }
  RETURN_IF_ERROR(RunJobs(loads.GetCount(), 1,
                          [&](Int first, Int end) -> Result<void>
                          {
                            for (Int i = first; i < end; ++i)
                              loads[i].bitmap = LoadBitmap(loads[i].file);
                            return {};
                          }));
  for (BitmapLoad& load : loads)
  {
    const Result<BitmapOwner>& bmp = load.bitmap;
    if (bmp.HasError() && bmp.GetError().GetClass() == ErrorClass::kOutOfMemory)
      return bmp.GetError();
    CHECK_STATE(bmp);
    RETURN_IF_ERROR(dupdetect->AddBitmap(load.file.GetPath(), std::move(load.bitmap).GetValue()));
  }
  return {};
}

void MaterialDescriptor::TakeBitmaps(const BaseArray<Source>& sources) noexcept
{
  for (const Source& source : sources)
  {
    _fileNames[source.bitmap] = source.file.GetPath();
    _bitmaps[source.bitmap] = _dupdetect->FindBitmap(source.file.GetPath());
    if (source.bitmap == kBaseColorBitmap)
      _colorSource = source.channel;
    if (source.bitmap == kNormalBitmap)
      _normalSource = source.channel;
  }
  // Whether the channel names a file or not.
  if (IsOn(kAlphaChannel))
    _factors.alphaMode = "BLEND"_s;
}

Result<void> MaterialDescriptor::SettleDuplicates() noexcept
{
  const Bool isUsed[kTextureKindCount] = {
    _bitmaps[kBaseColorBitmap] || _bitmaps[kAlphaBitmap],
    _bitmaps[kRoughnessBitmap] || _bitmaps[kMetallicBitmap],
    _bitmaps[kNormalBitmap] != nullptr,
    _bitmaps[kOcclusionBitmap] != nullptr,
    _bitmaps[kEmissiveBitmap] != nullptr,
  };
  for (Int32 kind = 0; kind < kTextureKindCount; ++kind)
  {
    if (isUsed[kind])
      RETURN_IF_ERROR(SettleDuplicate(static_cast<TextureKind>(kind)));
  }
  return {};
}

Result<void> MaterialDescriptor::SettleDuplicate(TextureKind kind) noexcept
{
  const ImageKey key = GetImageKey(kind);
  if (!_dupdetect->FindImage(key))
    return _dupdetect->SetImage(key, DupDetect::kReserved);
  _textures[kind].hasImage = true;
  _isShared[kind] = true;
  return {};
}

HostValue MaterialDescriptor::GetValue(Int32 parameter) const noexcept
{
  HostValue value;
  return _material->GetParameter(parameter, value) ? value : HostValue();
}

void MaterialDescriptor::ReadTransparency() noexcept
{
  if (!IsOn(kTransparencyChannel))
    return;
  const Vector hsv = RgbToHsv(GetValue(kTransparencyColor).GetVector());
  const Float transparency = GetValue(kTransparencyBrightness).GetFloat() * hsv.z;
  if (transparency > 0)
    _factors.alphaMode = "BLEND"_s;
  _factors.baseColor.w = 1 - transparency;
}

void MaterialDescriptor::ReadEmissive() noexcept
{
  if (!IsOn(kEmissiveChannel))
    return;
  Vector hsv = RgbToHsv(GetValue(kEmissiveColor).GetVector());
  hsv.z *= GetValue(kEmissiveBrightness).GetFloat(1);
  _factors.emissive = ClampToUnit(HsvToRgb(hsv));
  _wantsEncoder[kEmissiveKind] = true;
}

void MaterialDescriptor::ReadBaseColor() noexcept
{
  Vector color = kWhite;
  Float brightness = 1;
  Float mix = 1;
  Int mode = kMultiply;
  const Bool hasTexture = _colorSource != -1 && _bitmaps[kBaseColorBitmap];
  if (IsOn(kColorChannel))
  {
    color = GetValue(kColor).GetVector(kWhite);
    brightness = GetValue(kColorBrightness).GetFloat(1);
    mix = hasTexture ? GetValue(kColorMix).GetFloat(1) : 1;
    mode = hasTexture ? GetValue(kColorMixMode).GetInt(0) : kMultiply;
  }
  else if (_reflectionLayer)
  {
    const auto getReal = [this](Int32 offset)
    {
      const HostValue value = GetValue(LayerParameter(offset));
      return value.GetKind() == HostValueKind::kFloat ? value.GetFloat() : 1;
    };
    const HostValue layerMode = GetValue(LayerParameter(kLayerMixMode));
    color = GetValue(LayerParameter(kLayerColor)).GetVector(kWhite);
    brightness = getReal(kLayerBrightness);
    mix = hasTexture ? getReal(kLayerMix) : 1;
    mode = hasTexture && layerMode.GetKind() == HostValueKind::kInt ? layerMode.GetInt() : kMultiply;
  }
  Vector hsv = RgbToHsv(color);
  hsv.z = hsv.z * brightness * mix;
  // A texture that covers the colour is not tinted.
  color = mode == kMultiply ? ClampToUnit(HsvToRgb(hsv)) : kWhite;
  _factors.baseColor = {color.x, color.y, color.z, _factors.baseColor.w};
  if (_reflectionLayer)
  {
    // Deliberately with the brightness of the colour, whichever of the two it came from.
    _factors.roughness = ClampToUnit(brightness * GetValue(LayerParameter(kLayerRoughness)).GetFloat());
    _factors.metallic = ClampToUnit(brightness * GetValue(LayerParameter(kLayerMetallic)).GetFloat());
  }
  _textures[kNormalKind].factor = ReadNormalScale();
  _wantsEncoder[kBaseColorKind] = _wantsEncoder[kMetallicRoughnessKind] = _wantsEncoder[kNormalKind] = true;
}

Float MaterialDescriptor::ReadNormalScale() const noexcept
{
  switch (_normalSource)
  {
    case kReflectanceChannel:
      return ClampToUnit(GetValue(LayerParameter(kLayerBump)).GetFloat() *
                         GetValue(LayerParameter(kLayerBumpStrength)).GetFloat());
    case kNormalChannel: return GetValue(kNormalStrength).GetFloat(1);
    case kBumpChannel: return GetValue(kBumpStrength).GetFloat(1);
    default: return 1;
  }
}

void MaterialDescriptor::ReadOcclusion() noexcept
{
  if (!IsOn(kOcclusionChannel))
    return;
  _textures[kOcclusionKind].factor = GetValue(kOcclusionStrength).GetFloat();
  _wantsEncoder[kOcclusionKind] = true;
}

/// Whether a merged texture reads the bitmap that the encoder of another kind takes the alpha channel from.
Bool MaterialDescriptor::ReadsBitmapOf(TextureKind kind) const noexcept
{
  constexpr Int32 kOwnBitmap[] = {BCOUNT, BCOUNT, kNormalBitmap, kOcclusionBitmap, kEmissiveBitmap};
  if (kOwnBitmap[kind] == BCOUNT)
    return false;
  return std::find(_bitmaps, _bitmaps + kNormalBitmap, _bitmaps[kOwnBitmap[kind]]) != _bitmaps + kNormalBitmap;
}

/// Makes the images, at the same time where none changes what another reads. A texture that cannot be made is left out of the file,
/// and the export goes on.
Result<void> MaterialDescriptor::RunEncoders(Bool keepRaw) noexcept
{
  Result<void> results[kTextureKindCount];
  for (const Bool isLater : {false, true})
  {
    TextureKind kinds[kTextureKindCount];
    Int count = 0;
    for (Int32 i = 0; i < kTextureKindCount; ++i)
    {
      const TextureKind kind = static_cast<TextureKind>(i);
      if (_wantsEncoder[kind] && !_isShared[kind] && ReadsBitmapOf(kind) == isLater)
        kinds[count++] = kind;
    }
    RETURN_IF_ERROR(RunJobs(count, 1,
                            [&](Int first, Int end) -> Result<void>
                            {
                              for (Int i = first; i < end; ++i)
                                results[kinds[i]] = Encode(kinds[i], keepRaw);
                              return {};
                            }));
  }
  for (const Result<void>& result : results)
  {
    if (result.HasError())
      PrintError("A texture could not be encoded"_s, result.GetError());
  }
  return {};
}

Result<void> MaterialDescriptor::Encode(TextureKind kind, Bool keepRaw) noexcept
{
  ExportTexture& texture = _textures[kind];
  switch (kind)
  {
    case kBaseColorKind:
      return MergeBaseColor(texture, _bitmaps[kBaseColorBitmap], IsJpegName(_fileNames[kBaseColorBitmap]), _bitmaps[kAlphaBitmap],
                            keepRaw);
    case kMetallicRoughnessKind:
      return MergeMetallicRoughness(texture, _bitmaps[kRoughnessBitmap], _bitmaps[kMetallicBitmap], keepRaw);
    case kNormalKind: return EncodeSingle(_bitmaps[kNormalBitmap], _fileNames[kNormalBitmap], texture, keepRaw);
    case kOcclusionKind: return EncodeSingle(_bitmaps[kOcclusionBitmap], _fileNames[kOcclusionBitmap], texture, keepRaw);
    default: return EncodeSingle(_bitmaps[kEmissiveBitmap], _fileNames[kEmissiveBitmap], texture, keepRaw);
  }
}

}  // namespace q7z
