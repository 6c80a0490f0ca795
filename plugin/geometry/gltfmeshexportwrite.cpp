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
constexpr Int kBlockVertices = 256;

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

/// Makes 16-bit numbers of 32-bit ones, in their place: each is read before its bytes are written.
void NarrowIndices(Byte* numbers, Int count) noexcept
{
  for (Int i = 0; i < count; ++i)
  {
    UInt32 index;
    std::memcpy(&index, numbers + i * static_cast<Int>(sizeof(UInt32)), sizeof(index));
    const UInt16 narrow = static_cast<UInt16>(index);
    std::memcpy(numbers + i * static_cast<Int>(sizeof(UInt16)), &narrow, sizeof(narrow));
  }
}

/// The room holds 32-bit numbers, and nothing stands behind it yet.
Result<void> FinishIndices(MeshData& record, GltfBuffer& buffer, Bool isShort) noexcept
{
  const Int offset = record.indexView.GetByteOffset();
  const Int count = (buffer.GetBytes().GetCount() - offset) / static_cast<Int>(sizeof(UInt32));
  const Int indexBytes = isShort ? sizeof(UInt16) : sizeof(UInt32);
  if (isShort)
    NarrowIndices(buffer.GetRoom(offset), count);
  buffer.DropFrom(offset + count * indexBytes);
  record.indices.accessor.SetComponentType(isShort ? kUnsignedShort : kUnsignedInt);
  record.indexView.AddByteLength(count * indexBytes);
  return record.indices.accessor.TrackElements(buffer.GetRoom(offset), count, indexBytes);
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

Result<IndexRoom> AppendIndexRoom(MeshData& record, GltfBuffer& buffer, const HostPolygonObject* op, Bool isReversed) noexcept
{
  const Int count = Int(3) * op->GetPolygonCount();
  const Int byteCount = count * static_cast<Int>(sizeof(UInt32));
  // Seams make more vertices than there are points. Memory that is never touched costs next to nothing.
  const Int vertexBytes = Int(op->GetPointCount()) * LayOutVertex(record, false) / 2 * 3;
  RETURN_IF_ERROR(buffer.Reserve(byteCount + vertexBytes));
  record.indexView.AddByteOffset(buffer.GetBytes().GetCount());
  ASSIGN_OR_RETURN(Byte* const room, buffer.AppendRoom(byteCount));
  return count > 0 ? IndexRoom(room, count, isReversed) : IndexRoom();
}

Result<void> WriteVertices(MeshData& record, GltfBuffer& buffer, const VertexData& vertex_data, BaseArray<Vector>& init_positions,
                           const ExportOptions& settings, Bool isTarget) noexcept
{
  CHECK_ARGUMENT((init_positions.GetCount() == 0 && !isTarget) ||
                 (init_positions.GetCount() == vertex_data.GetCount() && isTarget));
  const Int vertexCount = vertex_data.GetVertexCount();
  if (!isTarget)
    RETURN_IF_ERROR(FinishIndices(record, buffer, vertexCount <= kMostShortVertices));
  const UInt32 stride = LayOutVertex(record, isTarget);
  const Int vertexBytes = vertexCount * stride;
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
