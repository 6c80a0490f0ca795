#pragma once

// The sample scene: a lighthouse on a small island, with houses, pines, a pier and a boat. It shows what a scene can hold in
// small: nested and shared nodes, meshes of one and of two primitives, vertex colours, two materials.

#include "samples/generate/gltffile.h"

namespace q7z::generate
{

/// The scene as a file; it is the same whenever and wherever it is made.
GltfFile MakeHarbour();

}  // namespace q7z::generate
