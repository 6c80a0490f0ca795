#pragma once

// The normals that the host shades a polygon object with: per corner, the area-weighted mean of the normals of the polygons
// around the corner's point that lie within the phong angle of the corner's own polygon.

#include "host/scene/headlesstag.h"

namespace q7z
{

/// Fills target, which has room for the object's polygons. Settings that are off give each polygon's own normal to its corners.
/// A corner whose point lies outside the object gets its polygon's normal; one of a polygon without area too, if no neighbour
/// tells more: that is (0, 0, 0). @return false without memory.
Bool ComputePhongNormals(const HeadlessPolygonObject& object, const PhongSettings& settings,
                         const HostCornerHandle& target) noexcept;

}  // namespace q7z
