#include "host/modeling/triangulate.h"

#include "host/modeling/renumbermesh.h"

namespace q7z
{

Bool Triangulate(HeadlessPolygonObject& object) noexcept
{
  const HostPolygon* const polygons = object.GetPolygons().GetR();
  const Int32 count = object.GetPolygonCount();
  const auto isQuad = [](const HostPolygon& polygon) noexcept { return polygon.c != polygon.d; };
  if (std::none_of(polygons, polygons + count, isQuad))
    return true;
  ElementMap map;
  return map.Build(count, [=](Int32 polygon) noexcept { return isQuad(polygons[polygon]) ? 2 : 1; }) &&
         RenumberMesh(object, ElementMap(object.GetPointCount()), map);
}

}  // namespace q7z
