// How polygon corners become vertices: what each corner has of normal, UV and colour, and the vertex that fits it.

#include <algorithm>
#include <cmath>

#include "plugin/geometry/gltfmeshexportparts.h"
#include "plugin/module/hostids.h"

namespace q7z
{

namespace
{

// Parameters of a texture tag: the tiling of its material.
constexpr Int32 kOffsetU = 1000;
constexpr Int32 kOffsetV = 1001;
constexpr Int32 kLengthU = 1002;
constexpr Int32 kLengthV = 1003;

/// Whether a normal is as near to unit length as its 32 bits can be. It stays, so that a file that is loaded and saved keeps its
/// normals.
inline Bool HasUnitLength(const Vector32& normal) noexcept
{
  constexpr Float32 kTolerance = 2e-7f;
  constexpr Float32 kSquareTolerance = 3e-7f;  // the root of such a square is within the other, and most need no root
  const Float32 square = normal.Dot(normal);
  return std::abs(square - 1) <= kSquareTolerance || std::abs(std::sqrt(square) - 1) <= kTolerance;
}

Vector32 ToSingle(const Vector& v) noexcept
{
  return {static_cast<Float32>(v.x), static_cast<Float32>(v.y), static_cast<Float32>(v.z)};
}

/// One attribute of the corners a, b, c of a polygon: in its tag where it can stay as it is there, else a copy.
class CornerVectors
{
public:
  CornerVectors() noexcept = default;
  CornerVectors(const CornerVectors&) = delete;
  CornerVectors& operator=(const CornerVectors&) = delete;

  const Vector32& operator[](Int k) const noexcept { return _first[k]; }

  /// Zeros where the tag has no data for the polygon.
  void Read(const HostCornerHandle& handle, Int polygon) noexcept
  {
    static_assert(sizeof(Vector32) == 3 * sizeof(Float32));
    if (polygon < handle.polygonCount && handle.singles) [[likely]]
      _first = reinterpret_cast<const Vector32*>(handle.singles + 12 * polygon);
    else
      CopyFrom(handle, polygon);
  }

  /// A copy that can be changed.
  Vector32* GetOwn() noexcept
  {
    if (_first != _own)
      std::copy_n(_first, 3, _own);
    _first = _own;
    return _own;
  }

private:
  void CopyFrom(const HostCornerHandle& handle, Int polygon) noexcept
  {
    const Float* const numbers = polygon < handle.polygonCount ? handle.doubles + 12 * polygon : nullptr;
    for (Int k = 0; k < 3; ++k)
      _own[k] = numbers ? ToSingle({numbers[3 * k], numbers[3 * k + 1], numbers[3 * k + 2]}) : Vector32();
    _first = _own;
  }

  Vector32 _own[3];
  const Vector32* _first = _own;
};

/// What the corners a, b, c of one polygon have.
struct PolygonCorners
{
  CornerVectors normals;
  CornerVectors uvs;
  VertexColor colors[3];
};

/// The corners a, b, c; corner d is never read.
struct Triangle
{
  explicit Triangle(const HostPolygon& polygon) noexcept : points{polygon.a, polygon.b, polygon.c} {}

  Bool IsWithin(Int pointCount) const noexcept
  {
    const auto isWithin = [limit = static_cast<UInt32>(pointCount)](Int32 point) { return static_cast<UInt32>(point) < limit; };
    return isWithin(points[0]) && isWithin(points[1]) && isWithin(points[2]);
  }

  Int32 points[3];
};

/// For points whose normals the tag leaves at zero: the normalised sum of the normals of the faces around a point, each as long as
/// twice the face's area.
class PointNormals
{
public:
  PointNormals(const HostPolygonObject* op, Int pointCount) noexcept : _op(op), _pointCount(pointCount) {}

  Result<Vector32> Get(Int32 point) noexcept
  {
    if (_sums.IsEmpty())
      RETURN_IF_ERROR(AddUpFaces());
    const Vector& sum = _sums[point];
    const Float length = sum.GetLength();
    return length == 0 ? Vector32() : ToSingle({sum.x / length, sum.y / length, sum.z / length});
  }

private:
  /// All points in one walk of the polygons, as asking point by point would walk the polygons of a fan's middle once for each of
  /// them. A polygon that names a point twice adds zero to it; one with a point outside is an error once it is split.
  Result<void> AddUpFaces() noexcept
  {
    RETURN_IF_ERROR(_sums.Resize(_pointCount));
    const Vector* const points = _op->GetPointsR();
    const HostPolygon* const polygons = _op->GetPolygonsR();
    CHECK_STATE(points);
    CHECK_STATE(polygons);
    const Int polygonCount = _op->GetPolygonCount();
    for (Int i = 0; i < polygonCount; ++i)
    {
      const Triangle triangle(polygons[i]);
      if (!triangle.IsWithin(_pointCount))
        continue;
      const Vector a = points[triangle.points[0]];
      const Vector normal = (points[triangle.points[1]] - a).Cross(points[triangle.points[2]] - a);
      for (const Int32 point : triangle.points)
        _sums[point] += normal;
    }
    return {};
  }

  const HostPolygonObject* _op;
  Int _pointCount;
  BaseArray<Vector> _sums;
};

/// The tiling of one axis.
struct Tiling
{
  Float32 length = 1;
  Float32 offset = 0;

  Float32 Apply(Float32 value) const noexcept
  {
    // Deliberately only the first division is guarded: a length of 0 makes all values of the axis infinite or NaN.
    const Float32 divisor = length == 0 ? 0.0001f : length;
    return value / divisor - offset / length;
  }
};

Tiling ReadTiling(const HostTag* textureTag, Int32 lengthParameter, Int32 offsetParameter) noexcept
{
  HostValue length;
  HostValue offset;
  textureTag->GetParameter(lengthParameter, length);
  textureTag->GetParameter(offsetParameter, offset);
  return {static_cast<Float32>(length.GetFloat(1.0)), static_cast<Float32>(offset.GetFloat(0.0))};
}

/// What the corners of an object have of the attributes in use; the others have their start values.
class CornerAttributes
{
public:
  CornerAttributes(const MeshData& record, const HostPolygonObject* op, Int pointCount) noexcept : _pointNormals(op, pointCount)
  {
    if (const HostTag* const tag = record.normals.isUsed ? op->GetTag(kNormalTagType) : nullptr)
      _normals = static_cast<const HostNormalTag*>(tag)->GetHandleR();
    if (record.polygonColors.isUsed)
      _colors = static_cast<const HostVertexColorTag*>(op->GetTag(kVertexColorTagType))->GetHandleR();
    if (record.uvs.isUsed)
      ReadUvTags(op);
  }

  /// @param corners  those of the polygon before, or new ones: what is not in use keeps its start values.
  Result<void> Read(Int polygon, const Triangle& triangle, PolygonCorners& corners) noexcept
  {
    // Without a normal tag all normals are zero: those that the host could compute are not asked for.
    if (_normals)
      RETURN_IF_ERROR(ReadNormals(polygon, triangle, corners.normals));
    if (_uvs)
      ReadUVs(polygon, corners.uvs);
    if (_colors)
      ReadColors(polygon, corners.colors);
    return {};
  }

private:
  void ReadUvTags(const HostPolygonObject* op) noexcept
  {
    _uvs = static_cast<const HostUvwTag*>(op->GetTag(kUvwTagType))->GetHandleR();
    // The object's own tag alone, although its material may come from a parent's.
    const HostTag* const textureTag = op->GetTag(kTextureTagType);
    _isTiled = textureTag;
    if (!textureTag)
      return;
    _tilingU = ReadTiling(textureTag, kLengthU, kOffsetU);
    _tilingV = ReadTiling(textureTag, kLengthV, kOffsetV);
  }

  Result<void> ReadNormals(Int polygon, const Triangle& triangle, CornerVectors& normals) noexcept
  {
    normals.Read(_normals, polygon);
    if (HasUnitLength(normals[0]) && HasUnitLength(normals[1]) && HasUnitLength(normals[2])) [[likely]]
      return {};
    Vector32* const own = normals.GetOwn();
    for (Int k = 0; k < 3; ++k)
    {
      if (!HasUnitLength(own[k]))
        RETURN_IF_ERROR(Normalize(own[k], triangle.points[k]));
    }
    return {};
  }

  Result<void> Normalize(Vector32& normal, Int32 point) noexcept
  {
    const Float32 length = normal.GetLength();
    if (length > 0)
      normal = {normal.x / length, normal.y / length, normal.z / length};
    else if (length == 0)
    {
      ASSIGN_OR_RETURN(normal, _pointNormals.Get(point));
    }
    return {};
  }

  void ReadUVs(Int polygon, CornerVectors& uvs) const noexcept
  {
    uvs.Read(_uvs, polygon);
    if (!_isTiled)
      return;
    Vector32* const own = uvs.GetOwn();
    for (Int k = 0; k < 3; ++k)
      own[k] = {_tilingU.Apply(own[k].x), _tilingV.Apply(own[k].y), own[k].z};
  }

  void ReadColors(Int polygon, VertexColor (&colors)[3]) const noexcept
  {
    for (Int k = 0; k < 3; ++k)
    {
      const Float32* const color = polygon < _colors.count ? _colors.GetCorner(polygon, k) : nullptr;
      colors[k] = color ? VertexColor{color[0], color[1], color[2], color[3]} : VertexColor();
    }
  }

  HostCornerHandle _normals;
  HostCornerHandle _uvs;
  HostColorHandle _colors;
  Bool _isTiled = false;
  Tiling _tilingU;
  Tiling _tilingV;
  PointNormals _pointNormals;
};

/// A new vertex for all corners but the first of each point.
Result<void> ReserveForAllCorners(const HostPolygonObject* op, VertexData& vertexData) noexcept
{
  const Int pointCount = vertexData.GetPointCount();
  const HostPolygon* const polygons = op->GetPolygonsR();
  const Int polygonCount = op->GetPolygonCount();
  BaseArray<Byte> isUsed;
  RETURN_IF_ERROR(isUsed.Resize(pointCount));
  Int count = pointCount;
  for (Int i = 0; i < polygonCount; ++i)
  {
    const Triangle triangle(polygons[i]);
    if (!triangle.IsWithin(pointCount))
      break;  // an error once it is split
    for (const Int32 point : triangle.points)
    {
      count += isUsed[point];
      isUsed[point] = 1;
    }
  }
  return vertexData.Reserve(count);
}

/// @param vertex  receives the vertex of a corner.
Result<void> FindOrAdd(VertexData& vertexData, Int32 point, const Vector32& normal, const Vector32& uv, const VertexColor& color,
                       Bool skipLookup, Int32& vertex) noexcept
{
  vertex = skipLookup ? VertexData::kNone : vertexData.FindVertex(point, normal, uv, color);
  if (vertex != VertexData::kNone)
    return {};
  ASSIGN_OR_RETURN(vertex, vertexData.AddMissing(point, normal, uv, color));
  return {};
}

/// Calls visit(polygon, triangle), which returns a Result, for all polygons. Each corner is a host point then.
template <typename Visit>
Result<void> VisitTriangles(const HostPolygonObject* op, const VertexData& vertexData, Visit&& visit) noexcept
{
  const HostPolygon* const polygons = op->GetPolygonsR();
  CHECK_STATE(polygons);
  const Int polygonCount = op->GetPolygonCount();
  const Int pointCount = vertexData.GetPointCount();
  for (Int i = 0; i < polygonCount; ++i)
  {
    const Triangle triangle(polygons[i]);
    if (!triangle.IsWithin(pointCount)) [[unlikely]]
    {
      for (const Int32 point : triangle.points)
        RETURN_IF_ERROR(vertexData.CheckHostPoint(point));
    }
    RETURN_IF_ERROR(visit(i, triangle));
  }
  return {};
}

}  // namespace

Result<void> SplitVertices(const MeshData& record, IndexRoom& indices, HostPolygonObject* op, VertexData& vertexData,
                           Bool skipLookup, Bool isTarget) noexcept
{
  // Nothing tells the corners of a point apart then.
  if (!record.normals.isUsed && !record.uvs.isUsed && !record.polygonColors.isUsed)
    skipLookup = false;
  if (skipLookup)
    RETURN_IF_ERROR(ReserveForAllCorners(op, vertexData));
  // Without lookups the order of the vertices does not depend on what they have.
  const MeshData nothing;
  CornerAttributes attributes(isTarget && skipLookup ? nothing : record, op, vertexData.GetPointCount());
  PolygonCorners corners;
  const auto split = [&](Int polygon, const Triangle& triangle) -> Result<void>
  {
    RETURN_IF_ERROR(attributes.Read(polygon, triangle, corners));
    for (Int k = 0; k < 3; ++k)
    {
      Int32 vertex = 0;
      RETURN_IF_ERROR(FindOrAdd(vertexData, triangle.points[k], corners.normals[k], corners.uvs[k], corners.colors[k], skipLookup,
                                vertex));
      indices.Put(vertex);
    }
    return {};
  };
  return VisitTriangles(op, vertexData, split);
}

}  // namespace q7z
