#pragma once

// MaterialImporter: hands the materials of a file to the host's material importer, as records of the host's neutral exchange. The
// importer of a file has one; it dies with the load. The files that it writes stay, since the materials refer to them.

#include "plugin/document/gltfload.h"
#include "plugin/document/gltfmaterial.h"
#include "plugin/module/hostdocument.h"
#include "plugin/module/hostmaterial.h"

namespace q7z
{

class MaterialImporter
{
public:
  /// @param warnings  where images that share a file name are told of.
  explicit MaterialImporter(const ImportWarnings& warnings = ImportWarnings()) noexcept : _warnings(warnings) {}

  /// Once, before the first material: makes the folder for embedded images.
  Result<void> Init(HostDocument* doc, const Url& docFileName) noexcept;
  Bool IsInitialized() const noexcept { return _isInitialized; }

  /// A material of the active node space, in no document; a plain one where the host's importer fails. Embedded images are written
  /// to the folder.
  Result<HostOwner<HostMaterial>> CreateMaterial(const GltfMaterial& gltfMaterial) noexcept;

private:
  Result<void> Fill(const GltfMaterial& gltfMaterial, HostMaterialExchangeData& record) noexcept;
  Result<void> FillTextures(const GltfMaterial& gltfMaterial, HostMaterialExchangeData& record) noexcept;
  Result<void> AddTexture(const GltfTextureInfo& texture, const DataKey& key, Data defaultValue, const String& materialName,
                          HostMaterialExchangeData& record) noexcept;
  Result<Url> WriteTexture(const GltfTextureInfo& texture, const GltfImage& image, const DataKey& key,
                           const String& materialName) noexcept;
  Result<void> NoteFile(const String& fileName, const GltfImage& image) noexcept;

  ImportWarnings _warnings;
  HostDocument* _doc = nullptr;  // not owned
  Bool _isInitialized = false;
  DataDictionary _context;
  Url _docFileName;
  Url texFolderUrl;
  HashMap<String, const GltfImage*> _writtenImages;  // by file name: whose bytes the file holds
};

}  // namespace q7z
