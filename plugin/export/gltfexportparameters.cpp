#include "plugin/export/gltfexportparameters.h"

namespace q7z
{

namespace
{

constexpr HostUnitScale kDefaultUnit{1.0, 2};  // a metre becomes a length of 1

struct SwitchDefault
{
  Int32 parameter;
  Bool value;
};
constexpr SwitchDefault kSwitchDefaults[] = {
  {kExportNormalsParameter, true},
  {kExportUvsParameter, true},
  {kExportTexturesParameter, true},
  {kDoubleSidedParameter, false},
  {kExportTransformAnimationParameter, true},
  {kExportMorphsParameter, true},
  {kExportSkinsParameter, false},
  {kBakeAnimationParameter, false},
  {kUseCurrentFrameParameter, true},
  {kExportCamerasParameter, true},
  {kShareMeshesParameter, true},
  {kExportFlipZParameter, true},
};

struct NumberDefault
{
  Int32 parameter;
  Int32 value;
};
constexpr NumberDefault kNumberDefaults[] = {
  {kTextureWidthParameter, 1024}, {kTextureHeightParameter, 1024},     {kTextureResizeParameter, kTextureShrink},
  {kExportFrameParameter, 0},     {kFileFormatParameter, kGltfFormat},
};

Bool ReadSwitch(const HostContainer& container, Int32 parameter) noexcept
{
  Bool value = false;
  for (const SwitchDefault& entry : kSwitchDefaults)
    value = entry.parameter == parameter ? entry.value : value;
  return container.GetBool(parameter, value);
}

Int32 ReadNumber(const HostContainer& container, Int32 parameter) noexcept
{
  Int32 value = 0;
  for (const NumberDefault& entry : kNumberDefaults)
    value = entry.parameter == parameter ? entry.value : value;
  return container.GetInt32(parameter, value);
}

// Lengths in the file for a length of 1 in the document.
Float ReadScale(const HostContainer& container) noexcept
{
  HostDocument* const document = g_hostTables->document->GetActiveDocument();
  HostUnitScale chosenUnit;
  HostUnitScale documentUnit;
  if (!document || !container.GetUnit(kExportScaleParameter, chosenUnit) ||
      !document->GetSettings()->GetUnit(kDocumentUnitSetting, documentUnit))
    return 1.0;
  return HostUnitConversionFactor(documentUnit, chosenUnit);
}

}  // namespace

Bool WriteExportDefaults(HostContainer& container) noexcept
{
  Bool written = container.Set(kExportScaleParameter, kDefaultUnit);
  for (const SwitchDefault& entry : kSwitchDefaults)
    written = written && container.Set(entry.parameter, entry.value);
  for (const NumberDefault& entry : kNumberDefaults)
    written = written && container.Set(entry.parameter, entry.value);
  return written;
}

Bool IsExportParameterEnabled(const HostContainer& container, Int32 parameter) noexcept
{
  if (parameter == kExportFrameParameter)
    return !container.GetBool(kUseCurrentFrameParameter, false);
  if (parameter == kBakeAnimationParameter)
    return container.GetBool(kExportTransformAnimationParameter, false) || container.GetBool(kExportMorphsParameter, false) ||
           container.GetBool(kExportSkinsParameter, false);
  return true;
}

ExportOptions ReadExportOptions(const HostContainer& container) noexcept
{
  ExportOptions options;
  options.exportNormals = ReadSwitch(container, kExportNormalsParameter);
  options.exportUvs = ReadSwitch(container, kExportUvsParameter);
  options.exportScale = ReadScale(container);
  options.exportTextures = ReadSwitch(container, kExportTexturesParameter);
  options.textureWidth = ReadNumber(container, kTextureWidthParameter);
  options.textureHeight = ReadNumber(container, kTextureHeightParameter);
  options.textureResizeMode = ReadNumber(container, kTextureResizeParameter);
  options.doubleSidedMaterials = ReadSwitch(container, kDoubleSidedParameter);
  options.exportTransformAnimation = ReadSwitch(container, kExportTransformAnimationParameter);
  options.exportMorphs = ReadSwitch(container, kExportMorphsParameter);
  options.exportSkins = ReadSwitch(container, kExportSkinsParameter);
  options.bakeAnimation = ReadSwitch(container, kBakeAnimationParameter);
  options.useCurrentFrame = ReadSwitch(container, kUseCurrentFrameParameter);
  options.exportFrame = ReadNumber(container, kExportFrameParameter);
  options.exportCameras = ReadSwitch(container, kExportCamerasParameter);
  options.shareMeshes = ReadSwitch(container, kShareMeshesParameter);
  options.flipZ = ReadSwitch(container, kExportFlipZParameter);
  options.fileFormat = ReadNumber(container, kFileFormatParameter);
  return options;
}

}  // namespace q7z
