// The bytes of a mesh's indices and vertices.

#include <algorithm>
#include <cstring>

#include "framework/check.h"
#include "plugin/geometry/gltfmeshexportparts.h"

namespace q7z
{

namespace
{

// Up to this many vertices 16-bit indices are written.
constexpr Int kMostShortVertices = 65536;

constexpr UInt32 kPositionBytes = 12;
constexpr UInt32 kNormalBytes = 12;
constexpr UInt32 kUvBytes = 8;
constexpr UInt32 kColorBytes = 16;

// Vertices that are bounded while they are still in the cache.
constexpr Int kBlockVertices = 1024;

template <typename T>
void WriteNumbers(Byte*& target, const T& numbers) noexcept
{
  std::memcpy(target, &numbers, sizeof(T));
  target += sizeof(T);
}

struct Vector2Of32
{
  Float32 x;
  Float32 y;
};

/// In the order of the list, or from its end: that turns the winding of every triangle.
template <typename T>
void WriteIndexNumbers(Byte* target, const BaseArray<Int32>& indices, Bool isReversed) noexcept
{
  const Int count = indices.GetCount();
  for (Int i = 0; i < count; ++i)
  {
    const T index = static_cast<T>(indices[isReversed ? count - 1 - i : i]);
    std::memcpy(target + i * static_cast<Int>(sizeof(T)), &index, sizeof(T));
  }
}

Result<void> WriteIndices(MeshData& record, GltfBuffer& buffer, const BaseArray<Int32>& indices, Bool isShort,
                          Bool flipZ) noexcept
{
  const Int indexBytes = isShort ? 2 : 4;
  const Int byteCount = indices.GetCount() * indexBytes;
  record.indices.accessor.SetComponentType(isShort ? kUnsignedShort : kUnsignedInt);
  record.indexView.AddByteOffset(buffer.GetBytes().GetCount());
  record.indexView.AddByteLength(byteCount);
  ASSIGN_OR_RETURN(Byte* const room, buffer.AppendRoom(byteCount));
  if (isShort)
    WriteIndexNumbers<UInt16>(room, indices, flipZ);
  else
    WriteIndexNumbers<UInt32>(room, indices, flipZ);
  return record.indices.accessor.TrackElements(room, indices.GetCount(), indexBytes);
}

/// Gives each attribute its place in the vertex. @return the bytes of a vertex.
UInt32 LayOutVertex(MeshData& record, Bool isTarget) noexcept
{
  UInt32 stride = kPositionBytes;
  const auto place = [&stride](MeshAccessor& attribute, UInt32 byteCount)
  {
    if (!attribute.isUsed)
      return;
    attribute.accessor.SetByteOffset(stride);
    stride += byteCount;
  };
  if (!isTarget)
  {
    place(record.normals, kNormalBytes);
    place(record.uvs, kUvBytes);
    place(record.polygonColors, kColorBytes);
  }
  record.vertexView.SetByteStride(stride);
  return stride;
}

/// Writes vertices one after the other.
class VertexWriter
{
public:
  /// @param base  the written positions of a target's mesh, or null.
  /// @param written  room for the written positions, or null.
  VertexWriter(MeshData& record, const VertexData& vertex_data, const Vector* base, Vector* written,
               const ExportOptions& settings) noexcept
      : _record(record),
        _vertices(vertex_data),
        _base(base),
        _written(written),
        _scale(settings.exportScale),
        _flipZ(settings.flipZ)
  {}

  Result<void> Write(Byte* room, UInt32 stride) noexcept
  {
    const Int count = _vertices.GetVertexCount();
    for (Int first = 0; first < count; first += kBlockVertices)
    {
      const Int end = std::min(first + kBlockVertices, count);
      Byte* const block = room + first * stride;
      Byte* target = block;
      for (Int i = first; i < end; ++i)
        WriteVertex(i, target);
      RETURN_IF_ERROR(Track(block, end - first, stride));
    }
    return {};
  }

private:
  void WriteVertex(Int i, Byte*& target) noexcept
  {
    const Vector position = MirrorPosition(_vertices.GetPositions()[i]) * _scale;
    if (_written)
      _written[i] = position;
    WritePosition(_base ? position - _base[i] : position, target);
    if (_base)
      return;
    if (_record.normals.isUsed)
      WriteNumbers(target, MirrorNormal(_vertices.GetNormals()[i]));
    if (_record.uvs.isUsed)
      WriteNumbers(target, Vector2Of32{_vertices.GetUVs()[i].x, _vertices.GetUVs()[i].y});
    if (_record.polygonColors.isUsed)
      WriteNumbers(target, _vertices.GetPolygonColors()[i]);
  }

  static void WritePosition(const Vector& p, Byte*& target) noexcept
  {
    WriteNumbers(target, Vector32{static_cast<Float32>(p.x), static_cast<Float32>(p.y), static_cast<Float32>(p.z)});
  }

  // Subtracted from 0, so that 0 does not become -0.
  Vector MirrorPosition(const Vector& p) const noexcept { return _flipZ ? Vector{p.x, p.y, 0.0 - p.z} : p; }
  Vector32 MirrorNormal(const Vector32& n) const noexcept { return _flipZ ? Vector32{n.x, n.y, 0.0f - n.z} : n; }

  Result<void> Track(const Byte* block, Int count, UInt32 stride) noexcept
  {
    RETURN_IF_ERROR(_record.positions.accessor.TrackElements(block, count, stride));
    if (_base)
      return {};
    for (MeshAccessor* const attribute : {&_record.normals, &_record.uvs, &_record.polygonColors})
    {
      if (attribute->isUsed)
        RETURN_IF_ERROR(attribute->accessor.TrackElements(block + attribute->accessor.GetByteOffset(), count, stride));
    }
    return {};
  }

  MeshData& _record;
  const VertexData& _vertices;
  const Vector* const _base;
  Vector* const _written;
  const Float _scale;
  const Bool _flipZ;
};

}  // namespace

Result<void> WriteVertices(MeshData& record, GltfBuffer& buffer, const VertexData& vertex_data, BaseArray<Vector>& init_positions,
                           const BaseArray<Int32>& indices, const ExportOptions& settings, Bool isTarget) noexcept
{
  CHECK_ARGUMENT((init_positions.GetCount() == 0 && !isTarget) ||
                 (init_positions.GetCount() == vertex_data.GetCount() && isTarget));
  const Int vertexCount = vertex_data.GetVertexCount();
  const Bool isShort = vertexCount <= kMostShortVertices;
  const UInt32 stride = LayOutVertex(record, isTarget);
  const Int vertexBytes = vertexCount * stride;
  const Int indexBytes = isTarget ? 0 : indices.GetCount() * (isShort ? 2 : 4);
  constexpr Int kMostPadding = 3;
  RETURN_IF_ERROR(buffer.Reserve(indexBytes + kMostPadding + vertexBytes));
  if (!isTarget)
    RETURN_IF_ERROR(WriteIndices(record, buffer, indices, isShort, settings.flipZ));
  RETURN_IF_ERROR(buffer.Align());
  record.vertexView.AddByteOffset(buffer.GetBytes().GetCount());
  record.vertexView.AddByteLength(vertexBytes);
  ASSIGN_OR_RETURN(Byte* const room, buffer.AppendRoom(vertexBytes));
  if (isTarget)
    return VertexWriter(record, vertex_data, init_positions.GetFirst(), nullptr, settings).Write(room, stride);
  // Without morphs there is no target to want them.
  if (settings.exportMorphs)
    RETURN_IF_ERROR(init_positions.ResizeForOverwrite(vertexCount));
  return VertexWriter(record, vertex_data, nullptr, init_positions.GetFirst(), settings).Write(room, stride);
}

}  // namespace q7z
