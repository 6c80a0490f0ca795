#include "samples/generate/solid.h"

#include "samples/generate/waves.h"

#include <cmath>
#include <memory>
#include <stdexcept>

namespace q7z::generate
{

namespace
{

Vec3 operator+(const Vec3& a, const Vec3& b)
{
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}

Vec3 operator-(const Vec3& a, const Vec3& b)
{
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}

Vec3 operator*(const Vec3& a, Float factor)
{
  return {a.x * factor, a.y * factor, a.z * factor};
}

Vec3 Cross(const Vec3& a, const Vec3& b)
{
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

Vec3 Normalized(const Vec3& a)
{
  return a * (1 / std::sqrt(a.x * a.x + a.y * a.y + a.z * a.z));
}

std::array<Float32, 3> Floats(const Vec3& a)
{
  // Adding zero turns a negative zero into a plain one.
  return {static_cast<Float32>(a.x + 0.0), static_cast<Float32>(a.y + 0.0), static_cast<Float32>(a.z + 0.0)};
}

}  // namespace

UInt16 Solid::AddVertex(const Vec3& position, const Vec3& normal, Float s, Float t, const Color& color)
{
  // The largest index restarts a strip.
  if (_vertices.size() >= 0xFFFF)
    throw std::length_error("more vertices than a 16-bit index can tell apart");
  _vertices.push_back({Floats(position), Floats(normal), {static_cast<Float32>(s), static_cast<Float32>(t)}, color});
  return static_cast<UInt16>(_vertices.size() - 1);
}

void Solid::AddTriangle(Int a, Int b, Int c)
{
  for (const Int corner : {a, b, c})
    _indices.push_back(static_cast<UInt16>(corner));
}

void Solid::AddQuad(const Vec3& corner, const Face& face, const Color& color)
{
  const Vec3 normal = Normalized(Cross(face.u, face.v));
  const Int first = AddVertex(corner, normal, 0, 1, color);
  AddVertex(corner + face.u, normal, 1, 1, color);
  AddVertex(corner + face.u + face.v, normal, 1, 0, color);
  AddVertex(corner + face.v, normal, 0, 0, color);
  AddTriangle(first, first + 1, first + 2);
  AddTriangle(first, first + 2, first + 3);
}

void Solid::AddFlatTriangle(const std::array<Vec3, 3>& corners, const Color& color)
{
  const Vec3 normal = Normalized(Cross(corners[1] - corners[0], corners[2] - corners[0]));
  const Int first = AddVertex(corners[0], normal, 0, 1, color);
  AddVertex(corners[1], normal, 1, 1, color);
  AddVertex(corners[2], normal, 0.5, 0, color);
  AddTriangle(first, first + 1, first + 2);
}

void Solid::AddTwoSidedTriangle(const std::array<Vec3, 3>& corners, const Color& color)
{
  AddFlatTriangle(corners, color);
  AddFlatTriangle({corners[1], corners[0], corners[2]}, color);
}

void Solid::AddBox(const Vec3& center, const Vec3& size, const Color& color)
{
  const Vec3 low = center - size * 0.5;
  const Vec3 high = center + size * 0.5;
  const Vec3 x = {size.x, 0, 0};
  const Vec3 y = {0, size.y, 0};
  const Vec3 z = {0, 0, size.z};
  AddQuad({low.x, low.y, high.z}, {x, y}, color);
  AddQuad({high.x, low.y, low.z}, {x * -1, y}, color);
  AddQuad({high.x, low.y, high.z}, {z * -1, y}, color);
  AddQuad(low, {z, y}, color);
  AddQuad({low.x, high.y, high.z}, {x, z * -1}, color);
  AddQuad(low, {x, z}, color);
}

void Solid::AddDisc(Float radius, Float height, Int sides, bool facesUp, const Color& color)
{
  const Vec3 normal = {0, facesUp ? 1.0 : -1.0, 0};
  const Int center = AddVertex({0, height, 0}, normal, 0.5, 0.5, color);
  for (Int i = 0; i < sides; ++i)
  {
    const Float turns = static_cast<Float>(i) / static_cast<Float>(sides);
    const Float x = CosineOfTurns(turns);
    const Float z = SineOfTurns(turns);
    AddVertex({x * radius, height, z * radius}, normal, 0.5 + 0.5 * x, 0.5 + 0.5 * z, color);
  }
  for (Int i = 0; i < sides; ++i)
  {
    const Int here = center + 1 + i;
    const Int next = center + 1 + (i + 1) % sides;
    AddTriangle(center, facesUp ? next : here, facesUp ? here : next);
  }
}

void Solid::AddFrustum(const Frustum& frustum, const Color& color)
{
  const Float slope = (frustum.bottomRadius - frustum.topRadius) / (frustum.top - frustum.bottom);
  const Int first = static_cast<Int>(_vertices.size());
  // The seam has its vertices twice, for the texture's two edges.
  for (Int i = 0; i <= frustum.sides; ++i)
  {
    const Float turns = static_cast<Float>(i) / static_cast<Float>(frustum.sides);
    const Float x = CosineOfTurns(turns);
    const Float z = SineOfTurns(turns);
    const Vec3 normal = Normalized({x, slope, z});
    AddVertex({x * frustum.bottomRadius, frustum.bottom, z * frustum.bottomRadius}, normal, 1 - turns, 1, color);
    AddVertex({x * frustum.topRadius, frustum.top, z * frustum.topRadius}, normal, 1 - turns, 0, color);
  }
  for (Int i = 0; i < frustum.sides; ++i)
  {
    const Int below = first + 2 * i;
    // At a cone's tip one of the two triangles has no area.
    if (frustum.bottomRadius > 0)
      AddTriangle(below, below + 1, below + 2);
    if (frustum.topRadius > 0)
      AddTriangle(below + 2, below + 1, below + 3);
  }
  if (frustum.closedBelow && frustum.bottomRadius > 0)
    AddDisc(frustum.bottomRadius, frustum.bottom, frustum.sides, false, color);
  if (frustum.closedAbove && frustum.topRadius > 0)
    AddDisc(frustum.topRadius, frustum.top, frustum.sides, true, color);
}

void Solid::AddSphere(const Vec3& center, Float radius, Int rings, const Color& color)
{
  const Int segments = 2 * rings;
  const Int first = static_cast<Int>(_vertices.size());
  for (Int ring = 0; ring <= rings; ++ring)
  {
    const Float t = static_cast<Float>(ring) / static_cast<Float>(rings);
    for (Int segment = 0; segment <= segments; ++segment)
    {
      const Float s = static_cast<Float>(segment) / static_cast<Float>(segments);
      const Float ringRadius = SineOfTurns(t / 2);
      const Vec3 normal = {CosineOfTurns(s) * ringRadius, CosineOfTurns(t / 2), SineOfTurns(s) * ringRadius};
      AddVertex(center + normal * radius, Normalized(normal), 1 - s, t, color);
    }
  }
  for (Int ring = 0; ring < rings; ++ring)
  {
    for (Int segment = 0; segment < segments; ++segment)
    {
      const Int above = first + ring * (segments + 1) + segment;
      const Int below = above + segments + 1;
      // Triangles at a pole have no area where the ring is a point.
      if (ring > 0)
        AddTriangle(above, above + 1, below + 1);
      if (ring < rings - 1)
        AddTriangle(above, below + 1, below);
    }
  }
}

void Solid::AddRoof(const Roof& roof, const Color& color)
{
  const Vec3 half = roof.size * 0.5;
  const Float ridge = roof.bottom + roof.size.y;
  const Vec3 along = {roof.size.x, 0, 0};
  AddQuad({-half.x, roof.bottom, half.z}, {along, {0, roof.size.y, -half.z}}, color);
  AddQuad({half.x, roof.bottom, -half.z}, {along * -1, {0, roof.size.y, half.z}}, color);
  AddQuad({-half.x, roof.bottom, -half.z}, {along, {0, 0, roof.size.z}}, color);
  AddFlatTriangle({{{half.x, roof.bottom, half.z}, {half.x, roof.bottom, -half.z}, {half.x, ridge, 0}}}, color);
  AddFlatTriangle({{{-half.x, roof.bottom, -half.z}, {-half.x, roof.bottom, half.z}, {-half.x, ridge, 0}}}, color);
}

void Solid::AddTerrain(const Terrain& terrain)
{
  const Int first = static_cast<Int>(_vertices.size());
  const Float step = terrain.size / static_cast<Float>(terrain.cells);
  for (Int row = 0; row <= terrain.cells; ++row)
  {
    for (Int column = 0; column <= terrain.cells; ++column)
    {
      const Float x = static_cast<Float>(column) * step - terrain.size / 2;
      const Float z = static_cast<Float>(row) * step - terrain.size / 2;
      const Float slopeX = (terrain.height(x + step, z) - terrain.height(x - step, z)) / (2 * step);
      const Float slopeZ = (terrain.height(x, z + step) - terrain.height(x, z - step)) / (2 * step);
      const Vec3 point = {x, terrain.height(x, z), z};
      AddVertex(point, Normalized({-slopeX, 1, -slopeZ}), static_cast<Float>(column) / static_cast<Float>(terrain.cells),
                static_cast<Float>(row) / static_cast<Float>(terrain.cells), terrain.color(point));
    }
  }
  for (Int row = 0; row < terrain.cells; ++row)
  {
    for (Int column = 0; column < terrain.cells; ++column)
    {
      const Int here = first + row * (terrain.cells + 1) + column;
      const Int below = here + terrain.cells + 1;
      AddTriangle(here, below, below + 1);
      AddTriangle(here, below + 1, here + 1);
    }
  }
}

Primitive AddSolid(GltfFile& file, Solid solid, bool withColors, Int material)
{
  const auto shared = std::make_shared<const Solid>(std::move(solid));
  const Int count = static_cast<Int>(shared->GetVertices().size());
  const auto addAttribute = [&file, &shared, count](const char* type, auto member, bool bounds)
  {
    return file.AddAccessor({.type = type,
                             .count = count,
                             .bounds = bounds,
                             .write = [shared, member](ByteSink& target)
                             {
                               for (const Vertex& vertex : shared->GetVertices())
                                 target.WriteValues(vertex.*member);
                             }});
  };
  Primitive primitive;
  primitive.positions = addAttribute("VEC3", &Vertex::position, true);
  primitive.normals = addAttribute("VEC3", &Vertex::normal, false);
  primitive.uvs = addAttribute("VEC2", &Vertex::uv, false);
  if (withColors)
    primitive.colors = addAttribute("VEC4", &Vertex::color, false);
  const std::vector<UInt16>& indices = shared->GetIndices();
  primitive.indices = file.AddAccessor({.componentType = ComponentType::kUnsignedShort,
                                        .type = "SCALAR",
                                        .count = static_cast<Int>(indices.size()),
                                        .target = ViewTarget::kIndices,
                                        .write = [shared](ByteSink& target)
                                        {
                                          const std::vector<UInt16>& values = shared->GetIndices();
                                          target.Write(values.data(), values.size() * sizeof(UInt16));
                                        }});
  primitive.material = material;
  return primitive;
}

}  // namespace q7z::generate
