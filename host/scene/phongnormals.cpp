#include "host/scene/phongnormals.h"

#include <algorithm>
#include <memory>

#include "framework/trigonometry.h"
#include "host/scene/headlessneighbor.h"
#include "host/scene/headlessobject.h"

namespace q7z
{

namespace
{

/// Around a point with more polygons than this the angle is not tested, since every corner there would test all of them.
constexpr Int32 kMostTestedNeighbors = 1024;

constexpr Float kHalfTurn = 3.141592653589793;
constexpr Float kTolerance = 1e-9;  // on a cosine: polygons at just the phong angle, and in one plane, are within it

struct Face
{
  Vector area;    ///< along the normal, twice the polygon's area long
  Vector normal;  ///< of unit length, or 0
};

Vector Normalize(const Vector& vector) noexcept
{
  const Float length = vector.GetLength();
  return length > 0 ? vector * (1 / length) : Vector();
}

class PhongMesh
{
public:
  PhongMesh(const HeadlessPolygonObject& object, const PhongSettings& settings) noexcept
      : _points(object.GetPoints().GetR()),
        _polygons(object.GetPolygons().GetR()),
        _pointCount(object.GetPointCount()),
        _polygonCount(object.GetPolygonCount()),
        _settings(settings),
        _leastCosine(Cos(std::clamp(settings.angleRadians, 0.0, kHalfTurn)) - kTolerance)
  {}

  Bool Init() noexcept
  {
    if (_faces.Resize(_polygonCount).HasError())
      return false;
    for (Int i = 0; i < _polygonCount; ++i)
      _faces[i] = MakeFace(_polygons[i]);
    if (_settings.on)
      _neighbor.reset(HeadlessNeighbor::Create(_pointCount, _polygons, _polygonCount));
    return !_settings.on || _neighbor;
  }

  HostCorners GetCorners(Int polygon) const noexcept
  {
    const HostPolygon& p = _polygons[polygon];
    HostCorners corners;
    corners.a = GetNormal(p.a, _faces[polygon]);
    corners.b = GetNormal(p.b, _faces[polygon]);
    corners.c = GetNormal(p.c, _faces[polygon]);
    corners.d = p.d == p.c ? corners.c : GetNormal(p.d, _faces[polygon]);
    return corners;
  }

private:
  Bool IsInside(Int32 point) const noexcept { return point >= 0 && point < _pointCount; }

  /// Half the cross product of the diagonals is a quad's area; a triangle, whose d is its c, fits in.
  Face MakeFace(const HostPolygon& p) const noexcept
  {
    if (!IsInside(p.a) || !IsInside(p.b) || !IsInside(p.c) || !IsInside(p.d))
      return {};
    const Vector area = (_points[p.c] - _points[p.a]).Cross(_points[p.d] - _points[p.b]);
    return {area, Normalize(area)};
  }

  Vector GetNormal(Int32 point, const Face& own) const noexcept
  {
    if (!_neighbor)
      return own.normal;
    const Int32* around = nullptr;
    const Int32 count = _neighbor->GetPointPolygons(point, &around);
    const Bool hasLimit = _settings.limit && own.normal != Vector() && count <= kMostTestedNeighbors;
    Vector sum;
    for (Int32 i = 0; i < count; ++i)
    {
      const Face& face = _faces[around[i]];
      if (&face == &own || !hasLimit || face.normal.Dot(own.normal) >= _leastCosine)
        sum += face.area;
    }
    const Vector normal = Normalize(sum);
    return normal == Vector() ? own.normal : normal;
  }

  const Vector* _points;
  const HostPolygon* _polygons;
  Int32 _pointCount;
  Int32 _polygonCount;
  PhongSettings _settings;
  Float _leastCosine;
  BaseArray<Face> _faces;
  std::unique_ptr<HeadlessNeighbor> _neighbor;  // null when phong is off
};

}  // namespace

Bool ComputePhongNormals(const HeadlessPolygonObject& object, const PhongSettings& settings,
                         const HostCornerHandle& target) noexcept
{
  PhongMesh mesh(object, settings);
  if (!mesh.Init())
    return false;
  for (Int i = 0; i < object.GetPolygonCount(); ++i)
    target.Set(i, mesh.GetCorners(i));
  return true;
}

}  // namespace q7z
