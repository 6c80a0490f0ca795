#pragma once

// The loader's parameters as the user sees them: their ids, their defaults, which of them are enabled, and how they become the
// options of one load.

#include "plugin/document/gltfimportoptions.h"
#include "plugin/module/hostdocument.h"

namespace q7z
{

enum ImportParameter : Int32
{
  kUnitParameter = 1002,
  kCamerasParameter = 1003,
  kGeometryParameter = 1004,
  kNormalsParameter = 1005,
  kPhongAngleParameter = 1009,
  kVertexColorsParameter = 1010,
  kUvsParameter = 1011,
  kFlipZParameter = 1012,
  kMaterialsParameter = 1013,
  kAnimationTrsParameter = 1014,
  kAnimationMorphParameter = 1017,
  kSplitMeshParameter = 1018,
  kCleanTracksParameter = 1019,
  kTargetsLayerParameter = 1020,
};

/// The value of kNormalsParameter that stands beside kNormalsVertex and kNormalsPhong.
inline constexpr Int32 kNormalsNone = 1006;

/// Writes what a new loader starts with. @return false without memory.
Bool WriteImportDefaults(HostContainer& container) noexcept;

/// Whether a parameter is enabled in the dialog, into enabled. @return false for a parameter that is not decided here.
Bool FindImportEnabling(const HostContainer& container, Int32 parameter, Bool& enabled) noexcept;

/// Copies every parameter into the options of a load. A missing value has a default of its own, which is not always the one that
/// a new loader starts with. The first error stops.
Result<void> FillImportOptions(const HostContainer& container, HostDocument* document, ImportOptions& options) noexcept;

}  // namespace q7z
