#include "host/modeling/renumbermesh.h"

#include <utility>

#include "host/scene/headlessposemorphtag.h"
#include "host/scene/headlesstrack.h"
#include "host/scene/headlessweighttag.h"

namespace q7z
{

namespace
{

/// Which corner of a quad each corner of its two triangles is.
constexpr int kTriangleCorners[] = {0, 1, 2, 2, 0, 2, 3, 3};

void HalveQuad(const HostPolygon& quad, HostPolygon* triangles) noexcept
{
  triangles[0] = {quad.a, quad.b, quad.c, quad.c};
  triangles[1] = {quad.a, quad.c, quad.d, quad.d};
}

template <Int kPerCorner, typename T>
void HalveCorners(const T* quad, T* triangles) noexcept
{
  for (const int corner : kTriangleCorners)
    triangles = std::copy_n(quad + corner * kPerCorner, kPerCorner, triangles);
}

/// Takes the first sourceCount elements of kEach values each through a map. halve(old, new) fills the two that take the place of
/// one.
template <Int kEach, typename T, typename Halve>
Bool Carry(const T* source, Int sourceCount, const ElementMap& map, HostArray<T>& result, Halve&& halve) noexcept
{
  if (!result.Create(map.GetStart(sourceCount) * kEach))
    return false;
  T* const target = result.GetW();
  map.VisitRuns(sourceCount,
                [&](const ElementMap::Run& run)
                {
                  const T* const from = source + run.first * kEach;
                  T* const to = target + run.start * kEach;
                  if (run.each == 1)
                    std::copy_n(from, run.count * kEach, to);
                  else
                  {
                    for (Int i = 0; i < run.count; ++i)
                      halve(from + i * kEach, to + 2 * i * kEach);
                  }
                });
  return true;
}

/// Points never become two.
template <Int kEach, typename T>
Bool CarryPoints(const T* source, Int sourceCount, const ElementMap& map, HostArray<T>& result) noexcept
{
  return Carry<kEach>(source, sourceCount, map, result, [](const T*, T*) noexcept {});
}

template <Int kPerCorner, typename T>
Bool CarryCorners(const T* source, Int sourceCount, const ElementMap& map, HostArray<T>& result) noexcept
{
  return Carry<4 * kPerCorner>(source, sourceCount, map, result,
                               [](const T* from, T* to) noexcept { HalveCorners<kPerCorner>(from, to); });
}

/// The entries of the points that stay, in just the memory that they need: parts of a big mesh keep their weights for long.
Bool CarryWeights(const BaseArray<PointWeight>& old, const ElementMap& map, BaseArray<PointWeight>& result) noexcept
{
  const auto stays = [&](const PointWeight& weight) noexcept { return map.Find(weight.point) >= 0; };
  if (result.Reserve(std::count_if(old.begin(), old.end(), stays)).HasError())
    return false;
  for (const PointWeight& weight : old)
  {
    if (stays(weight))
      DropError(result.Append({map.GetStart(weight.point), weight.weight}));  // there is room
  }
  return true;
}

/// The points of the object that a morph links to, when they fit an object with pointCount points; else null.
const HostArray<Vector>* FindLinkedPoints(const HeadlessMorph& morph, Int32 pointCount) noexcept
{
  const HeadlessObject* const shown = morph.GetObject();
  const HeadlessPolygonObject* const mesh = shown ? shown->AsPolygonObject() : nullptr;
  return mesh && mesh->GetPointCount() == pointCount ? &mesh->GetPoints() : nullptr;
}

/// One renumbering: everything new is made first, then put in place without a need for memory.
class MeshEdit
{
public:
  MeshEdit(HeadlessPolygonObject& object, const ElementMap& points, const ElementMap& polygons) noexcept
      : _object(object), _points(points), _polygons(polygons)
  {}

  Bool Prepare() noexcept
  {
    if (!PrepareGeometry() || !PrepareKeys())
      return false;
    for (HeadlessTag* tag = _object.GetFirstTag(); tag; tag = tag->GetNext())
    {
      if (!PrepareTag(*tag))
        return false;
    }
    return true;
  }

  void Commit() noexcept
  {
    _object.SetGeometry(std::move(_newPoints), std::move(_newPolygons));
    for (NewCorners& entry : _newCorners)
      entry.tag->SetNumbers(std::move(entry.singles), std::move(entry.doubles));
    for (NewColors& entry : _newColors)
      entry.tag->SetColors(std::move(entry.colors));
    for (NewWeights& entry : _newWeights)
      entry.tag->SetWeights(entry.joint, std::move(entry.weights));
    for (NewPoints& entry : _newPointData)
    {
      if (entry.morph)
        entry.morph->SetPoints(std::move(entry.points));
      else
        entry.key->SetPoints(std::move(entry.points));  // has points already, so takes no memory
    }
    RenumberSelection(_object.GetPolygonSelection());
    for (HeadlessTag* tag = _object.GetFirstTag(); tag; tag = tag->GetNext())
    {
      if (tag->GetType() == kPolygonSelectionTagType)
        RenumberSelection(static_cast<HeadlessSelectionTag&>(*tag).GetSelection());
    }
  }

private:
  struct NewCorners
  {
    HeadlessCornerTag* tag;
    HostArray<Float32> singles;
    HostArray<Float> doubles;
  };
  struct NewColors
  {
    HeadlessVertexColorTag* tag;
    HostArray<Float32> colors;
  };
  struct NewWeights
  {
    HeadlessWeightTag* tag;
    Int32 joint;
    BaseArray<PointWeight> weights;
  };
  /// Of a morph or of a key.
  struct NewPoints
  {
    HeadlessMorph* morph;
    HeadlessKey* key;
    HostArray<Vector> points;
  };

  Bool PrepareGeometry() noexcept
  {
    _newPoints = _object.GetPoints();
    _newPolygons = _object.GetPolygons();
    if (!_points.IsIdentity() && !CarryPoints<1>(_object.GetPoints().GetR(), _object.GetPointCount(), _points, _newPoints))
      return false;
    if (!_polygons.IsIdentity() &&
        !Carry<1>(_object.GetPolygons().GetR(), _object.GetPolygonCount(), _polygons, _newPolygons,
                  [](const HostPolygon* quad, HostPolygon* triangles) noexcept { HalveQuad(*quad, triangles); }))
      return false;
    return _points.IsIdentity() || RenumberCorners();
  }

  /// An index outside the object stays what it is: points only become fewer, so it stays outside.
  Bool RenumberCorners() noexcept
  {
    HostPolygon* const polygons = _newPolygons.GetW();
    if (!polygons)
      return _newPolygons.IsEmpty();
    for (Int i = 0; i < _newPolygons.GetCount(); ++i)
    {
      for (Int32* const point : {&polygons[i].a, &polygons[i].b, &polygons[i].c, &polygons[i].d})
      {
        if (*point >= 0 && *point < _points.GetOldCount())
          *point = _points.GetStart(*point);
      }
    }
    return true;
  }

  Bool PrepareKeys() noexcept
  {
    const HostDescId id(kPointTrackParameter);
    const HeadlessTrackList* const tracks = _object.GetTracks();
    for (HeadlessTrack* track = tracks->Find(id); track && track->GetId() == id; track = track->GetNext())
    {
      HeadlessCurve* const curve = track->GetCurve();
      for (Int i = 0; curve && i < curve->GetKeyCount(); ++i)
      {
        if (std::as_const(*curve).GetKey(i)->GetPoints().IsEmpty())
          continue;
        HeadlessKey* const key = curve->GetKey(i);
        if (!key || !PreparePoints(key->GetPoints(), {nullptr, key, {}}))
          return false;
      }
    }
    return true;
  }

  Bool PrepareTag(HeadlessTag& tag) noexcept
  {
    switch (tag.GetType())
    {
      case kNormalTagType:
      case kUvwTagType: return PrepareCorners(static_cast<HeadlessCornerTag&>(tag));
      case kVertexColorTagType: return PrepareColors(static_cast<HeadlessVertexColorTag&>(tag));
      case kPoseMorphTagType: return PrepareMorphs(static_cast<HeadlessPoseMorphTag&>(tag));
      case kWeightTagType: return PrepareWeights(static_cast<HeadlessWeightTag&>(tag));
      default: return true;  // selections are renumbered where they stand
    }
  }

  Bool PrepareCorners(HeadlessCornerTag& tag) noexcept
  {
    if (_polygons.IsIdentity())
      return true;
    NewCorners entry{&tag, {}, {}};
    const HostCornerHandle old = static_cast<const HeadlessCornerTag&>(tag).GetHandleR();
    if (old.doubles ? !CarryCorners<3>(old.doubles, old.polygonCount, _polygons, entry.doubles)
                    : !CarryCorners<3>(old.singles, old.polygonCount, _polygons, entry.singles))
      return false;
    return !_newCorners.Append(std::move(entry)).HasError();
  }

  Bool PrepareColors(HeadlessVertexColorTag& tag) noexcept
  {
    const ElementMap& map = tag.IsPerPoint() ? _points : _polygons;
    if (map.IsIdentity())
      return true;
    NewColors entry{&tag, {}};
    const HostColorHandle old = static_cast<const HeadlessVertexColorTag&>(tag).GetHandleR();
    if (tag.IsPerPoint() ? !CarryPoints<4>(old.colors, old.count, map, entry.colors)
                         : !CarryCorners<4>(old.colors, old.count, map, entry.colors))
      return false;
    return !_newColors.Append(std::move(entry)).HasError();
  }

  Bool PrepareWeights(HeadlessWeightTag& tag) noexcept
  {
    for (Int32 joint = 0; !_points.IsIdentity() && joint < tag.GetJointCount(); ++joint)
    {
      if (!PrepareJoint({&tag, joint, {}}))
        return false;
    }
    return true;
  }

  Bool PrepareJoint(NewWeights entry) noexcept
  {
    return CarryWeights(entry.tag->GetWeights(entry.joint), _points, entry.weights) &&
           !_newWeights.Append(std::move(entry)).HasError();
  }

  Bool PrepareMorphs(HeadlessPoseMorphTag& tag) noexcept
  {
    for (Int32 i = 0; i < tag.GetMorphCount(); ++i)
    {
      HeadlessMorph* const morph = tag.GetMorph(i);
      const HeadlessPointNode* const own = morph->GetPointNode();
      const HostArray<Vector>* const points = own ? &own->GetPoints() : FindLinkedPoints(*morph, _points.GetOldCount());
      if (points && !PreparePoints(*points, {morph, nullptr, {}}))
        return false;
    }
    return true;
  }

  Bool PreparePoints(const HostArray<Vector>& old, NewPoints entry) noexcept
  {
    if (_points.IsIdentity())
      return true;
    return CarryPoints<1>(old.GetR(), old.GetCount(), _points, entry.points) &&
           !_newPointData.Append(std::move(entry)).HasError();
  }

  void RenumberSelection(HeadlessSelection& selection) const noexcept
  {
    if (!_polygons.IsIdentity())
      selection.Renumber([this](Int polygon) noexcept { return _polygons.GetStart(polygon); });
  }

  HeadlessPolygonObject& _object;
  const ElementMap& _points;
  const ElementMap& _polygons;
  HostArray<Vector> _newPoints;
  HostArray<HostPolygon> _newPolygons;
  BaseArray<NewCorners> _newCorners;
  BaseArray<NewColors> _newColors;
  BaseArray<NewWeights> _newWeights;
  BaseArray<NewPoints> _newPointData;
};

}  // namespace

Bool RenumberMesh(HeadlessPolygonObject& object, const ElementMap& points, const ElementMap& polygons) noexcept
{
  MeshEdit edit(object, points, polygons);
  if (!edit.Prepare())
    return false;
  edit.Commit();
  return true;
}

void OwnLinkedMorphs(HeadlessPolygonObject& object) noexcept
{
  for (HeadlessTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext())
  {
    if (tag->GetType() != kPoseMorphTagType)
      continue;
    const auto& morphs = static_cast<const HeadlessPoseMorphTag&>(*tag);
    for (Int32 i = 0; i < morphs.GetMorphCount(); ++i)
    {
      HeadlessMorph* const morph = morphs.GetMorph(i);
      if (const HostArray<Vector>* const points = FindLinkedPoints(*morph, object.GetPointCount()))
        morph->SetPoints(*points);
    }
  }
}

}  // namespace q7z
