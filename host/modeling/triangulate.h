#pragma once

// Modeling command 221: quads become triangles.

#include "host/scene/headlessobject.h"

namespace q7z
{

/// Makes two triangles of each quad (c differs from d), (a, b, c) and (a, c, d), in the quad's place; triangles stay. Corner data
/// follows, and both triangles of a selected quad are selected. An object without quads is not touched.
/// @return false without memory, or when the polygons would be too many for 32 bits: nothing has changed then.
Bool Triangulate(HeadlessPolygonObject& object) noexcept;

}  // namespace q7z
