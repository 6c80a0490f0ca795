#include "tests/corpus/worldtriangles.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "host/scene/headlesstag.h"

namespace q7z::test
{

namespace
{

constexpr double kTolerance = 1e-5;

enum Aspect
{
  kPlaces,
  kNormals,
  kUvs,
  kColors,
  kRest,
  kAspects,
};

template <typename Tag>
const Tag* FindTag(const HeadlessObject& object, Int32 type)
{
  return static_cast<const Tag*>(object.FindTag(type));
}

Vector Normalized(const Vector& v)
{
  const Float length = v.GetLength();
  return length > 1e-12 && std::isfinite(length) ? v * (1 / length) : Vector();
}

/// A normal under a matrix, by its inverse transpose.
Vector TurnNormal(const HostMatrix& m, const Vector& n)
{
  const Vector turned = m.axisY.Cross(m.axisZ) * n.x + m.axisZ.Cross(m.axisX) * n.y + m.axisX.Cross(m.axisY) * n.z;
  return Normalized(turned) * (m.GetDeterminant() < 0 ? -1.0 : 1.0);
}

// One object.

class MeshReader
{
public:
  explicit MeshReader(const HeadlessPolygonObject& object) : _object(object)
  {
    if (const auto* const tag = FindTag<HeadlessCornerTag>(object, kNormalTagType))
      _normals = tag->GetHandleR();
    if (const auto* const tag = FindTag<HeadlessCornerTag>(object, kUvwTagType))
      _uvs = tag->GetHandleR();
    if (const auto* const tag = FindTag<HeadlessVertexColorTag>(object, kVertexColorTagType))
    {
      _colors = tag->GetHandleR();
      _colorsPerPoint = tag->IsPerPoint();
    }
  }

  void Append(const HostMatrix& world, TrianglePaths& paths) const
  {
    for (Int i = 0; i < _object.GetPolygonCount(); ++i)
    {
      const HostPolygon& polygon = _object.GetPolygons().GetR()[i];
      AppendTriangle(world, i, {0, 1, 2}, paths);
      if (polygon.c != polygon.d)
        AppendTriangle(world, i, {0, 2, 3}, paths);
    }
  }

private:
  void AppendTriangle(const HostMatrix& world, Int polygon, const std::array<int, 3>& corners, TrianglePaths& paths) const
  {
    for (std::vector<CornerTriangle>& path : paths)
      path.emplace_back();
    const HostPolygon& indices = _object.GetPolygons().GetR()[polygon];
    for (size_t i = 0; i < 3; ++i)
    {
      const int corner = corners[i];
      const Int32 point = corner == 0 ? indices.a : corner == 1 ? indices.b : corner == 2 ? indices.c : indices.d;
      paths[kPlaces].back()[i] = world * _object.GetPoints().GetR()[point];
      if (_normals)
        paths[kNormals].back()[i] = TurnNormal(world, GetCorner(_normals, polygon, corner));
      if (_uvs)
        paths[kUvs].back()[i] = GetCorner(_uvs, polygon, corner).Scaled({1, 1, 0});
      Vector& rest = paths[kRest].back()[i];
      rest = {0, _uvs ? 1.0 : 0.0, _colors ? 1.0 : 0.0};
      if (_colors)
      {
        const Float32* const color = _colorsPerPoint ? _colors.GetPoint(point) : _colors.GetCorner(polygon, corner);
        paths[kColors].back()[i] = {color[0], color[1], color[2]};
        rest.x = color[3];
      }
    }
  }

  static Vector GetCorner(const HostCornerHandle& handle, Int polygon, int corner)
  {
    const HostCorners corners = handle.Get(polygon);
    return corner == 0 ? corners.a : corner == 1 ? corners.b : corner == 2 ? corners.c : corners.d;
  }

  const HeadlessPolygonObject& _object;
  HostCornerHandle _normals;
  HostCornerHandle _uvs;
  HostColorHandle _colors;
  bool _colorsPerPoint = false;
};

// The scene.

struct Place
{
  const HeadlessObject* object = nullptr;
  HostMatrix world;  // of the parent
};

bool IsHidden(const HeadlessObject& object)
{
  return object.GetVisibility(kEditorVisibility) == kHiddenMode && object.GetVisibility(kRenderVisibility) == kHiddenMode;
}

void PushChildren(const HeadlessObject& object, const HostMatrix& world, std::vector<Place>& places)
{
  for (const HeadlessObject* child = object.GetDown(); child; child = child->GetNext())
    places.push_back({child, world});
}

}  // namespace

TrianglePaths CollectTriangles(const HeadlessDocument& document)
{
  TrianglePaths triangles(kAspects);
  std::vector<Place> places;
  for (const HeadlessObject* object = document.GetFirstObject(); object; object = object->GetNext())
    places.push_back({object, HostMatrix()});
  while (!places.empty())
  {
    const Place place = places.back();
    places.pop_back();
    if (IsHidden(*place.object))
      continue;
    const HostMatrix world = place.world * place.object->GetLocalMatrix();
    PushChildren(*place.object, world, places);
    const HeadlessObject* shown = place.object;
    while (shown && shown->IsInstance())  // an instance takes the place of what it shows, with the children of both
    {
      shown = shown->GetReference();
      if (shown)
        PushChildren(*shown, world, places);
    }
    if (shown && shown->IsPolygonObject())
      MeshReader(*shown->AsPolygonObject()).Append(world, triangles);
  }
  return triangles;
}

std::string CompareTriangles(TrianglePaths first, TrianglePaths other)
{
  static constexpr const char* kNames[] = {"places", "normals", "UVs", "colours", "alpha, or UVs or colours at all"};
  Box box;
  for (const CornerTriangle& triangle : first[kPlaces])
    std::for_each(triangle.begin(), triangle.end(), [&](const Vector& corner) { box.Take(corner); });
  for (TrianglePaths* const paths : {&first, &other})
  {
    for (CornerTriangle& triangle : (*paths)[kPlaces])
      std::for_each(triangle.begin(), triangle.end(), [&](Vector& corner) { corner = corner * (1 / box.GetSize()); });
  }
  for (CornerTriangle& triangle : first[kNormals])
    std::replace(triangle.begin(), triangle.end(), Vector(), Vector{NAN, NAN, NAN});
  if (ComparePaths(first, other, kTolerance) <= kTolerance)
    return "";
  std::string text = std::to_string(first[kPlaces].size()) + " and " + std::to_string(other[kPlaces].size()) + " triangles";
  for (size_t aspects = 1; aspects <= kAspects; ++aspects)
  {
    const auto end = static_cast<std::ptrdiff_t>(aspects);
    if (ComparePaths({first.begin(), first.begin() + end}, {other.begin(), other.begin() + end}, kTolerance) > kTolerance)
      return text + " with other " + kNames[aspects - 1];
  }
  return text;
}

}  // namespace q7z::test
