#include "bench/generate/inputs.h"
#include "bench/generate/random.h"
#include "bench/generate/scenemembers.h"
#include "samples/generate/solid.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

namespace q7z::generate
{

namespace
{

constexpr Int kChildrenPerNode = 64;

// The children of node i are 64 i + 1 to 64 i + 64, which makes a tree that is wide and shallow.
Int FirstChild(Int node)
{
  return node * kChildrenPerNode + 1;
}

std::array<Float32, 4> NextRotation(Random& random)
{
  std::array<Float, 4> quaternion;
  Float squares = 0;
  for (Float& component : quaternion)
  {
    component = random.Next(-1, 1);
    squares += component * component;
  }
  if (squares < 0.01)  // too short for a direction
    return {0, 0, 0, 1};
  const Float scale = 1 / std::sqrt(squares);
  std::array<Float32, 4> rotation;
  std::transform(quaternion.begin(), quaternion.end(), rotation.begin(),
                 [scale](Float component) { return static_cast<Float32>(component * scale); });
  return rotation;
}

void WriteTransform(JsonWriter& json, Random& random)
{
  const auto next = [&random](Float low, Float high) { return static_cast<Float32>(random.Next(low, high)); };
  const std::array<Float32, 3> translation = {next(-50, 50), next(-50, 50), next(-50, 50)};
  const std::array<Float32, 4> rotation = NextRotation(random);
  const std::array<Float32, 3> scale = {next(0.5, 2), next(0.5, 2), next(0.5, 2)};
  json.Member("translation", std::span<const Float32>(translation));
  json.Member("rotation", std::span<const Float32>(rotation));
  json.Member("scale", std::span<const Float32>(scale));
}

void WriteNodes(JsonWriter& json, Int nodeCount, Int meshCount, UInt start)
{
  Random random(start);
  json.BeginArray();
  for (Int node = 0; node < nodeCount; ++node)
  {
    json.BeginObject();
    json.Member("name", "Node " + std::to_string(node));
    WriteTransform(json, random);
    if (FirstChild(node) < nodeCount)
    {
      json.Key("children");
      json.BeginArray();
      for (Int child = FirstChild(node); child < std::min(FirstChild(node + 1), nodeCount); ++child)
        json.Value(child);
      json.EndArray();
    }
    else
      json.Member("mesh", node % meshCount);
    json.EndObject();
  }
  json.EndArray();
}

void WriteMeshes(JsonWriter& json, const std::vector<Primitive>& primitives)
{
  json.BeginArray();
  for (std::size_t i = 0; i < primitives.size(); ++i)
    WriteMesh(json, "Mesh " + std::to_string(i), {&primitives[i], 1});
  json.EndArray();
}

// A column of as many sides as it has a number, from three up, so that no mesh is like another.
Solid SmallSolid(Int number)
{
  Solid solid;
  solid.AddFrustum({.bottomRadius = 1, .topRadius = 0.5, .bottom = 0, .top = 2, .sides = 3 + number % 29}, {1, 1, 1, 1});
  return solid;
}

}  // namespace

GltfFile MakeNodes(Int nodeCount, Int meshCount, UInt start)
{
  GltfFile file(kGenerator);
  std::vector<Primitive> primitives;
  for (Int i = 0; i < meshCount; ++i)
    primitives.push_back(AddSolid(file, SmallSolid(i), false, -1));
  AddSceneMembers(file, 1);
  file.AddMember("nodes", [=](JsonWriter& json) { WriteNodes(json, nodeCount, meshCount, start); });
  file.AddMember("meshes", [primitives](JsonWriter& json) { WriteMeshes(json, primitives); });
  return file;
}

}  // namespace q7z::generate
