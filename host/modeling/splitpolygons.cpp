#include "host/modeling/splitpolygons.h"

#include "host/modeling/renumbermesh.h"

namespace q7z
{

namespace
{

/// Who uses a point.
constexpr Byte kUsedByPart = 1;
constexpr Byte kUsedByRest = 2;

struct SplitMaps
{
  ElementMap partPolygons;
  ElementMap restPolygons;
  ElementMap partPoints;
  ElementMap restPoints;

  /// @return false without memory, or when nothing is selected.
  Bool Build(const HeadlessPolygonObject& object) noexcept
  {
    return BuildPolygons(object) && partPolygons.GetNewCount() > 0 && BuildPoints(object);
  }

private:
  /// Walks polygons and ranges side by side.
  Bool BuildPolygons(const HeadlessPolygonObject& object) noexcept
  {
    const BaseArray<SelectionRange>& ranges = object.GetPolygonSelection().GetRanges();
    const SelectionRange* range = ranges.begin();
    const auto isSelected = [&](Int32 polygon) noexcept
    {
      while (range != ranges.end() && range->last < polygon)
        ++range;
      return range != ranges.end() && range->first <= polygon;
    };
    const Int32 count = object.GetPolygonCount();
    return partPolygons.Build(count, isSelected) &&
           restPolygons.Build(count, [this](Int32 polygon) noexcept { return partPolygons.Find(polygon) < 0; });
  }

  Bool BuildPoints(const HeadlessPolygonObject& object) noexcept
  {
    const Int32 count = object.GetPointCount();
    HostArray<Byte> markArray;
    if (!markArray.Create(count))
      return false;
    Byte* const marks = markArray.GetW();
    if (!marks)
      return true;  // no points: the maps are those of none
    const HostPolygon* const polygons = object.GetPolygons().GetR();
    for (Int32 i = 0; i < object.GetPolygonCount(); ++i)
    {
      const Byte user = partPolygons.Find(i) >= 0 ? kUsedByPart : kUsedByRest;
      VisitPoints(polygons[i], count, [=](Int32 point) noexcept { marks[point] = static_cast<Byte>(marks[point] | user); });
    }
    return partPoints.Build(count, [=](Int32 point) noexcept { return (marks[point] & kUsedByPart) != 0; }) &&
           restPoints.Build(count, [=](Int32 point) noexcept { return marks[point] != kUsedByPart; });
  }
};

}  // namespace

HeadlessOwner<HeadlessPolygonObject> SplitSelectedPolygons(HeadlessPolygonObject& object) noexcept
{
  SplitMaps maps;
  if (!maps.Build(object))
    return nullptr;
  HeadlessObject* const copy = object.CloneAlone();
  if (!copy)
    return nullptr;
  HeadlessOwner<HeadlessPolygonObject> part(copy->AsPolygonObject());
  OwnLinkedMorphs(*part);
  if (!RenumberMesh(*part, maps.partPoints, maps.partPolygons) || !RenumberMesh(object, maps.restPoints, maps.restPolygons))
    return nullptr;
  return part;
}

}  // namespace q7z
