#pragma once

// Simple solids as triangles with normals, texture coordinates and vertex colours, and how they become a primitive of a file.
// Lengths are metres, y is up, triangles turn counter-clockwise seen from outside. Used by the generators of the samples and of
// the benchmark inputs.

#include "samples/generate/gltffile.h"
#include "samples/generate/primitive.h"

#include <array>
#include <functional>
#include <vector>

namespace q7z::generate
{

struct Vec3
{
  Float x = 0;
  Float y = 0;
  Float z = 0;
};

using Color = std::array<Float32, 4>;  // linear red, green, blue; alpha

struct Vertex
{
  std::array<Float32, 3> position;
  std::array<Float32, 3> normal;
  std::array<Float32, 2> uv;
  Color color;
};

class Solid
{
public:
  /// A box with faces of their own normals.
  void AddBox(const Vec3& center, const Vec3& size, const Color& color);

  /// The side of a cylinder, a cone (one radius 0) or a part of one around the y axis, and discs where closed.
  /// sides is 3 or more.
  struct Frustum
  {
    Float bottomRadius = 1;
    Float topRadius = 1;
    Float bottom = 0;
    Float top = 1;
    Int sides = 16;
    bool closedBelow = true;
    bool closedAbove = true;
  };
  void AddFrustum(const Frustum& frustum, const Color& color);

  /// A sphere of that many rings from pole to pole (2 or more), each of twice as many segments.
  void AddSphere(const Vec3& center, Float radius, Int rings, const Color& color);

  /// A roof of two slopes and two gables with its ridge along x, its eaves at the height `bottom`.
  struct Roof
  {
    Vec3 size;
    Float bottom = 0;
  };
  void AddRoof(const Roof& roof, const Color& color);

  /// A flat triangle to be seen from both sides.
  void AddTwoSidedTriangle(const std::array<Vec3, 3>& corners, const Color& color);

  /// A square surface of (cells + 1)² vertices around the origin, whose height and colour the callbacks tell at x and z.
  struct Terrain
  {
    Float size = 1;
    Int cells = 1;
    std::function<Float(Float x, Float z)> height;
    std::function<Color(const Vec3& point)> color;
  };
  void AddTerrain(const Terrain& terrain);

  const std::vector<Vertex>& GetVertices() const { return _vertices; }
  const std::vector<UInt16>& GetIndices() const { return _indices; }

private:
  struct Face
  {
    Vec3 u;  // from the first corner to the second
    Vec3 v;  // from the first corner to the fourth
  };
  UInt16 AddVertex(const Vec3& position, const Vec3& normal, Float s, Float t, const Color& color);
  void AddTriangle(Int a, Int b, Int c);
  void AddQuad(const Vec3& corner, const Face& face, const Color& color);
  void AddFlatTriangle(const std::array<Vec3, 3>& corners, const Color& color);
  void AddDisc(Float radius, Float height, Int sides, bool facesUp, const Color& color);

  std::vector<Vertex> _vertices;
  std::vector<UInt16> _indices;
};

/// Adds the solid's accessors to the file; vertex colours only when wanted.
Primitive AddSolid(GltfFile& file, Solid solid, bool withColors, Int material);

}  // namespace q7z::generate
