#include "tests/export/gltfevaluator.h"

#include <charconv>
#include <stdexcept>

namespace q7z::test
{

namespace
{

constexpr Matrix4 kIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

/// All numbers in a text, whatever stands between them.
std::vector<double> ParseNumbers(std::string_view text)
{
  std::vector<double> numbers;
  while (!text.empty())
  {
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc();
    if (isNumber)
      numbers.push_back(number);
    text.remove_prefix(isNumber ? static_cast<size_t>(end - text.data()) : 1);
  }
  return numbers;
}

Matrix4 Multiply(const Matrix4& a, const Matrix4& b)
{
  Matrix4 product = {};
  for (size_t column = 0; column < 4; ++column)
  {
    for (size_t row = 0; row < 4; ++row)
    {
      for (size_t k = 0; k < 4; ++k)
        product[4 * column + row] += a[4 * k + row] * b[4 * column + k];
    }
  }
  return product;
}

Vector Transform(const Matrix4& m, const Vector& p)
{
  return {m[0] * p.x + m[4] * p.y + m[8] * p.z + m[12], m[1] * p.x + m[5] * p.y + m[9] * p.z + m[13],
          m[2] * p.x + m[6] * p.y + m[10] * p.z + m[14]};
}

/// Translation, rotation as a unit quaternion (x, y, z, w), scale.
Matrix4 Compose(const std::vector<double>& t, const std::vector<double>& q, const std::vector<double>& s)
{
  const double x = q[0];
  const double y = q[1];
  const double z = q[2];
  const double w = q[3];
  return {(1 - 2 * (y * y + z * z)) * s[0],
          2 * (x * y + z * w) * s[0],
          2 * (x * z - y * w) * s[0],
          0,
          2 * (x * y - z * w) * s[1],
          (1 - 2 * (x * x + z * z)) * s[1],
          2 * (y * z + x * w) * s[1],
          0,
          2 * (x * z + y * w) * s[2],
          2 * (y * z - x * w) * s[2],
          (1 - 2 * (x * x + y * y)) * s[2],
          0,
          t[0],
          t[1],
          t[2],
          1};
}

Vector VectorAt(const std::vector<double>& numbers, size_t i)
{
  return {numbers.at(3 * i), numbers.at(3 * i + 1), numbers.at(3 * i + 2)};
}

std::vector<double> Numbers(const SavedFile& file, const std::string& path)
{
  return ParseNumbers(file.At(path));
}

/// -1 for what is not there.
int Index(const SavedFile& file, const std::string& path)
{
  const std::vector<double> numbers = Numbers(file, path);
  return numbers.empty() ? -1 : static_cast<int>(numbers[0]);
}

}  // namespace

GltfEvaluator::GltfEvaluator(const SavedFile& file)
{
  for (std::string i = "0"; file.At("nodes/" + i) != "-"; i = std::to_string(_nodes.size()))
    _nodes.push_back(ReadNode(file, "nodes/" + i + "/"));
  for (size_t i = 0; i < _nodes.size(); ++i)
  {
    for (const double child : Numbers(file, "nodes/" + std::to_string(i) + "/children"))
      _nodes.at(static_cast<size_t>(child)).parent = static_cast<int>(i);
  }
  for (std::string i = "0"; file.At("meshes/" + i) != "-"; i = std::to_string(_meshes.size()))
    _meshes.push_back(ReadMesh(file, i));
  for (std::string i = "0"; file.At("skins/" + i) != "-"; i = std::to_string(_skins.size()))
    _skins.push_back(ReadSkin(file, "skins/" + i + "/"));
}

GltfEvaluator::Node GltfEvaluator::ReadNode(const SavedFile& file, const std::string& path)
{
  Node node;
  node.name = file.At(path + "name");
  node.mesh = Index(file, path + "mesh");
  node.skin = Index(file, path + "skin");
  node.local = kIdentity;
  if (file.At(path + "translation") != "-")
    node.local = Compose(Numbers(file, path + "translation"), Numbers(file, path + "rotation"), Numbers(file, path + "scale"));
  return node;
}

GltfEvaluator::Mesh GltfEvaluator::ReadMesh(const SavedFile& file, const std::string& index)
{
  const std::string name = "mesh " + index + " ";
  Mesh mesh;
  mesh.indices = Numbers(file, name + "indices");
  mesh.joints = Numbers(file, name + "JOINTS_0");
  mesh.weights = Numbers(file, name + "WEIGHTS_0");
  const std::vector<double> positions = Numbers(file, name + "POSITION");
  for (size_t i = 0; i < positions.size() / 3; ++i)
    mesh.vertices.push_back(VectorAt(positions, i));
  const std::vector<double> weights = Numbers(file, "meshes/" + index + "/weights");
  for (size_t target = 0; target < weights.size(); ++target)
  {
    const std::string path = "meshes/" + index + "/primitives/0/targets/" + std::to_string(target) + "/POSITION";
    const std::vector<double> deltas = Numbers(file, "accessor " + file.At(path));
    for (size_t i = 0; i < mesh.vertices.size(); ++i)
      mesh.vertices[i] += VectorAt(deltas, i) * weights[target];
  }
  return mesh;
}

GltfEvaluator::Skin GltfEvaluator::ReadSkin(const SavedFile& file, const std::string& path)
{
  Skin skin;
  skin.joints = Numbers(file, path + "joints");
  const std::vector<double> numbers = Numbers(file, "accessor " + file.At(path + "inverseBindMatrices"));
  for (size_t joint = 0; joint < skin.joints.size(); ++joint)
  {
    Matrix4 matrix = {};
    for (size_t k = 0; k < 16; ++k)
      matrix[k] = numbers.at(16 * joint + k);
    skin.inverseBind.push_back(matrix);
  }
  return skin;
}

void GltfEvaluator::TakePose(const GltfEvaluator& other)
{
  for (size_t i = 0; i < _nodes.size(); ++i)
  {
    if (other._nodes.at(i).name != _nodes[i].name)
      throw std::runtime_error("the pose has other nodes");
    _nodes[i].local = other._nodes[i].local;
  }
}

Matrix4 GltfEvaluator::GetWorldMatrix(int node) const
{
  Matrix4 matrix = kIdentity;
  for (; node >= 0; node = _nodes[static_cast<size_t>(node)].parent)
    matrix = Multiply(_nodes.at(static_cast<size_t>(node)).local, matrix);
  return matrix;
}

std::vector<Vector> GltfEvaluator::GetVertices(const Node& node, int nodeIndex) const
{
  const Mesh& mesh = _meshes.at(static_cast<size_t>(node.mesh));
  std::vector<Vector> vertices;
  vertices.reserve(mesh.vertices.size());
  if (node.skin < 0)
  {
    const Matrix4 world = GetWorldMatrix(nodeIndex);
    for (const Vector& vertex : mesh.vertices)
      vertices.push_back(Transform(world, vertex));
    return vertices;
  }
  const Skin& skin = _skins.at(static_cast<size_t>(node.skin));
  std::vector<Matrix4> movements;
  movements.reserve(skin.joints.size());
  for (size_t i = 0; i < skin.joints.size(); ++i)
    movements.push_back(Multiply(GetWorldMatrix(static_cast<int>(skin.joints[i])), skin.inverseBind[i]));
  for (size_t i = 0; i < mesh.vertices.size(); ++i)
  {
    Vector blended;
    for (size_t k = 4 * i; k < 4 * i + 4; ++k)
      blended += Transform(movements.at(static_cast<size_t>(mesh.joints.at(k))), mesh.vertices[i]) * mesh.weights.at(k);
    vertices.push_back(blended);
  }
  return vertices;
}

std::vector<Vector> GltfEvaluator::GetCorners(const std::string& nodeName) const
{
  for (size_t i = 0; i < _nodes.size(); ++i)
  {
    if (_nodes[i].name != '"' + nodeName + '"')
      continue;
    const std::vector<Vector> vertices = GetVertices(_nodes[i], static_cast<int>(i));
    std::vector<Vector> corners;
    for (const double index : _meshes.at(static_cast<size_t>(_nodes[i].mesh)).indices)
      corners.push_back(vertices.at(static_cast<size_t>(index)));
    return corners;
  }
  throw std::runtime_error("no node " + nodeName);
}

}  // namespace q7z::test
