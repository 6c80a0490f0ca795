#include "bench/peers/hostarrays.h"

#include <tiny_gltf.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <stdexcept>

namespace q7z::peers
{

namespace
{

constexpr std::int32_t kLinearKey = 2;

// The elements of an accessor, whose range was checked.
struct Elements
{
  const unsigned char* first = nullptr;
  std::size_t count = 0;
  std::size_t stride = 0;
  int componentType = 0;
};

Elements ElementsOf(const tinygltf::Model& model, int index, int type)
{
  const tinygltf::Accessor& accessor = model.accessors.at(static_cast<std::size_t>(index));
  const tinygltf::BufferView& view = model.bufferViews.at(static_cast<std::size_t>(accessor.bufferView));
  const tinygltf::Buffer& buffer = model.buffers.at(static_cast<std::size_t>(view.buffer));
  const int stride = accessor.ByteStride(view);
  if (accessor.sparse.isSparse || accessor.type != type || stride <= 0 || accessor.count == 0)
    throw std::runtime_error("an accessor of another kind");
  const std::size_t begin = view.byteOffset + accessor.byteOffset;
  const auto elementSize =
    static_cast<std::size_t>(tinygltf::GetNumComponentsInType(static_cast<std::uint32_t>(type)) *
                             tinygltf::GetComponentSizeInBytes(static_cast<std::uint32_t>(accessor.componentType)));
  if (begin + (accessor.count - 1) * static_cast<std::size_t>(stride) + elementSize > buffer.data.size())
    throw std::runtime_error("an accessor beyond its buffer");
  return {buffer.data.data() + begin, accessor.count, static_cast<std::size_t>(stride), accessor.componentType};
}

Elements FloatsAt(const tinygltf::Model& model, int index, int type)
{
  const Elements elements = ElementsOf(model, index, type);
  if (elements.componentType != TINYGLTF_COMPONENT_TYPE_FLOAT)
    throw std::runtime_error("an accessor that is not of floats");
  return elements;
}

Elements FloatsOf(const tinygltf::Model& model, const tinygltf::Primitive& primitive, const char* name, int type)
{
  const auto found = primitive.attributes.find(name);
  return found == primitive.attributes.end() ? Elements() : FloatsAt(model, found->second, type);
}

void FillPoints(const Elements& positions, PolygonObject& object)
{
  object.pointCount = positions.count;
  object.points = std::make_unique_for_overwrite<double[]>(3 * positions.count);
  double* target = object.points.get();
  const unsigned char* source = positions.first;
  for (std::size_t i = 0; i < positions.count; ++i, source += positions.stride, target += 3)
  {
    float point[3];
    std::memcpy(point, source, sizeof(point));
    target[0] = point[0];
    target[1] = point[1];
    target[2] = point[2];
  }
}

template <typename Index>
void FillPolygons(const Elements& indices, PolygonObject& object)
{
  object.polygonCount = indices.count / 3;
  object.polygons = std::make_unique_for_overwrite<std::int32_t[]>(4 * object.polygonCount);
  std::int32_t* target = object.polygons.get();
  const unsigned char* source = indices.first;
  for (std::size_t i = 0; i < object.polygonCount; ++i, source += 3 * sizeof(Index), target += 4)
  {
    Index corners[3];
    std::memcpy(corners, source, sizeof(corners));
    if (std::max({corners[0], corners[1], corners[2]}) >= object.pointCount)
      throw std::runtime_error("an index beyond the points");
    target[0] = static_cast<std::int32_t>(corners[0]);
    target[1] = static_cast<std::int32_t>(corners[1]);
    target[2] = static_cast<std::int32_t>(corners[2]);
    target[3] = target[2];
  }
}

template <std::size_t N>
std::unique_ptr<float[]> CornerValues(const Elements& values, const PolygonObject& object)
{
  if (values.first == nullptr)
    return nullptr;
  if (values.count < object.pointCount)
    throw std::runtime_error("fewer values than points");
  auto corners = std::make_unique_for_overwrite<float[]>(12 * object.polygonCount);
  float* target = corners.get();
  for (std::size_t i = 0; i < 4 * object.polygonCount; ++i, target += 3)
  {
    float value[3] = {};
    std::memcpy(value, values.first + static_cast<std::size_t>(object.polygons[i]) * values.stride, N * sizeof(float));
    std::memcpy(target, value, sizeof(value));
  }
  return corners;
}

void FillWeights(const tinygltf::Model& model, const tinygltf::Primitive& primitive, PolygonObject& object)
{
  const auto found = primitive.attributes.find("JOINTS_0");
  const Elements weights = FloatsOf(model, primitive, "WEIGHTS_0", TINYGLTF_TYPE_VEC4);
  if (found == primitive.attributes.end() || weights.first == nullptr)
    return;
  const Elements joints = ElementsOf(model, found->second, TINYGLTF_TYPE_VEC4);
  if (joints.componentType != TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT || std::min(joints.count, weights.count) < object.pointCount)
    throw std::runtime_error("joints of another kind");
  object.weights = std::make_unique_for_overwrite<PointWeight[]>(4 * object.pointCount);
  PointWeight* target = object.weights.get();
  for (std::size_t point = 0; point < object.pointCount; ++point)
  {
    std::uint16_t joint[4];
    float weight[4];
    std::memcpy(joint, joints.first + point * joints.stride, sizeof(joint));
    std::memcpy(weight, weights.first + point * weights.stride, sizeof(weight));
    for (int i = 0; i < 4; ++i, ++target)
      *target = {joint[i], weight[i]};
  }
}

void FillTargets(const tinygltf::Model& model, const tinygltf::Primitive& primitive, PolygonObject& object)
{
  for (const std::map<std::string, int>& attributes : primitive.targets)
  {
    const Elements offsets = ElementsOf(model, attributes.at("POSITION"), TINYGLTF_TYPE_VEC3);
    if (offsets.count < object.pointCount || offsets.componentType != TINYGLTF_COMPONENT_TYPE_FLOAT)
      throw std::runtime_error("a target of another kind");
    std::unique_ptr<double[]>& target =
      object.targets.emplace_back(std::make_unique_for_overwrite<double[]>(3 * object.pointCount));
    for (std::size_t point = 0; point < object.pointCount; ++point)
    {
      float offset[3];
      std::memcpy(offset, offsets.first + point * offsets.stride, sizeof(offset));
      for (std::size_t axis = 0; axis < 3; ++axis)
        target[3 * point + axis] = object.points[3 * point + axis] + static_cast<double>(offset[axis]);
    }
  }
}

PolygonObject FillObject(const tinygltf::Model& model, const tinygltf::Primitive& primitive)
{
  const bool isTriangles = primitive.mode == TINYGLTF_MODE_TRIANGLES || primitive.mode == -1;
  if (!isTriangles || primitive.indices < 0)
    throw std::runtime_error("a primitive that is not of indexed triangles");
  PolygonObject object;
  FillPoints(FloatsOf(model, primitive, "POSITION", TINYGLTF_TYPE_VEC3), object);
  const Elements indices = ElementsOf(model, primitive.indices, TINYGLTF_TYPE_SCALAR);
  if (indices.componentType == TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT)
    FillPolygons<std::uint32_t>(indices, object);
  else if (indices.componentType == TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT)
    FillPolygons<std::uint16_t>(indices, object);
  else
    FillPolygons<std::uint8_t>(indices, object);
  object.normals = CornerValues<3>(FloatsOf(model, primitive, "NORMAL", TINYGLTF_TYPE_VEC3), object);
  object.uvs = CornerValues<2>(FloatsOf(model, primitive, "TEXCOORD_0", TINYGLTF_TYPE_VEC2), object);
  FillWeights(model, primitive, object);
  FillTargets(model, primitive, object);
  return object;
}

std::array<double, 12> MatrixOf(const tinygltf::Node& node)
{
  if (node.matrix.size() == 16)
  {
    const std::vector<double>& m = node.matrix;
    return {m[12], m[13], m[14], m[0], m[1], m[2], m[4], m[5], m[6], m[8], m[9], m[10]};
  }
  const auto at = [](const std::vector<double>& values, std::size_t i, double standard)
  { return i < values.size() ? values[i] : standard; };
  const double x = at(node.rotation, 0, 0);
  const double y = at(node.rotation, 1, 0);
  const double z = at(node.rotation, 2, 0);
  const double w = at(node.rotation, 3, 1);
  const double sx = at(node.scale, 0, 1);
  const double sy = at(node.scale, 1, 1);
  const double sz = at(node.scale, 2, 1);
  return {at(node.translation, 0, 0), at(node.translation, 1, 0), at(node.translation, 2, 0), (1 - 2 * (y * y + z * z)) * sx,
          2 * (x * y + z * w) * sx,   2 * (x * z - y * w) * sx,   2 * (x * y - z * w) * sy,   (1 - 2 * (x * x + z * z)) * sy,
          2 * (y * z + x * w) * sy,   2 * (x * z + y * w) * sz,   2 * (y * z - x * w) * sz,   (1 - 2 * (x * x + y * y)) * sz};
}

void FillNodes(const tinygltf::Model& model, HostScene& scene)
{
  scene.nodes.resize(model.nodes.size());
  for (std::size_t i = 0; i < model.nodes.size(); ++i)
  {
    const tinygltf::Node& node = model.nodes[i];
    NodeObject& object = scene.nodes[i];
    object.name = node.name;
    object.matrix = MatrixOf(node);
    object.mesh = node.mesh;
    object.children.reserve(node.children.size());
    for (const int child : node.children)
      object.children.push_back(&scene.nodes.at(static_cast<std::size_t>(child)));
  }
}

using KeyValues = std::array<double, 3>;

KeyValues AnglesOf(const float (&q)[4])
{
  const double x = q[0];
  const double y = q[1];
  const double z = q[2];
  const double w = q[3];
  return {std::atan2(2 * (w * x + y * z), 1 - 2 * (x * x + y * y)), std::asin(std::clamp(2 * (w * y - z * x), -1.0, 1.0)),
          std::atan2(2 * (w * z + x * y), 1 - 2 * (y * y + z * z))};
}

KeyValues ValuesOf(const float (&v)[3])
{
  return {v[0], v[1], v[2]};
}

template <std::size_t N, typename Convert>
void FillKeys(const Elements& times, const Elements& values, Convert convert, Track* tracks)
{
  for (std::size_t i = 0; i < 3; ++i)
    tracks[i].keys.reserve(times.count);
  for (std::size_t key = 0; key < times.count; ++key)
  {
    float seconds = 0;
    float value[N];
    std::memcpy(&seconds, times.first + key * times.stride, sizeof(seconds));
    std::memcpy(value, values.first + key * values.stride, sizeof(value));
    const KeyValues converted = convert(value);
    for (std::size_t i = 0; i < 3; ++i)
      tracks[i].keys.push_back({seconds, converted[i], {}, {}, kLinearKey});
  }
}

void FillTracks(const tinygltf::Model& model, const tinygltf::Animation& animation, const tinygltf::AnimationChannel& channel,
                HostScene& scene)
{
  const tinygltf::AnimationSampler& sampler = animation.samplers.at(static_cast<std::size_t>(channel.sampler));
  const bool isRotation = channel.target_path == "rotation";
  if (sampler.interpolation != "LINEAR" || channel.target_path == "weights")
    throw std::runtime_error("an animation of another kind");
  const Elements times = FloatsAt(model, sampler.input, TINYGLTF_TYPE_SCALAR);
  const Elements values = FloatsAt(model, sampler.output, isRotation ? TINYGLTF_TYPE_VEC4 : TINYGLTF_TYPE_VEC3);
  if (values.count < times.count)
    throw std::runtime_error("fewer values than times");
  const int firstComponent = isRotation ? 3 : channel.target_path == "translation" ? 0 : 6;
  for (int i = 0; i < 3; ++i)
    scene.tracks.push_back({channel.target_node, firstComponent + i, {}});
  Track* const tracks = &scene.tracks.back() - 2;
  if (isRotation)
    FillKeys<4>(times, values, AnglesOf, tracks);
  else
    FillKeys<3>(times, values, ValuesOf, tracks);
}

void FillAnimations(const tinygltf::Model& model, HostScene& scene)
{
  for (const tinygltf::Animation& animation : model.animations)
  {
    scene.tracks.reserve(scene.tracks.size() + 3 * animation.channels.size());
    for (const tinygltf::AnimationChannel& channel : animation.channels)
      FillTracks(model, animation, channel, scene);
  }
}

}  // namespace

HostScene FillHostArrays(const tinygltf::Model& model)
{
  HostScene scene;
  scene.meshes.reserve(model.meshes.size());
  for (const tinygltf::Mesh& mesh : model.meshes)
  {
    std::vector<PolygonObject>& objects = scene.meshes.emplace_back();
    objects.reserve(mesh.primitives.size());
    for (const tinygltf::Primitive& primitive : mesh.primitives)
      objects.push_back(FillObject(model, primitive));
  }
  FillNodes(model, scene);
  FillAnimations(model, scene);
  return scene;
}

}  // namespace q7z::peers
