#include "plugin/import/gltfimportparameters.h"

namespace q7z
{

namespace
{

constexpr Float kDefaultPhongAngle = 0.6981317007977318;  // 40 degrees
constexpr Float kDegreesPerRadian = 57.29577951308232;
constexpr HostUnitScale kDefaultUnit{1.0, 2};  // a length of 1 in the file is a metre

// Host lengths for a length of 1 in the file: what the chosen unit measures in the document's own.
Float GetScale(const HostContainer& container, HostDocument* document) noexcept
{
  HostUnitScale chosenUnit;
  HostUnitScale documentUnit;
  if (!document || !container.GetUnit(kUnitParameter, chosenUnit) ||
      !document->GetSettings()->GetUnit(kDocumentUnitSetting, documentUnit))
    return 1.0;
  return 1.0 / HostUnitConversionFactor(documentUnit, chosenUnit);
}

}  // namespace

Bool WriteImportDefaults(HostContainer& container) noexcept
{
  // The switch for clean tracks is not written; unset reads as off.
  return container.Set(kUnitParameter, kDefaultUnit) && container.Set(kCamerasParameter, true) &&
         container.Set(kGeometryParameter, true) && container.Set(kSplitMeshParameter, false) &&
         container.Set(kNormalsParameter, kNormalsVertex) && container.Set(kPhongAngleParameter, kDefaultPhongAngle) &&
         container.Set(kVertexColorsParameter, true) && container.Set(kUvsParameter, true) &&
         container.Set(kFlipZParameter, true) && container.Set(kMaterialsParameter, true) &&
         container.Set(kAnimationTrsParameter, true) && container.Set(kAnimationMorphParameter, true) &&
         container.Set(kTargetsLayerParameter, true);
}

Bool FindImportEnabling(const HostContainer& container, Int32 parameter, Bool& enabled) noexcept
{
  const Bool geometry = container.GetBool(kGeometryParameter);
  const Bool morphs = geometry && container.GetBool(kAnimationMorphParameter);
  switch (parameter)
  {
    case kCamerasParameter:
    case kGeometryParameter:
    case kMaterialsParameter:
    case kAnimationTrsParameter: enabled = true; return true;
    case kNormalsParameter:
    case kVertexColorsParameter:
    case kUvsParameter:
    case kFlipZParameter:
    case kAnimationMorphParameter:
    case kSplitMeshParameter: enabled = geometry; return true;
    case kPhongAngleParameter:
      enabled = geometry && container.GetInt32(kNormalsParameter, kNormalsNone) == kNormalsPhong;
      return true;
    case kCleanTracksParameter: enabled = container.GetBool(kAnimationTrsParameter) || morphs; return true;
    case kTargetsLayerParameter: enabled = morphs; return true;
    default: return false;
  }
}

Result<void> FillImportOptions(const HostContainer& container, HostDocument* document, ImportOptions& options) noexcept
{
  RETURN_IF_ERROR(options.Set(importkeys::kScale, GetScale(container, document)));
  RETURN_IF_ERROR(options.Set(importkeys::kCameras, container.GetBool(kCamerasParameter, false)));
  RETURN_IF_ERROR(options.Set(importkeys::kGeometry, container.GetBool(kGeometryParameter, false)));
  RETURN_IF_ERROR(options.Set(importkeys::kSplitMesh, container.GetBool(kSplitMeshParameter, false)));
  RETURN_IF_ERROR(options.Set(importkeys::kNormals, container.GetInt32(kNormalsParameter, kNormalsVertex)));
  const Float phongAngle = container.GetFloat(kPhongAngleParameter, kDefaultPhongAngle);
  RETURN_IF_ERROR(options.Set(importkeys::kPhongAngle, phongAngle * kDegreesPerRadian));
  RETURN_IF_ERROR(options.Set(importkeys::kVertexColors, container.GetBool(kVertexColorsParameter, false)));
  RETURN_IF_ERROR(options.Set(importkeys::kUvs, container.GetBool(kUvsParameter, false)));
  RETURN_IF_ERROR(options.Set(importkeys::kFlipZ, container.GetBool(kFlipZParameter, true)));
  RETURN_IF_ERROR(options.Set(importkeys::kMaterials, container.GetBool(kMaterialsParameter, true)));
  RETURN_IF_ERROR(options.Set(importkeys::kAnimationTrs, container.GetBool(kAnimationTrsParameter, false)));
  RETURN_IF_ERROR(options.Set(importkeys::kAnimationMorph, container.GetBool(kAnimationMorphParameter, false)));
  RETURN_IF_ERROR(options.Set(importkeys::kTargetsLayer, container.GetBool(kTargetsLayerParameter, false)));
  return options.Set(importkeys::kCleanTracks, container.GetBool(kCleanTracksParameter, false));
}

}  // namespace q7z
