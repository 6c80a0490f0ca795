#pragma once

// Members that the generated inputs have in common.

#include "samples/generate/gltffile.h"

#include <string>
#include <vector>

namespace q7z::generate
{

constexpr const char* kGenerator = "io_gltf benchmark inputs";

/// Adds `scene` and `scenes`: one scene whose roots are the nodes 0 to rootCount - 1.
void AddSceneMembers(GltfFile& file, Int rootCount);

/// Writes the array of nodes without transforms or children of which the one at index i has that name and the mesh i.
void WriteMeshNodes(JsonWriter& json, const std::vector<std::string>& names);

}  // namespace q7z::generate
