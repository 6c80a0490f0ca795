#pragma once

// The comparison of two sets of triangles, each of which is given several times over: at several times, or with its places, its
// normals and whatever else its corners have.

#include <array>
#include <vector>

#include "framework/hostmatrix.h"

namespace q7z::test
{

/// Three corners, in the order in which the file has them.
using CornerTriangle = std::array<Vector, 3>;
using TrianglePaths = std::vector<std::vector<CornerTriangle>>;

/// The diagonal of the box around points.
class Box
{
public:
  void Take(const Vector& point);
  double GetSize() const { return (_high - _low).GetLength(); }

private:
  Vector _low{1e30, 1e30, 1e30};
  Vector _high{-1e30, -1e30, -1e30};
};

/// Finds for each triangle the one that takes its path, in any order and from any corner on. What is no number is like anything.
/// @param near  how far the first places of two may be apart. @return the largest distance of corners, infinite when one has none.
double ComparePaths(const TrianglePaths& paths, const TrianglePaths& others, double near);

}  // namespace q7z::test
