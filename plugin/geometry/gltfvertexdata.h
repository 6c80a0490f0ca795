#pragma once

// VertexData: the vertices of one exported mesh. A host point has as many sets of normal, UV and colour as it has polygon corners,
// a vertex of a file has one; so a point becomes as many vertices as it has different sets. Lives for one mesh or one target.

#include "framework/basearray.h"
#include "framework/check.h"
#include "framework/vector.h"

namespace q7z
{

struct VertexColor
{
  Float32 r = 0;
  Float32 g = 0;
  Float32 b = 0;
  Float32 a = 1;
  friend constexpr Bool operator==(const VertexColor&, const VertexColor&) noexcept = default;
};

/// Where vertices are. Most are at a host point, and the points lie in the host, so that a vertex keeps no more than its number.
class VertexPositions
{
public:
  static constexpr Int32 kNone = -1;

  /// One vertex for each of the points, which outlive the list.
  Result<void> Init(const Vector* points, Int32 pointCount) noexcept;
  Result<void> Reserve(Int vertexCount) noexcept { return _sources.Reserve(vertexCount); }

  Result<void> AppendAtPoint(Int32 point) noexcept { return _sources.Append(point); }
  Result<void> AppendElsewhere(const Vector& position) noexcept;

  Int GetCount() const noexcept { return _sources.GetCount(); }
  const Vector& operator[](Int vertex) const noexcept
  {
    const Int32 source = _sources[vertex];
    return source < _pointCount ? _points[source] : _others[source - _pointCount];
  }
  /// kNone for a vertex elsewhere.
  Int32 GetPoint(Int vertex) const noexcept { return _sources[vertex] < _pointCount ? _sources[vertex] : kNone; }
  /// The points of all vertices. For the end.
  BaseArray<Int32> TakePoints() noexcept;

private:
  const Vector* _points = nullptr;  // not owned
  Int32 _pointCount = 0;
  BaseArray<Int32> _sources;  // for each vertex its point, or the point count and its place in _others
  BaseArray<Vector> _others;
};

class VertexData
{
public:
  static constexpr Int32 kNone = VertexPositions::kNone;

  /// The host points are the first vertices, in their order, with a zero normal and UV and the colour (0, 0, 0, 1). Asked once.
  /// @param positions  of the host points; they outlive the data.
  /// @param hasColors  false for a mesh without colours: those that are given count for nothing, and none are kept.
  Result<void> Init(const Vector* positions, Int32 vertices_count, Bool hasColors = true) noexcept;

  /// Room for so many vertices in all.
  Result<void> Reserve(Int vertexCount) noexcept;

  /// @return the vertex of a corner that uses host point vertex_index: the point itself for its first corner, an earlier vertex of
  /// that point with equal values, or a new one behind all others. Values are equal as numbers are: a NaN never, -0 and 0 are.
  /// @param skipLookup  true makes a new vertex for every further corner, so that the order depends on the polygons alone.
  Result<Int32> AddVertexData(Int32 vertex_index, const Vector32& normal, const Vector32& uv, const VertexColor& color,
                              Bool skipLookup) noexcept;

  /// Appends a vertex that belongs to no host point. @return its index.
  Result<Int32> AddVertex(const Vector& position, const Vector32& normal, const Vector32& uv, const VertexColor& color) noexcept;

  /// The lookup alone, for a host point. @return the vertex, or kNone when AddVertexData would have to give one its values.
  Int32 FindVertex(Int32 point, const Vector32& normal, const Vector32& uv, const VertexColor& color) const noexcept
  {
    if (!_isProcessed[point])
      return kNone;
    if (_older[point] != kNone)
      return FindAmongCopies({point, normal, uv, color});
    return HasValues(point, normal, uv, color) ? point : kNone;
  }

  /// The error that AddVertexData gives for a number that is not the index of a host point.
  Result<void> CheckHostPoint(Int32 vertex_index) const noexcept;

  Int GetVertexCount() const noexcept { return _positions.GetCount(); }
  Int GetCount() const noexcept { return GetVertexCount(); }
  Int GetPointCount() const noexcept { return _isProcessed.GetCount(); }

  Result<Vector> GetPosition(Int32 vertex_index) const noexcept;
  Result<Vector32> GetNormal(Int32 vertex_index) const noexcept;
  Result<Vector32> GetUV(Int32 vertex_index) const noexcept;
  Result<VertexColor> GetPolygonColor(Int32 vertex_index) const noexcept;

  // All vertices at once.
  const VertexPositions& GetPositions() const noexcept { return _positions; }
  const BaseArray<Vector32>& GetNormals() const noexcept { return _normals; }
  const BaseArray<Vector32>& GetUVs() const noexcept { return _uvs; }
  const BaseArray<VertexColor>& GetPolygonColors() const noexcept { return _polygonColors; }

  /// For each vertex the host point that it came from, kNone for none. For the end, as nothing else can be asked then.
  BaseArray<Int32> TakeHostPoints() noexcept;

private:
  // The copies of a point that are looked through one by one; with more of them they are found by their hash.
  static constexpr Byte kLongestWalk = 16;

  struct Key
  {
    Int32 point;
    Vector32 normal;
    Vector32 uv;
    VertexColor color;
  };
  Key GetKey(Int32 vertex) const noexcept
  {
    return {_positions.GetPoint(vertex), _normals[vertex], _uvs[vertex], _hasColors ? _polygonColors[vertex] : VertexColor()};
  }
  Bool HasValues(Int32 vertex, const Vector32& normal, const Vector32& uv, const VertexColor& color) const noexcept
  {
    return _normals[vertex] == normal && _uvs[vertex] == uv && (!_hasColors || _polygonColors[vertex] == color);
  }
  Bool HasValues(Int32 vertex, const Key& key) const noexcept { return HasValues(vertex, key.normal, key.uv, key.color); }
  static UInt32 GetHash(const Key& key) noexcept;

  Int32 FindAmongCopies(const Key& key) const noexcept;
  Int32 FindInSlots(const Key& key) const noexcept;
  Result<Int32> AddCopy(const Key& key) noexcept;
  void EnterCopy(Int32 vertex) noexcept;
  void EnterCopiesOf(Int32 point) noexcept;
  Result<void> MakeSlots(Int count) noexcept;
  Result<void> MakeRoom() noexcept;
  Int32 AppendValues(const Key& key) noexcept;

  Bool _isInitialized = false;
  Bool _hasColors = true;
  Int32 _vertexCount = 0;
  Int _capacity = 0;  // vertices for which every array has room

  // For each vertex.
  VertexPositions _positions;
  BaseArray<Vector32> _normals;
  BaseArray<Vector32> _uvs;
  BaseArray<VertexColor> _polygonColors;  // empty without _hasColors
  BaseArray<Int32> _older;                // the next older copy of the same point, of a point its newest one; kNone ends

  // For each host point.
  BaseArray<Byte> _isProcessed;  // 0 or 1: whether a corner has given it its values
  BaseArray<Byte> _copyCounts;   // copies that can be found, counted up to kLongestWalk + 1

  BaseArray<Int32> _slots;  // the copies of points with more than kLongestWalk of them: open addressing, a power of two
  Int _slotsInUse = 0;
};

}  // namespace q7z
