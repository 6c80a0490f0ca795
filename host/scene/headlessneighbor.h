#pragma once

// HeadlessNeighbor: for each point the polygons around it. Made once from a polygon array, read only from then on.

#include "framework/basearray.h"
#include "plugin/module/hostpolygon.h"

namespace q7z
{

class HeadlessNeighbor
{
public:
  /// Indices outside of [0, pointCount) belong to no point; a polygon that names a point twice counts once for it. Null without
  /// memory or for a negative count.
  static HeadlessNeighbor* Create(Int32 pointCount, const HostPolygon* polygons, Int32 polygonCount) noexcept;

  /// The polygons around a point, in rising order. @return their number; polygons is set to an array that lives as long as this.
  Int32 GetPointPolygons(Int32 point, const Int32** polygons) const noexcept;

private:
  BaseArray<Int> _starts;  // one more than there are points
  BaseArray<Int32> _polygons;
};

}  // namespace q7z
