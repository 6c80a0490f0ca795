#pragma once

// The records of `nodes`, `skins` and `scenes`, and the conversion of a node's local transform into the host's space.

#include "framework/basearray.h"
#include "framework/data.h"
#include "framework/hostmatrix.h"

namespace q7z
{

class GltfAccessor;
struct GltfData;

class GltfNode
{
public:
  Result<void> ReadFromJson(const DataDictionary& element) noexcept;

  Bool HasCamera() const noexcept { return camera >= 0; }
  Bool HasMesh() const noexcept { return mesh >= 0; }

  String name;
  Int camera = -1;
  Int skin = -1;  // users compare with -1
  Int mesh = -1;
  BaseArray<Int> children;
  HostMatrix matrix;
  Vector4 rotation{0, 0, 0, 1};
  Vector scale{1, 1, 1};
  Vector translation;
  BaseArray<Int> weights;  // whole numbers only, by the format reader's choice
  Bool hasMatrix = false;
};

class GltfSkin
{
public:
  Result<void> ReadFromJson(const DataDictionary& element) noexcept;
  /// Finds the accessor of the inverse bind matrices; without one this fails and the accessor stays null.
  Result<void> Resolve(GltfData* gltfData) noexcept;

  String name;
  Int inverseBindMatrices = -1;
  Int skeleton = -1;  // read, never used
  BaseArray<Int> joints;
  GltfAccessor* accessor = nullptr;  // not owned; null until resolved
};

class GltfScene
{
public:
  Result<void> ReadFromJson(const DataDictionary& element) noexcept;

  String name;
  BaseArray<Int> nodes;
};

// Pure arithmetic. scale multiplies lengths alone; flipZ mirrors Z.
HostMatrix ConvertNodeTransform(const GltfNode& node, Float scale, Bool flipZ) noexcept;
HostMatrix ConvertMatrix(const HostMatrix& matrix, Float scale, Bool flipZ) noexcept;

}  // namespace q7z
