#include "bench/generate/scenemembers.h"

#include <array>

namespace q7z::generate
{

void AddSceneMembers(GltfFile& file, Int rootCount)
{
  file.AddMember("scene", [](JsonWriter& json) { json.Value(0); });
  file.AddMember("scenes",
                 [rootCount](JsonWriter& json)
                 {
                   json.BeginArray();
                   json.BeginObject();
                   json.Key("nodes");
                   json.BeginArray();
                   for (Int i = 0; i < rootCount; ++i)
                     json.Value(i);
                   json.EndArray();
                   json.EndObject();
                   json.EndArray();
                 });
}

Primitive AddQuad(GltfFile& file, Float32 left)
{
  const auto add = [&file](const char* type, auto values, Int components)
  {
    return file.AddAccessor({.type = type,
                             .count = static_cast<Int>(values.size()) / components,
                             .bounds = true,
                             .write = [values](ByteSink& target) { target.WriteValues(values); }});
  };
  Primitive primitive;
  primitive.positions = add("VEC3", std::array<Float32, 12>{left, 0, 0, left + 1, 0, 0, left + 1, 1, 0, left, 1, 0}, 3);
  primitive.normals = add("VEC3", std::array<Float32, 12>{0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1}, 3);
  primitive.uvs = add("VEC2", std::array<Float32, 8>{0, 1, 1, 1, 1, 0, 0, 0}, 2);
  primitive.indices =
    file.AddAccessor({.componentType = ComponentType::kUnsignedShort,
                      .type = "SCALAR",
                      .count = 6,
                      .target = ViewTarget::kIndices,
                      .write = [](ByteSink& target) { target.WriteValues(std::array<UInt16, 6>{0, 1, 2, 0, 2, 3}); }});
  return primitive;
}

void AddMesh(GltfFile& file, const std::string& name, const std::vector<Primitive>& primitives)
{
  file.AddMember("meshes",
                 [=](JsonWriter& json)
                 {
                   json.BeginArray();
                   WriteMesh(json, name, primitives);
                   json.EndArray();
                 });
}

void WriteMeshNodes(JsonWriter& json, const std::vector<std::string>& names)
{
  WriteObjects(json, static_cast<Int>(names.size()),
               [&](Int i)
               {
                 json.Member("name", names[static_cast<std::size_t>(i)]);
                 json.Member("mesh", i);
               });
}

}  // namespace q7z::generate
