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

constexpr Float32 kUnitTolerance = 2e-7f;

Vector32 ToSingle(const Vector& v) noexcept
{
  return {static_cast<Float32>(v.x), static_cast<Float32>(v.y), static_cast<Float32>(v.z)};
}

/// What the corners a, b, c of one polygon have.
struct PolygonCorners
{
  Vector32 normals[3];
  Vector32 uvs[3];
  VertexColor colors[3];
};

template <typename T>
void CopyCorners(const T* numbers, Vector32 (&corners)[3]) noexcept
{
  for (Vector32& corner : corners)
  {
    corner = {static_cast<Float32>(numbers[0]), static_cast<Float32>(numbers[1]), static_cast<Float32>(numbers[2])};
    numbers += 3;
  }
}

/// Zeros where the tag has no data for the polygon.
void ReadCorners(const HostCornerHandle& handle, Int polygon, Vector32 (&corners)[3]) noexcept
{
  if (polygon >= handle.polygonCount)
    std::fill_n(corners, 3, Vector32());
  else if (handle.singles)
    CopyCorners(handle.singles + 12 * polygon, corners);
  else if (handle.doubles)
    CopyCorners(handle.doubles + 12 * polygon, corners);
}

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
  /// them. All indices have been checked. A polygon that names a point twice adds zero to it.
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
      const HostPolygon& polygon = polygons[i];
      const Vector a = points[polygon.a];
      const Vector normal = (points[polygon.b] - a).Cross(points[polygon.c] - a);
      _sums[polygon.a] += normal;
      _sums[polygon.b] += normal;
      _sums[polygon.c] += normal;
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

  /// @param points  the corners' host points.
  /// @param corners  those of the polygon before, or new ones: what is not in use keeps its start values.
  Result<void> Read(Int polygon, const Int32* points, PolygonCorners& corners) noexcept
  {
    // Without a normal tag all normals are zero: those that the host could compute are not asked for.
    if (_normals)
      RETURN_IF_ERROR(ReadNormals(polygon, points, corners.normals));
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

  Result<void> ReadNormals(Int polygon, const Int32* points, Vector32 (&normals)[3]) noexcept
  {
    ReadCorners(_normals, polygon, normals);
    for (Int k = 0; k < 3; ++k)
    {
      Vector32& normal = normals[k];
      const Float32 length = normal.GetLength();
      // One that is as near to unit length as its 32 bits can be stays, so that a file that is loaded and saved keeps its normals.
      if (std::abs(length - 1) <= kUnitTolerance)
        continue;
      if (length > 0)
        normal = {normal.x / length, normal.y / length, normal.z / length};
      else if (length == 0)
      {
        ASSIGN_OR_RETURN(normal, _pointNormals.Get(points[k]));
      }
    }
    return {};
  }

  void ReadUVs(Int polygon, Vector32 (&uvs)[3]) const noexcept
  {
    ReadCorners(_uvs, polygon, uvs);
    if (!_isTiled)
      return;
    for (Vector32& uv : uvs)
      uv = {_tilingU.Apply(uv.x), _tilingV.Apply(uv.y), uv.z};
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

/// The corners a, b, c of all polygons, each checked to be a host point.
Result<void> ListCorners(const HostPolygonObject* op, const VertexData& vertexData, BaseArray<Int32>& indices) noexcept
{
  const HostPolygon* const polygons = op->GetPolygonsR();
  CHECK_STATE(polygons);
  const Int polygonCount = op->GetPolygonCount();
  RETURN_IF_ERROR(indices.ResizeForOverwrite(3 * polygonCount));
  const UInt32 pointCount = static_cast<UInt32>(vertexData.GetPointCount());
  const auto isOutside = [pointCount](Int32 point) { return static_cast<UInt32>(point) >= pointCount; };
  Int32* corner = indices.begin();
  for (Int i = 0; i < polygonCount; ++i, corner += 3)
  {
    corner[0] = polygons[i].a;
    corner[1] = polygons[i].b;
    corner[2] = polygons[i].c;
    if (!isOutside(corner[0]) && !isOutside(corner[1]) && !isOutside(corner[2])) [[likely]]
      continue;
    for (Int k = 0; k < 3; ++k)
      RETURN_IF_ERROR(vertexData.CheckHostPoint(corner[k]));
  }
  return {};
}

/// A new vertex for all corners but the first of each point.
Result<void> ReserveForAllCorners(const BaseArray<Int32>& indices, VertexData& vertexData) noexcept
{
  BaseArray<Byte> isUsed;
  RETURN_IF_ERROR(isUsed.Resize(vertexData.GetPointCount()));
  Int count = vertexData.GetPointCount();
  for (const Int32 point : indices)
  {
    count += isUsed[point];
    isUsed[point] = 1;
  }
  return vertexData.Reserve(count);
}

/// @param vertex  the host point, which is replaced by the vertex of the corner.
Result<void> FindOrAdd(VertexData& vertexData, Int32& vertex, const Vector32& normal, const Vector32& uv,
                       const VertexColor& color, Bool skipLookup) noexcept
{
  const Int32 point = vertex;
  vertex = skipLookup ? VertexData::kNone : vertexData.FindVertex(point, normal, uv, color);
  if (vertex != VertexData::kNone)
    return {};
  ASSIGN_OR_RETURN(vertex, vertexData.AddVertexData(point, normal, uv, color, true));  // looked up already
  return {};
}

}  // namespace

Result<void> SplitVertices(const MeshData& record, BaseArray<Int32>& indices, HostPolygonObject* op, VertexData& vertexData,
                           Bool skipLookup, Bool isTarget) noexcept
{
  RETURN_IF_ERROR(ListCorners(op, vertexData, indices));
  if (!record.normals.isUsed && !record.uvs.isUsed && !record.polygonColors.isUsed)
    return {};
  if (skipLookup)
    RETURN_IF_ERROR(ReserveForAllCorners(indices, vertexData));
  // Without lookups the order of the vertices does not depend on what they have.
  const MeshData nothing;
  CornerAttributes attributes(isTarget && skipLookup ? nothing : record, op, vertexData.GetPointCount());
  PolygonCorners corners;
  const Int cornerCount = indices.GetCount();
  for (Int first = 0, polygon = 0; first < cornerCount; first += 3, ++polygon)
  {
    Int32* const vertices = &indices[first];
    RETURN_IF_ERROR(attributes.Read(polygon, vertices, corners));
    for (Int k = 0; k < 3; ++k)
      RETURN_IF_ERROR(FindOrAdd(vertexData, vertices[k], corners.normals[k], corners.uvs[k], corners.colors[k], skipLookup));
  }
  return {};
}

}  // namespace q7z
