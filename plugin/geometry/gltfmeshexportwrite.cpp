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

constexpr Int kPositionBytes = sizeof(Vector32);

// Vertices that are bounded while they are still in the cache.
constexpr Int kBlockVertices = 256;

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

/// The room holds 32-bit numbers. Where they become 16-bit ones, nothing may stand behind it yet.
Result<void> FinishIndices(MeshData& record, GltfBuffer& buffer, const VertexData& vertex_data) noexcept
{
  GltfBufferView& view = record.indexView;
  GltfAccessor& accessor = record.indices.accessor;
  const Int count = view.GetByteLength() / static_cast<Int>(sizeof(UInt32));
  const Bool isShort = !HasWideIndices(vertex_data.GetVertexCount());
  accessor.SetComponentType(isShort ? kUnsignedShort : kUnsignedInt);
  RETURN_IF_ERROR(accessor.TrackIntegers(vertex_data.FindFirstUsed(), vertex_data.FindLastUsed(), count));
  if (!isShort)
    return {};
  const Int byteCount = count * static_cast<Int>(sizeof(UInt16));
  NarrowIndices(buffer.GetRoom(view.GetByteOffset()), count);
  buffer.DropFrom(view.GetByteOffset() + byteCount);
  view.AddByteLength(byteCount - view.GetByteLength());
  return buffer.Align();
}

void PlaceAttributes(MeshData& record, const VertexLayout& layout) noexcept
{
  if (record.normals.isUsed)
    record.normals.accessor.SetByteOffset(layout.normal);
  if (record.uvs.isUsed)
    record.uvs.accessor.SetByteOffset(layout.uv);
  if (record.polygonColors.isUsed)
    record.polygonColors.accessor.SetByteOffset(layout.color);
}

/// Gives vertices, which have all else, what depends on where they go: positions, and the mirroring of normals.
class VertexWriter
{
public:
  /// @param base  the written positions of a target's mesh, or null. A target has positions alone.
  /// @param written  room for the written positions, or null.
  VertexWriter(MeshData& record, const VertexData& vertex_data, const Vector* base, Vector* written,
               const ExportOptions& settings) noexcept
      : _record(record),
        _positions(vertex_data.GetPositions()),
        _base(base),
        _written(written),
        _scale(settings.exportScale),
        _flipZ(settings.flipZ),
        _normal(settings.flipZ && !base && record.normals.isUsed ? record.normals.accessor.GetByteOffset() : VertexLayout::kNone)
  {}

  Result<void> Write(Byte* room, Int stride) noexcept
  {
    const Int count = _positions.GetCount();
    for (Int first = 0; first < count; first += kBlockVertices)
    {
      const Int end = std::min(first + kBlockVertices, count);
      Byte* const block = room + first * stride;
      for (Int i = first; i < end; ++i)
        WriteVertex(i, room + i * stride);
      RETURN_IF_ERROR(Track(block, end - first, stride));
    }
    return {};
  }

private:
  void WriteVertex(Int i, Byte* target) noexcept
  {
    const Vector position = MirrorPosition(_positions[i]) * _scale;
    if (_written)
      _written[i] = position;
    const Vector p = _base ? position - _base[i] : position;
    const Vector32 single = {static_cast<Float32>(p.x), static_cast<Float32>(p.y), static_cast<Float32>(p.z)};
    std::memcpy(target, &single, kPositionBytes);
    if (_normal != VertexLayout::kNone)
      MirrorNormal(target + _normal);
  }

  // Subtracted from 0, so that 0 does not become -0.
  Vector MirrorPosition(const Vector& p) const noexcept { return _flipZ ? Vector{p.x, p.y, 0.0 - p.z} : p; }
  static void MirrorNormal(Byte* bytes) noexcept
  {
    Vector32 normal;
    std::memcpy(&normal, bytes, sizeof(normal));
    normal.z = 0.0f - normal.z;
    std::memcpy(bytes, &normal, sizeof(normal));
  }

  Result<void> Track(const Byte* block, Int count, Int stride) noexcept
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
  const VertexPositions& _positions;
  const Vector* const _base;
  Vector* const _written;
  const Float _scale;
  const Bool _flipZ;
  const Int _normal;  // where the normal to be mirrored is in a vertex, or kNone
};

Result<void> WriteTarget(MeshData& record, GltfBuffer& buffer, const VertexData& vertex_data,
                         const BaseArray<Vector>& init_positions, const ExportOptions& settings) noexcept
{
  RETURN_IF_ERROR(buffer.Align());
  record.vertexView.SetByteStride(kPositionBytes);
  record.vertexView.AddByteOffset(buffer.GetBytes().GetCount());
  record.vertexView.AddByteLength(vertex_data.GetVertexCount() * kPositionBytes);
  ASSIGN_OR_RETURN(Byte* const room, buffer.AppendRoom(vertex_data.GetVertexCount() * kPositionBytes));
  return VertexWriter(record, vertex_data, init_positions.GetFirst(), nullptr, settings).Write(room, kPositionBytes);
}

}  // namespace

VertexLayout LayOutVertex(const MeshData& record) noexcept
{
  VertexLayout layout{kPositionBytes};
  const auto place = [&layout](const MeshAccessor& attribute, Int byteCount)
  {
    const Int offset = attribute.isUsed ? layout.stride : VertexLayout::kNone;
    layout.stride += attribute.isUsed ? byteCount : 0;
    return offset;
  };
  layout.normal = place(record.normals, sizeof(Vector32));
  layout.uv = place(record.uvs, sizeof(VertexUv));
  layout.color = place(record.polygonColors, sizeof(VertexColor));
  return layout;
}

Bool HasWideIndices(Int vertexCount) noexcept
{
  return vertexCount > kMostShortVertices;
}

Result<IndexRoom> AppendIndexRoom(MeshData& record, GltfBuffer& buffer, const HostPolygonObject* op, Bool isReversed) noexcept
{
  const Int count = Int(3) * op->GetPolygonCount();
  const Int byteCount = count * static_cast<Int>(sizeof(UInt32));
  // Seams make more vertices than there are points. Memory that is never touched costs next to nothing.
  const Int vertexBytes = Int(op->GetPointCount()) * LayOutVertex(record).stride / 2 * 3;
  RETURN_IF_ERROR(buffer.Reserve(byteCount + vertexBytes));
  const Int offset = buffer.GetBytes().GetCount();
  record.indexView.AddByteOffset(offset);
  ASSIGN_OR_RETURN([[maybe_unused]] Byte* const room, buffer.AppendRoom(byteCount));
  record.indexView.AddByteLength(byteCount);
  // Where the indices stay as they are, vertices may follow at once.
  RETURN_IF_ERROR(buffer.Align());
  return count > 0 ? IndexRoom(buffer, offset, count, isReversed) : IndexRoom();
}

Result<void> WriteVertices(MeshData& record, GltfBuffer& buffer, const GltfBuffer& vertices, VertexData& vertex_data,
                           BaseArray<Vector>& init_positions, const ExportOptions& settings, Bool isTarget) noexcept
{
  CHECK_ARGUMENT((init_positions.GetCount() == 0 && !isTarget) ||
                 (init_positions.GetCount() == vertex_data.GetCount() && isTarget));
  if (isTarget)
    return WriteTarget(record, buffer, vertex_data, init_positions, settings);
  const Int vertexCount = vertex_data.GetVertexCount();
  const VertexLayout layout = LayOutVertex(record);
  PlaceAttributes(record, layout);
  vertex_data.FillUnused();
  RETURN_IF_ERROR(FinishIndices(record, buffer, vertex_data));
  if (&vertices != &buffer)
    RETURN_IF_ERROR(buffer.AppendBytes(vertices.GetBytes().GetFirst(), vertices.GetBytes().GetCount()));
  const Int vertexBytes = vertexCount * layout.stride;
  const Int offset = buffer.GetBytes().GetCount() - vertexBytes;
  record.vertexView.SetByteStride(static_cast<UInt32>(layout.stride));
  record.vertexView.AddByteOffset(offset);
  record.vertexView.AddByteLength(vertexBytes);
  // Without morphs there is no target to want them.
  if (settings.exportMorphs)
    RETURN_IF_ERROR(init_positions.ResizeForOverwrite(vertexCount));
  return VertexWriter(record, vertex_data, nullptr, init_positions.GetFirst(), settings)
    .Write(buffer.GetRoom(offset), layout.stride);
}

}  // namespace q7z
