// Inputs whose points move: by joints, and by morph targets.

#include "bench/generate/heightfield.h"
#include "bench/generate/inputs.h"
#include "bench/generate/random.h"
#include "bench/generate/scenemembers.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace q7z::generate
{

namespace
{

constexpr Int kInfluences = 4;
constexpr Int kFirstJointNode = 1;  // behind the mesh's own

/// Neighbours follow the same joints, as in a modelled skin.
void WriteJoints(ByteSink& target, Int vertexCount, Int jointCount)
{
  for (Int vertex = 0; vertex < vertexCount; ++vertex)
  {
    const Int first = vertex * (jointCount - kInfluences + 1) / vertexCount;
    std::array<UInt16, kInfluences> joints;
    for (Int i = 0; i < kInfluences; ++i)
      joints[static_cast<std::size_t>(i)] = static_cast<UInt16>(first + i);
    target.WriteValues(joints);
  }
}

/// Four weights above 0 whose sum is 1.
void WriteWeights(ByteSink& target, Int vertexCount, UInt start)
{
  Random random(start);
  for (Int vertex = 0; vertex < vertexCount; ++vertex)
  {
    const auto first = static_cast<Float32>(random.Next(0.4, 0.6));
    target.WriteValues(std::array<Float32, kInfluences>{first, 0.875F - first, 0.0625F, 0.0625F});
  }
}

Float32 JointPlace(Int joint)
{
  return static_cast<Float32>(joint) * 0.0625F;
}

/// The matrices of a bind pose in which each joint stands at its place beside the first.
void WriteInverseMatrices(ByteSink& target, Int jointCount)
{
  for (Int joint = 0; joint < jointCount; ++joint)
    target.WriteValues(std::array<Float32, 16>{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -JointPlace(joint), 0, 0, 1});
}

void WriteSkinNodes(JsonWriter& json, Int jointCount)
{
  json.BeginArray();
  json.BeginObject();
  json.Member("name", "Skinned");
  json.Member("mesh", 0);
  json.Member("skin", 0);
  json.EndObject();
  for (Int joint = 0; joint < jointCount; ++joint)
  {
    json.BeginObject();
    json.Member("name", "Joint " + std::to_string(joint));
    json.Member("translation", {JointPlace(joint), 0, 0});
    if (joint == 0)
    {
      json.Key("children");
      json.BeginArray();
      for (Int child = 1; child < jointCount; ++child)
        json.Value(kFirstJointNode + child);
      json.EndArray();
    }
    json.EndObject();
  }
  json.EndArray();
}

void WriteSkins(JsonWriter& json, Int jointCount, Int inverseMatrices)
{
  json.BeginArray();
  json.BeginObject();
  json.Member("inverseBindMatrices", inverseMatrices);
  json.Key("joints");
  json.BeginArray();
  for (Int joint = 0; joint < jointCount; ++joint)
    json.Value(kFirstJointNode + joint);
  json.EndArray();
  json.EndObject();
  json.EndArray();
}

/// A target lifts all points by up to a metre.
void WriteOffsets(ByteSink& target, Int vertexCount, UInt start)
{
  Random random(start);
  for (Int vertex = 0; vertex < vertexCount; ++vertex)
    target.WriteValues(std::array<Float32, 3>{0, static_cast<Float32>(random.Next(0.0625, 1)), 0});
}

void AddMesh(GltfFile& file, const std::string& name, Primitive primitive)
{
  file.AddMember("meshes",
                 [name, primitive = std::move(primitive)](JsonWriter& json)
                 {
                   json.BeginArray();
                   WriteMesh(json, name, {&primitive, 1});
                   json.EndArray();
                 });
}

}  // namespace

GltfFile MakeSkin(Int side, Int jointCount, UInt start)
{
  GltfFile file(kGenerator);
  const Int vertexCount = side * side;
  Primitive primitive = AddHeightfield(file, Heightfield(side, {0, 0, 0}, start), true);
  primitive.joints = file.AddAccessor({.componentType = ComponentType::kUnsignedShort,
                                       .type = "VEC4",
                                       .count = vertexCount,
                                       .write = [=](ByteSink& target) { WriteJoints(target, vertexCount, jointCount); }});
  primitive.weights = file.AddAccessor({.type = "VEC4",
                                        .count = vertexCount,
                                        .write = [=](ByteSink& target) { WriteWeights(target, vertexCount, start); }});
  const Int inverseMatrices = file.AddAccessor({.type = "MAT4",
                                                .count = jointCount,
                                                .target = ViewTarget::kNone,
                                                .write = [=](ByteSink& target) { WriteInverseMatrices(target, jointCount); }});
  AddSceneMembers(file, kFirstJointNode + 1);
  file.AddMember("nodes", [=](JsonWriter& json) { WriteSkinNodes(json, jointCount); });
  AddMesh(file, "Skin", std::move(primitive));
  file.AddMember("skins", [=](JsonWriter& json) { WriteSkins(json, jointCount, inverseMatrices); });
  return file;
}

GltfFile MakeMorphs(Int side, Int targetCount, UInt start)
{
  GltfFile file(kGenerator);
  const Int vertexCount = side * side;
  Primitive primitive = AddHeightfield(file, Heightfield(side, {0, 0, 0}, start), true);
  for (Int i = 0; i < targetCount; ++i)
  {
    const UInt targetStart = start + static_cast<UInt>(i);
    primitive.targets.push_back(file.AddAccessor({.type = "VEC3",
                                                  .count = vertexCount,
                                                  .bounds = true,
                                                  .write = [=](ByteSink& target)
                                                  { WriteOffsets(target, vertexCount, targetStart); }}));
  }
  AddSceneMembers(file, 1);
  file.AddMember("nodes", [](JsonWriter& json) { WriteMeshNodes(json, {"Morphed"}); });
  AddMesh(file, "Morphs", std::move(primitive));
  return file;
}

}  // namespace q7z::generate
