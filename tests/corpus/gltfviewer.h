#pragma once

// What a viewer of a glTF file shows at a time, worked out from the file alone: the places of its nodes, and the triangles of its
// meshes after morph targets and skins. Two files can be held against each other, whoever wrote them.

#include <string>
#include <vector>

#include "tests/corpus/gltffile.h"
#include "tests/corpus/trianglepaths.h"

namespace q7z::test
{

struct GltfSampler
{
  enum class Mode
  {
    kLinear,
    kStep,
    kSpline,
  };
  int node = -1;
  std::string path;
  Mode mode = Mode::kLinear;
  std::vector<double> times;
  std::vector<double> values;  ///< of a spline: in-tangent, value and out-tangent of each key

  bool IsRotation() const { return path == "rotation"; }
  bool IsSpline() const { return mode == Mode::kSpline; }
  /// Components of a value.
  size_t GetWidth() const { return values.size() / times.size() / (IsSpline() ? 3 : 1); }
  /// The first component of what key k holds: 0 its in-tangent, 1 its value, 2 its out-tangent.
  size_t GetPlace(size_t k, size_t part) const { return IsSpline() ? (3 * k + part) * GetWidth() : k * GetWidth(); }
  std::vector<double> At(double time) const;
};

struct GltfNode
{
  std::string name;
  std::vector<int> children;
  int mesh = -1;
  int skin = -1;
  bool isCamera = false;
  bool hasMatrix = false;
  HostMatrix matrix;
  std::vector<double> translation;
  std::vector<double> rotation;
  std::vector<double> scale;
  std::vector<double> weights;  ///< of its mesh's targets
};

class GltfViewer
{
public:
  /// Of the first animation, if there is one.
  explicit GltfViewer(const GltfFile& file);

  const std::vector<GltfNode>& GetNodes() const { return _nodes; }
  /// The roots of the scene that is shown first; of a file without scenes the nodes that are no children.
  const std::vector<int>& GetRoots() const { return _roots; }
  /// Whether some skin counts the node among its joints.
  bool IsJoint(int node) const;
  std::vector<GltfSampler>& GetSamplers() { return _samplers; }
  /// The first and the last key; 0 twice without any.
  std::pair<double, double> GetTimeRange() const;

  /// The world matrix of each node, the identity for those that do not belong to the scene.
  std::vector<HostMatrix> GetWorldMatrices(double time) const;
  /// All triangles of the scene in the world, node by node in the order of a walk from its roots.
  std::vector<CornerTriangle> GetTriangles(double time) const;

private:
  struct Influences
  {
    std::vector<size_t> joints;  ///< four a point
    std::vector<double> weights;
  };
  struct Mesh  ///< a primitive of one
  {
    std::vector<Vector> points;
    std::vector<std::vector<Vector>> targets;
    std::vector<size_t> corners;
    std::vector<Influences> influences;
  };
  struct Skin
  {
    std::vector<int> joints;
    std::vector<HostMatrix> inverseBind;
  };

  static GltfNode ReadNode(Json json);
  static Mesh ReadPrimitive(const GltfFile& file, Json json);
  void ReadSkin(const GltfFile& file, Json json);
  void ReadAnimation(const GltfFile& file, Json json);
  std::vector<GltfNode> GetPose(double time) const;
  std::vector<HostMatrix> GetWorldMatrices(const std::vector<GltfNode>& pose) const;
  std::vector<Vector> GetPoints(const Mesh& mesh, const GltfNode& node, size_t index,
                                const std::vector<HostMatrix>& worlds) const;

  std::vector<GltfNode> _nodes;
  std::vector<int> _roots;
  std::vector<int> _order;                 ///< from the roots on, parents first
  std::vector<std::vector<Mesh>> _meshes;  ///< their primitives
  std::vector<Skin> _skins;
  std::vector<GltfSampler> _samplers;
};

}  // namespace q7z::test
