#pragma once

// Members that the generated inputs have in common.

#include "samples/generate/gltffile.h"
#include "samples/generate/primitive.h"

#include <string>
#include <vector>

namespace q7z::generate
{

constexpr const char* kGenerator = "io_gltf benchmark inputs";

/// Adds `scene` and `scenes`: one scene whose roots are the nodes 0 to rootCount - 1.
void AddSceneMembers(GltfFile& file, Int rootCount);

/// Writes an array of objects; writeMembers(i) those of the i-th.
template <typename WriteMembers>
void WriteObjects(JsonWriter& json, Int count, const WriteMembers& writeMembers)
{
  json.BeginArray();
  for (Int i = 0; i < count; ++i)
  {
    json.BeginObject();
    writeMembers(i);
    json.EndObject();
  }
  json.EndArray();
}

/// A quad a metre wide, beginning at x = left, with normals and UVs.
Primitive AddQuad(GltfFile& file, Float32 left);

/// Adds `meshes` with the one mesh of these primitives.
void AddMesh(GltfFile& file, const std::string& name, const std::vector<Primitive>& primitives);

/// Writes the array of nodes without transforms or children of which the one at index i has that name and the mesh i.
void WriteMeshNodes(JsonWriter& json, const std::vector<std::string>& names);

}  // namespace q7z::generate
