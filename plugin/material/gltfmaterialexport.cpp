#include "plugin/material/gltfmaterialexport.h"

#include "framework/check.h"
#include "plugin/module/hosttag.h"

namespace q7z
{

HostTextureTag* FindTextureTag(const HostObject* op) noexcept
{
  for (; op; op = op->GetUp())
  {
    if (HostTag* const tag = op->GetTag(kTextureTagType))
      return static_cast<HostTextureTag*>(tag);
  }
  return nullptr;
}

Result<void> MaterialDescriptor::Export(const HostTextureTag* textureTag, Bool exportTextures,
                                        const MaterialIndexMap& materialIndexMap, DupDetect* dupdetect, Bool keepRaw,
                                        const DataDictionary& settings) noexcept
{
  if (!textureTag)
    return {};
  CHECK_STATE(dupdetect);
  _dupdetect = dupdetect;
  HostMaterial* const material = textureTag->GetMaterial();
  if (!material || material->GetType() != kMaterialType)
  {
    _isDone = true;  // without a material: the mesh has none
    return {};
  }
  _material = material;
  if (const Int32* const index = materialIndexMap.Find(material))
  {
    _index = *index;
    return {};
  }
  _name = material->GetName();
  if (material->IsNodeBased())
    RETURN_IF_ERROR(ExchangeMaterialExport(settings, exportTextures, keepRaw));
  else
    RETURN_IF_ERROR(BaseMaterialExport(exportTextures, keepRaw));
  _isDone = true;
  return {};
}

Result<String> MaterialDescriptor::GetBitmapFilename(Int32 index) const noexcept
{
  if (index < 0 || index >= BCOUNT)
    return MAKE_ERROR(ErrorClass::kIllegalArgument, "MaterialDescriptor::GetBitmapFilename Index Out of Range"_s);
  return _fileNames[index];
}

Result<const ExportTexture*> MaterialDescriptor::GetTexture(Int32 kind) const noexcept
{
  if (kind < 0 || kind >= kTextureKindCount)
    return MAKE_ERROR(ErrorClass::kIllegalArgument, "MaterialDescriptor::GetTexture Index Out of Range"_s);
  return &_textures[kind];
}

ImageKey MaterialDescriptor::GetImageKey(TextureKind kind) const noexcept
{
  switch (kind)
  {
    case kBaseColorKind: return {_fileNames[kBaseColorBitmap], _fileNames[kAlphaBitmap]};
    case kMetallicRoughnessKind: return {_fileNames[kRoughnessBitmap], _fileNames[kMetallicBitmap]};
    case kNormalKind: return {_fileNames[kNormalBitmap], String()};
    case kOcclusionKind: return {_fileNames[kOcclusionBitmap], String()};
    default: return {_fileNames[kEmissiveBitmap], String()};
  }
}

}  // namespace q7z
