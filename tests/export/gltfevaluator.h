#pragma once

// What a viewer of a saved file shows: positions of vertices after morph targets, skins and the transforms of nodes, worked out from
// the file alone, in 64-bit floats. All is read at once, so that the file and its host may go.

#include <array>
#include <string>
#include <vector>

#include "framework/vector.h"
#include "tests/support/savedfile.h"

namespace q7z::test
{

/// Column-major, as files have it.
using Matrix4 = std::array<double, 16>;

class GltfEvaluator
{
public:
  explicit GltfEvaluator(const SavedFile& file);

  /// Takes over the transforms of another file's nodes. They are the same nodes.
  void TakePose(const GltfEvaluator& other);

  /// Where the corners of the triangles of the first node of a name are in the world, in the order of the file, by the weights that
  /// the mesh has by default.
  std::vector<Vector> GetCorners(const std::string& nodeName) const;

private:
  struct Node
  {
    std::string name;
    int parent = -1;
    int mesh = -1;
    int skin = -1;
    Matrix4 local = {};
  };
  struct Mesh
  {
    std::vector<Vector> vertices;  ///< with the targets
    std::vector<double> indices;
    std::vector<double> joints;  ///< four a vertex
    std::vector<double> weights;
  };
  struct Skin
  {
    std::vector<double> joints;
    std::vector<Matrix4> inverseBind;
  };

  static Node ReadNode(const SavedFile& file, const std::string& path);
  static Mesh ReadMesh(const SavedFile& file, const std::string& index);
  static Skin ReadSkin(const SavedFile& file, const std::string& path);
  Matrix4 GetWorldMatrix(int node) const;
  std::vector<Vector> GetVertices(const Node& node, int nodeIndex) const;

  std::vector<Node> _nodes;
  std::vector<Mesh> _meshes;
  std::vector<Skin> _skins;
};

}  // namespace q7z::test
