#pragma once

// What a scene shows, as triangles in world space, and the comparison of two scenes by it. Worked out anew from the objects: groups
// and instances are applied here, and what is hidden is left out. Nothing is deformed.

#include <string>

#include "host/scene/headlessdocument.h"
#include "tests/corpus/trianglepaths.h"

namespace q7z::test
{

/// Places, normals, UVs, colours, and what there is: alpha, UVs, colours. What an object has not is 0.
TrianglePaths CollectTriangles(const HeadlessDocument& document);

/// Whether both hold the same triangles, within a hundred thousandth of the first scene's size, or of 1 for what is no place. Where
/// the first has no usable normal the other may have any.
/// @return an empty text, or what is different.
std::string CompareTriangles(TrianglePaths first, TrianglePaths other);

}  // namespace q7z::test
