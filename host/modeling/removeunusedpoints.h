#pragma once

// Modeling command 227: points that no polygon uses go.

#include "host/scene/headlessobject.h"

namespace q7z
{

/// Removes the points that no polygon uses; the order of the others stays, and data of points follows. An object whose points are
/// all in use is not touched.
/// @return false without memory: nothing has changed then.
Bool RemoveUnusedPoints(HeadlessPolygonObject& object) noexcept;

}  // namespace q7z
