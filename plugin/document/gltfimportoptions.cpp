#include "plugin/document/gltfimportoptions.h"

#include "plugin/document/gltfutilities.h"
#include "plugin/module/configvariables.h"

namespace q7z
{

Bool ImportOptions::ReadBool(const DataKey& key, Bool fallback) const noexcept
{
  return q7z::ReadBool(_entries, key, fallback);
}

Float ImportOptions::GetScale() const noexcept
{
  return ReadFloat(_entries, importkeys::kScale, 1.0);
}

Bool ImportOptions::IsCameras() const noexcept
{
  return ReadBool(importkeys::kCameras, true);
}

Bool ImportOptions::IsGeometry() const noexcept
{
  return ReadBool(importkeys::kGeometry, true);
}

Bool ImportOptions::IsSplitMesh() const noexcept
{
  return ReadBool(importkeys::kSplitMesh, false);
}

Float ImportOptions::GetPhongAngle() const noexcept
{
  return ReadFloat(_entries, importkeys::kPhongAngle, 1.0);
}

String ImportOptions::GetNormals() const noexcept
{
  switch (ReadInt(_entries, importkeys::kNormals, 0))
  {
    case kNormalsVertex: return "vertex"_s;
    case kNormalsPhong: return "phong"_s;
    default: return "none"_s;
  }
}

Bool ImportOptions::IsVertexColors() const noexcept
{
  return ReadBool(importkeys::kVertexColors, true);
}

Bool ImportOptions::IsUvs() const noexcept
{
  return ReadBool(importkeys::kUvs, true);
}

Bool ImportOptions::IsFlipZ() const noexcept
{
  return ReadBool(importkeys::kFlipZ, true);
}

Bool ImportOptions::IsMaterials() const noexcept
{
  return ReadBool(importkeys::kMaterials, true);
}

Bool ImportOptions::IsAnimationTrs() const noexcept
{
  return ReadBool(importkeys::kAnimationTrs, true);
}

Bool ImportOptions::IsMorphTargets() const noexcept
{
  return ReadBool(importkeys::kAnimationMorph, true) && IsGeometry();
}

Bool ImportOptions::IsTargetsLayer() const noexcept
{
  return ReadBool(importkeys::kTargetsLayer, true);
}

Bool ImportOptions::IsCleanTracks() const noexcept
{
  return ReadBool(importkeys::kCleanTracks, false);
}

Bool ImportOptions::IsSkins() const noexcept
{
  return IsAnimationTrs() && !g_gltfImporterNoSkin;
}

Bool ImportOptions::IsAnimations() const noexcept
{
  return IsAnimationTrs() || IsMorphTargets();
}

}  // namespace q7z
