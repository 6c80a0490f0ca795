#pragma once

// MeshCreator: one polygon object under construction, and the operations that fill it from the accessors of a primitive. The base
// object of a mesh and each of its poses is filled by the same operations.

#include "framework/hashmap.h"
#include "plugin/document/gltfimportoptions.h"
#include "plugin/document/gltfprimitive.h"
#include "plugin/module/hostpolygon.h"

namespace q7z
{

/// The attributes that an object gets tags for, as far as the options want them.
struct MeshAttributes
{
  Bool normals = true;
  Bool uvs = true;
  Bool colors = true;
};

class MeshCreator
{
public:
  explicit MeshCreator(const ImportOptions* options = nullptr) noexcept : _options(options) {}

  /// Makes the object with the tags that the options want, and starts over at its first point and polygon. A tag that is missing
  /// afterwards means that its attribute is not wanted.
  Result<void> AllocatePolyAndTags(Int vertexCount, Int polyCount) noexcept;

  /// Deletes the tags that no primitive has written.
  void RemoveUnusedTags() noexcept;

  /// Moves the cursors behind a primitive.
  void Advance(Int vertexCount, Int polyCount) noexcept;

  HostOwner<HostPolygonObject> mesh;  // empty until AllocatePolyAndTags
  MeshAttributes attributes;
  Bool sharesPolygons = false;  // they come from another object: none are allocated
  Int32 currentPrimitive = 0;   // in the names of selections and tags
  Int currentMaterial = -1;     // of the current primitive; -1 for none
  HostNormalTag* normalTag = nullptr;
  Bool normalsWritten = false;
  HostUvwTag* uvTag = nullptr;
  Bool uvsWritten = false;
  HostVertexColorTag* colorTag = nullptr;
  Bool colorsWritten = false;
  HashMap<Int, HostPolygonSelectionTag*> polygonSelections;  // by material index; -1 for none
  Int32 cursorPoints = 0;                                    // first free point of the object
  Int32 cursorPolygons = 0;                                  // first free polygon
  const ImportOptions* _options = nullptr;                   // not owned
};

// The target arguments are those of a morph target, or null: its values are added to the primitive's own before the mirror and
// the scale apply. Every operation is fulfilled, and does nothing, when its attribute is not wanted or not there.

Result<void> AddMeshPositions(MeshCreator& meshCreator, const PrimitiveAccessors& baseAccessors,
                              const PrimitiveAccessors* targetAccessors, Int vertexCount, const Vector& flipZMultiplier,
                              Float scale) noexcept;
Result<void> AddMeshPolygons(MeshCreator& meshCreator, const PrimitiveAccessors& baseAccessors, Int polyCount,
                             Bool flipZ) noexcept;
Result<void> AddMeshNormals(MeshCreator& meshCreator, const PrimitiveAccessors& baseAccessors,
                            const PrimitiveAccessors* targetAccessors, Int polyCount, const Vector& flipZMultiplier) noexcept;
Result<void> AddMeshVertexColors(MeshCreator& meshCreator, const PrimitiveAccessors& baseAccessors,
                                 const PrimitiveAccessors* targetAccessors, Int vertexCount) noexcept;
Result<void> AddMeshUVs(MeshCreator& meshCreator, const PrimitiveAccessors& baseAccessors,
                        const PrimitiveAccessors* targetAccessors, Int polyCount) noexcept;

/// Selects the polygons of the current primitive in a tag of their own, under its material's index.
Result<void> AddPolygonSelections(MeshCreator& meshCreator, const PrimitiveAccessors& baseAccessors, Int polyCount) noexcept;

}  // namespace q7z
