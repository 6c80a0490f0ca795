#pragma once

// The steps of CollectMeshData, for the sources of the mesh export alone.

#include "plugin/geometry/gltfmeshexport.h"
#include "plugin/geometry/gltfvertexdata.h"

namespace q7z
{

/// Lists the vertices of all polygons, three each, and makes the vertices. Corner d is never read.
/// @param op  made of triangles. Point indices outside of it are an error.
/// @param skipLookup  as for VertexData::AddVertexData.
/// @param isTarget  a target's vertices need the order of the mesh's, but no values besides their positions.
Result<void> SplitVertices(const MeshData& record, BaseArray<Int32>& indices, HostPolygonObject* op, VertexData& vertexData,
                           Bool skipLookup, Bool isTarget) noexcept;

/// Appends the indices and the interleaved vertices; of a target the distances to the mesh's written positions alone. Uses the
/// positions of vertex_data up.
Result<void> WriteVertices(MeshData& record, GltfBuffer& buffer, const VertexData& vertex_data, BaseArray<Vector>& init_positions,
                           const BaseArray<Int32>& indices, const ExportOptions& settings, Bool isTarget) noexcept;

/// Appends the joints and weights of a weight tag that has joints. The record's vertexPoints are there.
Result<void> WriteSkinWeights(MeshData& record, GltfBuffer& buffer, const HostPolygonObject* op, HostDocument* doc) noexcept;

/// Appends the colours of a tag that keeps them per point. The record's vertexPoints are there.
Result<void> WriteVertexColors(MeshData& record, GltfBuffer& buffer, const HostPolygonObject* op) noexcept;

}  // namespace q7z
