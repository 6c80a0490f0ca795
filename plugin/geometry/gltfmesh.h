#pragma once

// CreateMeshObjects: turns a mesh of the file into polygon objects with their tags. The scene builder calls it once for each mesh
// that a node refers to first.

#include "framework/basearray.h"
#include "framework/hashmap.h"
#include "plugin/document/gltfimportoptions.h"
#include "plugin/document/gltfnode.h"
#include "plugin/document/gltfprimitive.h"
#include "plugin/module/hostdocument.h"
#include "plugin/module/hostmaterial.h"
#include "plugin/module/hostpolygon.h"

namespace q7z
{

/// How much geometry one load may make. Primitives may share accessors, and meshes a skin, so a small file can ask for far more
/// points, poses or weights than it has bytes; what all its meshes hold together is bounded by its data.
class GeometryBudget
{
public:
  explicit GeometryBudget(Int bufferByteCount) noexcept;
  /// @return an out-of-memory error when this many more points and polygons are too many; nothing is taken then.
  Result<void> Take(Int pointCount, Int polygonCount) noexcept;

private:
  Int _remaining;  // points and polygons
};

/// What a mesh is made with. Nothing is owned.
struct MeshContext
{
  HostDocument* document = nullptr;
  const HashMap<Int, HostMaterial*>* materials = nullptr;  ///< by material index
  const HashMap<Int, HostObject*>* nodes = nullptr;        ///< joints by node index
  const GltfSkin* skin = nullptr;                          ///< null for none
  const ImportOptions* options = nullptr;
  const GltfNode* node = nullptr;
  GeometryBudget* budget = nullptr;  ///< null for no limit
};

/// Appends one object (merged) or one for each primitive (split) to objects. The caller owns them; objects appended before an
/// error stay in the array.
Result<void> CreateMeshObjects(const GltfMesh& mesh, const MeshContext& context,
                               BaseArray<HostOwner<HostPolygonObject>>& objects) noexcept;

}  // namespace q7z
