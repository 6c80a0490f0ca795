#pragma once

// What one mesh of a file is made of when it is written, and CollectMeshData, which fills it from a polygon object made of
// triangles. The records live from the filling of a mesh to the writing of its members.

#include "plugin/document/gltfaccessor.h"
#include "plugin/document/gltfexportoptions.h"
#include "plugin/module/hostdocument.h"
#include "plugin/module/hostpolygon.h"

namespace q7z
{

/// An accessor of a mesh that may not be in use.
struct MeshAccessor
{
  GltfAccessor accessor;
  Bool isUsed = false;
};

/// One mesh, or one target of it. A target uses its positions and their view alone.
struct MeshData
{
  MeshData() noexcept;

  String name;
  BaseArray<Int32> copyPoints;  ///< the first vertices are the host points; for each one behind them the point that it came from

  MeshAccessor indices;
  MeshAccessor positions;
  MeshAccessor normals;
  MeshAccessor uvs;
  MeshAccessor polygonColors;
  MeshAccessor vertexColors;
  MeshAccessor joints;
  MeshAccessor weights;

  GltfBufferView indexView;
  GltfBufferView vertexView;  ///< interleaved: position, normal, UV, polygon colour
  GltfBufferView colorView;
  GltfBufferView jointView;
  GltfBufferView weightView;
};

/// A mesh with its morph targets.
struct MeshExportData : MeshData
{
  BaseArray<MeshData> targets;
  BaseArray<Float> defaultWeights;  ///< one for each target
};

/// Fills record from op and appends its bytes to buffer; offsets in views count from the buffer's first byte.
/// @param positions  the host points to write, as many as op has: its own, or those of a target.
/// @param init_positions  the written positions, three 64-bit floats a vertex: filled by a mesh that may have targets, wanted by
///   these.
Result<void> CollectMeshData(MeshData& record, GltfBuffer& buffer, HostPolygonObject* op, HostDocument* doc,
                             const Vector* positions, BaseArray<Vector>& init_positions, const ExportOptions& settings,
                             Bool isTarget) noexcept;

}  // namespace q7z
