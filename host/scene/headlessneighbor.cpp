#include "host/scene/headlessneighbor.h"

#include <memory>
#include <new>

namespace q7z
{

namespace
{

/// Calls visit(point) for each of a polygon's points once, leaving out indices outside of [0, pointCount).
template <typename Visit>
void VisitPoints(const HostPolygon& polygon, Int32 pointCount, Visit visit) noexcept
{
  const Int32 points[4] = {polygon.a, polygon.b, polygon.c, polygon.d};
  for (int i = 0; i < 4; ++i)
  {
    Bool isNew = points[i] >= 0 && points[i] < pointCount;
    for (int j = 0; j < i; ++j)
      isNew = isNew && points[j] != points[i];
    if (isNew)
      visit(points[i]);
  }
}

}  // namespace

HeadlessNeighbor* HeadlessNeighbor::Create(Int32 pointCount, const HostPolygon* polygons, Int32 polygonCount) noexcept
{
  if (pointCount < 0 || polygonCount < 0 || (polygonCount > 0 && !polygons))
    return nullptr;
  std::unique_ptr<HeadlessNeighbor> neighbor(new (std::nothrow) HeadlessNeighbor);
  if (!neighbor || neighbor->_starts.Resize(Int(pointCount) + 1).HasError())
    return nullptr;
  Int* const starts = neighbor->_starts.GetFirst();
  for (Int32 i = 0; i < polygonCount; ++i)
    VisitPoints(polygons[i], pointCount, [=](Int32 point) { ++starts[point]; });
  // Counts become the ends of the points' parts; filling from the last polygon on turns the ends into starts.
  Int total = 0;
  for (Int i = 0; i <= pointCount; ++i)
    starts[i] = total += starts[i];
  if (neighbor->_polygons.ResizeForOverwrite(total).HasError())
    return nullptr;
  Int32* const entries = neighbor->_polygons.GetFirst();
  for (Int32 i = polygonCount; i-- > 0;)
    VisitPoints(polygons[i], pointCount, [=](Int32 point) { entries[--starts[point]] = i; });
  return neighbor.release();
}

Int32 HeadlessNeighbor::GetPointPolygons(Int32 point, const Int32** polygons) const noexcept
{
  if (point < 0 || point >= _starts.GetCount() - 1)
  {
    *polygons = nullptr;
    return 0;
  }
  *polygons = _polygons.begin() + _starts[point];
  return static_cast<Int32>(_starts[point + 1] - _starts[point]);
}

}  // namespace q7z
