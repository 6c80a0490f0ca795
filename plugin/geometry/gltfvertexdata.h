#pragma once

// VertexData: the vertices of one exported mesh. A host point has as many sets of normal, UV and colour as it has polygon corners,
// a vertex of a file has one; so a point becomes as many vertices as it has different sets. Lives for one mesh or one target.
//
// What vertices have is kept in the very bytes that the file will have of them: arrays of it would be as large again, and fresh
// memory is dear.

#include <cstring>

#include "framework/check.h"
#include "framework/vector.h"
#include "plugin/document/gltfbuffer.h"

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

/// What a file keeps of a UV.
struct VertexUv
{
  Float32 x = 0;
  Float32 y = 0;
  friend constexpr Bool operator==(const VertexUv&, const VertexUv&) noexcept = default;
};

/// Where vertices are. Most are at a host point, and the points lie in the host: the first vertices are the points in their order,
/// and those behind keep no more than a number.
class VertexPositions
{
public:
  static constexpr Int32 kNone = -1;

  /// One vertex for each of the points, which outlive the list.
  void Init(const Vector* points, Int32 pointCount) noexcept
  {
    _points = points;
    _pointCount = pointCount;
  }
  Result<void> Reserve(Int vertexCount) noexcept { return _sources.Reserve(vertexCount - _pointCount); }

  Result<void> AppendAtPoint(Int32 point) noexcept { return _sources.Append(point); }
  Result<void> AppendElsewhere(const Vector& position) noexcept;

  Int GetCount() const noexcept { return _pointCount + _sources.GetCount(); }
  const Vector& operator[](Int vertex) const noexcept
  {
    const Int source = vertex < _pointCount ? vertex : _sources[vertex - _pointCount];
    return source < _pointCount ? _points[source] : _others[source - _pointCount];
  }
  /// kNone for a vertex elsewhere.
  Int32 GetPoint(Int vertex) const noexcept
  {
    const Int source = vertex < _pointCount ? vertex : _sources[vertex - _pointCount];
    return source < _pointCount ? static_cast<Int32>(source) : kNone;
  }
  /// The points of the vertices behind the first ones. For the end.
  BaseArray<Int32> TakePointsOfCopies() noexcept;

private:
  const Vector* _points = nullptr;  // not owned
  Int32 _pointCount = 0;
  BaseArray<Int32> _sources;  // for each vertex behind the first ones its point, or the point count and its place in _others
  BaseArray<Vector> _others;
};

/// Where a vertex has what among its bytes.
struct VertexLayout
{
  static constexpr Int kNone = -1;

  Int stride = 0;  ///< the bytes of a vertex
  Int normal = kNone;
  Int uv = kNone;
  Int color = kNone;
};

/// Vertices one behind the other at the end of a buffer that nobody else makes longer meanwhile.
class VertexBytes
{
public:
  /// Vertices of undefined content.
  Result<void> Init(GltfBuffer& buffer, Int stride, Int count) noexcept;
  /// Room for so many vertices in all.
  Result<void> Reserve(Int count) noexcept;
  /// One more vertex, for which there is room.
  void Append() noexcept;

  Int GetCount() const noexcept { return _count; }
  Byte* GetVertex(Int vertex) const noexcept { return _first + vertex * _stride; }

private:
  GltfBuffer* _buffer = nullptr;  // not owned
  Int _offset = 0;                // of the first vertex
  Byte* _first = nullptr;         // in the buffer's present memory
  Int _stride = 0;
  Int _count = 0;
};

/// One attribute of all vertices.
template <typename T>
class VertexAttribute
{
public:
  /// @param offset  in a vertex, or VertexLayout::kNone.
  void Init(const VertexBytes& vertices, Int offset) noexcept
  {
    _vertices = &vertices;
    _offset = offset;
  }
  Bool IsKept() const noexcept { return _offset != VertexLayout::kNone; }
  Int GetCount() const noexcept { return IsKept() ? _vertices->GetCount() : 0; }

  /// @param vertex  its first byte. True where nothing is kept.
  Bool HasBits(const Byte* vertex, const T& value) const noexcept
  {
    // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): bits, on purpose
    return !IsKept() || std::memcmp(vertex + _offset, &value, sizeof(T)) == 0;
  }
  Bool IsEqual(const Byte* vertex, const T& value) const noexcept { return !IsKept() || Get(vertex) == value; }
  /// @param vertex  its first byte. Nothing is set where nothing is kept.
  T Get(const Byte* vertex) const noexcept
  {
    T value;
    std::memcpy(&value, vertex + _offset, sizeof(T));
    return value;
  }
  void Set(Byte* vertex, const T& value) const noexcept
  {
    if (IsKept())
      std::memcpy(vertex + _offset, &value, sizeof(T));
  }

private:
  const VertexBytes* _vertices = nullptr;
  Int _offset = VertexLayout::kNone;
};

class VertexData
{
public:
  static constexpr Int32 kNone = VertexPositions::kNone;

  VertexData() noexcept = default;
  VertexData(const VertexData&) = delete;
  VertexData& operator=(const VertexData&) = delete;

  /// The host points are the first vertices, in their order, with a zero normal and UV and the colour (0, 0, 0, 1). Asked once.
  /// @param positions  of the host points; they outlive the data.
  /// @param hasColors  false for a mesh without colours: those that are given count for nothing, and none are kept.
  Result<void> Init(const Vector* positions, Int32 vertices_count, Bool hasColors = true) noexcept;

  /// The same with the vertices at the end of a buffer, which gets room for their positions and all that the layout has. What it
  /// does not have counts for nothing and is not kept.
  Result<void> Init(const Vector* positions, Int32 vertices_count, const VertexLayout& layout, GltfBuffer& buffer) noexcept;

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
    const Int32 newest = _older[point];
    if (newest == point) [[likely]]
      return HasValues(point, normal, uv, color) ? point : kNone;
    return newest == kNone ? kNone : FindAmongCopies(MakeKey(point, normal, uv, color));
  }

  /// AddVertexData for a host point where the lookup found nothing or is to be skipped.
  Result<Int32> AddMissing(Int32 point, const Vector32& normal, const Vector32& uv, const VertexColor& color) noexcept;

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
  const VertexAttribute<VertexColor>& GetPolygonColors() const noexcept { return _polygonColors; }

  /// Gives the host points that no corner uses their bytes, which are undefined until then.
  void FillUnused() noexcept;
  /// The first and the last vertex that corners use. Both are kNone where there are no corners.
  Int32 FindFirstUsed() const noexcept;
  Int32 FindLastUsed() const noexcept;

  /// For each vertex behind the host points the point that it came from, kNone for none. For the end, as nothing else can be asked
  /// then.
  BaseArray<Int32> TakePointsOfCopies() noexcept;

private:
  // The copies of a point that are looked through one by one; with more of them they are found by their hash.
  static constexpr Byte kLongestWalk = 16;

  struct Key
  {
    Int32 point = kNone;
    Vector32 normal;
    Vector32 uv;
    VertexColor color;
  };
  Key GetKey(Int32 vertex) const noexcept;
  /// @param vertex  one without a NaN.
  Bool HasValues(Int32 vertex, const Vector32& normal, const Vector32& uv, const VertexColor& color) const noexcept
  {
    // Equal numbers mostly have equal bits; 0 and -0 have not.
    const Byte* const bytes = _vertices.GetVertex(vertex);
    const Bool hasBits = _normals.HasBits(bytes, normal) && _uvs.HasBits(bytes, {uv.x, uv.y}) && HasUvDepth(vertex, uv) &&
                         _polygonColors.HasBits(bytes, color);
    return hasBits || HasNumbers(vertex, normal, uv, color);
  }
  Bool HasNumbers(Int32 vertex, const Vector32& normal, const Vector32& uv, const VertexColor& color) const noexcept;
  Bool HasUvDepth(Int32 vertex, const Vector32& uv) const noexcept { return !_uvs.IsKept() || GetUvDepth(vertex) == uv.z; }
  Bool HasValues(Int32 vertex, const Key& key) const noexcept { return HasValues(vertex, key.normal, key.uv, key.color); }
  Float32 GetUvDepth(Int32 vertex) const noexcept { return _uvDepths.IsEmpty() ? _uvDepth : _uvDepths[vertex]; }
  Vector32 GetNormalOf(Int32 vertex) const noexcept;
  Vector32 GetUvOf(Int32 vertex) const noexcept;
  VertexColor GetColorOf(Int32 vertex) const noexcept;
  /// What is not kept has its start values.
  Key MakeKey(Int32 point, const Vector32& normal, const Vector32& uv, const VertexColor& color) const noexcept;
  /// Whether a vertex of a list is one, and neither the list's end nor the point itself.
  Bool IsCopy(Int32 vertex) const noexcept { return vertex >= GetPointCount(); }
  static Bool HasNaN(const Key& key) noexcept;
  static UInt32 GetHash(const Key& key) noexcept;
  Bool IsUnused(Int32 vertex) const noexcept { return vertex < GetPointCount() && !_isProcessed[vertex]; }

  Int32 FindNext(Int32 first, Byte isProcessed) const noexcept;
  Int32 FindAmongCopies(const Key& key) const noexcept;
  Int32 FindInSlots(const Key& key) const noexcept;
  Result<Int32> AddCopy(const Key& key) noexcept;
  void EnterCopy(Int32 vertex) noexcept;
  void EnterCopiesOf(Int32 point) noexcept;
  Result<void> MakeSlots(Int count) noexcept;
  Result<void> MakeRoom() noexcept;
  Result<void> NoteUvDepth(Float32 depth) noexcept;
  void SetValues(Int32 vertex, const Key& key) noexcept;
  Int32 AppendValues(const Key& key) noexcept;

  Bool _isInitialized = false;
  Int32 _vertexCount = 0;
  Int _capacity = 0;  // vertices for which every array has room

  // For each vertex.
  GltfBuffer _ownBuffer;  // of vertices that are for no file
  VertexBytes _vertices;
  VertexPositions _positions;
  VertexAttribute<Vector32> _normals;
  VertexAttribute<VertexUv> _uvs;
  VertexAttribute<VertexColor> _polygonColors;
  // The third components, which no file keeps: the one that all have, or when they differ those of all.
  Bool _hasUvDepth = false;
  Float32 _uvDepth = 0;
  BaseArray<Float32> _uvDepths;
  // The vertices of a point that can be found, from the newest to the oldest: of a copy the next older one, of a point its newest,
  // which may be itself and then is the last; kNone ends, too.
  BaseArray<Int32> _older;

  // For each host point.
  BaseArray<Byte> _isProcessed;  // 0 or 1: whether a corner has given it its values
  BaseArray<Byte> _copyCounts;   // copies that can be found, counted up to kLongestWalk + 1

  BaseArray<Int32> _slots;  // the copies of points with more than kLongestWalk of them: open addressing, a power of two
  Int _slotsInUse = 0;
};

}  // namespace q7z
