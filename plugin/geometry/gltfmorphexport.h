#pragma once

// ExportMesh: one mesh of a file with its morph targets, which come from the poses of a tag or from the keys of a point track.

#include "plugin/geometry/gltfmeshexport.h"

namespace q7z
{

/// Fills meshExportData from op and appends the bytes of the mesh and its targets to buffer. A mesh whose targets fail goes without
/// them, unless memory is short: that is logged, and a marker on op and its source tells the animation that there is nothing to move.
Result<void> ExportMesh(MeshExportData& meshExportData, GltfBuffer& buffer, HostPolygonObject* op, HostDocument* doc,
                        const ExportOptions& settings) noexcept;

/// Appends a target for each pose behind the base pose. @param init_positions  the written positions of the mesh.
Result<void> CollectPoseTargets(MeshExportData& meshExportData, GltfBuffer& buffer, HostPolygonObject* op, HostDocument* doc,
                                BaseArray<Vector>& init_positions, const ExportOptions& settings) noexcept;

/// Appends a target, named "curve0" and so on, for each key of op's point track; no weight moves them by default.
Result<void> CollectCurveTargets(MeshExportData& meshExportData, GltfBuffer& buffer, HostPolygonObject* op, HostDocument* doc,
                                 BaseArray<Vector>& init_positions, const ExportOptions& settings) noexcept;

/// Fills a target's record from a pose. @param morphName  receives its name.
Result<void> CollectTargetFromPose(MeshData& record, GltfBuffer& buffer, HostPolygonObject* op, HostDocument* doc,
                                   Int32 morphIndex, BaseArray<Vector>& init_positions, const ExportOptions& settings,
                                   String& morphName) noexcept;

}  // namespace q7z
