#include "tests/corpus/worldtriangles.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "host/scene/headlessposemorphtag.h"
#include "host/scene/headlessweighttag.h"

namespace q7z::test
{

namespace
{

constexpr Int32 kMorphTagStrength = 1031;

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

using Points = std::vector<Vector>;

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

// Pose morphs.

Points ToPoints(const HostArray<Vector>& array)
{
  return array.IsEmpty() ? Points() : Points(array.GetR(), array.GetR() + array.GetCount());
}

Points GetShape(const HeadlessMorph& morph)
{
  if (morph.GetPointNode())
    return ToPoints(morph.GetPointNode()->GetPoints());
  const HeadlessObject* const object = morph.GetObject();
  return object && object->IsPolygonObject() ? ToPoints(object->AsPolygonObject()->GetPoints()) : Points();
}

void ApplyMorphs(const HeadlessPoseMorphTag& tag, Points& points)
{
  const HostValue* const parameter = tag.GetParameters().Find(kMorphTagStrength);
  const Float tagStrength = parameter ? parameter->GetFloat(1) : 1;
  const Points own = points;
  const Points kept = tag.GetMorphCount() > 0 ? GetShape(*tag.GetMorph(0)) : Points();
  const Points& base = kept.size() == own.size() ? kept : own;
  for (Int32 m = 1; m < tag.GetMorphCount(); ++m)
  {
    const Points shape = GetShape(*tag.GetMorph(m));
    for (size_t i = 0; shape.size() == base.size() && i < base.size(); ++i)
      points[i] += (shape[i] - base[i]) * (tagStrength * tag.GetMorph(m)->GetStrength());
  }
}

// Skins.

HostMatrix Scaled(const HostMatrix& m, Float factor)
{
  return {m.offset * factor, m.axisX * factor, m.axisY * factor, m.axisZ * factor};
}

HostMatrix Sum(const HostMatrix& a, const HostMatrix& b)
{
  return {a.offset + b.offset, a.axisX + b.axisX, a.axisY + b.axisY, a.axisZ + b.axisZ};
}

bool HasSkinDeformer(const HeadlessObject& object)
{
  for (const HeadlessObject* child = object.GetDown(); child; child = child->GetNext())
  {
    if (child->GetType() == kSkinDeformerType)
      return true;
  }
  return false;
}

/// The matrix of each point in the object's space: the mean of what its joints do, by weight. Empty where nothing is deformed.
std::vector<HostMatrix> BlendJoints(const HeadlessPolygonObject& object)
{
  const auto* const tag = FindTag<HeadlessWeightTag>(object, kWeightTagType);
  if (!tag || !tag->HasBindPose() || !HasSkinDeformer(object))
    return {};
  const size_t count = static_cast<size_t>(object.GetPointCount());
  const HostMatrix nothing = Scaled(HostMatrix(), 0);
  std::vector<HostMatrix> blends(count, nothing);
  std::vector<Float> sums(count, 0);
  for (Int32 j = 0; j < tag->GetJointCount(); ++j)
  {
    if (!tag->GetJoint(j))
      continue;
    const HostMatrix movement = object.GetGlobalMatrix().GetInverse() * tag->GetJoint(j)->GetGlobalMatrix() *
                                tag->GetJointBindMatrix(j).GetInverse() * tag->GetObjectBindMatrix();
    for (const PointWeight& entry : tag->GetWeights(j))
    {
      const size_t point = static_cast<size_t>(entry.point);
      blends[point] = Sum(blends[point], Scaled(movement, entry.weight));
      sums[point] += entry.weight;
    }
  }
  for (size_t i = 0; i < count; ++i)
    blends[i] = sums[i] == 0 ? HostMatrix() : Scaled(blends[i], 1 / sums[i]);
  return blends;
}

// One object.

class MeshReader
{
public:
  explicit MeshReader(const HeadlessPolygonObject& object)
      : _object(object), _points(ToPoints(object.GetPoints())), _blends(BlendJoints(object))
  {
    if (const auto* const morphs = FindTag<HeadlessPoseMorphTag>(object, kPoseMorphTagType))
      ApplyMorphs(*morphs, _points);
    for (size_t i = 0; i < _blends.size(); ++i)
      _points[i] = _blends[i] * _points[i];
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
      const size_t index = static_cast<size_t>(point);
      paths[kPlaces].back()[i] = world * _points.at(index);
      if (_normals)
      {
        const Vector normal = GetCorner(_normals, polygon, corner);
        paths[kNormals].back()[i] = TurnNormal(world, _blends.empty() ? normal : TurnNormal(_blends[index], normal));
      }
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
  Points _points;  // deformed, in the object's space
  std::vector<HostMatrix> _blends;
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
