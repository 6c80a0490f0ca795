#pragma once

// Modeling command 220: the selected polygons of an object become an object of their own.

#include "host/scene/headlessobject.h"

namespace q7z
{

/// Takes the polygons of the active selection out of the object, with the points that no other polygon uses. They come back as a
/// new object in no document, with all points that they use, the object's name, transform, visibility, layer, tracks and tags.
/// Data of points and polygons follows on both sides; the polygons of the part are all selected. Points that no polygon used
/// stay where they are.
/// @return null when no polygon of the object is selected, or without memory: nothing has changed then.
HeadlessOwner<HeadlessPolygonObject> SplitSelectedPolygons(HeadlessPolygonObject& object) noexcept;

}  // namespace q7z
