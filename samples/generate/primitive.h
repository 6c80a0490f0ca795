#pragma once

// A primitive of a mesh in a file that is being generated: a value that names accessors of the file.

#include "samples/generate/jsonwriter.h"

#include <vector>

namespace q7z::generate
{

/// A primitive of a mesh by the indices of its accessors in the file, -1 where there is none.
struct Primitive
{
  Int positions = -1;
  Int normals = -1;
  Int uvs = -1;
  Int colors = -1;
  Int joints = -1;
  Int weights = -1;
  Int indices = -1;
  Int material = -1;
  std::vector<Int> targets;  // the positions of each morph target

  void Write(JsonWriter& json) const;
};

/// Writes a mesh, with a name if there is one.
void WriteMesh(JsonWriter& json, std::string_view name, std::span<const Primitive> primitives);

}  // namespace q7z::generate
