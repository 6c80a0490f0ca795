#include "host/modeling/removeunusedpoints.h"

#include "host/modeling/renumbermesh.h"

namespace q7z
{

Bool RemoveUnusedPoints(HeadlessPolygonObject& object) noexcept
{
  const Int32 count = object.GetPointCount();
  HostArray<Byte> markArray;
  if (!markArray.Create(count))
    return false;
  Byte* const marks = markArray.GetW();
  const HostPolygon* const polygons = object.GetPolygons().GetR();
  for (Int32 i = 0; i < object.GetPolygonCount(); ++i)
    MarkPoints(polygons[i], count, 1, marks);
  if (std::all_of(marks, marks + count, [](Byte mark) noexcept { return mark != 0; }))
    return true;
  ElementMap map;
  return map.Build(count, [=](Int32 point) noexcept { return marks[point]; }) &&
         RenumberMesh(object, map, ElementMap(object.GetPolygonCount()));
}

}  // namespace q7z
