#pragma once

// ExportOptions: what the user asked of a save, read once from the saver's parameters and handed on by copy.

#include "framework/types.h"

namespace q7z
{

/// The saver's parameters, in the order in which they are read.
enum ExportParameter : Int32
{
  kExportNormalsParameter = 1001,
  kExportUvsParameter = 1002,
  kExportScaleParameter = 1003,
  kExportTexturesParameter = 1005,
  kTextureWidthParameter = 1006,
  kTextureHeightParameter = 1007,
  kTextureResizeParameter = 1008,
  kDoubleSidedParameter = 1012,
  kExportTransformAnimationParameter = 1014,
  kExportMorphsParameter = 1015,
  kExportSkinsParameter = 1019,
  kBakeAnimationParameter = 1020,
  kUseCurrentFrameParameter = 1022,
  kExportFrameParameter = 1023,
  kExportCamerasParameter = 1024,
  kShareMeshesParameter = 1026,
  kExportFlipZParameter = 1025,
  kFileFormatParameter = 1027,
};

// Values of the two cycles.
inline constexpr Int32 kTextureShrink = 1009;
inline constexpr Int32 kTextureExact = 1010;
inline constexpr Int32 kTextureKeep = 1011;
inline constexpr Int32 kGltfFormat = 1028;
inline constexpr Int32 kGlbFormat = 1029;

// The start values are the record's own; reading the parameters replaces every one of them before use.
struct ExportOptions
{
  Bool exportNormals = true;
  Bool exportUvs = true;
  Float exportScale = 1.0;  ///< file lengths per host length; lengths alone are multiplied by it
  Bool exportTextures = true;
  Int32 textureWidth = 1024;    ///< pixels
  Int32 textureHeight = 1024;   ///< pixels
  Int32 textureResizeMode = 0;  ///< a value of the cycle; 0 in a record that was not read
  Bool doubleSidedMaterials = true;
  Bool exportTransformAnimation = true;
  Bool exportMorphs = true;
  Bool exportSkins = false;
  Bool bakeAnimation = false;
  Bool useCurrentFrame = true;
  Int32 exportFrame = 0;
  Bool exportCameras = true;
  Bool shareMeshes = true;
  Bool flipZ = true;
  Int32 fileFormat = kGltfFormat;

  Bool IsGlb() const noexcept { return fileFormat == kGlbFormat; }
};

}  // namespace q7z
