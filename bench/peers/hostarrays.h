#pragma once

// What a host keeps of a loaded file, filled from tinygltf's model by plain loops: the least that anyone pays on top of
// tinygltf's load to arrive where a host's import ends. An object lives as long as the measured process.

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tinygltf
{
class Model;
}

namespace q7z::peers
{

/// How much a point follows a joint.
struct PointWeight
{
  std::int32_t joint;  // index into the skin's joints
  double weight;
};

/// A primitive as polygons. Arrays are not cleared before they are filled, so the loops pay for nothing twice.
struct PolygonObject
{
  std::size_t pointCount = 0;
  std::size_t polygonCount = 0;
  std::unique_ptr<double[]> points;                // 3 for each point
  std::unique_ptr<std::int32_t[]> polygons;        // 4 points for each polygon, the last twice in a triangle
  std::unique_ptr<float[]> normals;                // 4 corners of 3 for each polygon; null without normals
  std::unique_ptr<float[]> uvs;                    // likewise, the third always 0; null without texture coordinates
  std::unique_ptr<PointWeight[]> weights;          // 4 for each point; null without joints
  std::vector<std::unique_ptr<double[]>> targets;  // for each morph target the points that it moves to, as above
};

struct NodeObject
{
  std::string name;
  std::array<double, 12> matrix{};    // offset and three axes
  int mesh = -1;                      // index into the scene's meshes
  std::vector<NodeObject*> children;  // not owned
};

/// A key with tangents, which a host has room for in every key.
struct Key
{
  struct Tangent
  {
    double seconds = 0;
    double value = 0;
  };
  double seconds = 0;
  double value = 0;
  Tangent left;
  Tangent right;
  std::int32_t interpolation = 0;
};

/// The keys of one component of a node's position, rotation (three angles) or scale.
struct Track
{
  int node = -1;
  int component = 0;  // 0 to 8
  std::vector<Key> keys;
};

struct HostScene
{
  std::vector<std::vector<PolygonObject>> meshes;  // for each mesh its primitives
  std::vector<NodeObject> nodes;
  std::vector<Track> tracks;
};

/// Throws std::runtime_error for what the benchmarks' inputs do not hold: other primitives than indexed triangles, sparse
/// accessors, ranges outside of a buffer, animations of anything but transforms by linear keys of floats.
HostScene FillHostArrays(const tinygltf::Model& model);

}  // namespace q7z::peers
