#include "host/modeling/removeunusedpoints.h"

#include <cstring>

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
    VisitPoints(polygons[i], count, [marks](Int32 point) noexcept { marks[point] = 1; });
  if (count < 1 || !std::memchr(marks, 0, static_cast<size_t>(count)))
    return true;
  ElementMap map;
  return map.Build(count, [=](Int32 point) noexcept { return marks[point]; }) &&
         RenumberMesh(object, map, ElementMap(object.GetPolygonCount()));
}

}  // namespace q7z
