#pragma once

// The records of `materials` and `textures` on the reading side, and the references between them. The material import works on
// them; they live in the document of one load. An export writes its materials without records of their own.

#include "framework/vector.h"
#include "plugin/document/gltfimage.h"

namespace q7z
{

struct GltfData;

class GltfTexture
{
public:
  Result<void> ReadFromJson(const DataDictionary& element) noexcept;
  /// Finds sampler and image, and resolves the image.
  Result<void> Resolve(GltfData& gltfData) noexcept;
  /// Whether there is an image.
  Bool IsValid() const noexcept { return _sourceIndex != -1 && _source; }
  Result<const GltfImage*> GetImage() const noexcept;
  const GltfSampler* GetSampler() const noexcept { return _sampler; }
  Int GetSamplerIndex() const noexcept { return _samplerIndex; }
  Int GetSourceIndex() const noexcept { return _sourceIndex; }

private:
  Int _samplerIndex = -1;           // into samplers; -1 is the default sampler
  Int _sourceIndex = -1;            // into images
  GltfSampler* _sampler = nullptr;  // set at resolving; not owned
  GltfImage* _source = nullptr;     // set at resolving; not owned
};

/// A material's reference to a texture.
class GltfTextureInfo
{
public:
  Result<void> ReadFromJson(const DataDictionary& element) noexcept;
  /// Finds the texture and resolves it. Without an index there is nothing to do.
  Result<void> Resolve(GltfData& gltfData) noexcept;
  /// Whether the file has the reference at all.
  Bool IsInitialized() const noexcept { return _isInitialized; }
  Int GetIndex() const noexcept { return _index; }
  Int GetTexCoord() const noexcept { return _texCoord; }
  /// The image of the resolved texture.
  Result<const GltfImage*> GetImage() const noexcept;
  /// Writes the image to a file. Without an index nothing is written.
  Result<void> SaveImageData(const Url& url) const noexcept;

private:
  Int _index = -1;    // into textures
  Int _texCoord = 0;  // kept, never used
  Bool _isInitialized = false;
  GltfTexture* _texture = nullptr;  // set at resolving; not owned
};

struct GltfMaterial
{
  Result<void> ReadFromJson(const DataDictionary& element) noexcept;
  /// Resolves the five textures and ends at the first that cannot be had; those behind it stay open.
  Result<void> ResolveMaterial(GltfData* gltfData) noexcept;

  String name;
  Vector4 baseColorFactor{1, 1, 1, 1};
  GltfTextureInfo baseColorTexture;
  Float metallicFactor = 1;
  Float roughnessFactor = 1;
  GltfTextureInfo metallicRoughnessTexture;
  GltfTextureInfo normalTexture;
  Float normalScale = 1;
  GltfTextureInfo occlusionTexture;
  Float occlusionStrength = 1;
  GltfTextureInfo emissiveTexture;
  Vector emissiveFactor;
  String alphaMode = "OPAQUE"_s;
  Float alphaCutoff = 0.5;
  Bool doubleSided = false;

private:
  Result<void> ReadMetallicRoughness(const DataDictionary& element) noexcept;
  Result<void> ReadEmissiveFactor(const DataDictionary& element) noexcept;
};

}  // namespace q7z
