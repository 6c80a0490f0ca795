#include "plugin/document/gltfmaterial.h"

#include "framework/check.h"
#include "plugin/document/gltfdata.h"
#include "plugin/document/gltfkeys.h"
#include "plugin/document/gltfutilities.h"

namespace q7z
{

namespace
{

/// The members of an object member. One that is missing, or no object, counts as empty.
DataDictionary ReadMembers(const DataDictionary& element, const DataKey& key) noexcept
{
  Result<DataDictionary> members = ReadDictionary(element, key);
  return members.HasError() ? DataDictionary() : std::move(members).GetValue();
}

/// A reference is read where there is an object for it, even an empty one, which then lacks its index.
Result<void> ReadTexture(const DataDictionary& element, const DataKey& key, GltfTextureInfo& texture) noexcept
{
  const Result<DataDictionary> members = ReadDictionary(element, key);
  return members.HasError() ? Result<void>() : texture.ReadFromJson(members.GetValue());
}

}  // namespace

Result<void> GltfTexture::ReadFromJson(const DataDictionary& element) noexcept
{
  if (element.IsEmpty())
    return {};  // one that says nothing is there all the same, without an image
  _samplerIndex = ReadInt(element, keys::kSampler, -1);
  ASSIGN_OR_RETURN(_sourceIndex, ReadRequiredInt(element, keys::kSource));
  return {};
}

Result<void> GltfTexture::Resolve(GltfData& gltfData) noexcept
{
  _sampler = gltfData.samplers.Find(_samplerIndex);
  CHECK_STATE(_sampler);
  _source = gltfData.images.Find(_sourceIndex);
  CHECK_STATE(_source);
  return _source->Resolve(gltfData);
}

Result<const GltfImage*> GltfTexture::GetImage() const noexcept
{
  CHECK_STATE(IsValid());
  CHECK_STATE(_source);
  return _source;
}

Result<void> GltfTextureInfo::ReadFromJson(const DataDictionary& element) noexcept
{
  ASSIGN_OR_RETURN(_index, ReadRequiredInt(element, keys::kIndex));
  _texCoord = ReadInt(element, keys::kTexCoord, 0);
  _isInitialized = true;
  return {};
}

Result<void> GltfTextureInfo::Resolve(GltfData& gltfData) noexcept
{
  if (_index == -1)
    return {};
  _texture = gltfData.textures.Find(_index);
  CHECK_STATE(_texture);
  return _texture->Resolve(gltfData);
}

Result<const GltfImage*> GltfTextureInfo::GetImage() const noexcept
{
  CHECK_STATE(IsInitialized());
  CHECK_STATE(_texture);
  return _texture->GetImage();
}

Result<void> GltfTextureInfo::SaveImageData(const Url& url) const noexcept
{
  if (IsInitialized() && _index == -1)
    return {};
  ASSIGN_OR_RETURN(const GltfImage* const image, GetImage());
  return image->SaveImageData(url);
}

Result<void> GltfMaterial::ReadFromJson(const DataDictionary& element) noexcept
{
  RETURN_IF_ERROR(ReadMetallicRoughness(ReadMembers(element, keys::kPbrMetallicRoughness)));
  RETURN_IF_ERROR(ReadTexture(element, keys::kNormalTexture, normalTexture));
  normalScale = ReadFloat(ReadMembers(element, keys::kNormalTexture), keys::kScale, normalScale);
  RETURN_IF_ERROR(ReadTexture(element, keys::kOcclusionTexture, occlusionTexture));
  occlusionStrength = ReadFloat(ReadMembers(element, keys::kOcclusionTexture), keys::kStrength, occlusionStrength);
  RETURN_IF_ERROR(ReadTexture(element, keys::kEmissiveTexture, emissiveTexture));
  RETURN_IF_ERROR(ReadEmissiveFactor(element));
  alphaMode = ReadString(element, keys::kAlphaMode, alphaMode);
  alphaCutoff = ReadFloat(element, keys::kAlphaCutoff, alphaCutoff);
  doubleSided = ReadBool(element, keys::kDoubleSided, doubleSided);
  name = ReadString(element, keys::kName, String());
  return {};
}

Result<void> GltfMaterial::ReadMetallicRoughness(const DataDictionary& element) noexcept
{
  BaseArray<Float> baseColorFactorArr;
  ASSIGN_OR_RETURN(const Bool hasFactor, ReadFloatArray(element, keys::kBaseColorFactor, baseColorFactorArr));
  if (hasFactor)
  {
    CHECK_STATE(baseColorFactorArr.GetCount() == 4);
    baseColorFactor = {baseColorFactorArr[0], baseColorFactorArr[1], baseColorFactorArr[2], baseColorFactorArr[3]};
  }
  RETURN_IF_ERROR(ReadTexture(element, keys::kBaseColorTexture, baseColorTexture));
  metallicFactor = ReadFloat(element, keys::kMetallicFactor, metallicFactor);
  roughnessFactor = ReadFloat(element, keys::kRoughnessFactor, roughnessFactor);
  return ReadTexture(element, keys::kMetallicRoughnessTexture, metallicRoughnessTexture);
}

/// Read as whole numbers, deliberately so: a fraction is not kept.
Result<void> GltfMaterial::ReadEmissiveFactor(const DataDictionary& element) noexcept
{
  BaseArray<Int> emissiveFactorArr;
  ASSIGN_OR_RETURN(const Bool hasFactor, ReadIntArray(element, keys::kEmissiveFactor, emissiveFactorArr));
  if (!hasFactor)
    return {};
  CHECK_STATE(emissiveFactorArr.GetCount() == 3);
  emissiveFactor = {static_cast<Float>(emissiveFactorArr[0]), static_cast<Float>(emissiveFactorArr[1]),
                    static_cast<Float>(emissiveFactorArr[2])};
  return {};
}

Result<void> GltfMaterial::ResolveMaterial(GltfData* gltfData) noexcept
{
  CHECK_ARGUMENT(gltfData);
  RETURN_IF_ERROR(baseColorTexture.Resolve(*gltfData));
  RETURN_IF_ERROR(metallicRoughnessTexture.Resolve(*gltfData));
  RETURN_IF_ERROR(normalTexture.Resolve(*gltfData));
  RETURN_IF_ERROR(occlusionTexture.Resolve(*gltfData));
  return emissiveTexture.Resolve(*gltfData);
}

}  // namespace q7z
