#include "tests/corpus/gltfviewer.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace q7z::test
{

namespace
{

using Numbers = std::vector<double>;

constexpr int kTriangles = 4;

Vector ToVector(const Numbers& numbers, size_t place)
{
  return {numbers.at(place), numbers.at(place + 1), numbers.at(place + 2)};
}

std::vector<Vector> ToVectors(const Numbers& numbers)
{
  std::vector<Vector> vectors;
  for (size_t i = 0; i + 2 < numbers.size(); i += 3)
    vectors.push_back(ToVector(numbers, i));
  return vectors;
}

HostMatrix ToMatrix(const Numbers& columns, size_t place)
{
  return {ToVector(columns, place + 12), ToVector(columns, place), ToVector(columns, place + 4), ToVector(columns, place + 8)};
}

void Normalize(Numbers& quaternion)
{
  double sum = 0;
  for (const double component : quaternion)
    sum += component * component;
  for (double& component : quaternion)
    component /= sum > 0 ? std::sqrt(sum) : 1;
}

HostMatrix ToLocalMatrix(const GltfNode& node)
{
  if (node.hasMatrix)
    return node.matrix;
  Numbers q = node.rotation;
  Normalize(q);
  const double x = q[0];
  const double y = q[1];
  const double z = q[2];
  const double w = q[3];
  return {ToVector(node.translation, 0),
          Vector{1 - 2 * (y * y + z * z), 2 * (x * y + z * w), 2 * (x * z - y * w)} * node.scale[0],
          Vector{2 * (x * y - z * w), 1 - 2 * (x * x + z * z), 2 * (y * z + x * w)} * node.scale[1],
          Vector{2 * (x * z + y * w), 2 * (y * z - x * w), 1 - 2 * (x * x + y * y)} * node.scale[2]};
}

/// From a to b the shorter way round.
Numbers Slerp(const Numbers& a, Numbers b, double part)
{
  double cosine = 0;
  for (size_t i = 0; i < 4; ++i)
    cosine += a[i] * b[i];
  for (double& component : b)
    component *= cosine < 0 ? -1 : 1;
  const double angle = std::acos(std::min(std::fabs(cosine), 1.0));
  const double sine = std::sin(angle);
  const double fromA = sine < 1e-6 ? 1 - part : std::sin((1 - part) * angle) / sine;
  const double fromB = sine < 1e-6 ? part : std::sin(part * angle) / sine;
  for (size_t i = 0; i < 4; ++i)
    b[i] = a[i] * fromA + b[i] * fromB;
  return b;
}

}  // namespace

std::vector<double> GltfSampler::At(double time) const
{
  const size_t width = GetWidth();
  const auto part = [&](size_t k, size_t which)
  {
    const auto first = values.begin() + static_cast<std::ptrdiff_t>(GetPlace(k, which));
    return Numbers(first, first + static_cast<std::ptrdiff_t>(width));
  };
  const size_t next = static_cast<size_t>(std::upper_bound(times.begin(), times.end(), time) - times.begin());
  if (next == 0 || next == times.size() || mode == Mode::kStep)
    return part(next == 0 ? 0 : next - 1, 1);
  const double length = times[next] - times[next - 1];
  const double s = (time - times[next - 1]) / length;
  const Numbers a = part(next - 1, 1);
  const Numbers b = part(next, 1);
  if (IsRotation() && !IsSpline())
    return Slerp(a, b, s);
  const Numbers out = part(next - 1, 2);
  const Numbers in = part(next, 0);
  Numbers value(width);
  for (size_t i = 0; i < width; ++i)
  {
    const double hermite = (2 * s * s * s - 3 * s * s + 1) * a[i] + (s * s * s - 2 * s * s + s) * length * out[i] +
                           (3 * s * s - 2 * s * s * s) * b[i] + (s * s * s - s * s) * length * in[i];
    value[i] = IsSpline() ? hermite : a[i] + (b[i] - a[i]) * s;
  }
  return value;
}

GltfViewer::GltfViewer(const GltfFile& file)
{
  const Json root = file.GetRoot();
  for (const Json mesh : GetElements(root, "meshes"))
  {
    std::vector<Mesh>& primitives = _meshes.emplace_back();
    for (const Json primitive : GetElements(mesh, "primitives"))
    {
      if (GetNumber(primitive, "mode", kTriangles) == kTriangles)
        primitives.push_back(ReadPrimitive(file, primitive));
    }
  }
  for (const Json node : GetElements(root, "nodes"))
  {
    _nodes.push_back(ReadNode(node));
    if (_nodes.back().mesh >= 0)
      _nodes.back().weights = GetNumbers(GetElements(root, "meshes").at(static_cast<size_t>(_nodes.back().mesh)), "weights");
  }
  for (const Json skin : GetElements(root, "skins"))
    ReadSkin(file, skin);
  for (const Json animation : GetElements(root, "animations"))
  {
    if (_samplers.empty())
      ReadAnimation(file, animation);
  }
  std::set<int> children;
  for (const GltfNode& node : _nodes)
    children.insert(node.children.begin(), node.children.end());
  for (int i = 0; i < static_cast<int>(_nodes.size()); ++i)
  {
    if (!children.contains(i))
      _roots.push_back(i);
  }
  const std::vector<Json> scenes = GetElements(root, "scenes");
  if (!scenes.empty())
  {
    const Numbers roots = GetNumbers(scenes.at(static_cast<size_t>(GetNumber(root, "scene", 0))), "nodes");
    _roots.assign(roots.begin(), roots.end());
  }
  _order = _roots;
  for (size_t i = 0; i < _order.size(); ++i)
  {
    const std::vector<int>& below = _nodes.at(static_cast<size_t>(_order[i])).children;
    _order.insert(_order.end(), below.begin(), below.end());
  }
}

GltfNode GltfViewer::ReadNode(Json json)
{
  GltfNode node;
  node.name = GetText(json, "name");
  node.mesh = GetIndex(json, "mesh");
  node.skin = GetIndex(json, "skin");
  node.isCamera = GetIndex(json, "camera") >= 0;
  const auto read = [&](const char* name, const Numbers& missing)
  {
    const Numbers numbers = GetNumbers(json, name);
    return numbers.empty() ? missing : numbers;
  };
  const Numbers children = GetNumbers(json, "children");
  node.children.assign(children.begin(), children.end());
  const Numbers matrix = GetNumbers(json, "matrix");
  node.hasMatrix = !matrix.empty();
  if (node.hasMatrix)
    node.matrix = ToMatrix(matrix, 0);
  node.translation = read("translation", {0, 0, 0});
  node.rotation = read("rotation", {0, 0, 0, 1});
  node.scale = read("scale", {1, 1, 1});
  return node;
}

GltfViewer::Mesh GltfViewer::ReadPrimitive(const GltfFile& file, Json json)
{
  Mesh mesh;
  const Json attributes = json["attributes"];
  mesh.points = ToVectors(file.ReadAccessor(GetIndex(attributes, "POSITION")));
  if (const int indices = GetIndex(json, "indices"); indices >= 0)
  {
    const Numbers numbers = file.ReadAccessor(indices);
    mesh.corners.assign(numbers.begin(), numbers.end());
  }
  else
  {
    for (size_t i = 0; i < mesh.points.size(); ++i)
      mesh.corners.push_back(i);
  }
  for (const Json target : GetElements(json, "targets"))
  {
    const int deltas = GetIndex(target, "POSITION");
    mesh.targets.push_back(deltas < 0 ? std::vector<Vector>(mesh.points.size()) : ToVectors(file.ReadAccessor(deltas)));
  }
  for (std::string set = "0"; GetIndex(attributes, ("JOINTS_" + set).c_str()) >= 0; set = std::to_string(mesh.influences.size()))
  {
    const Numbers joints = file.ReadAccessor(GetIndex(attributes, ("JOINTS_" + set).c_str()));
    mesh.influences.push_back({{joints.begin(), joints.end()},
                               file.ReadAccessor(GetIndex(attributes, ("WEIGHTS_" + set).c_str()))});
  }
  return mesh;
}

void GltfViewer::ReadSkin(const GltfFile& file, Json json)
{
  Skin& skin = _skins.emplace_back();
  const Numbers joints = GetNumbers(json, "joints");
  skin.joints.assign(joints.begin(), joints.end());
  skin.inverseBind.resize(joints.size());
  const int accessor = GetIndex(json, "inverseBindMatrices");
  const Numbers numbers = accessor < 0 ? Numbers() : file.ReadAccessor(accessor);
  for (size_t i = 0; i < joints.size() && accessor >= 0; ++i)
    skin.inverseBind[i] = ToMatrix(numbers, 16 * i);
}

void GltfViewer::ReadAnimation(const GltfFile& file, Json json)
{
  const std::vector<Json> samplers = GetElements(json, "samplers");
  for (const Json channel : GetElements(json, "channels"))
  {
    const Json target = channel["target"];
    const Json source = samplers.at(static_cast<size_t>(GetIndex(channel, "sampler")));
    const std::string mode = GetText(source, "interpolation");
    GltfSampler sampler;
    sampler.node = GetIndex(target, "node");
    sampler.path = GetText(target, "path");
    sampler.mode = mode == "STEP"          ? GltfSampler::Mode::kStep
                   : mode == "CUBICSPLINE" ? GltfSampler::Mode::kSpline
                                           : GltfSampler::Mode::kLinear;
    sampler.times = file.ReadAccessor(GetIndex(source, "input"));
    sampler.values = file.ReadAccessor(GetIndex(source, "output"));
    if (sampler.node >= 0 && !sampler.times.empty() && !sampler.values.empty())
      _samplers.push_back(std::move(sampler));
  }
}

bool GltfViewer::IsJoint(int node) const
{
  return std::any_of(_skins.begin(), _skins.end(), [&](const Skin& skin)
                     { return std::find(skin.joints.begin(), skin.joints.end(), node) != skin.joints.end(); });
}

std::pair<double, double> GltfViewer::GetTimeRange() const
{
  if (_samplers.empty())
    return {};
  std::pair<double, double> range = {_samplers[0].times.front(), _samplers[0].times.back()};
  for (const GltfSampler& sampler : _samplers)
    range = {std::min(range.first, sampler.times.front()), std::max(range.second, sampler.times.back())};
  return range;
}

std::vector<GltfNode> GltfViewer::GetPose(double time) const
{
  std::vector<GltfNode> pose = _nodes;
  for (const GltfSampler& sampler : _samplers)
  {
    GltfNode& node = pose.at(static_cast<size_t>(sampler.node));
    Numbers& value = sampler.path == "translation" ? node.translation
                     : sampler.IsRotation()        ? node.rotation
                     : sampler.path == "scale"     ? node.scale
                                                   : node.weights;
    value = sampler.At(time);
  }
  return pose;
}

std::vector<HostMatrix> GltfViewer::GetWorldMatrices(double time) const
{
  return GetWorldMatrices(GetPose(time));
}

std::vector<HostMatrix> GltfViewer::GetWorldMatrices(const std::vector<GltfNode>& pose) const
{
  std::vector<HostMatrix> worlds(pose.size());
  for (const int root : _roots)
    worlds.at(static_cast<size_t>(root)) = ToLocalMatrix(pose[static_cast<size_t>(root)]);
  for (const int parent : _order)
  {
    for (const int child : pose[static_cast<size_t>(parent)].children)
      worlds.at(static_cast<size_t>(child)) =
        worlds[static_cast<size_t>(parent)] * ToLocalMatrix(pose[static_cast<size_t>(child)]);
  }
  return worlds;
}

std::vector<CornerTriangle> GltfViewer::GetTriangles(double time) const
{
  const std::vector<GltfNode> pose = GetPose(time);
  const std::vector<HostMatrix> worlds = GetWorldMatrices(pose);
  std::vector<CornerTriangle> triangles;
  for (const int index : _order)
  {
    const GltfNode& node = pose[static_cast<size_t>(index)];
    if (node.mesh < 0)
      continue;
    for (const Mesh& primitive : _meshes.at(static_cast<size_t>(node.mesh)))
    {
      const std::vector<Vector> points = GetPoints(primitive, node, static_cast<size_t>(index), worlds);
      for (size_t i = 0; i + 2 < primitive.corners.size(); i += 3)
        triangles.push_back({points.at(primitive.corners[i]), points.at(primitive.corners[i + 1]),
                             points.at(primitive.corners[i + 2])});
    }
  }
  return triangles;
}

std::vector<Vector> GltfViewer::GetPoints(const Mesh& mesh, const GltfNode& node, size_t index,
                                          const std::vector<HostMatrix>& worlds) const
{
  std::vector<Vector> points = mesh.points;
  for (size_t target = 0; target < mesh.targets.size() && target < node.weights.size(); ++target)
  {
    for (size_t i = 0; i < points.size(); ++i)
      points[i] += mesh.targets[target].at(i) * node.weights[target];
  }
  if (node.skin < 0 || mesh.influences.empty())
  {
    for (Vector& point : points)
      point = worlds[index] * point;
    return points;
  }
  const Skin& skin = _skins.at(static_cast<size_t>(node.skin));
  std::vector<HostMatrix> movements;
  movements.reserve(skin.joints.size());
  for (size_t j = 0; j < skin.joints.size(); ++j)
    movements.push_back(worlds.at(static_cast<size_t>(skin.joints[j])) * skin.inverseBind[j]);
  for (size_t i = 0; i < points.size(); ++i)
  {
    Vector moved;
    for (const Influences& set : mesh.influences)
    {
      for (size_t k = 4 * i; k < 4 * i + 4; ++k)
      {
        if (set.weights.at(k) != 0)
          moved += movements.at(set.joints.at(k)) * points[i] * set.weights[k];
      }
    }
    points[i] = moved;
  }
  return points;
}

}  // namespace q7z::test
