#pragma once

// What the modeling commands share: points and polygons of an object get new numbers, and all data that belongs to them follows:
// normals, UVWs, colours, selections, weights, pose morphs and the keys of point tracks.

#include "host/modeling/elementmap.h"
#include "host/scene/headlessobject.h"

namespace q7z
{

/// Puts the object's points and polygons, and all data of either, where the maps say. A polygon becomes two where it is a quad to
/// be triangulated: corners a, b, c and a, c, d; the fourth corner repeats the third. Points become one or go.
///
/// Data that is shorter than the object follows as far as it reaches; what reaches beyond the object goes. A morph that links to
/// an object with as many points keeps points of its own from then on; one that links to any other shape stays as it is. Where
/// all points (all polygons) keep their numbers, their data is not touched and stays shared.
/// @return false without memory: nothing has changed then.
Bool RenumberMesh(HeadlessPolygonObject& object, const ElementMap& points, const ElementMap& polygons) noexcept;

/// Lets each morph that links to an object with as many points as this one keep those points itself. They stay shared.
void OwnLinkedMorphs(HeadlessPolygonObject& object) noexcept;

/// Calls visit(point) for the points that a polygon uses; indices outside the object are passed over.
template <typename Visit>
void VisitPoints(const HostPolygon& polygon, Int32 pointCount, Visit&& visit) noexcept
{
  const auto visitInside = [&visit, limit = static_cast<UInt32>(pointCount)](Int32 point)
  {
    if (static_cast<UInt32>(point) < limit)
      visit(point);
  };
  visitInside(polygon.a);
  visitInside(polygon.b);
  visitInside(polygon.c);
  visitInside(polygon.d);
}

}  // namespace q7z
