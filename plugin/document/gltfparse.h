#pragma once

// GltfParser: turns a file into a filled GltfData: reads the JSON, from the whole file or from the first chunk of a GLB
// container, collects the binary chunks, and resolves what the records refer to. Lives on the stack of one load.

#include "plugin/document/gltfload.h"

namespace q7z
{

/// Whether the first bytes of a file are a GLB header that is accepted: magic, version 2, a length of at least 13.
Bool IsGlbHeader(const Byte* probe, Int32 probeSize) noexcept;

class GltfParser
{
public:
  /// Binds the parser; both arguments must be there.
  Result<void> Init(GltfLoad* importer, const Url& fileUrl) noexcept;

  /// Reads, fills and resolves. Warnings go to the load's messages; an error ends the load.
  Result<void> Load(HostBackgroundJob* backgroundJob) noexcept;

private:
  Result<DataDictionary> ReadFile() noexcept;
  Result<DataDictionary> ReadJsonFile() noexcept;
  Result<DataDictionary> ReadGlbFile() noexcept;
  Result<void> AppendGlbBytes(HostFile& file, UInt32 chunkLength) noexcept;
  Result<void> ReadExtensions(const DataDictionary& jsonGLTF) noexcept;
  Result<void> CollectExtensions(const BaseArray<String>& used, const BaseArray<String>& required) noexcept;
  Result<void> ReportExtensions() noexcept;
  Result<Bool> FillInLoadedData(const DataDictionary& jsonGLTF) noexcept;

  // Resolving never stops at an item: what cannot be had is a warning.
  Result<Bool> ResolveAssets(HostBackgroundJob* backgroundJob) noexcept;
  void ResolveBuffers(const ImportWarnings& warnings) noexcept;
  void ResolveMeshes(const ImportWarnings& warnings) noexcept;
  void ResolveMaterials(const ImportWarnings& warnings) noexcept;
  void LoadImages(const ImportWarnings& warnings) noexcept;
  void LoadImage(GltfImage& image, const Result<Url>& folder, const ImportWarnings& warnings) noexcept;
  void CopyImage(GltfImage& image, Int& budget, const ImportWarnings& warnings) noexcept;
  void ResolveAnimations(const ImportWarnings& warnings) noexcept;
  void ResolveSkins(const ImportWarnings& warnings) noexcept;

  GltfLoad* _sceneLoader = nullptr;   // not owned
  ImportOptions* _options = nullptr;  // the load's
  GltfData* _gltfData = nullptr;      // the load's
  Url _fileUrl;
  BaseArray<Byte> _glbBytes;  // all BIN chunks, in file order
};

}  // namespace q7z
