#pragma once

// GltfData: the in-memory image of one file. Every array of the file is a map from index to record, because an element whose
// reader failed is removed again and its neighbours keep their indices. It lives for one load.

#include "framework/hashmap.h"
#include "plugin/document/gltfaccessor.h"
#include "plugin/document/gltfanimation.h"
#include "plugin/document/gltfcamera.h"
#include "plugin/document/gltfmaterial.h"
#include "plugin/document/gltfnode.h"
#include "plugin/document/gltfprimitive.h"

namespace q7z
{

class ImportOptions;

struct GltfExtensionEntry
{
  Bool required = false;
};

struct GltfData
{
  /// Puts the entries that stand under -1 before anything is read.
  Result<void> Init() noexcept;

  HashMap<Int, GltfScene> scenes;
  HashMap<Int, GltfNode> nodes;
  HashMap<Int, GltfCameraRecord> cameras;
  HashMap<Int, GltfMesh> meshes;
  HashMap<Int32, GltfAccessor> accessors;  // -1 is the non-indexed accessor
  HashMap<Int, GltfBufferView> bufferViews;
  HashMap<Int, GltfBuffer> buffers;
  HashMap<Int, GltfAnimation> animations;
  HashMap<Int, GltfSkin> skins;
  HashMap<Int, GltfMaterial> materials;
  HashMap<Int, GltfTexture> textures;
  HashMap<Int, GltfSampler> samplers;  // -1 is the default sampler
  HashMap<Int, GltfImage> images;
  Int defaultScene = 0;
  String generator;
  String version;
  String copyright;
  HashMap<String, GltfExtensionEntry> extensions;
};

/// Fills the arrays that the options ask for from the root dictionary. An element that cannot be read is skipped.
/// @return false (or an error) when an array itself cannot be walked.
Result<Bool> FillInLoadedData(GltfData* gltfData, const DataDictionary& jsonGLTF, const ImportOptions& options) noexcept;

}  // namespace q7z
