#pragma once

// The steps of CollectMeshData, for the sources of the mesh export alone.

#include <cstring>

#include "plugin/geometry/gltfmeshexport.h"
#include "plugin/geometry/gltfvertexdata.h"

namespace q7z
{

/// Room for the vertices of a mesh's corners in a buffer, 32 bits each. They go straight there: a list of them would be as large
/// again, and fresh memory is dear.
class IndexRoom
{
public:
  /// Without room: what is put there is lost.
  IndexRoom() noexcept = default;
  /// @param offset  of room for count of them, more than none.
  /// @param isReversed  lists them from the last to the first: that turns the winding of every triangle.
  IndexRoom(GltfBuffer& buffer, Int offset, Int count, Bool isReversed) noexcept
      : _buffer(&buffer), _next(isReversed ? offset + (count - 1) * kStep : offset), _step(isReversed ? -kStep : kStep)
  {}

  void Put(Int32 vertex) noexcept
  {
    if (!_buffer)
      return;
    std::memcpy(_buffer->GetRoom(_next), &vertex, sizeof(vertex));
    _next += _step;
  }

private:
  static constexpr Int kStep = sizeof(Int32);

  GltfBuffer* _buffer = nullptr;  // not owned; its memory moves when it grows
  Int _next = 0;                  // offset
  Int _step = 0;
};

/// Lists the vertices of all polygons, three each, and makes the vertices. Corner d is never read.
/// @param op  made of triangles. Point indices outside of it are an error.
/// @param skipLookup  as for VertexData::AddVertexData.
/// @param isTarget  a target's vertices need the order of the mesh's, but no values besides their positions.
Result<void> SplitVertices(const MeshData& record, IndexRoom& indices, HostPolygonObject* op, VertexData& vertexData,
                           Bool skipLookup, Bool isTarget) noexcept;

/// The place of each attribute in use: position, normal, UV, polygon colour.
VertexLayout LayOutVertex(const MeshData& record) noexcept;

/// Appends room for the indices of op, and makes some for its vertices behind. What is put there is still to be finished.
Result<IndexRoom> AppendIndexRoom(MeshData& record, GltfBuffer& buffer, const HostPolygonObject* op, Bool isReversed) noexcept;

/// Whether the indices of so many vertices, or of more, stay as wide as in their room, so that vertices can be put behind it before
/// they are finished.
Bool HasWideIndices(Int vertexCount) noexcept;

/// Finishes the indices and the interleaved vertices; of a target appends the distances to the mesh's written positions alone.
/// @param vertices  where vertex_data keeps them: buffer itself, behind the indices, or another.
Result<void> WriteVertices(MeshData& record, GltfBuffer& buffer, const GltfBuffer& vertices, VertexData& vertex_data,
                           BaseArray<Vector>& init_positions, const ExportOptions& settings, Bool isTarget) noexcept;

/// Appends the joints and weights of a weight tag that has joints. The record's copyPoints are there.
Result<void> WriteSkinWeights(MeshData& record, GltfBuffer& buffer, const HostPolygonObject* op, HostDocument* doc) noexcept;

/// Appends the colours of a tag that keeps them per point. The record's copyPoints are there.
Result<void> WriteVertexColors(MeshData& record, GltfBuffer& buffer, const HostPolygonObject* op) noexcept;

}  // namespace q7z
