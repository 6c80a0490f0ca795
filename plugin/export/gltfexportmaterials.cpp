// The elements of materials, textures, samplers and images. Each texture gets a sampler of its own; images are shared by all that are
// made from the same bitmaps.

#include "framework/check.h"
#include "plugin/document/gltfkeys.h"
#include "plugin/export/gltfexporter.h"

namespace q7z
{

namespace
{

Result<Data> MakeNumbers(std::initializer_list<Float> numbers) noexcept
{
  BaseArray<Data> elements;
  for (const Float number : numbers)
    RETURN_IF_ERROR(elements.Append(Data(number)));
  return Data::CreateArray(std::move(elements));
}

Result<DataDictionary> MakeSampler(const GltfSampler& sampler) noexcept
{
  DataDictionary element;
  RETURN_IF_ERROR(element.Set(keys::kMagFilter, Data(sampler.magFilter)));
  RETURN_IF_ERROR(element.Set(keys::kMinFilter, Data(sampler.minFilter)));
  RETURN_IF_ERROR(element.Set(keys::kWrapS, Data(sampler.wrapS)));
  RETURN_IF_ERROR(element.Set(keys::kWrapT, Data(sampler.wrapT)));
  return element;
}

}  // namespace

Result<void> GLTFExporter::FillMaterial(const HostPolygonObject* op, MaterialDescriptor& material) noexcept
{
  return material.Export(FindTextureTag(op), _options.exportTextures, _materialIndices, &_textureCache, _options.IsGlb(),
                         _exchangeData);
}

/// Refers to the material of a primitive, which becomes an element when it is none yet.
Result<void> GLTFExporter::SetMaterial(const MaterialDescriptor& material, DataDictionary& primitive) noexcept
{
  Int32 index = material.GetIndex();
  if (material.IsWanted())
  {
    ASSIGN_OR_RETURN(const Int written, WriteMaterial(material));
    index = static_cast<Int32>(written);
    RETURN_IF_ERROR(_materialIndices.Set(material.GetMaterial(), index));
  }
  return index < 0 ? Result<void>() : primitive.Set(keys::kMaterial, Data(index));
}

Result<Int> GLTFExporter::WriteMaterial(const MaterialDescriptor& material) noexcept
{
  const MaterialFactors& factors = material.GetFactors();
  const Vector4& color = factors.baseColor;
  ASSIGN_OR_RETURN(Data baseColorFactor, MakeNumbers({color.x, color.y, color.z, color.w}));
  ASSIGN_OR_RETURN(Data emissiveFactor, MakeNumbers({factors.emissive.x, factors.emissive.y, factors.emissive.z}));

  DataDictionary pbr;
  RETURN_IF_ERROR(SetTexture(material, kBaseColorKind, keys::kBaseColorTexture, pbr));
  RETURN_IF_ERROR(pbr.Set(keys::kBaseColorFactor, std::move(baseColorFactor)));
  RETURN_IF_ERROR(SetTexture(material, kMetallicRoughnessKind, keys::kMetallicRoughnessTexture, pbr));
  RETURN_IF_ERROR(pbr.Set(keys::kMetallicFactor, Data(factors.metallic)));
  RETURN_IF_ERROR(pbr.Set(keys::kRoughnessFactor, Data(factors.roughness)));

  DataDictionary element;
  RETURN_IF_ERROR(element.Set(keys::kPbrMetallicRoughness, Data(std::move(pbr))));
  RETURN_IF_ERROR(SetTexture(material, kNormalKind, keys::kNormalTexture, element));
  RETURN_IF_ERROR(SetTexture(material, kOcclusionKind, keys::kOcclusionTexture, element));
  RETURN_IF_ERROR(SetTexture(material, kEmissiveKind, keys::kEmissiveTexture, element));
  RETURN_IF_ERROR(element.Set(keys::kEmissiveFactor, std::move(emissiveFactor)));
  RETURN_IF_ERROR(element.Set(keys::kAlphaMode, Data(factors.alphaMode)));
  if (factors.alphaMode == "MASK"_s)
    RETURN_IF_ERROR(element.Set(keys::kAlphaCutoff, Data(factors.alphaCutoff)));
  // Of the user's choosing, for all materials.
  RETURN_IF_ERROR(element.Set(keys::kDoubleSided, Data(_options.doubleSidedMaterials)));
  RETURN_IF_ERROR(element.Set(keys::kName, Data(material.GetName())));
  RETURN_IF_ERROR(_materials.Append(Data(std::move(element))));
  return _materials.GetCount() - 1;
}

/// Refers to a texture of a material, when there is one; its image, sampler and texture become elements.
Result<void> GLTFExporter::SetTexture(const MaterialDescriptor& material, TextureKind kind, const DataKey& member,
                                      DataDictionary& owner) noexcept
{
  ASSIGN_OR_RETURN(const ExportTexture* const texture, material.GetTexture(kind));
  if (!texture->hasImage)
    return {};
  const ImageKey key = material.GetImageKey(kind);
  const Int32* const sourceIndex = _textureCache.FindImage(key);
  CHECK_STATE(sourceIndex);
  Int imageIndex = *sourceIndex;
  if (imageIndex == DupDetect::kReserved)
  {
    // The texture that was to make the image for this one, too, could not.
    if (texture->image.GetData().IsEmpty())
      return {};
    ASSIGN_OR_RETURN(imageIndex, WriteImage(texture->image));
    RETURN_IF_ERROR(_textureCache.SetImage(key, static_cast<Int32>(imageIndex)));
  }
  DataDictionary reference;
  ASSIGN_OR_RETURN(const Int textureIndex, WriteTexture(texture->sampler, imageIndex));
  RETURN_IF_ERROR(reference.Set(keys::kIndex, Data(textureIndex)));
  if (kind == kNormalKind)
    RETURN_IF_ERROR(reference.Set(keys::kScale, Data(texture->factor)));
  if (kind == kOcclusionKind)
    RETURN_IF_ERROR(reference.Set(keys::kStrength, Data(texture->factor)));
  return owner.Set(member, Data(std::move(reference)));
}

Result<Int> GLTFExporter::WriteTexture(const GltfSampler& sampler, Int imageIndex) noexcept
{
  ASSIGN_OR_RETURN(DataDictionary samplerElement, MakeSampler(sampler));
  RETURN_IF_ERROR(_samplers.Append(Data(std::move(samplerElement))));
  DataDictionary element;
  RETURN_IF_ERROR(element.Set(keys::kSampler, Data(_samplers.GetCount() - 1)));
  RETURN_IF_ERROR(element.Set(keys::kSource, Data(imageIndex)));
  RETURN_IF_ERROR(_textures.Append(Data(std::move(element))));
  return _textures.GetCount() - 1;
}

Result<Int> GLTFExporter::WriteImage(const GltfImage& image) noexcept
{
  DataDictionary element;
  if (_options.IsGlb())
  {
    ASSIGN_OR_RETURN(const Int view, AppendToGlb(image));
    RETURN_IF_ERROR(element.Set(keys::kBufferView, Data(view)));
    RETURN_IF_ERROR(element.Set(keys::kMimeType, Data(image.GetMimeType())));
  }
  else
    RETURN_IF_ERROR(element.Set(keys::kUri, Data(image.GetURIString())));
  RETURN_IF_ERROR(_images.Append(Data(std::move(element))));
  return _images.GetCount() - 1;
}

}  // namespace q7z
