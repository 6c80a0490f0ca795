#include "plugin/geometry/gltfmorphexport.h"

#include "framework/check.h"
#include "plugin/export/objectmarkers.h"
#include "plugin/module/diagnostics.h"
#include "plugin/module/hostids.h"
#include "plugin/module/hosttrack.h"

namespace q7z
{

namespace
{

constexpr Int32 kMorphTagStrength = 1031;

/// The host's own points, of whatever holds them.
struct PointArray
{
  const Vector* points = nullptr;
  Int count = 0;

  const Vector* GetFirst() const noexcept { return points; }
  Int GetCount() const noexcept { return count; }
  explicit operator Bool() const noexcept { return points != nullptr; }
};

HostPoseMorphTag* GetMorphTag(HostObject* op) noexcept
{
  return static_cast<HostPoseMorphTag*>(op->GetTag(kPoseMorphTagType));
}

/// Null when op has no tag, or one with the base pose alone.
HostPoseMorphTag* FindPoses(HostObject* op) noexcept
{
  HostPoseMorphTag* const tag = GetMorphTag(op);
  return tag && tag->GetMorphCount() > 0 && tag->GetMorph(1) ? tag : nullptr;
}

PointArray GetObjectPoints(HostObject* object) noexcept
{
  if (object->GetType() != kPolygonObjectType)
    return {};
  return {ToPoly(object)->GetPointsR(), ToPoly(object)->GetPointCount()};
}

/// The base pose where it keeps points of its own: op's may be those of a moment in which poses are at work.
const Vector* ChooseBasePoints(HostPolygonObject* op, const HostPoseMorphTag* poses) noexcept
{
  const HostMorph* const base = poses ? poses->GetMorph(0) : nullptr;
  const HostPointNode* const node = base && !base->GetObject() ? base->GetPointNode() : nullptr;
  return node && node->GetPointCount() >= op->GetPointCount() ? node->GetPoints() : op->GetPointsR();
}

Float GetTagStrength(const HostPoseMorphTag* tag) noexcept
{
  HostValue strength;
  return tag->GetParameter(kMorphTagStrength, strength) ? strength.GetFloat(1) : 1;
}

Result<PointArray> GetPosePoints(const HostPoseMorphTag* tag, Int32 morphIndex, String& morphName) noexcept
{
  const HostMorph* const morph = tag->GetMorph(morphIndex);
  CHECK_STATE(morph);
  morphName = morph->GetName();
  if (HostObject* const object = morph->GetObject())
    return GetObjectPoints(object);
  const HostPointNode* const morphNode = morph->GetPointNode();
  CHECK_STATE(morphNode);
  return PointArray{morphNode->GetPoints(), morphNode->GetPointCount()};
}

Result<void> CollectTargets(MeshExportData& meshExportData, GltfBuffer& buffer, HostPolygonObject* op, HostDocument* doc,
                            BaseArray<Vector>& init_positions, const ExportOptions& settings) noexcept
{
  if (FindPoses(op))
    return CollectPoseTargets(meshExportData, buffer, op, doc, init_positions, settings);
  if (HostTrack::Find(op, kPointTrackParameter))
    return CollectCurveTargets(meshExportData, buffer, op, doc, init_positions, settings);
  return {};
}

/// The mesh is whole without its targets. An object that shares the mesh, and baked animation, look at the source for the marker.
Result<void> DropTargets(MeshExportData& meshExportData, HostPolygonObject* op, const Error& error) noexcept
{
  meshExportData.targets.Reset();
  meshExportData.defaultWeights.Reset();
  RETURN_IF_ERROR(SetMarker(op, kMorphExportFailed, true));
  if (HostObject* const source = GetAuxSource(op))
    RETURN_IF_ERROR(SetMarker(source, kMorphExportFailed, true));
  ASSIGN_OR_RETURN(const String text, String::Format("Couldn't export morph targets for '@'"_s, {op->GetName()}));
  PrintError(text, error);
  return {};
}

Result<void> AppendTarget(MeshExportData& meshExportData, MeshData record, String name, Float weight) noexcept
{
  record.name = std::move(name);
  RETURN_IF_ERROR(meshExportData.targets.Append(std::move(record)));
  return meshExportData.defaultWeights.Append(weight);
}

Result<void> CollectTargetFromKey(MeshData& record, GltfBuffer& buffer, HostPolygonObject* op, HostDocument* doc,
                                  const HostKey* key, BaseArray<Vector>& init_positions, const ExportOptions& settings) noexcept
{
  CHECK_STATE(key);
  PointArray positions;
  positions.count = key->GetPoints(&positions.points);
  if (positions.count == 0)
    return {};  // a key that stores nothing stays a target without positions
  CHECK_STATE(positions);
  CHECK_STATE(positions.GetCount() >= op->GetPointCount());
  return CollectMeshData(record, buffer, op, doc, positions.GetFirst(), init_positions, settings, true);
}

}  // namespace

Result<void> ExportMesh(MeshExportData& meshExportData, GltfBuffer& buffer, HostPolygonObject* op, HostDocument* doc,
                        const ExportOptions& settings) noexcept
{
  CHECK_STATE(op);
  const Vector* const points = ChooseBasePoints(op, settings.exportMorphs ? FindPoses(op) : nullptr);
  BaseArray<Vector> init_positions;
  RETURN_IF_ERROR(CollectMeshData(meshExportData, buffer, op, doc, points, init_positions, settings, false));
  if (!settings.exportMorphs)
    return {};
  const Result<void> targets = CollectTargets(meshExportData, buffer, op, doc, init_positions, settings);
  if (!targets.HasError())
    return {};
  // Short memory must not make another file of the same scene.
  const Bool isOutOfMemory = targets.GetError().GetClass() == ErrorClass::kOutOfMemory;
  return isOutOfMemory ? Result<void>(targets.GetError()) : DropTargets(meshExportData, op, targets.GetError());
}

Result<void> CollectPoseTargets(MeshExportData& meshExportData, GltfBuffer& buffer, HostPolygonObject* op, HostDocument* doc,
                                BaseArray<Vector>& init_positions, const ExportOptions& settings) noexcept
{
  CHECK_STATE(op);
  const HostPoseMorphTag* const morphTag = GetMorphTag(op);
  CHECK_STATE(morphTag);
  const Float strength = GetTagStrength(morphTag);
  const Int32 morphCount = morphTag->GetMorphCount();
  for (Int32 m = 1; m < morphCount; ++m)
  {
    MeshData record;
    String name;
    RETURN_IF_ERROR(CollectTargetFromPose(record, buffer, op, doc, m, init_positions, settings, name));
    RETURN_IF_ERROR(AppendTarget(meshExportData, std::move(record), name, strength * morphTag->GetMorph(m)->GetStrength()));
  }
  return {};
}

Result<void> CollectTargetFromPose(MeshData& record, GltfBuffer& buffer, HostPolygonObject* op, HostDocument* doc,
                                   Int32 morphIndex, BaseArray<Vector>& init_positions, const ExportOptions& settings,
                                   String& morphName) noexcept
{
  CHECK_STATE(op);
  const HostPoseMorphTag* const morphTag = GetMorphTag(op);
  CHECK_STATE(morphTag);
  ASSIGN_OR_RETURN(const PointArray positions, GetPosePoints(morphTag, morphIndex, morphName));
  CHECK_STATE(positions.GetCount() == ToPoly(op)->GetPointCount());
  return CollectMeshData(record, buffer, op, doc, positions.GetFirst(), init_positions, settings, true);
}

Result<void> CollectCurveTargets(MeshExportData& meshExportData, GltfBuffer& buffer, HostPolygonObject* op, HostDocument* doc,
                                 BaseArray<Vector>& init_positions, const ExportOptions& settings) noexcept
{
  CHECK_STATE(op);
  HostTrack* const track = HostTrack::Find(op, kPointTrackParameter);
  HostCurve* const curve = track ? track->GetCurve(true) : nullptr;
  if (!curve)
    return {};
  const Int32 keyCount = curve->GetKeyCount();
  for (Int32 k = 0; k < keyCount; ++k)
  {
    const HostKey* const key = curve->GetKey(k);
    if (!key)
      continue;
    MeshData record;
    RETURN_IF_ERROR(CollectTargetFromKey(record, buffer, op, doc, key, init_positions, settings));
    ASSIGN_OR_RETURN(const String number, String::FromInt(k));
    ASSIGN_OR_RETURN(String name, String::Join({"curve"_s, number}));
    RETURN_IF_ERROR(AppendTarget(meshExportData, std::move(record), std::move(name), 0.0));
  }
  return {};
}

}  // namespace q7z
