#pragma once

// What a scene shows, as triangles in world space, and the comparison of two scenes by it. Worked out anew from the objects: groups,
// instances, pose morphs and skins are applied here, and what is hidden is left out.

#include <array>
#include <string>
#include <vector>

#include "host/scene/headlessdocument.h"

namespace q7z::test
{

/// Attributes that the object has not are 0, and the triangle says so.
struct Corner
{
  Vector position;
  Vector normal;  ///< of unit length, or 0 for none that can be used
  Vector uv;      ///< the third component is 0
  std::array<Float, 4> color{};
};

struct Triangle
{
  std::array<Corner, 3> corners;
  bool hasUvs = false;
  bool hasColors = false;
  std::string name;  ///< the object's
};

std::vector<Triangle> CollectTriangles(const HeadlessDocument& document);

/// Whether both hold the same triangles, in any order and from any corner on, but with the same winding. Positions count as equal
/// within a hundred thousandth of the first scene's size, normals, UVs and colours within as much of 1. Where the first has no
/// usable normal the other may have any.
/// @return an empty text, or what is different.
std::string CompareTriangles(const std::vector<Triangle>& first, const std::vector<Triangle>& other);

}  // namespace q7z::test
