#pragma once

// A document as text, for comparisons in tests: an outline that shows what stands under what, and a dump of all that an import
// sets.

#include <string>

#include "plugin/module/hostdocument.h"

namespace q7z::test
{

/// The objects on one line, siblings in order: "Scene 0[A[B#, C=B], J^]". A mark tells the type: none for a group, "#" for a
/// polygon object, "^" for a joint, "*" for a camera, "~" for a skin deformer, "=" and the shown object's name for an instance. An object that is
/// hidden in editor and renderer has a "!" behind its mark.
std::string WriteOutline(HostDocument* document);

/// One line for each object: depth, type, name, matrix, visibility, numbers of points and polygons, tags.
std::string WriteDump(HostDocument* document);

}  // namespace q7z::test
