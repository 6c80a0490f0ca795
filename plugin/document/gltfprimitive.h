#pragma once

// The records of `meshes`: a mesh, its primitives, and the accessors that a primitive's attributes resolve to. Every primitive is
// a triangle list here; the drawing mode is not read.

#include "framework/basearray.h"
#include "framework/data.h"
#include "framework/hashmap.h"

namespace q7z
{

class GltfAccessor;
struct GltfData;

/// Attribute name to accessor index, in the file's order.
using GltfAttributes = HashMap<String, Int32>;

/// One numbered set of an attribute: COLOR_2 is set 2.
struct GltfAttributeSet
{
  Int32 number = 0;
  GltfAccessor* accessor = nullptr;  // not owned
};

/// Sets in rising order of their number, so that of several the highest is worked last.
using GltfAttributeSets = BaseArray<GltfAttributeSet>;

GltfAccessor* FindSet(const GltfAttributeSets& sets, Int32 number) noexcept;

/// References into the document's accessors, which own them.
struct PrimitiveAccessors
{
  GltfAccessor* indices = nullptr;  // empty in a morph target
  GltfAccessor* positions = nullptr;
  GltfAccessor* normals = nullptr;
  GltfAttributeSets colors;
  GltfAttributeSets uvs;
  GltfAttributeSets _skinJointsAccessors;
  GltfAttributeSets _skinWeightsAccessors;

  /// Sorts attributes into the members above.
  Result<void> Classify(const GltfAttributes& attributes, GltfData& gltfData) noexcept;
};

class GltfPrimitive
{
public:
  Result<void> ReadFromJson(const DataDictionary& element) noexcept;
  Result<void> Resolve(GltfData& gltfData) noexcept;

  /// The positions are there and not empty.
  Bool IsValid() const noexcept;
  /// IsValid as a check with its message.
  Result<void> CheckValid() const noexcept;
  Int GetTargetsCount() const noexcept { return _targets.GetCount(); }

  struct Counts
  {
    Int vertexCount = 0;
    Int indexCount = 0;
    Int polygonCount = 0;  ///< index count / 3, truncated
  };
  /// Fails without positions, without a vertex or without a whole triangle. No byte behind the counts is looked at.
  Result<Counts> GetCounts() const noexcept;

  Int GetMaterial() const noexcept { return _material; }
  const PrimitiveAccessors& GetAccessors() const noexcept { return _primAccessors; }
  const BaseArray<PrimitiveAccessors>& GetTargetsAccessors() const noexcept { return _targetsAccessors; }

private:
  Int _indices = -1;
  Int _material = -1;
  Int _mode = 4;  // from the member "alphaMode", on purpose; nothing reads it
  GltfAttributes _attributes;
  BaseArray<GltfAttributes> _targets;
  PrimitiveAccessors _primAccessors;
  BaseArray<PrimitiveAccessors> _targetsAccessors;  // in step with _targets
};

class GltfMesh
{
public:
  Result<void> ReadFromJson(const DataDictionary& element) noexcept;
  Result<void> Resolve(GltfData* gltfData) noexcept;

  /// Resolving succeeded and every primitive is valid.
  Bool IsValid() const noexcept;

  const String& GetName() const noexcept { return _name; }
  const BaseArray<GltfPrimitive>& GetPrimitives() const noexcept { return _primitives; }
  const BaseArray<Float>& GetWeights() const noexcept { return _weights; }

private:
  String _name;
  BaseArray<GltfPrimitive> _primitives;
  BaseArray<Float> _weights;
  Bool _resolved = false;
};

}  // namespace q7z
