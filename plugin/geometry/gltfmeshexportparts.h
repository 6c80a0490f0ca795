#pragma once

// The steps of CollectMeshData, for the sources of the mesh export alone.

#include <cstring>

#include "plugin/geometry/gltfmeshexport.h"
#include "plugin/geometry/gltfvertexdata.h"

namespace q7z
{

/// Room for the vertices of a mesh's corners at the end of a buffer, 32 bits each. They go straight there: a list of them would be
/// as large again, and fresh memory is dear.
class IndexRoom
{
public:
  /// Without room: what is put there is lost.
  IndexRoom() noexcept = default;
  /// @param first  room for count of them.
  /// @param isReversed  lists them from the last to the first: that turns the winding of every triangle.
  IndexRoom(Byte* first, Int count, Bool isReversed) noexcept
      : _next(isReversed ? first + (count - 1) * kStep : first), _step(isReversed ? -kStep : kStep)
  {}

  void Put(Int32 vertex) noexcept
  {
    if (!_next)
      return;
    std::memcpy(_next, &vertex, sizeof(vertex));
    _next += _step;
  }

private:
  static constexpr Int kStep = sizeof(Int32);

  Byte* _next = nullptr;
  Int _step = 0;
};

/// Lists the vertices of all polygons, three each, and makes the vertices. Corner d is never read.
/// @param op  made of triangles. Point indices outside of it are an error.
/// @param skipLookup  as for VertexData::AddVertexData.
/// @param isTarget  a target's vertices need the order of the mesh's, but no values besides their positions.
Result<void> SplitVertices(const MeshData& record, IndexRoom& indices, HostPolygonObject* op, VertexData& vertexData,
                           Bool skipLookup, Bool isTarget) noexcept;

/// Appends room for the indices of op, and makes some for its vertices behind. What is put there is still to be finished.
Result<IndexRoom> AppendIndexRoom(MeshData& record, GltfBuffer& buffer, const HostPolygonObject* op, Bool isReversed) noexcept;

/// Finishes the indices and appends the interleaved vertices; of a target the distances to the mesh's written positions alone.
Result<void> WriteVertices(MeshData& record, GltfBuffer& buffer, const VertexData& vertex_data, BaseArray<Vector>& init_positions,
                           const ExportOptions& settings, Bool isTarget) noexcept;

/// Appends the joints and weights of a weight tag that has joints. The record's vertexPoints are there.
Result<void> WriteSkinWeights(MeshData& record, GltfBuffer& buffer, const HostPolygonObject* op, HostDocument* doc) noexcept;

/// Appends the colours of a tag that keeps them per point. The record's vertexPoints are there.
Result<void> WriteVertexColors(MeshData& record, GltfBuffer& buffer, const HostPolygonObject* op) noexcept;

}  // namespace q7z
